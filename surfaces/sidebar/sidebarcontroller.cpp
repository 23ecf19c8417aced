#include "surfaces/sidebar/sidebarcontroller.h"

#include "core/appsettings.h"
#include "core/collectiontree.h"
#include "core/store.h"
#include "surfaces/common/dragpayload.h"
#include "surfaces/sidebar/collectiondrop.h"
#include "surfaces/sidebar/collectiontreemodel.h"
#include "surfaces/sidebar/sidebarmodel.h"

using namespace Qt::StringLiterals;

namespace kivo {

SidebarController::SidebarController(QObject *parent) : QObject(parent)
{
}

void SidebarController::setStore(Store *store)
{
    if (m_store == store)
        return;
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    if (m_store) {
        connect(m_store, &Store::selectionChanged, this, &SidebarController::selectionTitleChanged);
        connect(m_store, &Store::collectionsChanged, this, &SidebarController::selectionTitleChanged);
    }
    Q_EMIT storeChanged();
    Q_EMIT selectionTitleChanged();
}

void SidebarController::setSettings(AppSettings *settings)
{
    if (m_settings == settings)
        return;
    m_settings = settings;
    Q_EMIT settingsChanged();
}

void SidebarController::setTree(CollectionTreeModel *tree)
{
    if (m_tree == tree)
        return;
    m_tree = tree;
    Q_EMIT treeChanged();
}

void SidebarController::setPinned(CollectionTreeModel *pinned)
{
    if (m_pinned == pinned)
        return;
    m_pinned = pinned;
    Q_EMIT pinnedChanged();
}

void SidebarController::setFocusSection(const QString &section)
{
    if (m_focusSection == section)
        return;
    m_focusSection = section;
    Q_EMIT focusSectionChanged();
}

QString SidebarController::selectionTitle() const
{
    if (!m_store)
        return {};
    const QString key = m_store->selectionKey();
    for (const QString &section : {u"library"_s, u"types"_s}) {
        for (const SidebarModel::Entry &entry : SidebarModel::entries(section)) {
            if (entry.key == key)
                return entry.title;
        }
    }
    const auto collection = m_store->collectionById(key);
    return collection ? collection->name : QString();
}

QString SidebarController::createCollection(const QString &parentId)
{
    if (!m_store)
        return {};
    const QString id = m_store->createCollection(u"New Collection"_s, parentId);
    if (id.isEmpty())
        return {};
    // The new row must be on screen for its name to be typed.
    if (!parentId.isEmpty() && m_store->isCollapsed(parentId))
        m_store->toggleCollapsed(parentId);
    if (m_settings && !m_settings->collectionsSectionExpanded())
        m_settings->setCollectionsSectionExpanded(true);
    m_store->setFreshCollectionId(id);
    m_store->beginRename(u"collection"_s, id);
    return id;
}

void SidebarController::beginRename(const QString &collectionId)
{
    if (m_store && m_store->collectionById(collectionId) && collectionId != m_store->inboxIdText())
        m_store->beginRename(u"collection"_s, collectionId);
}

void SidebarController::commitRename(const QString &collectionId, const QString &name)
{
    if (!m_store)
        return;
    const auto collection = m_store->collectionById(collectionId);
    if (collection && collection->name != name.trimmed())
        m_store->renameCollection(collectionId, name);
    cancelRename();
}

void SidebarController::cancelRename()
{
    if (!m_store)
        return;
    m_store->endRename();
    m_store->setFreshCollectionId(QString());
}

QStringList SidebarController::collectionTargets(const QString &collectionId) const
{
    if (!m_store)
        return {};
    const QStringList selected = m_store->selectedCollectionIdList();
    return selected.contains(collectionId) ? selected : QStringList{collectionId};
}

void SidebarController::deleteCollection(const QString &collectionId)
{
    if (m_store)
        m_store->deleteCollections(collectionTargets(collectionId));
}

bool SidebarController::acceptsDrag(const QString &text) const
{
    return !DragPayload::itemIds(text).isEmpty() || isCollectionDrag(text);
}

bool SidebarController::isCollectionDrag(const QString &text) const
{
    return !DragPayload::collectionId(text).isEmpty();
}

bool SidebarController::dropOnCollection(const QString &text, const QString &collectionId)
{
    if (!m_store || collectionId.isEmpty())
        return false;
    const QStringList items = DragPayload::itemIds(text);
    if (items.size() == 1)
        return m_store->fileItem(items.constFirst(), collectionId);
    if (!items.isEmpty())
        return m_store->fileItems(items, collectionId);
    const QString moved = DragPayload::collectionId(text);
    if (moved.isEmpty() || moved == collectionId)
        return false;
    // The Store refuses the inbox and a loop (with its toast) itself.
    return m_store->moveCollection(moved, collectionId);
}

bool SidebarController::dropInGap(const QString &text, int gap)
{
    const QString moved = DragPayload::collectionId(text);
    if (!m_store || !m_tree || moved.isEmpty())
        return false;
    const CollectionTreeModel::Source &source = m_tree->source();
    const CollectionDrop::Tree tree{
        source.collections, m_tree->treeRows(), source.sort, source.reversed, source.activityRollup};
    const auto placement = CollectionDrop::placementForGap(tree, moved, gap);
    if (!placement)
        return false;
    const bool loop = !placement->parentId.isEmpty()
        && CollectionTree::withDescendants(source.collections, {moved}).contains(placement->parentId);
    // A loop goes through the Store's move so that it is refused with its words; outside the
    // manual order, only the parent can change, since the order follows the chosen sort.
    if (loop || (!sortIsManual() && placement->parentChanges))
        return m_store->moveCollection(moved, placement->parentId);
    if (!sortIsManual())
        return false;
    return m_store->reorderCollections(placement->siblingIds, placement->parentId);
}

bool SidebarController::dropAtTopLevel(const QString &text)
{
    const QString moved = DragPayload::collectionId(text);
    if (!m_store || moved.isEmpty())
        return false;
    const auto collection = m_store->collectionById(moved);
    if (!collection || !collection->parentId)
        return false;
    return m_store->moveCollection(moved, QString());
}

QStringList SidebarController::visibleKeys() const
{
    QStringList keys;
    for (const SidebarModel::Entry &entry : SidebarModel::entries(u"library"_s))
        keys.append(entry.key);
    if (!m_settings || m_settings->typesSectionExpanded()) {
        for (const SidebarModel::Entry &entry : SidebarModel::entries(u"types"_s))
            keys.append(entry.key);
    }
    if (m_pinned && (!m_settings || m_settings->pinnedSectionExpanded())) {
        for (int row = 0; row < m_pinned->rowCount(); ++row)
            keys.append(m_pinned->idAt(row));
    }
    if (m_tree && (!m_settings || m_settings->collectionsSectionExpanded())) {
        for (int row = 0; row < m_tree->rowCount(); ++row)
            keys.append(m_tree->idAt(row));
    }
    return keys;
}

void SidebarController::moveSelection(int step)
{
    if (!m_store)
        return;
    const QStringList keys = visibleKeys();
    if (keys.isEmpty())
        return;
    const QString current = m_store->selectionKey();
    qsizetype at = keys.indexOf(current);
    // A pinned collection is listed twice; start from the copy in the section last used.
    const int pinnedCount = m_pinned && (!m_settings || m_settings->pinnedSectionExpanded()) ? m_pinned->rowCount() : 0;
    if (m_focusSection == u"collections" && m_pinned && m_pinned->rowOf(current) >= 0) {
        const qsizetype later = keys.indexOf(current, at + 1);
        if (later >= 0)
            at = later;
    }
    const qsizetype target = std::clamp<qsizetype>(at < 0 ? 0 : at + step, 0, keys.size() - 1);
    const qsizetype treeStart
        = keys.size() - (m_tree && (!m_settings || m_settings->collectionsSectionExpanded()) ? m_tree->rowCount() : 0);
    if (target >= treeStart)
        setFocusSection(u"collections"_s);
    else if (target >= treeStart - pinnedCount)
        setFocusSection(u"pinned"_s);
    m_store->setSelectionKey(keys.at(target));
}

void SidebarController::expandOrEnter(bool expand)
{
    if (!m_store || !m_tree)
        return;
    const QString current = m_store->selectionKey();
    const int row = m_tree->rowOf(current);
    if (row < 0)
        return;
    const QModelIndex index = m_tree->index(row);
    const bool hasChildren = index.data(CollectionTreeModel::HasChildrenRole).toBool();
    const bool expanded = index.data(CollectionTreeModel::ExpandedRole).toBool();
    if (expand) {
        if (hasChildren && !expanded)
            m_store->toggleCollapsed(current);
        else if (hasChildren)
            m_store->setSelectionKey(m_tree->idAt(row + 1));
        return;
    }
    if (hasChildren && expanded) {
        m_store->toggleCollapsed(current);
        return;
    }
    const QString parent = index.data(CollectionTreeModel::ParentIdRole).toString();
    if (m_tree->rowOf(parent) >= 0)
        m_store->setSelectionKey(parent);
}

bool SidebarController::sortIsManual() const
{
    return !m_settings || m_settings->collectionSort() == u"manual";
}

} // namespace kivo
