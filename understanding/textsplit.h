#pragma once

#include <QString>
#include <QStringList>

namespace kivo::TextSplit {

/** The number of characters as a reader counts them (grapheme clusters, not code units). */
[[nodiscard]] qsizetype characterCount(const QString &text);

/** Maximal runs of letters and digits, in order; every other character separates. */
[[nodiscard]] QStringList letterDigitRuns(const QString &text);

/** The words of a running text by the Unicode word rules, without blanks and punctuation. */
[[nodiscard]] QStringList words(const QString &text);

/** Every blank-separated word with its first character upper-case and the rest lower-case. */
[[nodiscard]] QString capitalised(const QString &text);

} // namespace kivo::TextSplit
