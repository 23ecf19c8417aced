#include "core/librarylocation.h"
#include "tests/core/storeworld.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;
using kivo::test::idsOf;
using kivo::test::LogCapture;
using kivo::test::StoreWorld;

/**
 * What can be done to saved items, checked in the database afterwards: marks, the trash and its
 * undo, tags, filing, the launcher's count, the commands that hand items to other programs, and
 * the multi-selection they act on.
 */
class TestStoreItems : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void favouriteOnAMixedSelection();
    void hideTakesOutOfAllOnly();
    void trashedItemKeepsItsMemberships();
    void trashSelectionAndUndo();
    void renameAndNote();
    void recordLauncherOpenLeavesModifiedAt();
    void failedWriteLogsRollsBackAndShowsNoToast();

    void tagNames_data();
    void tagNames();
    void aiTagKeepsItsSourceUntilAccepted();
    void tagSelected();

    void fileItem();
    void fileIntoNewCollection();
    void removeFromCollection();
    void collectionsHoldingAll();

    void copyLinksAndPaths_data();
    void copyLinksAndPaths();
    void copyItemByKind();
    void revealOnlyExistingFiles();
    void saveToDownloads();

    void selectRangeGrowsAndShrinks();
    void selectionFollowsTheRows();
};

void TestStoreItems::favouriteOnAMixedSelection()
{
    StoreWorld world;
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        ids.append(seed.item(u"image"_s, 1, [](LibraryItem &item) { item.favourite = true; }));
        ids.append(seed.item(u"image"_s, 2));
        ids.append(seed.item(u"link"_s, 3));
    });
    Store &store = world.store;
    QVERIFY(store.favourite(ids));
    QCOMPARE(store.toast(), u"Added to Favourites"_s);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM item WHERE favourite = 1"_s).toInt(), 3);
    QCOMPARE(store.favouritesCount(), 3);
    QVERIFY(world.item(ids.at(1)).modifiedAt > 2);

    QVERIFY(store.favourite(ids));
    QCOMPARE(store.toast(), u"Removed from Favourites"_s);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM item WHERE favourite = 1"_s).toInt(), 0);
    QCOMPARE(store.favouritesCount(), 0);

    QVERIFY(store.toggleFavourite(ids.first()));
    QVERIFY(world.item(ids.first()).favourite);
}

void TestStoreItems::hideTakesOutOfAllOnly()
{
    StoreWorld world;
    const QString id = world.addItem(u"image"_s, 1);
    Store &store = world.store;
    QVERIFY(store.setHidden({id}, true));
    QVERIFY(world.item(id).hiddenAt);
    QCOMPARE(store.allCount(), 0);
    QCOMPARE(store.hiddenCount(), 1);
    QTRY_COMPARE(store.typeCount(MediaTypeFilter::image), 1); // hidden items count under their kind
    QVERIFY(store.items().isEmpty());
    store.setSelectionKey(u"type-image"_s);
    QCOMPARE(idsOf(store.items()), QStringList{id});
    QVERIFY(store.setHidden({id}, false));
    QVERIFY(!world.item(id).hiddenAt);
    QCOMPARE(store.allCount(), 1);
}

void TestStoreItems::trashedItemKeepsItsMemberships()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Board"_s);
    const QString id = world.addItem(u"image"_s, 1);
    world.addMembership(id, board, 7);
    Store &store = world.store;
    store.setSelectionKey(board);
    QCOMPARE(store.items().size(), 1);

    QVERIFY(store.deleteItem(id));
    const LibraryItem trashed = world.item(id);
    QVERIFY(trashed.deletedAt);
    QCOMPARE(trashed.modifiedAt, *trashed.deletedAt);
    QCOMPARE(world.scalar(u"SELECT addedAt FROM itemCollection WHERE itemId = ?"_s, {id}).toDouble(), 7.0);
    QVERIFY(store.items().isEmpty());
    QCOMPARE(store.counts().value(board), 0);
    QCOMPARE(store.trashCount(), 1);

    QVERIFY(store.restoreItem(id));
    QVERIFY(!world.item(id).deletedAt);
    QCOMPARE(idsOf(store.items()), QStringList{id});
    QCOMPARE(store.counts().value(board), 1);
}

void TestStoreItems::trashSelectionAndUndo()
{
    StoreWorld world;
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 3; ++i)
            ids.append(seed.item(u"image"_s, i + 1));
    });
    Store &store = world.store;
    store.reloadItems();
    store.setSelectedItemIdList({ids.at(0), ids.at(2)});
    QVERIFY(store.trashSelection());
    QVERIFY(store.selectedItemIds().isEmpty());
    QCOMPARE(store.toast(), u"2 Items Moved to Trash"_s);
    QCOMPARE(store.toastAction(), u"Undo"_s);
    // A bulk move leaves modifiedAt where it was.
    QCOMPARE(world.item(ids.at(0)).modifiedAt, 1.0);
    QVERIFY(world.item(ids.at(0)).deletedAt && world.item(ids.at(2)).deletedAt);
    QCOMPARE(idsOf(store.items()), QStringList{ids.at(1)});

    store.triggerToastAction();
    QVERIFY(store.toast().isEmpty());
    QVERIFY(!world.item(ids.at(0)).deletedAt && !world.item(ids.at(2)).deletedAt);
    QCOMPARE(store.items().size(), 3);
    QVERIFY(!store.undoTrash()); // the undo is spent

    store.setSelectedItemIdList({ids.at(1)});
    QVERIFY(store.trashSelection());
    QCOMPARE(store.toast(), u"Moved to Trash"_s);
}

void TestStoreItems::renameAndNote()
{
    StoreWorld world;
    const QString id = world.addItem(u"text"_s, 1);
    Store &store = world.store;
    QVERIFY(store.renameItem(id, u"  Evening light \n"_s));
    QCOMPARE(world.item(id).title, u"Evening light"_s);
    QVERIFY(!store.renameItem(id, u"   "_s));
    QCOMPARE(world.item(id).title, u"Evening light"_s);
    QCOMPARE(store.items().first().title, u"Evening light"_s);
    QVERIFY(store.setNote(id, u" keep the blanks "_s));
    QCOMPARE(world.item(id).note, u" keep the blanks "_s);
    QCOMPARE(store.itemData(id).value(u"note"_s).toString(), u" keep the blanks "_s);
}

void TestStoreItems::recordLauncherOpenLeavesModifiedAt()
{
    StoreWorld world;
    const QString id = world.addItem(u"image"_s, 1);
    QVERIFY(world.store.recordLauncherOpen(id));
    QVERIFY(world.store.recordLauncherOpen(id));
    const LibraryItem opened = world.item(id);
    QCOMPARE(opened.openCount, 2);
    QVERIFY(opened.lastOpenedAt && *opened.lastOpenedAt > 1);
    QCOMPARE(opened.modifiedAt, 1.0);
}

void TestStoreItems::failedWriteLogsRollsBackAndShowsNoToast()
{
    StoreWorld world;
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        ids.append(seed.item(u"image"_s, 1));
        ids.append(seed.item(u"image"_s, 2));
    });
    world.db().write([&](Database &db) {
        db.executeScript(u"CREATE TRIGGER refuse BEFORE UPDATE ON item WHEN new.id = '"_s + ids.at(1)
            + u"' BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    });
    Store &store = world.store;
    const int toasts = store.toastSerial();
    LogCapture log;
    QVERIFY(!store.favourite(ids));
    QVERIFY(log.lines().contains(u"[Store] favourite failed: refused"_s));
    QCOMPARE(store.toastSerial(), toasts);
    // The batch is one transaction: the first item's change went back too.
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM item WHERE favourite = 1"_s).toInt(), 0);

    QVERIFY(!store.fileItem(u"no-such-item"_s, *store.inboxId()));
    QVERIFY(log.contains(u"[Store] fileItem failed: FOREIGN KEY constraint failed"_s));
    QVERIFY(!store.setHidden({ids.at(1)}, true));
    QVERIFY(log.contains(u"[Store] setHidden(hand) failed: refused"_s));
    QCOMPARE(store.toastSerial(), toasts);
}

void TestStoreItems::tagNames_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("stored");
    QTest::newRow("blanks and capitals") << u"  Sky Blue \n"_s << u"sky blue"_s;
    QTest::newRow("tabs") << u"\tMOOD\t"_s << u"mood"_s;
    QTest::newRow("blank") << u" \n\t "_s << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestStoreItems::tagNames()
{
    QFETCH(QString, given);
    QFETCH(QString, stored);
    StoreWorld world;
    const QString id = world.addItem(u"image"_s, 1);
    QSignalSpy changed(&world.store, &Store::tagsChanged);
    QCOMPARE(world.store.addTag({id}, given), !stored.isEmpty());
    QCOMPARE(changed.count(), stored.isEmpty() ? 0 : 1);
    const QStringList names = world.db().read([](Database &db) {
        QStringList found;
        for (const QVariant &name : db.fetchScalars(u"SELECT name FROM tag"_s))
            found.append(name.toString());
        return found;
    });
    QCOMPARE(names, stored.isEmpty() ? QStringList() : QStringList{stored});
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM itemTag"_s).toInt(), stored.isEmpty() ? 0 : 1);
    if (!stored.isEmpty()) {
        // The same name in other clothes finds the same tag.
        const QString other = world.addItem(u"image"_s, 2);
        QVERIFY(world.store.addTag({other}, given.toUpper()));
        QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM tag"_s).toInt(), 1);
        QCOMPARE(world.scalar(u"SELECT source || '/' || status FROM itemTag WHERE itemId = ?"_s, {other}).toString(),
            u"user/accepted"_s);
    }
}

void TestStoreItems::aiTagKeepsItsSourceUntilAccepted()
{
    StoreWorld world;
    const QString id = world.addItem(u"image"_s, 1);
    world.db().write([&](Database &db) {
        db.execute(u"INSERT INTO tag (id, name) VALUES ('t-red', 'red')"_s);
        db.execute(
            u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-red', 'ai', 'suggested', 1)"_s,
            {id});
    });
    Store &store = world.store;
    QVERIFY(store.addTag({id}, u"Red"_s));
    QVERIFY(store.addTag({id}, u"blue"_s));
    const QList<TagInfo> before = store.tags(id);
    QCOMPARE(before.size(), 2);
    // Suggested ones come first, as text ordering puts "suggested" after "accepted".
    QCOMPARE(before.at(0), (TagInfo{u"t-red"_s, u"red"_s, u"ai"_s, u"suggested"_s}));
    QCOMPARE(before.at(1).name, u"blue"_s);
    QCOMPARE(before.at(1).source, u"user"_s);

    QVERIFY(store.acceptTag(id, u"t-red"_s));
    QCOMPARE(world.scalar(u"SELECT source || '/' || status FROM itemTag WHERE tagId = 't-red'"_s).toString(),
        u"user/accepted"_s);
    QVERIFY(store.removeTag(id, u"t-red"_s));
    QCOMPARE(store.tags(id).size(), 1);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM tag WHERE id = 't-red'"_s).toInt(), 1);

    const QVariantList all = store.allTags();
    QCOMPARE(all.size(), 2);
    QCOMPARE(all.at(0).toMap().value(u"name"_s).toString(), u"blue"_s);
    QCOMPARE(all.at(1).toMap().value(u"n"_s).toInt(), 0);
}

void TestStoreItems::tagSelected()
{
    StoreWorld world;
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 3; ++i)
            ids.append(seed.item(u"image"_s, i + 1));
    });
    Store &store = world.store;
    store.reloadItems();
    store.setSelectedItemIdList({ids.at(0), ids.at(1)});
    QVERIFY(store.tagSelected(u"  Mood Board "_s));
    QCOMPARE(store.toast(), u"Tagged 2 as mood board"_s);
    QVERIFY(store.selectedItemIds().isEmpty());
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM itemTag"_s).toInt(), 2);
    QVERIFY(!store.tagSelected(u"nothing selected"_s));
}

void TestStoreItems::fileItem()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Board"_s);
    const QString other = world.addCollection(u"Other"_s);
    const QString id = world.addItem(u"image"_s, 1);
    world.db().write([&](Database &db) { db.execute(u"UPDATE collection SET modifiedAt = 5"_s); });
    Store &store = world.store;

    QVERIFY(store.fileItem(id, board, board)); // source = target: only inserts
    QCOMPARE(store.itemCollectionIds(id), QStringList{board});
    QVERIFY(world.scalar(u"SELECT modifiedAt FROM collection WHERE id = ?"_s, {board}).toDouble() > 5);
    QCOMPARE(world.settings.lastFiledCollectionId(), board);
    const double firstAdded = world.scalar(u"SELECT addedAt FROM itemCollection"_s).toDouble();
    QVERIFY(store.fileItem(id, board)); // again: the first filing's time stays
    QCOMPARE(world.scalar(u"SELECT addedAt FROM itemCollection"_s).toDouble(), firstAdded);

    QVERIFY(store.fileItem(id, other, board)); // a move
    QCOMPARE(store.itemCollectionIds(id), QStringList{other});
    QCOMPARE(store.counts().value(other), 1);
    QCOMPARE(store.counts().value(board), 0);

    QVERIFY(store.fileItem(id, board));
    QVERIFY(store.keepOnlyInCollection(id, board));
    QCOMPARE(store.itemCollectionIds(id), QStringList{board});
}

void TestStoreItems::fileIntoNewCollection()
{
    StoreWorld world;
    const QString id = world.addItem(u"image"_s, 1);
    Store &store = world.store;
    QVERIFY(store.fileItemIntoNew(id, u"   "_s).isEmpty());
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM collection WHERE isInbox = 0"_s).toInt(), 0);
    QVERIFY(store.fileItem(id, *store.inboxId()));
    const QString made = store.fileItemIntoNew(id, u"  Trips  "_s, *store.inboxId());
    QVERIFY(!made.isEmpty());
    QCOMPARE(store.collectionById(made)->name, u"Trips"_s);
    QCOMPARE(store.collectionById(made)->sortIndex, 1);
    QCOMPARE(store.itemCollectionIds(id), QStringList{made});
    QCOMPARE(store.counts().value(made), 1);
}

void TestStoreItems::removeFromCollection()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Board"_s);
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 3; ++i) {
            ids.append(seed.item(u"image"_s, i + 1));
            seed.membership(ids.last(), board, i + 1);
        }
    });
    Store &store = world.store;
    store.setSelectionKey(board);
    store.setSelectedItemIdList({ids.at(0), ids.at(1)});
    QVERIFY(store.removeItemsFromCollection(store.selectedItemIdList(), board));
    QCOMPARE(store.toast(), u"Removed 2 from Board"_s);
    QVERIFY(store.selectedItemIds().isEmpty());
    QCOMPARE(idsOf(store.items()), QStringList{ids.at(2)});
    QVERIFY(store.removeItemFromCollection(ids.at(2), board));
    QVERIFY(store.items().isEmpty());
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL"_s).toInt(), 3);
}

void TestStoreItems::collectionsHoldingAll()
{
    StoreWorld world;
    const QString a = world.addCollection(u"A"_s);
    const QString b = world.addCollection(u"B"_s);
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        ids.append(seed.item(u"image"_s, 1));
        ids.append(seed.item(u"image"_s, 2));
        seed.membership(ids.at(0), a, 1);
        seed.membership(ids.at(1), a, 1);
        seed.membership(ids.at(0), b, 1);
    });
    QCOMPARE(world.store.collectionsHoldingAll(ids), QStringList{a});
    QCOMPARE(world.store.collectionsHoldingAll({ids.at(0), ids.at(0)}).size(), 2);
    QVERIFY(world.store.collectionsHoldingAll({}).isEmpty());
}

void TestStoreItems::copyLinksAndPaths_data()
{
    QTest::addColumn<int>("withLinks");
    QTest::addColumn<int>("withFiles");
    QTest::addColumn<QString>("linksToast");
    QTest::addColumn<QString>("pathsToast");
    QTest::newRow("none") << 0 << 0 << u"No Links to Copy"_s << u"No Files to Copy"_s;
    QTest::newRow("one") << 1 << 1 << u"Link Copied"_s << u"Path Copied"_s;
    QTest::newRow("three") << 3 << 2 << u"3 Links Copied"_s << u"2 Paths Copied"_s;
}

void TestStoreItems::copyLinksAndPaths()
{
    QFETCH(int, withLinks);
    QFETCH(int, withFiles);
    QFETCH(QString, linksToast);
    QFETCH(QString, pathsToast);
    StoreWorld world;
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 4; ++i) {
            ids.append(seed.item(u"image"_s, i + 1, [&](LibraryItem &item) {
                if (i < withLinks)
                    item.sourceURL = u"https://example.org/"_s + QString::number(i);
                if (i < withFiles)
                    item.filePath = u"2024-05/pic-"_s + QString::number(i) + u".png"_s;
            }));
        }
    });
    Store &store = world.store;
    store.reloadItems();
    store.copyLinks(ids);
    QCOMPARE(store.toast(), linksToast);
    store.copyPaths(ids);
    QCOMPARE(store.toast(), pathsToast);
    QStringList links;
    QStringList paths;
    // The rows are newest first, and so are the lines.
    for (int i = 3; i >= 0; --i) {
        if (i < withLinks)
            links.append(u"https://example.org/"_s + QString::number(i));
        if (i < withFiles)
            paths.append(LibraryLocation::itemFolder() + u"/2024-05/pic-"_s + QString::number(i) + u".png"_s);
    }
    QStringList expected;
    if (!links.isEmpty())
        expected.append(links.join(u'\n'));
    if (!paths.isEmpty())
        expected.append(paths.join(u'\n'));
    QCOMPARE(world.desktop.copiedTexts, expected);
}

void TestStoreItems::copyItemByKind()
{
    StoreWorld world;
    QString picture, note, link, video;
    world.seed([&](test::Seed &seed) {
        picture = seed.item(u"image"_s, 1, [](LibraryItem &item) { item.filePath = u"2024-05/cat.png"_s; });
        note = seed.item(u"text"_s, 2, [](LibraryItem &item) { item.note = u"remember the milk"_s; });
        link = seed.item(u"link"_s, 3, [](LibraryItem &item) { item.sourceURL = u"https://example.org/a"_s; });
        video = seed.item(u"video"_s, 4, [](LibraryItem &item) { item.filePath = u"2024-05/clip.mp4"_s; });
    });
    Store &store = world.store;
    for (const QString &id : {picture, note, link, video}) {
        store.dismissToast();
        store.copyItem(id);
        QCOMPARE(store.toast(), u"Copied"_s);
    }
    QCOMPARE(world.desktop.copiedImages, QStringList{LibraryLocation::itemFolder() + u"/2024-05/cat.png"_s});
    QCOMPARE(world.desktop.copiedTexts, (QStringList{u"remember the milk"_s, u"https://example.org/a"_s}));
    QCOMPARE(world.desktop.copiedFiles, QList<QStringList>{{LibraryLocation::itemFolder() + u"/2024-05/clip.mp4"_s}});
}

void TestStoreItems::revealOnlyExistingFiles()
{
    StoreWorld world;
    const QString kept = world.storeFile(u"2024-05/here.png"_s);
    QString present, missing, link;
    world.seed([&](test::Seed &seed) {
        present = seed.item(u"image"_s, 1, [&](LibraryItem &item) { item.filePath = kept; });
        missing = seed.item(u"image"_s, 2, [](LibraryItem &item) { item.filePath = u"2024-05/gone.png"_s; });
        link = seed.item(u"link"_s, 3);
    });
    Store &store = world.store;
    store.revealItems({missing, link});
    QCOMPARE(store.toast(), u"No Files to Reveal"_s);
    QVERIFY(world.desktop.revealed.isEmpty());
    store.dismissToast();
    store.revealItems({missing, present, link});
    QCOMPARE(world.desktop.revealed, QList<QStringList>{{LibraryLocation::resolve(kept)}});
    QVERIFY(store.toast().isEmpty());
}

void TestStoreItems::saveToDownloads()
{
    StoreWorld world;
    const QString first = world.storeFile(u"2024-05/photo.png"_s, "first");
    const QString second = world.storeFile(u"2024-06/photo.png"_s, "second");
    QString a, b, link;
    world.seed([&](test::Seed &seed) {
        a = seed.item(u"image"_s, 1, [&](LibraryItem &item) { item.filePath = first; });
        b = seed.item(u"image"_s, 2, [&](LibraryItem &item) { item.filePath = second; });
        link = seed.item(u"link"_s, 3);
    });
    Store &store = world.store;
    store.reloadItems();
    store.saveToDownloads({});
    QCOMPARE(store.toast(), u"Nothing to save"_s);
    store.saveToDownloads({link});
    QTRY_COMPARE(store.toast(), u"Nothing to save (links have no file)"_s);
    QVERIFY(!QDir(world.desktop.downloads).exists(u"photo.png"_s));

    store.saveToDownloads({a, b, link});
    QTRY_COMPARE(store.toast(), u"Saved 2 to Downloads"_s);
    // Two files of one name, copied in row order (newest first): the second gets a number.
    const QDir downloads(world.desktop.downloads);
    QCOMPARE(downloads.entryList(QDir::Files, QDir::Name), (QStringList{u"photo (2).png"_s, u"photo.png"_s}));
    QCOMPARE(
        test::readFile(downloads.filePath(u"photo.png"_s)) + test::readFile(downloads.filePath(u"photo (2).png"_s)),
        QByteArray("secondfirst"));
}

void TestStoreItems::selectRangeGrowsAndShrinks()
{
    StoreWorld world;
    QStringList ids; // in row order, newest first
    world.seed([&](test::Seed &seed) {
        for (int i = 1; i <= 6; ++i)
            ids.prepend(seed.item(u"image"_s, i));
    });
    Store &store = world.store;
    store.reloadItems();
    QCOMPARE(idsOf(store.items()), ids);
    const auto range = [&](int from, int to) { return ids.mid(from, to - from + 1); };

    store.selectRangeTo(ids.at(2)); // no anchor, nothing focused: just that item, anchored there
    QCOMPARE(store.selectedItemIdList(), QStringList{ids.at(2)});
    QCOMPARE(store.selectionAnchorId(), ids.at(2));
    QCOMPARE(store.selectedItemId(), ids.at(2));
    store.selectRangeTo(ids.at(5));
    QCOMPARE(store.selectedItemIdList(), range(2, 5));
    store.selectRangeTo(ids.at(3)); // nearer the anchor: the range shrinks
    QCOMPARE(store.selectedItemIdList(), range(2, 3));
    store.selectRangeTo(ids.at(0)); // across the anchor
    QCOMPARE(store.selectedItemIdList(), range(0, 2));
    QCOMPARE(store.selectionAnchorId(), ids.at(2));
    QCOMPARE(store.selectedItemId(), ids.at(0));

    store.toggleSelection(ids.at(1));
    QCOMPARE(store.selectedItemIdList(), (QStringList{ids.at(0), ids.at(2)}));
    QCOMPARE(store.targetIds(ids.at(2)), (QStringList{ids.at(0), ids.at(2)}));
    QCOMPARE(store.targetIds(ids.at(4)), QStringList{ids.at(4)});

    store.selectRangeTo(u"not-in-the-rows"_s);
    QCOMPARE(store.selectedItemIds(), QSet<QString>{u"not-in-the-rows"_s});
    QCOMPARE(store.selectionAnchorId(), u"not-in-the-rows"_s);
    store.clearSelection();
    QVERIFY(store.selectedItemIds().isEmpty());
}

void TestStoreItems::selectionFollowsTheRows()
{
    StoreWorld world;
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        ids.append(seed.item(u"image"_s, 1));
        ids.append(seed.item(u"image"_s, 2));
    });
    Store &store = world.store;
    store.reloadItems();
    store.setSelectedItemIdList(ids);
    QVERIFY(store.deleteItem(ids.at(0)));
    QCOMPARE(store.selectedItemIdList(), QStringList{ids.at(1)});
    store.setSelectionKey(u"trash"_s);
    QVERIFY(store.selectedItemIds().isEmpty());
}

QTEST_GUILESS_MAIN(TestStoreItems)
#include "tst_storeitems.moc"
