#include "app/demo/demovocabulary.h"
#include "app/demo/picturepainter.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kivo::demo::TextPictures {

namespace {

/** The largest font of a family whose rendering of `text` fits the box. */
QFont fittedFont(const QString &family, QFont::Weight weight, const QString &text, QSizeF box)
{
    QFont font(family);
    font.setWeight(weight);
    double pixels = std::max(6.0, box.height());
    font.setPixelSize(int(pixels));
    for (int attempt = 0; attempt < 12; ++attempt) {
        const QFontMetricsF metrics(font);
        const double width = metrics.horizontalAdvance(text);
        if (width <= box.width() && metrics.height() <= box.height() * 1.25)
            break;
        pixels = std::max(6.0, pixels * std::min(0.92, box.width() / std::max(1.0, width)));
        font.setPixelSize(int(pixels));
        if (pixels <= 6.0)
            break;
    }
    return font;
}

void drawFitted(QPainter &painter, const QRectF &box, const QString &text, const QString &family, QFont::Weight weight,
                Qt::Alignment alignment = Qt::AlignCenter)
{
    painter.setFont(fittedFont(family, weight, text, box.size()));
    painter.drawText(box, int(alignment), text);
}

QColor readableOn(const QColor &background)
{
    return background.lightnessF() > 0.6 ? QColor(20, 20, 24) : QColor(250, 250, 245);
}

} // namespace

void paintSign(QImage &image, DemoRandom &random, const QList<QColor> &colours, QString *text)
{
    const QSizeF size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);

    // A wall behind the sign: plaster, brick or dusk sky.
    QLinearGradient wall(0, 0, 0, size.height());
    const QColor behind = random.chance(0.5) ? QColor::fromHsv(random.between(15, 40), random.between(20, 90), random.between(120, 210))
                                             : colours.constFirst().darker(150);
    wall.setColorAt(0, behind.lighter(115));
    wall.setColorAt(1, behind.darker(125));
    painter.fillRect(image.rect(), wall);
    if (random.chance(0.4)) {
        painter.setPen(QPen(behind.darker(140), std::max(1.0, size.height() / 160)));
        const double row = std::max(6.0, size.height() / random.between(10, 24));
        for (double y = 0; y < size.height(); y += row)
            painter.drawLine(QPointF(0, y), QPointF(size.width(), y));
    }

    static const QList<QColor> plates{QColor(0, 110, 60), QColor(200, 30, 40), QColor(20, 60, 150), QColor(250, 200, 20),
                                      QColor(245, 245, 240), QColor(25, 25, 28)};
    const QColor plate = random.pick(plates);
    const QStringList lines = DemoVocabulary::signLines(random);
    const double plateWidth = size.width() * random.real(0.55, 0.85);
    const double plateHeight = std::min(size.height() * 0.8, plateWidth * (lines.size() > 1 ? 0.55 : 0.32));
    const QRectF board(QPointF((size.width() - plateWidth) / 2, (size.height() - plateHeight) / 2), QSizeF(plateWidth, plateHeight));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 70));
    painter.drawRoundedRect(board.translated(plateHeight * 0.04, plateHeight * 0.06), plateHeight * 0.08, plateHeight * 0.08);
    painter.setBrush(plate);
    painter.setPen(QPen(readableOn(plate), std::max(1.0, plateHeight * 0.025)));
    painter.drawRoundedRect(board, plateHeight * 0.08, plateHeight * 0.08);

    painter.setPen(readableOn(plate));
    const QRectF inner = board.adjusted(plateWidth * 0.07, plateHeight * 0.1, -plateWidth * 0.07, -plateHeight * 0.1);
    const double lineHeight = inner.height() / lines.size();
    for (int i = 0; i < lines.size(); ++i) {
        const QRectF slot(inner.left(), inner.top() + i * lineHeight, inner.width(), lineHeight * (i == 0 ? 0.95 : 0.7));
        drawFitted(painter, slot, lines.at(i), u"DejaVu Sans"_s, i == 0 ? QFont::Bold : QFont::Normal);
    }
    *text = lines.join(u'\n');
}

void paintScreenshot(QImage &image, DemoRandom &random, QString *text)
{
    const QSizeF size = image.size();
    const bool terminal = random.chance(0.3);
    const bool dark = terminal || random.chance(0.3);
    const QColor background = dark ? QColor(30, 31, 36) : QColor(252, 252, 250);
    const QColor ink = dark ? QColor(220, 222, 228) : QColor(32, 33, 36);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.fillRect(image.rect(), background);

    // The window's title bar with its three buttons.
    const double bar = std::max(10.0, size.height() * 0.06);
    painter.fillRect(QRectF(0, 0, size.width(), bar), dark ? QColor(45, 46, 52) : QColor(232, 232, 236));
    for (int i = 0; i < 3; ++i) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QList<QColor>{QColor(255, 95, 87), QColor(254, 188, 46), QColor(40, 200, 64)}.at(i));
        painter.drawEllipse(QPointF(bar * (0.6 + 0.55 * i), bar / 2), bar * 0.18, bar * 0.18);
    }
    QStringList seen;
    const QString windowTitle = terminal ? u"Terminal — studio"_s : DemoVocabulary::noteTitle(random);
    painter.setPen(ink);
    drawFitted(painter, QRectF(size.width() * 0.25, 0, size.width() * 0.5, bar * 0.8), windowTitle, u"DejaVu Sans"_s, QFont::DemiBold);
    seen.append(windowTitle);

    const double margin = size.width() * 0.06;
    double y = bar + size.height() * 0.05;
    QFont body(terminal ? u"DejaVu Sans Mono"_s : u"DejaVu Sans"_s);
    body.setPixelSize(std::max(7, int(size.height() / random.between(26, 40))));
    if (!terminal) {
        QFont heading(u"DejaVu Serif"_s);
        heading.setBold(true);
        heading.setPixelSize(body.pixelSize() * 2);
        painter.setFont(heading);
        const QString title = DemoVocabulary::noteTitle(random);
        painter.drawText(QPointF(margin, y + heading.pixelSize()), title);
        seen.append(title);
        y += heading.pixelSize() * 1.8;
    }
    painter.setFont(body);
    const QFontMetricsF metrics(body);
    const double width = size.width() - 2 * margin;
    const QStringList source = terminal ? DemoVocabulary::codeLines(random, 40)
                                        : QStringList{DemoVocabulary::paragraph(random, 4), DemoVocabulary::paragraph(random, 3),
                                                      DemoVocabulary::paragraph(random, 5)};
    for (const QString &block : source) {
        // Break each block into lines that fit, the way a text view wraps.
        QString line;
        const QStringList words = block.split(u' ');
        for (qsizetype i = 0; i <= words.size(); ++i) {
            const QString candidate = i < words.size() ? (line.isEmpty() ? words.at(i) : line + u' ' + words.at(i)) : QString();
            if (i < words.size() && metrics.horizontalAdvance(candidate) <= width) {
                line = candidate;
                continue;
            }
            if (y + metrics.height() > size.height() - margin / 2)
                break;
            if (terminal && line.startsWith(u'$'))
                painter.setPen(QColor(120, 220, 140));
            else
                painter.setPen(ink);
            painter.drawText(QPointF(margin, y + metrics.ascent()), line);
            seen.append(line);
            y += metrics.height() * 1.3;
            line = i < words.size() ? words.at(i) : QString();
        }
        y += metrics.height() * (terminal ? 0 : 0.8);
        if (y > size.height() - margin / 2)
            break;
    }
    *text = seen.join(u'\n');
}

void paintPoster(QImage &image, DemoRandom &random, const QList<QColor> &colours, QString *text)
{
    const QSizeF size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const QColor ground = random.pick(colours);
    painter.fillRect(image.rect(), ground);

    // A bold composition in the upper part, Swiss style.
    painter.setPen(Qt::NoPen);
    for (int i = random.between(2, 6); i > 0; --i) {
        QColor colour = random.pick(colours);
        if (colour == ground)
            colour = readableOn(ground);
        painter.setBrush(colour);
        const double extent = size.width() * random.real(0.2, 0.7);
        const QPointF at(random.real(-0.1, 0.8) * size.width(), random.real(0.0, 0.45) * size.height());
        if (random.chance(0.5))
            painter.drawEllipse(QRectF(at, QSizeF(extent, extent)));
        else
            painter.drawRect(QRectF(at, QSizeF(extent, extent * random.real(0.2, 0.8))));
    }

    const PosterWords words = DemoVocabulary::posterWords(random);
    const QColor ink = readableOn(ground);
    painter.setPen(ink);
    const double margin = size.width() * 0.07;
    const double textWidth = size.width() - 2 * margin;
    drawFitted(painter, QRectF(margin, size.height() * 0.58, textWidth, size.height() * 0.14), words.title, u"DejaVu Sans"_s,
               QFont::Black, Qt::AlignLeft | Qt::AlignVCenter);
    drawFitted(painter, QRectF(margin, size.height() * 0.73, textWidth, size.height() * 0.05), words.subtitle, u"DejaVu Serif"_s,
               QFont::Normal, Qt::AlignLeft | Qt::AlignVCenter);
    drawFitted(painter, QRectF(margin, size.height() * 0.82, textWidth, size.height() * 0.045), words.date, u"DejaVu Sans"_s,
               QFont::Bold, Qt::AlignLeft | Qt::AlignVCenter);
    drawFitted(painter, QRectF(margin, size.height() * 0.88, textWidth, size.height() * 0.04), words.venue, u"DejaVu Sans"_s,
               QFont::Normal, Qt::AlignLeft | Qt::AlignVCenter);
    *text = QStringList{words.title, words.subtitle, words.date, words.venue}.join(u'\n');
}

} // namespace kivo::demo::TextPictures
