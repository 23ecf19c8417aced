#include "ingest/capture/pendingclips.h"

#include "core/records.h"

namespace kivo {

void PendingClips::append(const QList<ClipEntry> &entries)
{
    if (entries.isEmpty())
        return;
    m_entries.append(entries);
    Q_EMIT entriesChanged();
}

void PendingClips::setItemId(const QString &entryId, const QString &itemId)
{
    const qsizetype row = indexOf(entryId);
    if (row < 0 || m_entries.at(row).itemId)
        return;
    m_entries[row].itemId = itemId;
    Q_EMIT entryChanged(int(row));
}

void PendingClips::setPreview(const QString &entryId, const QImage &preview)
{
    const qsizetype row = indexOf(entryId);
    if (row < 0 || preview.isNull())
        return;
    m_entries[row].preview = preview;
    Q_EMIT entryChanged(int(row));
}

void PendingClips::removeEntry(const QString &entryId)
{
    const qsizetype row = indexOf(entryId);
    if (row < 0)
        return;
    m_entries.removeAt(row);
    Q_EMIT entriesChanged();
}

bool PendingClips::addItemId(const QString &itemId)
{
    for (const ClipEntry &entry : std::as_const(m_entries)) {
        if (entry.itemId == itemId)
            return false;
    }
    m_entries.append(ClipEntry{newIdentifier(), itemId, {}, std::nullopt});
    Q_EMIT entriesChanged();
    return true;
}

QStringList PendingClips::itemIds() const
{
    QStringList ids;
    for (const ClipEntry &entry : m_entries) {
        if (entry.itemId)
            ids.append(*entry.itemId);
    }
    return ids;
}

void PendingClips::clear()
{
    m_deferredFileTarget.reset();
    m_deferredExport = false;
    if (m_entries.isEmpty())
        return;
    m_entries.clear();
    Q_EMIT entriesChanged();
}

qsizetype PendingClips::indexOf(const QString &entryId) const
{
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).id == entryId)
            return i;
    }
    return -1;
}

} // namespace kivo
