#include "core/itemqueries.h"
#include "core/sidebarselection.h"
#include "tests/core/storeworld.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace kivo;

/**
 * Selection keys, and the rows, scope counts and type counts that each selection gives on one
 * small library whose every item sits at a known place in every list.
 */
class TestItemQueries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void keys_data();
    void keys();
    void keysThatNameNothing();

    void rowsInOrder_data();
    void rowsInOrder();
    void scopeCounts_data();
    void scopeCounts();
    void sidebarAndTypeCounts();
    void inboxWithoutIdHasNoRows();
    void placeholdersPadToFewLengths();

private:
    QStringList labels(const QList<LibraryItem> &items) const;

    std::unique_ptr<test::StoreWorld> m_world;
    QHash<QString, QString> m_labelById;
    QString m_boardId;
};

void TestItemQueries::initTestCase()
{
    m_world = std::make_unique<test::StoreWorld>();
    test::StoreWorld &world = *m_world;
    m_boardId = world.addCollection(u"Board"_s);
    const QString inbox = *world.store.inboxId();
    world.seed([&](test::Seed &seed) {
        const auto add = [&](const QString &label, const QString &kind, double addedAt,
                             const std::function<void(LibraryItem &)> &tweak = {}) {
            const QString id = seed.item(kind, addedAt, tweak);
            m_labelById.insert(id, label);
            return id;
        };
        const QString a = add(u"a"_s, u"image"_s, 10);
        const QString b = add(u"b"_s, u"link"_s, 20, [](LibraryItem &item) { item.favourite = true; });
        const QString c = add(u"c"_s, u"video"_s, 30, [](LibraryItem &item) { item.hiddenAt = 35; });
        const QString d = add(u"d"_s, u"text"_s, 40, [](LibraryItem &item) { item.deletedAt = 50; });
        add(u"e"_s, u"file"_s, 50, [](LibraryItem &item) {
            item.filePath = u"2024-01/song.mp3"_s;
            item.deletedAt = 45;
        });
        add(u"f"_s, u"file"_s, 60, [](LibraryItem &item) {
            item.filePath = u"2024-01/doc.pdf"_s;
            item.favourite = true;
            item.hiddenAt = 38;
        });
        const QString g = add(
            u"g"_s, u"image"_s, 70, [](LibraryItem &item) { item.sourceURL = u"https://x.com/someone/status/1"_s; });
        const QString h = add(
            u"h"_s, u"link"_s, 80, [](LibraryItem &item) { item.sourceURL = u"https://www.instagram.com/p/abc/"_s; });
        add(u"i"_s, u"text"_s, 90);
        add(u"j"_s, u"file"_s, 95, [](LibraryItem &item) { item.filePath = u"2024-02/clip.WAV"_s; });
        add(u"k"_s, u"image"_s, 5, [](LibraryItem &item) { item.sourceURL = u"https://notx.com/a/"_s; });

        // The board orders by when each item was filed, not by when it entered the library.
        seed.membership(a, m_boardId, 300);
        seed.membership(b, m_boardId, 200);
        seed.membership(g, m_boardId, 100);
        seed.membership(h, inbox, 5);
        seed.membership(c, inbox, 6);
        seed.membership(d, inbox, 7);
    });
    world.store.reloadAll();
}

void TestItemQueries::cleanupTestCase()
{
    m_world.reset();
}

QStringList TestItemQueries::labels(const QList<LibraryItem> &items) const
{
    QStringList result;
    for (const LibraryItem &item : items)
        result.append(m_labelById.value(item.id, item.id));
    return result;
}

void TestItemQueries::keys_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("kind");
    QTest::newRow("all") << u"all"_s << int(SidebarSelection::Kind::all);
    QTest::newRow("inbox") << u"inbox"_s << int(SidebarSelection::Kind::inbox);
    QTest::newRow("favourites") << u"favourites"_s << int(SidebarSelection::Kind::favourites);
    QTest::newRow("links") << u"links"_s << int(SidebarSelection::Kind::links);
    QTest::newRow("trash") << u"trash"_s << int(SidebarSelection::Kind::trash);
    QTest::newRow("hidden") << u"hidden"_s << int(SidebarSelection::Kind::hidden);
    for (const MediaTypeFilter filter : allMediaTypeFilters())
        QTest::addRow("type-%s", qPrintable(rawString(filter)))
            << u"type-"_s + rawString(filter) << int(SidebarSelection::Kind::type);
    QTest::newRow("collection") << u"5b0c3c3e-2f0a-4c55-9d0e-0d6d3d0f4a11"_s << int(SidebarSelection::Kind::collection);
}

void TestItemQueries::keys()
{
    QFETCH(QString, key);
    QFETCH(int, kind);
    const auto selection = SidebarSelection::fromKey(key);
    QVERIFY(selection);
    QCOMPARE(int(selection->kind()), kind);
    QCOMPARE(selection->key(), key);
    QCOMPARE(SidebarSelection::fromKey(selection->key()), selection);
}

void TestItemQueries::keysThatNameNothing()
{
    QVERIFY(!SidebarSelection::fromKey(QString()));
    QVERIFY(!SidebarSelection::fromKey(u"type-pictures"_s));
    QCOMPARE(SidebarSelection::type(MediaTypeFilter::image).key(), u"type-image"_s);
    QVERIFY(!(SidebarSelection::collection(u"x"_s) == SidebarSelection::collection(u"y"_s)));
    QVERIFY(!(SidebarSelection::type(MediaTypeFilter::image) == SidebarSelection::type(MediaTypeFilter::audio)));
}

void TestItemQueries::rowsInOrder_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("sort");
    QTest::addColumn<QStringList>("expected");
    const auto both = [](const char *name, const QString &key, const QStringList &newest, const QStringList &oldest) {
        QTest::addRow("%s newest", name) << key << u"newest"_s << newest;
        QTest::addRow("%s oldest", name) << key << u"oldest"_s << oldest;
    };
    both("all", u"all"_s, {u"j"_s, u"i"_s, u"h"_s, u"g"_s, u"b"_s, u"a"_s, u"k"_s},
        {u"k"_s, u"a"_s, u"b"_s, u"g"_s, u"h"_s, u"i"_s, u"j"_s});
    both("inbox", u"inbox"_s, {u"c"_s, u"h"_s}, {u"h"_s, u"c"_s});
    both("favourites", u"favourites"_s, {u"f"_s, u"b"_s}, {u"b"_s, u"f"_s});
    both("links", u"links"_s, {u"h"_s, u"b"_s}, {u"b"_s, u"h"_s});
    both("trash", u"trash"_s, {u"d"_s, u"e"_s}, {u"d"_s, u"e"_s});
    both("hidden", u"hidden"_s, {u"f"_s, u"c"_s}, {u"f"_s, u"c"_s});
    both("images", u"type-image"_s, {u"g"_s, u"a"_s, u"k"_s}, {u"k"_s, u"a"_s, u"g"_s});
    both("videos", u"type-videos"_s, {u"c"_s}, {u"c"_s});
    both("link filter", u"type-links"_s, {u"h"_s, u"b"_s}, {u"b"_s, u"h"_s});
    both("documents", u"type-documents"_s, {u"i"_s, u"f"_s}, {u"f"_s, u"i"_s});
    both("tweets", u"type-tweets"_s, {u"g"_s}, {u"g"_s});
    both("instagram", u"type-instagram"_s, {u"h"_s}, {u"h"_s});
    both("audio", u"type-audio"_s, {u"j"_s}, {u"j"_s});
    both("board", u"board"_s, {u"a"_s, u"b"_s, u"g"_s}, {u"g"_s, u"b"_s, u"a"_s});
}

void TestItemQueries::rowsInOrder()
{
    QFETCH(QString, key);
    QFETCH(QString, sort);
    QFETCH(QStringList, expected);
    Store &store = m_world->store;
    store.setSelectionKey(key == u"board" ? m_boardId : key);
    m_world->settings.setItemSort(sort);
    store.reloadItems();
    QCOMPARE(labels(store.items()), expected);
}

void TestItemQueries::scopeCounts_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("live");
    QTest::addColumn<int>("links");
    QTest::newRow("all") << u"all"_s << 7 << 2;
    QTest::newRow("inbox") << u"inbox"_s << 2 << 1;
    QTest::newRow("favourites") << u"favourites"_s << 2 << 1;
    QTest::newRow("links") << u"links"_s << 2 << 2;
    // The trash's clause is empty: a count over it spans the whole live library.
    QTest::newRow("trash") << u"trash"_s << 9 << 2;
    QTest::newRow("hidden") << u"hidden"_s << 2 << 0;
    QTest::newRow("images") << u"type-image"_s << 3 << 0;
    QTest::newRow("documents") << u"type-documents"_s << 2 << 0;
    QTest::newRow("board") << u"board"_s << 3 << 1;
}

void TestItemQueries::scopeCounts()
{
    QFETCH(QString, key);
    QFETCH(int, live);
    QFETCH(int, links);
    const auto selection = SidebarSelection::fromKey(key == u"board" ? m_boardId : key);
    const auto inboxId = m_world->store.inboxId();
    const auto liveQuery = ItemQueries::liveCountQuery(*selection, inboxId);
    const auto linkQuery = ItemQueries::linkCountQuery(*selection, inboxId);
    QVERIFY(liveQuery && linkQuery);
    QCOMPARE(m_world->scalar(liveQuery->sql, liveQuery->arguments).toInt(), live);
    QCOMPARE(m_world->scalar(linkQuery->sql, linkQuery->arguments).toInt(), links);
}

void TestItemQueries::sidebarAndTypeCounts()
{
    const Store &store = m_world->store;
    QCOMPARE(store.allCount(), 7);
    QCOMPARE(store.inboxCount(), 2);
    QCOMPARE(store.favouritesCount(), 2);
    QCOMPARE(store.linksCount(), 2);
    QCOMPARE(store.trashCount(), 2);
    QCOMPARE(store.hiddenCount(), 2);
    QCOMPARE(store.counts().value(m_boardId), 3);
    const QList<std::pair<MediaTypeFilter, int>> expected{
        {MediaTypeFilter::image, 3},
        {MediaTypeFilter::videos, 1},
        {MediaTypeFilter::links, 2},
        {MediaTypeFilter::documents, 2},
        {MediaTypeFilter::tweets, 1},
        {MediaTypeFilter::instagram, 1},
        {MediaTypeFilter::audio, 1},
    };
    // The type counts are read on a worker and arrive a moment later.
    for (const auto &[filter, count] : expected)
        QTRY_COMPARE(store.typeCount(filter), count);
    // The newest membership of the board is a's, filed at 300.
    QCOMPARE(store.collectionLastActivity().value(m_boardId), 300.0);
}

void TestItemQueries::inboxWithoutIdHasNoRows()
{
    QVERIFY(!ItemQueries::rowQuery(SidebarSelection::inbox(), ItemSort::newest, std::nullopt));
    QVERIFY(!ItemQueries::scopeClause(SidebarSelection::inbox(), std::nullopt));
    const auto trash = ItemQueries::scopeClause(SidebarSelection::trash(), std::nullopt);
    QVERIFY(trash && trash->sql.isEmpty() && trash->arguments.isEmpty());
}

void TestItemQueries::placeholdersPadToFewLengths()
{
    QSet<QString> statements;
    for (int count = 1; count <= ItemQueries::maxListLength; ++count) {
        QStringList values;
        for (int i = 0; i < count; ++i)
            values.append(QString::number(i));
        QVariantList arguments;
        const QString marks = ItemQueries::placeholders(values, arguments);
        QCOMPARE(marks.count(u'?'), arguments.size());
        QCOMPARE(arguments.mid(0, count), QVariantList(values.cbegin(), values.cend()));
        for (qsizetype i = count; i < arguments.size(); ++i)
            QVERIFY(arguments.at(i).isNull());
        statements.insert(marks);
    }
    QVERIFY(statements.size() <= 8);
}

QTEST_GUILESS_MAIN(TestItemQueries)
#include "tst_itemqueries.moc"
