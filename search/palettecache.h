#pragma once

#include "search/searchhit.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <mutex>
#include <optional>

namespace kivo {

class ColourMatcher;
class Database;

/**
 * The palettes of the live items, read once and kept, so that a colour search tests a few bits
 * per item instead of reading and parsing every stored palette. It reads them again whenever the
 * database has changed since (a write on this connection or a commit on another), so it never
 * answers from an older state. Safe to use from several threads; one search reads at a time.
 */
class PaletteCache
{
public:
    /** The live items whose palette matches, in the table's (rowid) order, each as a SearchHit. */
    [[nodiscard]] QList<SearchHit> matching(Database &db, const ColourMatcher &matcher);

    /** How many times the palettes have been read; for tests and measurements. */
    [[nodiscard]] int fills() const;

private:
    struct Entry {
        SearchHit hit;
        quint64 swatches = 0;
        bool compact = true;
    };
    /** What the database looked like when the palettes were read. */
    struct State {
        QByteArray file;
        const void *connection = nullptr;
        qint64 ownChanges = 0;
        qint64 dataVersion = 0;
        bool operator==(const State &) const = default;
    };

    [[nodiscard]] static State stateOf(Database &db);
    void fill(Database &db);

    mutable std::mutex m_mutex;
    std::optional<State> m_state;
    QList<Entry> m_entries;
    /** The stored texts not in the compact form, by entry, for the general match; few or none. */
    QHash<qsizetype, QString> m_otherForms;
    int m_fills = 0;
};

} // namespace kivo
