#include "search/librarysearch.h"

#include "core/database.h"
#include "core/itemqueries.h"
#include "search/colourmatcher.h"
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

QList<LibraryItem> colourList(Database &db, const QStringList &colourWords, const std::optional<QSet<QString>> &ids)
{
    const ColourMatcher matcher(colourWords);
    QList<LibraryItem> found;
    // Rows without a palette cannot match, so they are not read; the matches are put newest first
    // afterwards, which is cheaper than walking the whole table in that order.
    db.forEach(u"SELECT * FROM item WHERE deletedAt IS NULL AND colors IS NOT NULL"_s, {}, [&](const Row &row) {
        if (matcher.matches(row.text("colors")) && inScope(ids, row.text("id")))
            found.append(LibraryItem::fromRow(row));
    });
    std::stable_sort(
        found.begin(), found.end(), [](const LibraryItem &a, const LibraryItem &b) { return a.addedAt > b.addedAt; });
    return found;
}

QList<LibraryItem> meaningList(Database &db, const QStringList &semanticIds, const std::optional<QSet<QString>> &ids)
{
    QHash<QString, LibraryItem> byId;
    for (qsizetype start = 0; start < semanticIds.size(); start += ItemQueries::maxListLength) {
        QVariantList arguments;
        const QString marks = ItemQueries::placeholders(semanticIds.mid(start, ItemQueries::maxListLength), arguments);
        db.forEach(
            u"SELECT * FROM item WHERE deletedAt IS NULL AND id IN ("_s + marks + u')', arguments, [&](const Row &row) {
                LibraryItem item = LibraryItem::fromRow(row);
                byId.insert(item.id, std::move(item));
            });
    }
    QList<LibraryItem> ranked;
    for (const QString &id : semanticIds) {
        const auto found = byId.constFind(id);
        if (found != byId.constEnd() && inScope(ids, id))
            ranked.append(*found);
    }
    return ranked;
}

} // namespace

QList<LibraryItem> wordList(Database &db, const QString &query, const Scope &scope)
{
    const auto words = WordQuery::parse(query);
    const auto clause = ItemQueries::scopeClause(scope.selection, scope.inboxId);
    if (!words || !clause)
        return {};
    const SqlQuery statement = words->statement(*clause);
    const QString lowered = query.toLower();
    QList<LibraryItem> titled;
    QList<LibraryItem> others;
    db.forEach(statement.sql, statement.arguments, [&](const Row &row) {
        LibraryItem item = LibraryItem::fromRow(row);
        const bool inTitle = item.title && item.title->toLower().contains(lowered);
        (inTitle ? titled : others).append(std::move(item));
    });
    titled.append(std::move(others));
    return titled;
}

Lists lists(Database &db, const QString &query, const QStringList &semanticIds, const Scope &scope, double now)
{
    Lists found;
    found.words = wordList(db, query, scope);

    const QStringList colourWords = ColorSearch::colourWords(query);
    const bool useMeaning = !semanticIds.isEmpty() && !ColorSearch::isColourQuery(query);
    std::optional<QSet<QString>> ids;
    if (!colourWords.isEmpty() || useMeaning)
        ids = scopeIds(db, scope);
    if (useMeaning)
        found.meaning = meaningList(db, semanticIds, ids);
    if (!colourWords.isEmpty())
        found.colours = colourList(db, colourWords, ids);

    QList<LibraryItem> candidates;
    QSet<QString> seen;
    for (const QList<LibraryItem> *list : {&found.words, &found.meaning, &found.colours}) {
        for (const LibraryItem &item : *list) {
            if (!seen.contains(item.id)) {
                seen.insert(item.id);
                candidates.append(item);
            }
        }
    }
    found.use = RankFusion::useList(candidates, now, openingHalfLifeDays);
    return found;
}

QList<LibraryItem> fuse(const Lists &lists)
{
    return RankFusion::fuse({{wordWeight, lists.words}, {meaningWeight, lists.meaning}, {colourWeight, lists.colours},
                                {useWeight, lists.use}},
        fusionK);
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

QList<LibraryItem> searchItems(
    Database &db, const QString &query, const QStringList &semanticIds, const Scope &scope, double now)
{
    return fuse(lists(db, query, semanticIds, scope, now));
}

} // namespace kivo::LibrarySearch
