#pragma once

#include "core/appsettings.h"
#include "core/collectiontree.h"
#include "core/records.h"
#include "core/store.h"
#include "surfaces/common/keyedlistmodel.h"

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * The sidebar's collections as a flat list: the visible rows of the tree, depth first in the
 * order the settings ask for, or, with `pinnedOnly`, the pinned collections by when they were
 * pinned. Rebuilt from the Store's published lists at every reload and diffed by id, so rows move
 * and open rather than the list being rebuilt under the pointer.
 */
class CollectionTreeModel : public KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(kivo::AppSettings *settings READ settings WRITE setSettings NOTIFY settingsChanged)
    /** Lists the pinned collections only, flat, instead of the tree. */
    Q_PROPERTY(bool pinnedOnly READ pinnedOnly WRITE setPinnedOnly NOTIFY pinnedOnlyChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        IdRole = Qt::UserRole + 1, ///< string: the collection's id, also its selection key
        NameRole, ///< string
        DepthRole, ///< int: 0 at the top level; always 0 in the pinned list
        HasChildrenRole, ///< bool: whether it has collections inside (false in the pinned list)
        ExpandedRole, ///< bool: whether its children show (not in the collapsed set)
        CountRole, ///< int: live items filed in it, not counting its children's
        IconRole, ///< string: symbol name: its own icon, else the one its name suggests, else "folder"
        PinnedRole, ///< bool
        ParentIdRole, ///< string: the parent's id, empty at the top level
    };
    Q_ENUM(Role)

    /** Everything the rows are built from; the Store fills it, tests may give it directly. */
    struct Source {
        QList<LibraryCollection> collections;
        QHash<QString, int> counts;
        QHash<QString, double> activityRollup;
        QHash<QString, QString> semanticIcons;
        QSet<QString> collapsed;
        CollectionSort sort = CollectionSort::manual;
        bool reversed = false;
    };

    explicit CollectionTreeModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] AppSettings *settings() const { return m_settings; }
    void setSettings(AppSettings *settings);
    [[nodiscard]] bool pinnedOnly() const { return m_pinnedOnly; }
    void setPinnedOnly(bool pinnedOnly);
    [[nodiscard]] int count() const { return int(m_rows.size()); }

    /** Replaces what the rows are built from and rebuilds them. */
    void setSource(Source source);
    [[nodiscard]] const Source &source() const { return m_source; }
    /** The rows as drawn, for the drop logic. */
    [[nodiscard]] QList<CollectionTreeRow> treeRows() const;

    /** The row of a collection, or -1 when it is not visible. */
    Q_INVOKABLE int rowOf(const QString &id) const;
    Q_INVOKABLE QString idAt(int row) const;

Q_SIGNALS:
    void storeChanged();
    void settingsChanged();
    void pinnedOnlyChanged();
    void countChanged();

private:
    struct Row {
        CollectionTreeRow tree;
        bool expanded = true;
        int count = 0;
        QString icon;
        bool operator==(const Row &other) const
        {
            return tree.collection == other.tree.collection && tree.depth == other.tree.depth
                && tree.hasChildren == other.tree.hasChildren && expanded == other.expanded && count == other.count
                && icon == other.icon;
        }
    };

    void pullFromStore();
    void rebuild();

    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
    bool m_pinnedOnly = false;
    Source m_source;
    QList<Row> m_rows;
};

} // namespace kivo
