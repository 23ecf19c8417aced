#pragma once

#include "core/collectiontree.h"
#include "core/records.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace kivo {

/**
 * Where a collection dragged in the sidebar lands when it is dropped between two rows: the parent
 * it then stands under and the order of its new siblings. Kept apart from the view so that each
 * gap of a deep, partly collapsed tree can be checked by value.
 */
namespace CollectionDrop {

/** The tree's order and the collections it is drawn from. */
struct Tree {
    QList<LibraryCollection> collections;
    QList<CollectionTreeRow> rows; ///< the visible rows, as drawn
    CollectionSort sort = CollectionSort::manual;
    bool reversed = false;
    QHash<QString, double> rollup;
};

struct Placement {
    QString parentId; ///< empty for the top level
    QStringList siblingIds; ///< the new parent's children in stored order, the moved one among them
    bool parentChanges = false;
};

/**
 * The drop of `movedId` into the gap above visible row `gap` (the row count for the gap under the
 * last row). It becomes the sibling just before the row under the gap, or the last top-level
 * collection at the very end. Nothing when the drop leaves everything as it is, or when the gap is
 * the one just under the moved collection's own row, above its first child.
 */
[[nodiscard]] std::optional<Placement> placementForGap(const Tree &tree, const QString &movedId, int gap);

/** The parent a collection is drawn under: its `parentId` when that collection is in the list, else the top level. */
[[nodiscard]] QString drawnParent(const QList<LibraryCollection> &collections, const LibraryCollection &collection);

} // namespace CollectionDrop
} // namespace kivo
