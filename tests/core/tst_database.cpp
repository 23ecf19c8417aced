#include "core/database.h"
#include "core/records.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QTest>

#include <sqlite3.h>

#include <atomic>
#include <future>
#include <thread>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseError;
using kivo::DatabaseQueue;

namespace {

/** A second, plain connection on the same file, standing for another process. */
struct RawConnection {
    sqlite3 *db = nullptr;
    explicit RawConnection(const QString &path) { sqlite3_open(path.toUtf8().constData(), &db); }
    ~RawConnection() { sqlite3_close(db); }
    int exec(const char *sql) { return sqlite3_exec(db, sql, nullptr, nullptr, nullptr); }
    qint64 count(const char *sql)
    {
        sqlite3_stmt *statement = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
        const qint64 value = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : -1;
        sqlite3_finalize(statement);
        return value;
    }
};

int primaryCode(const DatabaseError &error)
{
    return error.code() & 0xff;
}

} // namespace

/** The serial database handle: transactions, read-only scopes, binding, threads and files. */
class TestDatabase : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    QString m_path;
    std::shared_ptr<DatabaseQueue> m_queue;

    void insertNote(Database &db, const QString &title)
    {
        db.execute(u"INSERT INTO item (id, kind, title, createdAt, addedAt, modifiedAt) VALUES (?, 'text', ?, 1, 1, 1)"_s,
                   {kivo::newIdentifier(), title});
    }
    qint64 itemCount() { return m_queue->read([](Database &db) { return db.fetchScalar(u"SELECT COUNT(*) FROM item"_s).toLongLong(); }); }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        QDir().mkpath(m_sandbox->libraryRoot());
        m_path = m_sandbox->libraryRoot() + u"/library.sqlite"_s;
        m_queue = DatabaseQueue::open(m_path);
    }

    void cleanup()
    {
        m_queue.reset();
        m_sandbox.reset();
    }

    void readIsQueryOnlyInOneDeferredTransaction()
    {
        m_queue->read([&](Database &db) {
            QCOMPARE(db.fetchScalar(u"PRAGMA query_only"_s).toLongLong(), 1);
            QVERIFY(!sqlite3_get_autocommit(db.handle()));
            QCOMPARE(db.fetchScalar(u"SELECT COUNT(*) FROM item"_s).toLongLong(), 0);
            // Deferred: holding only a shared lock, another connection may still reserve the file.
            RawConnection other(m_path);
            QCOMPARE(other.exec("BEGIN IMMEDIATE"), SQLITE_OK);
            other.exec("ROLLBACK");
            try {
                insertNote(db, u"inside a read"_s);
                QFAIL("a write inside Read succeeded");
            } catch (const DatabaseError &error) {
                QCOMPARE(primaryCode(error), SQLITE_READONLY);
            }
        });
        QCOMPARE(itemCount(), 0);
        // The scope ends with the closure: writes work again afterwards.
        m_queue->write([&](Database &db) { insertNote(db, u"after"_s); });
        QCOMPARE(itemCount(), 1);
    }

    void writeCommitsOrRollsBack()
    {
        m_queue->write([&](Database &db) {
            QVERIFY(!sqlite3_get_autocommit(db.handle()));
            insertNote(db, u"one"_s);
            insertNote(db, u"two"_s);
        });
        QCOMPARE(RawConnection(m_path).count("SELECT COUNT(*) FROM item"), 2);

        QVERIFY_THROWS_EXCEPTION(std::logic_error, m_queue->write([&](Database &db) {
            insertNote(db, u"three"_s);
            insertNote(db, u"four"_s);
            throw std::logic_error("stop half-way");
        }));
        // A failing statement in the middle counts the same as a thrown error.
        QVERIFY_THROWS_EXCEPTION(DatabaseError, m_queue->write([&](Database &db) {
            insertNote(db, u"five"_s);
            db.execute(u"INSERT INTO item (id, kind, createdAt, addedAt, modifiedAt) VALUES (NULL, NULL, 1, 1, 1)"_s);
        }));
        QCOMPARE(itemCount(), 2);
        QCOMPARE(RawConnection(m_path).count("SELECT COUNT(*) FROM item"), 2);
    }

    void foreignKeysAreOn()
    {
        QCOMPARE(m_queue->read([](Database &db) { return db.fetchScalar(u"PRAGMA foreign_keys"_s).toLongLong(); }), 1);
        try {
            m_queue->write([](Database &db) {
                db.execute(u"INSERT INTO itemCollection (itemId, collectionId, addedAt) VALUES ('nope', 'none', 1)"_s);
            });
            QFAIL("a link to missing rows was accepted");
        } catch (const DatabaseError &error) {
            QCOMPARE(primaryCode(error), SQLITE_CONSTRAINT);
        }
    }

    void noWriteAheadLogFiles()
    {
        const auto sideFiles = [&] {
            return QDir(m_sandbox->libraryRoot()).entryList({u"*-wal"_s, u"*-shm"_s}, QDir::Files | QDir::Hidden);
        };
        QCOMPARE(m_queue->read([](Database &db) { return db.fetchScalar(u"PRAGMA journal_mode"_s).toString(); }),
                 u"delete"_s);
        m_queue->write([&](Database &db) {
            insertNote(db, u"in flight"_s);
            QVERIFY(sideFiles().isEmpty());
        });
        m_queue->read([&](Database &db) {
            db.fetchScalar(u"SELECT COUNT(*) FROM item"_s);
            QVERIFY(sideFiles().isEmpty());
        });
        QVERIFY(sideFiles().isEmpty());
        QVERIFY(!QFileInfo::exists(m_path + u"-journal"_s));
    }

    void nestedAccessIsRefused_data()
    {
        QTest::addColumn<bool>("outerWrites");
        QTest::addColumn<bool>("innerWrites");
        QTest::newRow("read in read") << false << false;
        QTest::newRow("write in read") << false << true;
        QTest::newRow("read in write") << true << false;
        QTest::newRow("write in write") << true << true;
    }

    void nestedAccessIsRefused()
    {
        QFETCH(bool, outerWrites);
        QFETCH(bool, innerWrites);
        // Run away from the test thread, so that a deadlock shows as a failure, not a hang.
        auto outcome = std::async(std::launch::async, [&]() -> int {
            const auto inner = [&] {
                if (innerWrites)
                    m_queue->write([&](Database &db) { insertNote(db, u"inner"_s); });
                else
                    m_queue->read([](Database &db) { db.fetchScalar(u"SELECT 1"_s); });
            };
            try {
                if (outerWrites)
                    m_queue->write([&](Database &db) { insertNote(db, u"outer"_s); inner(); });
                else
                    m_queue->read([&](Database &) { inner(); });
            } catch (const DatabaseError &error) {
                return primaryCode(error);
            }
            return SQLITE_OK;
        });
        if (outcome.wait_for(std::chrono::seconds(30)) != std::future_status::ready)
            qFatal("nested database access deadlocked");
        QCOMPARE(outcome.get(), SQLITE_MISUSE);
        // The outer write was undone with the refusal, and the queue is free again.
        QCOMPARE(itemCount(), 0);
        m_queue->write([&](Database &db) { insertNote(db, u"afterwards"_s); });
        QCOMPARE(itemCount(), 1);
    }

    void callsFromThreadsAreSerialised()
    {
        m_queue->write([](Database &db) { db.execute(u"CREATE TABLE counter (n INTEGER NOT NULL)"_s); db.execute(u"INSERT INTO counter VALUES (0)"_s); });
        std::atomic<int> inside{0};
        std::atomic<int> overlap{0};
        const auto increment = [&] {
            for (int i = 0; i < 50; ++i) {
                m_queue->write([&](Database &db) {
                    if (inside.fetch_add(1) != 0)
                        ++overlap;
                    // Read, pause, write back: an unserialised neighbour would lose updates here.
                    const qint64 n = db.fetchScalar(u"SELECT n FROM counter"_s).toLongLong();
                    std::this_thread::yield();
                    db.execute(u"UPDATE counter SET n = ?"_s, {n + 1});
                    inside.fetch_sub(1);
                });
                m_queue->read([&](Database &db) {
                    if (inside.fetch_add(1) != 0)
                        ++overlap;
                    db.fetchScalar(u"SELECT n FROM counter"_s);
                    inside.fetch_sub(1);
                });
            }
        };
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back(increment);
        for (auto &thread : threads)
            thread.join();
        QCOMPARE(overlap.load(), 0);
        QCOMPARE(m_queue->read([](Database &db) { return db.fetchScalar(u"SELECT n FROM counter"_s).toLongLong(); }), 200);
    }

    void sameQueryInsideItsOwnVisitor()
    {
        // A walk down the collection tree runs the children query again for each child.
        m_queue->write([](Database &db) {
            db.executeScript(u"INSERT INTO collection (id, parentId, name, createdAt, modifiedAt) VALUES "
                             "('a', NULL, 'A', 1, 1), ('a1', 'a', 'A1', 1, 1), ('a1x', 'a1', 'A1x', 1, 1), "
                             "('a2', 'a', 'A2', 1, 1), ('b', NULL, 'B', 1, 1), ('b1', 'b', 'B1', 1, 1)"_s);
        });
        const QStringList walked = m_queue->read([](Database &db) {
            QStringList names;
            std::function<void(const QVariant &, int)> walk = [&](const QVariant &parent, int depth) {
                db.forEach(u"SELECT id, name FROM collection WHERE parentId IS ? ORDER BY name"_s, {parent},
                           [&](const kivo::Row &row) {
                               names.append(QString(depth, u' ') + row.text("name"));
                               walk(row.text("id"), depth + 1);
                           });
            };
            walk(QVariant(), 0);
            return names;
        });
        QCOMPARE(walked, (QStringList{u"A"_s, u" A1"_s, u"  A1x"_s, u" A2"_s, u"B"_s, u" B1"_s}));
    }

    void openingInAMissingFolderFails()
    {
        const QString folder = m_sandbox->path() + u"/not-there"_s;
        QVERIFY_THROWS_EXCEPTION(DatabaseError, DatabaseQueue::open(folder + u"/library.sqlite"_s));
        QVERIFY(!QFileInfo::exists(folder));
    }

    void argumentsBindByType_data()
    {
        QTest::addColumn<QVariant>("argument");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("quoted");
        QTest::newRow("text") << QVariant(u"héllo 🌅"_s) << u"text"_s << u"'héllo 🌅'"_s;
        QTest::newRow("empty text") << QVariant(u""_s) << u"text"_s << u"''"_s;
        QTest::newRow("int") << QVariant(42) << u"integer"_s << u"42"_s;
        QTest::newRow("int64") << QVariant(qint64(1) << 40) << u"integer"_s << u"1099511627776"_s;
        QTest::newRow("negative") << QVariant(qint64(-7)) << u"integer"_s << u"-7"_s;
        QTest::newRow("unsigned") << QVariant(4000000000u) << u"integer"_s << u"4000000000"_s;
        QTest::newRow("double") << QVariant(1.5) << u"real"_s << u"1.5"_s;
        QTest::newRow("blob") << QVariant(QByteArray("\x00\x01\xff", 3)) << u"blob"_s << u"X'0001FF'"_s;
        QTest::newRow("empty blob") << QVariant(QByteArray("")) << u"blob"_s << u"X''"_s;
        QTest::newRow("null") << QVariant() << u"null"_s << u"NULL"_s;
        QTest::newRow("true") << QVariant(true) << u"integer"_s << u"1"_s;
        QTest::newRow("false") << QVariant(false) << u"integer"_s << u"0"_s;
    }

    void argumentsBindByType()
    {
        QFETCH(QVariant, argument);
        QFETCH(QString, type);
        QFETCH(QString, quoted);
        const auto [gotType, gotQuoted] = m_queue->read([&](Database &db) {
            QString t;
            QString q;
            db.forEach(u"SELECT typeof(?1), quote(?1)"_s, {argument}, [&](const kivo::Row &row) {
                t = row.text(0);
                q = row.text(1);
            });
            return std::pair{t, q};
        });
        QCOMPARE(gotType, type);
        QCOMPARE(gotQuoted, quoted);
    }

    void recordsBindOptionalsAsNullAndBooleansAsIntegers()
    {
        kivo::LibraryItem item;
        item.id = kivo::newIdentifier();
        item.kind = u"link"_s;
        item.favourite = true;
        item.createdAt = item.addedAt = item.modifiedAt = 1.25;
        m_queue->write([&](Database &db) { db.insert(item); });
        const QStringList stored = m_queue->read([&](Database &db) {
            QStringList values;
            db.forEach(u"SELECT typeof(title), typeof(filePath), quote(favourite), typeof(addedAt) FROM item WHERE id = ?"_s,
                       {item.id}, [&](const kivo::Row &row) {
                           for (int i = 0; i < 4; ++i)
                               values.append(row.text(i));
                       });
            return values;
        });
        QCOMPARE(stored, (QStringList{u"null"_s, u"null"_s, u"1"_s, u"real"_s}));
        const auto back = m_queue->read([&](Database &db) {
            return db.fetchOne<kivo::LibraryItem>(u"SELECT * FROM item WHERE id = ?"_s, {item.id});
        });
        QVERIFY(back && *back == item);
    }

    void rowsTellWhetherTheyHoldAnItem_data()
    {
        QTest::addColumn<QString>("field");
        QTest::newRow("the same item") << QString();
        QTest::newRow("id") << u"id"_s;
        QTest::newRow("a title that appears") << u"title"_s;
        QTest::newRow("a title that goes") << u"title gone"_s;
        QTest::newRow("non-ASCII title, one letter other") << u"title accent"_s;
        // "Ã©" is the bytes of UTF-8 "é" read as Latin-1: same length, must still differ.
        QTest::newRow("UTF-8 bytes read as Latin-1") << u"title mojibake"_s;
        QTest::newRow("file size") << u"fileSize"_s;
        QTest::newRow("width") << u"width"_s;
        QTest::newRow("a deletion") << u"deletedAt"_s;
        QTest::newRow("favourite") << u"favourite"_s;
        QTest::newRow("open count") << u"openCount"_s;
        QTest::newRow("palette") << u"colors"_s;
    }

    void rowsTellWhetherTheyHoldAnItem()
    {
        QFETCH(QString, field);
        kivo::LibraryItem item;
        item.id = kivo::newIdentifier();
        item.kind = u"image"_s;
        item.title = u"Caf\u00e9 \u2014 \U0001F600 menu"_s;
        item.filePath = u"2024-05/menu.png"_s;
        item.fileSize = 4096;
        item.width = 800.5;
        item.colors = u"[\"#A03020\"]"_s;
        item.createdAt = item.addedAt = item.modifiedAt = 1.7e9 + 0.25;
        item.openCount = 3;
        m_queue->write([&](Database &db) { db.insert(item); });

        kivo::LibraryItem other = item;
        if (field == u"id")
            other.id = kivo::newIdentifier();
        else if (field == u"title")
            other.title = u"Caf\u00e9 \u2014 \U0001F600 menu!"_s;
        else if (field == u"title gone")
            other.title.reset();
        else if (field == u"title accent")
            other.title = u"Caf\u00e8 \u2014 \U0001F600 menu"_s;
        else if (field == u"fileSize")
            other.fileSize = 4097;
        else if (field == u"width")
            other.width.reset();
        else if (field == u"deletedAt")
            other.deletedAt = 5.0;
        else if (field == u"favourite")
            other.favourite = true;
        else if (field == u"openCount")
            other.openCount = 4;
        else if (field == u"colors")
            other.colors = u"[\"#A03021\"]"_s;
        if (field == u"title mojibake") {
            // Stored as the two-byte UTF-8 of "é"; compared with the two Latin-1 letters "Ã©".
            m_queue->write([&](Database &db) {
                db.execute(u"UPDATE item SET title = ? WHERE id = ?"_s, {u"\u00e9"_s, item.id});
            });
            item.title = u"\u00e9"_s;
            other.title = QString::fromLatin1("\xc3\xa9");
        }

        m_queue->read([&](Database &db) {
            db.forEach(u"SELECT * FROM item WHERE id = ?"_s, {item.id}, [&](const kivo::Row &row) {
                QVERIFY(item.isReadFrom(row));
                QCOMPARE(kivo::LibraryItem::fromRow(row), item);
                QCOMPARE(other.isReadFrom(row), field.isEmpty());
            });
        });
    }
};

QTEST_GUILESS_MAIN(TestDatabase)
#include "tst_database.moc"
