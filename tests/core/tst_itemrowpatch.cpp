#include "core/database.h"
#include "core/itemchangelog.h"
#include "core/itemqueries.h"
#include "core/itemrowpatch.h"
#include "core/records.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseQueue;
using kivo::ItemChangeLog;
using kivo::ItemSort;
using kivo::LibraryItem;
using kivo::MediaTypeFilter;
using kivo::SidebarSelection;
namespace ItemQueries = kivo::ItemQueries;

namespace {

/** A list as the Store holds it: its statement, its rows and where the log stood when they were read. */
struct HeldList {
    SidebarSelection selection;
    ItemSort sort = ItemSort::newest;
    QList<LibraryItem> rows;
    ItemChangeLog::Mark at;
};

} // namespace

/** A list brought up to date from the items written since is the list a full read gives, or is not made. */
class TestItemRowPatch : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    std::shared_ptr<DatabaseQueue> m_queue;
    QStringList m_ids;

    QString path() const { return m_sandbox->libraryRoot() + u"/library.sqlite"_s; }

    static LibraryItem makeItem(const QString &kind, double addedAt)
    {
        LibraryItem item;
        item.id = kivo::newIdentifier();
        item.kind = kind;
        item.title = u"Thing "_s + QString::number(addedAt);
        if (kind != u"link" && kind != u"text")
            item.filePath = u"2026-11/thing-"_s + QString::number(addedAt) + (kind == u"file" ? u".pdf"_s : u".png"_s);
        item.sourceURL = u"https://example.org/"_s + QString::number(addedAt);
        item.createdAt = item.addedAt = item.modifiedAt = addedAt;
        return item;
    }

    QList<LibraryItem> fullRead(const HeldList &list)
    {
        const auto query = ItemQueries::rowQuery(list.selection, list.sort, std::nullopt);
        return m_queue->read([&](Database &db) { return db.fetchAll<LibraryItem>(query->sql, query->arguments); });
    }

    HeldList hold(const SidebarSelection &selection, ItemSort sort)
    {
        HeldList list{selection, sort, {}, {}};
        list.at = m_queue->read([&](Database &db) { return db.itemChanges()->mark(db); });
        list.rows = fullRead(list);
        return list;
    }

    std::optional<QList<LibraryItem>> patch(const HeldList &list)
    {
        const auto query = ItemQueries::changedRowQuery(list.selection, list.sort, std::nullopt);
        return m_queue->read([&](Database &db) { return kivo::patchItemRows(db, *query, list.rows, list.at); });
    }

    static QStringList ids(const QList<LibraryItem> &rows)
    {
        QStringList ids;
        for (const LibraryItem &item : rows)
            ids.append(item.id);
        return ids;
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        QDir().mkpath(m_sandbox->libraryRoot());
        m_queue = DatabaseQueue::open(path());
        m_ids.clear();
        const QStringList kinds{u"image"_s, u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s};
        m_queue->write([&](Database &db) {
            for (int i = 0; i < 300; ++i) {
                // Every tenth item shares its moment with the one before, as a batch import makes.
                const double addedAt = 1000 + i - (i % 10 == 1 ? 1 : 0);
                LibraryItem item = makeItem(kinds.at(i % kinds.size()), addedAt);
                item.favourite = i % 7 == 0;
                db.insert(item);
                m_ids.append(item.id);
            }
        });
    }

    void cleanup()
    {
        m_queue.reset();
        m_sandbox.reset();
    }

    void unchangedListIsTheHeldListItself()
    {
        const HeldList list = hold(SidebarSelection::all(), ItemSort::newest);
        const auto patched = patch(list);
        QVERIFY(patched);
        QVERIFY(patched->constData() == list.rows.constData());
    }

    void randomWritesPatchToTheFullRead()
    {
        // Every list the sidebar can patch, both ways round, and one the view cut to images.
        QList<std::pair<SidebarSelection, ItemSort>> selections{
            {SidebarSelection::all(), ItemSort::newest},
            {SidebarSelection::all(), ItemSort::oldest},
            {SidebarSelection::favourites(), ItemSort::newest},
            {SidebarSelection::links(), ItemSort::oldest},
            {SidebarSelection::type(MediaTypeFilter::documents), ItemSort::newest},
        };
        auto *random = QRandomGenerator::global();
        const auto someId = [&] { return m_ids.at(random->bounded(int(m_ids.size()))); };
        int patchedLists = 0;
        int refusedLists = 0;
        for (int round = 0; round < 60; ++round) {
            QList<HeldList> held;
            for (const auto &[selection, sort] : selections)
                held.append(hold(selection, sort));
            HeldList imagesOnly = hold(SidebarSelection::all(), ItemSort::newest);
            imagesOnly.rows.removeIf([](const LibraryItem &item) { return item.kind != u"image"; });

            const int writes = 1 + random->bounded(4);
            for (int w = 0; w < writes; ++w) {
                const QString id = someId();
                const double now = 5000 + round * 10 + w;
                switch (random->bounded(9)) {
                case 0:
                    m_queue->write([&](Database &db) {
                        db.execute(u"UPDATE item SET favourite = 1 - favourite WHERE id = ?"_s, {id});
                    });
                    break;
                case 1:
                    m_queue->write([&](Database &db) {
                        db.execute(u"UPDATE item SET deletedAt = ? WHERE id = ?"_s, {now, id});
                    });
                    break;
                case 2:
                    m_queue->write([&](Database &db) {
                        db.execute(u"UPDATE item SET deletedAt = NULL, hiddenAt = NULL WHERE id = ?"_s, {id});
                    });
                    break;
                case 3:
                    m_queue->write([&](Database &db) {
                        db.execute(u"UPDATE item SET hiddenAt = ? WHERE id = ?"_s, {now, id});
                    });
                    break;
                case 4:
                    m_queue->write([&](Database &db) {
                        db.execute(u"UPDATE item SET title = ?, kind = ? WHERE id = ?"_s,
                            {u"Renamed ✓ "_s + QString::number(now), random->bounded(2) ? u"link"_s : u"text"_s, id});
                    });
                    break;
                case 5: {
                    // A new item, now and then at the moment of one already there.
                    const double addedAt = random->bounded(3) == 0 ? 1000 + random->bounded(300) : now;
                    const LibraryItem item = makeItem(random->bounded(2) ? u"image"_s : u"link"_s, addedAt);
                    m_queue->write([&](Database &db) { db.insert(item); });
                    m_ids.append(item.id);
                    break;
                }
                case 6:
                    m_queue->write([&](Database &db) { db.execute(u"DELETE FROM item WHERE id = ?"_s, {id}); });
                    break;
                case 7:
                    // Moved in time: its place in the list changes.
                    m_queue->write([&](Database &db) {
                        db.execute(u"UPDATE item SET addedAt = ? WHERE id = ?"_s, {now + 0.5, id});
                    });
                    break;
                case 8:
                    // A write that rolls back changes nothing, though the log noted it.
                    try {
                        m_queue->write([&](Database &db) {
                            db.execute(u"UPDATE item SET title = 'never' WHERE id = ?"_s, {id});
                            throw std::runtime_error("changed my mind");
                        });
                    } catch (const std::runtime_error &) {
                    }
                    break;
                }
            }

            for (const HeldList &list : held) {
                const auto patched = patch(list);
                if (!patched) {
                    ++refusedLists;
                    continue;
                }
                ++patchedLists;
                const QList<LibraryItem> fresh = fullRead(list);
                QCOMPARE(ids(*patched), ids(fresh));
                QVERIFY(*patched == fresh);
            }
            if (const auto patched = patch(imagesOnly)) {
                QList<LibraryItem> expected = fullRead(imagesOnly);
                expected.removeIf([](const LibraryItem &item) { return item.kind != u"image"; });
                QList<LibraryItem> cut = *patched;
                cut.removeIf([](const LibraryItem &item) { return item.kind != u"image"; });
                QCOMPARE(ids(cut), ids(expected));
            }
        }
        // Both ways must have been taken for the comparison to mean anything.
        QVERIFY2(patchedLists > 150, qPrintable(QString::number(patchedLists)));
        QVERIFY(refusedLists > 0);
    }

    void anotherConnectionsWriteIsNotPatched()
    {
        const HeldList list = hold(SidebarSelection::all(), ItemSort::newest);
        const auto other = DatabaseQueue::openUnmigrated(path());
        other->write([&](Database &db) {
            db.execute(u"UPDATE item SET title = 'from elsewhere' WHERE id = ?"_s, {m_ids.first()});
        });
        QVERIFY(!patch(list));
    }

    void aSchemaChangeIsNotPatched()
    {
        const HeldList list = hold(SidebarSelection::all(), ItemSort::newest);
        m_queue->write([](Database &db) { db.execute(u"CREATE INDEX item_title ON item(title)"_s); });
        QVERIFY(!patch(list));
    }

    void aLongImportOutrunsTheLog()
    {
        const HeldList list = hold(SidebarSelection::all(), ItemSort::newest);
        m_queue->write([](Database &db) {
            for (qsizetype i = 0; i <= ItemChangeLog::capacity; ++i)
                db.execute(u"UPDATE item SET openCount = openCount + 1 WHERE rowid = 1"_s);
        });
        QVERIFY(!patch(list));
        // A list read now patches again.
        const HeldList later = hold(SidebarSelection::all(), ItemSort::newest);
        m_queue->write([&](Database &db) {
            db.execute(u"UPDATE item SET favourite = 1 WHERE id = ?"_s, {m_ids.at(5)});
        });
        const auto patched = patch(later);
        QVERIFY(patched);
        QVERIFY(*patched == fullRead(later));
    }

    void collectionsTrashAndHiddenAreNotPatched()
    {
        QVERIFY(!ItemQueries::changedRowQuery(SidebarSelection::collection(u"c"_s), ItemSort::newest, std::nullopt));
        QVERIFY(!ItemQueries::changedRowQuery(SidebarSelection::inbox(), ItemSort::newest, u"inbox"_s));
        QVERIFY(!ItemQueries::changedRowQuery(SidebarSelection::trash(), ItemSort::newest, std::nullopt));
        QVERIFY(!ItemQueries::changedRowQuery(SidebarSelection::hidden(), ItemSort::oldest, std::nullopt));
    }
};

QTEST_GUILESS_MAIN(TestItemRowPatch)
#include "tst_itemrowpatch.moc"
