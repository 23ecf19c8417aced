// The sidebar's logic on a real Store and library: what a drop on a row, between rows and under
// the tree writes, the loop guard's refusal, making and renaming a collection, deleting the
// clicked or the selected collections with the undo, the keys through the open sections, and
// the title of the selection. The database is read back after each step.

#include "surfaces/sidebar/collectiontreemodel.h"
#include "surfaces/sidebar/sidebarcontroller.h"
#include "tests/core/storeworld.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/** A Store with the sidebar's models and controller on it, as Sidebar.qml wires them. */
struct SidebarWorld {
    kivo::test::StoreWorld world;
    kivo::CollectionTreeModel tree;
    kivo::CollectionTreeModel pinned;
    kivo::SidebarController controller;

    SidebarWorld()
    {
        tree.setSettings(&world.settings);
        tree.setStore(&world.store);
        pinned.setPinnedOnly(true);
        pinned.setSettings(&world.settings);
        pinned.setStore(&world.store);
        controller.setStore(&world.store);
        controller.setSettings(&world.settings);
        controller.setTree(&tree);
        controller.setPinned(&pinned);
    }

    [[nodiscard]] QString parentOf(const QString &id) const
    {
        return world.scalar(u"SELECT parentId FROM collection WHERE id = ?"_s, {id}).toString();
    }
    [[nodiscard]] QStringList names() const
    {
        QStringList shown;
        for (int row = 0; row < tree.rowCount(); ++row) {
            const QModelIndex index = tree.index(row);
            shown.append(QString(index.data(kivo::CollectionTreeModel::DepthRole).toInt() * 2, u' ')
                + index.data(kivo::CollectionTreeModel::NameRole).toString());
        }
        return shown;
    }
    [[nodiscard]] int members(const QString &collectionId) const
    {
        return world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {collectionId}).toInt();
    }
};

} // namespace

class TestSidebarController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itemDropsFileIntoTheCollection_data();
    void itemDropsFileIntoTheCollection();
    void collectionDropsNestAndRefuseLoops();
    void gapDropsReorderInTheManualOrder();
    void gapDropsOutsideTheManualOrderOnlyChangeTheParent();
    void newCollectionStartsItsRename();
    void deleteTakesTheSelectedCollectionsAndUndoBringsThemBack();
    void keysWalkTheOpenSections();
    void selectionTitleFollowsTheSelection();
};

void TestSidebarController::itemDropsFileIntoTheCollection_data()
{
    QTest::addColumn<QString>("payload");
    QTest::addColumn<int>("filed");

    QTest::newRow("one card") << u"KIVO-ITEM %1"_s << 1;
    QTest::newRow("a multi-drag") << u"KIVO-ITEMS %1,%2,%3"_s << 3;
    QTest::newRow("a repeated id counts once") << u"KIVO-ITEMS %1,%1"_s << 1;
    QTest::newRow("text from another program") << u"a picture of %1"_s << 0;
    QTest::newRow("a collection is no item") << u"KIVO-COLLECTION %1"_s << 0;
}

void TestSidebarController::itemDropsFileIntoTheCollection()
{
    QFETCH(QString, payload);
    QFETCH(int, filed);
    SidebarWorld sidebar;
    const QString a = sidebar.world.addItem(u"image"_s, 100);
    const QString b = sidebar.world.addItem(u"link"_s, 200);
    const QString c = sidebar.world.addItem(u"video"_s, 300);
    const QString board = sidebar.world.addCollection(u"Board"_s);
    const QString text = payload.arg(a, b, c);

    QCOMPARE(sidebar.controller.acceptsDrag(text), filed > 0 || text.startsWith(u"KIVO-COLLECTION"));
    sidebar.controller.dropOnCollection(text, board);
    QCOMPARE(sidebar.members(board), filed);
    // Filing is into, not out of: the items stay wherever else they were (here: nowhere).
    QCOMPARE(sidebar.world.scalar(u"SELECT COUNT(*) FROM itemCollection"_s).toInt(), filed);
    QCOMPARE(sidebar.world.store.counts().value(board), filed);
}

void TestSidebarController::collectionDropsNestAndRefuseLoops()
{
    SidebarWorld sidebar;
    QAbstractItemModelTester tester(&sidebar.tree, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QString art = sidebar.world.addCollection(u"Art"_s);
    const QString posters = sidebar.world.addCollection(u"Posters"_s, art);
    const QString food = sidebar.world.addCollection(u"Food"_s);
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Posters"_s, u"Food"_s}));

    QVERIFY(sidebar.controller.dropOnCollection(u"KIVO-COLLECTION "_s + food, posters));
    QCOMPARE(sidebar.parentOf(food), posters);
    QCOMPARE(sidebar.world.store.toast(), u"Food Filed Inside Posters"_s);
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Posters"_s, u"    Food"_s}));

    // Art into its grandchild: refused with the toast, nothing written.
    QVERIFY(!sidebar.controller.dropOnCollection(u"KIVO-COLLECTION "_s + art, food));
    QCOMPARE(sidebar.world.store.toast(), u"That Would Make a Loop"_s);
    QVERIFY(sidebar.parentOf(art).isEmpty());
    // Onto itself: nothing, and no new toast.
    const int serial = sidebar.world.store.toastSerial();
    QVERIFY(!sidebar.controller.dropOnCollection(u"KIVO-COLLECTION "_s + art, art));
    QCOMPARE(sidebar.world.store.toastSerial(), serial);

    // Between Posters and Food, Art would stand inside Posters, below itself: the same refusal.
    QVERIFY(!sidebar.controller.dropInGap(u"KIVO-COLLECTION "_s + art, sidebar.tree.rowOf(food)));
    QCOMPARE(sidebar.world.store.toast(), u"That Would Make a Loop"_s);
    QCOMPARE(sidebar.world.store.toastSerial(), serial + 1);

    // Under the heading, or under the tree: back to the top level.
    QVERIFY(sidebar.controller.dropAtTopLevel(u"KIVO-COLLECTION "_s + food));
    QVERIFY(sidebar.parentOf(food).isEmpty());
    QVERIFY(!sidebar.controller.dropAtTopLevel(u"KIVO-COLLECTION "_s + food)); // already there
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Posters"_s, u"Food"_s}));
}

void TestSidebarController::gapDropsReorderInTheManualOrder()
{
    SidebarWorld sidebar;
    const QString art = sidebar.world.addCollection(u"Art"_s);
    const QString posters = sidebar.world.addCollection(u"Posters"_s, art);
    const QString food = sidebar.world.addCollection(u"Food"_s);
    const QString travel = sidebar.world.addCollection(u"Travel"_s);
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Posters"_s, u"Food"_s, u"Travel"_s}));

    // Travel above Art: the top level renumbered from 0 in its new order.
    QVERIFY(sidebar.controller.dropInGap(u"KIVO-COLLECTION "_s + travel, sidebar.tree.rowOf(art)));
    QCOMPARE(sidebar.names(), (QStringList{u"Travel"_s, u"Art"_s, u"  Posters"_s, u"Food"_s}));
    const auto sortIndex = [&](const QString &id) {
        return sidebar.world.scalar(u"SELECT sortIndex FROM collection WHERE id = ?"_s, {id}).toInt();
    };
    QCOMPARE(sortIndex(travel), 0);
    QCOMPARE(sortIndex(art), 1);
    QCOMPARE(sortIndex(food), 2);

    // Food into the gap under Art's row: inside Art, before Posters.
    QVERIFY(sidebar.controller.dropInGap(u"KIVO-COLLECTION "_s + food, sidebar.tree.rowOf(posters)));
    QCOMPARE(sidebar.parentOf(food), art);
    QCOMPARE(sidebar.names(), (QStringList{u"Travel"_s, u"Art"_s, u"  Food"_s, u"  Posters"_s}));

    // A drop where it already is writes nothing.
    const double modified
        = sidebar.world.scalar(u"SELECT modifiedAt FROM collection WHERE id = ?"_s, {travel}).toDouble();
    QVERIFY(!sidebar.controller.dropInGap(u"KIVO-COLLECTION "_s + travel, sidebar.tree.rowOf(art)));
    QCOMPARE(sidebar.world.scalar(u"SELECT modifiedAt FROM collection WHERE id = ?"_s, {travel}).toDouble(), modified);
    // Items dropped between rows are not collections: nothing happens.
    const QString item = sidebar.world.addItem(u"image"_s, 1);
    QVERIFY(!sidebar.controller.dropInGap(u"KIVO-ITEM "_s + item, 0));
}

void TestSidebarController::gapDropsOutsideTheManualOrderOnlyChangeTheParent()
{
    SidebarWorld sidebar;
    sidebar.world.settings.setCollectionSort(u"name"_s);
    const QString zoo = sidebar.world.addCollection(u"Zoo"_s);
    const QString art = sidebar.world.addCollection(u"Art"_s);
    const QString inks = sidebar.world.addCollection(u"Inks"_s, art);
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Inks"_s, u"Zoo"_s}));
    const auto sortIndexes = [&] {
        return sidebar.world
            .scalar(u"SELECT group_concat(sortIndex) FROM (SELECT sortIndex FROM collection "
                    "WHERE isInbox = 0 ORDER BY createdAt)"_s)
            .toString();
    };
    const QString before = sortIndexes();

    // Above Art at the top level: the name order decides, so nothing moves and nothing is written.
    QVERIFY(!sidebar.controller.dropInGap(u"KIVO-COLLECTION "_s + zoo, 0));
    // Between Art and Inks: Zoo goes inside Art, and sorts there by name.
    QVERIFY(sidebar.controller.dropInGap(u"KIVO-COLLECTION "_s + zoo, sidebar.tree.rowOf(inks)));
    QCOMPARE(sidebar.parentOf(zoo), art);
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Inks"_s, u"  Zoo"_s}));
    QCOMPARE(sortIndexes(), before);
}

void TestSidebarController::newCollectionStartsItsRename()
{
    SidebarWorld sidebar;
    kivo::Store &store = sidebar.world.store;
    const QString id = sidebar.controller.createCollection();
    QVERIFY(!id.isEmpty());
    QCOMPARE(store.collectionById(id)->name, u"New Collection"_s);
    QCOMPARE(store.renameTargetKind(), u"collection"_s);
    QCOMPARE(store.renameTargetId(), id);
    QCOMPARE(store.freshCollectionId(), id);

    sidebar.controller.commitRename(id, u"  Moodboard \n"_s);
    QCOMPARE(sidebar.world.scalar(u"SELECT name FROM collection WHERE id = ?"_s, {id}).toString(), u"Moodboard"_s);
    QVERIFY(store.renameTargetId().isEmpty());
    QVERIFY(store.freshCollectionId().isEmpty());

    // A blank name keeps the old one; the inbox is never renamed.
    sidebar.controller.beginRename(id);
    sidebar.controller.commitRename(id, u"   "_s);
    QCOMPARE(sidebar.world.scalar(u"SELECT name FROM collection WHERE id = ?"_s, {id}).toString(), u"Moodboard"_s);
    sidebar.controller.beginRename(store.inboxIdText());
    QVERIFY(store.renameTargetId().isEmpty());

    // Made inside a closed collection, the new one shows: its parent opens, as does the section.
    store.toggleCollapsed(id);
    sidebar.world.settings.setCollectionsSectionExpanded(false);
    const QString child = sidebar.controller.createCollection(id);
    QCOMPARE(sidebar.parentOf(child), id);
    QVERIFY(!store.isCollapsed(id));
    QVERIFY(sidebar.world.settings.collectionsSectionExpanded());
    QVERIFY(sidebar.tree.rowOf(child) > sidebar.tree.rowOf(id));
}

void TestSidebarController::deleteTakesTheSelectedCollectionsAndUndoBringsThemBack()
{
    SidebarWorld sidebar;
    kivo::Store &store = sidebar.world.store;
    const QString art = sidebar.world.addCollection(u"Art"_s);
    const QString posters = sidebar.world.addCollection(u"Posters"_s, art);
    const QString food = sidebar.world.addCollection(u"Food"_s);
    const QString travel = sidebar.world.addCollection(u"Travel"_s);
    const QString item = sidebar.world.addItem(u"image"_s, 100);
    sidebar.world.addMembership(item, posters, 42);
    store.reloadAll();

    // A right click on a collection outside the selection deletes that one alone.
    store.setSelectedCollectionIdList({food, travel});
    QCOMPARE(sidebar.controller.collectionTargets(art), QStringList{art});
    sidebar.controller.deleteCollection(art);
    QCOMPARE(store.toast(), u"2 Collections Deleted"_s); // Art and, inside it, Posters
    QCOMPARE(store.toastAction(), u"Undo"_s);
    QCOMPARE(sidebar.members(posters), 0);
    QCOMPARE(sidebar.names(), (QStringList{u"Food"_s, u"Travel"_s}));

    store.triggerToastAction();
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Posters"_s, u"Food"_s, u"Travel"_s}));
    QCOMPARE(sidebar.world.scalar(u"SELECT addedAt FROM itemCollection WHERE collectionId = ?"_s, {posters}).toDouble(),
        42.0);

    // On one of the selected, the whole selection goes.
    QStringList targets = sidebar.controller.collectionTargets(food);
    targets.sort();
    QStringList expected{food, travel};
    expected.sort();
    QCOMPARE(targets, expected);
    sidebar.controller.deleteCollection(food);
    QCOMPARE(store.toast(), u"2 Collections Deleted"_s);
    QCOMPARE(sidebar.names(), (QStringList{u"Art"_s, u"  Posters"_s}));
    QVERIFY(store.selectedCollectionIdList().isEmpty());
}

void TestSidebarController::keysWalkTheOpenSections()
{
    SidebarWorld sidebar;
    kivo::Store &store = sidebar.world.store;
    const QString art = sidebar.world.addCollection(u"Art"_s);
    const QString posters = sidebar.world.addCollection(u"Posters"_s, art);
    const QString food = sidebar.world.addCollection(u"Food"_s);
    store.pinCollection(food, true);

    const QStringList library{u"all"_s, u"inbox"_s, u"favourites"_s, u"links"_s, u"trash"_s, u"hidden"_s};
    const QStringList types{u"type-image"_s, u"type-videos"_s, u"type-links"_s, u"type-documents"_s, u"type-tweets"_s,
        u"type-instagram"_s, u"type-audio"_s};
    QCOMPARE(sidebar.controller.visibleKeys(), library + types + QStringList({food, art, posters, food}));

    // Closed sections and closed collections are stepped over.
    sidebar.world.settings.setTypesSectionExpanded(false);
    store.toggleCollapsed(art);
    QCOMPARE(sidebar.controller.visibleKeys(), library + QStringList({food, art, food}));

    store.setSelectionKey(u"hidden"_s);
    sidebar.controller.moveSelection(1);
    QCOMPARE(store.selectionKey(), food); // the pinned copy
    QCOMPARE(sidebar.controller.focusSection(), u"pinned"_s);
    sidebar.controller.moveSelection(1);
    QCOMPARE(store.selectionKey(), art);
    QCOMPARE(sidebar.controller.focusSection(), u"collections"_s);
    // Right opens Art, a second Right steps onto Posters; Left closes nothing there but climbs to Art.
    sidebar.controller.expandOrEnter(true);
    QVERIFY(!store.isCollapsed(art));
    sidebar.controller.expandOrEnter(true);
    QCOMPARE(store.selectionKey(), posters);
    sidebar.controller.expandOrEnter(false);
    QCOMPARE(store.selectionKey(), art);
    sidebar.controller.expandOrEnter(false);
    QVERIFY(store.isCollapsed(art));

    // From the tree's copy of a pinned collection, Up goes to the tree row above, not the pinned list's.
    sidebar.controller.moveSelection(1);
    QCOMPARE(store.selectionKey(), food);
    sidebar.controller.moveSelection(-1);
    QCOMPARE(store.selectionKey(), art);
    sidebar.controller.moveSelection(1000);
    QCOMPARE(store.selectionKey(), food);
    sidebar.controller.moveSelection(-1000);
    QCOMPARE(store.selectionKey(), u"all"_s);
}

void TestSidebarController::selectionTitleFollowsTheSelection()
{
    SidebarWorld sidebar;
    kivo::Store &store = sidebar.world.store;
    QCOMPARE(sidebar.controller.selectionTitle(), u"All"_s);
    store.setSelectionKey(u"type-documents"_s);
    QCOMPARE(sidebar.controller.selectionTitle(), u"Documents"_s);
    const QString art = sidebar.world.addCollection(u"Art"_s);
    store.setSelectionKey(art);
    QCOMPARE(sidebar.controller.selectionTitle(), u"Art"_s);
    QSignalSpy changed(&sidebar.controller, &kivo::SidebarController::selectionTitleChanged);
    store.renameCollection(art, u"Artwork"_s);
    QVERIFY(!changed.isEmpty());
    QCOMPARE(sidebar.controller.selectionTitle(), u"Artwork"_s);
}

QTEST_GUILESS_MAIN(TestSidebarController)
#include "tst_sidebarcontroller.moc"
