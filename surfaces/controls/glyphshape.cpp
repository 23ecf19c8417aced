#include "surfaces/controls/glyphshape.h"

#include <QHash>
#include <QMutex>
#include <QPainter>
#include <QPicture>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

const QHash<QString, QString> &shapes()
{
    static const QHash<QString, QString> table = {
        {u"all"_s, u"M2.5 2.5h4.5v4.5h-4.5z M9 2.5h4.5v4.5h-4.5z M2.5 9h4.5v4.5h-4.5z M9 9h4.5v4.5h-4.5z"_s},
        {u"inbox"_s, u"M2 9.5 L4 3.5 H12 L14 9.5 V13 H2 Z M2 9.5 H5.5 L6.5 11 H9.5 L10.5 9.5 H14"_s},
        {u"favourites"_s, u"M8 13.5 C8 13.5 2 10 2 6 C2 4 3.5 2.5 5.25 2.5 C6.5 2.5 7.5 3.2 8 4.2 C8.5 3.2 9.5 2.5 10.75 2.5 C12.5 2.5 14 4 14 6 C14 10 8 13.5 8 13.5 Z"_s},
        {u"links"_s, u"M6.5 9.5 L9.5 6.5 M7.25 4.75 L8.5 3.5 A2.83 2.83 0 0 1 12.5 7.5 L11.25 8.75 M8.75 11.25 L7.5 12.5 A2.83 2.83 0 0 1 3.5 8.5 L4.75 7.25"_s},
        {u"trash"_s, u"M2.5 4.5 H13.5 M6 4.5 V2.75 H10 V4.5 M4 4.5 L4.75 13.5 H11.25 L12 4.5 M6.75 7 V11 M9.25 7 V11"_s},
        {u"hidden"_s, u"M1.75 8 C3.2 5.2 5.4 3.75 8 3.75 C10.6 3.75 12.8 5.2 14.25 8 C12.8 10.8 10.6 12.25 8 12.25 C5.4 12.25 3.2 10.8 1.75 8 Z M8 6 A2 2 0 1 1 8 10 A2 2 0 1 1 8 6 M2.5 2.5 L13.5 13.5"_s},
        {u"image"_s, u"M2.5 3 H13.5 V13 H2.5 Z M2.5 11 L6 7.5 L9.25 10.75 M8.25 9.75 L10 8 L13.5 11.5 M10.25 4.75 A1 1 0 1 1 10.25 6.75 A1 1 0 1 1 10.25 4.75"_s},
        {u"videos"_s, u"M2.5 3.5 H13.5 V12.5 H2.5 Z M6.75 6 L10 8 L6.75 10 Z"_s},
        {u"documents"_s, u"M4 2 H9.5 L12.5 5 V14 H4 Z M9.5 2 V5 H12.5 M6 8.5 H10.5 M6 11 H10.5"_s},
        {u"tweets"_s, u"M2.5 3.5 H13.5 V10.5 H7 L4.5 13 V10.5 H2.5 Z"_s},
        {u"instagram"_s, u"M5 2.5 H11 A2.5 2.5 0 0 1 13.5 5 V11 A2.5 2.5 0 0 1 11 13.5 H5 A2.5 2.5 0 0 1 2.5 11 V5 A2.5 2.5 0 0 1 5 2.5 Z M8 5.6 A2.4 2.4 0 1 1 8 10.4 A2.4 2.4 0 1 1 8 5.6 M11.2 4.6 L11.3 4.7"_s},
        {u"audio"_s, u"M6 12 V3.75 L13 2.5 V10.5 M6 12 A1.75 1.75 0 1 1 2.5 12 A1.75 1.75 0 1 1 6 12 M13 10.5 A1.75 1.75 0 1 1 9.5 10.5 A1.75 1.75 0 1 1 13 10.5"_s},
        {u"drop"_s, u"M8 2 V9.5 M5 6.75 L8 9.75 L11 6.75 M2.5 9.5 V12.5 A1 1 0 0 0 3.5 13.5 H12.5 A1 1 0 0 0 13.5 12.5 V9.5"_s},
        {u"folder"_s, u"M2 4 A1 1 0 0 1 3 3 H6.25 L7.75 4.5 H13 A1 1 0 0 1 14 5.5 V12 A1 1 0 0 1 13 13 H3 A1 1 0 0 1 2 12 Z"_s},
        {u"warning"_s, u"M8 2.5 L14 13 H2 Z M8 6.5 V9.5 M8 11.25 L8 11.3"_s},
        {u"library"_s, u"M3 2.5 H5.5 V13.5 H3 Z M7 2.5 H9.5 V13.5 H7 Z M11 3 L13.4 2.6 L14.5 13 L12.1 13.4 Z"_s},

        // Chrome.
        {u"chevron.right"_s, u"M6 3.5 L10.5 8 L6 12.5"_s},
        {u"chevron.down"_s, u"M3.5 6 L8 10.5 L12.5 6"_s},
        {u"chevron.left"_s, u"M10 3.5 L5.5 8 L10 12.5"_s},
        {u"plus"_s, u"M8 3 V13 M3 8 H13"_s},
        {u"close"_s, u"M4.5 4.5 L11.5 11.5 M11.5 4.5 L4.5 11.5"_s},
        {u"xmark"_s, u"M4.5 4.5 L11.5 11.5 M11.5 4.5 L4.5 11.5"_s},
        {u"checkmark"_s, u"M3 8.5 L6.5 12 L13 4.5"_s},
        {u"sliders"_s, u"M2.5 5 H13.5 M2.5 11 H13.5 M5.5 3.25 V6.75 M10.5 9.25 V12.75"_s},
        {u"sort"_s, u"M5 13 V3 M2.5 5.5 L5 3 L7.5 5.5 M11 3 V13 M8.5 10.5 L11 13 L13.5 10.5"_s},
        {u"search"_s, u"M7 2.5 A4.5 4.5 0 1 1 7 11.5 A4.5 4.5 0 1 1 7 2.5 M10.25 10.25 L13.5 13.5"_s},
        {u"cards"_s, u"M2.5 2.5 H7 V9 H2.5 Z M9 2.5 H13.5 V6 H9 Z M2.5 11 H7 V13.5 H2.5 Z M9 8 H13.5 V13.5 H9 Z"_s},
        {u"list"_s, u"M6 4 H13.5 M6 8 H13.5 M6 12 H13.5 M2.6 4 L2.9 4 M2.6 8 L2.9 8 M2.6 12 L2.9 12"_s},
        {u"timeline"_s, u"M2.5 3.5 H13.5 V13.5 H2.5 Z M2.5 6.5 H13.5 M5.5 2 V4.5 M10.5 2 V4.5"_s},
        {u"sidebar"_s, u"M2 3 H14 V13 H2 Z M6 3 V13"_s},
        {u"details"_s, u"M2 3 H14 V13 H2 Z M10 3 V13"_s},
        {u"info"_s, u"M8 2 A6 6 0 1 1 8 14 A6 6 0 1 1 8 2 M8 7.25 V11 M8 4.9 L8 5.1"_s},
        {u"pin"_s, u"M9.5 2 L14 6.5 M11.75 4.25 L8.75 7.25 L5 6.5 L9.5 11 L8.75 7.25 M7.25 8.75 L2.5 13.5"_s},
        {u"tag"_s, u"M2.5 3.5 V8 L8.5 14 L14 8.5 L8 2.5 H3.5 Z M5.4 5.4 L5.6 5.6"_s},
        {u"link.out"_s, u"M9 2.5 H13.5 V7 M13.5 2.5 L7.5 8.5 M11.5 9.5 V13.5 H2.5 V4.5 H6.5"_s},

        // Collection symbols (the names of the semantic icons where one fits).
        {u"square.grid.2x2"_s, u"M2.5 2.5h4.5v4.5h-4.5z M9 2.5h4.5v4.5h-4.5z M2.5 9h4.5v4.5h-4.5z M9 9h4.5v4.5h-4.5z"_s},
        {u"tray"_s, u"M2 9.5 L4 3.5 H12 L14 9.5 V13 H2 Z M2 9.5 H5.5 L6.5 11 H9.5 L10.5 9.5 H14"_s},
        {u"star"_s, u"M8 2 L9.8 5.9 L14 6.3 L10.9 9.1 L11.8 13.3 L8 11.1 L4.2 13.3 L5.1 9.1 L2 6.3 L6.2 5.9 Z"_s},
        {u"heart"_s, u"M8 13.5 C8 13.5 2 10 2 6 C2 4 3.5 2.5 5.25 2.5 C6.5 2.5 7.5 3.2 8 4.2 C8.5 3.2 9.5 2.5 10.75 2.5 C12.5 2.5 14 4 14 6 C14 10 8 13.5 8 13.5 Z"_s},
        {u"bookmark"_s, u"M4.5 2.5 H11.5 V13.5 L8 10.5 L4.5 13.5 Z"_s},
        {u"camera"_s, u"M2 5 H4.5 L5.75 3.25 H10.25 L11.5 5 H14 V12.75 H2 Z M8 6.5 A2.5 2.5 0 1 1 8 11.5 A2.5 2.5 0 1 1 8 6.5"_s},
        {u"film"_s, u"M2.5 2.5 H13.5 V13.5 H2.5 Z M5 2.5 V13.5 M11 2.5 V13.5 M2.5 5.5 H5 M2.5 8 H5 M2.5 10.5 H5 M11 5.5 H13.5 M11 8 H13.5 M11 10.5 H13.5"_s},
        {u"music.note"_s, u"M6 12 V3.5 L12 2.25 V4.25 L6 5.5 M6 12 A1.75 1.75 0 1 1 2.5 12 A1.75 1.75 0 1 1 6 12"_s},
        {u"paintpalette"_s, u"M8 2 C4.5 2 2 4.6 2 7.8 C2 11 4.4 14 7.3 14 C8.4 14 8.7 13.2 8.3 12.4 C7.8 11.5 8.3 10.5 9.4 10.5 H11 C12.8 10.5 14 9.2 14 7.5 C14 4.4 11.3 2 8 2 Z M4.9 7.4 L5.1 7.6 M6.9 4.9 L7.1 5.1 M9.9 4.9 L10.1 5.1 M11.4 7.4 L11.6 7.6"_s},
        {u"sparkles"_s, u"M7 2 L8.2 5.8 L12 7 L8.2 8.2 L7 12 L5.8 8.2 L2 7 L5.8 5.8 Z M12.5 10 L13 11 L14 11.5 L13 12 L12.5 13 L12 12 L11 11.5 L12 11 Z"_s},
        {u"lightbulb"_s, u"M6 12 H10 M6.5 14 H9.5 M5.6 10 C4.3 9.1 3.5 7.7 3.5 6.2 C3.5 3.8 5.5 2 8 2 C10.5 2 12.5 3.8 12.5 6.2 C12.5 7.7 11.7 9.1 10.4 10 V12 H5.6 Z"_s},
        {u"leaf"_s, u"M3 13 C3 7 7 3 13 3 C13 9 9 13 3 13 Z M3 13 L9 7"_s},
        {u"house"_s, u"M2.5 7.5 L8 2.75 L13.5 7.5 M4 6.5 V13.5 H12 V6.5 M6.75 13.5 V9.5 H9.25 V13.5"_s},
        {u"airplane"_s, u"M8 1.75 C8.7 1.75 9 2.4 9 3 V6.5 L14 9.5 V11 L9 9.5 V12.25 L10.75 13.5 V14.5 L8 13.75 L5.25 14.5 V13.5 L7 12.25 V9.5 L2 11 V9.5 L7 6.5 V3 C7 2.4 7.3 1.75 8 1.75 Z"_s},
        {u"fork.knife"_s, u"M4 2 V6 C4 7 4.75 7.75 5.5 7.75 C6.25 7.75 7 7 7 6 V2 M5.5 2 V14 M11 14 V2 C9.5 3 9 5 9 7.5 H11"_s},
        {u"cup.and.saucer"_s, u"M3 5 H11 V9 C11 11 9.5 12 7 12 C4.5 12 3 11 3 9 Z M11 6 H12.25 C13.2 6 13.75 6.7 13.75 7.5 C13.75 8.3 13.2 9 12.25 9 H11 M2 14 H12"_s},
        {u"book.closed"_s, u"M3.5 3 C3.5 2.4 4 2 4.5 2 H12.5 V12 H4.5 C4 12 3.5 12.5 3.5 13 C3.5 13.6 4 14 4.5 14 H12.5 M3.5 3 V13 M6 5 H10"_s},
        {u"briefcase"_s, u"M2 5 H14 V13 H2 Z M5.5 5 V3.25 H10.5 V5 M2 8.5 H14"_s},
        {u"tshirt"_s, u"M5.5 2.5 L2 4.5 L3.25 7 L4.5 6.5 V13.5 H11.5 V6.5 L12.75 7 L14 4.5 L10.5 2.5 C10.2 3.6 9.2 4.25 8 4.25 C6.8 4.25 5.8 3.6 5.5 2.5 Z"_s},
        {u"flag"_s, u"M3.5 14 V2.5 M3.5 3 H12.5 L10.5 6 L12.5 9 H3.5"_s},
        {u"mappin"_s, u"M8 14.5 C8 14.5 3.5 9.75 3.5 6.25 C3.5 3.75 5.5 1.75 8 1.75 C10.5 1.75 12.5 3.75 12.5 6.25 C12.5 9.75 8 14.5 8 14.5 Z M8 4.5 A1.75 1.75 0 1 1 8 8 A1.75 1.75 0 1 1 8 4.5"_s},
        {u"globe"_s, u"M8 2 A6 6 0 1 1 8 14 A6 6 0 1 1 8 2 M2 8 H14 M8 2 C6.2 3.7 5.5 5.8 5.5 8 C5.5 10.2 6.2 12.3 8 14 M8 2 C9.8 3.7 10.5 5.8 10.5 8 C10.5 10.2 9.8 12.3 8 14"_s},
        {u"gift"_s, u"M2.5 5.5 H13.5 V8 H2.5 Z M3.5 8 V13.5 H12.5 V8 M8 5.5 V13.5 M8 5.5 C7 3 4.5 2.5 4.5 4 C4.5 5 6 5.5 8 5.5 C10 5.5 11.5 5 11.5 4 C11.5 2.5 9 3 8 5.5"_s},
    };
    return table;
}

/**
 * Drawings by path, colour and line width, recorded once. A window's glyphs come in a few dozen of
 * these. Painting may happen on a render thread, several windows each on their own; a recorded
 * picture, unlike the parser that made it, is no object bound to a thread.
 */
class Drawings
{
public:
    void draw(QPainter *painter, const QString &path, const QColor &color, qreal lineWidth, const QRectF &bounds)
    {
        const QString key = path + u'|' + color.name(QColor::HexArgb) + u'|' + QString::number(lineWidth);
        QPicture picture;
        {
            QMutexLocker locker(&m_lock);
            auto found = m_pictures.constFind(key);
            if (found == m_pictures.cend()) {
                // The set is small; a bound keeps colour animations from growing it without end.
                if (m_pictures.size() >= 512)
                    m_pictures.clear();
                found = m_pictures.insert(key, record(path, color, lineWidth));
            }
            picture = found.value();
        }
        painter->save();
        painter->translate(bounds.topLeft());
        painter->scale(bounds.width() / 16, bounds.height() / 16);
        painter->drawPicture(0, 0, picture);
        painter->restore();
    }

private:
    static QPicture record(const QString &path, const QColor &color, qreal lineWidth)
    {
        const QByteArray document =
            u"<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 16 16\" width=\"16\" height=\"16\">"
            "<path d=\"%1\" fill=\"none\" stroke=\"%2\" stroke-opacity=\"%3\" stroke-width=\"%4\""
            " stroke-linecap=\"round\" stroke-linejoin=\"round\"/></svg>"_s
                .arg(path, color.name(QColor::HexRgb), QString::number(color.alphaF()), QString::number(lineWidth))
                .toUtf8();
        QPicture picture;
        QSvgRenderer renderer(document);
        QPainter recorder(&picture);
        recorder.setRenderHint(QPainter::Antialiasing);
        renderer.render(&recorder, QRectF(0, 0, 16, 16));
        recorder.end();
        return picture;
    }

    QMutex m_lock;
    QHash<QString, QPicture> m_pictures;
};

Drawings &drawings()
{
    static Drawings instance;
    return instance;
}

} // namespace

GlyphShape::GlyphShape(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

QString GlyphShape::pathFor(const QString &name, const QString &fallback)
{
    const QHash<QString, QString> &table = shapes();
    if (auto found = table.constFind(name); found != table.cend())
        return found.value();
    return table.value(fallback);
}

void GlyphShape::setName(const QString &name)
{
    if (name == m_name)
        return;
    m_name = name;
    update();
    Q_EMIT nameChanged();
}

void GlyphShape::setFallback(const QString &fallback)
{
    if (fallback == m_fallback)
        return;
    m_fallback = fallback;
    update();
    Q_EMIT fallbackChanged();
}

void GlyphShape::setColor(const QColor &color)
{
    if (color == m_color)
        return;
    m_color = color;
    update();
    Q_EMIT colorChanged();
}

void GlyphShape::setLineWidth(qreal lineWidth)
{
    if (qFuzzyCompare(lineWidth, m_lineWidth))
        return;
    m_lineWidth = lineWidth;
    update();
    Q_EMIT lineWidthChanged();
}

void GlyphShape::paint(QPainter *painter)
{
    const QString path = pathFor(m_name, m_fallback);
    if (path.isEmpty() || m_color.alpha() == 0)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    drawings().draw(painter, path, m_color, m_lineWidth, QRectF(0, 0, width(), height()));
}

} // namespace kivo
