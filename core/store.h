#pragma once

#include "core/collectiontree.h"
#include "core/database.h"
#include "core/itemchangelog.h"
#include "core/itemqueries.h"
#include "core/records.h"
#include "core/sidebarselection.h"

#include <QColor>
#include <QCoreApplication>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <QTimer>
#include <QUrl>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

namespace kivo {

class AppSettings;
class KnownRows;
class Desktop;

/** What one deletion of collections took away, so that an undo can put it back. */
struct DeletedBoards {
    struct Membership {
        QString itemId;
        QString collectionId;
        double addedAt = 0;
    };
    QStringList ids;
    QList<Membership> memberships;
};

/** A collection as the lists of filing targets show it: its number of members and newest addition. */
struct CollectionActivity {
    QString id;
    QString name;
    int count = 0;
    std::optional<double> lastAdd;
};

/** What a search is asked to do: find the rows for this text inside this selection. */
struct SearchRequest {
    QString text; ///< trimmed, never empty
    SidebarSelection selection;
    std::optional<QString> inboxId;
    bool typing = false; ///< a keystroke: the search may wait a moment first
    quint64 generation = 0; ///< hand back with the rows; a newer reload makes it stale
};

/**
 * The application's one model object: owner of the database handle and publisher of what the
 * surfaces show (collections, the rows of the current selection, counts, selection, history and
 * the multi-selection). It lives on the main thread and never patches rows: every writer ends by
 * asking it to reload, and it re-reads. Operations take ids as strings so QML can call them; a
 * failed write logs "[Store] <operation> failed: <error>" and shows no toast.
 */
class Store : public QObject
{
    Q_OBJECT

    // Start
    Q_PROPERTY(QString setupError READ setupError NOTIFY setupErrorChanged)
    Q_PROPERTY(bool didInitialLoad READ didInitialLoad NOTIFY didInitialLoadChanged)
    Q_PROPERTY(QString libraryRoot READ libraryRoot NOTIFY libraryRootChanged)

    // Sidebar numbers
    Q_PROPERTY(int allCount READ allCount NOTIFY countsChanged)
    Q_PROPERTY(int inboxCount READ inboxCount NOTIFY countsChanged)
    Q_PROPERTY(int favouritesCount READ favouritesCount NOTIFY countsChanged)
    Q_PROPERTY(int linksCount READ linksCount NOTIFY countsChanged)
    Q_PROPERTY(int trashCount READ trashCount NOTIFY countsChanged)
    Q_PROPERTY(int hiddenCount READ hiddenCount NOTIFY countsChanged)
    /** Live members per collection id. */
    Q_PROPERTY(QVariantMap counts READ countsMap NOTIFY countsChanged)
    /** Live items per kind filter, by the filter's raw string ("image", "videos", ...); hidden ones count. */
    Q_PROPERTY(QVariantMap typeCounts READ typeCounts NOTIFY typeCountsChanged)

    // Collections
    Q_PROPERTY(QString inboxId READ inboxIdText NOTIFY collectionsChanged)
    Q_PROPERTY(int collectionCount READ collectionCount NOTIFY collectionsChanged)
    /** Collapsed ids of the sidebar tree, saved at every change. */
    Q_PROPERTY(QStringList collapsedCollections READ collapsedCollectionList NOTIFY collapsedCollectionsChanged)
    /** The collection just created from the sidebar, for it to start a rename; empty otherwise. */
    Q_PROPERTY(
        QString freshCollectionId READ freshCollectionId WRITE setFreshCollectionId NOTIFY freshCollectionIdChanged)
    /** What is being renamed in place: "item", "collection" or empty, and its id. */
    Q_PROPERTY(QString renameTargetKind READ renameTargetKind NOTIFY renamingChanged)
    Q_PROPERTY(QString renameTargetId READ renameTargetId NOTIFY renamingChanged)
    /** Whether an undo of the last deletion of collections is waiting. */
    Q_PROPERTY(bool canUndoDelete READ canUndoDelete NOTIFY pendingBoardUndoChanged)
    Q_PROPERTY(QStringList selectedCollectionIds READ selectedCollectionIdList WRITE setSelectedCollectionIdList NOTIFY
            selectedCollectionIdsChanged)

    // Selection and history
    /** The selection key of the sidebar's selection ("all", "type-image", a collection id...). */
    Q_PROPERTY(QString selectionKey READ selectionKey WRITE setSelectionKey NOTIFY selectionChanged)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY historyChanged)
    Q_PROPERTY(bool canGoForward READ canGoForward NOTIFY historyChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    /** "cards", "list", "timeline" or "canvas"; a user's choice is stored per selection. */
    Q_PROPERTY(QString viewMode READ viewModeName WRITE setViewModeName NOTIFY viewModeChanged)

    // Rows
    Q_PROPERTY(int itemCount READ itemCount NOTIFY itemsChanged)
    Q_PROPERTY(int allRowCount READ allRowCount NOTIFY allRowsChanged)
    Q_PROPERTY(int railItemCount READ railItemCount NOTIFY railItemsChanged)
    /** The item the capture card is deciding on; shown in neither `allRows` nor `railItems`. */
    Q_PROPERTY(QString capturePendingItemId READ capturePendingItemId WRITE setCapturePendingItemId NOTIFY
            capturePendingItemIdChanged)
    /** One colour for the current rows, invalid when there is none; QML animates changes. */
    Q_PROPERTY(QColor collectionTint READ collectionTint NOTIFY collectionTintChanged)
    Q_PROPERTY(bool extensionHasClipped READ extensionHasClipped WRITE setExtensionHasClipped NOTIFY
            extensionHasClippedChanged)

    // Multi-selection of items
    /** The one focused item; empty for none. */
    Q_PROPERTY(QString selectedItemId READ selectedItemId WRITE selectItem NOTIFY selectedItemIdChanged)
    /** The multi-selection, in the order of the rows; empty outside it. */
    Q_PROPERTY(
        QStringList selectedItemIds READ selectedItemIdList WRITE setSelectedItemIdList NOTIFY selectedItemIdsChanged)
    Q_PROPERTY(
        QString selectionAnchorId READ selectionAnchorId WRITE setSelectionAnchorId NOTIFY selectionAnchorIdChanged)
    /** The item the details panel shows; empty when closed. */
    Q_PROPERTY(QString detailsItemId READ detailsItemId WRITE setDetailsItemId NOTIFY detailsItemIdChanged)

    // Toast
    /** The current toast's words; empty when none. */
    Q_PROPERTY(QString toast READ toast NOTIFY toastChanged)
    /** The words of the toast's button ("Undo"), empty when it has none. */
    Q_PROPERTY(QString toastAction READ toastAction NOTIFY toastChanged)
    /** Goes up with every toast shown, also when the words repeat, so a view can restart its timer. */
    Q_PROPERTY(int toastSerial READ toastSerial NOTIFY toastChanged)

public:
    enum class RenameKind { item, collection };
    /** What the toast's button does. */
    enum class ToastAction { none, undoCollectionDelete, undoTrash };

    /** `settings` gives the per-view sort and kinds and the sidebar order; without it the defaults apply. */
    explicit Store(AppSettings *settings = nullptr, QObject *parent = nullptr);
    ~Store() override;

    // ---- Start -------------------------------------------------------------------------------

    /**
     * The window's start: loads the remembered state, forgets older view-mode values once,
     * ensures and opens the library, ensures the inbox, retires board objects, then queues the
     * first load and, three seconds later, the enrichment start (`enrichmentDue`).
     */
    void initialise();
    /**
     * Takes an already opened database (a headless command's) instead of opening one; ensures the
     * inbox. Nothing is loaded until the caller asks (`reloadAll`).
     */
    void adoptQueue(std::shared_ptr<DatabaseQueue> queue, const QString &libraryRoot);
    /** Gives the Store the desktop it hands items to (clipboard, file manager, Downloads). */
    void setDesktop(Desktop *desktop);
    /**
     * Type counts and tray previews feed only the window's sidebar and are read on a worker; a
     * headless command, which has no window and no event loop to receive them, turns them off.
     */
    void setSidebarExtrasEnabled(bool enabled) { m_sidebarExtrasEnabled = enabled; }
    /**
     * The window reads the collections' counts and the sidebar's numbers on a worker, as they walk
     * every item; a command wants them at once.
     */
    void setCollectionCountsInBackground(bool later) { m_collectionCountsInBackground = later; }
    /**
     * After large reloads the freed memory goes back to the system once things settle, and, with
     * a gate, only when the gate says it is a good moment (the window: no input for a while).
     */
    void setMemorySettleGate(std::function<bool()> gate) { m_memorySettleGate = std::move(gate); }
    /** Gives memory back as after a large reload: once things settle, and the gate agrees. */
    void giveBackMemoryOnceSettled() { m_memorySettle.start(); }
    /**
     * On a worker: lets go of the library file's mapped pages (they stay in the system's file
     * cache) and, with `trimHeap`, returns the heap's freed pages to the system. For memory purges.
     */
    void giveBackMemory(bool trimHeap = true);
    /**
     * The window has the first list read on a worker while it builds itself; the first reload
     * takes those rows when its query is the same and nothing was written since.
     */
    void setFirstRowsReadAhead(bool ahead) { m_firstRowsReadAhead = ahead; }
    /** How many rows the launch draws before the whole first list is read: a screen and more. */
    static constexpr qsizetype firstScreenfulRows = 400;
    /** Turns the "[trace]" timing lines on or off; the window reads "--churn-trace" once. */
    void setChurnTrace(bool on) { m_churnTrace = on; }
    [[nodiscard]] bool churnTrace() const { return m_churnTrace; }

    [[nodiscard]] QString setupError() const { return m_setupError; }
    [[nodiscard]] bool didInitialLoad() const { return m_didInitialLoad; }
    [[nodiscard]] QString libraryRoot() const { return m_libraryRoot; }
    /** The database handle; null when the library could not be opened. */
    [[nodiscard]] std::shared_ptr<DatabaseQueue> dbQueue() const { return m_dbQueue; }
    [[nodiscard]] std::optional<QString> inboxId() const { return m_inboxId; }
    [[nodiscard]] QString inboxIdText() const { return m_inboxId.value_or(QString()); }

    // ---- Reloads -----------------------------------------------------------------------------

    /** `reloadCollections`, then `reloadItems`. */
    Q_INVOKABLE void reloadAll();
    /**
     * Collections, the inbox, the sidebar's numbers and the activity, read at once; then the type
     * counts and tray previews, which are read on a worker and published when they arrive.
     */
    Q_INVOKABLE void reloadCollections();
    /** Reads the counts per kind filter on a worker; `typeCountsChanged` tells when they are in. */
    void reloadTypeCounts();
    /** Reads the tray previews on a worker; `trayPreviewsChanged` tells when they are in. */
    void reloadTrayPreviews();
    /**
     * Re-reads the rows of the current selection, or, with search text and a search runner, asks
     * the runner for them. `typing` marks a refresh caused by a keystroke.
     */
    Q_INVOKABLE void reloadItems(bool typing = false);
    /**
     * `reloadItems` for the refreshes nobody asked for (background reading finished, the settle
     * after the launch): the rows are read on a worker and published when they arrive, unless a
     * reload came in between, so a person scrolling never waits for a whole list to be read.
     */
    void refreshItems();
    void reloadCanvasPositions();
    void reloadBoardObjects();

    // ---- Search hook -------------------------------------------------------------------------

    using SearchRunner = std::function<void(const SearchRequest &request)>;
    /**
     * Installs the search. With search text set, `reloadItems` hands the runner a request instead
     * of reading the plain rows; the runner answers with `applySearchResults` on the main thread.
     * Without a runner the plain rows are shown whatever the text.
     */
    void setSearchRunner(SearchRunner runner);
    /** Publishes a search's rows in their own order, unless a newer reload has happened since. */
    void applySearchResults(quint64 generation, const QList<LibraryItem> &rows);
    [[nodiscard]] quint64 searchGeneration() const { return m_searchGeneration; }

    /**
     * Background reading has finished an item: re-run the rows (or the search, without its wait)
     * half a second later. Calls in the meantime join that one refresh, so a burst of finished
     * items refreshes the surfaces at most twice a second. Main thread only; services queue it.
     */
    void noteEnrichmentFinished();

    // ---- Published values (C++) --------------------------------------------------------------

    [[nodiscard]] const QList<LibraryCollection> &collections() const { return m_collections; }
    [[nodiscard]] const std::optional<LibraryCollection> &inboxCollection() const { return m_inboxCollection; }
    [[nodiscard]] const QList<LibraryItem> &items() const { return m_items; }
    [[nodiscard]] const QList<LibraryItem> &allRows() const { return m_allRows; }
    [[nodiscard]] const QList<LibraryItem> &railItems() const { return m_railItems; }
    [[nodiscard]] const QHash<QString, int> &counts() const { return m_counts; }
    [[nodiscard]] const QHash<QString, double> &collectionLastActivity() const { return m_collectionLastActivity; }
    [[nodiscard]] const QHash<QString, double> &collectionActivityRollup() const { return m_collectionActivityRollup; }
    [[nodiscard]] int allCount() const { return m_numbers.all; }
    [[nodiscard]] int inboxCount() const { return m_inboxCount; }
    [[nodiscard]] int favouritesCount() const { return m_numbers.favourites; }
    [[nodiscard]] int linksCount() const { return m_numbers.links; }
    [[nodiscard]] int trashCount() const { return m_numbers.trash; }
    [[nodiscard]] int hiddenCount() const { return m_numbers.hidden; }
    /** The sidebar's numbers that one pass over the items gives. */
    struct SidebarNumbers {
        int all = 0;
        int favourites = 0;
        int links = 0;
        int trash = 0;
        int hidden = 0;
        bool operator==(const SidebarNumbers &) const = default;
    };
    /** The sidebar's numbers and every collection's count, as one read gives them. */
    struct SidebarCounts {
        QHash<QString, int> counts;
        QHash<QString, double> lastActivity;
        SidebarNumbers numbers;
    };
    /** Whether the numbers above were read yet; in the window they follow the first list. */
    [[nodiscard]] bool countsKnown() const { return m_countsKnown; }
    [[nodiscard]] QVariantMap typeCounts() const { return m_typeCounts; }
    [[nodiscard]] int typeCount(MediaTypeFilter filter) const;
    [[nodiscard]] QVariantMap countsMap() const;
    [[nodiscard]] int collectionCount() const { return int(m_collections.size()); }
    /** How many rows the selection lists; 0, not yet known, while a long list's first screenful shows. */
    [[nodiscard]] int itemCount() const { return m_firstScreenfulShown ? 0 : int(m_items.size()); }
    [[nodiscard]] int allRowCount() const { return int(m_allRows.size()); }
    [[nodiscard]] int railItemCount() const { return int(m_railItems.size()); }
    /** Visible tag names per item id, by name; filled only while chips or the list's tag column show. */
    [[nodiscard]] const QHash<QString, QStringList> &tagNamesByItem() const { return m_tagNamesByItem; }
    /** Up to three newest file URLs per collection id, its descendants' included. */
    [[nodiscard]] const QHash<QString, QList<QUrl>> &trayPreviews() const { return m_trayPreviews; }
    /** Positions of the current board, by item id. */
    [[nodiscard]] const QHash<QString, CanvasPosition> &canvasPositions() const { return m_canvasPositions; }
    [[nodiscard]] const QList<BoardObject> &boardObjects() const { return m_boardObjects; }
    [[nodiscard]] const QHash<QString, QString> &semanticIcons() const { return m_semanticIcons; }
    [[nodiscard]] const QHash<QString, bool> &railSplitOverride() const { return m_railSplitOverride; }
    [[nodiscard]] QColor collectionTint() const { return m_collectionTint; }
    [[nodiscard]] QString capturePendingItemId() const { return m_capturePendingItemId; }
    void setCapturePendingItemId(const QString &id);
    [[nodiscard]] bool extensionHasClipped() const { return m_extensionHasClipped; }
    void setExtensionHasClipped(bool clipped);
    /** A remembered scroll anchor per selection key (the top card when the selection was left). */
    [[nodiscard]] QString scrollAnchor(const QString &selectionKey) const
    {
        return m_scrollAnchors.value(selectionKey);
    }
    Q_INVOKABLE void setScrollAnchor(const QString &selectionKey, const QString &itemId);

    /** The sidebar's collection tree in its order (collectionSort, collectionSortReversed). */
    [[nodiscard]] QList<CollectionTreeRow> collectionTree(bool skipCollapsed = false) const;
    /** A live collection of the published list, or the inbox. */
    [[nodiscard]] std::optional<LibraryCollection> collectionById(const QString &id) const;
    /** An item read from the database, trashed and hidden ones too. */
    [[nodiscard]] std::optional<LibraryItem> itemById(const QString &id) const;

    // ---- Selection, history, view mode -------------------------------------------------------

    [[nodiscard]] const SidebarSelection &selection() const { return m_selection; }
    /** Changes the selection: history, search text cleared, view mode and view preferences, rows. */
    void setSelection(const SidebarSelection &selection);
    [[nodiscard]] QString selectionKey() const { return m_selection.key(); }
    /** A key that names no selection is ignored. */
    void setSelectionKey(const QString &key);
    [[nodiscard]] const QList<SidebarSelection> &navBack() const { return m_navBack; }
    [[nodiscard]] const QList<SidebarSelection> &navForward() const { return m_navForward; }
    [[nodiscard]] bool canGoBack() const { return !m_navBack.isEmpty(); }
    [[nodiscard]] bool canGoForward() const { return !m_navForward.isEmpty(); }
    Q_INVOKABLE void goBack();
    Q_INVOKABLE void goForward();
    /**
     * A person pointing at the sidebar row with this key is likely to choose it. After a short
     * dwell its rows are read on a worker, so that choosing it then only has to show them; they
     * are used only if nothing was written since.
     */
    Q_INVOKABLE void expectSelection(const QString &key);
    /** The pointer left that row: a dwell on it still under way ends without reading. */
    Q_INVOKABLE void stopExpectingSelection(const QString &key);
    /** Whether rows of the selection with this key are read ahead or being read ahead. */
    [[nodiscard]] bool readsAhead(const QString &key) const;

    [[nodiscard]] QString searchText() const { return m_searchText; }
    void setSearchText(const QString &text);

    [[nodiscard]] ViewMode viewMode() const { return m_viewMode; }
    /** A user's choice: stored under "viewMode." and the selection key. */
    void setViewMode(ViewMode mode);
    [[nodiscard]] QString viewModeName() const { return rawString(m_viewMode); }
    void setViewModeName(const QString &mode);

    /** Turns the links rail on or off for a selection key, whatever the mix of rows; saved. */
    Q_INVOKABLE void setRailSplitOverride(const QString &selectionKey, bool split);
    Q_INVOKABLE void clearRailSplitOverride(const QString &selectionKey);
    /** The override of a key: true, false, or undefined when there is none. */
    Q_INVOKABLE QVariant railSplitOverrideFor(const QString &selectionKey) const;
    /** Overrides the view's item sort without storing it (headless listings). */
    void setItemSortOverride(std::optional<ItemSort> sort);

    // ---- Multi-selection of items ------------------------------------------------------------

    [[nodiscard]] QString selectedItemId() const { return m_selectedItemId; }
    /** Focuses one item; nothing happens when it is already the one. */
    Q_INVOKABLE void selectItem(const QString &id);
    [[nodiscard]] const QSet<QString> &selectedItemIds() const { return m_selectedItemIds; }
    [[nodiscard]] QStringList selectedItemIdList() const;
    void setSelectedItemIds(const QSet<QString> &ids);
    void setSelectedItemIdList(const QStringList &ids);
    [[nodiscard]] QString selectionAnchorId() const { return m_selectionAnchorId; }
    void setSelectionAnchorId(const QString &id);
    [[nodiscard]] QString detailsItemId() const { return m_detailsItemId; }
    void setDetailsItemId(const QString &id);
    /** Adds the id to the multi-selection, or takes it out when it is in. */
    Q_INVOKABLE void toggleSelection(const QString &id);
    /**
     * Shift-click: from the anchor (or the focused item) to `id`, replacing the multi-selection;
     * with no usable anchor, just `id`, which becomes the anchor.
     */
    Q_INVOKABLE void selectRangeTo(const QString &id);
    /** Empties the multi-selection. */
    Q_INVOKABLE void clearSelection();
    /** The items an action on `clickedId` applies to: the multi-selection if it holds it, else the item. */
    Q_INVOKABLE QStringList targetIds(const QString &clickedId) const;

    // ---- Item operations ---------------------------------------------------------------------

    /** Sets all favourite if any is not, else clears all; toast "Added to Favourites" / "Removed from Favourites". */
    Q_INVOKABLE bool favourite(const QStringList &ids);
    Q_INVOKABLE bool toggleFavourite(const QString &id);
    Q_INVOKABLE bool setHidden(const QStringList &ids, bool hidden);
    /** Moves one item to the trash (deletedAt and modifiedAt now). */
    Q_INVOKABLE bool deleteItem(const QString &id);
    Q_INVOKABLE bool restoreItem(const QString &id);
    /** Moves the multi-selection to the trash, leaving modifiedAt; toast with "Undo". */
    Q_INVOKABLE bool trashSelection();
    /** Moves these items to the trash as the selection's trash does (bulk, undoable). */
    Q_INVOKABLE bool trashItems(const QStringList &ids);
    /** Brings back what the last trashItems / trashSelection took. */
    Q_INVOKABLE bool undoTrash();
    /** Trimmed; an empty title changes nothing. */
    Q_INVOKABLE bool renameItem(const QString &id, const QString &title);
    Q_INVOKABLE bool setNote(const QString &id, const QString &text);

    /** Normalises a tag name: trimmed of blanks and new lines, lower case. */
    [[nodiscard]] static QString normaliseTagName(const QString &name);
    /** The tag procedure for each id, in one transaction; an existing link keeps its source. */
    Q_INVOKABLE bool addTag(const QStringList &ids, const QString &name);
    /** The tag procedure for each selected item; toast "Tagged N as name"; selection cleared. */
    Q_INVOKABLE bool tagSelected(const QString &name);
    [[nodiscard]] QList<TagInfo> tags(const QString &itemId) const;
    /** An item's tags as maps of tagId, name, source and status, suggested ones first. */
    Q_INVOKABLE QVariantList itemTags(const QString &itemId) const;
    /** Makes a tag link the user's, accepted. */
    Q_INVOKABLE bool acceptTag(const QString &itemId, const QString &tagId);
    /** Removes a tag from an item; the tag itself stays. */
    Q_INVOKABLE bool removeTag(const QString &itemId, const QString &tagId);
    /** Every tag with its number of items, most used first: maps of name and n. */
    Q_INVOKABLE QVariantList allTags() const;
    /** The visible tag names of an item in the current rows. */
    Q_INVOKABLE QStringList tagNames(const QString &itemId) const { return m_tagNamesByItem.value(itemId); }

    /** Files an item into a collection; with a different `fromCollectionId`, takes it out of that one. */
    Q_INVOKABLE bool fileItem(const QString &itemId, const QString &collectionId, const QString &fromCollectionId = {});
    /** Files several items (a multi-drag) into a collection in one transaction. */
    Q_INVOKABLE bool fileItems(const QStringList &itemIds, const QString &collectionId);
    /** Creates a collection named `name` (trimmed; empty does nothing) and files the item into it; returns the id. */
    Q_INVOKABLE QString fileItemIntoNew(
        const QString &itemId, const QString &name, const QString &fromCollectionId = {});
    Q_INVOKABLE bool removeItemFromCollection(const QString &itemId, const QString &collectionId);
    /** Removes items from a collection; `announce` shows "Removed N from <name>". Clears the selection. */
    Q_INVOKABLE bool removeItemsFromCollection(
        const QStringList &itemIds, const QString &collectionId, bool announce = true);
    /** Leaves an item only in the given collection. */
    Q_INVOKABLE bool keepOnlyInCollection(const QString &itemId, const QString &collectionId);
    /** Counts an opening from the launcher; modifiedAt stays. */
    Q_INVOKABLE bool recordLauncherOpen(const QString &itemId);
    /** Places an item on the current board, on top of the others. */
    bool saveCanvasPosition(CanvasPosition position);
    Q_INVOKABLE bool saveCanvasPosition(const QString &itemId, double x, double y, double scale = 1.0);
    /** The collections that hold every one of these items. */
    Q_INVOKABLE QStringList collectionsHoldingAll(const QStringList &itemIds) const;
    /** The collections one item is in. */
    Q_INVOKABLE QStringList itemCollectionIds(const QString &itemId) const;
    /** An item's fields as a map (the record's names), read from the database; empty if unknown. */
    Q_INVOKABLE QVariantMap itemData(const QString &itemId) const;

    // ---- Handing items to other programs -----------------------------------------------------

    /** A picture as an image, a note's text, a link's address, other files as files; toast "Copied". */
    Q_INVOKABLE void copyItem(const QString &itemId);
    /** The addresses of the items, one a line; "No Links to Copy", "Link Copied", "N Links Copied". */
    Q_INVOKABLE void copyLinks(const QStringList &itemIds);
    /** The files' full paths, one a line; "No Files to Copy", "Path Copied", "N Paths Copied". */
    Q_INVOKABLE void copyPaths(const QStringList &itemIds);
    /** Shows the items' existing files in the file manager; "No Files to Reveal" when there are none. */
    Q_INVOKABLE void revealItems(const QStringList &itemIds);
    /** Copies the items' files to Downloads off the main thread; "Saved N to Downloads". */
    Q_INVOKABLE void saveToDownloads(const QStringList &itemIds);

    // ---- Collections -------------------------------------------------------------------------

    /** Creates a collection at the end of the manual order; returns its id, empty on failure. */
    Q_INVOKABLE QString createCollection(const QString &name, const QString &parentId = {});
    /** Trimmed; an empty name or the inbox changes nothing. */
    Q_INVOKABLE bool renameCollection(const QString &id, const QString &name);
    Q_INVOKABLE bool setCollectionIcon(const QString &id, const QString &icon);
    Q_INVOKABLE bool pinCollection(const QString &id, bool pinned);
    /**
     * Nests a collection under `parentId` (empty: top level). Itself or the inbox as parent is
     * refused in silence; a loop is refused with "That Would Make a Loop".
     */
    Q_INVOKABLE bool moveCollection(const QString &id, const QString &parentId = {});
    /** Puts these siblings in this order under `parentId` (empty: top level). */
    Q_INVOKABLE bool reorderCollections(const QStringList &ids, const QString &parentId = {});
    /** Deletes collections with their descendants, keeping what an undo needs; toast with "Undo". */
    Q_INVOKABLE bool deleteCollections(const QStringList &ids);
    /** Brings back the last deleted collections with their memberships. */
    Q_INVOKABLE bool undoDelete();
    [[nodiscard]] const std::optional<DeletedBoards> &pendingBoardUndo() const { return m_pendingBoardUndo; }
    [[nodiscard]] bool canUndoDelete() const { return m_pendingBoardUndo.has_value(); }
    Q_INVOKABLE void toggleCollapsed(const QString &id);
    Q_INVOKABLE bool isCollapsed(const QString &id) const { return m_collapsedCollections.contains(id); }
    [[nodiscard]] const QSet<QString> &collapsedCollections() const { return m_collapsedCollections; }
    [[nodiscard]] QStringList collapsedCollectionList() const;
    /** Names from the top of the tree down to the collection, joined by the separator. */
    Q_INVOKABLE QString collectionPath(const QString &id, const QString &separator = QStringLiteral(" / ")) const;
    /** Live collections by modifiedAt, newest first. */
    [[nodiscard]] QList<LibraryCollection> recentCollections(int limit) const;
    /** The stored file paths of a collection's live members. */
    Q_INVOKABLE QStringList collectionPreviews(const QString &id) const;
    /** Live collections by their newest addition, then name: filing targets. */
    [[nodiscard]] QList<CollectionActivity> collectionsByLastAddition() const;
    /** A collection's fields as a map, with its count, path and depth; empty if unknown. */
    Q_INVOKABLE QVariantMap collectionData(const QString &id) const;
    /** The tree as maps (id, name, depth, hasChildren, count, pinned, icon, path) in sidebar order. */
    Q_INVOKABLE QVariantList collectionChoices() const;
    Q_INVOKABLE QList<QUrl> trayPreviewUrls(const QString &collectionId) const
    {
        return m_trayPreviews.value(collectionId);
    }
    Q_INVOKABLE QString semanticIcon(const QString &collectionId) const { return m_semanticIcons.value(collectionId); }

    [[nodiscard]] QString freshCollectionId() const { return m_freshCollectionId; }
    void setFreshCollectionId(const QString &id);
    [[nodiscard]] QString renameTargetKind() const;
    [[nodiscard]] QString renameTargetId() const { return m_renaming ? m_renaming->id : QString(); }
    /** Starts a rename in place: kind "item" or "collection". */
    Q_INVOKABLE void beginRename(const QString &kind, const QString &id);
    Q_INVOKABLE void endRename();

    [[nodiscard]] const QSet<QString> &selectedCollectionIds() const { return m_selectedCollectionIds; }
    [[nodiscard]] QStringList selectedCollectionIdList() const;
    void setSelectedCollectionIdList(const QStringList &ids);
    Q_INVOKABLE void toggleCollectionSelection(const QString &id);
    Q_INVOKABLE void clearCollectionSelection();

    // ---- Toast -------------------------------------------------------------------------------

    [[nodiscard]] QString toast() const { return m_toast; }
    [[nodiscard]] QString toastAction() const;
    [[nodiscard]] ToastAction toastActionKind() const { return m_toastAction; }
    [[nodiscard]] int toastSerial() const { return m_toastSerial; }
    /** Shows a toast; an action other than none adds its button. */
    void showToast(const QString &text, ToastAction action);
    Q_INVOKABLE void showToast(const QString &text) { showToast(text, ToastAction::none); }
    /** Runs the toast's action (its "Undo") and dismisses it. */
    Q_INVOKABLE void triggerToastAction();
    Q_INVOKABLE void dismissToast();

Q_SIGNALS:
    void setupErrorChanged();
    void didInitialLoadChanged();
    void libraryRootChanged();
    /** The sidebar numbers and the per-collection counts. */
    void countsChanged();
    void typeCountsChanged();
    /** `collections` or `inboxCollection`. */
    void collectionsChanged();
    /** `collectionLastActivity` and `collectionActivityRollup`. */
    void collectionActivityChanged();
    void trayPreviewsChanged();
    void semanticIconsChanged();
    void collapsedCollectionsChanged();
    void freshCollectionIdChanged();
    void renamingChanged();
    void pendingBoardUndoChanged();
    void selectedCollectionIdsChanged();

    /** Emitted before the selection changes, with the old key, so the grid can leave a scroll anchor. */
    void selectionAboutToChange(const QString &oldKey);
    void selectionChanged();
    /** `navBack` or `navForward`. */
    void historyChanged();
    void searchTextChanged();
    void viewModeChanged();
    void railSplitOverrideChanged();

    void itemsChanged();
    void allRowsChanged();
    void railItemsChanged();
    void tagNamesByItemChanged();
    void canvasPositionsChanged();
    void boardObjectsChanged();
    void collectionTintChanged();
    void capturePendingItemIdChanged();
    void extensionHasClippedChanged();
    /** Tags of these items changed (no reload follows). */
    void tagsChanged(const QStringList &itemIds);

    void selectedItemIdChanged();
    void selectedItemIdsChanged();
    void selectionAnchorIdChanged();
    void detailsItemIdChanged();

    void toastChanged();
    /** Three seconds after the first load: time to start the enrichment pass. */
    void enrichmentDue();

private:
    struct TrayPreview {
        QString filePath;
        double addedAt = 0;
    };

    void readFirstRowsAhead();
    struct RowsReadAhead;
    /**
     * Reads `query`'s rows on a worker for the next reload to take. With `firstScreenful`, the
     * first that many rows are read first, for the window to draw while the rest are read.
     */
    void readRowsAhead(const SqlQuery &query, qsizetype expected, qsizetype firstScreenful);
    void readExpectedSelectionAhead();
    /** Rows read, with the writes begun and the point of the item change log they were read at. */
    struct RowsAt {
        QList<LibraryItem> rows;
        quint64 writes = 0;
        std::optional<ItemChangeLog::Mark> changes;
    };
    /** What read a list: the statement, the writes begun before it, the log's point, the kinds it was cut to. */
    struct RowsRead {
        SqlQuery query;
        quint64 writes = 0;
        std::optional<ItemChangeLog::Mark> changes;
        QStringList kinds;
    };
    /** A list held in memory that a read may bring up to date rather than read whole. */
    struct KnownList {
        QList<LibraryItem> rows;
        // Where the change log stood when `rows` were read; none when they cannot be patched.
        std::optional<ItemChangeLog::Mark> changes;
    };
    /**
     * Reads `query`'s rows on the queue: `known` brought up to date when `patch` allows it, else
     * every row, taking from `known` the rows it holds unchanged. Runs inside a read on `queue`.
     */
    static RowsAt readRows(Database &db, const DatabaseQueue &queue, const SqlQuery &query,
        const std::optional<ItemQueries::ChangedRowQuery> &patch, qsizetype expected, KnownRows &known,
        const std::optional<ItemChangeLog::Mark> &knownAt);
    /** The point of the log at which `read`'s list can be patched, if the view cut it to the kinds shown now. */
    [[nodiscard]] std::optional<ItemChangeLog::Mark> patchableAt(const RowsRead &read) const;
    std::optional<RowsAt> takeRowsReadAhead(const SqlQuery &query);
    /** The first screenful read ahead, while the whole list is still being read. */
    std::optional<RowsAt> takeFirstScreenfulAhead(const SqlQuery &query);
    /** The whole list read ahead has arrived: it replaces the first screenful shown. */
    void wholeListReadAhead(const std::shared_ptr<RowsReadAhead> &ahead);
    /**
     * The list kept when `query`'s rows were left, if nothing was written since. A stale one is
     * handed back in `stale`, to be brought up to date or freed once the new rows are read:
     * freeing a hundred thousand rows on a worker while this thread reads as many makes both wait
     * on the allocator.
     */
    std::optional<RowsAt> takeRetainedRows(const SqlQuery &query, KnownList &stale);
    /** Keeps a long list that is being replaced, when it is known what read it; frees it otherwise. */
    void retainOrRelease(QList<LibraryItem> &&list, const std::optional<RowsRead> &incoming);
    [[nodiscard]] ItemSort sortFor(const SidebarSelection &selection) const;
    [[nodiscard]] std::optional<SqlQuery> rowQueryFor(const SidebarSelection &selection) const;
    /** The statement that re-reads some of the selection's rows, when its list can be patched. */
    [[nodiscard]] std::optional<ItemQueries::ChangedRowQuery> changedRowQueryFor(const SidebarSelection &selection) const;
    /** The sidebar's reads that run on workers: the collections' counts, type counts, tray previews. */
    void startSidebarReads();
    void readCollectionCountsInBackground();
    static void readCollectionCounts(Database &db, SidebarCounts &read);
    static void readSidebarNumbers(Database &db, SidebarCounts &read);
    void publishCounts(SidebarCounts read);
    /**
     * Runs `read` on a worker through the database queue and hands its result to `publish` on the
     * main thread, unless a newer read of the same kind (`generation`) was asked for since.
     */
    template <typename Result>
    void readInBackground(quint64 &generation, const QString &name, std::function<Result(Database &)> read,
        std::function<void(Result)> publish);
    /** Frees a large replaced list on a worker rather than on the main thread. */
    void releaseLater(QList<LibraryItem> &&list);
    static void logFailure(const QString &operation, const std::exception &error);

    // store.cpp
    void loadRememberedState();
    void forgetPhantomViewModes();
    void ensureInbox();
    void retireBoardObjects();
    void connectSettings();
    // storecollectionreads.cpp
    void publishTrayPreviews(const QHash<QString, QList<TrayPreview>> &own);
    // storecollections.cpp
    QString insertCollection(Database &db, const QString &name, const std::optional<QString> &parentId);
    void saveCollapsed();
    // storerows.cpp
    /** Publishes a selection's rows; `firstScreenful` when they are only the first of a long list. */
    void publishRows(QList<LibraryItem> rows, bool firstScreenful = false);
    [[nodiscard]] qsizetype expectedRowCount(const SidebarSelection &selection) const;
    void rebuildRailSplit();
    void reloadBoardIfWritten();
    void reloadTagNames();
    void startTint();
    [[nodiscard]] bool tagNamesNeeded() const;
    // storeselection.cpp
    void applyStoredViewMode();
    void applyDefaultViewMode(const QList<LibraryItem> &rows);
    void pruneSelection();
    void saveRailSplitOverride();
    // storeitems.cpp
    bool writeItems(const char *name, const std::function<void(Database &db)> &body);
    [[nodiscard]] QList<LibraryItem> itemsInRowOrder(const QStringList &ids) const;

    AppSettings *m_settings = nullptr;
    Desktop *m_desktop = nullptr;
    std::shared_ptr<DatabaseQueue> m_dbQueue;
    QString m_setupError;
    QString m_libraryRoot;
    std::optional<QString> m_inboxId;
    bool m_didInitialLoad = false;
    bool m_churnTrace = false;
    bool m_sidebarExtrasEnabled = true;
    bool m_holdSidebarReads = false;
    bool m_sidebarReadsHeld = false;
    bool m_collectionCountsInBackground = false;
    bool m_firstRowsReadAhead = false;
    /** The writes begun when the collections were read before the first load. */
    std::optional<quint64> m_collectionsReadAt;
    /** Whether the rows shown are the first screenful of a list still being read. */
    bool m_firstScreenfulShown = false;
    std::shared_ptr<RowsReadAhead> m_rowsReadAhead;
    /** How the shown rows were read, when the Store read them itself (not a search). */
    std::optional<RowsRead> m_itemsRead;
    /** Handed from a reload to the publishing of its rows. */
    std::optional<RowsRead> m_incomingRead;
    /**
     * The last long list left for another selection (All, most often), kept while nothing is
     * written: going back to it shows it without reading a hundred thousand rows again.
     */
    std::optional<std::pair<RowsRead, QList<LibraryItem>>> m_retainedRows;
    /** The selection key whose board was last read, and the writes begun before that read. */
    std::optional<std::pair<QString, quint64>> m_boardRead;
    QString m_expectedSelectionKey;
    QTimer m_expectationDwell;

    QList<LibraryCollection> m_collections;
    std::optional<LibraryCollection> m_inboxCollection;
    QHash<QString, int> m_counts;
    QHash<QString, double> m_collectionLastActivity;
    QHash<QString, double> m_collectionActivityRollup;
    SidebarNumbers m_numbers;
    int m_inboxCount = 0;
    bool m_countsKnown = false;
    QVariantMap m_typeCounts;
    quint64 m_typeCountsGeneration = 0;
    quint64 m_trayPreviewsGeneration = 0;
    quint64 m_collectionCountsGeneration = 0;
    QHash<QString, QList<QUrl>> m_trayPreviews;
    QHash<QString, QString> m_semanticIcons;
    QSet<QString> m_collapsedCollections;
    QSet<QString> m_selectedCollectionIds;
    QString m_freshCollectionId;
    struct RenameTarget {
        RenameKind kind;
        QString id;
    };
    std::optional<RenameTarget> m_renaming;
    std::optional<DeletedBoards> m_pendingBoardUndo;

    SidebarSelection m_selection;
    QList<SidebarSelection> m_navBack;
    QList<SidebarSelection> m_navForward;
    bool m_recordingHistory = true;
    bool m_applyingViewMode = false;
    /** The selection has no stored view mode: its default is taken from the rows of the next read. */
    bool m_defaultViewModePending = false;
    ViewMode m_viewMode = ViewMode::cards;
    QString m_searchText;
    quint64 m_searchGeneration = 0;
    bool m_enrichmentRefreshPending = false;
    SearchRunner m_searchRunner;
    /** The rows on show came from a search, not from the selection's row query. */
    bool m_rowsFromSearch = false;
    std::optional<ItemSort> m_itemSortOverride;
    QHash<QString, bool> m_railSplitOverride;
    QHash<QString, QString> m_scrollAnchors;

    QList<LibraryItem> m_items;
    QList<LibraryItem> m_allRows;
    QList<LibraryItem> m_railItems;
    QHash<QString, QStringList> m_tagNamesByItem;
    QHash<QString, CanvasPosition> m_canvasPositions;
    QList<BoardObject> m_boardObjects;
    QColor m_collectionTint;
    quint64 m_tintGeneration = 0;
    QString m_capturePendingItemId;
    bool m_extensionHasClipped = false;

    QString m_selectedItemId;
    QSet<QString> m_selectedItemIds;
    QString m_selectionAnchorId;
    QString m_detailsItemId;
    QStringList m_lastTrashedIds;

    QString m_toast;
    ToastAction m_toastAction = ToastAction::none;
    int m_toastSerial = 0;

    /** Restarted by every large release; when it fires, the freed memory goes back to the system. */
    QTimer m_memorySettle;
    static constexpr int memorySettleDelay = 2000;
    static constexpr int expectationDwell = 80;
    std::function<bool()> m_memorySettleGate;

    /** Off-main-thread work (tint, copies to Downloads); the Store's end waits for it. */
    QThreadPool m_workers;
};

template <typename Result>
void Store::readInBackground(quint64 &generation, const QString &name, std::function<Result(Database &)> read,
    std::function<void(Result)> publish)
{
    if (!m_dbQueue)
        return;
    const quint64 asked = ++generation;
    std::shared_ptr<DatabaseQueue> queue = m_dbQueue;
    QPointer<Store> self(this);
    m_workers.start([queue, asked, name, read = std::move(read), publish = std::move(publish), self, &generation] {
        std::optional<Result> result;
        try {
            result = queue->read(read);
        } catch (const std::exception &error) {
            logFailure(name, error);
            return;
        }
        // Back on the main thread, where the Store is checked for and the generation compared.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, asked, &generation, publish, result = std::move(*result)]() mutable {
                if (self && asked == generation)
                    publish(std::move(result));
            },
            Qt::QueuedConnection);
    });
}

} // namespace kivo
