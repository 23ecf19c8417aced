#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include "core/store.h"

namespace kivo {

/**
 * The sidebar's fixed rows, the six selections and the seven kind filters, with the Store's
 * counts beside them, and which row is selected. The Store takes the selection over once it
 * loads rows per selection; until then the sidebar keeps it.
 */
class SidebarModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    /** The selection key of the selected row: "all", "inbox", ..., "type-image", ... */
    Q_PROPERTY(QString selectionKey READ selectionKey WRITE select NOTIFY selectionChanged)
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectionChanged)
    Q_PROPERTY(QString selectionTitle READ selectionTitle NOTIFY selectionChanged)
    /** The selected row's count, -1 while unknown. */
    Q_PROPERTY(int selectionCount READ selectionCount NOTIFY selectionCountChanged)

public:
    enum Role {
        KeyRole = Qt::UserRole + 1, ///< selection key, also the row's objectName in QML
        TitleRole, ///< the words shown
        CountRole, ///< live items under the row, -1 while the Store has no number for it
        SectionRole, ///< "library" for the fixed selections, "types" for the kind filters
        IconRole, ///< name of the row's glyph, resolved by the view
        SectionTitleRole, ///< the heading the row stands under when it opens a titled section, else empty
    };
    Q_ENUM(Role)

    explicit SidebarModel(QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] QString selectionKey() const;
    [[nodiscard]] int selectedRow() const { return m_selectedRow; }
    [[nodiscard]] QString selectionTitle() const;
    [[nodiscard]] int selectionCount() const { return countAt(m_selectedRow); }

    /** Selects the row with this key; an unknown key changes nothing. */
    Q_INVOKABLE void select(const QString &key);
    /** Moves the selection by `step` rows (arrow keys), stopping at either end. */
    Q_INVOKABLE void moveSelection(int step);

Q_SIGNALS:
    void storeChanged();
    void selectionChanged();
    void selectionCountChanged();

private:
    struct Entry {
        QString key;
        QString title;
        QString section;
        QString icon;
    };

    [[nodiscard]] int countAt(int row) const;
    void countsChanged();

    QList<Entry> m_entries;
    QPointer<Store> m_store;
    int m_selectedRow = 0;
};

} // namespace kivo
