#pragma once

#include "core/itemqueries.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kivo {

/**
 * The words of a typed search as full-text and tag lookups. Every word becomes a quoted FTS5
 * string with a prefix star, so no typed character can act as an FTS5 operator: the only one
 * that could end the string, the double quote, is removed first.
 */
class WordQuery
{
public:
    /** The words of `text`: split at white space, double quotes removed; nothing when none is left. */
    [[nodiscard]] static std::optional<WordQuery> parse(const QString &text);

    [[nodiscard]] const QStringList &parts() const { return m_parts; }
    /** `"red"* "car"*`: every part must match, each as a prefix, in any indexed column. */
    [[nodiscard]] QString matchExpression() const;
    /** `%red%`: only the first part is looked for in tag names, as a substring. */
    [[nodiscard]] QString tagPattern() const;

    /** What the word statement reads. */
    enum class Columns {
        hitsNewestFirst, ///< a SearchHit and the title, newest first
        wholeRows, ///< the rowid and every column, in no order
    };

    /** Whether any tag name holds the tag pattern: one row when one does. */
    [[nodiscard]] SqlQuery tagStatement() const;

    /**
     * The statement of the word hits inside a selection: live items whose text matches or, with
     * `withTags`, that carry a matching tag, narrowed by the selection's scope clause.
     */
    [[nodiscard]] SqlQuery statement(const SqlQuery &scopeClause, bool withTags, Columns columns) const;

private:
    explicit WordQuery(QStringList parts) : m_parts(std::move(parts)) { }

    QStringList m_parts;
};

} // namespace kivo
