#include "search/librarysearch.h"

#include "core/database.h"
#include "core/itemqueries.h"
#include "search/colourmatcher.h"
#include "search/palettecache.h"
#include "search/rankfusion.h"
#include "search/wordquery.h"
#include "understanding/colorsearch.h"
#include "understanding/embeddinghooks.h"

#include <QHash>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo::LibrarySearch {

namespace {

/**
 * The ids a selection holds, for the lists that are not read through its clause; nothing when
 * the selection restricts nothing (All and the trash, whose clauses leave every live item in).
 */
std::optional<QSet<QString>> scopeIds(Database &db, const Scope &scope)
{
    const auto kind = scope.selection.kind();
    if (kind == SidebarSelection::Kind::all || kind == SidebarSelection::Kind::trash)
        return std::nullopt;
    QSet<QString> ids;
    const auto clause = ItemQueries::scopeClause(scope.selection, scope.inboxId);
    if (!clause)
        return ids;
    db.forEach(u"SELECT i.id FROM item i WHERE i.deletedAt IS NULL "_s + clause->sql, clause->arguments,
        [&](const Row &row) { ids.insert(row.text(0)); });
    return ids;
}

bool inScope(const std::optional<QSet<QString>> &ids, const QString &id)
{
    return !ids || ids->contains(id);
}

/** The columns of a SearchHit, for statements over `item` without an alias. */
const QString hitColumns = u"rowid, id, addedAt, openCount, lastOpenedAt"_s;

QList<SearchHit> colourList(Database &db, const QStringList &colourWords, const std::optional<QSet<QString>> &ids,
    PaletteCache &palettes)
{
    const ColourMatcher matcher(colourWords);
    QList<SearchHit> found = palettes.matching(db, matcher);
    if (ids)
        found.removeIf([&](const SearchHit &hit) { return !ids->contains(hit.id); });
    // The palettes are kept in the table's order, so the matches are put newest first here (and
    // items added at the same moment stay in the table's order, as a scan would give them).
    std::stable_sort(
        found.begin(), found.end(), [](const SearchHit &a, const SearchHit &b) { return a.addedAt > b.addedAt; });
    return found;
}

QList<SearchHit> meaningList(Database &db, const QStringList &semanticIds, const std::optional<QSet<QString>> &ids)
{
    QHash<QString, SearchHit> byId;
    for (qsizetype start = 0; start < semanticIds.size(); start += ItemQueries::maxListLength) {
        QVariantList arguments;
        const QString marks = ItemQueries::placeholders(semanticIds.mid(start, ItemQueries::maxListLength), arguments);
        db.forEach(u"SELECT "_s + hitColumns + u" FROM item WHERE deletedAt IS NULL AND id IN ("_s + marks + u')',
            arguments, [&](const Row &row) {
                SearchHit hit = SearchHit::fromRow(row);
                byId.insert(hit.id, std::move(hit));
            });
    }
    QList<SearchHit> ranked;
    for (const QString &id : semanticIds) {
        const auto found = byId.constFind(id);
        if (found != byId.constEnd() && inScope(ids, id))
            ranked.append(*found);
    }
    return ranked;
}

} // namespace

QList<SearchHit> wordList(Database &db, const QString &query, const Scope &scope, RowsRead *rowsRead)
{
    const auto words = WordQuery::parse(query);
    const auto clause = ItemQueries::scopeClause(scope.selection, scope.inboxId);
    if (!words || !clause)
        return {};
    const SqlQuery tags = words->tagStatement();
    const bool withTags = db.fetchScalar(tags.sql, tags.arguments).isValid();
    const QString lowered = query.toLower();
    const auto inTitle = [&](const std::optional<QString> &title) { return title && title->toLower().contains(lowered); };

    struct Found {
        SearchHit hit;
        bool inTitle = false;
    };
    QList<Found> found;
    bool ordered = true;
    if (rowsRead) {
        // Whole rows in one pass, put newest first here: sorting whole rows in SQLite costs more
        // than reading them. Only equal times of adding leave the order to the database's sort,
        // which the ordered statement below then gives.
        const SqlQuery statement = words->statement(*clause, withTags, WordQuery::Columns::wholeRows);
        db.forEach(statement.sql, statement.arguments, [&](const Row &row) {
            LibraryItem item = LibraryItem::fromRow(row);
            const qint64 rowid = row.integer("rowid");
            found.append({SearchHit{rowid, item.id, item.addedAt, item.openCount, item.lastOpenedAt}, inTitle(item.title)});
            rowsRead->insert(rowid, std::move(item));
        });
        std::sort(found.begin(), found.end(), [](const Found &a, const Found &b) { return a.hit.addedAt > b.hit.addedAt; });
        ordered = std::adjacent_find(found.cbegin(), found.cend(), [](const Found &a, const Found &b) {
            return a.hit.addedAt == b.hit.addedAt;
        }) == found.cend();
    }
    if (!ordered || !rowsRead) {
        found.clear();
        const SqlQuery statement = words->statement(*clause, withTags, WordQuery::Columns::hitsNewestFirst);
        db.forEach(statement.sql, statement.arguments,
            [&](const Row &row) { found.append({SearchHit::fromRow(row), inTitle(row.optionalText("title"))}); });
    }
    QList<SearchHit> titled;
    QList<SearchHit> others;
    for (Found &entry : found)
        (entry.inTitle ? titled : others).append(std::move(entry.hit));
    titled.append(std::move(others));
    return titled;
}

Lists lists(Database &db, const QString &query, const QStringList &semanticIds, const Scope &scope, double now,
    PaletteCache *palettes, RowsRead *rowsRead)
{
    Lists found;
    found.words = wordList(db, query, scope, rowsRead);

    const QStringList colourWords = ColorSearch::colourWords(query);
    const bool useMeaning = !semanticIds.isEmpty() && !ColorSearch::isColourQuery(query);
    std::optional<QSet<QString>> ids;
    if (!colourWords.isEmpty() || useMeaning)
        ids = scopeIds(db, scope);
    if (useMeaning)
        found.meaning = meaningList(db, semanticIds, ids);
    if (!colourWords.isEmpty()) {
        // Without a kept cache the palettes are read for this search alone.
        PaletteCache once;
        found.colours = colourList(db, colourWords, ids, palettes ? *palettes : once);
    }

    // Only opened items can make the use list; the others need not be gathered.
    QList<SearchHit> candidates;
    QSet<qint64> seen;
    for (const QList<SearchHit> *list : {&found.words, &found.meaning, &found.colours}) {
        for (const SearchHit &item : *list) {
            if (item.openCount >= 1 && item.lastOpenedAt && !seen.contains(item.rowid)) {
                seen.insert(item.rowid);
                candidates.append(item);
            }
        }
    }
    found.use = RankFusion::useList(candidates, now, openingHalfLifeDays);
    return found;
}

QList<SearchHit> fuse(const Lists &lists)
{
    return RankFusion::fuse<SearchHit>({{wordWeight, lists.words}, {meaningWeight, lists.meaning},
                                           {colourWeight, lists.colours}, {useWeight, lists.use}},
        fusionK);
}

QList<LibraryItem> rowsOf(Database &db, const QList<SearchHit> &hits, RowsRead *rowsRead)
{
    QList<LibraryItem> placed(hits.size());
    QList<bool> read(hits.size(), false);
    // Rows not read yet are read in rowid order, a stretch of the table at a time.
    QList<std::pair<qint64, qsizetype>> byRow;
    byRow.reserve(hits.size());
    for (qsizetype place = 0; place < hits.size(); ++place) {
        const qint64 rowid = hits.at(place).rowid;
        const auto kept = rowsRead ? rowsRead->find(rowid) : RowsRead::iterator();
        if (rowsRead && kept != rowsRead->end()) {
            placed[place] = std::move(*kept);
            read[place] = true;
            rowsRead->erase(kept);
        } else {
            byRow.append({rowid, place});
        }
    }
    std::sort(byRow.begin(), byRow.end());
    for (qsizetype start = 0; start < byRow.size(); start += ItemQueries::maxListLength) {
        const qsizetype count = std::min(ItemQueries::maxListLength, byRow.size() - start);
        QVariantList arguments;
        arguments.reserve(count);
        for (qsizetype i = start; i < start + count; ++i)
            arguments.append(byRow.at(i).first);
        QString marks(count * 2 - 1, u',');
        for (qsizetype i = 0; i < count; ++i)
            marks[i * 2] = u'?';
        qsizetype next = start;
        db.forEach(u"SELECT rowid, * FROM item WHERE rowid IN ("_s + marks + u") ORDER BY rowid"_s, arguments,
            [&](const Row &row) {
                const qint64 rowid = row.integer("rowid");
                while (next < start + count && byRow.at(next).first < rowid)
                    ++next;
                if (next == start + count || byRow.at(next).first != rowid)
                    return;
                const qsizetype place = byRow.at(next).second;
                placed[place] = LibraryItem::fromRow(row);
                read[place] = true;
            });
    }
    QList<LibraryItem> rows;
    rows.reserve(hits.size());
    for (qsizetype place = 0; place < placed.size(); ++place) {
        if (read.at(place))
            rows.append(std::move(placed[place]));
    }
    return rows;
}

QStringList semanticIds(MeaningIndex *index, const QString &text, const std::shared_ptr<DatabaseQueue> &db)
{
    if (!db || !index || !index->isReady())
        return {};
    const std::optional<QList<float>> vector = index->embedding(text);
    if (!vector)
        return {};
    QStringList ids;
    for (const Hit &hit : index->topK(*vector, semanticCandidates, *db)) {
        if (hit.score > semanticScoreFloor)
            ids.append(hit.itemId);
    }
    return ids;
}

QList<LibraryItem> searchItems(Database &db, const QString &query, const QStringList &semanticIds, const Scope &scope,
    double now, PaletteCache *palettes)
{
    RowsRead rowsRead;
    return rowsOf(db, fuse(lists(db, query, semanticIds, scope, now, palettes, &rowsRead)), &rowsRead);
}

} // namespace kivo::LibrarySearch
