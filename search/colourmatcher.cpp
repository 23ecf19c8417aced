#include "search/colourmatcher.h"

#include "understanding/colorpalette.h"
#include "understanding/hsbcolour.h"

#include <algorithm>

namespace kivo {

namespace {

/** Matching looks at the most common colours only. */
constexpr qsizetype leadingColours = 4;
/** `"#RRGGBB"` with its quotes. */
constexpr qsizetype entryLength = 9;

} // namespace

ColourMatcher::ColourMatcher(const QStringList &words) : m_words(words)
{
    const auto &table = ColorSearch::swatches();
    static_assert(sizeof(quint64) * 8 >= 64);
    Q_ASSERT(table.size() <= 64);
    for (const QString &word : words) {
        const auto found = std::find_if(table.cbegin(), table.cend(),
            [&](const ColorSearch::Swatch &swatch) { return swatch.names.contains(word); });
        if (found == table.cend())
            m_allNamed = false;
        else
            m_wanted |= quint64(1) << (found - table.cbegin());
    }
}

bool ColourMatcher::readCompact(QStringView text, QList<HsbColour> &leading)
{
    leading.clear();
    if (text.size() < 2 || text.front() != u'[' || text.back() != u']')
        return false;
    qsizetype at = 1;
    const qsizetype end = text.size() - 1;
    qsizetype index = 0;
    while (at < end) {
        if (index > 0) {
            if (text.at(at) != u',')
                return false;
            ++at;
        }
        if (end - at < entryLength || text.at(at) != u'"' || text.at(at + 1) != u'#' || text.at(at + 8) != u'"')
            return false;
        const std::optional<unsigned> rgb = parseSixHexDigits(text.mid(at + 2, 6));
        if (!rgb)
            return false;
        if (index < leadingColours)
            leading.append(HsbColour::fromPackedRgb(*rgb));
        at += entryLength;
        ++index;
    }
    return true;
}

std::optional<quint64> ColourMatcher::swatchMask(QStringView colorsText)
{
    QList<HsbColour> leading;
    leading.reserve(leadingColours);
    if (colorsText.isEmpty() || !readCompact(colorsText, leading))
        return std::nullopt;
    const auto &table = ColorSearch::swatches();
    quint64 mask = 0;
    for (qsizetype i = 0; i < table.size(); ++i) {
        const ColorSearch::Swatch &swatch = table.at(i);
        if (std::any_of(leading.cbegin(), leading.cend(), [&](const HsbColour &colour) {
                return swatch.contains(colour.hue, colour.saturation, colour.brightness);
            }))
            mask |= quint64(1) << i;
    }
    return mask;
}

bool ColourMatcher::matchesMask(quint64 mask) const
{
    return !m_words.isEmpty() && m_allNamed && (mask & m_wanted) == m_wanted;
}

bool ColourMatcher::matches(QStringView colorsText) const
{
    if (m_words.isEmpty() || colorsText.isEmpty())
        return false;
    if (const std::optional<quint64> mask = swatchMask(colorsText))
        return matchesMask(*mask);
    const QStringList palette = ColorPalette::decodePalette(colorsText.toString());
    return std::all_of(m_words.cbegin(), m_words.cend(),
        [&](const QString &word) { return ColorSearch::matchIndex(palette, word).has_value(); });
}

} // namespace kivo
