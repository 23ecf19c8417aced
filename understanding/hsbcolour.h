#pragma once

#include <QStringView>

#include <optional>

namespace kivo {

/**
 * A colour as hue, saturation and brightness, each from 0 to 1: the one model in which palette
 * colours are named and matched against colour words.
 */
struct HsbColour {
    double hue = 0;
    double saturation = 0;
    double brightness = 0;

    /** From 8-bit sRGB channels; a grey has hue 0 and saturation 0. */
    [[nodiscard]] static HsbColour fromRgb(int red, int green, int blue);
    /** From a packed 0xRRGGBB value. */
    [[nodiscard]] static HsbColour fromPackedRgb(unsigned rgb);
};

/** The packed 0xRRGGBB value of exactly six hexadecimal digits, or nothing for any other text. */
[[nodiscard]] std::optional<unsigned> parseSixHexDigits(QStringView digits);

} // namespace kivo
