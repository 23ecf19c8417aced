#pragma once

#include "core/appsettings.h"
#include "core/store.h"
#include "surfaces/sidebar/collectiontreemodel.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * The logic of the sidebar: what a drop on a row or between rows does, making a collection and
 * renaming it in place, deleting the clicked or the selected collections, moving the selection
 * with the keys through the sections that are open, and the title of what is selected.
 */
class SidebarController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(kivo::AppSettings *settings READ settings WRITE setSettings NOTIFY settingsChanged)
    /** The tree as drawn, for drops between rows and for the keys. */
    Q_PROPERTY(kivo::CollectionTreeModel *tree READ tree WRITE setTree NOTIFY treeChanged)
    Q_PROPERTY(kivo::CollectionTreeModel *pinned READ pinned WRITE setPinned NOTIFY pinnedChanged)
    /** The selection's name: "All", "Images", a collection's name... */
    Q_PROPERTY(QString selectionTitle READ selectionTitle NOTIFY selectionTitleChanged)
    /** Which section the keys move through first when a collection shows in two: "pinned" or "collections". */
    Q_PROPERTY(QString focusSection READ focusSection WRITE setFocusSection NOTIFY focusSectionChanged)

public:
    explicit SidebarController(QObject *parent = nullptr);

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] AppSettings *settings() const { return m_settings; }
    void setSettings(AppSettings *settings);
    [[nodiscard]] CollectionTreeModel *tree() const { return m_tree; }
    void setTree(CollectionTreeModel *tree);
    [[nodiscard]] CollectionTreeModel *pinned() const { return m_pinned; }
    void setPinned(CollectionTreeModel *pinned);
    [[nodiscard]] QString selectionTitle() const;
    [[nodiscard]] QString focusSection() const { return m_focusSection; }
    void setFocusSection(const QString &section);

    /** Makes "New Collection" (inside `parentId` when given, opening it) and starts its rename. */
    Q_INVOKABLE QString createCollection(const QString &parentId = {});
    /** Starts the rename in place of a collection. */
    Q_INVOKABLE void beginRename(const QString &collectionId);
    /** Ends a rename: the name is kept when it is not blank. */
    Q_INVOKABLE void commitRename(const QString &collectionId, const QString &name);
    Q_INVOKABLE void cancelRename();
    /** Deletes the selected collections when the clicked one is among them, else the clicked one. */
    Q_INVOKABLE void deleteCollection(const QString &collectionId);
    /** The ids a collection's context menu acts on, by the same rule. */
    Q_INVOKABLE QStringList collectionTargets(const QString &collectionId) const;

    /** Whether a drag's text is Kivo's own item or collection drag. */
    Q_INVOKABLE bool acceptsDrag(const QString &text) const;
    /** Whether a drag's text carries a collection (which may also go between rows). */
    Q_INVOKABLE bool isCollectionDrag(const QString &text) const;
    /** A drop on a collection's row: items are filed into it, a collection is nested inside it. */
    Q_INVOKABLE bool dropOnCollection(const QString &text, const QString &collectionId);
    /** A collection dropped in the gap above tree row `gap` (the row count: under the last row). */
    Q_INVOKABLE bool dropInGap(const QString &text, int gap);
    /** A collection dropped on the section heading or the empty space below the tree: to the top level. */
    Q_INVOKABLE bool dropAtTopLevel(const QString &text);

    /** Moves the selection `step` rows through the open sections, stopping at either end. */
    Q_INVOKABLE void moveSelection(int step);
    /** Right on a collection: open it, or step onto its first child. Left: close it, or step onto its parent. */
    Q_INVOKABLE void expandOrEnter(bool expand);
    /** The selection keys in the order the sidebar shows them, sections that are closed left out. */
    [[nodiscard]] QStringList visibleKeys() const;

Q_SIGNALS:
    void storeChanged();
    void settingsChanged();
    void treeChanged();
    void pinnedChanged();
    void selectionTitleChanged();
    void focusSectionChanged();

private:
    [[nodiscard]] bool sortIsManual() const;

    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
    QPointer<CollectionTreeModel> m_tree;
    QPointer<CollectionTreeModel> m_pinned;
    QString m_focusSection = QStringLiteral("collections");
};

} // namespace kivo
