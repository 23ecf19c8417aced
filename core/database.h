#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace kivo {

class ItemChangeLog;

/** An error from SQLite or from the layer over it, carried as a thrown value up to the Store boundary. */
class DatabaseError : public std::runtime_error
{
public:
    DatabaseError(int code, const QString &message, const QString &sql = {});

    [[nodiscard]] int code() const { return m_code; }
    [[nodiscard]] QString message() const { return m_message; }
    [[nodiscard]] QString sql() const { return m_sql; }

private:
    int m_code;
    QString m_message;
    QString m_sql;
};

/**
 * Column positions resolved by name once per run of a statement. A decoder asks for the same names
 * in the same order on every row, so the next expected entry is tried first and a lookup is
 * usually one pointer comparison.
 */
class ColumnCache
{
public:
    void clear()
    {
        m_entries.clear();
        m_cursor = 0;
    }
    void rewind() const { m_cursor = 0; }
    // Inline: a reload of a long list asks millions of times, nearly always the expected entry.
    [[nodiscard]] int find(const char *column, sqlite3_stmt *statement) const
    {
        if (m_cursor < m_entries.size() && m_entries[m_cursor].first == column)
            return m_entries[m_cursor++].second;
        return search(column, statement);
    }

private:
    int search(const char *column, sqlite3_stmt *statement) const;

    mutable std::vector<std::pair<const char *, int>> m_entries;
    mutable size_t m_cursor = 0;
};

/** One result row of a running statement, read by column name or index. Valid until the next step. */
class Row
{
public:
    explicit Row(sqlite3_stmt *statement, const ColumnCache *columnCache);

    /** Index of a column by name, or -1. Names are cached by address, so pass string literals. */
    [[nodiscard]] int indexOf(const char *column) const { return m_columnCache->find(column, m_statement); }
    [[nodiscard]] int columnCount() const;
    [[nodiscard]] QString columnName(int index) const;

    [[nodiscard]] bool isNull(int index) const;
    [[nodiscard]] QString text(int index) const;
    [[nodiscard]] qint64 integer(int index) const;
    [[nodiscard]] double real(int index) const;
    [[nodiscard]] QByteArray blob(int index) const;
    [[nodiscard]] QVariant value(int index) const;

    [[nodiscard]] bool isNull(const char *column) const { return isNull(require(column)); }
    [[nodiscard]] QString text(const char *column) const { return text(require(column)); }
    [[nodiscard]] qint64 integer(const char *column) const { return integer(require(column)); }
    [[nodiscard]] double real(const char *column) const { return real(require(column)); }
    [[nodiscard]] bool boolean(const char *column) const { return integer(require(column)) != 0; }
    [[nodiscard]] QByteArray blob(const char *column) const { return blob(require(column)); }
    [[nodiscard]] QVariant value(const char *column) const { return value(require(column)); }

    [[nodiscard]] std::optional<QString> optionalText(const char *column) const;
    [[nodiscard]] std::optional<qint64> optionalInteger(const char *column) const;
    [[nodiscard]] std::optional<double> optionalReal(const char *column) const;
    [[nodiscard]] std::optional<QByteArray> optionalBlob(const char *column) const;

    /**
     * Whether the column holds this value, NULL standing for nothing, the same as the matching
     * read would give; text is compared in place, without making a string.
     */
    [[nodiscard]] bool holds(const char *column, const std::optional<QString> &value) const;
    [[nodiscard]] bool holds(const char *column, const std::optional<qint64> &value) const;
    [[nodiscard]] bool holds(const char *column, const std::optional<double> &value) const;
    /** The column's text as SQLite holds it (UTF-8), valid until the next row. */
    [[nodiscard]] QByteArrayView utf8(const char *column) const;

private:
    int require(const char *column) const
    {
        const int index = indexOf(column);
        if (index < 0)
            throwMissing(column);
        return index;
    }
    [[noreturn]] static void throwMissing(const char *column);

    sqlite3_stmt *m_statement;
    const ColumnCache *m_columnCache;
};

/**
 * The connection as seen from inside a Read or Write closure: statements with positional
 * arguments and fetches that decode rows by column name.
 *
 * Arguments bind by type: a null or invalid QVariant as NULL, bool as 0 or 1, integers as
 * 64-bit integers, double, QString as text and QByteArray as blob.
 */
class Database
{
public:
    void execute(const QString &sql, const QVariantList &arguments = {});
    /** Runs several statements without arguments, as written (schema steps). */
    void executeScript(const QString &sql);

    /** Calls `visit` with each row of the result. */
    void forEach(const QString &sql, const QVariantList &arguments, const std::function<void(const Row &)> &visit);

    template<typename Record>
    QList<Record> fetchAll(const QString &sql, const QVariantList &arguments = {})
    {
        QList<Record> records;
        forEach(sql, arguments, [&](const Row &row) { records.append(Record::fromRow(row)); });
        return records;
    }

    template<typename Record>
    std::optional<Record> fetchOne(const QString &sql, const QVariantList &arguments = {})
    {
        std::optional<Record> record;
        forEach(sql, arguments, [&](const Row &row) {
            if (!record)
                record = Record::fromRow(row);
        });
        return record;
    }

    /** The first column of the first row, or an invalid QVariant when there is no row. */
    QVariant fetchScalar(const QString &sql, const QVariantList &arguments = {});
    /** The first column of every row. */
    QVariantList fetchScalars(const QString &sql, const QVariantList &arguments = {});

    /** Inserts the record into its table ("INSERT"), or replaces the row with the same key. */
    template<typename Record> void insert(const Record &record) { insertColumns(Record::tableName, record.columns(), false); }
    template<typename Record> void replace(const Record &record) { insertColumns(Record::tableName, record.columns(), true); }
    /** Deletes the row with the record's primary key; returns whether a row went. */
    template<typename Record> bool remove(const Record &record)
    {
        return deleteByKey(Record::tableName, Record::primaryKey(), record.columns());
    }

    [[nodiscard]] qint64 changes() const;
    [[nodiscard]] qint64 lastInsertRowId() const;
    [[nodiscard]] sqlite3 *handle() const { return m_connection; }
    /** The log of items written on this connection, when the library's queue keeps one. */
    [[nodiscard]] const ItemChangeLog *itemChanges() const { return m_itemChanges; }

private:
    friend class DatabaseQueue;
    explicit Database(sqlite3 *connection) : m_connection(connection) {}

    void insertColumns(const char *table, const QVariantMap &columns, bool orReplace);
    bool deleteByKey(const char *table, const QStringList &key, const QVariantMap &columns);

    struct CachedStatement {
        sqlite3_stmt *statement = nullptr;
        ColumnCache columns;
    };
    sqlite3_stmt *compile(const QString &sql, bool persistent);
    CachedStatement &prepare(const QString &sql);
    void bind(sqlite3_stmt *statement, const QVariantList &arguments, const QString &sql);
    void clearStatements();

    sqlite3 *m_connection;
    QHash<QString, CachedStatement *> m_statements;
    const ItemChangeLog *m_itemChanges = nullptr;
};

/**
 * The serial handle of a library database: exactly one SQLite connection, and one queue in
 * front of it. Read and Write may be called from any thread; they run one at a time and block
 * the caller until the closure has finished.
 */
class DatabaseQueue
{
public:
    /** Opens (creating if missing) the file, turns foreign keys on and runs the library's migrations. Throws DatabaseError. */
    static std::shared_ptr<DatabaseQueue> open(const QString &path);
    /** Opens without migrating; for tests and tools that bring their own migration list. */
    static std::shared_ptr<DatabaseQueue> openUnmigrated(const QString &path);

    ~DatabaseQueue();
    DatabaseQueue(const DatabaseQueue &) = delete;
    DatabaseQueue &operator=(const DatabaseQueue &) = delete;

    [[nodiscard]] QString path() const { return m_path; }

    /** Runs the closure read-only (query_only, one deferred transaction). */
    template<typename Closure>
    auto read(Closure &&closure) -> std::invoke_result_t<Closure, Database &>
    {
        using Result = std::invoke_result_t<Closure, Database &>;
        Scope scope(*this);
        beginRead();
        try {
            if constexpr (std::is_void_v<Result>) {
                closure(m_database);
                endRead(true);
            } else {
                Result result = closure(m_database);
                endRead(true);
                return result;
            }
        } catch (...) {
            endRead(false);
            throw;
        }
    }

    /** Runs the closure in one transaction: commit when it returns, roll back when it throws. */
    template<typename Closure>
    auto write(Closure &&closure) -> std::invoke_result_t<Closure, Database &>
    {
        using Result = std::invoke_result_t<Closure, Database &>;
        Scope scope(*this);
        beginWrite();
        try {
            if constexpr (std::is_void_v<Result>) {
                closure(m_database);
                commitWrite();
            } else {
                Result result = closure(m_database);
                commitWrite();
                return result;
            }
        } catch (...) {
            rollbackWrite();
            throw;
        }
    }

    /**
     * Lets go of the library file's pages mapped into the process. Reads go through a map of the
     * file, and every page a full scan touched stays resident until the map is made anew; the
     * pages stay in the system's file cache, so the next read maps them back cheaply.
     */
    void releaseMappedPages();

    /** Runs the closure on the queue with no transaction around it (the migrator's own steps). */
    template<typename Closure>
    auto barrier(Closure &&closure) -> std::invoke_result_t<Closure, Database &>
    {
        Scope scope(*this);
        return closure(m_database);
    }

    /**
     * How many writes (`write`) have begun on this queue, read without waiting for it: a reader that saw
     * the same number before its read and now knows that nothing it read has changed since, even
     * while a long read on another thread holds the queue.
     */
    [[nodiscard]] quint64 writesBegun() const { return m_writesBegun.load(std::memory_order_acquire); }

private:
    explicit DatabaseQueue(const QString &path, sqlite3 *connection);

    /** Holds the queue for one closure and refuses nesting on the same queue. */
    class Scope
    {
    public:
        explicit Scope(DatabaseQueue &queue);
        ~Scope();

    private:
        DatabaseQueue &m_queue;
    };

    void beginRead();
    void endRead(bool succeeded);
    void beginWrite();
    void commitWrite();
    void rollbackWrite();

    QString m_path;
    sqlite3 *m_connection;
    Database m_database;
    std::unique_ptr<ItemChangeLog> m_itemChanges;
    std::mutex m_mutex;
    std::atomic<quint64> m_writesBegun{0};
};

} // namespace kivo
