#include "understanding/colorsearch.h"

#include "understanding/colorpalette.h"
#include "understanding/hsbcolour.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo::ColorSearch {

namespace {

constexpr int leadingColours = 4;

std::optional<HsbColour> parsePaletteColour(const QString &entry)
{
    QStringView digits = QStringView(entry).trimmed();
    if (digits.startsWith(u'#'))
        digits = digits.mid(1);
    const std::optional<unsigned> rgb = parseSixHexDigits(digits);
    if (!rgb)
        return std::nullopt;
    return HsbColour::fromPackedRgb(*rgb);
}

const Swatch *swatchNamed(const QString &word)
{
    for (const Swatch &swatch : swatches()) {
        if (swatch.names.contains(word))
            return &swatch;
    }
    return nullptr;
}

bool isSwatchName(const QString &token)
{
    return swatchNamed(token) != nullptr;
}

// Maximal runs of letters; everything else separates.
QStringList letterRuns(const QString &text)
{
    QStringList runs;
    QString current;
    for (const QChar c : text) {
        if (c.isLetter()) {
            current.append(c);
        } else if (!current.isEmpty()) {
            runs.append(current);
            current.clear();
        }
    }
    if (!current.isEmpty())
        runs.append(current);
    return runs;
}

} // namespace

bool Swatch::contains(double hue, double saturation, double brightness) const
{
    if (saturation < minSat || saturation > maxSat || brightness < minBri || brightness > maxBri)
        return false;
    if (!hueLow || !hueHigh)
        return true;
    if (*hueLow <= *hueHigh)
        return *hueLow <= hue && hue <= *hueHigh;
    return hue >= *hueLow || hue <= *hueHigh;
}

const QList<Swatch> &swatches()
{
    // A function-local static: built once, on first use, safely from any thread.
    static const QList<Swatch> table{
        {{u"black"_s}, {}, {}, 0.0, 1.0, 0.0, 0.2},
        {{u"white"_s}, {}, {}, 0.0, 0.12, 0.85, 1.0},
        {{u"grey"_s, u"gray"_s, u"silver"_s}, {}, {}, 0.0, 0.14, 0.2, 0.85},
        {{u"cream"_s, u"beige"_s, u"ivory"_s, u"off-white"_s, u"offwhite"_s}, 0.06, 0.16, 0.06, 0.32, 0.78, 1.0},
        {{u"brown"_s, u"tan"_s, u"chocolate"_s, u"coffee"_s}, 0.02, 0.11, 0.25, 1.0, 0.15, 0.55},
        {{u"red"_s, u"crimson"_s, u"scarlet"_s}, 0.95, 0.04, 0.45, 1.0, 0.25, 1.0},
        {{u"orange"_s, u"amber"_s}, 0.04, 0.1, 0.45, 1.0, 0.4, 1.0},
        {{u"gold"_s, u"golden"_s}, 0.1, 0.15, 0.4, 1.0, 0.5, 0.9},
        {{u"yellow"_s}, 0.13, 0.19, 0.4, 1.0, 0.55, 1.0},
        {{u"lime"_s, u"chartreuse"_s}, 0.19, 0.28, 0.4, 1.0, 0.4, 1.0},
        {{u"green"_s, u"emerald"_s, u"olive"_s, u"mint"_s}, 0.25, 0.45, 0.3, 1.0, 0.2, 1.0},
        {{u"teal"_s, u"cyan"_s, u"aqua"_s, u"turquoise"_s}, 0.45, 0.54, 0.3, 1.0, 0.3, 1.0},
        {{u"blue"_s, u"azure"_s, u"cobalt"_s}, 0.54, 0.7, 0.35, 1.0, 0.25, 1.0},
        {{u"navy"_s, u"indigo"_s}, 0.58, 0.72, 0.4, 1.0, 0.1, 0.4},
        {{u"purple"_s, u"violet"_s, u"lavender"_s}, 0.72, 0.82, 0.25, 1.0, 0.25, 1.0},
        {{u"magenta"_s, u"fuchsia"_s}, 0.82, 0.9, 0.4, 1.0, 0.3, 1.0},
        {{u"pink"_s, u"rose"_s, u"blush"_s}, 0.88, 0.98, 0.15, 0.75, 0.6, 1.0},
    };
    return table;
}

const QStringList &modifierWords()
{
    static const QStringList words{u"dark"_s, u"light"_s, u"deep"_s, u"pale"_s, u"bright"_s, u"muted"_s, u"soft"_s,
        u"pastel"_s, u"neon"_s, u"very"_s, u"off"_s};
    return words;
}

bool isColourQuery(const QString &text)
{
    const QStringList tokens = letterRuns(text.toLower());
    if (tokens.isEmpty())
        return false;
    bool sawColour = false;
    for (const QString &token : tokens) {
        if (isSwatchName(token))
            sawColour = true;
        else if (!modifierWords().contains(token))
            return false;
    }
    return sawColour;
}

QStringList colourWords(const QString &text)
{
    const QString lowered = text.toLower();
    QStringList words;
    for (const Swatch &swatch : swatches()) {
        const bool named = std::any_of(
            swatch.names.cbegin(), swatch.names.cend(), [&](const QString &name) { return lowered.contains(name); });
        if (named)
            words.append(swatch.names.constFirst());
    }
    return words;
}

std::optional<int> matchIndex(const QStringList &palette, const QString &word)
{
    const Swatch *swatch = swatchNamed(word);
    if (!swatch || palette.isEmpty())
        return std::nullopt;
    const qsizetype last = std::min<qsizetype>(leadingColours, palette.size()) - 1;
    for (int i = 0; i <= last; ++i) {
        const std::optional<HsbColour> colour = parsePaletteColour(palette.at(i));
        if (colour && swatch->contains(colour->hue, colour->saturation, colour->brightness))
            return i;
    }
    return std::nullopt;
}

std::optional<int> matchScore(const QStringList &palette, const QStringList &words)
{
    int score = 0;
    for (const QString &word : words) {
        const std::optional<int> index = matchIndex(palette, word);
        if (!index)
            return std::nullopt;
        score += *index;
    }
    return score;
}

ColourMatches rankByColours(const QList<LibraryItem> &itemsNewestFirst, const QStringList &words, int limit)
{
    struct Ranked {
        int score;
        qsizetype position;
    };
    ColourMatches matches;
    QList<Ranked> ranked;
    for (qsizetype i = 0; i < itemsNewestFirst.size(); ++i) {
        const LibraryItem &item = itemsNewestFirst.at(i);
        const std::optional<int> score = matchScore(ColorPalette::decodePalette(item.colors), words);
        if (!score)
            continue;
        ++matches.total;
        if (item.filePath)
            ranked.append({*score, i});
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const Ranked &a, const Ranked &b) { return a.score < b.score; });
    for (qsizetype i = 0; i < ranked.size() && i < limit; ++i)
        matches.items.append(itemsNewestFirst.at(ranked.at(i).position));
    return matches;
}

} // namespace kivo::ColorSearch
