#pragma once

#include "core/records.h"
#include "search/searchhit.h"

#include <QHash>
#include <QList>

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

namespace kivo {

/**
 * Merges several rankings of items into one by weighted reciprocal rank: an item at place r
 * (from 0) of a list with weight w earns w / (k + r), and an item found by several lists adds up
 * what each gives, so agreement between lists outranks the mere top of one.
 *
 * The rankings hold whole rows (LibraryItem) or anything else with the same `id`, `addedAt`,
 * `openCount` and `lastOpenedAt` members, such as the narrow rows a search ranks before it
 * decodes the rows it shows.
 */
namespace RankFusion {

/** What tells items apart: the id of a whole row, the rowid of a narrow one. */
[[nodiscard]] inline const QString &fusionKey(const LibraryItem &item)
{
    return item.id;
}

[[nodiscard]] inline qint64 fusionKey(const SearchHit &hit)
{
    return hit.rowid;
}

/** One ranking to fuse, best first. */
template<typename Item>
struct Ranking {
    double weight = 1.0;
    QList<Item> items;
};

using RankedList = Ranking<LibraryItem>;

/**
 * All items of the lists, highest fused score first. A later list's copy of an item replaces an
 * earlier one's. Equal scores go newest first (`addedAt`), then by id, so the order is repeatable.
 */
template<typename Item>
[[nodiscard]] QList<Item> fuse(const QList<Ranking<Item>> &lists, double k)
{
    struct Fused {
        Item item;
        double score = 0;
    };
    using Key = std::decay_t<decltype(fusionKey(std::declval<const Item &>()))>;
    QHash<Key, qsizetype> slotById;
    QList<Fused> fused;
    for (const Ranking<Item> &list : lists) {
        for (qsizetype rank = 0; rank < list.items.size(); ++rank) {
            const Item &item = list.items.at(rank);
            const double contribution = list.weight / (k + double(rank));
            const auto found = slotById.constFind(fusionKey(item));
            if (found == slotById.constEnd()) {
                slotById.insert(fusionKey(item), fused.size());
                fused.append(Fused{item, contribution});
            } else {
                Fused &entry = fused[*found];
                entry.item = item;
                entry.score += contribution;
            }
        }
    }
    std::sort(fused.begin(), fused.end(), [](const Fused &a, const Fused &b) {
        if (a.score != b.score)
            return a.score > b.score;
        if (a.item.addedAt != b.item.addedAt)
            return a.item.addedAt > b.item.addedAt;
        return a.item.id < b.item.id;
    });
    QList<Item> order;
    order.reserve(fused.size());
    for (Fused &entry : fused)
        order.append(std::move(entry.item));
    return order;
}

/** `fuse` of whole rows, so that a braced list of rankings needs no type spelled out. */
[[nodiscard]] inline QList<LibraryItem> fuse(const QList<RankedList> &lists, double k)
{
    return fuse<LibraryItem>(lists, k);
}

/**
 * How much a thing is in use: its openings, each worth half as much every `halfLifeDays` since
 * the last one. Zero for an item never opened or without a time of its last opening.
 */
[[nodiscard]] double useScore(qint64 openCount, std::optional<double> lastOpenedAt, double now, double halfLifeDays);

template<typename Item>
[[nodiscard]] double useScore(const Item &item, double now, double halfLifeDays)
{
    return useScore(item.openCount, item.lastOpenedAt, now, halfLifeDays);
}

/**
 * The use ranking of a set of found items: those with a use score above zero, most used first
 * (equal scores keep the order given). It only re-orders what other lists found.
 */
template<typename Item>
[[nodiscard]] QList<Item> useList(const QList<Item> &candidates, double now, double halfLifeDays)
{
    struct Scored {
        double score;
        qsizetype position;
    };
    QList<Scored> scored;
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const double score = useScore(candidates.at(i), now, halfLifeDays);
        if (score > 0)
            scored.append({score, i});
    }
    std::stable_sort(scored.begin(), scored.end(), [](const Scored &a, const Scored &b) { return a.score > b.score; });
    QList<Item> list;
    list.reserve(scored.size());
    for (const Scored &entry : scored)
        list.append(candidates.at(entry.position));
    return list;
}

} // namespace RankFusion
} // namespace kivo
