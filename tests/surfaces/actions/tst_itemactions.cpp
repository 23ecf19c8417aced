// The item context menu and keys on a real Store and library: which entries a right click offers
// where, and what each one writes, shows and hands to the desktop, read back from the database.

#include "surfaces/actions/itemactions.h"
#include "tests/core/storeworld.h"

#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/** A library of two pictures (one with a stored file), a link and a note, with a board holding the pictures. */
struct ActionsWorld {
    kivo::test::StoreWorld world;
    kivo::ItemActions actions;
    QString picture, photo, link, note, board;

    ActionsWorld()
    {
        actions.setStore(&world.store);
        const QString path = world.storeFile(u"items/2024-06/sea.jpg"_s);
        picture = world.addItem(u"image"_s, 100, [&](kivo::LibraryItem &item) { item.filePath = path; });
        photo = world.addItem(u"image"_s, 200);
        link = world.addItem(
            u"link"_s, 300, [](kivo::LibraryItem &item) { item.sourceURL = u"https://example.com/a"_s; });
        note = world.addItem(u"text"_s, 400, [](kivo::LibraryItem &item) { item.note = u"remember"_s; });
        board = world.addCollection(u"Board"_s);
        world.addMembership(picture, board, 10);
        world.addMembership(photo, board, 20);
        world.store.reloadAll();
    }

    /** The actions of the menu, "|" for a separator. */
    [[nodiscard]] QStringList menu(const QString &itemId) const
    {
        QStringList shown;
        for (const QVariant &entry : actions.menuFor(itemId)) {
            const QVariantMap map = entry.toMap();
            shown.append(map.value(u"separator"_s).toBool() ? u"|"_s : map.value(u"action"_s).toString());
        }
        return shown;
    }
    [[nodiscard]] QString textOf(const QString &itemId, const QString &action) const
    {
        for (const QVariant &entry : actions.menuFor(itemId)) {
            if (entry.toMap().value(u"action"_s) == action)
                return entry.toMap().value(u"text"_s).toString();
        }
        return u"<absent>"_s;
    }
    [[nodiscard]] QVariant column(const QString &id, const QString &name) const
    {
        return world.scalar(u"SELECT %1 FROM item WHERE id = ?"_s.arg(name), {id});
    }
};

} // namespace

class TestItemActions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menuOffersWhatApplies_data();
    void menuOffersWhatApplies();
    void menuWordsFollowTheItems();
    void favouriteHideAndTrashWrite();
    void collectionActionsFileAndRemove();
    void tagsAreQuietForOneAndAnnouncedForTheSelection();
    void desktopActionsHandOverWhatExists();
    void keysActOnTheFocusedItemOrSelection();
};

void TestItemActions::menuOffersWhatApplies_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<bool>("multiSelection");
    QTest::addColumn<QStringList>("expected");

    const QStringList tail{
        u"|"_s, u"copyLinks"_s, u"copyPaths"_s, u"reveal"_s, u"saveToDownloads"_s, u"|"_s, u"hide"_s};
    QTest::newRow("one item in All") << u"all"_s << false
                                     << QStringList{u"rename"_s, u"tag"_s, u"favourite"_s, u"|"_s, u"file"_s, u"|"_s,
                                            u"copy"_s, u"copyLinks"_s, u"copyPaths"_s, u"reveal"_s,
                                            u"saveToDownloads"_s, u"|"_s, u"hide"_s, u"trash"_s};
    QTest::newRow("one item in a collection")
        << u"board"_s << false
        << QStringList{u"rename"_s, u"tag"_s, u"favourite"_s, u"|"_s, u"file"_s, u"removeFromCollection"_s, u"|"_s,
               u"copy"_s, u"copyLinks"_s, u"copyPaths"_s, u"reveal"_s, u"saveToDownloads"_s, u"|"_s, u"hide"_s,
               u"trash"_s};
    QTest::newRow("the selection in a collection: no rename, no single copy")
        << u"board"_s << true
        << QStringList{u"tag"_s, u"favourite"_s, u"|"_s, u"file"_s, u"removeFromCollection"_s} + tail
            + QStringList{u"trash"_s};
    QTest::newRow("in the trash: restore, and no trash") << u"trash"_s << false
                                                         << QStringList{u"restore"_s, u"|"_s, u"rename"_s, u"tag"_s,
                                                                u"favourite"_s, u"|"_s, u"file"_s, u"|"_s, u"copy"_s}
            + tail.mid(1);
}

void TestItemActions::menuOffersWhatApplies()
{
    QFETCH(QString, selection);
    QFETCH(bool, multiSelection);
    QFETCH(QStringList, expected);
    ActionsWorld w;
    if (selection == u"trash") {
        w.world.store.trashItems({w.picture});
        w.world.store.setSelectionKey(u"trash"_s);
    } else {
        w.world.store.setSelectionKey(selection == u"board" ? w.board : selection);
    }
    if (multiSelection)
        w.world.store.setSelectedItemIdList({w.picture, w.photo});
    QCOMPARE(w.menu(w.picture), expected);
    // A click outside the selection acts on the clicked item alone.
    if (multiSelection)
        QCOMPARE(w.actions.targets(w.link), QStringList{w.link});
}

void TestItemActions::menuWordsFollowTheItems()
{
    ActionsWorld w;
    w.world.store.setSelectionKey(w.board);
    QCOMPARE(w.textOf(w.picture, u"removeFromCollection"_s), u"Remove from Board"_s);
    QCOMPARE(w.textOf(w.picture, u"favourite"_s), u"Add to Favourites"_s);
    QCOMPARE(w.textOf(w.picture, u"copyLinks"_s), u"Copy Link"_s);
    w.world.store.setSelectedItemIdList({w.picture, w.photo});
    QCOMPARE(w.textOf(w.picture, u"tag"_s), u"Tag 2 Items…"_s);
    QCOMPARE(w.textOf(w.picture, u"copyPaths"_s), u"Copy Paths"_s);
    // Only when every target is a favourite does the entry take them out; likewise for hidden.
    w.world.store.favourite({w.picture});
    QCOMPARE(w.textOf(w.picture, u"favourite"_s), u"Add to Favourites"_s);
    w.world.store.favourite({w.picture, w.photo});
    QCOMPARE(w.textOf(w.picture, u"favourite"_s), u"Remove from Favourites"_s);
    w.world.store.setHidden({w.picture, w.photo}, true);
    w.world.store.setSelectedItemIdList({w.picture, w.photo});
    QCOMPARE(w.menu(w.picture).contains(u"unhide"_s), true);
    QCOMPARE(w.menu(w.picture).contains(u"hide"_s), false);
    // Every key shown in the menu is one key, Del being the grid's.
    QStringList sequences;
    for (const QVariant &shortcut : w.actions.shortcuts())
        sequences.append(shortcut.toMap().value(u"sequence"_s).toString());
    QCOMPARE(sequences.size(), QSet<QString>(sequences.cbegin(), sequences.cend()).size());
    QVERIFY(!sequences.contains(u"Del"_s));
}

void TestItemActions::favouriteHideAndTrashWrite()
{
    ActionsWorld w;
    kivo::Store &store = w.world.store;
    store.setSelectedItemIdList({w.picture, w.photo});
    store.favourite({w.photo});

    // A mixed selection becomes all favourite, then all not.
    QVERIFY(w.actions.trigger(u"favourite"_s, w.picture));
    QCOMPARE(store.toast(), u"Added to Favourites"_s);
    QCOMPARE(w.column(w.picture, u"favourite"_s).toInt() + w.column(w.photo, u"favourite"_s).toInt(), 2);
    QVERIFY(w.actions.trigger(u"favourite"_s, w.photo));
    QCOMPARE(store.toast(), u"Removed from Favourites"_s);
    QCOMPARE(w.column(w.picture, u"favourite"_s).toInt() + w.column(w.photo, u"favourite"_s).toInt(), 0);

    QVERIFY(w.actions.trigger(u"hide"_s, w.link));
    QVERIFY(!w.column(w.link, u"hiddenAt"_s).isNull());
    QVERIFY(w.actions.trigger(u"unhide"_s, w.link));
    QVERIFY(w.column(w.link, u"hiddenAt"_s).isNull());

    // One item: its delete, which moves modifiedAt on. The selection: the bulk trash with an undo.
    const double before = w.column(w.note, u"modifiedAt"_s).toDouble();
    QVERIFY(w.actions.trigger(u"trash"_s, w.note));
    QVERIFY(!w.column(w.note, u"deletedAt"_s).isNull());
    QVERIFY(w.column(w.note, u"modifiedAt"_s).toDouble() > before);
    store.setSelectedItemIdList({w.picture, w.photo});
    QVERIFY(w.actions.trigger(u"trash"_s, w.photo));
    QCOMPARE(store.toast(), u"2 Items Moved to Trash"_s);
    QCOMPARE(store.toastAction(), u"Undo"_s);
    QCOMPARE(store.trashCount(), 3);

    // Restore belongs to the trash only.
    QVERIFY(!w.actions.trigger(u"restore"_s, w.note));
    store.setSelectionKey(u"trash"_s);
    QVERIFY(!w.actions.trigger(u"trash"_s, w.note));
    QVERIFY(w.actions.trigger(u"restore"_s, w.note));
    QVERIFY(w.column(w.note, u"deletedAt"_s).isNull());
    QCOMPARE(store.trashCount(), 2);
}

void TestItemActions::collectionActionsFileAndRemove()
{
    ActionsWorld w;
    kivo::Store &store = w.world.store;
    const auto members = [&](const QString &collection) {
        return w.world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {collection}).toInt();
    };
    // Not in a collection: nothing to remove from.
    QVERIFY(!w.actions.trigger(u"removeFromCollection"_s, w.picture));

    const QString other = w.world.addCollection(u"Other"_s);
    store.setSelectedItemIdList({w.link, w.note});
    const QVariantList choices = w.actions.fileChoices(w.link);
    QCOMPARE(choices.constFirst().toMap().value(u"id"_s).toString(), store.inboxIdText());
    QVERIFY(w.actions.fileInto(other, w.link));
    QCOMPARE(members(other), 2);
    for (const QVariant &choice : w.actions.fileChoices(w.link)) {
        if (choice.toMap().value(u"id"_s) == other)
            QVERIFY(choice.toMap().value(u"holdsAll"_s).toBool());
        if (choice.toMap().value(u"id"_s) == w.board)
            QVERIFY(!choice.toMap().value(u"holdsAll"_s).toBool());
    }

    QVERIFY(w.actions.fileIntoNew(u"  Fresh  "_s, w.note));
    const QString fresh = w.world.scalar(u"SELECT id FROM collection WHERE name = 'Fresh'"_s).toString();
    QVERIFY(!fresh.isEmpty());
    QCOMPARE(members(fresh), 2);
    QVERIFY(!w.actions.fileIntoNew(u"   "_s, w.note));

    store.setSelectionKey(w.board);
    QVERIFY(w.actions.trigger(u"removeFromCollection"_s, w.picture));
    QCOMPARE(members(w.board), 1);
    store.setSelectedItemIdList({w.photo});
    store.fileItem(w.picture, w.board);
    store.setSelectedItemIdList({w.picture, w.photo});
    QVERIFY(w.actions.trigger(u"removeFromCollection"_s, w.photo));
    QCOMPARE(store.toast(), u"Removed 2 from Board"_s);
    QCOMPARE(members(w.board), 0);
    // The items stay in the library and in their other collections.
    QCOMPARE(store.allCount(), 4);
}

void TestItemActions::tagsAreQuietForOneAndAnnouncedForTheSelection()
{
    ActionsWorld w;
    kivo::Store &store = w.world.store;
    const auto tagsOf = [&](const QString &id) {
        return w.world
            .scalar(u"SELECT group_concat(t.name) FROM itemTag it JOIN tag t ON t.id = it.tagId WHERE it.itemId = ?"_s,
                {id})
            .toString();
    };
    QSignalSpy asked(&w.actions, &kivo::ItemActions::inputRequested);
    QVERIFY(w.actions.trigger(u"tag"_s, w.picture));
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked.constFirst().constFirst().toString(), u"tag"_s);

    const int serial = store.toastSerial();
    QVERIFY(w.actions.tag(u"  Summer \n"_s, w.picture));
    QCOMPARE(tagsOf(w.picture), u"summer"_s);
    QCOMPARE(store.toastSerial(), serial);
    QVERIFY(!w.actions.tag(u"   "_s, w.picture));

    store.setSelectedItemIdList({w.picture, w.photo});
    QVERIFY(w.actions.tag(u"Sea"_s, w.photo));
    QCOMPARE(store.toast(), u"Tagged 2 as sea"_s);
    QCOMPARE(tagsOf(w.photo), u"sea"_s);
    QVERIFY(store.selectedItemIdList().isEmpty());
}

void TestItemActions::desktopActionsHandOverWhatExists()
{
    ActionsWorld w;
    kivo::Store &store = w.world.store;
    kivo::test::RecordingDesktop &desktop = w.world.desktop;

    QVERIFY(w.actions.trigger(u"copyLinks"_s, w.picture));
    QCOMPARE(store.toast(), u"No Links to Copy"_s);
    store.setSelectedItemIdList({w.link, w.picture});
    QVERIFY(w.actions.trigger(u"copyLinks"_s, w.link));
    QCOMPARE(store.toast(), u"Link Copied"_s);
    QCOMPARE(desktop.copiedTexts.constLast(), u"https://example.com/a"_s);

    // Only the picture has a stored file: it alone is revealed, by its full path.
    QVERIFY(w.actions.trigger(u"reveal"_s, w.link));
    QCOMPARE(desktop.revealed.size(), 1);
    QCOMPARE(desktop.revealed.constFirst().size(), 1);
    QVERIFY(desktop.revealed.constFirst().constFirst().startsWith(w.world.sandbox.libraryRoot()));
    QVERIFY(desktop.revealed.constFirst().constFirst().endsWith(u"/items/2024-06/sea.jpg"_s));
    store.clearSelection();
    QVERIFY(w.actions.trigger(u"reveal"_s, w.note));
    QCOMPARE(store.toast(), u"No Files to Reveal"_s);
    QCOMPARE(desktop.revealed.size(), 1);

    QVERIFY(w.actions.trigger(u"copy"_s, w.note));
    QCOMPARE(store.toast(), u"Copied"_s);
    QCOMPARE(desktop.copiedTexts.constLast(), u"remember"_s);
    QVERIFY(w.actions.trigger(u"copyPaths"_s, w.picture));
    QCOMPARE(store.toast(), u"Path Copied"_s);
}

void TestItemActions::keysActOnTheFocusedItemOrSelection()
{
    ActionsWorld w;
    kivo::Store &store = w.world.store;
    QVERIFY(!w.actions.triggerFromKeyboard(u"favourite"_s)); // nothing focused
    store.selectItem(w.link);
    QCOMPARE(w.actions.keyTarget(), w.link);
    QVERIFY(w.actions.triggerFromKeyboard(u"favourite"_s));
    QCOMPARE(w.column(w.link, u"favourite"_s).toInt(), 1);
    // The one key for hiding unhides what is all hidden.
    QVERIFY(w.actions.triggerFromKeyboard(u"hide"_s));
    QVERIFY(!w.column(w.link, u"hiddenAt"_s).isNull());
    QVERIFY(w.actions.triggerFromKeyboard(u"hide"_s));
    QVERIFY(w.column(w.link, u"hiddenAt"_s).isNull());

    QSignalSpy asked(&w.actions, &kivo::ItemActions::inputRequested);
    store.setSelectedItemIdList({w.picture, w.photo});
    QVERIFY(!w.actions.triggerFromKeyboard(u"rename"_s)); // one item at a time
    QVERIFY(w.actions.triggerFromKeyboard(u"file"_s));
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked.constFirst().at(0).toString(), u"file"_s);
    QCOMPARE(w.actions.targets(asked.constFirst().at(1).toString()).size(), 2);
}

QTEST_GUILESS_MAIN(TestItemActions)
#include "tst_itemactions.moc"
