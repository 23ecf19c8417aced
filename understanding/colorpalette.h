#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

namespace kivo::ColorPalette {

/** The side of the square every image is reduced to before its pixels are counted. */
inline constexpr int sampleSide = 64;
/** Pixels whose alpha byte is below this do not count. */
inline constexpr int minimumAlpha = 8;

/**
 * The dominant colours of an image, most common first, at most `maxColours`, each "#RRGGBB".
 *
 * The image is reduced to 64 by 64 premultiplied pixels (aspect ignored), every visible pixel
 * falls into the bin of its channels' top four bits, and each of the largest bins gives the mean
 * colour of its pixels. Equal counts keep the order of their bin values. Empty for a null or
 * fully transparent image.
 */
[[nodiscard]] QStringList extractPalette(const QImage &image, int maxColours);

/** The text of the `colors` column: a compact JSON array; nothing for an empty palette. */
[[nodiscard]] std::optional<QString> encodePalette(const QStringList &palette);

/** The palette stored in the `colors` column; text that is not a JSON array reads as empty. */
[[nodiscard]] QStringList decodePalette(const QString &colorsText);
[[nodiscard]] QStringList decodePalette(const std::optional<QString> &colorsText);

} // namespace kivo::ColorPalette
