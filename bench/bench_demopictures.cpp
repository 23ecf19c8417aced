// Times the demo's picture painting per style and per step (paint, encode, colours), to see where
// a large demo library spends its time.

#include "app/demo/picturepainter.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImageWriter>
#include <QTextStream>

using namespace Qt::StringLiterals;
using namespace kivo::demo;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const int rounds = argc > 1 ? QByteArray(argv[1]).toInt() : 20;
    const bool light = argc > 2 && QByteArray(argv[2]) == "light";
    QTextStream out(stdout);
    const QStringList names{u"photo"_s, u"gradient"_s, u"shapes"_s, u"flat"_s, u"sign"_s, u"screenshot"_s, u"poster"_s};
    for (int style = 0; style < names.size(); ++style) {
        qint64 paintNs = 0, encodeNs = 0, coloursNs = 0, pixels = 0;
        for (int round = 0; round < rounds; ++round) {
            DemoRandom random = DemoRandom::forPart(7, 99, std::uint64_t(style * 1000 + round));
            const int longest = light ? random.between(96, 360) : random.between(300, 1600);
            const QSize size(longest, longest * 2 / 3);
            QElapsedTimer timer;
            timer.start();
            QString text;
            const QImage image = PicturePainter::paint(PictureStyle(style), size, random, &text);
            paintNs += timer.nsecsElapsed();
            timer.restart();
            QByteArray bytes;
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            QImageWriter writer(&buffer, round % 3 == 0 ? "jpeg" : round % 3 == 1 ? "png" : "webp");
            writer.write(image);
            encodeNs += timer.nsecsElapsed();
            timer.restart();
            (void)PicturePainter::dominantColours(image);
            coloursNs += timer.nsecsElapsed();
            pixels += qint64(size.width()) * size.height();
        }
        out << names.at(style).leftJustified(12) << u" paint %1 ms  encode %2 ms  colours %3 ms  (%4 Mpx avg)"_s
                   .arg(paintNs / 1e6 / rounds, 6, 'f', 1)
                   .arg(encodeNs / 1e6 / rounds, 6, 'f', 1)
                   .arg(coloursNs / 1e6 / rounds, 5, 'f', 2)
                   .arg(pixels / 1e6 / rounds, 4, 'f', 2)
            << Qt::endl;
    }
    return 0;
}
