#include "understanding/colornaming.h"

#include "understanding/hsbcolour.h"

using namespace Qt::StringLiterals;

namespace kivo::ColorNaming {

namespace {

bool isTrimmed(QChar c)
{
    // "#" and horizontal blanks; a line break is not a blank here.
    return c == u'#' || c == u' ' || c == u'\t' || c.category() == QChar::Separator_Space;
}

QStringView trimmed(QStringView text)
{
    while (!text.isEmpty() && isTrimmed(text.front()))
        text = text.mid(1);
    while (!text.isEmpty() && isTrimmed(text.back()))
        text.chop(1);
    return text;
}

} // namespace

const QList<HueWord> &hueWords()
{
    static const QList<HueWord> table{
        {0.0, 0.04, u"red"_s},
        {0.04, 0.1, u"orange"_s},
        {0.1, 0.17, u"amber"_s},
        {0.17, 0.24, u"olive"_s},
        {0.24, 0.42, u"green"_s},
        {0.42, 0.55, u"teal"_s},
        {0.55, 0.7, u"blue"_s},
        {0.7, 0.79, u"violet"_s},
        {0.79, 0.9, u"magenta"_s},
        {0.9, 1.01, u"red"_s},
    };
    return table;
}

std::optional<QString> colourName(const QString &hex)
{
    const std::optional<unsigned> rgb = parseSixHexDigits(trimmed(hex));
    if (!rgb)
        return std::nullopt;
    const HsbColour colour = HsbColour::fromPackedRgb(*rgb);
    if (colour.brightness < 0.16)
        return u"black"_s;
    if (colour.saturation < 0.12) {
        if (colour.brightness > 0.85)
            return u"white"_s;
        if (colour.brightness > 0.5)
            return u"grey"_s;
        return u"charcoal"_s;
    }
    for (const HueWord &row : hueWords()) {
        if (colour.hue >= row.from && colour.hue < row.below)
            return row.word;
    }
    return u"grey"_s;
}

} // namespace kivo::ColorNaming
