#include "core/store.h"

#include "core/appsettings.h"
#include "core/backgroundpriority.h"
#include "core/itemcolours.h"
#include "core/itemqueries.h"
#include "core/itemrowpatch.h"
#include "core/knownrows.h"
#include "core/systemlog.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <array>
#include <future>
#include <utility>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** How many rows, and colours of each, the tint looks at. */
constexpr qsizetype tintRows = 60;
constexpr qsizetype tintColoursPerRow = 3;
/** How long finished background reading waits before the rows are refreshed, gathering a burst. */
constexpr std::chrono::milliseconds enrichmentRefreshDelay{500};

double elapsedMs(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

void Store::setItemSortOverride(std::optional<ItemSort> sort)
{
    m_itemSortOverride = sort;
}

void Store::setSearchRunner(SearchRunner runner)
{
    m_searchRunner = std::move(runner);
}

struct Store::RowsReadAhead {
    SqlQuery query;
    std::future<RowsAt> rows;
    /** The first screenful of the same rows, read before them at launch (else not valid). */
    std::future<RowsAt> firstRows;
    /** Whether the first screenful is shown and the whole list is to follow when read. */
    bool wholeAwaited = false;
};

void Store::readFirstRowsAhead()
{
    if (!m_dbQueue)
        return;
    // The view's own sort is part of the query; the first load applies the same preferences.
    if (m_settings)
        m_settings->loadViewPreferences(m_selection.key());
    if (const std::optional<SqlQuery> query = rowQueryFor(m_selection); query && m_searchText.trimmed().isEmpty())
        readRowsAhead(*query, 0, firstScreenfulRows);
}

void Store::readRowsAhead(const SqlQuery &query, qsizetype expected, qsizetype firstScreenful)
{
    auto promise = std::make_shared<std::promise<RowsAt>>();
    auto firstPromise = std::make_shared<std::promise<RowsAt>>();
    auto ahead = std::make_shared<RowsReadAhead>(RowsReadAhead{query, promise->get_future(), {}, false});
    if (firstScreenful > 0)
        ahead->firstRows = firstPromise->get_future();
    m_rowsReadAhead = ahead;
    QPointer<Store> self(this);
    std::weak_ptr<RowsReadAhead> weakAhead = ahead;
    m_workers.start([queue = m_dbQueue, query, expected, firstScreenful, promise, firstPromise, self, weakAhead] {
        const auto read = [&](const SqlQuery &statement) {
            return queue->read([&](Database &db) {
                KnownRows none;
                return readRows(db, *queue, statement, std::nullopt, expected, none, std::nullopt);
            });
        };
        if (firstScreenful > 0) {
            // A long list takes a while to read whole; its first screenful can be drawn meanwhile.
            try {
                RowsAt first = read(SqlQuery{query.sql + u"\nLIMIT "_s + QString::number(firstScreenful), query.arguments});
                if (first.rows.size() < firstScreenful) {
                    // That was the whole list. It is ready before the screenful, so nobody waits for more.
                    promise->set_value(first);
                    firstPromise->set_value(std::move(first));
                    return;
                }
                firstPromise->set_value(std::move(first));
            } catch (...) {
                firstPromise->set_exception(std::current_exception());
            }
        }
        try {
            promise->set_value(read(query));
        } catch (...) {
            promise->set_exception(std::current_exception());
        }
        if (firstScreenful > 0) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, weakAhead] {
                    if (self)
                        self->wholeListReadAhead(weakAhead.lock());
                },
                Qt::QueuedConnection);
        }
    });
}

std::optional<Store::RowsAt> Store::takeFirstScreenfulAhead(const SqlQuery &query)
{
    using namespace std::chrono_literals;
    RowsReadAhead *ahead = m_rowsReadAhead.get();
    if (!ahead || ahead->query != query || !ahead->firstRows.valid())
        return std::nullopt;
    if (ahead->rows.wait_for(0s) == std::future_status::ready)
        return std::nullopt;
    std::optional<RowsAt> first;
    try {
        first = ahead->firstRows.get();
    } catch (const std::exception &) {
        return std::nullopt;
    }
    if (ahead->rows.wait_for(0s) == std::future_status::ready || m_dbQueue->writesBegun() != first->writes)
        return std::nullopt;
    // A view mode still to be chosen asks whether every row is a link; one that is not answers
    // for the whole list.
    const auto isLink = [](const LibraryItem &item) { return item.kind == u"link"; };
    if (m_defaultViewModePending && std::all_of(first->rows.cbegin(), first->rows.cend(), isLink))
        return std::nullopt;
    ahead->wholeAwaited = true;
    return first;
}

void Store::wholeListReadAhead(const std::shared_ptr<RowsReadAhead> &ahead)
{
    // Only while the first screenful it follows is still what the window shows.
    if (ahead && ahead == m_rowsReadAhead && ahead->wholeAwaited && m_searchText.trimmed().isEmpty())
        reloadItems(false);
}

ItemSort Store::sortFor(const SidebarSelection &selection) const
{
    // The selection's own sort is the one its view would load.
    if (m_itemSortOverride)
        return *m_itemSortOverride;
    if (!m_settings)
        return ItemSort::newest;
    const QString raw = selection == m_selection ? m_settings->itemSort() : m_settings->itemSortFor(selection.key());
    return itemSortFromRaw(raw).value_or(ItemSort::newest);
}

std::optional<SqlQuery> Store::rowQueryFor(const SidebarSelection &selection) const
{
    return ItemQueries::rowQuery(selection, sortFor(selection), m_inboxId);
}

std::optional<ItemQueries::ChangedRowQuery> Store::changedRowQueryFor(const SidebarSelection &selection) const
{
    return ItemQueries::changedRowQuery(selection, sortFor(selection), m_inboxId);
}

Store::RowsAt Store::readRows(Database &db, const DatabaseQueue &queue, const SqlQuery &query,
    const std::optional<ItemQueries::ChangedRowQuery> &patch, qsizetype expected, KnownRows &known,
    const std::optional<ItemChangeLog::Mark> &knownAt)
{
    const ItemChangeLog *log = db.itemChanges();
    RowsAt read{{}, queue.writesBegun(), log ? std::optional(log->mark(db)) : std::nullopt};
    if (patch && knownAt) {
        if (std::optional<QList<LibraryItem>> patched = patchItemRows(db, *patch, known.rows(), *knownAt)) {
            read.rows = std::move(*patched);
            return read;
        }
    }
    read.rows = readItemRows(db, query.sql, query.arguments, expected, known);
    return read;
}

std::optional<ItemChangeLog::Mark> Store::patchableAt(const RowsRead &read) const
{
    const QStringList kinds = m_settings ? m_settings->allViewKinds() : QStringList();
    return read.kinds == kinds ? read.changes : std::nullopt;
}

void Store::expectSelection(const QString &key)
{
    m_expectedSelectionKey = key;
    m_expectationDwell.start();
}

void Store::stopExpectingSelection(const QString &key)
{
    // Leaving one row and entering the next may come in either order.
    if (key == m_expectedSelectionKey)
        m_expectationDwell.stop();
}

void Store::readExpectedSelectionAhead()
{
    const std::optional<SidebarSelection> selection = SidebarSelection::fromKey(m_expectedSelectionKey);
    // Until the first list is in whole, the rows read ahead are that list's: pointing must not
    // replace them.
    if (!m_dbQueue || !m_didInitialLoad || !selection || *selection == m_selection
        || !m_searchText.trimmed().isEmpty() || (m_rowsReadAhead && m_rowsReadAhead->wholeAwaited))
        return;
    const std::optional<SqlQuery> query = rowQueryFor(*selection);
    if (!query || (m_rowsReadAhead && m_rowsReadAhead->query == *query))
        return;
    readRowsAhead(*query, expectedRowCount(*selection), 0);
}

bool Store::readsAhead(const QString &key) const
{
    const std::optional<SidebarSelection> selection = SidebarSelection::fromKey(key);
    if (!m_rowsReadAhead || !selection)
        return false;
    const std::optional<SqlQuery> query = rowQueryFor(*selection);
    return query && *query == m_rowsReadAhead->query;
}

std::optional<Store::RowsAt> Store::takeRowsReadAhead(const SqlQuery &query)
{
    const std::shared_ptr<RowsReadAhead> ahead = std::exchange(m_rowsReadAhead, nullptr);
    if (!ahead || ahead->query != query)
        return std::nullopt;
    try {
        RowsAt read = ahead->rows.get();
        // A write since the read would make these rows stale; then the reload reads again.
        if (m_dbQueue->writesBegun() != read.writes)
            return std::nullopt;
        return read;
    } catch (const std::exception &) {
        return std::nullopt;
    }
}

std::optional<Store::RowsAt> Store::takeRetainedRows(const SqlQuery &query, KnownList &stale)
{
    // Kept for another selection, the list waits there; a write makes it stale.
    if (!m_retainedRows || m_retainedRows->first.query != query)
        return std::nullopt;
    auto [read, rows] = *std::exchange(m_retainedRows, std::nullopt);
    const QStringList kinds = m_settings ? m_settings->allViewKinds() : QStringList();
    if (read.kinds != kinds || m_dbQueue->writesBegun() != read.writes) {
        stale = KnownList{std::move(rows), patchableAt(read)};
        return std::nullopt;
    }
    return RowsAt{std::move(rows), read.writes, read.changes};
}

void Store::retainOrRelease(QList<LibraryItem> &&list, const std::optional<RowsRead> &incoming)
{
    // Short lists read again in a few milliseconds; only long ones are worth their memory. The
    // older version of the list now shown is worth nothing: the shown one answers its statement.
    constexpr qsizetype worthKeeping = 10000;
    if (!m_itemsRead || list.size() < worthKeeping || (incoming && incoming->query == m_itemsRead->query)) {
        releaseLater(std::move(list));
        return;
    }
    if (m_retainedRows)
        releaseLater(std::move(m_retainedRows->second));
    m_retainedRows = std::pair(*m_itemsRead, std::move(list));
}

void Store::reloadItems(bool typing)
{
    if (!m_dbQueue)
        return;
    ++m_searchGeneration;
    const QString trimmed = m_searchText.trimmed();
    if (!trimmed.isEmpty() && m_searchRunner) {
        m_rowsFromSearch = true;
        m_searchRunner(SearchRequest{trimmed, m_selection, m_inboxId, typing, m_searchGeneration});
        return;
    }

    m_rowsFromSearch = false;
    QElapsedTimer timer;
    timer.start();
    QList<LibraryItem> rows;
    KnownList stale;
    const auto query = rowQueryFor(m_selection);
    bool firstScreenful = false;
    try {
        std::optional<RowsAt> read = query ? takeFirstScreenfulAhead(*query) : std::nullopt;
        firstScreenful = read.has_value();
        if (!read && query)
            read = takeRowsReadAhead(*query);
        if (!read && query)
            read = takeRetainedRows(*query, stale);
        if (!read && query) {
            // A list read again after a write meets most of its rows unchanged, and is mostly
            // brought up to date from the few items written.
            if (stale.rows.isEmpty() && m_itemsRead && m_itemsRead->query == *query)
                stale = KnownList{m_items, patchableAt(*m_itemsRead)};
            KnownRows known(std::move(stale.rows));
            const auto patch = changedRowQueryFor(m_selection);
            // The counts already tell how many rows come, which spares the list its regrowth.
            read = m_dbQueue->read([&](Database &db) {
                return readRows(db, *m_dbQueue, *query, patch, expectedRowCount(m_selection), known, stale.changes);
            });
            stale.rows = known.takeRows();
        }
        if (read) {
            rows = std::move(read->rows);
            // The first screenful is not the list: no later read may be patched from it or keep it.
            if (firstScreenful)
                m_incomingRead.reset();
            else
                m_incomingRead = RowsRead{*query, read->writes, read->changes, {}};
        }
    } catch (const std::exception &error) {
        systemLog(u"[Store] reloadItems failed: "_s + errorText(error));
        rows.clear();
        m_incomingRead.reset();
    }
    releaseLater(std::move(stale.rows));
    if (m_churnTrace) {
        systemLog(QString::asprintf("[trace]   the query (incl. waiting for the db queue): %.0f ms, %d rows",
            elapsedMs(timer), int(rows.size())));
    }
    if (m_defaultViewModePending)
        applyDefaultViewMode(rows);
    publishRows(std::move(rows), firstScreenful);
    if (m_churnTrace)
        systemLog(QString::asprintf("[trace] reloadItems total %.0f ms", elapsedMs(timer)));
}

void Store::refreshItems()
{
    const auto query = rowQueryFor(m_selection);
    // A search already answers from its own thread; a pending view mode needs the rows at once.
    if (!query || !m_searchText.trimmed().isEmpty() || m_defaultViewModePending) {
        reloadItems(false);
        return;
    }
    const qsizetype expected = expectedRowCount(m_selection);
    const bool sameList = m_itemsRead && m_itemsRead->query == *query;
    const std::optional<ItemChangeLog::Mark> shownAt = sameList ? patchableAt(*m_itemsRead) : std::nullopt;
    readInBackground<RowsAt>(
        m_searchGeneration, u"reloadItems"_s,
        [query = *query, patch = changedRowQueryFor(m_selection), expected, shown = m_items, shownAt,
            queue = m_dbQueue](Database &db) {
            // Nobody waits for a refresh: the frames being drawn meanwhile come first.
            lowerCurrentThreadPriority();
            KnownRows known(shown);
            return readRows(db, *queue, query, patch, expected, known, shownAt);
        },
        [this, query = *query](RowsAt read) {
            m_rowsFromSearch = false;
            m_incomingRead = RowsRead{query, read.writes, read.changes, {}};
            publishRows(std::move(read.rows));
        });
}

void Store::noteEnrichmentFinished()
{
    if (m_enrichmentRefreshPending)
        return;
    m_enrichmentRefreshPending = true;
    // The Store is the timer's context, so a refresh never outlives it.
    QTimer::singleShot(enrichmentRefreshDelay, this, [this] {
        m_enrichmentRefreshPending = false;
        refreshItems();
    });
}

qsizetype Store::expectedRowCount(const SidebarSelection &selection) const
{
    switch (selection.kind()) {
    case SidebarSelection::Kind::all:
        return m_numbers.all;
    case SidebarSelection::Kind::inbox:
        return m_inboxCount;
    case SidebarSelection::Kind::favourites:
        return m_numbers.favourites;
    case SidebarSelection::Kind::links:
        return m_numbers.links;
    case SidebarSelection::Kind::trash:
        return m_numbers.trash;
    case SidebarSelection::Kind::hidden:
        return m_numbers.hidden;
    case SidebarSelection::Kind::type:
        return typeCount(selection.filter());
    case SidebarSelection::Kind::collection:
        return m_counts.value(selection.collectionId(), 0);
    }
    return 0;
}

void Store::applySearchResults(quint64 generation, const QList<LibraryItem> &rows)
{
    if (generation != m_searchGeneration)
        return;
    publishRows(rows);
}

void Store::publishRows(QList<LibraryItem> rows, bool firstScreenful)
{
    const bool wholenessChanged = std::exchange(m_firstScreenfulShown, firstScreenful) != firstScreenful;
    QElapsedTimer timer;
    timer.start();
    std::optional<RowsRead> incoming = std::exchange(m_incomingRead, std::nullopt);
    if (incoming && m_settings)
        incoming->kinds = m_settings->allViewKinds();
    // A view that shows one to four kinds filters; none or all five shows everything.
    if (m_settings) {
        std::array<bool, 5> shown{};
        int kinds = 0;
        for (const QString &raw : m_settings->allViewKinds()) {
            if (const auto kind = itemKindFromRaw(raw); kind && !shown[size_t(*kind)]) {
                shown[size_t(*kind)] = true;
                ++kinds;
            }
        }
        if (kinds >= 1 && kinds <= 4) {
            rows.removeIf([&](const LibraryItem &item) {
                const auto kind = item.itemKind();
                return !kind || !shown[size_t(*kind)];
            });
        }
    }
    // A long read walked the file's map page by page, even when every row was found unchanged, and
    // so did the counts read beside it: those pages go back to the system once the reloads settle.
    if (rows.size() >= 1000)
        m_memorySettle.start();
    if (rows != m_items) {
        std::swap(m_items, rows);
        retainOrRelease(std::move(rows), incoming);
        m_itemsRead = std::move(incoming);
        Q_EMIT itemsChanged();
    } else {
        releaseLater(std::move(rows));
        m_itemsRead = std::move(incoming);
        if (wholenessChanged)
            Q_EMIT itemsChanged();
    }
    if (m_churnTrace)
        systemLog(QString::asprintf("[trace]   handing SwiftUI the array: %.0f ms", elapsedMs(timer)));
    rebuildRailSplit();
    reloadTagNames();
    timer.restart();
    reloadBoardIfWritten();
    const double canvas = elapsedMs(timer);
    timer.restart();
    startTint();
    if (m_churnTrace)
        systemLog(QString::asprintf("[trace]   canvas positions: %.0f ms, tint: %.0f ms", canvas, elapsedMs(timer)));
    pruneSelection();
}

void Store::rebuildRailSplit()
{
    QList<LibraryItem> rows = m_items;
    if (!m_capturePendingItemId.isEmpty())
        rows.removeIf([&](const LibraryItem &item) { return item.id == m_capturePendingItemId; });

    QList<LibraryItem> allRows;
    QList<LibraryItem> railItems;
    const bool applies = m_selection.isCollection() && m_viewMode == ViewMode::cards && m_searchText.isEmpty();
    qsizetype links = 0;
    if (applies) {
        for (const LibraryItem &item : std::as_const(rows))
            links += item.kind == u"link" ? 1 : 0;
    }
    const qsizetype others = rows.size() - links;
    const auto override = m_railSplitOverride.constFind(m_selection.key());
    const bool split = override != m_railSplitOverride.constEnd() ? *override : (links >= 2 && others >= 2);
    if (!applies || !split || links == 0) {
        allRows = std::move(rows);
    } else {
        allRows.reserve(others);
        railItems.reserve(links);
        for (const LibraryItem &item : std::as_const(rows))
            (item.kind == u"link" ? railItems : allRows).append(item);
    }
    if (allRows != m_allRows) {
        std::swap(m_allRows, allRows);
        releaseLater(std::move(allRows));
        Q_EMIT allRowsChanged();
    }
    if (railItems != m_railItems) {
        std::swap(m_railItems, railItems);
        releaseLater(std::move(railItems));
        Q_EMIT railItemsChanged();
    }
}

bool Store::tagNamesNeeded() const
{
    if (!m_settings)
        return false;
    return m_settings->cardShowTags() || (m_viewMode == ViewMode::list && m_settings->listShowTags());
}

void Store::reloadTagNames()
{
    QHash<QString, QStringList> names;
    if (m_dbQueue && tagNamesNeeded() && !m_items.isEmpty()) {
        const QString head
            = u"SELECT it.itemId AS itemId, t.name AS name\nFROM itemTag it JOIN tag t ON t.id = it.tagId\n"
              "WHERE it.itemId IN ("_s;
        const QString tail = u") AND it.status >= 0\nORDER BY t.name ASC"_s;
        const auto collect = [&](const Row &row) { names[row.text(0)].append(row.text(1)); };
        try {
            m_dbQueue->read([&](Database &db) {
                const auto rows = ItemQueries::rowIdQuery(m_selection, m_inboxId);
                if (m_items.size() <= ItemQueries::maxListLength || m_rowsFromSearch || !rows) {
                    QStringList ids;
                    for (const LibraryItem &item : std::as_const(m_items))
                        ids.append(item.id);
                    QVariantList arguments;
                    for (qsizetype start = 0; start < ids.size(); start += ItemQueries::maxListLength) {
                        arguments.clear();
                        const QString marks
                            = ItemQueries::placeholders(ids.mid(start, ItemQueries::maxListLength), arguments);
                        db.forEach(head + marks + tail, arguments, collect);
                    }
                    return;
                }
                // ### A long list is named by the selection's own row query instead of one argument
                // per row: binding a hundred thousand ids costs far more than the tags themselves.
                // The query may name rows the view's kinds leave out; their tags are dropped below.
                db.forEach(head + rows->sql + tail, rows->arguments, collect);
            });
        } catch (const std::exception &error) {
            systemLog(u"[Store] reloadTagNames failed: "_s + errorText(error));
            return;
        }
        if (m_items.size() > ItemQueries::maxListLength && !m_rowsFromSearch && !names.isEmpty()) {
            QSet<QString> shown;
            for (const LibraryItem &item : std::as_const(m_items))
                shown.insert(item.id);
            names.removeIf([&](const auto &entry) { return !shown.contains(entry.key()); });
        }
    }
    if (names == m_tagNamesByItem)
        return;
    m_tagNamesByItem = std::move(names);
    Q_EMIT tagNamesByItemChanged();
}

void Store::startTint()
{
    QStringList palettes;
    for (qsizetype i = 0; i < m_allRows.size() && palettes.size() < tintRows; ++i)
        palettes.append(m_allRows.at(i).colors.value_or(QString()));
    const quint64 generation = ++m_tintGeneration;
    QPointer<Store> self(this);
    m_workers.start(
        [self, generation, palettes] {
            QList<QColor> colours;
            for (const QString &palette : palettes)
                colours.append(ItemColours::decode(palette).mid(0, tintColoursPerRow));
            const QColor tint = ItemColours::tint(colours);
            // The answer goes back to the main thread, where the Store is checked and compared.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [self, generation, tint] {
                    if (!self || generation != self->m_tintGeneration || tint == self->m_collectionTint)
                        return;
                    self->m_collectionTint = tint;
                    Q_EMIT self->collectionTintChanged();
                },
                Qt::QueuedConnection);
        },
        QThread::LowPriority);
}

void Store::reloadBoardIfWritten()
{
    // The board is read again only when it may have changed: a refresh of the rows often comes
    // while a long background read holds the database, and waiting for it here would hold the window.
    const QString key = m_selection.key();
    const quint64 writes = m_dbQueue ? m_dbQueue->writesBegun() : 0;
    if (m_boardRead && m_boardRead->first == key && m_boardRead->second == writes)
        return;
    reloadCanvasPositions();
    reloadBoardObjects();
    m_boardRead = std::pair(key, writes);
}

void Store::reloadCanvasPositions()
{
    if (!m_dbQueue)
        return;
    QHash<QString, CanvasPosition> positions;
    try {
        m_dbQueue->read([&](Database &db) {
            db.forEach(
                u"SELECT * FROM canvasPosition WHERE collectionKey = ?"_s, {m_selection.key()}, [&](const Row &row) {
                    const CanvasPosition position = CanvasPosition::fromRow(row);
                    positions.insert(position.itemId, position);
                });
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] reloadCanvasPositions failed: "_s + errorText(error));
        return;
    }
    if (positions == m_canvasPositions)
        return;
    m_canvasPositions = std::move(positions);
    Q_EMIT canvasPositionsChanged();
}

void Store::reloadBoardObjects()
{
    if (!m_dbQueue)
        return;
    QList<BoardObject> objects;
    try {
        objects = m_dbQueue->read([&](Database &db) {
            return db.fetchAll<BoardObject>(
                u"SELECT * FROM boardObject WHERE collectionKey = ? AND deletedAt IS NULL ORDER BY zIndex ASC"_s,
                {m_selection.key()});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] reloadBoardObjects failed: "_s + errorText(error));
        objects.clear();
    }
    if (objects == m_boardObjects)
        return;
    m_boardObjects = std::move(objects);
    Q_EMIT boardObjectsChanged();
}

void Store::setCapturePendingItemId(const QString &id)
{
    if (m_capturePendingItemId == id)
        return;
    m_capturePendingItemId = id;
    Q_EMIT capturePendingItemIdChanged();
    rebuildRailSplit();
}

} // namespace kivo
