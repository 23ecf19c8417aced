#include "core/collectiontree.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

LibraryCollection collection(const QString &id, const QString &name, std::optional<QString> parent = std::nullopt,
    qint64 sortIndex = 0, double createdAt = 0)
{
    LibraryCollection made;
    made.id = id;
    made.name = name;
    made.parentId = std::move(parent);
    made.sortIndex = sortIndex;
    made.createdAt = createdAt;
    return made;
}

QStringList idsOf(const QList<LibraryCollection> &collections)
{
    QStringList ids;
    for (const LibraryCollection &each : collections)
        ids.append(each.id);
    return ids;
}

} // namespace

/** The sidebar's tree walks: sibling order per sort, flattening, pins, activity roll-up, descendants, paths. */
class TestCollectionTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void siblingOrder_data()
    {
        QTest::addColumn<int>("sort");
        QTest::addColumn<bool>("reversed");
        QTest::addColumn<QStringList>("expected");
        // a: index 2, "beta", made 30, active 5; b: index 1, "Alpha", made 10, active 9;
        // c: index 1, "alpha2", made 20, no activity; d: index 3, "Gamma", made 40, active 5.
        QTest::newRow("manual: index, then name")
            << int(CollectionSort::manual) << false << QStringList{u"b"_s, u"c"_s, u"a"_s, u"d"_s};
        QTest::newRow("name, without regard to case")
            << int(CollectionSort::name) << false << QStringList{u"b"_s, u"c"_s, u"a"_s, u"d"_s};
        QTest::newRow("recently used: larger first, ties by name, none last")
            << int(CollectionSort::recentlyUsed) << false << QStringList{u"b"_s, u"a"_s, u"d"_s, u"c"_s};
        QTest::newRow("recently created: newest first")
            << int(CollectionSort::recentlyCreated) << false << QStringList{u"d"_s, u"a"_s, u"c"_s, u"b"_s};
        QTest::newRow("reversed manual") << int(CollectionSort::manual) << true
                                         << QStringList{u"d"_s, u"a"_s, u"c"_s, u"b"_s};
    }

    void siblingOrder()
    {
        QFETCH(int, sort);
        QFETCH(bool, reversed);
        QFETCH(QStringList, expected);
        const QList<LibraryCollection> siblings{
            collection(u"a"_s, u"beta"_s, std::nullopt, 2, 30),
            collection(u"b"_s, u"Alpha"_s, std::nullopt, 1, 10),
            collection(u"c"_s, u"alpha2"_s, std::nullopt, 1, 20),
            collection(u"d"_s, u"Gamma"_s, std::nullopt, 3, 40),
        };
        const QHash<QString, double> rollup{{u"a"_s, 5}, {u"b"_s, 9}, {u"d"_s, 5}};
        QCOMPARE(idsOf(CollectionTree::orderSiblings(siblings, CollectionSort(sort), reversed, rollup)), expected);
    }

    void flattenDepthFirst()
    {
        const QList<LibraryCollection> all{
            collection(u"child2"_s, u"Zed"_s, u"top"_s),
            collection(u"top"_s, u"Top"_s),
            collection(u"child1"_s, u"Ant"_s, u"top"_s),
            collection(u"grand"_s, u"Grand"_s, u"child1"_s),
            collection(u"orphan"_s, u"Orphan"_s, u"deleted-parent"_s),
        };
        const auto rows = CollectionTree::flatten(all, CollectionSort::name, false, {});
        QStringList seen;
        for (const CollectionTreeRow &row : rows)
            seen.append(row.collection.id + u':' + QString::number(row.depth) + (row.hasChildren ? u"+"_s : QString()));
        // A collection whose parent is gone stands at the top rather than vanishing.
        QCOMPARE(seen, (QStringList{u"orphan:0"_s, u"top:0+"_s, u"child1:1+"_s, u"grand:2"_s, u"child2:1"_s}));

        const auto collapsed = CollectionTree::flatten(all, CollectionSort::name, false, {}, {u"child1"_s});
        QCOMPARE(collapsed.size(), 4);
        QVERIFY(collapsed.at(2).hasChildren);
    }

    void damagedTreeIsWalkedOnce()
    {
        // a and b are each other's parent; neither is reachable from the top, and nothing loops.
        const QList<LibraryCollection> loop{
            collection(u"a"_s, u"A"_s, u"b"_s),
            collection(u"b"_s, u"B"_s, u"a"_s),
            collection(u"c"_s, u"C"_s),
        };
        QCOMPARE(CollectionTree::flatten(loop, CollectionSort::name, false, {}).size(), 1);
        const auto rollup = CollectionTree::activityRollup(loop, {{u"a"_s, 4}, {u"b"_s, 7}});
        QCOMPARE(rollup.value(u"a"_s), 7.0);
        QCOMPARE(rollup.value(u"b"_s), 7.0);
        QVERIFY(!rollup.contains(u"c"_s));
        QCOMPARE(CollectionTree::path(loop, u"a"_s, u"/"_s), u"B/A"_s);
    }

    void rollupFoldsUpTheTree()
    {
        const QList<LibraryCollection> tree{
            collection(u"top"_s, u"Top"_s),
            collection(u"mid"_s, u"Mid"_s, u"top"_s),
            collection(u"leaf"_s, u"Leaf"_s, u"mid"_s),
            collection(u"other"_s, u"Other"_s),
        };
        const auto rollup = CollectionTree::activityRollup(tree, {{u"top"_s, 3}, {u"leaf"_s, 8}, {u"other"_s, 1}});
        QCOMPARE(rollup.value(u"top"_s), 8.0);
        QCOMPARE(rollup.value(u"mid"_s), 8.0);
        QCOMPARE(rollup.value(u"leaf"_s), 8.0);
        QCOMPARE(rollup.value(u"other"_s), 1.0);
        QCOMPARE(
            CollectionTree::withDescendants(tree, {u"mid"_s, u"top"_s}), (QStringList{u"mid"_s, u"top"_s, u"leaf"_s}));
        QCOMPARE(CollectionTree::path(tree, u"leaf"_s, u" / "_s), u"Top / Mid / Leaf"_s);
        QCOMPARE(CollectionTree::path(tree, u"missing"_s, u" / "_s), QString());
    }

    void pinsByTime()
    {
        QList<LibraryCollection> all{
            collection(u"a"_s, u"A"_s), collection(u"b"_s, u"B"_s), collection(u"c"_s, u"C"_s)};
        all[0].pinnedAt = 20;
        all[2].pinnedAt = 10;
        QCOMPARE(idsOf(CollectionTree::pinned(all)), (QStringList{u"c"_s, u"a"_s}));
    }
};

QTEST_GUILESS_MAIN(TestCollectionTree)
#include "tst_collectiontree.moc"
