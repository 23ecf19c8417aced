#pragma once

#include "ingest/capture/clipentry.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <optional>

namespace kivo {

/**
 * The clips waiting for the user to say where they go: those of a multi-item clip, in order of
 * arrival, each bound to its item when its import ends. The shelf (or the pending panel) shows
 * them and files them; what is left when the clip session ends stays in the inbox.
 */
class PendingClips : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY entriesChanged)

public:
    using QObject::QObject;

    [[nodiscard]] const QList<ClipEntry> &entries() const { return m_entries; }
    [[nodiscard]] int count() const { return int(m_entries.size()); }
    [[nodiscard]] bool isEmpty() const { return m_entries.isEmpty(); }

    void append(const QList<ClipEntry> &entries);
    /** Binds the entry with this id to its item, unless it already has one. */
    void setItemId(const QString &entryId, const QString &itemId);
    /** Gives an entry the preview fetched after its arrival. */
    void setPreview(const QString &entryId, const QImage &preview);
    /** Drops the entry of a clip that gave no item. */
    void removeEntry(const QString &entryId);
    /** Adds an entry for an item already stored, unless one has it; returns whether it did. */
    bool addItemId(const QString &itemId);
    /** The ids of the entries that have an item, in order. */
    [[nodiscard]] QStringList itemIds() const;
    /** Empties the list and forgets the deferred filing and export. */
    void clear();

    [[nodiscard]] const std::optional<QString> &deferredFileTarget() const { return m_deferredFileTarget; }
    void setDeferredFileTarget(const std::optional<QString> &collectionId) { m_deferredFileTarget = collectionId; }
    [[nodiscard]] bool deferredExport() const { return m_deferredExport; }
    void setDeferredExport(bool deferred) { m_deferredExport = deferred; }

Q_SIGNALS:
    void entriesChanged();
    /** One entry changed in place (its item or preview), at this row. */
    void entryChanged(int row);

private:
    [[nodiscard]] qsizetype indexOf(const QString &entryId) const;

    QList<ClipEntry> m_entries;
    std::optional<QString> m_deferredFileTarget;
    bool m_deferredExport = false;
};

} // namespace kivo
