#pragma once

#include "core/itemchangelog.h"
#include "core/itemqueries.h"
#include "core/records.h"

#include <QList>

#include <optional>

namespace kivo {

class Database;

/**
 * Brings a list read earlier up to date from the items written since it was read: their rows
 * are read again by id and put in place by the moment they were added, and every other row is
 * kept as it stands. At a hundred thousand rows, a write to a few items then costs a few
 * milliseconds instead of a read of every row.
 *
 * `known` must be the statement's rows as read at `knownAt`, or those of them of some kinds (the
 * caller filters the result by the same kinds). The answer is nullopt, and the caller reads the
 * whole list, whenever the result could differ from a fresh read: the log does not reach back to
 * `knownAt`, another connection wrote, too many items changed, or a row read again was added at
 * the very moment of another, where only SQLite's own order tells which comes first.
 */
[[nodiscard]] std::optional<QList<LibraryItem>> patchItemRows(Database &db, const ItemQueries::ChangedRowQuery &query,
    const QList<LibraryItem> &known, const ItemChangeLog::Mark &knownAt);

/** Beyond this many items written, a fresh read of the list costs less than the patch. */
inline constexpr qsizetype maxPatchedItems = 2048;

} // namespace kivo
