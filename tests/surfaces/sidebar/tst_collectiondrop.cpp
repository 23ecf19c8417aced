// Where a collection dropped between two rows of the sidebar lands, for each kind of gap: at the
// top, at the end, inside an open parent, under its own row, inside its own child, in a damaged
// tree and in a reversed order.

#include "surfaces/sidebar/collectiondrop.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using kivo::CollectionDrop::Placement;

namespace {

kivo::LibraryCollection collection(const QString &id, qint64 sortIndex, const QString &parent = {})
{
    kivo::LibraryCollection c;
    c.id = id;
    c.name = id;
    c.sortIndex = sortIndex;
    if (!parent.isEmpty())
        c.parentId = parent;
    return c;
}

/**
 * Drawn in the manual order as: stray, art, posters, swiss, ink, travel, food (rows 0 to 6); Stray's
 * parent is gone, so it stands at the top.
 */
kivo::CollectionDrop::Tree tree(bool reversed)
{
    kivo::CollectionDrop::Tree tree;
    tree.collections = {collection(u"travel"_s, 2), collection(u"swiss"_s, 1, u"posters"_s), collection(u"art"_s, 1),
        collection(u"ink"_s, 2, u"art"_s), collection(u"food"_s, 3), collection(u"posters"_s, 1, u"art"_s),
        collection(u"stray"_s, 0, u"gone"_s)};
    tree.reversed = reversed;
    tree.rows = kivo::CollectionTree::flatten(tree.collections, tree.sort, reversed, tree.rollup);
    return tree;
}

} // namespace

class TestCollectionDrop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gapsPlaceTheCollection_data();
    void gapsPlaceTheCollection();
};

void TestCollectionDrop::gapsPlaceTheCollection_data()
{
    QTest::addColumn<bool>("reversed");
    QTest::addColumn<QString>("moved");
    QTest::addColumn<int>("gap");
    QTest::addColumn<bool>("placed");
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QStringList>("siblings");
    QTest::addColumn<bool>("parentChanges");

    QTest::newRow("to the very top") << false << u"food"_s << 0 << true << QString()
                                     << QStringList{u"food"_s, u"stray"_s, u"art"_s, u"travel"_s} << false;
    QTest::newRow("last one to the end: no change")
        << false << u"food"_s << 7 << false << QString() << QStringList() << false;
    QTest::newRow("just above the next one: no change")
        << false << u"travel"_s << 6 << false << QString() << QStringList() << false;
    QTest::newRow("into an open parent, before its second child")
        << false << u"travel"_s << 4 << true << u"art"_s << QStringList{u"posters"_s, u"travel"_s, u"ink"_s} << true;
    QTest::newRow("under its own row, above its first child")
        << false << u"art"_s << 2 << false << QString() << QStringList() << false;
    QTest::newRow("inside its own child: placed, for the loop guard to refuse")
        << false << u"art"_s << 3 << true << u"posters"_s << QStringList{u"art"_s, u"swiss"_s} << true;
    QTest::newRow("out of a nest to the top level")
        << false << u"swiss"_s << 5 << true << QString()
        << QStringList{u"stray"_s, u"art"_s, u"swiss"_s, u"travel"_s, u"food"_s} << true;
    QTest::newRow("to the end, from inside")
        << false << u"ink"_s << 7 << true << QString()
        << QStringList{u"stray"_s, u"art"_s, u"travel"_s, u"food"_s, u"ink"_s} << true;
    // Reversed, the rows are food, travel, art, ink, posters, swiss, stray; the siblings come back in
    // stored order, the drawn order turned round.
    QTest::newRow("reversed: to the top") << true << u"stray"_s << 0 << true << QString()
                                          << QStringList{u"art"_s, u"travel"_s, u"food"_s, u"stray"_s} << false;
    QTest::newRow("reversed: between two children")
        << true << u"food"_s << 4 << true << u"art"_s << QStringList{u"posters"_s, u"food"_s, u"ink"_s} << true;
    QTest::newRow("unknown collection") << false << u"nowhere"_s << 0 << false << QString() << QStringList() << false;
    QTest::newRow("gap past the end") << false << u"food"_s << 8 << false << QString() << QStringList() << false;
}

void TestCollectionDrop::gapsPlaceTheCollection()
{
    QFETCH(bool, reversed);
    QFETCH(QString, moved);
    QFETCH(int, gap);
    QFETCH(bool, placed);
    QFETCH(QString, parent);
    QFETCH(QStringList, siblings);
    QFETCH(bool, parentChanges);

    const auto placement = kivo::CollectionDrop::placementForGap(tree(reversed), moved, gap);
    QCOMPARE(placement.has_value(), placed);
    if (!placement)
        return;
    QCOMPARE(placement->parentId, parent);
    QCOMPARE(placement->siblingIds, siblings);
    QCOMPARE(placement->parentChanges, parentChanges);
}

QTEST_GUILESS_MAIN(TestCollectionDrop)
#include "tst_collectiondrop.moc"
