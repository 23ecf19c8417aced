#include "core/store.h"

#include "core/appsettings.h"
#include "core/librarylocation.h"
#include "core/mediatypepredicate.h"
#include "core/systemlog.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** What the synchronous part of one reload of the collections reads. */
struct CollectionSnapshot {
    QList<LibraryCollection> collections;
    std::optional<LibraryCollection> inbox;
    std::optional<Store::SidebarCounts> counts;
};

CollectionSort collectionSortOf(const AppSettings *settings)
{
    return settings ? collectionSortFromRaw(settings->collectionSort()).value_or(CollectionSort::manual)
                    : CollectionSort::manual;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Reloads

void Store::reloadCollections()
{
    if (!m_dbQueue)
        return;
    const bool countsLater = m_collectionCountsInBackground;
    CollectionSnapshot snapshot;
    try {
        snapshot = m_dbQueue->read([countsLater](Database &db) {
            CollectionSnapshot read;
            read.collections = db.fetchAll<LibraryCollection>(
                u"SELECT * FROM collection WHERE deletedAt IS NULL AND isInbox = 0 ORDER BY sortIndex ASC, name ASC"_s);
            read.inbox
                = db.fetchOne<LibraryCollection>(u"SELECT * FROM collection WHERE isInbox = 1 AND deletedAt IS NULL"_s);
            if (!countsLater) {
                read.counts.emplace();
                readCollectionCounts(db, *read.counts);
                readSidebarNumbers(db, *read.counts);
            }
            return read;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] reloadCollections failed: "_s + errorText(error));
        return;
    }

    if (snapshot.inbox)
        m_inboxId = snapshot.inbox->id;
    if (snapshot.collections != m_collections || snapshot.inbox != m_inboxCollection) {
        m_collections = std::move(snapshot.collections);
        m_inboxCollection = std::move(snapshot.inbox);
        Q_EMIT collectionsChanged();
    }
    if (snapshot.counts)
        publishCounts(std::move(*snapshot.counts));
    if (m_holdSidebarReads)
        m_sidebarReadsHeld = true;
    else
        startSidebarReads();
    // The semantic icon pass for collections without an icon joins here once icons are chosen.
}

void Store::startSidebarReads()
{
    if (m_collectionCountsInBackground)
        readCollectionCountsInBackground();
    if (m_sidebarExtrasEnabled) {
        reloadTypeCounts();
        reloadTrayPreviews();
    }
}

void Store::readCollectionCountsInBackground()
{
    // Joining every membership with its item, and counting every item for the sidebar, are the
    // slow part of the collections' reload: in the window they run on a worker, in one read, and
    // the numbers follow the list a moment later.
    readInBackground<SidebarCounts>(
        m_collectionCountsGeneration, u"reloadCollections"_s,
        [](Database &db) {
            SidebarCounts read;
            readCollectionCounts(db, read);
            readSidebarNumbers(db, read);
            return read;
        },
        [this](SidebarCounts read) { publishCounts(std::move(read)); });
}

void Store::readCollectionCounts(Database &db, SidebarCounts &read)
{
    db.forEach(u"SELECT ic.collectionId AS cid, COUNT(*) AS n, MAX(ic.addedAt) AS last\n"
               "FROM itemCollection ic\n"
               "JOIN item i ON i.id = ic.itemId AND i.deletedAt IS NULL\n"
               "GROUP BY ic.collectionId"_s,
        {}, [&](const Row &row) {
            const QString id = row.text("cid");
            read.counts.insert(id, int(row.integer("n")));
            read.lastActivity.insert(id, row.real("last"));
        });
}

void Store::readSidebarNumbers(Database &db, SidebarCounts &read)
{
    // The sidebar's numbers are one family: one pass over the items gives them all.
    db.forEach(u"SELECT SUM(CASE WHEN deletedAt IS NULL AND hiddenAt IS NULL THEN 1 ELSE 0 END) AS allCount,\n"
               "       SUM(CASE WHEN deletedAt IS NULL AND kind = 'link' THEN 1 ELSE 0 END) AS links,\n"
               "       SUM(CASE WHEN deletedAt IS NOT NULL THEN 1 ELSE 0 END) AS trash,\n"
               "       SUM(CASE WHEN deletedAt IS NULL AND favourite = 1 THEN 1 ELSE 0 END) AS favourites,\n"
               "       SUM(CASE WHEN deletedAt IS NULL AND hiddenAt IS NOT NULL THEN 1 ELSE 0 END) AS hidden\n"
               "FROM item"_s,
        {}, [&](const Row &row) {
            read.numbers.all = int(row.integer("allCount"));
            read.numbers.links = int(row.integer("links"));
            read.numbers.trash = int(row.integer("trash"));
            read.numbers.favourites = int(row.integer("favourites"));
            read.numbers.hidden = int(row.integer("hidden"));
        });
}

void Store::publishCounts(SidebarCounts read)
{
    const int inboxCount = m_inboxId ? read.counts.value(*m_inboxId, 0) : 0;
    const bool differ
        = !m_countsKnown || read.numbers != m_numbers || read.counts != m_counts || inboxCount != m_inboxCount;
    if (differ) {
        m_numbers = read.numbers;
        m_counts = std::move(read.counts);
        m_inboxCount = inboxCount;
        m_countsKnown = true;
        Q_EMIT countsChanged();
    }
    QHash<QString, double> rollup = CollectionTree::activityRollup(m_collections, read.lastActivity);
    if (read.lastActivity != m_collectionLastActivity || rollup != m_collectionActivityRollup) {
        m_collectionLastActivity = std::move(read.lastActivity);
        m_collectionActivityRollup = std::move(rollup);
        Q_EMIT collectionActivityChanged();
    }
}

void Store::reloadTypeCounts()
{
    if (!m_dbQueue)
        return;
    const QList<MediaTypeFilter> &filters = allMediaTypeFilters();
    QStringList terms;
    for (qsizetype index = 0; index < filters.size(); ++index) {
        terms.append(u"SUM(CASE WHEN "_s + mediaTypePredicate(filters.at(index)) + u" THEN 1 ELSE 0 END) AS c"_s
            + QString::number(index));
    }
    const QString sql = u"SELECT "_s + terms.join(u", "_s) + u" FROM item i WHERE i.deletedAt IS NULL"_s;
    readInBackground<QVariantMap>(
        m_typeCountsGeneration, u"reloadTypeCounts"_s,
        [sql](Database &db) {
            const QList<MediaTypeFilter> &filters = allMediaTypeFilters();
            QVariantMap byFilter;
            db.forEach(sql, {}, [&](const Row &row) {
                for (qsizetype index = 0; index < filters.size(); ++index)
                    byFilter.insert(rawString(filters.at(index)), int(row.integer(int(index))));
            });
            return byFilter;
        },
        [this](QVariantMap counts) {
            if (counts == m_typeCounts)
                return;
            m_typeCounts = std::move(counts);
            Q_EMIT typeCountsChanged();
        });
}

int Store::typeCount(MediaTypeFilter filter) const
{
    return m_typeCounts.value(rawString(filter)).toInt();
}

QVariantMap Store::countsMap() const
{
    QVariantMap map;
    for (auto it = m_counts.constBegin(); it != m_counts.constEnd(); ++it)
        map.insert(it.key(), it.value());
    return map;
}

void Store::reloadTrayPreviews()
{
    if (!m_dbQueue)
        return;
    readInBackground<QHash<QString, QList<TrayPreview>>>(
        m_trayPreviewsGeneration, u"reloadTrayPreviews"_s,
        [](Database &db) {
            QHash<QString, QList<TrayPreview>> rows;
            db.forEach(u"SELECT cid, filePath, addedAt FROM (\n"
                       "    SELECT ic.collectionId AS cid, i.filePath AS filePath, ic.addedAt AS addedAt,\n"
                       "           ROW_NUMBER() OVER (PARTITION BY ic.collectionId ORDER BY ic.addedAt DESC) AS rn\n"
                       "    FROM itemCollection ic\n"
                       "    JOIN item i ON i.id = ic.itemId\n"
                       "    WHERE i.deletedAt IS NULL AND i.filePath IS NOT NULL\n"
                       ") WHERE rn <= 3"_s,
                {}, [&](const Row &row) {
                    rows[row.text("cid")].append({row.text("filePath"), row.real("addedAt")});
                });
            return rows;
        },
        [this](const QHash<QString, QList<TrayPreview>> &own) { publishTrayPreviews(own); });
}

void Store::publishTrayPreviews(const QHash<QString, QList<TrayPreview>> &own)
{
    // Resolving goes through the item folder, taken once for the whole pass.
    const QString itemFolder = LibraryLocation::itemFolder();
    QHash<QString, QList<QUrl>> previews;
    QList<LibraryCollection> all = m_collections;
    if (m_inboxCollection)
        all.append(*m_inboxCollection);
    for (const LibraryCollection &collection : std::as_const(all)) {
        QList<TrayPreview> merged;
        for (const QString &id : CollectionTree::withDescendants(m_collections, {collection.id}))
            merged.append(own.value(id));
        if (merged.isEmpty())
            continue;
        std::stable_sort(merged.begin(), merged.end(),
            [](const TrayPreview &a, const TrayPreview &b) { return a.addedAt > b.addedAt; });
        QList<QUrl> urls;
        for (qsizetype i = 0; i < merged.size() && urls.size() < 3; ++i)
            urls.append(QUrl::fromLocalFile(itemFolder + u'/' + merged.at(i).filePath));
        previews.insert(collection.id, urls);
    }
    if (previews == m_trayPreviews)
        return;
    m_trayPreviews = std::move(previews);
    Q_EMIT trayPreviewsChanged();
}

// ---------------------------------------------------------------------------------------------
// Reading the tree

QList<CollectionTreeRow> Store::collectionTree(bool skipCollapsed) const
{
    return CollectionTree::flatten(m_collections, collectionSortOf(m_settings),
        m_settings && m_settings->collectionSortReversed(), m_collectionActivityRollup,
        skipCollapsed ? m_collapsedCollections : QSet<QString>());
}

std::optional<LibraryCollection> Store::collectionById(const QString &id) const
{
    if (m_inboxCollection && m_inboxCollection->id == id)
        return m_inboxCollection;
    for (const LibraryCollection &collection : m_collections) {
        if (collection.id == id)
            return collection;
    }
    return std::nullopt;
}

QString Store::collectionPath(const QString &id, const QString &separator) const
{
    if (m_inboxCollection && m_inboxCollection->id == id)
        return m_inboxCollection->name;
    return CollectionTree::path(m_collections, id, separator);
}

QList<LibraryCollection> Store::recentCollections(int limit) const
{
    QList<LibraryCollection> recent = m_collections;
    std::stable_sort(recent.begin(), recent.end(),
        [](const LibraryCollection &a, const LibraryCollection &b) { return a.modifiedAt > b.modifiedAt; });
    if (limit >= 0 && recent.size() > limit)
        recent.resize(limit);
    return recent;
}

QStringList Store::collectionPreviews(const QString &id) const
{
    if (!m_dbQueue)
        return {};
    try {
        return m_dbQueue->read([&](Database &db) {
            QStringList paths;
            db.forEach(u"SELECT i.filePath FROM itemCollection ic JOIN item i ON i.id = ic.itemId\n"
                       "WHERE ic.collectionId = ? AND i.deletedAt IS NULL AND i.filePath IS NOT NULL"_s,
                {id}, [&](const Row &row) { paths.append(row.text(0)); });
            return paths;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] collectionPreviews failed: "_s + errorText(error));
        return {};
    }
}

QList<CollectionActivity> Store::collectionsByLastAddition() const
{
    if (!m_dbQueue)
        return {};
    try {
        return m_dbQueue->read([](Database &db) {
            QList<CollectionActivity> rows;
            db.forEach(u"SELECT c.id AS id, c.name AS name,\n"
                       "       COUNT(ic.itemId) AS n, MAX(ic.addedAt) AS lastAdd\n"
                       "FROM collection c\n"
                       "LEFT JOIN itemCollection ic ON ic.collectionId = c.id\n"
                       "WHERE c.deletedAt IS NULL AND c.isInbox = 0\n"
                       "GROUP BY c.id\n"
                       "ORDER BY lastAdd DESC NULLS LAST, c.name ASC"_s,
                {}, [&](const Row &row) {
                    rows.append({row.text("id"), row.text("name"), int(row.integer("n")), row.optionalReal("lastAdd")});
                });
            return rows;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] collectionsByLastAddition failed: "_s + errorText(error));
        return {};
    }
}

QVariantMap Store::collectionData(const QString &id) const
{
    const auto collection = collectionById(id);
    if (!collection)
        return {};
    QVariantMap data = collection->toJson().toVariantMap();
    data.insert(u"count"_s, m_counts.value(id, 0));
    data.insert(u"path"_s, collectionPath(id));
    data.insert(u"pinned"_s, collection->pinnedAt.has_value());
    return data;
}

QVariantList Store::collectionChoices() const
{
    QVariantList choices;
    for (const CollectionTreeRow &row : collectionTree(false)) {
        choices.append(QVariantMap{
            {u"id"_s, row.collection.id},
            {u"name"_s, row.collection.name},
            {u"depth"_s, row.depth},
            {u"hasChildren"_s, row.hasChildren},
            {u"count"_s, m_counts.value(row.collection.id, 0)},
            {u"pinned"_s, row.collection.pinnedAt.has_value()},
            {u"icon"_s, row.collection.icon.value_or(QString())},
            {u"path"_s, CollectionTree::path(m_collections, row.collection.id, u" / "_s)},
        });
    }
    return choices;
}

} // namespace kivo
