#pragma once

#include "core/records.h"

#include <QHash>
#include <QList>
#include <QStringView>

namespace kivo {

class Database;
class Row;

/**
 * Rows already in memory that a new read of the library may meet again. A row read as one of
 * them is taken from here rather than decoded: the two lists then share its strings, so reading a
 * hundred thousand rows that did not change costs comparisons instead of allocations, and freeing
 * the older list frees little.
 *
 * Reads of the same list meet its rows in order, so the row after the last one found is tried
 * first; an item added, removed or moved is found again by its id.
 */
class KnownRows
{
public:
    KnownRows() = default;
    explicit KnownRows(QList<LibraryItem> rows);

    /** The known row that `row` decodes to, field for field, or null. */
    [[nodiscard]] const LibraryItem *match(const Row &row);

    [[nodiscard]] const QList<LibraryItem> &rows() const { return m_rows; }
    /** Hands the rows back, for the caller to free where it suits it. */
    [[nodiscard]] QList<LibraryItem> takeRows();

private:
    qsizetype indexOf(const Row &row);

    QList<LibraryItem> m_rows;
    qsizetype m_next = 0;
    // Built at the first row that is not where the last one left off: views into `m_rows`' ids.
    QHash<QStringView, qsizetype> m_byId;
    bool m_indexed = false;
};

/** Reads a query's rows, taking from `known` those it holds unchanged. */
QList<LibraryItem> readItemRows(Database &db, const QString &sql, const QVariantList &arguments, qsizetype expected,
    KnownRows &known);

} // namespace kivo
