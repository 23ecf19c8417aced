#include "core/itemchangelog.h"

#include "core/database.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr const char *noteFunction = "kivo_note_item_written";

void noteItemWritten(sqlite3_context *context, int, sqlite3_value **arguments)
{
    auto *log = static_cast<ItemChangeLog *>(sqlite3_user_data(context));
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(arguments[0]));
    if (text)
        log->note(QByteArrayView(text, sqlite3_value_bytes(arguments[0])));
    sqlite3_result_null(context);
}

} // namespace

void ItemChangeLog::attach(Database &db)
{
    const int rc = sqlite3_create_function_v2(
        db.handle(), noteFunction, 1, SQLITE_UTF8, this, noteItemWritten, nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK)
        throw DatabaseError(rc, u"could not register the item change function"_s);
    const QString call = QString::fromLatin1(noteFunction);
    // An update that changes an item's id is noted under both ids.
    db.executeScript(u"CREATE TEMP TRIGGER IF NOT EXISTS itemWrittenInsert AFTER INSERT ON main.item BEGIN "
                     "SELECT %1(new.id); END; "
                     "CREATE TEMP TRIGGER IF NOT EXISTS itemWrittenUpdate AFTER UPDATE ON main.item BEGIN "
                     "SELECT %1(new.id); SELECT %1(old.id) WHERE old.id IS NOT new.id; END; "
                     "CREATE TEMP TRIGGER IF NOT EXISTS itemWrittenDelete AFTER DELETE ON main.item BEGIN "
                     "SELECT %1(old.id); END;"_s.arg(call));
}

ItemChangeLog::Mark ItemChangeLog::mark(Database &db) const
{
    return versions(db, m_base + m_ids.size());
}

std::optional<QSet<QString>> ItemChangeLog::changedSince(Database &db, const Mark &mark) const
{
    const quint64 end = m_base + m_ids.size();
    if (mark.position < m_base || mark.position > end || versions(db, mark.position) != mark)
        return std::nullopt;
    QSet<QString> ids;
    for (auto at = m_ids.cbegin() + qsizetype(mark.position - m_base); at != m_ids.cend(); ++at)
        ids.insert(QString::fromUtf8(*at));
    return ids;
}

void ItemChangeLog::note(QByteArrayView id)
{
    if (qsizetype(m_ids.size()) >= capacity) {
        m_base += m_ids.size();
        m_ids.clear();
    }
    m_ids.emplace_back(id.toByteArray());
}

ItemChangeLog::Mark ItemChangeLog::versions(Database &db, quint64 position)
{
    Mark mark{position};
    db.forEach(u"SELECT d.data_version, s.schema_version FROM pragma_data_version d, pragma_schema_version s"_s, {},
        [&](const Row &row) {
            mark.dataVersion = row.integer(0);
            mark.schemaVersion = row.integer(1);
        });
    return mark;
}

} // namespace kivo
