#include "core/collectiontree.h"

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace kivo::CollectionTree {

namespace {

bool nameBefore(const LibraryCollection &a, const LibraryCollection &b)
{
    const int folded = QString::compare(a.name, b.name, Qt::CaseInsensitive);
    if (folded != 0)
        return folded < 0;
    const int exact = QString::compare(a.name, b.name, Qt::CaseSensitive);
    if (exact != 0)
        return exact < 0;
    return a.id < b.id;
}

/** Children by parent id; a collection whose parent is not in the list counts as a top-level one (key ""). */
QHash<QString, QList<LibraryCollection>> childrenByParent(const QList<LibraryCollection> &collections)
{
    QSet<QString> known;
    for (const LibraryCollection &collection : collections)
        known.insert(collection.id);
    QHash<QString, QList<LibraryCollection>> children;
    for (const LibraryCollection &collection : collections) {
        const QString parent
            = collection.parentId && known.contains(*collection.parentId) && *collection.parentId != collection.id
            ? *collection.parentId
            : QString();
        children[parent].append(collection);
    }
    return children;
}

} // namespace

QList<LibraryCollection> orderSiblings(
    QList<LibraryCollection> siblings, CollectionSort sort, bool reversed, const QHash<QString, double> &rollup)
{
    std::function<bool(const LibraryCollection &, const LibraryCollection &)> before;
    switch (sort) {
    case CollectionSort::manual:
        before = [](const LibraryCollection &a, const LibraryCollection &b) {
            return a.sortIndex != b.sortIndex ? a.sortIndex < b.sortIndex : nameBefore(a, b);
        };
        break;
    case CollectionSort::name:
        before = nameBefore;
        break;
    case CollectionSort::recentlyUsed:
        before = [&rollup](const LibraryCollection &a, const LibraryCollection &b) {
            const double left = rollup.value(a.id, 0);
            const double right = rollup.value(b.id, 0);
            return left != right ? left > right : nameBefore(a, b);
        };
        break;
    case CollectionSort::recentlyCreated:
        before = [](const LibraryCollection &a, const LibraryCollection &b) {
            return a.createdAt != b.createdAt ? a.createdAt > b.createdAt : nameBefore(a, b);
        };
        break;
    }
    std::stable_sort(siblings.begin(), siblings.end(), before);
    if (reversed)
        std::reverse(siblings.begin(), siblings.end());
    return siblings;
}

QList<CollectionTreeRow> flatten(const QList<LibraryCollection> &collections, CollectionSort sort, bool reversed,
    const QHash<QString, double> &rollup, const QSet<QString> &collapsed)
{
    const auto children = childrenByParent(collections);
    QList<CollectionTreeRow> rows;
    rows.reserve(collections.size());
    QSet<QString> visited;
    const std::function<void(const QString &, int)> walk = [&](const QString &parent, int depth) {
        const auto found = children.constFind(parent);
        if (found == children.constEnd())
            return;
        for (const LibraryCollection &collection : orderSiblings(*found, sort, reversed, rollup)) {
            if (visited.contains(collection.id))
                continue;
            visited.insert(collection.id);
            const bool hasChildren = children.contains(collection.id);
            rows.append({collection, depth, hasChildren});
            if (!collapsed.contains(collection.id))
                walk(collection.id, depth + 1);
        }
    };
    walk(QString(), 0);
    return rows;
}

QList<LibraryCollection> pinned(const QList<LibraryCollection> &collections)
{
    QList<LibraryCollection> result;
    for (const LibraryCollection &collection : collections) {
        if (collection.pinnedAt)
            result.append(collection);
    }
    std::stable_sort(result.begin(), result.end(), [](const LibraryCollection &a, const LibraryCollection &b) {
        return *a.pinnedAt != *b.pinnedAt ? *a.pinnedAt < *b.pinnedAt : nameBefore(a, b);
    });
    return result;
}

QHash<QString, double> activityRollup(
    const QList<LibraryCollection> &collections, const QHash<QString, double> &lastActivity)
{
    QHash<QString, QStringList> childIds;
    for (const LibraryCollection &collection : collections) {
        if (collection.parentId)
            childIds[*collection.parentId].append(collection.id);
    }
    QHash<QString, double> rollup;
    QSet<QString> entered;
    // Memoised in `rollup`; a collection entered twice (a loop in a damaged tree) is not walked again.
    const std::function<double(const QString &)> visit = [&](const QString &id) -> double {
        if (const auto done = rollup.constFind(id); done != rollup.constEnd())
            return *done;
        if (entered.contains(id))
            return lastActivity.value(id, 0);
        entered.insert(id);
        double best = lastActivity.value(id, 0);
        for (const QString &child : childIds.value(id))
            best = std::max(best, visit(child));
        rollup.insert(id, best);
        return best;
    };
    for (const LibraryCollection &collection : collections)
        visit(collection.id);
    // Only collections with some activity in their branch get an entry, as a missing value reads as none.
    for (auto it = rollup.begin(); it != rollup.end();) {
        bool any = lastActivity.contains(it.key()) || it.value() > 0;
        it = any ? std::next(it) : rollup.erase(it);
    }
    return rollup;
}

QStringList withDescendants(const QList<LibraryCollection> &collections, const QStringList &ids)
{
    QHash<QString, QStringList> childIds;
    for (const LibraryCollection &collection : collections) {
        if (collection.parentId)
            childIds[*collection.parentId].append(collection.id);
    }
    QStringList result;
    QSet<QString> seen;
    for (const QString &id : ids) {
        if (!seen.contains(id)) {
            seen.insert(id);
            result.append(id);
        }
    }
    for (qsizetype i = 0; i < result.size(); ++i) {
        for (const QString &child : childIds.value(result.at(i))) {
            if (!seen.contains(child)) {
                seen.insert(child);
                result.append(child);
            }
        }
    }
    return result;
}

QString path(const QList<LibraryCollection> &collections, const QString &id, const QString &separator)
{
    QHash<QString, const LibraryCollection *> byId;
    for (const LibraryCollection &collection : collections)
        byId.insert(collection.id, &collection);
    QStringList names;
    QSet<QString> seen;
    QString current = id;
    while (const LibraryCollection *collection = byId.value(current)) {
        if (seen.contains(current))
            break;
        seen.insert(current);
        names.prepend(collection->name);
        if (!collection->parentId)
            break;
        current = *collection->parentId;
    }
    return names.join(separator);
}

} // namespace kivo::CollectionTree
