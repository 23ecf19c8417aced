#pragma once

#include "core/records.h"
#include "core/sidebarselection.h"

#include <QString>
#include <QVariantList>

#include <optional>

namespace kivo {

/** A statement and its positional arguments. */
struct SqlQuery {
    QString sql;
    QVariantList arguments;

    bool operator==(const SqlQuery &) const = default;
};

/**
 * The SQL that several places build from a selection: the rows a selection lists, the scope
 * clause that keeps a count or a search inside it, and the counts that pick a view's default
 * mode. The kind filters' own tests are in mediatypepredicate.h.
 */
namespace ItemQueries {

/**
 * The rows of a selection without search text, in display order. `newest` sorts by DESC and
 * `oldest` by ASC, except Trash (by deletedAt) and Hidden (by hiddenAt), always newest first.
 * The inbox needs its id; without one there are no rows (nullopt).
 */
[[nodiscard]] std::optional<SqlQuery> rowQuery(
    const SidebarSelection &selection, ItemSort sort, const std::optional<QString> &inboxId);

/**
 * A selection's statement for some of its rows: the head ends in "AND i.id IN (", to be followed
 * by placeholders and ")". Only for the selections that list items by themselves in the order
 * they were added, which SQLite reads along the addedAt index: All, Favourites, Links and the
 * kind filters.
 */
struct ChangedRowQuery {
    QString head;
    QVariantList arguments;
    bool descending = true;
};
[[nodiscard]] std::optional<ChangedRowQuery> changedRowQuery(
    const SidebarSelection &selection, ItemSort sort, const std::optional<QString> &inboxId);

/** The ids of the same rows, in no order: for statements that only ask which rows are in. */
[[nodiscard]] std::optional<SqlQuery> rowIdQuery(
    const SidebarSelection &selection, const std::optional<QString> &inboxId);

/**
 * The clause that keeps a statement over `item i` inside a selection ("AND i.favourite = 1"...),
 * with its argument. Trash has the empty clause; the inbox without an id has none (nullopt).
 */
[[nodiscard]] std::optional<SqlQuery> scopeClause(
    const SidebarSelection &selection, const std::optional<QString> &inboxId);

/** "SELECT COUNT(*) FROM item i WHERE i.deletedAt IS NULL " and the scope clause. */
[[nodiscard]] std::optional<SqlQuery> liveCountQuery(
    const SidebarSelection &selection, const std::optional<QString> &inboxId);
/** The same count limited to links. */
[[nodiscard]] std::optional<SqlQuery> linkCountQuery(
    const SidebarSelection &selection, const std::optional<QString> &inboxId);

/**
 * "?, ?, ?" for an IN list of `count` values, padded to a small set of lengths so that the
 * prepared-statement cache holds a few statements rather than one per list length; the padding
 * arguments are NULL, which an IN list never matches. Appends the arguments to `arguments`.
 */
[[nodiscard]] QString placeholders(const QStringList &values, QVariantList &arguments);

/** The largest number of values one IN list takes; longer lists are read in chunks. */
inline constexpr qsizetype maxListLength = 512;

} // namespace ItemQueries
} // namespace kivo
