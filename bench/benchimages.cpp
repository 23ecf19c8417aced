#include "bench/benchimages.h"

#include <QFont>
#include <QPainter>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace kivo::bench {

QImage photoLike(int width, int height, bool withAlpha)
{
    QImage image(width, height, withAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    QRandomGenerator random(42);
    for (int y = 0; y < height; ++y) {
        QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int grain = int(random.bounded(24)) - 12;
            const int alpha = withAlpha ? (x * 255 / width) : 255;
            line[x] = qRgba(qBound(0, 40 + x * 160 / width + grain, 255), qBound(0, 90 + y * 120 / height + grain, 255),
                qBound(0, 200 - x * 100 / width + grain, 255), alpha);
        }
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(250, 210, 60));
    painter.drawEllipse(QPointF(width * 0.7, height * 0.3), width * 0.12, width * 0.12);
    painter.setBrush(QColor(30, 80, 40));
    painter.drawPolygon(
        QPolygonF({QPointF(0, height), QPointF(width * 0.35, height * 0.5), QPointF(width * 0.8, height)}));
    painter.end();
    return image;
}

QImage articleScreenshot()
{
    const QString paragraph = u"Kivo keeps the pictures, links and notes you save in one folder that you own. "
                              "Everything it learns about them stays on your machine: the text in a screenshot, "
                              "the colours of a photograph and the words of a saved page."_s;
    QImage image(1024, 768, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    QFont title(u"DejaVu Sans"_s);
    title.setPixelSize(30);
    title.setBold(true);
    painter.setFont(title);
    painter.setPen(QColor(20, 20, 30));
    painter.drawText(QRect(60, 40, 904, 50), Qt::AlignLeft, u"A visual library that reads what it keeps"_s);
    QFont body(u"DejaVu Sans"_s);
    body.setPixelSize(15);
    painter.setFont(body);
    painter.setPen(QColor(50, 50, 60));
    for (int i = 0; i < 5; ++i)
        painter.drawText(QRect(60, 120 + i * 120, 904, 110), Qt::TextWordWrap, paragraph);
    painter.end();
    return image;
}

} // namespace kivo::bench
