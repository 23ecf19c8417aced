#include "surfaces/sidebar/collectiondrop.h"

#include <algorithm>

namespace kivo::CollectionDrop {

QString drawnParent(const QList<LibraryCollection> &collections, const LibraryCollection &collection)
{
    const QString parent = collection.parentId.value_or(QString());
    if (parent.isEmpty() || parent == collection.id)
        return {};
    const bool present = std::any_of(
        collections.cbegin(), collections.cend(), [&](const LibraryCollection &c) { return c.id == parent; });
    return present ? parent : QString();
}

std::optional<Placement> placementForGap(const Tree &tree, const QString &movedId, int gap)
{
    const auto moved = std::find_if(tree.collections.cbegin(), tree.collections.cend(),
        [&](const LibraryCollection &c) { return c.id == movedId; });
    if (moved == tree.collections.cend() || gap < 0 || gap > tree.rows.size())
        return std::nullopt;

    Placement placement;
    QString beforeId;
    if (gap < tree.rows.size()) {
        beforeId = tree.rows.at(gap).collection.id;
        placement.parentId = drawnParent(tree.collections, tree.rows.at(gap).collection);
    }
    if (beforeId == movedId || placement.parentId == movedId)
        return std::nullopt;

    // The new parent's children as drawn, with the moved one taken out and put before the row
    // under the gap (or at the end).
    QList<LibraryCollection> siblings;
    for (const LibraryCollection &collection : tree.collections) {
        if (collection.id != movedId && drawnParent(tree.collections, collection) == placement.parentId)
            siblings.append(collection);
    }
    QStringList ids;
    for (const LibraryCollection &sibling :
        CollectionTree::orderSiblings(siblings, tree.sort, tree.reversed, tree.rollup))
        ids.append(sibling.id);
    const qsizetype at = beforeId.isEmpty() ? ids.size() : ids.indexOf(beforeId);
    ids.insert(at < 0 ? ids.size() : at, movedId);

    placement.parentChanges = drawnParent(tree.collections, *moved) != placement.parentId;
    if (!placement.parentChanges) {
        QList<LibraryCollection> current;
        for (const LibraryCollection &collection : tree.collections) {
            if (drawnParent(tree.collections, collection) == placement.parentId)
                current.append(collection);
        }
        QStringList currentIds;
        for (const LibraryCollection &sibling :
            CollectionTree::orderSiblings(current, tree.sort, tree.reversed, tree.rollup))
            currentIds.append(sibling.id);
        if (currentIds == ids)
            return std::nullopt;
    }
    // Drawn order is stored order turned round when the order is reversed.
    if (tree.reversed)
        std::reverse(ids.begin(), ids.end());
    placement.siblingIds = ids;
    return placement;
}

} // namespace kivo::CollectionDrop
