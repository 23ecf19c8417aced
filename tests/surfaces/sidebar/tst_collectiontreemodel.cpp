// The sidebar's collection rows built from plain lists: the order of each sort with and without
// reversal, collapsed parents, the pinned list, the icon and count of a row, and that a reload
// reaches the view as moves, inserts and removals under the item-model tester.

#include "surfaces/sidebar/collectiontreemodel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;
using kivo::CollectionTreeModel;

namespace {

kivo::LibraryCollection collection(const QString &id, qint64 sortIndex, double createdAt, const QString &parent = {})
{
    kivo::LibraryCollection c;
    c.id = id;
    c.name = id.at(0).toUpper() + id.mid(1);
    c.sortIndex = sortIndex;
    c.createdAt = c.modifiedAt = createdAt;
    if (!parent.isEmpty())
        c.parentId = parent;
    return c;
}

/**
 * Art holds Posters (which holds Swiss) and Ink; Travel and Food stand beside it; Stray's parent
 * was deleted, so it stands at the top. Food and Ink are pinned, Ink first.
 */
CollectionTreeModel::Source library()
{
    CollectionTreeModel::Source source;
    source.collections = {collection(u"travel"_s, 2, 10), collection(u"swiss"_s, 1, 60, u"posters"_s),
        collection(u"art"_s, 1, 30), collection(u"ink"_s, 2, 50, u"art"_s), collection(u"food"_s, 3, 20),
        collection(u"posters"_s, 1, 40, u"art"_s), collection(u"stray"_s, 0, 5, u"gone"_s)};
    source.collections[4].pinnedAt = 200;
    source.collections[3].pinnedAt = 100;
    source.activityRollup = {
        {u"art"_s, 500}, {u"travel"_s, 300}, {u"food"_s, 700}, {u"posters"_s, 500}, {u"ink"_s, 100}, {u"swiss"_s, 500}};
    return source;
}

/** Each visible row as "id@depth". */
QStringList rows(const CollectionTreeModel &model)
{
    QStringList shown;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row);
        shown.append(index.data(CollectionTreeModel::IdRole).toString() + u'@'
            + QString::number(index.data(CollectionTreeModel::DepthRole).toInt()));
    }
    return shown;
}

} // namespace

class TestCollectionTreeModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void siblingsFollowTheSort_data();
    void siblingsFollowTheSort();
    void collapsedParentsHideTheirChildren();
    void pinnedListIsByPinningTime();
    void rowsCarryCountIconAndPlace();
    void reloadsMoveRowsInsteadOfResetting();
};

void TestCollectionTreeModel::siblingsFollowTheSort_data()
{
    QTest::addColumn<kivo::CollectionSort>("sort");
    QTest::addColumn<bool>("reversed");
    QTest::addColumn<QStringList>("expected");

    // Worked out from the tree above by hand.
    QTest::newRow("manual") << kivo::CollectionSort::manual << false
                            << QStringList{u"stray@0"_s, u"art@0"_s, u"posters@1"_s, u"swiss@2"_s, u"ink@1"_s,
                                   u"travel@0"_s, u"food@0"_s};
    QTest::newRow("manual reversed") << kivo::CollectionSort::manual << true
                                     << QStringList{u"food@0"_s, u"travel@0"_s, u"art@0"_s, u"ink@1"_s, u"posters@1"_s,
                                            u"swiss@2"_s, u"stray@0"_s};
    QTest::newRow("name") << kivo::CollectionSort::name << false
                          << QStringList{u"art@0"_s, u"ink@1"_s, u"posters@1"_s, u"swiss@2"_s, u"food@0"_s,
                                 u"stray@0"_s, u"travel@0"_s};
    QTest::newRow("recently used: newest addition below first")
        << kivo::CollectionSort::recentlyUsed << false
        << QStringList{u"food@0"_s, u"art@0"_s, u"posters@1"_s, u"swiss@2"_s, u"ink@1"_s, u"travel@0"_s, u"stray@0"_s};
    QTest::newRow("recently created") << kivo::CollectionSort::recentlyCreated << false
                                      << QStringList{u"art@0"_s, u"ink@1"_s, u"posters@1"_s, u"swiss@2"_s, u"food@0"_s,
                                             u"travel@0"_s, u"stray@0"_s};
}

void TestCollectionTreeModel::siblingsFollowTheSort()
{
    QFETCH(kivo::CollectionSort, sort);
    QFETCH(bool, reversed);
    QFETCH(QStringList, expected);
    CollectionTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto source = library();
    source.sort = sort;
    source.reversed = reversed;
    model.setSource(source);
    QCOMPARE(rows(model), expected);
}

void TestCollectionTreeModel::collapsedParentsHideTheirChildren()
{
    CollectionTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    auto source = library();
    source.collapsed = {u"posters"_s};
    model.setSource(source);
    QCOMPARE(
        rows(model), (QStringList{u"stray@0"_s, u"art@0"_s, u"posters@1"_s, u"ink@1"_s, u"travel@0"_s, u"food@0"_s}));
    const QModelIndex posters = model.index(model.rowOf(u"posters"_s));
    QCOMPARE(posters.data(CollectionTreeModel::HasChildrenRole).toBool(), true);
    QCOMPARE(posters.data(CollectionTreeModel::ExpandedRole).toBool(), false);

    // Closing Art too hides Posters and, below it, Swiss; opening Posters alone shows nothing more.
    source.collapsed = {u"art"_s};
    model.setSource(source);
    QCOMPARE(rows(model), (QStringList{u"stray@0"_s, u"art@0"_s, u"travel@0"_s, u"food@0"_s}));
    QCOMPARE(model.rowOf(u"swiss"_s), -1);
}

void TestCollectionTreeModel::pinnedListIsByPinningTime()
{
    CollectionTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setPinnedOnly(true);
    model.setSource(library());
    QCOMPARE(rows(model), (QStringList{u"ink@0"_s, u"food@0"_s}));
    QCOMPARE(model.index(0).data(CollectionTreeModel::PinnedRole).toBool(), true);
    QCOMPARE(model.index(0).data(CollectionTreeModel::HasChildrenRole).toBool(), false);

    // Unpinning Ink and pinning Travel later than Food.
    auto source = library();
    source.collections[3].pinnedAt.reset();
    source.collections[0].pinnedAt = 300;
    model.setSource(source);
    QCOMPARE(rows(model), (QStringList{u"food@0"_s, u"travel@0"_s}));
}

void TestCollectionTreeModel::rowsCarryCountIconAndPlace()
{
    CollectionTreeModel model;
    auto source = library();
    source.counts = {{u"art"_s, 3}, {u"swiss"_s, 12}};
    source.collections[2].icon = u"paintpalette"_s; // Art chose its own
    source.semanticIcons = {{u"art"_s, u"sparkles"_s}, {u"food"_s, u"fork.knife"_s}};
    model.setSource(source);
    const auto at
        = [&](const QString &id, CollectionTreeModel::Role role) { return model.index(model.rowOf(id)).data(role); };
    QCOMPARE(at(u"art"_s, CollectionTreeModel::CountRole).toInt(), 3); // its own members, not Swiss's
    QCOMPARE(at(u"swiss"_s, CollectionTreeModel::CountRole).toInt(), 12);
    QCOMPARE(at(u"travel"_s, CollectionTreeModel::CountRole).toInt(), 0);
    QCOMPARE(at(u"art"_s, CollectionTreeModel::IconRole).toString(), u"paintpalette"_s);
    QCOMPARE(at(u"food"_s, CollectionTreeModel::IconRole).toString(), u"fork.knife"_s);
    QCOMPARE(at(u"travel"_s, CollectionTreeModel::IconRole).toString(), u"folder"_s);
    QCOMPARE(at(u"swiss"_s, CollectionTreeModel::ParentIdRole).toString(), u"posters"_s);
    QCOMPARE(at(u"art"_s, CollectionTreeModel::ParentIdRole).toString(), QString());
    QCOMPARE(at(u"food"_s, CollectionTreeModel::NameRole).toString(), u"Food"_s);
}

void TestCollectionTreeModel::reloadsMoveRowsInsteadOfResetting()
{
    CollectionTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSource(library());
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy count(&model, &CollectionTreeModel::countChanged);

    auto source = library();
    source.sort = kivo::CollectionSort::name;
    model.setSource(source);
    QVERIFY(!moved.isEmpty());
    QCOMPARE(inserted.size(), 0);
    QCOMPARE(removed.size(), 0);
    QCOMPARE(count.size(), 0);

    // A new collection inside Travel and a rename of Food: one insert, one changed row.
    source.collections.append(collection(u"lisbon"_s, 1, 70, u"travel"_s));
    source.collections[4].name = u"Eating"_s;
    changed.clear();
    model.setSource(source);
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(model.rowOf(u"lisbon"_s), model.rowOf(u"travel"_s) + 1);
    QCOMPARE(changed.size(), 2); // Food's name; Travel now has children
    QCOMPARE(count.size(), 1);

    // Deleting Art with everything inside it takes its four rows in one removal.
    source.collections.removeIf([](const kivo::LibraryCollection &c) {
        return c.id == u"art" || c.id == u"posters" || c.id == u"ink" || c.id == u"swiss";
    });
    model.setSource(source);
    QCOMPARE(removed.size(), 1);
    QCOMPARE(rows(model), (QStringList{u"food@0"_s, u"stray@0"_s, u"travel@0"_s, u"lisbon@1"_s}));
    QCOMPARE(reset.size(), 0);
}

QTEST_GUILESS_MAIN(TestCollectionTreeModel)
#include "tst_collectiontreemodel.moc"
