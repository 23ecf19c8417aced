#include "core/itemcolours.h"
#include "core/librarylocation.h"
#include "core/userdefaults.h"
#include "tests/core/storeworld.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <chrono>
#include <future>
#include <thread>

using namespace Qt::StringLiterals;
using namespace kivo;
using kivo::test::idsOf;
using kivo::test::LogCapture;
using kivo::test::StoreWorld;

/**
 * The Store's start and refresh against a real library: the inbox, a library that cannot open,
 * the links rail, view modes per selection, history, the capture card's item, the kinds a view
 * shows, tag chips, the tint, trace lines, the search hook and failed reads.
 */
class TestStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startMakesTheInbox();
    void softDeletedInboxIsReplaced();
    void unopenableLibrarySetsSetupError();
    void boardObjectsRetiredAtStart();

    void railSplit_data();
    void railSplit();
    void capturePendingItemStaysOutOfTheRows();

    void allLinksOpenInListAndChoiceSticks();
    void phantomViewModesForgottenOnce();
    void historyCappedWithBackAndForward();
    void viewKindsFilterRows_data();
    void viewKindsFilterRows();

    void tagChipsOnlyWhenShown();
    void tagChipsOnALongList();
    void tintFollowsTheRows();
    void accent_data();
    void accent();
    void traceLinesOnlyWhenAsked();
    void searchRunnerAndLateResults();
    void refreshReadsOnAWorkerAndKeepsUnchangedRows();
    void pointingAtARowReadsItsRowsAhead();
    void leavingALongListKeepsItForTheReturn();
    void reloadingAListSharesWhatDidNotChange();
    void reloadsAfterWritesShowWhatAFullReadShows();
    void failedReadsLogAndEmptyTheRows();
    void trayPreviewsMergeDescendants();
    void theWindowsNumbersFollowOnAWorker();
    void canvasPositionsStackOnTop();
    void rowsArriveWhileALongReadHoldsTheDatabase();
    void aLongFirstListDrawsItsFirstScreenfulFirst();
};

void TestStore::startMakesTheInbox()
{
    StoreWorld world;
    QVERIFY(world.store.inboxId());
    const auto inbox = world.db().read(
        [](Database &db) { return db.fetchOne<LibraryCollection>(u"SELECT * FROM collection WHERE isInbox = 1"_s); });
    QVERIFY(inbox);
    QCOMPARE(inbox->id, *world.store.inboxId());
    QCOMPARE(inbox->name, u"Inbox"_s);
    QCOMPARE(inbox->sortIndex, -1);
    QVERIFY(!inbox->parentId && !inbox->icon);
    QVERIFY(world.store.collections().isEmpty());
    QCOMPARE(world.store.inboxCollection()->id, inbox->id);
    QVERIFY(world.store.setupError().isEmpty());
    QVERIFY(UserDefaults().boolValue(u"libraryEverOpened"_s));
}

void TestStore::softDeletedInboxIsReplaced()
{
    StoreWorld world;
    const QString first = *world.store.inboxId();
    world.db().write([&](Database &db) { db.execute(u"UPDATE collection SET deletedAt = 1 WHERE id = ?"_s, {first}); });

    Store second(&world.settings);
    second.initialise();
    QVERIFY(second.inboxId() && *second.inboxId() != first);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM collection WHERE isInbox = 1 AND deletedAt IS NULL"_s).toInt(), 1);
    QCOMPARE(world.scalar(u"SELECT sortIndex FROM collection WHERE id = ?"_s, {*second.inboxId()}).toInt(), -1);
}

void TestStore::unopenableLibrarySetsSetupError()
{
    test::Sandbox sandbox;
    // A file where the library folder should be: nothing can be made or opened there.
    const QString blocked = sandbox.path() + u"/blocked"_s;
    test::writeFile(blocked, "not a folder");
    sandbox.setLibraryRoot(blocked + u"/Kivo Library"_s);
    AppSettings settings;
    Store store(&settings);
    QSignalSpy setupErrors(&store, &Store::setupErrorChanged);
    store.initialise();
    QCOMPARE(setupErrors.count(), 1);
    QVERIFY(store.setupError().startsWith(u"Could not open the library: "_s));
    QVERIFY(!store.dbQueue());
    // Without a database every operation does nothing.
    QVERIFY(store.createCollection(u"Anything"_s).isEmpty());
    QVERIFY(!store.favourite({u"x"_s}));
    QTest::qWait(20);
    QVERIFY(!store.didInitialLoad());
}

void TestStore::boardObjectsRetiredAtStart()
{
    StoreWorld world;
    world.db().write([](Database &db) {
        BoardObject object;
        object.id = newIdentifier();
        object.collectionKey = u"all"_s;
        object.kind = u"sticky"_s;
        object.zIndex = u"a0"_s;
        db.insert(object);
    });
    Store second(&world.settings);
    second.initialise();
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM boardObject WHERE deletedAt IS NULL"_s).toInt(), 0);
    second.reloadAll();
    QVERIFY(second.boardObjects().isEmpty());
}

void TestStore::railSplit_data()
{
    QTest::addColumn<int>("links");
    QTest::addColumn<int>("others");
    QTest::addColumn<QVariant>("override");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("search");
    QTest::addColumn<bool>("inCollection");
    QTest::addColumn<int>("rail");

    const QVariant none;
    QTest::newRow("2 links + 1 other: no rail") << 2 << 1 << none << u"cards"_s << QString() << true << 0;
    QTest::newRow("2 links + 2 others: rail") << 2 << 2 << none << u"cards"_s << QString() << true << 2;
    QTest::newRow("1 link + 5 others: no rail") << 1 << 5 << none << u"cards"_s << QString() << true << 0;
    QTest::newRow("override off with many links") << 6 << 6 << QVariant(false) << u"cards"_s << QString() << true << 0;
    QTest::newRow("override on with few") << 1 << 1 << QVariant(true) << u"cards"_s << QString() << true << 1;
    QTest::newRow("override on, no links") << 0 << 3 << QVariant(true) << u"cards"_s << QString() << true << 0;
    QTest::newRow("list mode") << 2 << 2 << none << u"list"_s << QString() << true << 0;
    QTest::newRow("search text") << 2 << 2 << none << u"cards"_s << u"a"_s << true << 0;
    QTest::newRow("not a collection") << 2 << 2 << none << u"cards"_s << QString() << false << 0;
}

void TestStore::railSplit()
{
    QFETCH(int, links);
    QFETCH(int, others);
    QFETCH(QVariant, override);
    QFETCH(QString, mode);
    QFETCH(QString, search);
    QFETCH(bool, inCollection);
    QFETCH(int, rail);

    StoreWorld world;
    const QString board = world.addCollection(u"Mix"_s);
    // Links and others interleave, so the split has to keep each side in list order.
    world.seed([&](test::Seed &seed) {
        int linksLeft = links;
        int othersLeft = others;
        for (double time = 1; linksLeft + othersLeft > 0; ++time) {
            const bool link = linksLeft > 0 && (othersLeft == 0 || (linksLeft + othersLeft) % 2 == 0);
            (link ? linksLeft : othersLeft) -= 1;
            seed.membership(seed.item(link ? u"link"_s : u"image"_s, time), board, time);
        }
    });
    Store &store = world.store;
    if (override.isValid())
        store.setRailSplitOverride(board, override.toBool());
    store.setSelectionKey(inCollection ? board : u"all"_s);
    store.setViewModeName(mode);
    store.setSearchText(search);

    QCOMPARE(store.railItems().size(), rail);
    QCOMPARE(store.allRows().size() + store.railItems().size(), store.items().size());
    QStringList expectedRail;
    QStringList expectedRest;
    for (const LibraryItem &item : store.items())
        (rail > 0 && item.kind == u"link" ? expectedRail : expectedRest).append(item.id);
    QCOMPARE(idsOf(store.railItems()), expectedRail);
    QCOMPARE(idsOf(store.allRows()), expectedRest);
}

void TestStore::capturePendingItemStaysOutOfTheRows()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Board"_s);
    QStringList links;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 4; ++i) {
            const QString id = seed.item(i < 2 ? u"link"_s : u"image"_s, i + 1);
            seed.membership(id, board, i + 1);
            if (i < 2)
                links.append(id);
        }
    });
    world.store.setSelectionKey(board);
    QCOMPARE(world.store.railItems().size(), 2);
    QSignalSpy railChanged(&world.store, &Store::railItemsChanged);
    world.store.setCapturePendingItemId(links.first());
    QCOMPARE(world.store.items().size(), 4);
    QVERIFY(!idsOf(world.store.allRows()).contains(links.first()));
    QVERIFY(!idsOf(world.store.railItems()).contains(links.first()));
    // One link left: below the rail's threshold, it joins the other rows.
    QCOMPARE(world.store.railItems().size(), 0);
    QCOMPARE(world.store.allRows().size(), 3);
    QCOMPARE(railChanged.count(), 1);
}

void TestStore::allLinksOpenInListAndChoiceSticks()
{
    StoreWorld world;
    const QString links = world.addCollection(u"Reading"_s);
    const QString mixed = world.addCollection(u"Mixed"_s);
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 3; ++i)
            seed.membership(seed.item(u"link"_s, i + 1), links, i + 1);
        seed.membership(seed.item(u"link"_s, 10), mixed, 10);
        seed.membership(seed.item(u"image"_s, 11), mixed, 11);
        seed.item(u"link"_s, 12, [](LibraryItem &item) { item.deletedAt = 13; });
    });

    Store &store = world.store;
    const UserDefaults defaults;
    store.setSelectionKey(links);
    QCOMPARE(store.viewModeName(), u"list"_s);
    QVERIFY(!defaults.contains(u"viewMode."_s + links)); // a default is never stored
    store.setSelectionKey(mixed);
    QCOMPARE(store.viewModeName(), u"cards"_s);
    store.setSelectionKey(u"trash"_s);
    QCOMPARE(store.viewModeName(), u"cards"_s);
    store.setSelectionKey(u"links"_s);
    QCOMPARE(store.viewModeName(), u"list"_s);
    store.setSelectionKey(u"favourites"_s); // nothing there: cards
    QCOMPARE(store.viewModeName(), u"cards"_s);

    store.setSelectionKey(links);
    store.setViewModeName(u"cards"_s);
    QCOMPARE(UserDefaults().stringValue(u"viewMode."_s + links), u"cards"_s);
    store.setSelectionKey(u"all"_s);
    store.setSelectionKey(links);
    QCOMPARE(store.viewModeName(), u"cards"_s);
    store.setViewModeName(u"moodboard"_s); // not a view mode: ignored
    QCOMPARE(store.viewModeName(), u"cards"_s);
}

void TestStore::phantomViewModesForgottenOnce()
{
    test::Sandbox sandbox;
    {
        UserDefaults defaults;
        defaults.setValue(u"viewMode.all"_s, u"moodboard"_s);
        defaults.setValue(u"viewMode.type-image"_s, u"grid"_s);
        defaults.setValue(u"viewMode.links"_s, u"card"_s);
        defaults.setValue(u"viewMode.favourites"_s, u"list"_s);
        defaults.setValue(u"gridMode"_s, u"grid"_s);
    }
    AppSettings settings;
    LogCapture log;
    {
        Store store(&settings);
        store.initialise();
        QVERIFY(log.lines().contains(u"[Store] forgot 3 view preferences that were never chosen"_s));
        QTRY_VERIFY(store.didInitialLoad());
        QCOMPARE(store.viewModeName(), u"cards"_s);
    }
    const UserDefaults defaults;
    QVERIFY(!defaults.contains(u"viewMode.all"_s));
    QVERIFY(!defaults.contains(u"viewMode.type-image"_s));
    QVERIFY(!defaults.contains(u"viewMode.links"_s));
    QCOMPARE(defaults.stringValue(u"viewMode.favourites"_s), u"list"_s);
    QCOMPARE(defaults.stringValue(u"gridMode"_s), u"grid"_s);
    QVERIFY(defaults.boolValue(u"forgotPhantomViewModes"_s));

    Store again(&settings);
    again.initialise();
    QCOMPARE(log.lines().count(u"[Store] forgot 3 view preferences that were never chosen"_s), 1);
    QVERIFY(!log.contains(u"[Store] forgot 0"_s));
}

void TestStore::historyCappedWithBackAndForward()
{
    StoreWorld world;
    Store &store = world.store;
    const QStringList keys{u"inbox"_s, u"favourites"_s, u"links"_s, u"trash"_s, u"hidden"_s, u"type-image"_s};
    for (int i = 0; i < 150; ++i)
        store.setSelectionKey(keys.at(i % keys.size()));
    QCOMPARE(store.navBack().size(), 100);
    QVERIFY(store.navForward().isEmpty());
    // The newest entries are kept: the one before the current selection is the second-last set.
    QCOMPARE(store.navBack().last().key(), keys.at(148 % keys.size()));

    const QString current = store.selectionKey();
    store.goBack();
    QCOMPARE(store.selectionKey(), keys.at(148 % keys.size()));
    QCOMPARE(store.navBack().size(), 99);
    QCOMPARE(store.navForward().size(), 1);
    store.goForward();
    QCOMPARE(store.selectionKey(), current);
    QCOMPARE(store.navForward().size(), 0);
    QCOMPARE(store.navBack().size(), 100);

    store.goBack();
    store.setSearchText(u"words"_s);
    store.setSelectionKey(u"all"_s); // a new step forgets the way forward and clears the search
    QVERIFY(store.navForward().isEmpty());
    QVERIFY(store.searchText().isEmpty());
    QVERIFY(!store.canGoForward());
    QVERIFY(store.canGoBack());
    store.setSelectionKey(u"all"_s); // the same selection is no step
    QCOMPARE(store.navBack().size(), 100);
}

void TestStore::viewKindsFilterRows_data()
{
    QTest::addColumn<QStringList>("kinds");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("two kinds") << QStringList{u"image"_s, u"link"_s} << QStringList{u"link"_s, u"image"_s};
    QTest::newRow("one kind") << QStringList{u"text"_s} << QStringList{u"text"_s};
    QTest::newRow("all five") << QStringList{u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s}
                              << QStringList{u"file"_s, u"text"_s, u"link"_s, u"video"_s, u"image"_s};
    QTest::newRow("none") << QStringList() << QStringList{u"file"_s, u"text"_s, u"link"_s, u"video"_s, u"image"_s};
}

void TestStore::viewKindsFilterRows()
{
    QFETCH(QStringList, kinds);
    QFETCH(QStringList, expected);
    StoreWorld world;
    world.seed([](test::Seed &seed) {
        double time = 1;
        for (const QString &kind : {u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s})
            seed.item(kind, time++);
    });
    world.settings.setAllViewKinds(kinds);
    world.store.reloadItems();
    QStringList shown;
    for (const LibraryItem &item : world.store.items())
        shown.append(item.kind);
    QCOMPARE(shown, expected);
}

void TestStore::tagChipsOnlyWhenShown()
{
    StoreWorld world;
    const QString tagged = world.addItem(u"image"_s, 1);
    const QString plain = world.addItem(u"image"_s, 2);
    world.store.addTag({tagged}, u"zebra"_s);
    world.store.addTag({tagged}, u"Apple"_s);
    world.db().write([&](Database &db) {
        db.execute(u"INSERT INTO tag (id, name) VALUES ('t-ai', 'mango')"_s);
        db.execute(
            u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-ai', 'ai', 'suggested', 1)"_s,
            {tagged});
    });
    world.store.reloadItems();
    QVERIFY(world.store.tagNamesByItem().isEmpty());

    QSignalSpy changed(&world.store, &Store::tagNamesByItemChanged);
    world.settings.setCardShowTags(true);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(world.store.tagNames(tagged), (QStringList{u"apple"_s, u"mango"_s, u"zebra"_s}));
    QVERIFY(world.store.tagNames(plain).isEmpty());

    world.settings.setCardShowTags(false);
    QVERIFY(world.store.tagNamesByItem().isEmpty());
    world.settings.setListShowTags(true);
    QVERIFY(world.store.tagNamesByItem().isEmpty()); // the list's column counts only in the list
    world.store.setViewModeName(u"list"_s);
    QCOMPARE(world.store.tagNames(tagged).size(), 3);
}

void TestStore::tagChipsOnALongList()
{
    StoreWorld world;
    QStringList tagged;
    QString video;
    world.seed([&](test::Seed &seed) {
        seed.db().execute(u"INSERT INTO tag (id, name) VALUES ('t-sea', 'sea'), ('t-dune', 'dune')"_s);
        for (int i = 0; i < 700; ++i) {
            const QString id = seed.item(u"image"_s, i + 1);
            if (i % 100 == 0) {
                tagged.append(id);
                seed.db().execute(u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-sea', "
                                  u"'user', 'accepted', 1), "
                                  "(?, 't-dune', 'ai', 'suggested', 1)"_s,
                    {id, id});
            }
        }
        video = seed.item(u"video"_s, 900);
        seed.db().execute(
            u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-sea', 'user', 'accepted', 1)"_s,
            {video});
    });
    world.store.reloadItems();
    world.settings.setCardShowTags(true);
    QCOMPARE(world.store.items().size(), 701);
    QCOMPARE(world.store.tagNamesByItem().size(), 8);
    for (const QString &id : tagged)
        QCOMPARE(world.store.tagNames(id), (QStringList{u"dune"_s, u"sea"_s}));
    QCOMPARE(world.store.tagNames(video), QStringList{u"sea"_s});

    // A view that leaves videos out shows no chips for them either.
    world.settings.setAllViewKinds({u"image"_s});
    QCOMPARE(world.store.items().size(), 700);
    QCOMPARE(world.store.tagNamesByItem().size(), 7);
    QVERIFY(world.store.tagNames(video).isEmpty());
}

void TestStore::tintFollowsTheRows()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Reds"_s);
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 3; ++i) {
            seed.membership(
                seed.item(u"image"_s, i + 1, [](LibraryItem &item) { item.colors = u"[\"#E02020\",\"#808080\"]"_s; }),
                board, i + 1);
        }
    });
    world.store.setSelectionKey(board);
    QTRY_VERIFY(world.store.collectionTint().isValid());
    const QColor tint = world.store.collectionTint();
    QVERIFY2(tint.red() > tint.green() + 40 && tint.red() > tint.blue() + 40, qPrintable(tint.name()));

    world.store.setSelectionKey(u"hidden"_s); // no rows, no colours
    QTRY_VERIFY(!world.store.collectionTint().isValid());
}

void TestStore::accent_data()
{
    QTest::addColumn<QString>("colors");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no palette") << u"[]"_s << QString();
    QTest::newRow("greys only: the first") << u"[\"#404040\",\"#C0C0C0\"]"_s << u"#404040"_s;
    QTest::newRow("the vivid one over greys") << u"[\"#808080\",\"#2060E0\"]"_s << u"#2060e0"_s;
    QTest::newRow("a later equal score does not replace") << u"[\"#E02020\",\"#20E020\"]"_s << u"#e02020"_s;
    QTest::newRow("a strictly better one does") << u"[\"#C08080\",\"#E02020\"]"_s << u"#e02020"_s;
}

void TestStore::accent()
{
    QFETCH(QString, colors);
    QFETCH(QString, expected);
    const auto accent = ItemColours::accent(ItemColours::decode(colors));
    QCOMPARE(accent ? accent->name() : QString(), expected);
}

void TestStore::traceLinesOnlyWhenAsked()
{
    StoreWorld world;
    world.addItem(u"image"_s, 1);
    LogCapture log;
    world.store.reloadAll();
    QVERIFY(!log.contains(u"[trace]"_s));
    world.store.setChurnTrace(true);
    world.store.reloadAll();
    QVERIFY(log.contains(u"[trace]   the query (incl. waiting for the db queue): "_s));
    QVERIFY(log.contains(u" ms, 1 rows"_s));
    QVERIFY(log.contains(u"[trace]   handing SwiftUI the array: "_s));
    QVERIFY(log.contains(u"[trace]   canvas positions: "_s));
    QVERIFY(log.contains(u"[trace] reloadItems total "_s));
    QVERIFY(log.contains(u"[trace] reloadAll: collections "_s));
}

void TestStore::searchRunnerAndLateResults()
{
    StoreWorld world;
    const QString first = world.addItem(u"image"_s, 1);
    const QString second = world.addItem(u"image"_s, 2);
    Store &store = world.store;
    store.setSearchText(u"cat"_s); // no search installed: the plain rows stay
    QCOMPARE(store.items().size(), 2);
    store.setSearchText(QString());

    QList<SearchRequest> requests;
    store.setSearchRunner([&](const SearchRequest &request) { requests.append(request); });
    store.setSearchText(u"  red cat "_s);
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().text, u"red cat"_s);
    QVERIFY(requests.first().typing);
    QCOMPARE(requests.first().selection, SidebarSelection::all());

    const quint64 asked = requests.first().generation;
    store.applySearchResults(asked, {world.item(first)});
    QCOMPARE(idsOf(store.items()), QStringList{first});

    store.reloadItems(); // anything else that refreshes makes the earlier search stale
    QCOMPARE(requests.size(), 2);
    QVERIFY(!requests.last().typing);
    store.applySearchResults(asked, {world.item(second)});
    QCOMPARE(idsOf(store.items()), QStringList{first});
    store.applySearchResults(requests.last().generation, {world.item(second), world.item(first)});
    QCOMPARE(idsOf(store.items()), (QStringList{second, first}));
}

void TestStore::pointingAtARowReadsItsRowsAhead()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Board"_s);
    const QString first = world.addItem(u"image"_s, 1);
    const QString second = world.addItem(u"link"_s, 2);
    const QString later = world.addItem(u"text"_s, 3);
    world.addMembership(first, board, 10);
    world.addMembership(second, board, 20);
    Store &store = world.store;
    store.reloadAll();
    const QString favourites = SidebarSelection::favourites().key();

    // Passing over a row on the way elsewhere reads nothing.
    store.expectSelection(favourites);
    store.stopExpectingSelection(favourites);
    QTest::qWait(250);
    QVERIFY(!store.readsAhead(favourites));

    // Resting on a row reads it after a moment; choosing it takes those rows.
    store.expectSelection(board);
    QVERIFY(!store.readsAhead(board));
    QTRY_VERIFY(store.readsAhead(board));
    store.setSelectionKey(board);
    QCOMPARE(idsOf(store.items()), (QStringList{second, first}));
    QVERIFY(!store.readsAhead(board));

    // Leaving one row for the next in either order keeps the next one's dwell.
    store.expectSelection(SidebarSelection::all().key());
    store.stopExpectingSelection(board);
    QTRY_VERIFY(store.readsAhead(SidebarSelection::all().key()));
    store.setSelection(SidebarSelection::all());
    QCOMPARE(idsOf(store.items()), (QStringList{later, second, first}));

    // Rows read before a write are stale: the choice reads again.
    store.expectSelection(board);
    QTRY_VERIFY(store.readsAhead(board));
    QVERIFY(store.fileItem(later, board));
    store.setSelectionKey(board);
    QCOMPARE(idsOf(store.items()), (QStringList{later, second, first}));

    // The current selection needs no reading ahead.
    store.expectSelection(board);
    QTest::qWait(250);
    QVERIFY(!store.readsAhead(board));
}

void TestStore::leavingALongListKeepsItForTheReturn()
{
    StoreWorld world;
    const QString board = world.addCollection(u"Board"_s);
    QString newestSeeded;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 10000; ++i)
            newestSeeded = seed.item(u"image"_s, i);
        seed.membership(newestSeeded, board, 1);
    });
    Store &store = world.store;
    store.reloadAll();
    const QList<LibraryItem> all = store.items();
    QCOMPARE(all.size(), 10000);

    // Away and back with nothing written: the very list that was left, not a new read of it.
    store.setSelectionKey(board);
    QCOMPARE(idsOf(store.items()), QStringList{newestSeeded});
    store.setSelection(SidebarSelection::all());
    QCOMPARE(store.items().constData(), all.constData());

    // A write while away makes it stale: the return reads again and shows the write.
    store.setSelectionKey(board);
    world.db().write(
        [&](Database &db) { db.execute(u"UPDATE item SET title = 'Renamed' WHERE id = ?"_s, {newestSeeded}); });
    store.setSelection(SidebarSelection::all());
    QVERIFY(store.items().constData() != all.constData());
    QCOMPARE(store.items().size(), 10000);
    QCOMPARE(store.items().first().title, u"Renamed"_s);

    // A short list is read again each time (a few milliseconds), so nothing of it is kept.
    const QList<LibraryItem> boardRows = (store.setSelectionKey(board), store.items());
    store.setSelection(SidebarSelection::all());
    store.setSelectionKey(board);
    QVERIFY(store.items().constData() != boardRows.constData());
    QCOMPARE(idsOf(store.items()), idsOf(boardRows));
}

void TestStore::reloadingAListSharesWhatDidNotChange()
{
    StoreWorld world;
    QStringList seeded;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 1500; ++i)
            seeded.append(seed.item(u"image"_s, i));
    });
    Store &store = world.store;
    store.reloadAll();
    bool memoryGivenBack = false;
    store.setMemorySettleGate([&] {
        memoryGivenBack = true;
        return true;
    });
    const QList<LibraryItem> before = store.items();
    QCOMPARE(before.size(), 1500);

    // Nothing written: the reload is the list shown, and nobody is told of a change.
    QSignalSpy changed(&store, &Store::itemsChanged);
    store.reloadItems();
    QCOMPARE(store.items().constData(), before.constData());
    QCOMPARE(changed.count(), 0);

    // Written through another connection, the Store cannot tell which rows changed: the read goes
    // through the whole file, whose pages go back once it settles, and still changes nothing.
    const auto elsewhere = DatabaseQueue::openUnmigrated(store.dbQueue()->path());
    // The Store's own workers may still be reading the counts.
    elsewhere->barrier([](Database &db) { db.executeScript(u"PRAGMA busy_timeout = 10000"_s); });
    elsewhere->write([](Database &db) { db.execute(u"UPDATE item SET modifiedAt = modifiedAt WHERE rowid = 1"_s); });
    store.reloadItems();
    QCOMPARE(store.items().constData(), before.constData());
    QCOMPARE(changed.count(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(memoryGivenBack, 5000);

    // One row written: it is read anew, every other row shares its text with the list before.
    world.db().write([&](Database &db) {
        db.execute(u"UPDATE item SET title = 'Renamed' WHERE id = ?"_s, {seeded.at(700)});
    });
    store.reloadItems();
    const QList<LibraryItem> after = store.items();
    QCOMPARE(after.size(), 1500);
    QCOMPARE(changed.count(), 1);
    qsizetype shared = 0;
    for (qsizetype i = 0; i < after.size(); ++i) {
        QCOMPARE(after.at(i).id, before.at(i).id);
        if (after.at(i).id == seeded.at(700))
            QCOMPARE(after.at(i).title, u"Renamed"_s);
        shared += after.at(i).id.constData() == before.at(i).id.constData() ? 1 : 0;
    }
    QCOMPARE(shared, 1499);
}

void TestStore::reloadsAfterWritesShowWhatAFullReadShows()
{
    StoreWorld world;
    QStringList seeded;
    const QStringList kinds{u"image"_s, u"link"_s, u"text"_s, u"video"_s};
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < 400; ++i)
            seeded.append(seed.item(kinds.at(i % kinds.size()), 100 + i));
    });
    Store &store = world.store;
    world.settings.setAllViewKinds({u"image"_s, u"link"_s});
    // Only All is cut to images and links; Favourites keeps its own choice, every kind.
    const auto expected = [&](const QString &sql) {
        QList<LibraryItem> rows = world.db().read([&](Database &db) { return db.fetchAll<LibraryItem>(sql); });
        if (store.selection() == SidebarSelection::all())
            rows.removeIf([](const LibraryItem &item) { return item.kind != u"image" && item.kind != u"link"; });
        return rows;
    };
    const QString all = u"SELECT * FROM item WHERE deletedAt IS NULL AND hiddenAt IS NULL ORDER BY addedAt DESC"_s;
    const QString favourites = u"SELECT * FROM item WHERE deletedAt IS NULL AND favourite = 1 ORDER BY addedAt DESC"_s;
    store.reloadAll();
    QCOMPARE(store.items(), expected(all));

    // A text becomes a link, an image a video, one goes, one comes back, one is added among them.
    const auto writeAndCompare = [&](const QString &sql, const QVariantList &arguments, const QString &listed) {
        world.db().write([&](Database &db) { db.execute(sql, arguments); });
        store.reloadItems();
        return store.items() == expected(listed);
    };
    QVERIFY(writeAndCompare(u"UPDATE item SET kind = 'link' WHERE id = ?"_s, {seeded.at(2)}, all));
    QVERIFY(writeAndCompare(u"UPDATE item SET kind = 'video' WHERE id = ?"_s, {seeded.at(4)}, all));
    QVERIFY(writeAndCompare(u"UPDATE item SET deletedAt = 9 WHERE id = ?"_s, {seeded.at(5)}, all));
    QVERIFY(writeAndCompare(u"UPDATE item SET hiddenAt = 9 WHERE id IN (?, ?)"_s, {seeded.at(8), seeded.at(9)}, all));
    QVERIFY(writeAndCompare(u"UPDATE item SET hiddenAt = NULL WHERE id = ?"_s, {seeded.at(8)}, all));
    QVERIFY(writeAndCompare(u"UPDATE item SET addedAt = 1000 WHERE id = ?"_s, {seeded.at(13)}, all));
    world.seed([&](test::Seed &seed) { seed.item(u"image"_s, 250.5); });
    store.reloadItems();
    QCOMPARE(store.items(), expected(all));

    // Shown again after another list, with writes between, and with other kinds.
    store.setSelection(SidebarSelection::favourites());
    QVERIFY(writeAndCompare(u"UPDATE item SET favourite = 1 WHERE id IN (?, ?, ?)"_s, {seeded.at(1), seeded.at(3), seeded.at(6)},
        favourites));
    QVERIFY(writeAndCompare(u"UPDATE item SET kind = 'image' WHERE id = ?"_s, {seeded.at(6)}, favourites));
    store.setSelection(SidebarSelection::all());
    QCOMPARE(store.items(), expected(all));
    world.settings.setAllViewKinds({u"image"_s, u"link"_s, u"text"_s, u"video"_s, u"file"_s});
    store.reloadItems();
    QCOMPARE(store.items().size(), world.db().read([&](Database &db) { return db.fetchAll<LibraryItem>(all); }).size());
}

void TestStore::refreshReadsOnAWorkerAndKeepsUnchangedRows()
{
    StoreWorld world;
    const QString older = world.addItem(u"image"_s, 1);
    const QString newer = world.addItem(u"image"_s, 2);
    Store &store = world.store;
    store.reloadItems();
    const QList<LibraryItem> before = store.items();
    QCOMPARE(idsOf(before), (QStringList{newer, older}));

    // Background reading changes a row behind the Store's back, then asks for a refresh.
    world.db().write([&](Database &db) { db.execute(u"UPDATE item SET title = 'Read' WHERE id = ?"_s, {older}); });
    QSignalSpy changed(&store, &Store::itemsChanged);
    store.refreshItems();
    QCOMPARE(changed.count(), 0); // the rows are read on a worker and arrive through the event loop
    QTRY_COMPARE(changed.count(), 1);
    const QList<LibraryItem> after = store.items();
    QCOMPARE(idsOf(after), (QStringList{newer, older}));
    QCOMPARE(after[1].title, std::optional<QString>(u"Read"_s));
    // The unchanged row is the shown one, strings and all; the changed one was read anew.
    QCOMPARE(after[0], before[0]);
    QVERIFY(after[0].id.constData() == before[0].id.constData());
    QVERIFY(after[1].id.constData() != before[1].id.constData());

    // A reload that comes while a refresh is being read wins: the refresh's rows are dropped.
    world.db().write([&](Database &db) { db.execute(u"UPDATE item SET title = 'Later' WHERE id = ?"_s, {older}); });
    store.refreshItems();
    store.setSelectionKey(u"favourites"_s);
    QVERIFY(store.items().isEmpty());
    QTest::qWait(300);
    QVERIFY(store.items().isEmpty());
    store.setSelection(SidebarSelection::all());
    QCOMPARE(store.items()[1].title, std::optional<QString>(u"Later"_s));
}

void TestStore::failedReadsLogAndEmptyTheRows()
{
    StoreWorld world;
    world.addItem(u"image"_s, 1);
    const QString board = world.addCollection(u"Board"_s);
    world.store.reloadAll();
    QCOMPARE(world.store.items().size(), 1);

    world.db().write([](Database &db) { db.execute(u"ALTER TABLE item RENAME TO itemElsewhere"_s); });
    LogCapture log;
    world.store.reloadAll();
    QVERIFY(log.contains(u"[Store] reloadCollections failed: "_s));
    QVERIFY(log.contains(u"[Store] reloadItems failed: "_s));
    QVERIFY(world.store.items().isEmpty());
    // The collections stay as they were read last.
    QCOMPARE(world.store.collections().size(), 1);
    QCOMPARE(world.store.collections().first().id, board);
    QCOMPARE(world.store.allCount(), 1);
}

void TestStore::trayPreviewsMergeDescendants()
{
    StoreWorld world;
    const QString parent = world.addCollection(u"Parent"_s);
    const QString child = world.addCollection(u"Child"_s, parent);
    world.seed([&](test::Seed &seed) {
        const auto filed = [&](const QString &collection, const QString &file, double at) {
            seed.membership(
                seed.item(u"image"_s, at, [&](LibraryItem &item) { item.filePath = file; }), collection, at);
        };
        filed(parent, u"p/one.png"_s, 1);
        filed(parent, u"p/two.png"_s, 2);
        filed(child, u"c/three.png"_s, 3);
        filed(child, u"c/four.png"_s, 4);
        filed(child, u"c/five.png"_s, 5);
        seed.membership(seed.item(u"link"_s, 9), parent, 9); // no file: no preview
    });
    world.store.reloadCollections();

    const QString folder = LibraryLocation::itemFolder();
    const auto urls = [&](const QStringList &paths) {
        QList<QUrl> list;
        for (const QString &path : paths)
            list.append(QUrl::fromLocalFile(folder + u'/' + path));
        return list;
    };
    QTRY_COMPARE(world.store.trayPreviews().value(parent), urls({u"c/five.png"_s, u"c/four.png"_s, u"c/three.png"_s}));
    QCOMPARE(world.store.trayPreviews().value(child), urls({u"c/five.png"_s, u"c/four.png"_s, u"c/three.png"_s}));
    QCOMPARE(world.store.collectionActivityRollup().value(parent), 9.0);
    QCOMPARE(world.store.collectionLastActivity().value(child), 5.0);
}

void TestStore::theWindowsNumbersFollowOnAWorker()
{
    StoreWorld world([](Store &store) { store.setCollectionCountsInBackground(true); });
    QTRY_VERIFY(world.store.countsKnown());
    const QString board = world.addCollection(u"Board"_s);
    QStringList ids;
    world.seed([&](test::Seed &seed) {
        ids.append(seed.item(u"image"_s, 1));
        ids.append(seed.item(u"link"_s, 2, [](LibraryItem &item) { item.favourite = true; }));
        ids.append(seed.item(u"image"_s, 3, [](LibraryItem &item) { item.hiddenAt = 3.0; }));
        ids.append(seed.item(u"note"_s, 4, [](LibraryItem &item) { item.deletedAt = 4.0; }));
        seed.membership(ids.at(0), board, 5);
        seed.membership(ids.at(3), board, 6); // in the Trash: not counted
    });
    QSignalSpy counted(&world.store, &Store::countsChanged);
    world.store.reloadAll();
    // The list is there at once; the numbers arrive together, a moment later.
    QCOMPARE(world.store.items().size(), 2);
    QTRY_COMPARE(counted.size(), 1);
    QCOMPARE(world.store.allCount(), 2);
    QCOMPARE(world.store.favouritesCount(), 1);
    QCOMPARE(world.store.linksCount(), 1);
    QCOMPARE(world.store.hiddenCount(), 1);
    QCOMPARE(world.store.trashCount(), 1);
    QCOMPARE(world.store.counts().value(board), 1);
    QCOMPARE(world.store.collectionLastActivity().value(board), 5.0);

    // A write through the Store brings them up to date the same way.
    QVERIFY(world.store.favourite({ids.at(0)}));
    QTRY_COMPARE(world.store.favouritesCount(), 2);
    QVERIFY(world.store.trashItems({ids.at(0)}));
    QTRY_COMPARE(world.store.allCount(), 1);
    QTRY_COMPARE(world.store.counts().value(board), 0);
    QCOMPARE(world.store.trashCount(), 2);
    QCOMPARE(world.store.favouritesCount(), 1);
}

void TestStore::canvasPositionsStackOnTop()
{
    StoreWorld world;
    const QString a = world.addItem(u"image"_s, 1);
    const QString b = world.addItem(u"image"_s, 2);
    world.db().write([&](Database &db) {
        db.insert(CanvasPosition{a, u"all"_s, 10, 20, 1.0, 7});
        db.insert(CanvasPosition{b, u"elsewhere"_s, 0, 0, 1.0, 50});
    });
    world.store.reloadItems();
    QCOMPARE(world.store.canvasPositions().size(), 1);
    QVERIFY(world.store.saveCanvasPosition(b, 5, 6, 2.0));
    QCOMPARE(world.store.canvasPositions().value(b).z, 8);
    const auto stored = world.db().read([&](Database &db) {
        return db.fetchOne<CanvasPosition>(
            u"SELECT * FROM canvasPosition WHERE itemId = ? AND collectionKey = 'all'"_s, {b});
    });
    QVERIFY(stored);
    QCOMPARE(stored->z, 8);
    QCOMPARE(stored->scale, 2.0);
}

void TestStore::rowsArriveWhileALongReadHoldsTheDatabase()
{
    StoreWorld world;
    const QString a = world.addItem(u"image"_s, 1);
    Store &store = world.store;
    store.reloadItems();
    const QList<LibraryItem> rows = store.items();

    // A background read (a sidebar count over a million rows) holds the database for a while.
    std::promise<void> finish;
    std::promise<void> holding;
    std::thread longRead([&] {
        world.db().read([&](Database &) {
            holding.set_value();
            finish.get_future().wait_for(std::chrono::seconds(10));
        });
    });
    holding.get_future().wait();
    // Rows handed over meanwhile are shown at once: nothing was written, so the board is not read again.
    QElapsedTimer held;
    held.start();
    store.applySearchResults(store.searchGeneration(), rows);
    const qint64 waited = held.elapsed();
    finish.set_value();
    longRead.join();
    QVERIFY2(waited < 2000, qPrintable(QString::number(waited)));

    // After a write the board is read again, and shows the write.
    world.db().write([&](Database &db) { db.insert(CanvasPosition{a, u"all"_s, 10, 20, 1.0, 3}); });
    store.applySearchResults(store.searchGeneration(), rows);
    QCOMPARE(store.canvasPositions().value(a).z, 3);
}

void TestStore::aLongFirstListDrawsItsFirstScreenfulFirst()
{
    StoreWorld world;
    constexpr int count = 30000;
    world.seed([&](test::Seed &seed) {
        for (int i = 0; i < count; ++i)
            seed.item(i % 3 ? u"image"_s : u"link"_s, 1000 + i);
    });
    const auto wholeList = [&] {
        return world.db().read([](Database &db) {
            return db.fetchAll<LibraryItem>(
                u"SELECT * FROM item WHERE deletedAt IS NULL AND hiddenAt IS NULL ORDER BY addedAt DESC"_s);
        });
    };

    // A second Store on the same library, started as the window starts it.
    for (const bool writeMeanwhile : {false, true}) {
        Store store(&world.settings);
        store.setCollectionCountsInBackground(true);
        store.setFirstRowsReadAhead(true);
        QList<std::pair<int, qsizetype>> shown; // the count told, the rows listed, at each change
        connect(&store, &Store::itemsChanged, &store,
            [&] { shown.append({store.itemCount(), store.items().size()}); });
        store.initialise();
        QTRY_VERIFY(store.didInitialLoad());
        const bool firstScreenfulShown = store.items().size() == Store::firstScreenfulRows;
        if (firstScreenfulShown) {
            // The newest rows, in order, while the count is not told yet.
            QCOMPARE(store.itemCount(), 0);
            QCOMPARE(idsOf(store.items()), idsOf(wholeList().first(Store::firstScreenfulRows)));
            if (writeMeanwhile)
                QVERIFY(store.favourite({store.items().at(5).id}));
        }
        QTRY_COMPARE(store.items().size(), count);
        QCOMPARE(store.itemCount(), count);
        QCOMPARE(store.items(), wholeList());
        // Only ever the first screenful or the whole list.
        for (const auto &[told, listed] : std::as_const(shown))
            QVERIFY((told == 0 && listed == Store::firstScreenfulRows) || (told == count && listed == count));
        // A later write is patched into the whole list, never into the screenful.
        QVERIFY(store.favourite({store.items().at(count - 1).id}));
        QCOMPARE(store.items(), wholeList());
        if (!firstScreenfulShown)
            QSKIP("the whole list was read before the first load asked for it; nothing to tell apart");
    }
}

QTEST_GUILESS_MAIN(TestStore)
#include "tst_store.moc"
