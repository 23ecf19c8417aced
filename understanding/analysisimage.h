#pragma once

#include <QImage>
#include <QString>

namespace kivo::AnalysisImage {

/** The longest side of the bitmap that text, palette and classification read. */
inline constexpr int maxPixelSize = 1024;

/**
 * Decodes a picture file once for analysis: upright (its orientation applied) and reduced so that
 * the longest side is at most `maxSide`, never enlarged. A null image when no decoder reads it.
 */
[[nodiscard]] QImage decode(const QString &path, int maxSide = maxPixelSize);

} // namespace kivo::AnalysisImage
