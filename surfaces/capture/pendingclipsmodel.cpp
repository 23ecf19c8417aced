#include "surfaces/capture/pendingclipsmodel.h"

#include "core/store.h"
#include "ingest/capture/pendingclips.h"
#include "surfaces/capture/clippreviewprovider.h"

using namespace Qt::StringLiterals;

namespace kivo {

PendingClipsModel::PendingClipsModel(PendingClips *clips, Store *store, QObject *parent)
    : QAbstractListModel(parent)
    , m_clips(clips)
    , m_store(store)
{
    m_rows = clips ? clips->count() : 0;
    if (!clips)
        return;
    connect(clips, &PendingClips::entriesChanged, this, &PendingClipsModel::refresh);
    connect(clips, &PendingClips::entryChanged, this, [this](int row) {
        ++m_serial;
        const ClipEntry &entry = m_clips->entries().at(row);
        ClipPreviewProvider::put(u"clip/"_s + entry.id, entry.preview);
        Q_EMIT dataChanged(index(row), index(row));
    });
}

void PendingClipsModel::refresh()
{
    // The list is short and changes by whole clips; a reset is the honest description.
    beginResetModel();
    ++m_serial;
    for (const ClipEntry &entry : m_clips->entries())
        ClipPreviewProvider::put(u"clip/"_s + entry.id, entry.preview);
    const bool countChanges = m_rows != m_clips->count();
    m_rows = m_clips->count();
    endResetModel();
    if (countChanges)
        Q_EMIT countChanged();
}

int PendingClipsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

QVariant PendingClipsModel::data(const QModelIndex &index, int role) const
{
    if (!m_clips || !checkIndex(index, CheckIndexOption::IndexIsValid) || index.row() >= m_clips->count())
        return {};
    const ClipEntry &entry = m_clips->entries().at(index.row());
    switch (role) {
    case EntryIdRole:
        return entry.id;
    case ItemIdRole:
        return entry.itemId.value_or(QString());
    case TitleRole:
        if (entry.link)
            return entry.link->title;
        if (entry.itemId && m_store) {
            if (const std::optional<LibraryItem> item = m_store->itemById(*entry.itemId))
                return item->title.value_or(QString());
        }
        return QString();
    case DomainRole:
        return entry.link ? entry.link->domain : QString();
    case PreviewRole:
        if (entry.preview.isNull())
            return QString();
        return u"image://"_s + QString::fromLatin1(ClipPreviewProvider::providerId) + u"/clip/"_s + entry.id + u'?'
            + QString::number(m_serial);
    case SavedRole:
        return entry.itemId.has_value();
    default:
        return {};
    }
}

QHash<int, QByteArray> PendingClipsModel::roleNames() const
{
    return {
        {EntryIdRole, "entryId"},
        {ItemIdRole, "itemId"},
        {TitleRole, "title"},
        {DomainRole, "domain"},
        {PreviewRole, "preview"},
        {SavedRole, "saved"},
    };
}

} // namespace kivo
