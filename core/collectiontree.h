#pragma once

#include "core/records.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace kivo {

/** One row of the sidebar's collection tree, flattened depth first. */
struct CollectionTreeRow {
    LibraryCollection collection;
    int depth = 0;
    bool hasChildren = false;
};

/**
 * The walks over the published collection tree that the sidebar, the Store's operations and the
 * headless commands share: sibling order, flattening, activity roll-up, descendants and paths.
 * The tree is given by `parentId`; a collection whose parent is not in the list stands at the top,
 * and a collection met twice (a damaged tree) is not walked again.
 */
namespace CollectionTree {

/** Siblings in sidebar order: manual (sortIndex, name), name, recentlyUsed (roll-up, larger first;
 *  ties and missing values by name), recentlyCreated (createdAt, newest first); then reversed if asked. */
[[nodiscard]] QList<LibraryCollection> orderSiblings(
    QList<LibraryCollection> siblings, CollectionSort sort, bool reversed, const QHash<QString, double> &rollup);

/** The whole tree depth first, siblings in sidebar order; children of ids in `collapsed` are left out. */
[[nodiscard]] QList<CollectionTreeRow> flatten(const QList<LibraryCollection> &collections, CollectionSort sort,
    bool reversed, const QHash<QString, double> &rollup, const QSet<QString> &collapsed = {});

/** The pinned collections, by `pinnedAt`, earliest first. */
[[nodiscard]] QList<LibraryCollection> pinned(const QList<LibraryCollection> &collections);

/** Per collection, the largest last activity of itself and all its descendants. */
[[nodiscard]] QHash<QString, double> activityRollup(
    const QList<LibraryCollection> &collections, const QHash<QString, double> &lastActivity);

/** The given ids and all their descendants, each once, the given ones first. */
[[nodiscard]] QStringList withDescendants(const QList<LibraryCollection> &collections, const QStringList &ids);

/** The names from the top of the tree down to the collection, joined; empty for an unknown id. */
[[nodiscard]] QString path(const QList<LibraryCollection> &collections, const QString &id, const QString &separator);

} // namespace CollectionTree
} // namespace kivo
