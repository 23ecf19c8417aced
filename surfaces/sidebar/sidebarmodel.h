#pragma once

#include "core/store.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * The sidebar's fixed rows of one section with the Store's counts beside them: the six lists
 * (section "library") or the seven kind filters (section "types").
 */
class SidebarModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    /** "library" or "types"; any other word lists nothing. */
    Q_PROPERTY(QString section READ section WRITE setSection NOTIFY sectionChanged)

public:
    enum Role {
        KeyRole = Qt::UserRole + 1, ///< selection key ("all", "type-image", ...), also the row's objectName in QML
        TitleRole, ///< the words shown
        CountRole, ///< live items under the row, -1 while the Store has no number for it
        IconRole, ///< name of the row's glyph, resolved by the view
    };
    Q_ENUM(Role)

    struct Entry {
        QString key;
        QString title;
        QString icon;
    };

    explicit SidebarModel(QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] QString section() const { return m_section; }
    void setSection(const QString &section);

    /** The fixed rows of a section in their order. */
    [[nodiscard]] static QList<Entry> entries(const QString &section);
    /** The count the Store has for a fixed selection key, -1 when it has none. */
    [[nodiscard]] static int countFor(const Store *store, const QString &key);

Q_SIGNALS:
    void storeChanged();
    void sectionChanged();

private:
    void countsChanged();

    QList<Entry> m_entries;
    QString m_section;
    QPointer<Store> m_store;
};

} // namespace kivo
