#include "core/store.h"

#include "core/appsettings.h"
#include "core/itemqueries.h"
#include "core/systemlog.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** Links a user's tag to an item: the tag row is made if the name is new; an existing link stays as it is. */
void applyTag(Database &db, const QString &itemId, const QString &name, double now)
{
    QVariant tagId = db.fetchScalar(u"SELECT id FROM tag WHERE name = ?"_s, {name});
    if (!tagId.isValid()) {
        tagId = newIdentifier();
        db.execute(u"INSERT INTO tag (id, name) VALUES (?, ?)"_s, {tagId, name});
    }
    db.execute(u"INSERT OR IGNORE INTO itemTag (itemId, tagId, source, status, addedAt)\n"
               "VALUES (?, ?, 'user', 'accepted', ?)"_s,
        {itemId, tagId, now});
}

QStringList distinct(const QStringList &ids)
{
    QStringList unique;
    QSet<QString> seen;
    for (const QString &id : ids) {
        if (!id.isEmpty() && !seen.contains(id)) {
            seen.insert(id);
            unique.append(id);
        }
    }
    return unique;
}

} // namespace

bool Store::writeItems(const char *name, const std::function<void(Database &db)> &body)
{
    if (!m_dbQueue)
        return false;
    try {
        m_dbQueue->write(body);
        return true;
    } catch (const std::exception &error) {
        systemLog(u"[Store] "_s + QString::fromUtf8(name) + u" failed: "_s + errorText(error));
        return false;
    }
}

// ---------------------------------------------------------------------------------------------
// Marks

bool Store::favourite(const QStringList &ids)
{
    const QStringList unique = distinct(ids);
    if (unique.isEmpty())
        return false;
    bool makeFavourite = false;
    const bool written = writeItems("favourite", [&](Database &db) {
        for (const QString &id : unique) {
            const QVariant current = db.fetchScalar(u"SELECT favourite FROM item WHERE id = ?"_s, {id});
            makeFavourite |= current.isValid() && current.toLongLong() == 0;
        }
        const double now = nowSeconds();
        for (const QString &id : unique)
            db.execute(u"UPDATE item SET favourite = ?, modifiedAt = ? WHERE id = ?"_s, {makeFavourite, now, id});
    });
    if (!written)
        return false;
    reloadCollections();
    reloadItems();
    showToast(makeFavourite ? u"Added to Favourites"_s : u"Removed from Favourites"_s, ToastAction::none);
    return true;
}

bool Store::toggleFavourite(const QString &id)
{
    if (!writeItems("toggleFavourite", [&](Database &db) {
            db.execute(u"UPDATE item SET favourite = NOT favourite, modifiedAt = ? WHERE id = ?"_s, {nowSeconds(), id});
        }))
        return false;
    reloadCollections();
    reloadItems();
    return true;
}

bool Store::setHidden(const QStringList &ids, bool hidden)
{
    const QStringList unique = distinct(ids);
    if (unique.isEmpty())
        return false;
    if (!writeItems("setHidden(hand)", [&](Database &db) {
            const double now = nowSeconds();
            for (const QString &id : unique) {
                db.execute(u"UPDATE item SET hiddenAt = ?, modifiedAt = ? WHERE id = ?"_s,
                    {hidden ? QVariant(now) : QVariant(), now, id});
            }
        }))
        return false;
    reloadAll();
    return true;
}

bool Store::deleteItem(const QString &id)
{
    if (!writeItems("delete", [&](Database &db) {
            const double now = nowSeconds();
            db.execute(u"UPDATE item SET deletedAt = ?, modifiedAt = ? WHERE id = ?"_s, {now, now, id});
        }))
        return false;
    reloadAll();
    return true;
}

bool Store::restoreItem(const QString &id)
{
    if (!writeItems("restore", [&](Database &db) {
            db.execute(u"UPDATE item SET deletedAt = NULL, modifiedAt = ? WHERE id = ?"_s, {nowSeconds(), id});
        }))
        return false;
    reloadAll();
    return true;
}

bool Store::trashSelection()
{
    return trashItems(selectedItemIdList());
}

bool Store::trashItems(const QStringList &ids)
{
    const QStringList unique = distinct(ids);
    if (unique.isEmpty())
        return false;
    // A bulk move to the trash leaves modifiedAt alone.
    if (!writeItems("trashSelection", [&](Database &db) {
            const double now = nowSeconds();
            for (const QString &id : unique)
                db.execute(u"UPDATE item SET deletedAt = ? WHERE id = ?"_s, {now, id});
        }))
        return false;
    m_lastTrashedIds = unique;
    clearSelection();
    reloadAll();
    showToast(unique.size() == 1 ? u"Moved to Trash"_s : QString::number(unique.size()) + u" Items Moved to Trash"_s,
        ToastAction::undoTrash);
    return true;
}

bool Store::undoTrash()
{
    if (m_lastTrashedIds.isEmpty())
        return false;
    const QStringList ids = m_lastTrashedIds;
    if (!writeItems("undoTrash", [&](Database &db) {
            for (const QString &id : ids)
                db.execute(u"UPDATE item SET deletedAt = NULL WHERE id = ?"_s, {id});
        }))
        return false;
    m_lastTrashedIds.clear();
    reloadAll();
    return true;
}

bool Store::renameItem(const QString &id, const QString &title)
{
    const QString trimmed = title.trimmed();
    if (trimmed.isEmpty())
        return false;
    if (!writeItems("renameItem", [&](Database &db) {
            db.execute(u"UPDATE item SET title = ?, modifiedAt = ? WHERE id = ?"_s, {trimmed, nowSeconds(), id});
        }))
        return false;
    reloadItems();
    return true;
}

bool Store::setNote(const QString &id, const QString &text)
{
    if (!writeItems("setNote", [&](Database &db) {
            db.execute(u"UPDATE item SET note = ?, modifiedAt = ? WHERE id = ?"_s, {text, nowSeconds(), id});
        }))
        return false;
    // A text item's card shows its note, so the rows are read again.
    reloadItems();
    return true;
}

// ---------------------------------------------------------------------------------------------
// Tags

QString Store::normaliseTagName(const QString &name)
{
    return name.trimmed().toLower();
}

bool Store::addTag(const QStringList &ids, const QString &name)
{
    const QString normalised = normaliseTagName(name);
    const QStringList unique = distinct(ids);
    if (normalised.isEmpty() || unique.isEmpty())
        return false;
    if (!writeItems("addTag", [&](Database &db) {
            const double now = nowSeconds();
            for (const QString &id : unique)
                applyTag(db, id, normalised, now);
        }))
        return false;
    Q_EMIT tagsChanged(unique);
    reloadTagNames();
    return true;
}

bool Store::tagSelected(const QString &name)
{
    const QString normalised = normaliseTagName(name);
    const QStringList ids = selectedItemIdList();
    if (normalised.isEmpty() || ids.isEmpty())
        return false;
    if (!writeItems("tagSelected", [&](Database &db) {
            const double now = nowSeconds();
            for (const QString &id : ids)
                applyTag(db, id, normalised, now);
        }))
        return false;
    showToast(u"Tagged "_s + QString::number(ids.size()) + u" as "_s + normalised, ToastAction::none);
    clearSelection();
    Q_EMIT tagsChanged(ids);
    reloadTagNames();
    return true;
}

QList<TagInfo> Store::tags(const QString &itemId) const
{
    if (!m_dbQueue)
        return {};
    try {
        return m_dbQueue->read([&](Database &db) {
            return db.fetchAll<TagInfo>(
                u"SELECT t.id AS tagId, t.name AS name, it.source AS source, it.status AS status\n"
                "FROM itemTag it JOIN tag t ON t.id = it.tagId\n"
                "WHERE it.itemId = ?\n"
                "ORDER BY it.status DESC, t.name ASC"_s,
                {itemId});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] tags(for:) failed: "_s + errorText(error));
        return {};
    }
}

QVariantList Store::itemTags(const QString &itemId) const
{
    QVariantList list;
    for (const TagInfo &tag : tags(itemId)) {
        list.append(QVariantMap{
            {u"tagId"_s, tag.tagId}, {u"name"_s, tag.name}, {u"source"_s, tag.source}, {u"status"_s, tag.status}});
    }
    return list;
}

bool Store::acceptTag(const QString &itemId, const QString &tagId)
{
    if (!writeItems("acceptTag", [&](Database &db) {
            db.execute(u"INSERT OR REPLACE INTO itemTag (itemId, tagId, source, status, addedAt)\n"
                       "VALUES (?, ?, 'user', 'accepted', ?)"_s,
                {itemId, tagId, nowSeconds()});
        }))
        return false;
    Q_EMIT tagsChanged({itemId});
    reloadTagNames();
    return true;
}

bool Store::removeTag(const QString &itemId, const QString &tagId)
{
    if (!writeItems("removeTag", [&](Database &db) {
            db.execute(u"DELETE FROM itemTag WHERE itemId = ? AND tagId = ?"_s, {itemId, tagId});
        }))
        return false;
    Q_EMIT tagsChanged({itemId});
    reloadTagNames();
    return true;
}

QVariantList Store::allTags() const
{
    if (!m_dbQueue)
        return {};
    try {
        return m_dbQueue->read([](Database &db) {
            QVariantList list;
            db.forEach(u"SELECT t.name AS name, COUNT(it.itemId) AS n\n"
                       "FROM tag t\n"
                       "LEFT JOIN itemTag it ON it.tagId = t.id\n"
                       "GROUP BY t.id\n"
                       "ORDER BY n DESC, t.name ASC"_s,
                {}, [&](const Row &row) {
                    list.append(QVariantMap{{u"name"_s, row.text("name")}, {u"n"_s, row.integer("n")}});
                });
            return list;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] allTags failed: "_s + errorText(error));
        return {};
    }
}

// ---------------------------------------------------------------------------------------------
// Filing

bool Store::fileItem(const QString &itemId, const QString &collectionId, const QString &fromCollectionId)
{
    if (!writeItems("fileItem", [&](Database &db) {
            const double now = nowSeconds();
            db.execute(u"INSERT OR IGNORE INTO itemCollection (itemId, collectionId, addedAt) VALUES (?, ?, ?)"_s,
                {itemId, collectionId, now});
            if (!fromCollectionId.isEmpty() && fromCollectionId != collectionId) {
                db.execute(
                    u"DELETE FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {itemId, fromCollectionId});
            }
            db.execute(u"UPDATE collection SET modifiedAt = ? WHERE id = ?"_s, {now, collectionId});
        }))
        return false;
    if (m_settings)
        m_settings->setLastFiledCollectionId(collectionId);
    reloadAll();
    return true;
}

bool Store::fileItems(const QStringList &itemIds, const QString &collectionId)
{
    const QStringList unique = distinct(itemIds);
    if (unique.isEmpty())
        return false;
    if (!writeItems("fileItem", [&](Database &db) {
            const double now = nowSeconds();
            for (const QString &itemId : unique) {
                db.execute(u"INSERT OR IGNORE INTO itemCollection (itemId, collectionId, addedAt) VALUES (?, ?, ?)"_s,
                    {itemId, collectionId, now});
            }
            db.execute(u"UPDATE collection SET modifiedAt = ? WHERE id = ?"_s, {now, collectionId});
        }))
        return false;
    if (m_settings)
        m_settings->setLastFiledCollectionId(collectionId);
    reloadAll();
    return true;
}

QString Store::fileItemIntoNew(const QString &itemId, const QString &name, const QString &fromCollectionId)
{
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty())
        return {};
    QString collectionId;
    if (!writeItems("fileItem(new:)", [&](Database &db) {
            collectionId = insertCollection(db, trimmed, std::nullopt);
            const double now = nowSeconds();
            db.execute(u"INSERT OR IGNORE INTO itemCollection (itemId, collectionId, addedAt) VALUES (?, ?, ?)"_s,
                {itemId, collectionId, now});
            if (!fromCollectionId.isEmpty() && fromCollectionId != collectionId) {
                db.execute(
                    u"DELETE FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {itemId, fromCollectionId});
            }
            db.execute(u"UPDATE collection SET modifiedAt = ? WHERE id = ?"_s, {now, collectionId});
        }))
        return {};
    if (m_settings)
        m_settings->setLastFiledCollectionId(collectionId);
    reloadAll();
    return collectionId;
}

bool Store::removeItemFromCollection(const QString &itemId, const QString &collectionId)
{
    if (!writeItems("removeItemFromCollection", [&](Database &db) {
            db.execute(u"DELETE FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {itemId, collectionId});
        }))
        return false;
    reloadAll();
    return true;
}

bool Store::removeItemsFromCollection(const QStringList &itemIds, const QString &collectionId, bool announce)
{
    const QStringList unique = distinct(itemIds);
    if (unique.isEmpty())
        return false;
    if (!writeItems("removeItemsFromCollection", [&](Database &db) {
            for (const QString &itemId : unique) {
                db.execute(
                    u"DELETE FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {itemId, collectionId});
            }
        }))
        return false;
    if (announce) {
        const auto collection = collectionById(collectionId);
        showToast(
            u"Removed "_s + QString::number(unique.size()) + u" from "_s + (collection ? collection->name : QString()),
            ToastAction::none);
    }
    clearSelection();
    reloadAll();
    return true;
}

bool Store::keepOnlyInCollection(const QString &itemId, const QString &collectionId)
{
    if (!writeItems("keepOnlyInCollection", [&](Database &db) {
            db.execute(u"DELETE FROM itemCollection WHERE itemId = ? AND collectionId <> ?"_s, {itemId, collectionId});
        }))
        return false;
    reloadAll();
    return true;
}

bool Store::recordLauncherOpen(const QString &itemId)
{
    return writeItems("recordLauncherOpen", [&](Database &db) {
        db.execute(
            u"UPDATE item SET openCount = openCount + 1, lastOpenedAt = ? WHERE id = ?"_s, {nowSeconds(), itemId});
    });
}

bool Store::saveCanvasPosition(CanvasPosition position)
{
    if (!m_dbQueue)
        return false;
    if (position.collectionKey.isEmpty())
        position.collectionKey = m_selection.key();
    if (position.collectionKey == m_selection.key()) {
        qint64 top = -1;
        for (const CanvasPosition &placed : std::as_const(m_canvasPositions))
            top = std::max(top, placed.z);
        position.z = top + 1;
        m_canvasPositions.insert(position.itemId, position);
        Q_EMIT canvasPositionsChanged();
    }
    return writeItems("saveCanvasPosition", [&](Database &db) { db.replace(position); });
}

bool Store::saveCanvasPosition(const QString &itemId, double x, double y, double scale)
{
    CanvasPosition position;
    position.itemId = itemId;
    position.x = x;
    position.y = y;
    position.scale = scale;
    return saveCanvasPosition(position);
}

// ---------------------------------------------------------------------------------------------
// Memberships

QStringList Store::collectionsHoldingAll(const QStringList &itemIds) const
{
    const QStringList unique = distinct(itemIds);
    if (!m_dbQueue || unique.isEmpty())
        return {};
    try {
        return m_dbQueue->read([&](Database &db) {
            // A long group is read in chunks; a collection holds them all if it holds every chunk.
            std::optional<QSet<QString>> holding;
            for (qsizetype start = 0; start < unique.size(); start += ItemQueries::maxListLength) {
                const QStringList chunk = unique.mid(start, ItemQueries::maxListLength);
                QVariantList arguments;
                const QString marks = ItemQueries::placeholders(chunk, arguments);
                arguments.append(chunk.size());
                QSet<QString> found;
                db.forEach(u"SELECT collectionId FROM itemCollection\nWHERE itemId IN ("_s + marks
                        + u")\nGROUP BY collectionId\nHAVING COUNT(DISTINCT itemId) = ?"_s,
                    arguments, [&](const Row &row) { found.insert(row.text(0)); });
                holding = holding ? holding->intersect(found) : found;
            }
            QStringList ids(holding->cbegin(), holding->cend());
            ids.sort();
            return ids;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] collectionsHoldingAll failed: "_s + errorText(error));
        return {};
    }
}

QStringList Store::itemCollectionIds(const QString &itemId) const
{
    if (!m_dbQueue)
        return {};
    try {
        return m_dbQueue->read([&](Database &db) {
            QStringList ids;
            db.forEach(u"SELECT collectionId FROM itemCollection WHERE itemId = ?"_s, {itemId},
                [&](const Row &row) { ids.append(row.text(0)); });
            return ids;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] itemCollectionIds failed: "_s + errorText(error));
        return {};
    }
}

} // namespace kivo
