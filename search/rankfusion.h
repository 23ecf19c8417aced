#pragma once

#include "core/records.h"

#include <QList>

namespace kivo {

/**
 * Merges several rankings of items into one by weighted reciprocal rank: an item at place r
 * (from 0) of a list with weight w earns w / (k + r), and an item found by several lists adds up
 * what each gives, so agreement between lists outranks the mere top of one.
 */
namespace RankFusion {

/** One ranking to fuse, best first. */
struct RankedList {
    double weight = 1.0;
    QList<LibraryItem> items;
};

/**
 * All items of the lists, highest fused score first. A later list's copy of an item replaces an
 * earlier one's. Equal scores go newest first (`addedAt`), then by id, so the order is repeatable.
 */
[[nodiscard]] QList<LibraryItem> fuse(const QList<RankedList> &lists, double k);

/**
 * How much a thing is in use: its openings, each worth half as much every `halfLifeDays` since
 * the last one. Zero for an item never opened or without a time of its last opening.
 */
[[nodiscard]] double useScore(const LibraryItem &item, double now, double halfLifeDays);

/**
 * The use ranking of a set of found items: those with a use score above zero, most used first
 * (equal scores keep the order given). It only re-orders what other lists found.
 */
[[nodiscard]] QList<LibraryItem> useList(const QList<LibraryItem> &candidates, double now, double halfLifeDays);

} // namespace RankFusion
} // namespace kivo
