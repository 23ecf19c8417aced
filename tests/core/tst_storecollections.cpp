#include "core/userdefaults.h"
#include "tests/core/storeworld.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;
using kivo::test::StoreWorld;

namespace {

QStringList treeNames(const Store &store)
{
    QStringList names;
    for (const CollectionTreeRow &row : store.collectionTree())
        names.append(QString(row.depth, u'-') + row.collection.name);
    return names;
}

} // namespace

/**
 * The collection tree kept by the Store: creation and its order, rename, icon and pin, nesting
 * with the loop guard, reordering, deletion with its undo, the inbox's refusals, the sidebar's
 * order per setting, the collapsed set and the activity lists.
 */
class TestStoreCollections : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void createAtTheEndOfTheManualOrder();
    void renameIconAndPin();
    void moveAndTheLoopGuard();
    void reorderSiblings();
    void deleteParentAndUndo();
    void deleteSkipsTheInbox();
    void sidebarOrderFollowsTheSetting_data();
    void sidebarOrderFollowsTheSetting();
    void collapsedSetIsRemembered();
    void activityLists();
};

void TestStoreCollections::createAtTheEndOfTheManualOrder()
{
    StoreWorld world;
    Store &store = world.store;
    const QString first = store.createCollection(u"Travel"_s);
    QCOMPARE(store.collectionById(first)->sortIndex, 1);
    const QString second = store.createCollection(u"Interiors"_s, first);
    const LibraryCollection made = *store.collectionById(second);
    QCOMPARE(made.sortIndex, 2);
    QCOMPARE(made.parentId, first);
    QVERIFY(!made.isInbox && !made.icon && !made.pinnedAt && !made.importedAt && !made.deletedAt);
    QCOMPARE(made.createdAt, made.modifiedAt);
    QCOMPARE(made.id, made.id.toLower());
    QCOMPARE(made.id.size(), 36);
    QVERIFY(store.createCollection(u"Nope"_s, *store.inboxId()).isEmpty()); // nothing nests under the inbox
    QCOMPARE(treeNames(store), (QStringList{u"Travel"_s, u"-Interiors"_s}));
}

void TestStoreCollections::renameIconAndPin()
{
    StoreWorld world;
    Store &store = world.store;
    const QString id = store.createCollection(u"Draft"_s);
    QVERIFY(store.renameCollection(id, u"  Final \n"_s));
    QCOMPARE(store.collectionById(id)->name, u"Final"_s);
    QVERIFY(!store.renameCollection(id, u"  "_s));
    QVERIFY(!store.renameCollection(*store.inboxId(), u"Mine"_s));
    QCOMPARE(store.inboxCollection()->name, u"Inbox"_s);

    QVERIFY(store.setCollectionIcon(id, u"leaf"_s));
    QCOMPARE(store.collectionById(id)->icon, u"leaf"_s);
    QVERIFY(store.setCollectionIcon(id, QString()));
    QVERIFY(!store.collectionById(id)->icon);

    QVERIFY(store.pinCollection(id, true));
    QVERIFY(store.collectionById(id)->pinnedAt);
    QCOMPARE(store.collectionData(id).value(u"pinned"_s).toBool(), true);
    QVERIFY(store.pinCollection(id, false));
    QVERIFY(!store.collectionById(id)->pinnedAt);
}

void TestStoreCollections::moveAndTheLoopGuard()
{
    StoreWorld world;
    Store &store = world.store;
    const QString a = store.createCollection(u"A"_s);
    const QString b = store.createCollection(u"B"_s, a);
    const QString c = store.createCollection(u"C"_s, b);
    const QString d = store.createCollection(u"D"_s);
    const int toasts = store.toastSerial();

    QVERIFY(!store.moveCollection(a, c)); // under its grandchild
    QCOMPARE(store.toast(), u"That Would Make a Loop"_s);
    QVERIFY(!store.collectionById(a)->parentId);
    store.dismissToast();

    const int afterLoop = store.toastSerial();
    QVERIFY(afterLoop > toasts);
    QVERIFY(!store.moveCollection(a, a));
    QVERIFY(!store.moveCollection(a, *store.inboxId()));
    QVERIFY(!store.moveCollection(*store.inboxId(), d));
    QCOMPARE(store.toastSerial(), afterLoop); // silent refusals
    QVERIFY(!store.collectionById(a)->parentId);

    QVERIFY(store.moveCollection(d, b));
    QCOMPARE(store.toast(), u"D Filed Inside B"_s);
    QCOMPARE(store.collectionById(d)->parentId, b);
    QCOMPARE(store.collectionPath(d), u"A / B / D"_s);

    const int beforeTop = store.toastSerial();
    QVERIFY(store.moveCollection(c));
    QVERIFY(!store.collectionById(c)->parentId);
    QCOMPARE(store.toastSerial(), beforeTop); // to the top: no toast
}

void TestStoreCollections::reorderSiblings()
{
    StoreWorld world;
    Store &store = world.store;
    const QString a = store.createCollection(u"A"_s);
    const QString b = store.createCollection(u"B"_s);
    const QString c = store.createCollection(u"C"_s);
    const QString parent = store.createCollection(u"P"_s);
    QVERIFY(store.reorderCollections({c, *store.inboxId(), a, b}, parent));
    QCOMPARE(store.collectionById(c)->sortIndex, 0);
    QCOMPARE(store.collectionById(a)->sortIndex, 2);
    QCOMPARE(store.collectionById(b)->parentId, parent);
    QCOMPARE(store.inboxCollection()->sortIndex, -1);
    QVERIFY(!store.inboxCollection()->parentId);
    QCOMPARE(treeNames(store), (QStringList{u"P"_s, u"-C"_s, u"-A"_s, u"-B"_s}));
    QVERIFY(!store.reorderCollections({parent}, c)); // into its own child: refused
    QVERIFY(!store.collectionById(parent)->parentId);
}

void TestStoreCollections::deleteParentAndUndo()
{
    StoreWorld world;
    Store &store = world.store;
    const QString parent = store.createCollection(u"Parent"_s);
    const QString child = store.createCollection(u"Child"_s, parent);
    const QString grandchild = store.createCollection(u"Grandchild"_s, child);
    const QString kept = store.createCollection(u"Kept"_s);
    QString shared, only;
    world.seed([&](test::Seed &seed) {
        shared = seed.item(u"image"_s, 1);
        only = seed.item(u"image"_s, 2);
        seed.membership(shared, parent, 11);
        seed.membership(shared, grandchild, 22);
        seed.membership(only, child, 33);
        seed.membership(shared, kept, 44);
        seed.db().insert(CanvasPosition{shared, child, 1, 2, 1.0, 0});
    });
    store.setSelectionKey(child);
    store.setSelectedCollectionIdList({child, kept});

    QVERIFY(store.deleteCollections({parent}));
    QCOMPARE(store.toast(), u"3 Collections Deleted"_s);
    QCOMPARE(store.toastAction(), u"Undo"_s);
    QCOMPARE(store.selectionKey(), u"all"_s);
    QCOMPARE(store.selectedCollectionIdList(), QStringList{kept});
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM collection WHERE deletedAt IS NOT NULL"_s).toInt(), 3);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM itemCollection"_s).toInt(), 1);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL"_s).toInt(), 2); // members stay
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM canvasPosition"_s).toInt(), 1);
    QCOMPARE(store.collections().size(), 1);
    QVERIFY(store.canUndoDelete());
    QCOMPARE(store.pendingBoardUndo()->memberships.size(), 3);

    store.triggerToastAction();
    QVERIFY(!store.canUndoDelete());
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM collection WHERE deletedAt IS NOT NULL"_s).toInt(), 0);
    const auto added = [&](const QString &item, const QString &collection) {
        return world
            .scalar(u"SELECT addedAt FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {item, collection})
            .toDouble();
    };
    QCOMPARE(added(shared, parent), 11.0);
    QCOMPARE(added(shared, grandchild), 22.0);
    QCOMPARE(added(only, child), 33.0);
    QCOMPARE(treeNames(store), (QStringList{u"Parent"_s, u"-Child"_s, u"--Grandchild"_s, u"Kept"_s}));
    QCOMPARE(store.counts().value(child), 1);
    QVERIFY(!store.undoDelete());
}

void TestStoreCollections::deleteSkipsTheInbox()
{
    StoreWorld world;
    Store &store = world.store;
    const QString inbox = *store.inboxId();
    const QString a = store.createCollection(u"A"_s);
    const QString b = store.createCollection(u"B"_s);
    const int toasts = store.toastSerial();
    QVERIFY(!store.deleteCollections({inbox}));
    QCOMPARE(store.toastSerial(), toasts);
    QVERIFY(store.deleteCollections({inbox, a}));
    QCOMPARE(store.toast(), u"Collection Deleted"_s);
    QVERIFY(store.inboxCollection());
    QVERIFY(world.scalar(u"SELECT deletedAt FROM collection WHERE id = ?"_s, {inbox}).isNull());
    QCOMPARE(store.pendingBoardUndo()->ids, QStringList{a});

    QVERIFY(store.deleteCollections({b})); // a new deletion replaces the pending undo
    QCOMPARE(store.pendingBoardUndo()->ids, QStringList{b});
    QVERIFY(store.undoDelete());
    QCOMPARE(store.collections().size(), 1);
    QCOMPARE(store.collections().first().id, b);
}

void TestStoreCollections::sidebarOrderFollowsTheSetting_data()
{
    QTest::addColumn<QString>("sort");
    QTest::addColumn<bool>("reversed");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("manual") << u"manual"_s << false << QStringList{u"Zinc"_s, u"apple"_s, u"Moss"_s, u"-Kid"_s};
    QTest::newRow("name") << u"name"_s << false << QStringList{u"apple"_s, u"Moss"_s, u"-Kid"_s, u"Zinc"_s};
    // Zinc and apple had the same last addition; Moss inherits its child's later one.
    QTest::newRow("recently used") << u"recentlyUsed"_s << false
                                   << QStringList{u"Moss"_s, u"-Kid"_s, u"apple"_s, u"Zinc"_s};
    QTest::newRow("recently created") << u"recentlyCreated"_s << false
                                      << QStringList{u"Moss"_s, u"-Kid"_s, u"apple"_s, u"Zinc"_s};
    QTest::newRow("name reversed") << u"name"_s << true << QStringList{u"Zinc"_s, u"Moss"_s, u"-Kid"_s, u"apple"_s};
}

void TestStoreCollections::sidebarOrderFollowsTheSetting()
{
    QFETCH(QString, sort);
    QFETCH(bool, reversed);
    QFETCH(QStringList, expected);
    StoreWorld world;
    Store &store = world.store;
    const QString zinc = store.createCollection(u"Zinc"_s);
    const QString apple = store.createCollection(u"apple"_s);
    const QString moss = store.createCollection(u"Moss"_s);
    const QString kid = store.createCollection(u"Kid"_s, moss);
    world.db().write([&](Database &db) {
        // Creation times apart, so that the newest-first order is certain.
        for (const auto &[id, time] : {std::pair{zinc, 1.0}, {apple, 2.0}, {moss, 3.0}, {kid, 4.0}})
            db.execute(u"UPDATE collection SET createdAt = ? WHERE id = ?"_s, {time, id});
    });
    world.seed([&](test::Seed &seed) {
        const QString item = seed.item(u"image"_s, 1);
        seed.membership(item, zinc, 10);
        seed.membership(item, apple, 10);
        seed.membership(item, kid, 20);
    });
    world.settings.setCollectionSort(sort);
    world.settings.setCollectionSortReversed(reversed);
    store.reloadCollections();
    QCOMPARE(treeNames(store), expected);
}

void TestStoreCollections::collapsedSetIsRemembered()
{
    StoreWorld world;
    Store &store = world.store;
    const QString a = store.createCollection(u"A"_s);
    store.createCollection(u"Inside"_s, a);
    store.toggleCollapsed(a);
    QVERIFY(store.isCollapsed(a));
    QCOMPARE(UserDefaults().stringListValue(u"collapsedCollections"_s), QStringList{a});
    QCOMPARE(store.collectionTree(true).size(), 1);
    QCOMPARE(store.collectionTree(false).size(), 2);
    Store later(&world.settings);
    QVERIFY(later.isCollapsed(a));
    store.toggleCollapsed(a);
    QVERIFY(UserDefaults().stringListValue(u"collapsedCollections"_s).isEmpty());
}

void TestStoreCollections::activityLists()
{
    StoreWorld world;
    Store &store = world.store;
    const QString quiet = store.createCollection(u"Quiet"_s);
    const QString busy = store.createCollection(u"Busy"_s);
    const QString empty = store.createCollection(u"Empty"_s);
    world.seed([&](test::Seed &seed) {
        const QString a = seed.item(u"image"_s, 1, [](LibraryItem &item) { item.filePath = u"x/a.png"_s; });
        const QString b = seed.item(u"link"_s, 2);
        const QString gone = seed.item(u"image"_s, 3, [](LibraryItem &item) {
            item.filePath = u"x/gone.png"_s;
            item.deletedAt = 4;
        });
        seed.membership(a, quiet, 5);
        seed.membership(a, busy, 9);
        seed.membership(b, busy, 8);
        seed.membership(gone, busy, 7);
    });
    const QList<CollectionActivity> byAddition = store.collectionsByLastAddition();
    QCOMPARE(byAddition.size(), 3);
    QCOMPARE(byAddition.at(0).id, busy);
    QCOMPARE(byAddition.at(0).count, 3);
    QCOMPARE(*byAddition.at(0).lastAdd, 9.0);
    QCOMPARE(byAddition.at(1).id, quiet);
    QCOMPARE(byAddition.at(2).id, empty);
    QVERIFY(!byAddition.at(2).lastAdd);

    QCOMPARE(store.collectionPreviews(busy), QStringList{u"x/a.png"_s});
    world.db().write(
        [&](Database &db) { db.execute(u"UPDATE collection SET modifiedAt = 1 WHERE id = ?"_s, {empty}); });
    store.reloadCollections();
    QCOMPARE(store.recentCollections(2).size(), 2);
    QVERIFY(store.recentCollections(5).last().id == empty);
    QCOMPARE(store.collectionChoices().size(), 3);
}

QTEST_GUILESS_MAIN(TestStoreCollections)
#include "tst_storecollections.moc"
