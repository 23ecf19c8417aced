#pragma once

#include "understanding/colorsearch.h"
#include "understanding/hsbcolour.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace kivo {

/**
 * Tests stored palettes against the colour words of one search, row after row of a full scan.
 * It answers exactly as ColorSearch::matchIndex does for each word, but reads the usual
 * `colors` text (a compact JSON array of "#RRGGBB") without a JSON decode or a string per colour;
 * any other text takes the general path.
 */
class ColourMatcher
{
public:
    /** `words` are canonical swatch names, as ColorSearch::colourWords gives them. */
    explicit ColourMatcher(const QStringList &words);

    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }
    /** Whether every word has a match among the palette's leading four colours. */
    [[nodiscard]] bool matches(QStringView colorsText) const;

private:
    /** The palette's leading colours from the compact form; false when the text has another form. */
    static bool readCompact(QStringView text, QList<HsbColour> &leading);

    QStringList m_words;
    QList<const ColorSearch::Swatch *> m_swatches; // one per word; null when a word names none
};

} // namespace kivo
