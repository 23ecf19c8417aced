#include "core/database.h"

#include "core/itemchangelog.h"
#include "core/migrator.h"
#include "core/schema.h"

#include <QSet>
#include <QStringList>

#include <sqlite3.h>

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

// The queues this thread is inside of, so that a nested Read or Write fails loudly instead
// of deadlocking on the queue's own lock.
thread_local QSet<const void *> t_heldQueues;

// Searches read thousands of rows; through a map of the file they skip copying every page from
// the system's cache into SQLite's own small one.
const QString mappedReads = QStringLiteral("PRAGMA mmap_size = 1073741824");
// A list sorted by a column without an index (a collection by its additions, the trash by its
// deletions) goes through SQLite's sorter, which otherwise writes every run past 2 MB to a file.
const QString sortsInMemory = QStringLiteral("PRAGMA temp_store = MEMORY");

QString lastError(sqlite3 *connection)
{
    return QString::fromUtf8(sqlite3_errmsg(connection));
}

} // namespace

DatabaseError::DatabaseError(int code, const QString &message, const QString &sql)
    : std::runtime_error(message.toStdString())
    , m_code(code)
    , m_message(message)
    , m_sql(sql)
{
}

// ---------------------------------------------------------------------------------------------
// Row

int ColumnCache::search(const char *column, sqlite3_stmt *statement) const
{
    for (size_t i = 0; i < m_entries.size(); ++i) {
        if (m_entries[i].first == column) {
            m_cursor = i + 1;
            return m_entries[i].second;
        }
    }
    int found = -1;
    const int count = sqlite3_column_count(statement);
    for (int i = 0; i < count; ++i) {
        if (std::strcmp(sqlite3_column_name(statement, i), column) == 0) {
            found = i;
            break;
        }
    }
    m_entries.emplace_back(column, found);
    m_cursor = m_entries.size();
    return found;
}

Row::Row(sqlite3_stmt *statement, const ColumnCache *columnCache)
    : m_statement(statement)
    , m_columnCache(columnCache)
{
}

void Row::throwMissing(const char *column)
{
    throw DatabaseError(SQLITE_ERROR, u"no such column in result: "_s + QString::fromUtf8(column));
}

int Row::columnCount() const
{
    return sqlite3_column_count(m_statement);
}

QString Row::columnName(int index) const
{
    return QString::fromUtf8(sqlite3_column_name(m_statement, index));
}

bool Row::isNull(int index) const
{
    return sqlite3_column_type(m_statement, index) == SQLITE_NULL;
}

QString Row::text(int index) const
{
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, index));
    if (!data)
        return {};
    return QString::fromUtf8(data, sqlite3_column_bytes(m_statement, index));
}

qint64 Row::integer(int index) const
{
    return sqlite3_column_int64(m_statement, index);
}

double Row::real(int index) const
{
    return sqlite3_column_double(m_statement, index);
}

QByteArray Row::blob(int index) const
{
    const auto *data = static_cast<const char *>(sqlite3_column_blob(m_statement, index));
    return QByteArray(data, sqlite3_column_bytes(m_statement, index));
}

QVariant Row::value(int index) const
{
    switch (sqlite3_column_type(m_statement, index)) {
    case SQLITE_INTEGER:
        return QVariant::fromValue(integer(index));
    case SQLITE_FLOAT:
        return QVariant::fromValue(real(index));
    case SQLITE_TEXT:
        return QVariant::fromValue(text(index));
    case SQLITE_BLOB:
        return QVariant::fromValue(blob(index));
    default:
        return {};
    }
}

std::optional<QString> Row::optionalText(const char *column) const
{
    const int index = require(column);
    if (isNull(index))
        return std::nullopt;
    return text(index);
}

std::optional<qint64> Row::optionalInteger(const char *column) const
{
    const int index = require(column);
    if (isNull(index))
        return std::nullopt;
    return integer(index);
}

std::optional<double> Row::optionalReal(const char *column) const
{
    const int index = require(column);
    if (isNull(index))
        return std::nullopt;
    return real(index);
}

bool Row::holds(const char *column, const std::optional<QString> &value) const
{
    const int index = require(column);
    if (!value)
        return isNull(index);
    // Only NULL has no text, which spares asking for the type: these checks run a hundred thousand
    // times per reload.
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, index));
    if (!data)
        return false;
    const qsizetype bytes = sqlite3_column_bytes(m_statement, index);
    // Equal texts have as many UTF-8 bytes as UTF-16 units only when they are plain ASCII, which
    // compares as Latin-1 at full speed; decoding UTF-8 letter by letter costs more than a fresh read.
    if (bytes == value->size()) {
        return QStringView(*value) == QLatin1StringView(data, bytes)
            && std::all_of(data, data + bytes, [](char c) { return (uchar(c) & 0x80) == 0; });
    }
    return QAnyStringView::equal(QStringView(*value), QUtf8StringView(data, bytes));
}

QByteArrayView Row::utf8(const char *column) const
{
    const int index = require(column);
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, index));
    return data ? QByteArrayView(data, sqlite3_column_bytes(m_statement, index)) : QByteArrayView();
}

bool Row::holds(const char *column, const std::optional<qint64> &value) const
{
    const int index = require(column);
    // NULL reads as 0: any other equal number is the value itself, without asking for the type.
    if (value && *value != 0)
        return *value == integer(index);
    if (isNull(index))
        return !value;
    return value && *value == integer(index);
}

bool Row::holds(const char *column, const std::optional<double> &value) const
{
    const int index = require(column);
    // NULL reads as 0: any other equal number is the value itself, without asking for the type.
    if (value && *value != 0)
        return *value == real(index);
    if (isNull(index))
        return !value;
    return value && *value == real(index);
}

std::optional<QByteArray> Row::optionalBlob(const char *column) const
{
    const int index = require(column);
    if (isNull(index))
        return std::nullopt;
    return blob(index);
}

// ---------------------------------------------------------------------------------------------
// Database

sqlite3_stmt *Database::compile(const QString &sql, bool persistent)
{
    const QByteArray utf8 = sql.toUtf8();
    sqlite3_stmt *statement = nullptr;
    const int rc = sqlite3_prepare_v3(m_connection, utf8.constData(), int(utf8.size()),
                                      persistent ? SQLITE_PREPARE_PERSISTENT : 0, &statement, nullptr);
    if (rc != SQLITE_OK)
        throw DatabaseError(rc, lastError(m_connection), sql);
    return statement;
}

Database::CachedStatement &Database::prepare(const QString &sql)
{
    if (auto *cached = m_statements.value(sql))
        return *cached;
    auto *entry = new CachedStatement{compile(sql, true), {}};
    m_statements.insert(sql, entry);
    return *entry;
}

void Database::bind(sqlite3_stmt *statement, const QVariantList &arguments, const QString &sql)
{
    const int expected = sqlite3_bind_parameter_count(statement);
    if (expected != arguments.size())
        throw DatabaseError(SQLITE_RANGE,
                            u"wrong number of arguments: %1 given, %2 expected"_s.arg(arguments.size()).arg(expected), sql);
    for (int i = 0; i < arguments.size(); ++i) {
        const QVariant &argument = arguments.at(i);
        const int position = i + 1;
        int rc = SQLITE_OK;
        if (!argument.isValid() || argument.isNull()) {
            rc = sqlite3_bind_null(statement, position);
        } else {
            switch (argument.typeId()) {
            case QMetaType::Bool:
                rc = sqlite3_bind_int64(statement, position, argument.toBool() ? 1 : 0);
                break;
            case QMetaType::Int:
            case QMetaType::UInt:
            case QMetaType::Long:
            case QMetaType::LongLong:
            case QMetaType::ULong:
            case QMetaType::ULongLong:
            case QMetaType::Short:
            case QMetaType::UShort:
                rc = sqlite3_bind_int64(statement, position, argument.toLongLong());
                break;
            case QMetaType::Double:
            case QMetaType::Float:
                rc = sqlite3_bind_double(statement, position, argument.toDouble());
                break;
            case QMetaType::QByteArray: {
                const QByteArray bytes = argument.toByteArray();
                rc = sqlite3_bind_blob64(statement, position, bytes.constData(), sqlite3_uint64(bytes.size()),
                                         SQLITE_TRANSIENT);
                break;
            }
            default: {
                const QByteArray utf8 = argument.toString().toUtf8();
                rc = sqlite3_bind_text64(statement, position, utf8.constData(), sqlite3_uint64(utf8.size()),
                                         SQLITE_TRANSIENT, SQLITE_UTF8);
                break;
            }
            }
        }
        if (rc != SQLITE_OK)
            throw DatabaseError(rc, lastError(m_connection), sql);
    }
}

void Database::forEach(const QString &sql, const QVariantList &arguments, const std::function<void(const Row &)> &visit)
{
    CachedStatement *use = &prepare(sql);
    // A cached statement still stepping belongs to an outer run of the same query (a visitor
    // that queries again, as a walk down a tree does): this run gets a statement of its own.
    CachedStatement own;
    if (sqlite3_stmt_busy(use->statement)) {
        own.statement = compile(sql, false);
        use = &own;
    }
    CachedStatement &cached = *use;
    sqlite3_stmt *statement = cached.statement;
    // Reset whatever happens, so that a thrown error never leaves the statement mid-step.
    struct Reset {
        sqlite3_stmt *statement;
        bool finalize;
        ~Reset()
        {
            if (finalize) {
                sqlite3_finalize(statement);
                return;
            }
            sqlite3_reset(statement);
            sqlite3_clear_bindings(statement);
        }
    } reset{statement, use == &own};
    bind(statement, arguments, sql);
    // A schema change re-prepares the statement underneath, so names resolve afresh per run.
    cached.columns.clear();
    const Row row(statement, &cached.columns);
    for (;;) {
        const int rc = sqlite3_step(statement);
        if (rc == SQLITE_ROW) {
            cached.columns.rewind();
            if (visit)
                visit(row);
            continue;
        }
        if (rc == SQLITE_DONE)
            break;
        throw DatabaseError(rc, lastError(m_connection), sql);
    }
}

void Database::execute(const QString &sql, const QVariantList &arguments)
{
    forEach(sql, arguments, nullptr);
}

void Database::executeScript(const QString &sql)
{
    char *message = nullptr;
    const int rc = sqlite3_exec(m_connection, sql.toUtf8().constData(), nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
        const QString text = message ? QString::fromUtf8(message) : lastError(m_connection);
        sqlite3_free(message);
        throw DatabaseError(rc, text, sql);
    }
}

QVariant Database::fetchScalar(const QString &sql, const QVariantList &arguments)
{
    QVariant result;
    bool first = true;
    forEach(sql, arguments, [&](const Row &row) {
        if (first)
            result = row.value(0);
        first = false;
    });
    return result;
}

QVariantList Database::fetchScalars(const QString &sql, const QVariantList &arguments)
{
    QVariantList results;
    forEach(sql, arguments, [&](const Row &row) { results.append(row.value(0)); });
    return results;
}

void Database::insertColumns(const char *table, const QVariantMap &columns, bool orReplace)
{
    QStringList names;
    QStringList marks;
    QVariantList values;
    for (auto it = columns.constBegin(); it != columns.constEnd(); ++it) {
        names.append(it.key());
        marks.append(u"?"_s);
        values.append(it.value());
    }
    const QString sql = (orReplace ? u"INSERT OR REPLACE INTO "_s : u"INSERT INTO "_s) + QString::fromUtf8(table)
        + u" ("_s + names.join(u", "_s) + u") VALUES ("_s + marks.join(u", "_s) + u")"_s;
    execute(sql, values);
}

bool Database::deleteByKey(const char *table, const QStringList &key, const QVariantMap &columns)
{
    QStringList terms;
    QVariantList values;
    for (const QString &column : key) {
        terms.append(column + u" = ?"_s);
        values.append(columns.value(column));
    }
    execute(u"DELETE FROM "_s + QString::fromUtf8(table) + u" WHERE "_s + terms.join(u" AND "_s), values);
    return changes() > 0;
}

qint64 Database::changes() const
{
    return sqlite3_changes64(m_connection);
}

qint64 Database::lastInsertRowId() const
{
    return sqlite3_last_insert_rowid(m_connection);
}

void Database::clearStatements()
{
    for (CachedStatement *cached : std::as_const(m_statements)) {
        sqlite3_finalize(cached->statement);
        delete cached;
    }
    m_statements.clear();
}

// ---------------------------------------------------------------------------------------------
// DatabaseQueue

DatabaseQueue::DatabaseQueue(const QString &path, sqlite3 *connection)
    : m_path(path)
    , m_connection(connection)
    , m_database(connection)
{
}

DatabaseQueue::~DatabaseQueue()
{
    m_database.clearStatements();
    sqlite3_close_v2(m_connection);
}

std::shared_ptr<DatabaseQueue> DatabaseQueue::openUnmigrated(const QString &path)
{
    sqlite3 *connection = nullptr;
    // The queue serialises every use, so SQLite's own connection mutex is not needed.
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int rc = sqlite3_open_v2(path.toUtf8().constData(), &connection, flags, nullptr);
    if (rc != SQLITE_OK) {
        const QString message = connection ? lastError(connection) : QString::fromUtf8(sqlite3_errstr(rc));
        sqlite3_close_v2(connection);
        throw DatabaseError(rc, message);
    }
    sqlite3_extended_result_codes(connection, 1);
    std::shared_ptr<DatabaseQueue> queue(new DatabaseQueue(path, connection));
    // Reads map the file rather than copy each page out of the system's cache into SQLite's small
    // one: a search that reads thousands of rows spent a third of its time in those copies.
    queue->barrier([](Database &db) {
        db.executeScript(u"PRAGMA foreign_keys = ON; "_s + mappedReads + u"; "_s + sortsInMemory);
    });
    return queue;
}

std::shared_ptr<DatabaseQueue> DatabaseQueue::open(const QString &path)
{
    auto queue = openUnmigrated(path);
    Migrator::migrate(*queue, libraryMigrations());
    // After the migrations, which may rebuild the item table the triggers watch.
    queue->m_itemChanges = std::make_unique<ItemChangeLog>();
    queue->barrier([&](Database &db) {
        queue->m_itemChanges->attach(db);
        db.m_itemChanges = queue->m_itemChanges.get();
    });
    return queue;
}

void DatabaseQueue::releaseMappedPages()
{
    // A new limit unmaps the file; setting it back maps it again, empty, on the next read.
    barrier([](Database &db) { db.executeScript(u"PRAGMA mmap_size = 0; "_s + mappedReads); });
}

DatabaseQueue::Scope::Scope(DatabaseQueue &queue)
    : m_queue(queue)
{
    if (t_heldQueues.contains(&queue))
        throw DatabaseError(SQLITE_MISUSE, u"nested database access on the same queue"_s);
    queue.m_mutex.lock();
    t_heldQueues.insert(&queue);
}

DatabaseQueue::Scope::~Scope()
{
    t_heldQueues.remove(&m_queue);
    m_queue.m_mutex.unlock();
}

void DatabaseQueue::beginRead()
{
    m_database.execute(u"PRAGMA query_only = 1"_s);
    try {
        m_database.execute(u"BEGIN DEFERRED TRANSACTION"_s);
    } catch (...) {
        m_database.execute(u"PRAGMA query_only = 0"_s);
        throw;
    }
}

void DatabaseQueue::endRead(bool succeeded)
{
    // A read changes nothing, so ending it either way is the same; a rollback also clears
    // a statement the closure left mid-way.
    if (!sqlite3_get_autocommit(m_connection)) {
        if (succeeded)
            sqlite3_exec(m_connection, "COMMIT", nullptr, nullptr, nullptr);
        if (!sqlite3_get_autocommit(m_connection))
            sqlite3_exec(m_connection, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    sqlite3_exec(m_connection, "PRAGMA query_only = 0", nullptr, nullptr, nullptr);
}

void DatabaseQueue::beginWrite()
{
    m_writesBegun.fetch_add(1, std::memory_order_release);
    m_database.execute(u"BEGIN IMMEDIATE TRANSACTION"_s);
}

void DatabaseQueue::commitWrite()
{
    try {
        m_database.execute(u"COMMIT TRANSACTION"_s);
    } catch (...) {
        rollbackWrite();
        throw;
    }
}

void DatabaseQueue::rollbackWrite()
{
    if (!sqlite3_get_autocommit(m_connection))
        sqlite3_exec(m_connection, "ROLLBACK", nullptr, nullptr, nullptr);
}

} // namespace kivo
