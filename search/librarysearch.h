#pragma once

#include "core/records.h"
#include "core/sidebarselection.h"
#include "search/searchhit.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

namespace kivo {

class Database;
class DatabaseQueue;
class MeaningIndex;
class PaletteCache;

/**
 * The library search: one typed line answered with one ranked list. Four rankings are made
 * inside the current selection — the words (text and tags), the meaning (image embeddings, once
 * the AI pack is in), the colours named, and how often and how lately each found thing was
 * opened — and fused by weighted reciprocal rank. The rankings read narrow rows (SearchHit); only
 * the fused result is read in full, once per item.
 */
namespace LibrarySearch {

/** A typed change waits this long, so that fast typing costs one search. */
inline constexpr std::chrono::milliseconds debounce{120};
/** How many nearest pictures the meaning list asks for. */
inline constexpr int semanticCandidates = 40;
/** A meaning hit must score strictly above this. */
inline constexpr float semanticScoreFloor = 0.265F;
/** The fusion constant: how quickly a lower place in a list stops counting. */
inline constexpr double fusionK = 60.0;
inline constexpr double wordWeight = 1.3;
inline constexpr double meaningWeight = 1.0;
inline constexpr double colourWeight = 0.6;
inline constexpr double useWeight = 1.6;
/** An opening counts half as much after this many days. */
inline constexpr double openingHalfLifeDays = 30.0;

/** Where a search looks: the sidebar's selection, and the inbox's id for the inbox. */
struct Scope {
    SidebarSelection selection;
    std::optional<QString> inboxId;
};

/** The four rankings of one search, each best first. */
struct Lists {
    QList<SearchHit> words;
    QList<SearchHit> meaning;
    QList<SearchHit> colours;
    QList<SearchHit> use;
};

/** Whole rows a search has read already, by rowid, so that none is read twice. */
using RowsRead = QHash<qint64, LibraryItem>;

/**
 * The word list: live items in scope whose title, note, text read from the picture or caption
 * match every word as a prefix, or with a tag holding the first word. Items whose title holds the
 * whole query come first; within each group, newest first. Empty without usable words. With
 * `rowsRead`, the hits' whole rows are read in the same pass and kept there.
 */
[[nodiscard]] QList<SearchHit> wordList(
    Database &db, const QString &query, const Scope &scope, RowsRead *rowsRead = nullptr);

/**
 * The four lists for `query` inside `scope`. `semanticIds` is the meaning ranking (empty while
 * the AI pack is absent); `now` (seconds since 1970) ages the openings; `palettes`, when given,
 * keeps the stored palettes between searches; `rowsRead` keeps the whole rows read on the way.
 * Runs inside one read.
 */
[[nodiscard]] Lists lists(Database &db, const QString &query, const QStringList &semanticIds, const Scope &scope,
    double now, PaletteCache *palettes = nullptr, RowsRead *rowsRead = nullptr);

/** The lists fused with their weights, in the order word, meaning, colour, use. */
[[nodiscard]] QList<SearchHit> fuse(const Lists &lists);

/**
 * The whole rows of `hits`, in their order, taken from `rowsRead` when they are there and read
 * otherwise; a hit whose row has gone is left out.
 */
[[nodiscard]] QList<LibraryItem> rowsOf(Database &db, const QList<SearchHit> &hits, RowsRead *rowsRead = nullptr);

/**
 * The meaning ranking of a text: the ids of the nearest pictures whose score is above the floor,
 * best first, from the 40 nearest. Empty without a database, an index, or a ready model pack.
 * Blocks on the text model and a scan of the vectors: call it off the main thread.
 */
[[nodiscard]] QStringList semanticIds(
    MeaningIndex *index, const QString &text, const std::shared_ptr<DatabaseQueue> &db);

/** `rowsOf(fuse(lists(...)))`: the rows a search shows, in their order. */
[[nodiscard]] QList<LibraryItem> searchItems(Database &db, const QString &query, const QStringList &semanticIds,
    const Scope &scope, double now, PaletteCache *palettes = nullptr);

} // namespace LibrarySearch
} // namespace kivo
