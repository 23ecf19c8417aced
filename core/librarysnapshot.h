#pragma once

#include "core/records.h"

#include <QHash>

namespace kivo {

class Database;

/** A tag as written into a sidecar. */
struct SidecarTag {
    QString name;
    QString source;
    QString status;
};

/**
 * Every row that the sidecars and the manifest are written from, read in one pass, with the
 * lookups by item that both the reorganise and the refresh need.
 */
struct LibrarySnapshot {
    QList<LibraryItem> items;
    QList<LibraryCollection> collections;
    QList<Tag> tags;
    QList<ItemTag> itemTags;
    QList<ItemCollection> memberships;
    QList<CanvasPosition> canvasPositions;

    QHash<QString, QList<SidecarTag>> tagsByItem;
    QHash<QString, QStringList> collectionsByItem;
    QHash<QString, QList<CanvasPosition>> canvasByItem;

    /** Reads the six tables, in table order, and builds the lookups. Call inside a Read. */
    static LibrarySnapshot read(Database &db);
};

} // namespace kivo
