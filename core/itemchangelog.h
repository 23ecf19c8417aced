#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QSet>
#include <QString>
#include <QtGlobal>

#include <optional>
#include <vector>

namespace kivo {

class Database;

/**
 * The ids of items written on this connection, in the order written. A list read earlier is
 * brought up to date by reading again only the items written since, instead of every row.
 *
 * Temporary triggers note each insert, update and delete of an item; they live with the
 * connection, so the library file never holds them. A write that rolls back is noted all the
 * same, which costs a needless read and nothing more. A write through another connection is not
 * noted, but it changes SQLite's data version, and a change of the schema its version: a mark
 * taken before either no longer counts.
 */
class ItemChangeLog
{
public:
    /** A point in the log, and the state of the file as seen from this connection then. */
    struct Mark {
        quint64 position = 0;
        qint64 dataVersion = 0;
        qint64 schemaVersion = 0;

        bool operator==(const Mark &) const = default;
    };

    ItemChangeLog() = default;
    ItemChangeLog(const ItemChangeLog &) = delete;
    ItemChangeLog &operator=(const ItemChangeLog &) = delete;

    /** Starts noting writes on the connection. Call on the connection's queue, after migrations. */
    void attach(Database &db);

    /** Where the log stands now. Call inside a read or write on the queue. */
    [[nodiscard]] Mark mark(Database &db) const;

    /**
     * The ids of items written since `mark`, or nullopt when that cannot be told: the log was cut
     * short since, or another connection wrote to the file.
     */
    [[nodiscard]] std::optional<QSet<QString>> changedSince(Database &db, const Mark &mark) const;

    /** Notes an item written; the triggers call it, on the queue. */
    void note(QByteArrayView id);

    /** How many ids the log holds before it forgets them all: a long import is read afresh anyway. */
    static constexpr qsizetype capacity = 20000;

private:
    /** The file's data and schema versions as this connection sees them, in a mark at `position`. */
    static Mark versions(Database &db, quint64 position);

    std::vector<QByteArray> m_ids;
    // The position of m_ids' first entry.
    quint64 m_base = 0;
};

} // namespace kivo
