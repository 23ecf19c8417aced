#include "core/store.h"

#include "core/appsettings.h"
#include "core/itemqueries.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** The step limit of the loop guard's walk up the tree. */
constexpr int loopGuardSteps = 64;

} // namespace

// ---------------------------------------------------------------------------------------------
// Changing the tree

QString Store::insertCollection(Database &db, const QString &name, const std::optional<QString> &parentId)
{
    qint64 largest = 0;
    for (const LibraryCollection &collection : std::as_const(m_collections))
        largest = std::max(largest, collection.sortIndex);
    LibraryCollection collection;
    collection.id = newIdentifier();
    collection.parentId = parentId;
    collection.name = name;
    collection.sortIndex = largest + 1;
    collection.createdAt = collection.modifiedAt = nowSeconds();
    db.insert(collection);
    return collection.id;
}

QString Store::createCollection(const QString &name, const QString &parentId)
{
    if (!m_dbQueue)
        return {};
    if (m_inboxId && parentId == *m_inboxId)
        return {};
    const std::optional<QString> parent = parentId.isEmpty() ? std::nullopt : std::optional<QString>(parentId);
    QString id;
    try {
        id = m_dbQueue->write([&](Database &db) { return insertCollection(db, name, parent); });
    } catch (const std::exception &error) {
        systemLog(u"[Store] createCollection failed: "_s + errorText(error));
        return {};
    }
    reloadCollections();
    return id;
}

bool Store::renameCollection(const QString &id, const QString &name)
{
    const QString trimmed = name.trimmed();
    if (!m_dbQueue || trimmed.isEmpty() || (m_inboxId && id == *m_inboxId))
        return false;
    try {
        m_dbQueue->write([&](Database &db) {
            db.execute(u"UPDATE collection SET name = ?, modifiedAt = ? WHERE id = ?"_s, {trimmed, nowSeconds(), id});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] renameCollection failed: "_s + errorText(error));
        return false;
    }
    reloadCollections();
    return true;
}

bool Store::setCollectionIcon(const QString &id, const QString &icon)
{
    if (!m_dbQueue)
        return false;
    try {
        m_dbQueue->write([&](Database &db) {
            db.execute(u"UPDATE collection SET icon = ?, modifiedAt = ? WHERE id = ?"_s,
                {icon.isEmpty() ? QVariant() : QVariant(icon), nowSeconds(), id});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] setCollectionIcon failed: "_s + errorText(error));
        return false;
    }
    reloadCollections();
    return true;
}

bool Store::pinCollection(const QString &id, bool pinned)
{
    if (!m_dbQueue)
        return false;
    try {
        m_dbQueue->write([&](Database &db) {
            const double now = nowSeconds();
            db.execute(u"UPDATE collection SET pinnedAt = ?, modifiedAt = ? WHERE id = ?"_s,
                {pinned ? QVariant(now) : QVariant(), now, id});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] pinCollection failed: "_s + errorText(error));
        return false;
    }
    reloadCollections();
    return true;
}

bool Store::moveCollection(const QString &id, const QString &parentId)
{
    if (!m_dbQueue || (m_inboxId && id == *m_inboxId))
        return false;
    const auto moved = collectionById(id);
    std::optional<LibraryCollection> parent;
    if (!parentId.isEmpty()) {
        if (parentId == id || (m_inboxId && parentId == *m_inboxId))
            return false;
        parent = collectionById(parentId);
        // Walk up from the new parent; meeting the moved collection would close a loop.
        QString current = parentId;
        for (int step = 0; step < loopGuardSteps; ++step) {
            if (current == id) {
                showToast(u"That Would Make a Loop"_s, ToastAction::none);
                return false;
            }
            const auto above = collectionById(current);
            if (!above || !above->parentId)
                break;
            current = *above->parentId;
        }
    }
    try {
        m_dbQueue->write([&](Database &db) {
            db.execute(u"UPDATE collection SET parentId = ?, modifiedAt = ? WHERE id = ?"_s,
                {parentId.isEmpty() ? QVariant() : QVariant(parentId), nowSeconds(), id});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] moveCollection failed: "_s + errorText(error));
        return false;
    }
    reloadCollections();
    if (parent && moved)
        showToast(moved->name + u" Filed Inside "_s + parent->name, ToastAction::none);
    return true;
}

bool Store::reorderCollections(const QStringList &ids, const QString &parentId)
{
    if (!m_dbQueue || (m_inboxId && parentId == *m_inboxId))
        return false;
    // A parent inside one of the reordered collections would close a loop: refused in silence.
    if (!parentId.isEmpty() && CollectionTree::withDescendants(m_collections, ids).contains(parentId))
        return false;
    try {
        m_dbQueue->write([&](Database &db) {
            const double now = nowSeconds();
            for (qsizetype position = 0; position < ids.size(); ++position) {
                if (m_inboxId && ids.at(position) == *m_inboxId)
                    continue;
                db.execute(u"UPDATE collection SET sortIndex = ?, parentId = ?, modifiedAt = ? WHERE id = ?"_s,
                    {position, parentId.isEmpty() ? QVariant() : QVariant(parentId), now, ids.at(position)});
            }
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] reorderCollections failed: "_s + errorText(error));
        return false;
    }
    reloadCollections();
    return true;
}

bool Store::deleteCollections(const QStringList &ids)
{
    if (!m_dbQueue)
        return false;
    QStringList listed = ids;
    if (m_inboxId)
        listed.removeAll(*m_inboxId);
    if (listed.isEmpty())
        return false;
    const QStringList doomed = CollectionTree::withDescendants(m_collections, listed);
    DeletedBoards deleted;
    deleted.ids = doomed;
    try {
        m_dbQueue->write([&](Database &db) {
            QVariantList arguments;
            for (qsizetype start = 0; start < doomed.size(); start += ItemQueries::maxListLength) {
                const QStringList chunk = doomed.mid(start, ItemQueries::maxListLength);
                arguments.clear();
                const QString marks = ItemQueries::placeholders(chunk, arguments);
                db.forEach(u"SELECT itemId, collectionId, addedAt FROM itemCollection WHERE collectionId IN ("_s + marks
                        + u")"_s,
                    arguments, [&](const Row &row) {
                        deleted.memberships.append({row.text("itemId"), row.text("collectionId"), row.real("addedAt")});
                    });
            }
            const double now = nowSeconds();
            for (const QString &id : doomed) {
                db.execute(u"DELETE FROM itemCollection WHERE collectionId = ?"_s, {id});
                db.execute(u"UPDATE collection SET deletedAt = ? WHERE id = ?"_s, {now, id});
            }
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] deleteCollections failed: "_s + errorText(error));
        return false;
    }
    m_pendingBoardUndo = std::move(deleted);
    Q_EMIT pendingBoardUndoChanged();
    bool selectedDropped = false;
    for (const QString &id : doomed)
        selectedDropped |= m_selectedCollectionIds.remove(id);
    if (selectedDropped)
        Q_EMIT selectedCollectionIdsChanged();
    if (m_selection.isCollection() && doomed.contains(m_selection.collectionId())) {
        // Changing the selection reloads the rows, so only the collections are left to read.
        reloadCollections();
        setSelection(SidebarSelection::all());
    } else {
        reloadAll();
    }
    showToast(doomed.size() == 1 ? u"Collection Deleted"_s : QString::number(doomed.size()) + u" Collections Deleted"_s,
        ToastAction::undoCollectionDelete);
    return true;
}

bool Store::undoDelete()
{
    if (!m_dbQueue || !m_pendingBoardUndo)
        return false;
    const DeletedBoards pending = *m_pendingBoardUndo;
    try {
        m_dbQueue->write([&](Database &db) {
            for (const QString &id : pending.ids)
                db.execute(u"UPDATE collection SET deletedAt = NULL WHERE id = ?"_s, {id});
            for (const DeletedBoards::Membership &membership : pending.memberships) {
                db.execute(u"INSERT OR IGNORE INTO itemCollection (itemId, collectionId, addedAt) VALUES (?, ?, ?)"_s,
                    {membership.itemId, membership.collectionId, membership.addedAt});
            }
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] undoDelete failed: "_s + errorText(error));
        return false;
    }
    m_pendingBoardUndo.reset();
    Q_EMIT pendingBoardUndoChanged();
    reloadAll();
    return true;
}

// ---------------------------------------------------------------------------------------------
// Sidebar state

void Store::toggleCollapsed(const QString &id)
{
    if (!m_collapsedCollections.remove(id))
        m_collapsedCollections.insert(id);
    saveCollapsed();
    Q_EMIT collapsedCollectionsChanged();
}

QStringList Store::collapsedCollectionList() const
{
    QStringList list(m_collapsedCollections.cbegin(), m_collapsedCollections.cend());
    list.sort();
    return list;
}

void Store::saveCollapsed()
{
    UserDefaults().setValue(u"collapsedCollections"_s, collapsedCollectionList());
}

void Store::setFreshCollectionId(const QString &id)
{
    if (m_freshCollectionId == id)
        return;
    m_freshCollectionId = id;
    Q_EMIT freshCollectionIdChanged();
}

QString Store::renameTargetKind() const
{
    if (!m_renaming)
        return {};
    return m_renaming->kind == RenameKind::item ? u"item"_s : u"collection"_s;
}

void Store::beginRename(const QString &kind, const QString &id)
{
    if (id.isEmpty() || (kind != u"item" && kind != u"collection"))
        return;
    m_renaming = RenameTarget{kind == u"item" ? RenameKind::item : RenameKind::collection, id};
    Q_EMIT renamingChanged();
}

void Store::endRename()
{
    if (!m_renaming)
        return;
    m_renaming.reset();
    Q_EMIT renamingChanged();
}

QStringList Store::selectedCollectionIdList() const
{
    QStringList list;
    for (const CollectionTreeRow &row : collectionTree(false)) {
        if (m_selectedCollectionIds.contains(row.collection.id))
            list.append(row.collection.id);
    }
    return list;
}

void Store::setSelectedCollectionIdList(const QStringList &ids)
{
    const QSet<QString> set(ids.cbegin(), ids.cend());
    if (set == m_selectedCollectionIds)
        return;
    m_selectedCollectionIds = set;
    Q_EMIT selectedCollectionIdsChanged();
}

void Store::toggleCollectionSelection(const QString &id)
{
    if (!m_selectedCollectionIds.remove(id))
        m_selectedCollectionIds.insert(id);
    Q_EMIT selectedCollectionIdsChanged();
}

void Store::clearCollectionSelection()
{
    if (m_selectedCollectionIds.isEmpty())
        return;
    m_selectedCollectionIds.clear();
    Q_EMIT selectedCollectionIdsChanged();
}

} // namespace kivo
