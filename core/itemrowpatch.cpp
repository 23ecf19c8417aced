#include "core/itemrowpatch.h"

#include "core/database.h"

#include <algorithm>

namespace kivo {

std::optional<QList<LibraryItem>> patchItemRows(Database &db, const ItemQueries::ChangedRowQuery &query,
    const QList<LibraryItem> &known, const ItemChangeLog::Mark &knownAt)
{
    const ItemChangeLog *log = db.itemChanges();
    if (!log)
        return std::nullopt;
    const std::optional<QSet<QString>> changed = log->changedSince(db, knownAt);
    if (!changed || changed->size() > maxPatchedItems)
        return std::nullopt;
    if (changed->isEmpty())
        return known;

    QList<LibraryItem> fresh;
    const QStringList ids(changed->cbegin(), changed->cend());
    for (qsizetype from = 0; from < ids.size(); from += ItemQueries::maxListLength) {
        QVariantList arguments = query.arguments;
        const QString sql = query.head
            + ItemQueries::placeholders(ids.mid(from, ItemQueries::maxListLength), arguments) + u')';
        db.forEach(sql, arguments, [&](const Row &row) { fresh.append(LibraryItem::fromRow(row)); });
    }
    // `first` comes before `second` in the list's order.
    const auto before = [descending = query.descending](double first, double second) {
        return descending ? first > second : first < second;
    };
    std::sort(fresh.begin(), fresh.end(),
        [&](const LibraryItem &a, const LibraryItem &b) { return before(a.addedAt, b.addedAt); });
    for (qsizetype i = 1; i < fresh.size(); ++i) {
        if (fresh.at(i).addedAt == fresh.at(i - 1).addedAt)
            return std::nullopt;
    }

    QList<LibraryItem> rows;
    rows.reserve(known.size() + fresh.size());
    qsizetype next = 0;
    const LibraryItem *previous = nullptr;
    for (const LibraryItem &item : known) {
        if (changed->contains(item.id))
            continue;
        // Rows that kept their place are in order already; a list that is not cannot be patched.
        if (previous && before(item.addedAt, previous->addedAt))
            return std::nullopt;
        previous = &item;
        while (next < fresh.size() && before(fresh.at(next).addedAt, item.addedAt))
            rows.append(fresh.at(next++));
        // Rows added at the same moment come in SQLite's own order, which only a full read tells.
        if (next < fresh.size() && fresh.at(next).addedAt == item.addedAt)
            return std::nullopt;
        rows.append(item);
    }
    while (next < fresh.size())
        rows.append(fresh.at(next++));
    return rows;
}

} // namespace kivo
