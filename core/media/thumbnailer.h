#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace kivo {

/**
 * The one entry for "a small picture of this file": it picks the decoder by the file's type
 * (pictures, video frames, PDF pages) and returns an upright picture within a bound. Safe to call
 * from any thread; it blocks for the decode, so callers run it off the main thread.
 */
namespace Thumbnailer {

/** Which decoder a file goes to. */
enum class Source { none, image, video, pdf };

/** The decoder for a file, from its MIME type (name first, then contents when the name says nothing). */
[[nodiscard]] Source sourceFor(const QString &path);

/** The file's picture fitted in `bound` (ImageDecoder::fitWithin rules); null when it has none. */
[[nodiscard]] QImage make(const QString &path, const QSize &bound);

} // namespace Thumbnailer
} // namespace kivo
