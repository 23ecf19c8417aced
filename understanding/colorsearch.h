#pragma once

#include "core/records.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace kivo::ColorSearch {

/**
 * One colour word's window in hue, saturation and brightness. An absent hue bound means any hue;
 * a `hueLow` above `hueHigh` wraps through 0 (red). All bounds are inclusive.
 */
struct Swatch {
    QStringList names; // the first is the canonical name
    std::optional<double> hueLow;
    std::optional<double> hueHigh;
    double minSat = 0;
    double maxSat = 1;
    double minBri = 0;
    double maxBri = 1;

    /** Whether a colour lies in this window. */
    [[nodiscard]] bool contains(double hue, double saturation, double brightness) const;
};

/** The colour words people type, in their fixed order; windows overlap on purpose. */
[[nodiscard]] const QList<Swatch> &swatches();

/** Words such as "dark" or "pastel" that a colour query may hold without changing the match. */
[[nodiscard]] const QStringList &modifierWords();

/** Whether the text is only colour words and modifiers, with at least one colour word. */
[[nodiscard]] bool isColourQuery(const QString &text);

/** The canonical names of the swatches whose words occur anywhere in the text, in table order. */
[[nodiscard]] QStringList colourWords(const QString &text);

/**
 * The index of the first of the palette's leading four colours inside the window of `word` (one
 * of the swatch names, exactly); nothing when none is, or the word names no swatch.
 */
[[nodiscard]] std::optional<int> matchIndex(const QStringList &palette, const QString &word);

/** The sum of the words' match indexes, lower is stronger; nothing when any word has no match. */
[[nodiscard]] std::optional<int> matchScore(const QStringList &palette, const QStringList &words);

/** What the colour shortcut of a search shows: how many items match, and the best of them. */
struct ColourMatches {
    int total = 0;
    QList<LibraryItem> items;
};

/**
 * Ranks live items, given newest first, by how strongly their palettes hold all of `words`: the
 * total counts every match, the list keeps only items with a file, best score first and newest
 * first among equals, cut to `limit`.
 */
[[nodiscard]] ColourMatches rankByColours(
    const QList<LibraryItem> &itemsNewestFirst, const QStringList &words, int limit);

} // namespace kivo::ColorSearch
