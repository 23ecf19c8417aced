#pragma once

#include <QString>

#include <optional>

namespace kivo {

class Row;

/**
 * A found item as the rankings need it: its row, id, time of adding and openings, read without
 * the rest of its columns, so that a search decodes whole rows only for what it finally shows.
 */
struct SearchHit {
    qint64 rowid = 0;
    QString id;
    double addedAt = 0;
    qint64 openCount = 0;
    std::optional<double> lastOpenedAt;

    /** The columns `rowid`, `id`, `addedAt`, `openCount` and `lastOpenedAt` of `row`. */
    [[nodiscard]] static SearchHit fromRow(const Row &row);
};

} // namespace kivo
