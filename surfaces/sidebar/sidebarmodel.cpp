#include "surfaces/sidebar/sidebarmodel.h"

#include "core/records.h"
#include "core/store.h"

using namespace Qt::StringLiterals;

namespace kivo {

SidebarModel::SidebarModel(QObject *parent) : QAbstractListModel(parent)
{
}

QList<SidebarModel::Entry> SidebarModel::entries(const QString &section)
{
    if (section == u"library") {
        return {{u"all"_s, u"All"_s, u"all"_s}, {u"inbox"_s, u"Inbox"_s, u"inbox"_s},
            {u"favourites"_s, u"Favourites"_s, u"favourites"_s}, {u"links"_s, u"Links"_s, u"links"_s},
            {u"trash"_s, u"Trash"_s, u"trash"_s}, {u"hidden"_s, u"Hidden"_s, u"hidden"_s}};
    }
    if (section != u"types")
        return {};
    // The kind filters in their fixed order; their keys are "type-" and the filter's raw string.
    const QStringList titles{
        u"Images"_s, u"Videos"_s, u"Links"_s, u"Documents"_s, u"Tweets"_s, u"Instagram"_s, u"Audio"_s};
    QList<Entry> types;
    const QList<MediaTypeFilter> &filters = allMediaTypeFilters();
    for (qsizetype index = 0; index < filters.size(); ++index) {
        const QString raw = rawString(filters.at(index));
        types.append({u"type-"_s + raw, titles.value(index), raw});
    }
    return types;
}

int SidebarModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant SidebarModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Entry &entry = m_entries.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return entry.title;
    case KeyRole:
        return entry.key;
    case CountRole:
        return countFor(m_store, entry.key);
    case IconRole:
        return entry.icon;
    default:
        return {};
    }
}

QHash<int, QByteArray> SidebarModel::roleNames() const
{
    return {{KeyRole, "key"}, {TitleRole, "title"}, {CountRole, "count"}, {IconRole, "icon"}};
}

void SidebarModel::setStore(Store *store)
{
    if (m_store == store)
        return;
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    if (m_store) {
        connect(m_store, &Store::countsChanged, this, &SidebarModel::countsChanged);
        connect(m_store, &Store::typeCountsChanged, this, &SidebarModel::countsChanged);
    }
    Q_EMIT storeChanged();
    countsChanged();
}

void SidebarModel::setSection(const QString &section)
{
    if (m_section == section)
        return;
    beginResetModel();
    m_section = section;
    m_entries = entries(section);
    endResetModel();
    Q_EMIT sectionChanged();
}

int SidebarModel::countFor(const Store *store, const QString &key)
{
    if (!store)
        return -1;
    if (key == u"all")
        return store->allCount();
    if (key == u"inbox")
        return store->inboxCount();
    if (key == u"favourites")
        return store->favouritesCount();
    if (key == u"links")
        return store->linksCount();
    if (key == u"trash")
        return store->trashCount();
    if (key == u"hidden")
        return store->hiddenCount();
    if (!key.startsWith(u"type-"))
        return -1;
    const QVariant count = store->typeCounts().value(key.mid(5));
    return count.isValid() ? count.toInt() : -1;
}

void SidebarModel::countsChanged()
{
    if (!m_entries.isEmpty())
        Q_EMIT dataChanged(index(0), index(int(m_entries.size()) - 1), {CountRole});
}

} // namespace kivo
