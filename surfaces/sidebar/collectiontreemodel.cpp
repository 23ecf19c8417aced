#include "surfaces/sidebar/collectiontreemodel.h"

#include "core/appsettings.h"
#include "core/store.h"

using namespace Qt::StringLiterals;

namespace kivo {

CollectionTreeModel::CollectionTreeModel(QObject *parent) : KeyedListModel(parent)
{
}

int CollectionTreeModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant CollectionTreeModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Row &row = m_rows.at(index.row());
    const LibraryCollection &collection = row.tree.collection;
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return collection.name;
    case IdRole:
        return collection.id;
    case DepthRole:
        return row.tree.depth;
    case HasChildrenRole:
        return row.tree.hasChildren;
    case ExpandedRole:
        return row.expanded;
    case CountRole:
        return row.count;
    case IconRole:
        return row.icon;
    case PinnedRole:
        return collection.pinnedAt.has_value();
    case ParentIdRole:
        return collection.parentId.value_or(QString());
    default:
        return {};
    }
}

QHash<int, QByteArray> CollectionTreeModel::roleNames() const
{
    return {{IdRole, "collectionId"}, {NameRole, "name"}, {DepthRole, "depth"}, {HasChildrenRole, "hasChildren"},
        {ExpandedRole, "expanded"}, {CountRole, "count"}, {IconRole, "icon"}, {PinnedRole, "pinned"},
        {ParentIdRole, "parentId"}};
}

void CollectionTreeModel::setStore(Store *store)
{
    if (m_store == store)
        return;
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    if (m_store) {
        for (const auto signal : {&Store::collectionsChanged, &Store::countsChanged, &Store::collectionActivityChanged,
                 &Store::collapsedCollectionsChanged, &Store::semanticIconsChanged})
            connect(m_store, signal, this, &CollectionTreeModel::pullFromStore);
    }
    Q_EMIT storeChanged();
    pullFromStore();
}

void CollectionTreeModel::setSettings(AppSettings *settings)
{
    if (m_settings == settings)
        return;
    if (m_settings)
        disconnect(m_settings, nullptr, this, nullptr);
    m_settings = settings;
    if (m_settings) {
        connect(m_settings, &AppSettings::collectionSortChanged, this, &CollectionTreeModel::pullFromStore);
        connect(m_settings, &AppSettings::collectionSortReversedChanged, this, &CollectionTreeModel::pullFromStore);
    }
    Q_EMIT settingsChanged();
    pullFromStore();
}

void CollectionTreeModel::setPinnedOnly(bool pinnedOnly)
{
    if (m_pinnedOnly == pinnedOnly)
        return;
    m_pinnedOnly = pinnedOnly;
    Q_EMIT pinnedOnlyChanged();
    rebuild();
}

void CollectionTreeModel::setSource(Source source)
{
    m_source = std::move(source);
    rebuild();
}

QList<CollectionTreeRow> CollectionTreeModel::treeRows() const
{
    QList<CollectionTreeRow> rows;
    rows.reserve(m_rows.size());
    for (const Row &row : m_rows)
        rows.append(row.tree);
    return rows;
}

int CollectionTreeModel::rowOf(const QString &id) const
{
    for (qsizetype row = 0; row < m_rows.size(); ++row) {
        if (m_rows.at(row).tree.collection.id == id)
            return int(row);
    }
    return -1;
}

QString CollectionTreeModel::idAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).tree.collection.id : QString();
}

void CollectionTreeModel::pullFromStore()
{
    Source source;
    if (m_store) {
        source.collections = m_store->collections();
        source.counts = m_store->counts();
        source.activityRollup = m_store->collectionActivityRollup();
        source.semanticIcons = m_store->semanticIcons();
        source.collapsed = m_store->collapsedCollections();
    }
    if (m_settings) {
        source.sort = collectionSortFromRaw(m_settings->collectionSort()).value_or(CollectionSort::manual);
        source.reversed = m_settings->collectionSortReversed();
    }
    setSource(std::move(source));
}

void CollectionTreeModel::rebuild()
{
    QList<CollectionTreeRow> tree;
    if (m_pinnedOnly) {
        for (const LibraryCollection &collection : CollectionTree::pinned(m_source.collections))
            tree.append({collection, 0, false});
    } else {
        tree = CollectionTree::flatten(
            m_source.collections, m_source.sort, m_source.reversed, m_source.activityRollup, m_source.collapsed);
    }
    QList<Row> next;
    next.reserve(tree.size());
    for (const CollectionTreeRow &entry : std::as_const(tree)) {
        const LibraryCollection &collection = entry.collection;
        QString icon = collection.icon.value_or(QString());
        if (icon.isEmpty())
            icon = m_source.semanticIcons.value(collection.id, u"folder"_s);
        next.append({entry, !m_source.collapsed.contains(collection.id), m_source.counts.value(collection.id), icon});
    }
    const int before = int(m_rows.size());
    replaceRows(m_rows, next, [](const Row &row) { return row.tree.collection.id; });
    if (before != m_rows.size())
        Q_EMIT countChanged();
}

} // namespace kivo
