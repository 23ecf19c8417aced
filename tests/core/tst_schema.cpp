#include "core/database.h"
#include "core/migrator.h"
#include "core/records.h"
#include "core/schema.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sqlite3.h>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseQueue;
using kivo::Migration;
namespace Migrator = kivo::Migrator;

namespace {

const QStringList &allIdentifiers = kivo::test::libraryIdentifiers();

// Rows of a query, each row's columns joined by "|".
QStringList rows(Database &db, const QString &sql, const QVariantList &arguments = {})
{
    QStringList result;
    db.forEach(sql, arguments, [&](const kivo::Row &row) {
        QStringList columns;
        for (int i = 0; i < row.columnCount(); ++i)
            columns.append(row.isNull(i) ? u"NULL"_s : row.text(i));
        result.append(columns.join(u'|'));
    });
    return result;
}

QStringList rows(DatabaseQueue &queue, const QString &sql, const QVariantList &arguments = {})
{
    return queue.read([&](Database &db) { return rows(db, sql, arguments); });
}

// What the schema holds, as "table t", "t.column", "index i", "trigger t".
QSet<QString> schemaObjects(Database &db)
{
    QSet<QString> objects;
    for (const QString &entry : rows(db, u"SELECT type, name FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' "
                                         "AND name NOT LIKE 'itemFTS_%' AND name <> 'grdb_migrations'"_s)) {
        const QString type = entry.section(u'|', 0, 0);
        const QString name = entry.section(u'|', 1);
        objects.insert(type + u' ' + name);
        if (type == u"table" && name != u"itemFTS") {
            for (const QString &column : rows(db, u"SELECT name FROM pragma_table_info(?)"_s, {name}))
                objects.insert(name + u'.' + column);
        }
    }
    return objects;
}

QVariant scalar(DatabaseQueue &queue, const QString &sql, const QVariantList &arguments = {})
{
    return queue.read([&](Database &db) { return db.fetchScalar(sql, arguments); });
}

} // namespace

/** The library's schema steps and the migrator that applies them. */
class TestSchema : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    QString m_path;

    void insertItem(Database &db, const QString &id, const QString &title, const QVariant &deletedAt = {})
    {
        db.execute(u"INSERT INTO item (id, kind, title, createdAt, addedAt, modifiedAt, deletedAt) VALUES (?, 'image', ?, 1, 1, 1, ?)"_s,
                   {id, title, deletedAt});
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        QDir().mkpath(m_sandbox->libraryRoot());
        m_path = m_sandbox->libraryRoot() + u"/library.sqlite"_s;
    }

    void cleanup() { m_sandbox.reset(); }

    void eachStepAddsWhatItNames_data()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("added");
        // Columns of a table the step creates are checked by columnsAsWritten.
        const QStringList effects{
            u"table collection, table item, index item_fileHash, index item_addedAt, table itemCollection"_s,
            u"item.ocrText, item.aiCaption, item.colors, item.enrichedAt, table tag, table itemTag, table itemFTS, "
            "trigger item_ai, trigger item_ad, trigger item_au"_s,
            u"table embedding"_s,
            u"table canvasPosition"_s,
            {},
            u"collection.importedAt"_s,
            {},
            u"item.viaURL, item.remoteURL"_s,
            {},
            u"collection.pinnedAt"_s,
            u"table boardObject, index boardObject_board"_s,
            {},
            u"item.hiddenAt"_s,
            {},
            u"item.openCount, item.lastOpenedAt"_s,
        };
        for (int i = 0; i < allIdentifiers.size(); ++i)
            QTest::newRow(qPrintable(allIdentifiers.at(i))) << i << effects.at(i);
    }

    void eachStepAddsWhatItNames()
    {
        QFETCH(int, step);
        QFETCH(QString, added);
        QCOMPARE(kivo::libraryMigrations().size(), allIdentifiers.size());
        const auto queue = DatabaseQueue::openUnmigrated(m_path);
        Migrator::migrate(*queue, kivo::libraryMigrations().mid(0, step));
        const auto before = queue->read([](Database &db) { return schemaObjects(db); });
        Migrator::migrate(*queue, kivo::libraryMigrations().mid(0, step + 1));
        const auto after = queue->read([](Database &db) { return schemaObjects(db); });
        QVERIFY(after.contains(before));
        QStringList expected = added.isEmpty() ? QStringList() : added.split(u", "_s);
        QStringList got;
        for (const QString &object : after - before) {
            if (!object.contains(u'.') || before.contains(u"table "_s + object.section(u'.', 0, 0)))
                got.append(object);
        }
        expected.sort();
        got.sort();
        QCOMPARE(got, expected);
        QCOMPARE(Migrator::appliedIdentifiers(*queue), allIdentifiers.mid(0, step + 1));
    }

    void columnsAsWritten_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("columns");
        QTest::addColumn<QString>("foreignKeys");
        QTest::newRow("collection") << u"collection"_s
            << u"id TEXT PK1; parentId TEXT; name TEXT NOT NULL; icon TEXT; sortIndex INTEGER NOT NULL DEFAULT 0; "
               "isInbox BOOLEAN NOT NULL DEFAULT 0; createdAt DOUBLE NOT NULL; modifiedAt DOUBLE NOT NULL; deletedAt DOUBLE; "
               "importedAt DOUBLE; pinnedAt DOUBLE"_s
            << u"parentId collection SET NULL"_s;
        QTest::newRow("item") << u"item"_s
            << u"id TEXT PK1; kind TEXT NOT NULL; title TEXT; note TEXT; sourceURL TEXT; filePath TEXT; fileHash TEXT; "
               "fileSize INTEGER; width DOUBLE; height DOUBLE; duration DOUBLE; createdAt DOUBLE NOT NULL; "
               "addedAt DOUBLE NOT NULL; modifiedAt DOUBLE NOT NULL; deletedAt DOUBLE; favourite BOOLEAN NOT NULL DEFAULT 0; "
               "ocrText TEXT; aiCaption TEXT; colors TEXT; enrichedAt DOUBLE; viaURL TEXT; remoteURL TEXT; hiddenAt DOUBLE; "
               "openCount INTEGER NOT NULL DEFAULT 0; lastOpenedAt DOUBLE"_s
            << QString();
        QTest::newRow("itemCollection") << u"itemCollection"_s
            << u"itemId TEXT NOT NULL PK1; collectionId TEXT NOT NULL PK2; addedAt DOUBLE NOT NULL"_s
            << u"collectionId collection CASCADE; itemId item CASCADE"_s;
        QTest::newRow("tag") << u"tag"_s << u"id TEXT PK1; name TEXT NOT NULL"_s << QString();
        QTest::newRow("itemTag") << u"itemTag"_s
            << u"itemId TEXT NOT NULL PK1; tagId TEXT NOT NULL PK2; source TEXT NOT NULL; status TEXT NOT NULL; "
               "addedAt DOUBLE NOT NULL"_s
            << u"itemId item CASCADE; tagId tag CASCADE"_s;
        QTest::newRow("embedding") << u"embedding"_s
            << u"itemId TEXT NOT NULL PK1; kind TEXT NOT NULL PK2; dim INTEGER NOT NULL; vector BLOB NOT NULL"_s
            << u"itemId item CASCADE"_s;
        QTest::newRow("canvasPosition") << u"canvasPosition"_s
            << u"itemId TEXT NOT NULL PK1; collectionKey TEXT NOT NULL PK2; x DOUBLE NOT NULL; y DOUBLE NOT NULL; "
               "scale DOUBLE NOT NULL DEFAULT 1.0; z INTEGER NOT NULL DEFAULT 0"_s
            << u"itemId item CASCADE"_s;
        QTest::newRow("boardObject") << u"boardObject"_s
            << u"id TEXT PK1; collectionKey TEXT NOT NULL; kind TEXT NOT NULL; x DOUBLE NOT NULL; y DOUBLE NOT NULL; "
               "width DOUBLE NOT NULL; height DOUBLE NOT NULL; rotation DOUBLE NOT NULL DEFAULT 0; zIndex TEXT NOT NULL; "
               "fill TEXT; stroke TEXT; strokeWidth DOUBLE NOT NULL DEFAULT 2; opacity DOUBLE NOT NULL DEFAULT 1; "
               "text TEXT; props TEXT; points BLOB; minX DOUBLE NOT NULL; minY DOUBLE NOT NULL; maxX DOUBLE NOT NULL; "
               "maxY DOUBLE NOT NULL; createdAt DOUBLE NOT NULL; updatedAt DOUBLE NOT NULL; deletedAt DOUBLE"_s
            << QString();
        QTest::newRow("grdb_migrations") << u"grdb_migrations"_s << u"identifier TEXT NOT NULL PK1"_s << QString();
    }

    void columnsAsWritten()
    {
        QFETCH(QString, table);
        QFETCH(QString, columns);
        QFETCH(QString, foreignKeys);
        const auto queue = DatabaseQueue::open(m_path);
        QStringList got;
        for (const QString &row : rows(*queue, u"SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info(?)"_s, {table})) {
            const QStringList f = row.split(u'|');
            QString column = f[0] + u' ' + f[1];
            if (f[2] == u"1")
                column += u" NOT NULL"_s;
            if (f[3] != u"NULL")
                column += u" DEFAULT "_s + f[3];
            if (f[4] != u"0")
                column += u" PK"_s + f[4];
            got.append(column);
        }
        QStringList expected = columns.split(u"; "_s);
        got.sort();
        expected.sort();
        QCOMPARE(got, expected);
        const QStringList keys = rows(*queue, u"SELECT \"from\" || ' ' || \"table\" || ' ' || on_delete FROM pragma_foreign_key_list(?) ORDER BY 1"_s, {table});
        QCOMPARE(keys.join(u"; "_s), foreignKeys);
    }

    void indicesAsWritten()
    {
        const auto queue = DatabaseQueue::open(m_path);
        const QStringList named = rows(*queue, u"SELECT m.name, m.tbl_name, il.\"unique\", "
                                               "(SELECT group_concat(name, ',') FROM pragma_index_info(m.name)) "
                                               "FROM sqlite_master m JOIN pragma_index_list(m.tbl_name) il ON il.name = m.name "
                                               "WHERE m.type = 'index' AND m.sql IS NOT NULL ORDER BY m.name"_s);
        QCOMPARE(named, (QStringList{u"boardObject_board|boardObject|0|collectionKey,zIndex"_s,
                                     u"item_addedAt|item|0|addedAt"_s, u"item_fileHash|item|0|fileHash"_s}));
        // The tag name's uniqueness ignores case.
        const QStringList tagIndex = rows(*queue, u"SELECT il.\"unique\", x.name, x.coll FROM pragma_index_list('tag') il, "
                                                  "pragma_index_xinfo(il.name) x WHERE x.key = 1 AND il.origin = 'u'"_s);
        QCOMPARE(tagIndex, QStringList{u"1|name|NOCASE"_s});
    }

    void fullTextTableAndTriggersAsWritten()
    {
        const auto queue = DatabaseQueue::open(m_path);
        const auto sqlOf = [&](const QString &name) {
            return scalar(*queue, u"SELECT sql FROM sqlite_master WHERE name = ?"_s, {name}).toString();
        };
        QCOMPARE(sqlOf(u"itemFTS"_s), u"CREATE VIRTUAL TABLE itemFTS USING fts5(\n    title, note, ocrText, aiCaption,\n"
                                      "    content='item', content_rowid='rowid'\n)"_s);
        const QString insertNew = u"INSERT INTO itemFTS(rowid, title, note, ocrText, aiCaption)\n"
                                  "    VALUES (new.rowid, new.title, new.note, new.ocrText, new.aiCaption);"_s;
        const QString deleteOld = u"INSERT INTO itemFTS(itemFTS, rowid, title, note, ocrText, aiCaption)\n"
                                  "    VALUES ('delete', old.rowid, old.title, old.note, old.ocrText, old.aiCaption);"_s;
        const QString ai = sqlOf(u"item_ai"_s);
        const QString ad = sqlOf(u"item_ad"_s);
        const QString au = sqlOf(u"item_au"_s);
        QVERIFY2(ai.startsWith(u"CREATE TRIGGER item_ai AFTER INSERT ON item BEGIN"_s) && ai.contains(insertNew), qPrintable(ai));
        QVERIFY2(ad.startsWith(u"CREATE TRIGGER item_ad AFTER DELETE ON item BEGIN"_s) && ad.contains(deleteOld), qPrintable(ad));
        // No column list: every update re-indexes, the old values out before the new ones in.
        QVERIFY2(au.startsWith(u"CREATE TRIGGER item_au AFTER UPDATE ON item BEGIN"_s), qPrintable(au));
        QVERIFY(au.indexOf(deleteOld) > 0 && au.indexOf(insertNew) > au.indexOf(deleteOld));
        QCOMPARE(rows(*queue, u"SELECT name FROM sqlite_master WHERE type = 'trigger' ORDER BY name"_s),
                 (QStringList{u"item_ad"_s, u"item_ai"_s, u"item_au"_s}));
    }

    void backfillIndexesRowsFromBeforeTheFullTextTable()
    {
        const auto queue = DatabaseQueue::openUnmigrated(m_path);
        Migrator::migrate(*queue, kivo::libraryMigrations().mid(0, 1));
        queue->write([&](Database &db) { insertItem(db, u"early"_s, u"lighthouse keeper"_s); });
        Migrator::migrate(*queue, kivo::libraryMigrations());
        QCOMPARE(rows(*queue, u"SELECT i.id FROM itemFTS JOIN item i ON i.rowid = itemFTS.rowid WHERE itemFTS MATCH 'lighthouse'"_s),
                 QStringList{u"early"_s});
    }

    void sweepRemovesOrphanedLinksOnly()
    {
        QCOMPARE(kivo::orphanSweepStatements(),
                 (QStringList{u"DELETE FROM itemTag WHERE itemId NOT IN (SELECT id FROM item)"_s,
                              u"DELETE FROM itemTag WHERE tagId NOT IN (SELECT id FROM tag)"_s,
                              u"DELETE FROM itemCollection WHERE itemId NOT IN (SELECT id FROM item)"_s,
                              u"DELETE FROM itemCollection WHERE collectionId NOT IN (SELECT id FROM collection)"_s}));
        // Orphans left behind by a library at the fourth step, as a build without foreign keys could have.
        const auto queue = DatabaseQueue::openUnmigrated(m_path);
        Migrator::migrate(*queue, kivo::libraryMigrations().mid(0, 4));
        queue->barrier([&](Database &db) {
            db.executeScript(u"PRAGMA foreign_keys = OFF"_s);
            insertItem(db, u"live"_s, u"Live"_s);
            insertItem(db, u"trashed"_s, u"Trashed"_s, 5.0);
            db.executeScript(u"INSERT INTO tag VALUES ('t', 'tag'); INSERT INTO collection (id, name, createdAt, modifiedAt) VALUES ('c', 'C', 1, 1);"
                             "INSERT INTO itemTag VALUES ('live', 't', 'user', 'accepted', 1), ('trashed', 't', 'user', 'accepted', 1),"
                             " ('gone', 't', 'user', 'accepted', 1), ('live', 'no-tag', 'ai', 'accepted', 1);"
                             "INSERT INTO itemCollection VALUES ('live', 'c', 1), ('trashed', 'c', 1), ('gone', 'c', 1), ('live', 'no-collection', 1);"
                             "PRAGMA foreign_keys = ON;"_s);
        });
        Migrator::migrate(*queue, kivo::libraryMigrations());
        QCOMPARE(rows(*queue, u"SELECT itemId || '-' || tagId FROM itemTag ORDER BY 1"_s), (QStringList{u"live-t"_s, u"trashed-t"_s}));
        QCOMPARE(rows(*queue, u"SELECT itemId || '-' || collectionId FROM itemCollection ORDER BY 1"_s),
                 (QStringList{u"live-c"_s, u"trashed-c"_s}));
    }

    void deletesCascadeOrSetNull()
    {
        const auto queue = DatabaseQueue::open(m_path);
        queue->write([&](Database &db) {
            insertItem(db, u"i"_s, u"harbour"_s);
            insertItem(db, u"other"_s, u"harbour too"_s);
            db.executeScript(u"INSERT INTO collection (id, name, createdAt, modifiedAt) VALUES ('parent', 'P', 1, 1), ('keep', 'K', 1, 1);"
                             "INSERT INTO collection (id, parentId, name, createdAt, modifiedAt) VALUES ('child', 'parent', 'C', 1, 1);"
                             "INSERT INTO tag VALUES ('t', 'sea');"
                             "INSERT INTO itemTag VALUES ('i', 't', 'user', 'accepted', 1), ('other', 't', 'user', 'accepted', 1);"
                             "INSERT INTO itemCollection VALUES ('i', 'keep', 1), ('other', 'parent', 1), ('other', 'keep', 1);"
                             "INSERT INTO embedding VALUES ('i', 'clip-image', 1, X'0000803F');"
                             "INSERT INTO canvasPosition (itemId, collectionKey, x, y) VALUES ('i', 'all', 1, 2), ('other', 'all', 3, 4);"_s);
            db.execute(u"DELETE FROM item WHERE id = 'i'"_s);
            db.execute(u"DELETE FROM collection WHERE id = 'parent'"_s);
        });
        for (const QString &table : {u"itemTag"_s, u"itemCollection"_s, u"embedding"_s, u"canvasPosition"_s})
            QCOMPARE(scalar(*queue, u"SELECT COUNT(*) FROM %1 WHERE itemId = 'i'"_s.arg(table)).toInt(), 0);
        QCOMPARE(rows(*queue, u"SELECT rowid FROM itemFTS WHERE itemFTS MATCH 'harbour'"_s).size(), 1);
        QCOMPARE(rows(*queue, u"SELECT id, parentId FROM collection ORDER BY id"_s), (QStringList{u"child|NULL"_s, u"keep|NULL"_s}));
        QCOMPARE(rows(*queue, u"SELECT collectionId FROM itemCollection WHERE itemId = 'other'"_s), QStringList{u"keep"_s});
        QCOMPARE(scalar(*queue, u"SELECT COUNT(*) FROM canvasPosition"_s).toInt(), 1);
        queue->write([](Database &db) { db.execute(u"INSERT INTO itemFTS(itemFTS) VALUES ('integrity-check')"_s); });
    }

    void tagNamesAreUniqueWithoutRegardToCase()
    {
        const auto queue = DatabaseQueue::open(m_path);
        queue->write([](Database &db) {
            db.insert(kivo::Tag{u"first"_s, u"Sunset"_s});
            db.insert(kivo::Tag{u"second"_s, u"sunset"_s}); // ignored, not an error
            db.insert(kivo::Tag{u"third"_s, u"SUNSET "_s});  // another name
        });
        QCOMPARE(rows(*queue, u"SELECT id, name FROM tag ORDER BY rowid"_s), (QStringList{u"first|Sunset"_s, u"third|SUNSET "_s}));
        QCOMPARE(scalar(*queue, u"SELECT id FROM tag WHERE name = ?"_s, {u"sUnSeT"_s}).toString(), u"first"_s);
    }

    void favouriteToggleReindexesWithoutChangingResults()
    {
        const auto queue = DatabaseQueue::open(m_path);
        queue->write([&](Database &db) {
            insertItem(db, u"a"_s, u"red harbour"_s);
            insertItem(db, u"b"_s, u"blue harbour"_s);
            db.execute(u"UPDATE item SET ocrText = 'ferry', aiCaption = 'boats at dusk', note = 'red' WHERE id = 'b'"_s);
        });
        const auto results = [&] {
            QStringList all;
            for (const QString &word : {u"harbour"_s, u"red"_s, u"ferry"_s, u"dusk"_s, u"blue"_s})
                all.append(word + u':' + rows(*queue, u"SELECT i.id FROM itemFTS JOIN item i ON i.rowid = itemFTS.rowid WHERE itemFTS MATCH ? ORDER BY i.id"_s, {word}).join(u','));
            return all;
        };
        const QStringList before = results();
        QCOMPARE(before, (QStringList{u"harbour:a,b"_s, u"red:a,b"_s, u"ferry:b"_s, u"dusk:b"_s, u"blue:b"_s}));
        queue->write([](Database &db) { db.execute(u"UPDATE item SET favourite = NOT favourite"_s); });
        QCOMPARE(results(), before);
        queue->write([](Database &db) { db.execute(u"INSERT INTO itemFTS(itemFTS) VALUES ('integrity-check')"_s); });
        queue->write([](Database &db) { db.execute(u"UPDATE item SET title = 'green harbour' WHERE id = 'a'"_s); });
        QCOMPARE(results().at(1), u"red:b"_s);
    }

    void statusComparisonHoldsForBothValues()
    {
        const auto queue = DatabaseQueue::open(m_path);
        queue->write([&](Database &db) {
            insertItem(db, u"i"_s, u"x"_s);
            db.executeScript(u"INSERT INTO tag VALUES ('a', 'one'), ('s', 'two');"
                             "INSERT INTO itemTag VALUES ('i', 'a', 'ai', 'accepted', 1), ('i', 's', 'ai', 'suggested', 1);"_s);
        });
        QCOMPARE(rows(*queue, u"SELECT it.status FROM itemTag it WHERE it.status >= 0 ORDER BY 1"_s),
                 (QStringList{u"accepted"_s, u"suggested"_s}));
    }

    void migratedLibraryOpensUnchanged()
    {
        qint64 schemaVersion = 0;
        {
            const auto queue = DatabaseQueue::open(m_path);
            queue->write([&](Database &db) { insertItem(db, u"kept"_s, u"kept"_s); });
            schemaVersion = scalar(*queue, u"PRAGMA schema_version"_s).toLongLong();
        }
        const QByteArray bytes = kivo::test::readFile(m_path);
        const QDateTime modified = QFileInfo(m_path).lastModified();
        {
            const auto queue = DatabaseQueue::open(m_path);
            QCOMPARE(scalar(*queue, u"PRAGMA schema_version"_s).toLongLong(), schemaVersion);
            QCOMPARE(Migrator::appliedIdentifiers(*queue), allIdentifiers);
        }
        QCOMPARE(QFileInfo(m_path).lastModified(), modified);
        QVERIFY(kivo::test::readFile(m_path) == bytes);
    }

    void unknownIdentifiersAreIgnored()
    {
        {
            const auto queue = DatabaseQueue::open(m_path);
            queue->write([&](Database &db) {
                insertItem(db, u"kept"_s, u"kept"_s);
                db.execute(u"INSERT INTO grdb_migrations (identifier) VALUES ('v11-from-a-newer-kivo')"_s);
                db.execute(u"CREATE TABLE newerThings (x)"_s);
            });
        }
        const auto queue = DatabaseQueue::open(m_path);
        QCOMPARE(Migrator::appliedIdentifiers(*queue), allIdentifiers + QStringList{u"v11-from-a-newer-kivo"_s});
        QCOMPARE(scalar(*queue, u"SELECT COUNT(*) FROM item"_s).toInt(), 1);
        QCOMPARE(scalar(*queue, u"SELECT COUNT(*) FROM sqlite_master WHERE name = 'newerThings'"_s).toInt(), 1);
    }

    void failingMigrationRollsBackAlone()
    {
        const auto queue = DatabaseQueue::openUnmigrated(m_path);
        bool broken = true;
        const QList<Migration> steps{
            {u"one"_s, [](Database &db) { db.execute(u"CREATE TABLE first (x)"_s); }},
            {u"two"_s, [&](Database &db) {
                 db.execute(u"CREATE TABLE second (x)"_s);
                 db.execute(u"INSERT INTO second VALUES (1)"_s);
                 if (broken)
                     throw std::runtime_error("step two broke");
             }},
            {u"three"_s, [](Database &db) { db.execute(u"CREATE TABLE third (x)"_s); }},
        };
        try {
            Migrator::migrate(*queue, steps);
            QFAIL("the failing step did not reach the caller");
        } catch (const std::runtime_error &error) {
            QCOMPARE(QString::fromUtf8(error.what()), u"step two broke"_s);
        }
        QCOMPARE(Migrator::appliedIdentifiers(*queue), QStringList{u"one"_s});
        QCOMPARE(rows(*queue, u"SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"_s),
                 (QStringList{u"first"_s, u"grdb_migrations"_s}));
        QCOMPARE(scalar(*queue, u"PRAGMA foreign_keys"_s).toInt(), 1);
        queue->barrier([](Database &db) { QVERIFY(sqlite3_get_autocommit(db.handle())); });

        broken = false;
        Migrator::migrate(*queue, steps);
        QCOMPARE(Migrator::appliedIdentifiers(*queue), (QStringList{u"one"_s, u"two"_s, u"three"_s}));
    }

    void foreignKeyViolationFailsItsMigration()
    {
        const auto queue = DatabaseQueue::openUnmigrated(m_path);
        const QList<Migration> steps{
            {u"tables"_s, [](Database &db) {
                 db.executeScript(u"CREATE TABLE parent (id TEXT PRIMARY KEY);"
                                  "CREATE TABLE child (parentId TEXT REFERENCES parent ON DELETE CASCADE);"_s);
             }},
            // Keys are checked at the end of a step, so an order that is only briefly wrong is fine.
            {u"child first"_s, [](Database &db) {
                 db.execute(u"INSERT INTO child VALUES ('p1')"_s);
                 db.execute(u"INSERT INTO parent VALUES ('p1')"_s);
             }},
            {u"orphan"_s, [](Database &db) { db.execute(u"INSERT INTO child VALUES ('nobody')"_s); }},
        };
        try {
            Migrator::migrate(*queue, steps);
            QFAIL("a step leaving a broken foreign key was recorded");
        } catch (const kivo::DatabaseError &error) {
            QCOMPARE(error.code() & 0xff, SQLITE_CONSTRAINT);
        }
        QCOMPARE(Migrator::appliedIdentifiers(*queue), (QStringList{u"tables"_s, u"child first"_s}));
        QCOMPARE(rows(*queue, u"SELECT parentId FROM child"_s), QStringList{u"p1"_s});
        QCOMPARE(scalar(*queue, u"PRAGMA foreign_keys"_s).toInt(), 1);
    }

    void olderLibraryMigratesAndKeepsItsRows()
    {
        QVERIFY(QFile::copy(QStringLiteral(KIVO_TEST_DATA "/core/library-v7-sweep.sqlite"), m_path));
        QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner);
        {
            const auto older = DatabaseQueue::openUnmigrated(m_path);
            QCOMPARE(Migrator::appliedIdentifiers(*older), allIdentifiers.mid(0, 9));
        }
        const auto queue = DatabaseQueue::open(m_path);
        QCOMPARE(Migrator::appliedIdentifiers(*queue), allIdentifiers);

        const auto items = queue->read([](Database &db) { return db.fetchAll<kivo::LibraryItem>(u"SELECT * FROM item ORDER BY rowid"_s); });
        QCOMPARE(items.size(), 3);
        const kivo::LibraryItem &harbour = items.at(0);
        QCOMPARE(harbour.id, u"1a000000-0000-4000-8000-000000000001"_s);
        QCOMPARE(harbour.title, std::optional(u"Harbour at dusk"_s));
        QCOMPARE(harbour.filePath, std::optional(u"1a/1a000000-0000-4000-8000-000000000001.jpg"_s));
        QCOMPARE(harbour.fileSize, std::optional(qint64(2048)));
        QCOMPARE(harbour.addedAt, 1600000010.5);
        QVERIFY(harbour.favourite);
        QCOMPARE(harbour.viaURL, std::optional(u"https://example.org/via"_s));
        QCOMPARE(harbour.openCount, 0);
        QVERIFY(!harbour.hiddenAt && !harbour.lastOpenedAt);
        QCOMPARE(items.at(2).deletedAt, std::optional(1600000050.0));

        QCOMPARE(rows(*queue, u"SELECT name, parentId, importedAt, pinnedAt FROM collection ORDER BY rowid"_s),
                 (QStringList{u"Inbox|NULL|NULL|NULL"_s, u"Moodboard|NULL|NULL|NULL"_s,
                              u"Blues|0c000000-0000-4000-8000-000000000002|1600000100.0|NULL"_s}));
        QCOMPARE(rows(*queue, u"SELECT tagId, status FROM itemTag ORDER BY rowid"_s),
                 (QStringList{u"7a000000-0000-4000-8000-000000000001|suggested"_s, u"7a000000-0000-4000-8000-000000000002|accepted"_s}));
        QCOMPARE(scalar(*queue, u"SELECT COUNT(*) FROM itemCollection"_s).toInt(), 3);
        QCOMPARE(scalar(*queue, u"SELECT hex(vector) FROM embedding"_s).toString(), u"0000803F00000000"_s);
        QCOMPARE(rows(*queue, u"SELECT collectionKey, x, y, scale, z FROM canvasPosition"_s), QStringList{u"all|10.5|-4.0|1.0|0"_s});
        QCOMPARE(rows(*queue, u"SELECT i.id FROM itemFTS JOIN item i ON i.rowid = itemFTS.rowid WHERE itemFTS MATCH 'ferry OR lemons' ORDER BY 1"_s),
                 (QStringList{u"1a000000-0000-4000-8000-000000000001"_s, u"3c000000-0000-4000-8000-000000000003"_s}));
        QCOMPARE(scalar(*queue, u"SELECT COUNT(*) FROM boardObject"_s).toInt(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSchema)
#include "tst_schema.moc"
