#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace kivo {

class PendingClips;
class Store;

/** The pending clips as rows for the pending panel, in order of arrival. */
class PendingClipsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The pending panel makes its model")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        EntryIdRole = Qt::UserRole + 1, ///< the clip's own id, made on arrival
        ItemIdRole, ///< the stored item's id; empty while its import runs
        TitleRole, ///< the page's title, or the stored item's title, or ""
        DomainRole, ///< the page's host without "www.", or ""
        PreviewRole, ///< an image address for the preview, or "" without one
        SavedRole, ///< whether the import has given an item
    };

    PendingClipsModel(PendingClips *clips, Store *store, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
    [[nodiscard]] int count() const { return rowCount(); }

Q_SIGNALS:
    void countChanged();

private:
    void refresh();

    QPointer<PendingClips> m_clips;
    QPointer<Store> m_store;
    int m_rows = 0;
    int m_serial = 0;
};

} // namespace kivo
