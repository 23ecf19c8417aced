#include "core/librarysnapshot.h"

#include "core/database.h"

using namespace Qt::StringLiterals;

namespace kivo {

LibrarySnapshot LibrarySnapshot::read(Database &db)
{
    LibrarySnapshot snapshot;
    snapshot.items = db.fetchAll<LibraryItem>(u"SELECT * FROM item ORDER BY rowid"_s);
    snapshot.collections = db.fetchAll<LibraryCollection>(u"SELECT * FROM collection ORDER BY rowid"_s);
    snapshot.tags = db.fetchAll<Tag>(u"SELECT * FROM tag ORDER BY rowid"_s);
    snapshot.itemTags = db.fetchAll<ItemTag>(u"SELECT * FROM itemTag ORDER BY rowid"_s);
    snapshot.memberships = db.fetchAll<ItemCollection>(u"SELECT * FROM itemCollection ORDER BY rowid"_s);
    snapshot.canvasPositions = db.fetchAll<CanvasPosition>(u"SELECT * FROM canvasPosition ORDER BY rowid"_s);

    QHash<QString, QString> tagNames;
    for (const Tag &tag : std::as_const(snapshot.tags))
        tagNames.insert(tag.id, tag.name);
    for (const ItemTag &link : std::as_const(snapshot.itemTags)) {
        const auto name = tagNames.constFind(link.tagId);
        if (name != tagNames.constEnd())
            snapshot.tagsByItem[link.itemId].append({name.value(), link.source, link.status});
    }
    for (const ItemCollection &membership : std::as_const(snapshot.memberships))
        snapshot.collectionsByItem[membership.itemId].append(membership.collectionId);
    for (const CanvasPosition &position : std::as_const(snapshot.canvasPositions))
        snapshot.canvasByItem[position.itemId].append(position);
    return snapshot;
}

} // namespace kivo
