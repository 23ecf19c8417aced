#include "understanding/hsbcolour.h"

#include <algorithm>

namespace kivo {

HsbColour HsbColour::fromRgb(int red, int green, int blue)
{
    const double r = red / 255.0;
    const double g = green / 255.0;
    const double b = blue / 255.0;
    const double maximum = std::max({r, g, b});
    const double minimum = std::min({r, g, b});
    const double delta = maximum - minimum;

    HsbColour colour;
    colour.brightness = maximum;
    colour.saturation = maximum > 0 ? delta / maximum : 0;
    if (delta <= 0)
        return colour;

    double hue = 0;
    if (maximum == r)
        hue = (g - b) / delta;
    else if (maximum == g)
        hue = 2.0 + (b - r) / delta;
    else
        hue = 4.0 + (r - g) / delta;
    hue /= 6.0;
    if (hue < 0)
        hue += 1.0;
    colour.hue = hue;
    return colour;
}

HsbColour HsbColour::fromPackedRgb(unsigned rgb)
{
    return fromRgb(int((rgb >> 16) & 0xFFU), int((rgb >> 8) & 0xFFU), int(rgb & 0xFFU));
}

std::optional<unsigned> parseSixHexDigits(QStringView digits)
{
    // Checked by hand: the library parsers would also take a sign or an "0x" prefix.
    if (digits.size() != 6)
        return std::nullopt;
    unsigned value = 0;
    for (const QChar c : digits) {
        const char16_t u = c.unicode();
        unsigned digit = 0;
        if (u >= u'0' && u <= u'9')
            digit = u - u'0';
        else if (u >= u'a' && u <= u'f')
            digit = u - u'a' + 10;
        else if (u >= u'A' && u <= u'F')
            digit = u - u'A' + 10;
        else
            return std::nullopt;
        value = value * 16 + digit;
    }
    return value;
}

} // namespace kivo
