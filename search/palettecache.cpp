#include "search/palettecache.h"

#include "core/database.h"
#include "search/colourmatcher.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace kivo {

PaletteCache::State PaletteCache::stateOf(Database &db)
{
    sqlite3 *connection = db.handle();
    // The data version moves when another connection commits; this connection's own writes show
    // in its count of changed rows instead.
    return State{QByteArray(sqlite3_db_filename(connection, "main")), connection,
        sqlite3_total_changes64(connection), db.fetchScalar(u"PRAGMA data_version"_s).toLongLong()};
}

void PaletteCache::fill(Database &db)
{
    m_entries.clear();
    m_otherForms.clear();
    db.forEach(u"SELECT rowid, id, addedAt, openCount, lastOpenedAt, colors FROM item "
               "WHERE deletedAt IS NULL AND colors IS NOT NULL ORDER BY rowid"_s,
        {}, [&](const Row &row) {
            Entry entry{SearchHit::fromRow(row), 0, true};
            const QString colors = row.text("colors");
            if (const std::optional<quint64> mask = ColourMatcher::swatchMask(colors)) {
                entry.swatches = *mask;
            } else {
                entry.compact = false;
                m_otherForms.insert(m_entries.size(), colors);
            }
            m_entries.append(std::move(entry));
        });
    m_entries.squeeze();
    ++m_fills;
}

QList<SearchHit> PaletteCache::matching(Database &db, const ColourMatcher &matcher)
{
    const std::lock_guard lock(m_mutex);
    const State now = stateOf(db);
    if (m_state != now) {
        fill(db);
        m_state = now;
    }
    QList<SearchHit> found;
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        const Entry &entry = m_entries.at(i);
        if (entry.compact ? matcher.matchesMask(entry.swatches) : matcher.matches(m_otherForms.value(i)))
            found.append(entry.hit);
    }
    return found;
}

int PaletteCache::fills() const
{
    const std::lock_guard lock(m_mutex);
    return m_fills;
}

} // namespace kivo
