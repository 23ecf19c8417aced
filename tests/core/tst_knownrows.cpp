#include "core/database.h"
#include "core/knownrows.h"
#include "core/records.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseQueue;
using kivo::KnownRows;
using kivo::LibraryItem;

namespace {

const QString newestFirst = u"SELECT * FROM item ORDER BY addedAt DESC"_s;

/** Whether two strings share one buffer, as a row taken from a known list does. */
bool shareText(const QString &a, const QString &b)
{
    return a.constData() == b.constData();
}

} // namespace

/** Reading a list again takes its unchanged rows from the list read before, and only those. */
class TestKnownRows : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    std::shared_ptr<DatabaseQueue> m_queue;

    LibraryItem insert(Database &db, const QString &id, double addedAt)
    {
        LibraryItem item;
        item.id = id;
        item.kind = u"image"_s;
        item.title = u"Picture "_s + QString::number(addedAt);
        item.filePath = u"2026-11/picture-"_s + QString::number(addedAt) + u".png"_s;
        item.colors = u"[\"#A03020\"]"_s;
        item.width = 800;
        item.createdAt = item.addedAt = item.modifiedAt = addedAt;
        db.insert(item);
        return item;
    }

    QList<LibraryItem> read(KnownRows &known)
    {
        return m_queue->read([&](Database &db) { return kivo::readItemRows(db, newestFirst, {}, 0, known); });
    }

    QList<LibraryItem> readFresh()
    {
        return m_queue->read([&](Database &db) { return db.fetchAll<LibraryItem>(newestFirst); });
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        QDir().mkpath(m_sandbox->libraryRoot());
        m_queue = DatabaseQueue::open(m_sandbox->libraryRoot() + u"/library.sqlite"_s);
        m_queue->write([&](Database &db) {
            for (int i = 1; i <= 50; ++i)
                insert(db, kivo::newIdentifier(), i);
        });
    }

    void cleanup()
    {
        m_queue.reset();
        m_sandbox.reset();
    }

    void anUnchangedListIsTheKnownListItself()
    {
        const QList<LibraryItem> before = readFresh();
        KnownRows known(before);
        const QList<LibraryItem> again = read(known);
        QCOMPARE(again, before);
        // The same array: whoever holds the old list sees at a glance that nothing changed.
        QVERIFY(again.constData() == before.constData());
    }

    void changesAreReadAndTheRestIsShared_data()
    {
        QTest::addColumn<QString>("change");
        QTest::newRow("added at the top") << u"add newest"_s;
        QTest::newRow("added in the middle") << u"add middle"_s;
        QTest::newRow("several removed") << u"remove"_s;
        QTest::newRow("the oldest removed") << u"remove oldest"_s;
        QTest::newRow("one changed") << u"change"_s;
        QTest::newRow("one moved") << u"move"_s;
        QTest::newRow("text with letters beyond ASCII") << u"accents"_s;
    }

    void changesAreReadAndTheRestIsShared()
    {
        QFETCH(QString, change);
        const QList<LibraryItem> before = readFresh();
        QString touched;
        m_queue->write([&](Database &db) {
            if (change == u"add newest") {
                touched = insert(db, kivo::newIdentifier(), 100).id;
            } else if (change == u"add middle") {
                touched = insert(db, kivo::newIdentifier(), 25.5).id;
            } else if (change == u"remove") {
                for (int at : {3, 4, 5, 20, 40})
                    db.execute(u"DELETE FROM item WHERE id = ?"_s, {before.at(at).id});
            } else if (change == u"remove oldest") {
                db.execute(u"DELETE FROM item WHERE addedAt <= 2"_s);
            } else if (change == u"change") {
                touched = before.at(10).id;
                db.execute(u"UPDATE item SET title = 'Renamed' WHERE id = ?"_s, {touched});
            } else if (change == u"move") {
                touched = before.at(30).id;
                db.execute(u"UPDATE item SET addedAt = 99 WHERE id = ?"_s, {touched});
            } else if (change == u"accents") {
                // An id beyond ASCII is looked up by its decoded text.
                touched = u"caf\u00e9-\u00fc"_s;
                insert(db, touched, 24.5);
                db.execute(u"UPDATE item SET title = ? WHERE id = ?"_s, {u"Caf\u00e9 \u2014 menu"_s, before.at(2).id});
            }
        });

        KnownRows known(before);
        const QList<LibraryItem> after = read(known);
        // Row for row what a plain read gives.
        QCOMPARE(after, readFresh());
        QVERIFY(after.constData() != before.constData());

        qsizetype shared = 0;
        for (const LibraryItem &row : after) {
            const auto old = std::find_if(before.cbegin(), before.cend(), [&](const LibraryItem &item) { return item.id == row.id; });
            if (old == before.cend() || !(*old == row)) {
                // New or changed: decoded afresh, not the stale row.
                QVERIFY(old == before.cend() || !shareText(old->id, row.id));
                continue;
            }
            QVERIFY2(shareText(old->id, row.id) && shareText(*old->title, *row.title), qPrintable(row.id));
            ++shared;
        }
        const qsizetype expectedShared = change == u"remove" ? 45 : change == u"remove oldest" ? 48 : change == u"accents" ? 49 : change.startsWith(u"add") ? 50 : 49;
        QCOMPARE(shared, expectedShared);
        if (!touched.isEmpty())
            QVERIFY(std::any_of(after.cbegin(), after.cend(), [&](const LibraryItem &item) { return item.id == touched; }));
    }

    void nothingKnownReadsEveryRow()
    {
        KnownRows none;
        const QList<LibraryItem> rows = read(none);
        QCOMPARE(rows, readFresh());
        QCOMPARE(rows.size(), 50);
    }
};

QTEST_GUILESS_MAIN(TestKnownRows)
#include "tst_knownrows.moc"
