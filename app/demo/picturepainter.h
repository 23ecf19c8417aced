#pragma once

#include "app/demo/demorandom.h"

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

namespace kivo::demo {

/** What a demo picture shows; the ones with words carry the words in `Picture::text`. */
enum class PictureStyle { photo, gradient, shapes, flat, sign, screenshot, poster };

/** One painted and encoded picture of the pool. */
struct Picture {
    QByteArray bytes;
    QString extension; // "jpg", "png" or "webp"
    QSize size;
    PictureStyle style = PictureStyle::photo;
    QStringList colors; // most common first, "#RRGGBB"
    QString text;       // the words painted on it, as a reader of the picture would find them
};

/**
 * Paints the pictures of the demo library: landscapes, soft light and clouds that pass for photos,
 * gradients, bold shapes and flat colour, and pictures with real words on them (signs, screens,
 * posters), in tall, wide, square and panoramic shapes, saved as JPEG, PNG or WebP.
 */
namespace PicturePainter {

/** Paints and encodes one picture; the longest side is 300-1600 px, or 96-360 px when light. */
[[nodiscard]] Picture make(DemoRandom &random, bool light);

/** The image of a style, painted at a size. */
[[nodiscard]] QImage paint(PictureStyle style, QSize size, DemoRandom &random, QString *text);

/** Up to five colours that cover the most of the image, most common first. */
[[nodiscard]] QStringList dominantColours(const QImage &image);

/** A palette of four or five colours that go together. */
[[nodiscard]] QList<QColor> palette(DemoRandom &random);

} // namespace PicturePainter

/** The styles with words on them; painted by PicturePainter. */
namespace TextPictures {

void paintSign(QImage &image, DemoRandom &random, const QList<QColor> &colours, QString *text);
void paintScreenshot(QImage &image, DemoRandom &random, QString *text);
void paintPoster(QImage &image, DemoRandom &random, const QList<QColor> &colours, QString *text);

} // namespace TextPictures
} // namespace kivo::demo
