#pragma once

#include <QString>

namespace kivo {

/**
 * The title a clip shows on the card and the pending list: the page's own title cleaned of
 * counters, addresses, empty quotes and trailing punctuation, or the host when nothing is left.
 * Results are remembered per raw title and fallback, since the same page title comes back often.
 */
namespace CardTitle {

/** The cleaned title of `raw`, else `fallback` when it is not empty, else "Untitled Link". */
[[nodiscard]] QString make(const QString &raw, const QString &fallback = {});

/** Replaces the common named entities and numeric forms (`&amp;`, `&#8217;`, `&#x2014;`). */
[[nodiscard]] QString decodeEntities(const QString &text);

} // namespace CardTitle
} // namespace kivo
