#include "core/store.h"

#include "core/appsettings.h"
#include "core/heaptrim.h"
#include "core/librarylocation.h"
#include "core/librarypresence.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

// View-mode values written by an earlier version that no user ever chose.
const QStringList phantomViewModes{u"moodboard"_s, u"grid"_s, u"card"_s};

} // namespace

Store::Store(AppSettings *settings, QObject *parent) : QObject(parent), m_settings(settings)
{
    if (QCoreApplication::instance())
        m_churnTrace = QCoreApplication::arguments().contains(u"--churn-trace"_s);
    loadRememberedState();
    connectSettings();
    // Memory goes back once reloads have settled: trimming after each one would make the next
    // fault in again the very pages it needs (a reload of All took 215 ms instead of 143 ms).
    m_memorySettle.setSingleShot(true);
    m_memorySettle.setInterval(memorySettleDelay);
    connect(&m_memorySettle, &QTimer::timeout, this, [this] {
        // Trimming a large heap holds the allocator for tens of milliseconds, so it waits for a
        // pause in the person's input; unmapping the file's pages holds nobody and goes now.
        const bool trim = !m_memorySettleGate || m_memorySettleGate();
        giveBackMemory(trim);
        if (!trim)
            m_memorySettle.start();
    });
    // Long enough that a pointer passing over the sidebar on its way elsewhere reads nothing.
    m_expectationDwell.setSingleShot(true);
    m_expectationDwell.setInterval(expectationDwell);
    connect(&m_expectationDwell, &QTimer::timeout, this, &Store::readExpectedSelectionAhead);
}

void Store::giveBackMemory(bool trimHeap)
{
    m_workers.start([queue = m_dbQueue, trimHeap] {
        if (queue)
            queue->releaseMappedPages();
        if (trimHeap)
            returnFreedHeapMemory();
    });
}

Store::~Store() = default;

void Store::loadRememberedState()
{
    const UserDefaults defaults;
    const QVariantMap icons = defaults.mapValue(u"semanticIconCache"_s);
    for (auto it = icons.constBegin(); it != icons.constEnd(); ++it)
        m_semanticIcons.insert(it.key(), it.value().toString());
    const QVariantMap overrides = defaults.mapValue(u"railSplitOverride"_s);
    for (auto it = overrides.constBegin(); it != overrides.constEnd(); ++it)
        m_railSplitOverride.insert(it.key(), it.value().toBool());
    m_extensionHasClipped = defaults.boolValue(u"extensionHasClipped"_s);
    const QStringList collapsed = defaults.stringListValue(u"collapsedCollections"_s);
    m_collapsedCollections = QSet<QString>(collapsed.cbegin(), collapsed.cend());
}

void Store::connectSettings()
{
    if (!m_settings)
        return;
    // A view's own preferences load at each selection change, and the reload follows anyway; only
    // a user's change of the sort or the kinds shown asks for rows here.
    const auto rowsAffected = [this] {
        if (!m_settings->loadingViewPrefs())
            reloadItems();
    };
    connect(m_settings, &AppSettings::itemSortChanged, this, rowsAffected);
    connect(m_settings, &AppSettings::allViewKindsChanged, this, rowsAffected);
    const auto tagsAffected = [this] {
        if (!m_settings->loadingViewPrefs())
            reloadTagNames();
    };
    connect(m_settings, &AppSettings::cardShowTagsChanged, this, tagsAffected);
    connect(m_settings, &AppSettings::listShowTagsChanged, this, tagsAffected);
}

void Store::forgetPhantomViewModes()
{
    UserDefaults defaults;
    if (defaults.boolValue(u"forgotPhantomViewModes"_s))
        return;
    int forgotten = 0;
    const QStringList keys = defaults.allKeys();
    for (const QString &key : keys) {
        if (key.startsWith(u"viewMode."_s) && phantomViewModes.contains(defaults.stringValue(key))) {
            defaults.remove(key);
            ++forgotten;
        }
    }
    defaults.setValue(u"forgotPhantomViewModes"_s, true);
    systemLog(QString::asprintf("[Store] forgot %d view preferences that were never chosen", forgotten));
}

void Store::initialise()
{
    forgetPhantomViewModes();
    try {
        m_libraryRoot = LibraryLocation::root();
        // Opening creates the file, so a library that vanished would be replaced by an empty one.
        if (LibraryPresence::isMissing(m_libraryRoot))
            throw LibraryError(u"there is no library.sqlite in "_s + m_libraryRoot);
        LibraryLocation::ensureLibrary();
        Q_EMIT libraryRootChanged();
        m_dbQueue = DatabaseQueue::open(LibraryLocation::databasePath());
        LibraryPresence::markOpened();
    } catch (const std::exception &error) {
        m_dbQueue.reset();
        m_setupError = u"Could not open the library: "_s + errorText(error);
        systemLog(m_setupError);
        Q_EMIT setupErrorChanged();
        return;
    }
    ensureInbox();
    retireBoardObjects();
    if (m_firstRowsReadAhead) {
        // The first list's read holds the database for a while, and the first load would read the
        // collections and the board behind it; they are read now instead, and kept if nothing is
        // written first.
        m_holdSidebarReads = true;
        reloadCollections();
        m_holdSidebarReads = false;
        m_collectionsReadAt = m_dbQueue->writesBegun();
        reloadBoardIfWritten();
        readFirstRowsAhead();
    }
    // The first load comes after the caller has finished starting, so the window shows first.
    QTimer::singleShot(0, this, [this] {
        if (m_settings)
            m_settings->loadViewPreferences(m_selection.key());
        applyStoredViewMode();
        reloadAll();
        m_didInitialLoad = true;
        Q_EMIT didInitialLoadChanged();
    });
    QTimer::singleShot(3000, this, [this] {
        Q_EMIT enrichmentDue();
        QTimer::singleShot(500, this, [this] { refreshItems(); });
    });
}

void Store::adoptQueue(std::shared_ptr<DatabaseQueue> queue, const QString &libraryRoot)
{
    m_dbQueue = std::move(queue);
    m_libraryRoot = libraryRoot;
    Q_EMIT libraryRootChanged();
    ensureInbox();
}

void Store::setDesktop(Desktop *desktop)
{
    m_desktop = desktop;
}

void Store::ensureInbox()
{
    if (!m_dbQueue)
        return;
    try {
        m_inboxId = m_dbQueue->write([](Database &db) {
            const QVariant existing
                = db.fetchScalar(u"SELECT id FROM collection WHERE isInbox = 1 AND deletedAt IS NULL"_s);
            if (existing.isValid())
                return existing.toString();
            LibraryCollection inbox;
            inbox.id = newIdentifier();
            inbox.name = u"Inbox"_s;
            inbox.sortIndex = -1;
            inbox.isInbox = true;
            inbox.createdAt = inbox.modifiedAt = nowSeconds();
            db.insert(inbox);
            return inbox.id;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] ensureInbox failed: "_s + errorText(error));
    }
}

void Store::retireBoardObjects()
{
    if (!m_dbQueue)
        return;
    try {
        m_dbQueue->write([](Database &db) {
            db.execute(u"UPDATE boardObject SET deletedAt = ?\nWHERE deletedAt IS NULL AND kind IN "
                       "('ink','rect','ellipse','arrow','line','sticky','text')"_s,
                {nowSeconds()});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] retireOrphanedBoardObjects failed: "_s + errorText(error));
    }
}

void Store::reloadAll()
{
    QElapsedTimer timer;
    timer.start();
    // The sidebar's extra numbers are read on a worker; started before the rows, they would hold
    // the database while the window waits for its rows.
    m_holdSidebarReads = true;
    if (!m_dbQueue || std::exchange(m_collectionsReadAt, std::nullopt) != m_dbQueue->writesBegun())
        reloadCollections();
    const double collections = double(timer.nsecsElapsed()) / 1e6;
    reloadItems();
    m_holdSidebarReads = false;
    if (std::exchange(m_sidebarReadsHeld, false))
        startSidebarReads();
    const double total = double(timer.nsecsElapsed()) / 1e6;
    if (m_churnTrace) {
        systemLog(QString::asprintf("[trace] reloadAll: collections %.0f ms, items %.0f ms (total %.0f)", collections,
            total - collections, total));
    }
}

void Store::setExtensionHasClipped(bool clipped)
{
    if (m_extensionHasClipped == clipped)
        return;
    m_extensionHasClipped = clipped;
    UserDefaults().setValue(u"extensionHasClipped"_s, clipped);
    Q_EMIT extensionHasClippedChanged();
}

void Store::setScrollAnchor(const QString &selectionKey, const QString &itemId)
{
    if (itemId.isEmpty())
        m_scrollAnchors.remove(selectionKey);
    else
        m_scrollAnchors.insert(selectionKey, itemId);
}

std::optional<LibraryItem> Store::itemById(const QString &id) const
{
    if (!m_dbQueue || id.isEmpty())
        return std::nullopt;
    try {
        return m_dbQueue->read(
            [&](Database &db) { return db.fetchOne<LibraryItem>(u"SELECT * FROM item WHERE id = ?"_s, {id}); });
    } catch (const std::exception &error) {
        systemLog(u"[Store] itemById failed: "_s + errorText(error));
        return std::nullopt;
    }
}

QVariantMap Store::itemData(const QString &itemId) const
{
    const auto item = itemById(itemId);
    if (!item)
        return {};
    return item->toJson().toVariantMap();
}

void Store::logFailure(const QString &operation, const std::exception &error)
{
    systemLog(u"[Store] "_s + operation + u" failed: "_s + errorText(error));
}

void Store::releaseLater(QList<LibraryItem> &&list)
{
    // Freeing a hundred thousand rows takes a noticeable moment; small lists go at once.
    if (list.size() < 1000 || !list.isDetached()) {
        list = {};
        return;
    }
    m_workers.start([rows = std::move(list)]() mutable { rows = {}; });
    // The reload that replaced it read the whole table through the file's map, and the freed rows
    // stay in the C library's free lists: both go back to the system once the reloads settle.
    m_memorySettle.start();
}

// ---------------------------------------------------------------------------------------------
// Toast

QString Store::toastAction() const
{
    return m_toastAction == ToastAction::none ? QString() : u"Undo"_s;
}

void Store::showToast(const QString &text, ToastAction action)
{
    m_toast = text;
    m_toastAction = action;
    ++m_toastSerial;
    Q_EMIT toastChanged();
}

void Store::triggerToastAction()
{
    const ToastAction action = m_toastAction;
    dismissToast();
    switch (action) {
    case ToastAction::undoCollectionDelete:
        undoDelete();
        break;
    case ToastAction::undoTrash:
        undoTrash();
        break;
    case ToastAction::none:
        break;
    }
}

void Store::dismissToast()
{
    if (m_toast.isEmpty() && m_toastAction == ToastAction::none)
        return;
    m_toast.clear();
    m_toastAction = ToastAction::none;
    Q_EMIT toastChanged();
}

} // namespace kivo
