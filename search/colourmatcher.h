#pragma once

#include "understanding/colorsearch.h"
#include "understanding/hsbcolour.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace kivo {

/**
 * Tests stored palettes against the colour words of one search. It answers exactly as
 * ColorSearch::matchIndex does for each word, but reads the usual `colors` text (a compact JSON
 * array of "#RRGGBB") without a JSON decode or a string per colour, down to the set of swatches
 * its leading colours fall in, which can be kept and tested again for any later search; any
 * other text takes the general path.
 */
class ColourMatcher
{
public:
    /** `words` are canonical swatch names, as ColorSearch::colourWords gives them. */
    explicit ColourMatcher(const QStringList &words);

    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }
    /** Whether every word has a match among the palette's leading four colours. */
    [[nodiscard]] bool matches(QStringView colorsText) const;

    /**
     * The swatches (bit i for ColorSearch::swatches()[i]) that hold one of the leading four
     * colours of a palette in the compact form; nothing for an empty text or any other form.
     */
    [[nodiscard]] static std::optional<quint64> swatchMask(QStringView colorsText);
    /** `matches` for a palette whose swatchMask is `mask`. */
    [[nodiscard]] bool matchesMask(quint64 mask) const;

private:
    /** The palette's leading colours from the compact form; false when the text has another form. */
    static bool readCompact(QStringView text, QList<HsbColour> &leading);

    QStringList m_words;
    quint64 m_wanted = 0; // the words' swatches
    bool m_allNamed = true; // false when a word names no swatch: then nothing matches
};

} // namespace kivo
