#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace kivo {

/**
 * Reads still pictures upright and no larger than asked, letting the format scale while it
 * decodes (JPEG does so in the DCT) so that a small card never costs a full-size decode.
 */
namespace ImageDecoder {

/**
 * The largest size with the aspect of `size` that fits in `bound`, never larger than `size` and at
 * least 1 × 1. A bound dimension of 0 or less leaves that dimension free; an empty bound keeps `size`.
 */
[[nodiscard]] QSize fitWithin(const QSize &size, const QSize &bound);

/** The picture's size as shown, after its orientation tag; invalid when the file is not a picture. */
[[nodiscard]] QSize uprightSize(const QString &path);

/** The picture, upright, fitted in `bound` (see fitWithin); null when it cannot be read. */
[[nodiscard]] QImage decode(const QString &path, const QSize &bound);

} // namespace ImageDecoder
} // namespace kivo
