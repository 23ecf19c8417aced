#include "search/rankfusion.h"

#include <QHash>

#include <algorithm>
#include <cmath>

namespace kivo::RankFusion {

namespace {

constexpr double secondsPerDay = 86400.0;

struct Fused {
    LibraryItem item;
    double score = 0;
};

} // namespace

QList<LibraryItem> fuse(const QList<RankedList> &lists, double k)
{
    QHash<QString, qsizetype> slotById;
    QList<Fused> fused;
    for (const RankedList &list : lists) {
        for (qsizetype rank = 0; rank < list.items.size(); ++rank) {
            const LibraryItem &item = list.items.at(rank);
            const double contribution = list.weight / (k + double(rank));
            const auto found = slotById.constFind(item.id);
            if (found == slotById.constEnd()) {
                slotById.insert(item.id, fused.size());
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
    QList<LibraryItem> order;
    order.reserve(fused.size());
    for (Fused &entry : fused)
        order.append(std::move(entry.item));
    return order;
}

double useScore(const LibraryItem &item, double now, double halfLifeDays)
{
    if (item.openCount < 1 || !item.lastOpenedAt)
        return 0;
    const double ageDays = std::max(0.0, (now - *item.lastOpenedAt) / secondsPerDay);
    return double(item.openCount) * std::pow(2.0, ageDays / -halfLifeDays);
}

QList<LibraryItem> useList(const QList<LibraryItem> &candidates, double now, double halfLifeDays)
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
    QList<LibraryItem> list;
    list.reserve(scored.size());
    for (const Scored &entry : scored)
        list.append(candidates.at(entry.position));
    return list;
}

} // namespace kivo::RankFusion
