#include "surfaces/sidebar/sidebarmodel.h"

#include "core/records.h"

using namespace Qt::StringLiterals;

namespace kivo {

SidebarModel::SidebarModel(QObject *parent)
    : QAbstractListModel(parent)
{
    const QString library = u"library"_s;
    m_entries = {
        {u"all"_s, u"All"_s, library, u"all"_s},
        {u"inbox"_s, u"Inbox"_s, library, u"inbox"_s},
        {u"favourites"_s, u"Favourites"_s, library, u"favourites"_s},
        {u"links"_s, u"Links"_s, library, u"links"_s},
        {u"trash"_s, u"Trash"_s, library, u"trash"_s},
        {u"hidden"_s, u"Hidden"_s, library, u"hidden"_s},
    };
    // The kind filters in their fixed order; their keys are "type-" and the filter's raw string.
    const QStringList titles{u"Images"_s, u"Videos"_s, u"Links"_s, u"Documents"_s,
                             u"Tweets"_s, u"Instagram"_s, u"Audio"_s};
    const QList<MediaTypeFilter> &filters = allMediaTypeFilters();
    for (qsizetype index = 0; index < filters.size(); ++index) {
        const QString raw = rawString(filters.at(index));
        m_entries.append({u"type-"_s + raw, titles.value(index), u"types"_s, raw});
    }
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
        return countAt(index.row());
    case SectionRole:
        return entry.section;
    case IconRole:
        return entry.icon;
    case SectionTitleRole:
        if (entry.section == u"types" && (index.row() == 0 || m_entries.at(index.row() - 1).section != entry.section))
            return u"Types"_s;
        return QString();
    default:
        return {};
    }
}

QHash<int, QByteArray> SidebarModel::roleNames() const
{
    return {{KeyRole, "key"}, {TitleRole, "title"}, {CountRole, "count"}, {SectionRole, "section"}, {IconRole, "icon"},
            {SectionTitleRole, "sectionTitle"}};
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

QString SidebarModel::selectionKey() const
{
    return m_entries.at(m_selectedRow).key;
}

QString SidebarModel::selectionTitle() const
{
    return m_entries.at(m_selectedRow).title;
}

void SidebarModel::select(const QString &key)
{
    for (int row = 0; row < m_entries.size(); ++row) {
        if (m_entries.at(row).key != key)
            continue;
        if (row == m_selectedRow)
            return;
        m_selectedRow = row;
        Q_EMIT selectionChanged();
        Q_EMIT selectionCountChanged();
        return;
    }
}

void SidebarModel::moveSelection(int step)
{
    const int row = std::clamp(m_selectedRow + step, 0, int(m_entries.size()) - 1);
    select(m_entries.at(row).key);
}

int SidebarModel::countAt(int row) const
{
    if (!m_store || row < 0 || row >= m_entries.size())
        return -1;
    const QString &key = m_entries.at(row).key;
    if (key == u"all")
        return m_store->allCount();
    if (key == u"inbox")
        return m_store->inboxCount();
    if (key == u"favourites")
        return m_store->favouritesCount();
    if (key == u"links")
        return m_store->linksCount();
    if (key == u"trash")
        return m_store->trashCount();
    if (key == u"hidden")
        return m_store->hiddenCount();
    const QVariant count = m_store->typeCounts().value(key.mid(5));
    return count.isValid() ? count.toInt() : -1;
}

void SidebarModel::countsChanged()
{
    if (!m_entries.isEmpty())
        Q_EMIT dataChanged(index(0), index(int(m_entries.size()) - 1), {CountRole});
    Q_EMIT selectionCountChanged();
}

} // namespace kivo
