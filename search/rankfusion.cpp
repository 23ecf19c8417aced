#include "search/rankfusion.h"

namespace kivo::RankFusion {

namespace {

constexpr double secondsPerDay = 86400.0;

} // namespace

double useScore(qint64 openCount, std::optional<double> lastOpenedAt, double now, double halfLifeDays)
{
    if (openCount < 1 || !lastOpenedAt)
        return 0;
    const double ageDays = std::max(0.0, (now - *lastOpenedAt) / secondsPerDay);
    return double(openCount) * std::pow(2.0, ageDays / -halfLifeDays);
}

} // namespace kivo::RankFusion
