#include "tests/testsupport.h"
#include "understanding/textrecognizer.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <filesystem>

using namespace Qt::StringLiterals;
using kivo::TextRecognizer;

namespace {

const QStringList sampleLines{
    u"The quick brown fox jumps over the lazy dog"_s,
    u"Invoice 2024-0519 total 1,284.50 EUR"_s,
    u"Kivo keeps your pictures, links and notes"_s,
    u"Meeting moved to Thursday at 3 pm"_s,
};

/** How text is drawn on a generated screenshot. */
struct Look {
    QColor background;
    QColor ink;
};

// A 1024-pixel-wide screenshot holding `lines` in a real font at `pixelSize`.
QImage screenshot(const QStringList &lines, int pixelSize, const Look &look, const QString &family = u"DejaVu Sans"_s)
{
    QFont font(family);
    font.setPixelSize(pixelSize);
    const QFontMetrics metrics(font);
    const int lineHeight = metrics.height() * 3 / 2;
    QImage image(1024, 80 + lineHeight * int(lines.size()), QImage::Format_ARGB32_Premultiplied);
    image.fill(look.background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font);
    painter.setPen(look.ink);
    for (int i = 0; i < lines.size(); ++i)
        painter.drawText(40, 40 + metrics.ascent() + i * lineHeight, lines.at(i));
    painter.end();
    return image;
}

qsizetype editDistance(const QString &a, const QString &b)
{
    QList<qsizetype> previous(b.size() + 1);
    QList<qsizetype> current(b.size() + 1);
    for (qsizetype j = 0; j <= b.size(); ++j)
        previous[j] = j;
    for (qsizetype i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const qsizetype substitution = previous[j - 1] + (a.at(i - 1) == b.at(j - 1) ? 0 : 1);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, substitution});
        }
        std::swap(previous, current);
    }
    return previous[b.size()];
}

// How many of this process's threads have the name given, from the kernel's list.
int threadsNamed(const QByteArray &name)
{
    int count = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        QFile comm(QString::fromStdString((task.path() / "comm").string()));
        if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == name)
            ++count;
    }
    return count;
}

// One minus the edit distance over the expected length: 1 is a perfect reading.
double characterAccuracy(const QString &expected, const QString &read)
{
    return 1.0 - double(editDistance(expected, read)) / double(expected.size());
}

} // namespace

/** Text read from generated screenshots, scored by character accuracy against what was drawn. */
class TestTextRecognizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(TextRecognizer::isAvailable(), "the English text model (tesseract-ocr-eng) is missing");
        QVERIFY(QFontDatabase::families().contains(u"DejaVu Sans"_s));
        QVERIFY(QFontDatabase::families().contains(u"Noto Serif"_s));
    }

    void readsOnTheCallingThreadAlone()
    {
        // This test runs without OpenMP settings in its environment, as Kivo usually does. The
        // threads of an OpenMP team are started by the reading thread, carry its name, and stay
        // alive beside it for its next read.
        QVERIFY(qgetenv("OMP_THREAD_LIMIT").isEmpty() && qgetenv("OMP_NUM_THREADS").isEmpty());
        const QImage page = screenshot(sampleLines, 20, {Qt::white, Qt::black});
        int namedAfterReading = 0;
        std::optional<QString> text;
        std::unique_ptr<QThread> reader(QThread::create([&] {
            text = TextRecognizer::recognizeText(page);
            namedAfterReading = threadsNamed("page reader");
        }));
        reader->setObjectName(u"page reader"_s);
        reader->start();
        QVERIFY(reader->wait(60000));
        QVERIFY(text);
        QVERIFY2(characterAccuracy(sampleLines.join(u'\n'), *text) >= 0.98, qPrintable(*text));
        QCOMPARE(namedAfterReading, 1);
    }

    void readsDrawnTextLineByLine_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("pixelSize");
        QTest::addColumn<QColor>("background");
        QTest::addColumn<QColor>("ink");
        QTest::addColumn<double>("minimumAccuracy");
        const QColor paper(255, 255, 255), black(0, 0, 0), night(0x20, 0x21, 0x24), moon(0xE8, 0xEA, 0xED);
        const QString sans = u"DejaVu Sans"_s;
        for (int size : {11, 14, 20, 32}) {
            // Type this small on a screenshot is the hard case; larger type must read almost perfectly.
            const double floor = size < 12 ? 0.95 : 0.98;
            QTest::addRow("%dpx dark on light", size) << sans << size << paper << black << floor;
            QTest::addRow("%dpx light on dark", size) << sans << size << night << moon << floor;
        }
        QTest::addRow("20px grey on tinted")
            << sans << 20 << QColor(0xF3, 0xEF, 0xE0) << QColor(0x55, 0x55, 0x66) << 0.98;
        QTest::addRow("16px serif") << u"Noto Serif"_s << 16 << paper << black << 0.98;
        QTest::addRow("16px serif on dark") << u"Noto Serif"_s << 16 << night << moon << 0.98;
    }
    void readsDrawnTextLineByLine()
    {
        QFETCH(QString, family);
        QFETCH(int, pixelSize);
        QFETCH(QColor, background);
        QFETCH(QColor, ink);
        QFETCH(double, minimumAccuracy);
        const std::optional<QString> text
            = TextRecognizer::recognizeText(screenshot(sampleLines, pixelSize, {background, ink}, family));
        QVERIFY(text);
        const double accuracy = characterAccuracy(sampleLines.join(u'\n'), *text);
        qInfo("character accuracy %.3f", accuracy);
        QVERIFY2(accuracy >= minimumAccuracy, qPrintable(u"accuracy %1 for:\n%2"_s.arg(accuracy).arg(*text)));
        // Lines come back as lines, in reading order.
        const QStringList lines = text->split(u'\n');
        QCOMPARE(lines.size(), sampleLines.size());
        for (qsizetype i = 0; i < lines.size(); ++i)
            QVERIFY2(characterAccuracy(sampleLines.at(i), lines.at(i)) > 0.8, qPrintable(lines.at(i)));
    }

    void readsTwoColumnsColumnByColumn()
    {
        // Two columns of a page: all of the left one is read before the right one.
        const QStringList left{u"Left column begins here"_s, u"and carries on below"_s, u"with more of the story"_s,
            u"line after line of it"_s, u"until it comes to rest"_s, u"at the end of the page"_s,
            u"where the reader turns"_s, u"to the other column"_s};
        const QStringList right{u"Right column starts"_s, u"after the left one"_s, u"has been read fully"_s,
            u"and it goes on too"_s, u"for a few more lines"_s, u"so that the layout"_s, u"looks like a real page"_s,
            u"with two columns"_s};
        QImage image(1024, 560, QImage::Format_RGB32);
        image.fill(Qt::white);
        QFont font(u"DejaVu Sans"_s);
        font.setPixelSize(22);
        QPainter painter(&image);
        painter.setFont(font);
        painter.setPen(Qt::black);
        for (int i = 0; i < left.size(); ++i) {
            painter.drawText(40, 80 + i * 36, left.at(i));
            painter.drawText(560, 80 + i * 36, right.at(i));
        }
        painter.end();
        const std::optional<QString> text = TextRecognizer::recognizeText(image);
        QVERIFY(text);
        const double accuracy = characterAccuracy((left + right).join(u'\n'), *text);
        QVERIFY2(accuracy >= 0.95, qPrintable(u"accuracy %1 for:\n%2"_s.arg(accuracy).arg(*text)));
    }

    void transparentBackgroundReadsAsPaper()
    {
        // Black text on a transparent picture: flattened naively it would be black on black.
        const QStringList lines{u"Transparent labels still read"_s};
        const QImage image = screenshot(lines, 28, {Qt::transparent, Qt::black});
        const std::optional<QString> text = TextRecognizer::recognizeText(image);
        QVERIFY(text);
        QVERIFY2(characterAccuracy(lines.constFirst(), *text) >= 0.95, qPrintable(*text));
    }

    void picturesWithoutTextGiveNothing_data()
    {
        QTest::addColumn<QImage>("image");
        QImage blank(1024, 768, QImage::Format_RGB32);
        blank.fill(qRgb(250, 250, 250));
        QTest::newRow("blank") << blank;

        QImage gradient(1024, 768, QImage::Format_RGB32);
        for (int y = 0; y < gradient.height(); ++y) {
            for (int x = 0; x < gradient.width(); ++x)
                gradient.setPixel(x, y, qRgb(x / 4, y / 3, 128));
        }
        QPainter painter(&gradient);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(QColor(240, 200, 40));
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPoint(700, 250), 120, 120);
        painter.setBrush(QColor(30, 90, 40));
        painter.drawPolygon(QPolygon({QPoint(0, 768), QPoint(300, 420), QPoint(650, 768)}));
        painter.end();
        QTest::newRow("landscape shapes") << gradient;
        QTest::newRow("null") << QImage();
    }
    void picturesWithoutTextGiveNothing()
    {
        QFETCH(QImage, image);
        const std::optional<QString> text = TextRecognizer::recognizeText(image);
        QVERIFY2(!text, qPrintable(text.value_or(QString())));
    }

    void threadsReadAtTheSameTime()
    {
        const QImage first = screenshot({sampleLines.at(0)}, 24, {Qt::white, Qt::black});
        const QImage second = screenshot({sampleLines.at(2)}, 24, {Qt::white, Qt::black});
        QThreadPool pool;
        pool.setMaxThreadCount(2);
        // Several rounds on each thread: each reuses its own engine.
        auto a = QtConcurrent::run(&pool, [&] {
            QStringList texts;
            for (int i = 0; i < 3; ++i)
                texts.append(TextRecognizer::recognizeText(first).value_or(QString()));
            return texts;
        });
        auto b = QtConcurrent::run(&pool, [&] {
            QStringList texts;
            for (int i = 0; i < 3; ++i)
                texts.append(TextRecognizer::recognizeText(second).value_or(QString()));
            return texts;
        });
        for (const QString &text : a.result())
            QVERIFY2(characterAccuracy(sampleLines.at(0), text) >= 0.95, qPrintable(text));
        for (const QString &text : b.result())
            QVERIFY2(characterAccuracy(sampleLines.at(2), text) >= 0.95, qPrintable(text));
    }
};

QTEST_MAIN(TestTextRecognizer)
#include "tst_textrecognizer.moc"
