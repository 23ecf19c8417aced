// Loads the whole main window on a real library in an offscreen window and works it as a person
// would, with clicks and keys: the sidebar's sections, counts and keys, the collection tree, the
// history, the sidebar's width and visibility, toasts, the details panel, the item menu and both
// appearances. The database is read back after what should have written it.

#include "core/appsettings.h"
#include "core/store.h"
#include "core/userdefaults.h"
#include "search/searchservice.h"
#include "surfaces/grid/gridcontroller.h"
#include "surfaces/qmlservices.h"
#include "tests/surfaces/loadedwindow.h"
#include "tests/surfaces/quickhelpers.h"

#include <QQmlApplicationEngine>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using kivo::test::findItem;
using kivo::test::LoadedWindow;

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sidebarListsItsSectionsInOrder();
    void emptyLibraryInvitesADrop();
    void countsFollowTheLibrary();
    void keysAndClicksMoveTheSelection();
    void sectionsFoldAndAreRemembered();
    void collectionTreeRenamesFoldsAndPins();
    void longTreesScrollToWhatIsSelectedOrNamed();
    void historyFollowsButtonsKeysAndMouse();
    void sidebarHidesAndResizes();
    void toolbarSearchesAndSwitchesTheView();
    void searchFieldFindsByWordsAndColours();
    void readingIndicatorShowsWhatIsLeft();
    void toastsShowTheirButtonAndLeave();
    void detailsPanelEditsTheItem();
    void itemMenuRunsTheActions();
    void appearanceSwitchesTheTheme();
    void setupErrorIsShown();
};

void TestMainWindow::sidebarListsItsSectionsInOrder()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    const QList<std::pair<QString, QString>> expected{
        {u"sidebar-all"_s, u"All"_s},
        {u"sidebar-inbox"_s, u"Inbox"_s},
        {u"sidebar-favourites"_s, u"Favourites"_s},
        {u"sidebar-links"_s, u"Links"_s},
        {u"sidebar-trash"_s, u"Trash"_s},
        {u"sidebar-hidden"_s, u"Hidden"_s},
        {u"typesHeader"_s, u"Types"_s},
        {u"sidebar-type-image"_s, u"Images"_s},
        {u"sidebar-type-videos"_s, u"Videos"_s},
        {u"sidebar-type-links"_s, u"Links"_s},
        {u"sidebar-type-documents"_s, u"Documents"_s},
        {u"sidebar-type-tweets"_s, u"Tweets"_s},
        {u"sidebar-type-instagram"_s, u"Instagram"_s},
        {u"sidebar-type-audio"_s, u"Audio"_s},
        {u"collectionsHeader"_s, u"Collections"_s},
    };
    qreal previousY = -1;
    for (const auto &[name, title] : expected) {
        QQuickItem *row = loaded.item(name);
        QVERIFY2(kivo::test::isShown(row), qPrintable(name));
        const QString child = name.endsWith(u"Header") ? u"sectionTitle"_s : u"title"_s;
        QCOMPARE(findItem(row, child)->property("text").toString(), title);
        const qreal y = row->mapToScene(QPointF()).y();
        QVERIFY2(y > previousY, qPrintable(name));
        previousY = y;
    }
    // Nothing pinned: no pinned heading; no collections: a quiet line says so.
    QVERIFY(!loaded.item(u"pinnedHeader"_s)->isVisible());
    QCOMPARE(loaded.textOf(u"noCollections"_s), u"No collections yet"_s);
}

void TestMainWindow::emptyLibraryInvitesADrop()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    QVERIFY(kivo::test::isShown(loaded.item(u"emptyLibrary"_s)));
    QCOMPARE(loaded.textOf(u"emptyTitle"_s), u"Drag anything here"_s);
    QCOMPARE(loaded.textOf(u"emptyMessage"_s), u"Images, links, videos and notes all land in your library."_s);
    QCOMPARE(loaded.textOf(u"selectionTitle"_s), u"All"_s);
    QVERIFY(!loaded.item(u"selectionCount"_s)->isVisible());
    QVERIFY(!loaded.item(u"setupError"_s)->isVisible());
    QVERIFY(!loaded.item(u"backButton"_s)->isEnabled());
}

void TestMainWindow::countsFollowTheLibrary()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    const double now = kivo::nowSeconds();
    loaded.world.seed([&](kivo::test::Seed &seed) {
        seed.item(u"image"_s, now, [](kivo::LibraryItem &i) { i.favourite = true; });
        seed.item(u"image"_s, now, [&](kivo::LibraryItem &i) { i.hiddenAt = now; });
        seed.item(u"link"_s, now, [](kivo::LibraryItem &i) { i.sourceURL = u"https://x.com/someone/status/1"_s; });
        seed.item(u"file"_s, now, [](kivo::LibraryItem &i) { i.filePath = u"2024-01/song.MP3"_s; });
        seed.item(u"file"_s, now, [](kivo::LibraryItem &i) { i.filePath = u"2024-01/paper.pdf"_s; });
        seed.item(u"text"_s, now);
        seed.item(u"image"_s, now, [&](kivo::LibraryItem &i) { i.deletedAt = now; });
        seed.item(u"video"_s, now, [](kivo::LibraryItem &i) { i.sourceURL = u"https://www.instagram.com/p/abc/"_s; });
    });
    const QString board = loaded.world.addCollection(u"Board"_s);
    loaded.world.store.reloadAll();

    // Worked out by hand: the hidden image counts under Images but not under All; the trashed
    // one counts only in Trash; the upper-case .MP3 is audio, not a document; the note is one.
    const QList<std::pair<QString, QString>> expected{
        {u"all"_s, u"6"_s},
        {u"inbox"_s, QString()},
        {u"favourites"_s, u"1"_s},
        {u"links"_s, u"1"_s},
        {u"trash"_s, u"1"_s},
        {u"hidden"_s, u"1"_s},
        {u"type-image"_s, u"2"_s},
        {u"type-videos"_s, u"1"_s},
        {u"type-links"_s, u"1"_s},
        {u"type-documents"_s, u"2"_s},
        {u"type-tweets"_s, u"1"_s},
        {u"type-instagram"_s, u"1"_s},
        {u"type-audio"_s, u"1"_s},
    };
    // The counts per kind are read on a worker and arrive a moment after the reload.
    for (const auto &[key, count] : expected)
        QTRY_COMPARE(loaded.textOf(u"sidebar-"_s + key, u"count"_s), count);
    QTRY_VERIFY(!loaded.item(u"emptyLibrary"_s)->isVisible());
    QCOMPARE(loaded.textOf(u"selectionCount"_s), u"6 items"_s);
    loaded.screenshot(u"main-window-counts-light.png"_s);

    loaded.world.settings.setShowSidebarCounts(false);
    QVERIFY(!findItem(loaded.item(u"sidebar-all"_s), u"count"_s)->isVisible());
    QVERIFY(!findItem(loaded.item(u"collection-"_s + board), u"count"_s)->isVisible());
}

void TestMainWindow::keysAndClicksMoveTheSelection()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    const QString art = loaded.world.addCollection(u"Art"_s);
    QQuickItem *sidebar = loaded.item(u"sidebar"_s);
    QTRY_VERIFY(sidebar->hasActiveFocus());
    const auto title = [&] { return loaded.textOf(u"selectionTitle"_s); };

    QTest::keyClick(loaded.window, Qt::Key_Down);
    QCOMPARE(title(), u"Inbox"_s);
    QTest::keyClick(loaded.window, Qt::Key_End);
    QCOMPARE(title(), u"Art"_s);
    QCOMPARE(loaded.world.store.selectionKey(), art);
    QTest::keyClick(loaded.window, Qt::Key_Down); // already at the foot
    QCOMPARE(title(), u"Art"_s);
    QTest::keyClick(loaded.window, Qt::Key_Up);
    QCOMPARE(title(), u"Audio"_s);
    QTest::keyClick(loaded.window, Qt::Key_Home);
    QCOMPARE(title(), u"All"_s);
    QTest::keyClick(loaded.window, Qt::Key_Up); // already at the top
    QCOMPARE(title(), u"All"_s);

    kivo::test::clickItem(loaded.window, loaded.item(u"sidebar-trash"_s));
    QCOMPARE(title(), u"Trash"_s);
    QVERIFY(sidebar->hasActiveFocus());
    QTest::keyClick(loaded.window, Qt::Key_Down);
    QCOMPARE(title(), u"Hidden"_s);
    kivo::test::clickItem(loaded.window, loaded.item(u"collection-"_s + art));
    QCOMPARE(title(), u"Art"_s);
}

void TestMainWindow::sectionsFoldAndAreRemembered()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::test::clickItem(loaded.window, loaded.item(u"typesHeader"_s));
    QVERIFY(!loaded.world.settings.typesSectionExpanded());
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"sidebar-type-image"_s)));
    // Stored under its key, so the next start shows it folded.
    QCOMPARE(kivo::AppSettings().typesSectionExpanded(), false);
    // The keys step over a folded section: from Hidden, Down has nowhere to go without collections.
    loaded.world.store.setSelectionKey(u"hidden"_s);
    loaded.item(u"sidebar"_s)->forceActiveFocus();
    QTest::keyClick(loaded.window, Qt::Key_Down);
    QCOMPARE(loaded.world.store.selectionKey(), u"hidden"_s);

    kivo::test::clickItem(loaded.window, loaded.item(u"typesHeader"_s));
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"sidebar-type-image"_s)));
    const QString art = loaded.world.addCollection(u"Art"_s);
    kivo::test::clickItem(loaded.window, loaded.item(u"collectionsHeader"_s));
    QVERIFY(!loaded.world.settings.collectionsSectionExpanded());
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"collection-"_s + art)));
}

void TestMainWindow::collectionTreeRenamesFoldsAndPins()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::Store &store = loaded.world.store;
    const QString art = loaded.world.addCollection(u"Art"_s);
    const QString posters = loaded.world.addCollection(u"Posters"_s, art);
    const QString food = loaded.world.addCollection(u"Food"_s);
    QQuickItem *artRow = loaded.item(u"collection-"_s + art);
    QQuickItem *postersRow = loaded.item(u"collection-"_s + posters);
    QVERIFY(kivo::test::isShown(postersRow));
    // Posters is drawn one step in from its parent.
    QVERIFY(
        findItem(postersRow, u"title"_s)->mapToScene({}).x() > findItem(artRow, u"title"_s)->mapToScene({}).x() + 8);

    // The disclosure folds Art, and the fold is saved.
    kivo::test::clickItem(loaded.window, findItem(artRow, u"disclosure"_s));
    QVERIFY(store.isCollapsed(art));
    QTRY_VERIFY(!loaded.item(u"collection-"_s + posters));
    QCOMPARE(kivo::UserDefaults().stringListValue(u"collapsedCollections"_s), QStringList{art});
    kivo::test::clickItem(loaded.window, findItem(artRow, u"disclosure"_s));
    QTRY_VERIFY(loaded.item(u"collection-"_s + posters));

    // A double click renames in place; Return keeps the name, Escape would not.
    QTest::mouseDClick(
        loaded.window, Qt::LeftButton, Qt::NoModifier, LoadedWindow::centreOf(loaded.item(u"collection-"_s + food)));
    QQuickItem *field = findItem(loaded.item(u"collection-"_s + food), u"renameField"_s);
    QTRY_VERIFY(field->hasActiveFocus());
    QTest::keyClick(loaded.window, Qt::Key_A, Qt::ControlModifier);
    kivo::test::typeText(loaded.window, u"Recipes"_s);
    QTest::keyClick(loaded.window, Qt::Key_Return);
    QCOMPARE(loaded.world.scalar(u"SELECT name FROM collection WHERE id = ?"_s, {food}).toString(), u"Recipes"_s);
    QVERIFY(store.renameTargetId().isEmpty());
    // F2 from the keyboard on the selected collection, then Escape: the name stays.
    store.setSelectionKey(food);
    loaded.item(u"sidebar"_s)->forceActiveFocus();
    QTest::keyClick(loaded.window, Qt::Key_F2);
    QTRY_VERIFY(findItem(loaded.item(u"collection-"_s + food), u"renameField"_s)->hasActiveFocus());
    kivo::test::typeText(loaded.window, u"Nothing"_s);
    QTest::keyClick(loaded.window, Qt::Key_Escape);
    QCOMPARE(loaded.world.scalar(u"SELECT name FROM collection WHERE id = ?"_s, {food}).toString(), u"Recipes"_s);

    // Pin from the context menu: the pinned section appears with it.
    loaded.click(u"collection-"_s + art, Qt::RightButton);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"collectionMenuPin"_s)));
    QCOMPARE(loaded.textOf(u"collectionMenuPin"_s), u"Pin"_s);
    loaded.screenshot(u"main-window-collection-menu.png"_s);
    loaded.click(u"collectionMenuPin"_s);
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"collectionMenuPin"_s)));
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"pinned-"_s + art)));
    QVERIFY(!loaded.world.scalar(u"SELECT pinnedAt FROM collection WHERE id = ?"_s, {art}).isNull());
    QVERIFY(loaded.item(u"pinnedHeader"_s)->isVisible());

    // The icon picker, from the same menu.
    loaded.click(u"collection-"_s + food, Qt::RightButton);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"collectionMenuIcon"_s)));
    loaded.click(u"collectionMenuIcon"_s);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"icon-fork.knife"_s)));
    loaded.screenshot(u"main-window-icon-picker.png"_s);
    loaded.click(u"icon-fork.knife"_s);
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"icon-fork.knife"_s)));
    QCOMPARE(loaded.world.scalar(u"SELECT icon FROM collection WHERE id = ?"_s, {food}).toString(), u"fork.knife"_s);

    // The sort menu: by name puts Art before Recipes either way; reversed turns the top level round.
    loaded.click(u"sortCollectionsButton"_s);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"sort-reversed"_s)));
    loaded.click(u"sort-reversed"_s);
    QVERIFY(loaded.world.settings.collectionSortReversed());
    QTRY_VERIFY(loaded.item(u"collection-"_s + food)->mapToScene({}).y()
        < loaded.item(u"collection-"_s + art)->mapToScene({}).y());
    loaded.screenshot(u"main-window-collections.png"_s);
}

void TestMainWindow::longTreesScrollToWhatIsSelectedOrNamed()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    QStringList ids;
    for (int n = 1; n <= 30; ++n)
        ids.append(loaded.world.addCollection(u"Board %1"_s.arg(n, 2, 10, QChar(u'0'))));
    QQuickItem *sidebar = loaded.item(u"sidebar"_s);
    const auto inView = [&](const QString &name) {
        loaded.settle();
        QQuickItem *row = loaded.item(name);
        const QRectF box = row->mapRectToItem(sidebar, QRectF(0, 0, row->width(), row->height()));
        return box.top() >= 0 && box.bottom() <= sidebar->height();
    };
    QVERIFY(!inView(u"collection-"_s + ids.constLast()));

    // End walks to the last collection, far below: the sidebar follows it.
    sidebar->forceActiveFocus();
    QTest::keyClick(loaded.window, Qt::Key_End);
    QCOMPARE(loaded.world.store.selectionKey(), ids.constLast());
    QTRY_VERIFY(inView(u"collection-"_s + ids.constLast()));
    QTest::keyClick(loaded.window, Qt::Key_Home);
    QTRY_VERIFY(inView(u"sidebar-all"_s));

    // A new collection lands at the end of the tree, and its name field is brought into view.
    loaded.click(u"newCollectionButton"_s);
    const QString fresh = loaded.world.store.renameTargetId();
    QVERIFY(!fresh.isEmpty());
    QTRY_VERIFY(inView(u"collection-"_s + fresh));
    loaded.screenshot(u"main-window-long-tree.png"_s);
}

void TestMainWindow::historyFollowsButtonsKeysAndMouse()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::Store &store = loaded.world.store;
    store.setSelectionKey(u"favourites"_s);
    store.setSelectionKey(u"trash"_s);
    store.setSelectionKey(u"type-image"_s);
    QVERIFY(loaded.item(u"backButton"_s)->isEnabled());
    QVERIFY(!loaded.item(u"forwardButton"_s)->isEnabled());

    kivo::test::clickItem(loaded.window, loaded.item(u"backButton"_s));
    QCOMPARE(store.selectionKey(), u"trash"_s);
    QTest::keyClick(loaded.window, Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(store.selectionKey(), u"favourites"_s);
    QTest::keyClick(loaded.window, Qt::Key_BracketLeft, Qt::ControlModifier);
    QCOMPARE(store.selectionKey(), u"all"_s);
    QVERIFY(!loaded.item(u"backButton"_s)->isEnabled());
    QTest::keyClick(loaded.window, Qt::Key_BracketRight, Qt::ControlModifier);
    QCOMPARE(store.selectionKey(), u"favourites"_s);
    QTest::keyClick(loaded.window, Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(store.selectionKey(), u"trash"_s);
    // The mouse's side buttons, anywhere in the window.
    const QPoint middle(loaded.window->width() / 2, loaded.window->height() / 2);
    QTest::mouseClick(loaded.window, Qt::BackButton, Qt::NoModifier, middle);
    QCOMPARE(store.selectionKey(), u"favourites"_s);
    QTest::mouseClick(loaded.window, Qt::ForwardButton, Qt::NoModifier, middle);
    QCOMPARE(store.selectionKey(), u"trash"_s);
    kivo::test::clickItem(loaded.window, loaded.item(u"forwardButton"_s));
    QCOMPARE(store.selectionKey(), u"type-image"_s);
}

void TestMainWindow::sidebarHidesAndResizes()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    QQuickItem *sidebar = loaded.item(u"sidebar"_s);
    QQuickItem *toolbar = loaded.item(u"toolbar"_s);
    QCOMPARE(sidebar->width(), 228.0);

    // The splitter: drag its grip 80 points right.
    const QPoint grip = LoadedWindow::centreOf(loaded.item(u"sidebarSplitter"_s));
    QTest::mousePress(loaded.window, Qt::LeftButton, Qt::NoModifier, grip);
    for (int step = 1; step <= 8; ++step)
        QTest::mouseMove(loaded.window, grip + QPoint(10 * step, 0));
    QTest::mouseRelease(loaded.window, Qt::LeftButton, Qt::NoModifier, grip + QPoint(80, 0));
    QTRY_COMPARE(sidebar->width(), 308.0);
    QCOMPARE(kivo::AppSettings().sidebarWidth(), 308.0);

    // The stored key (Ctrl+Meta+S by default) and F9 hide and show it; the content takes the room.
    QTest::keyClick(loaded.window, Qt::Key_S, Qt::ControlModifier | Qt::MetaModifier);
    QVERIFY(!loaded.world.settings.sidebarVisible());
    QTRY_VERIFY(toolbar->mapToScene({}).x() < 5);
    QVERIFY(kivo::test::isShown(loaded.item(u"toggleSidebar"_s)));
    loaded.screenshot(u"main-window-sidebar-hidden.png"_s);
    QTest::keyClick(loaded.window, Qt::Key_F9);
    QVERIFY(loaded.world.settings.sidebarVisible());
    QTRY_VERIFY(toolbar->mapToScene({}).x() > 300);
    kivo::test::clickItem(loaded.window, loaded.item(u"hideSidebar"_s));
    QVERIFY(!loaded.world.settings.sidebarVisible());
}

void TestMainWindow::toolbarSearchesAndSwitchesTheView()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::Store &store = loaded.world.store;
    // Ctrl+F puts the keys in the search field; what is typed is the Store's search text.
    QTest::keyClick(loaded.window, Qt::Key_F, Qt::ControlModifier);
    QTRY_VERIFY(loaded.item(u"searchField"_s)->hasActiveFocus());
    kivo::test::typeText(loaded.window, u"harbour"_s);
    QCOMPARE(store.searchText(), u"harbour"_s);
    // A new selection clears it, and the field shows that.
    store.setSelectionKey(u"favourites"_s);
    QCOMPARE(loaded.textOf(u"searchField"_s), QString());

    loaded.click(u"viewMode-list"_s);
    QCOMPARE(store.viewModeName(), u"list"_s);
    loaded.click(u"viewMode-timeline"_s);
    QCOMPARE(store.viewModeName(), u"timeline"_s);
    // A user's choice is kept for the selection.
    QCOMPARE(kivo::UserDefaults().stringValue(u"viewMode.favourites"_s), u"timeline"_s);
    loaded.click(u"viewMode-cards"_s);
    QCOMPARE(store.viewModeName(), u"cards"_s);
}

void TestMainWindow::searchFieldFindsByWordsAndColours()
{
    LoadedWindow loaded;
    kivo::Store &store = loaded.world.store;
    const QString boat = loaded.world.addItem(u"image"_s, 100, [](kivo::LibraryItem &item) {
        item.title = u"Harbour boat"_s;
        item.colors = uR"(["#1E3CC8"])"_s;
    });
    const QString door = loaded.world.addItem(u"image"_s, 200, [](kivo::LibraryItem &item) {
        item.title = u"Door"_s;
        item.colors = uR"(["#C81E1E"])"_s;
    });
    store.reloadAll();
    kivo::SearchService search(store);
    QVERIFY(loaded.open());
    QTRY_COMPARE(store.items().size(), 2);
    QTest::keyClick(loaded.window, Qt::Key_F, Qt::ControlModifier);
    QTRY_VERIFY(loaded.item(u"searchField"_s)->hasActiveFocus());
    kivo::test::typeText(loaded.window, u"harb"_s);
    QTRY_COMPARE(kivo::test::idsOf(store.items()), QStringList{boat});
    // A colour word finds the picture by its palette.
    QTest::keyClick(loaded.window, Qt::Key_A, Qt::ControlModifier);
    kivo::test::typeText(loaded.window, u"red"_s);
    QTRY_COMPARE(kivo::test::idsOf(store.items()), QStringList{door});
    QTest::keyClick(loaded.window, Qt::Key_Escape);
    QTRY_COMPARE(store.items().size(), 2);
}

void TestMainWindow::readingIndicatorShowsWhatIsLeft()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    QQuickItem *indicator = loaded.item(u"enrichmentIndicator"_s);
    QVERIFY(indicator);
    QVERIFY(!indicator->isVisible());
    loaded.reading.setPendingCount(12);
    // A moment passes before it shows, so one quick item never flashes it.
    QTest::qWait(500);
    QVERIFY(!indicator->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(indicator->isVisible(), 3000);
    QCOMPARE(loaded.textOf(u"enrichmentText"_s), u"Reading 12 items"_s);
    loaded.reading.setPendingCount(1);
    QCOMPARE(loaded.textOf(u"enrichmentText"_s), u"Reading 1 item"_s);
    // Reading hundreds of items a second redraws the text a few times a second, not hundreds.
    QSignalSpy changes(&loaded.reading, &kivo::EnrichmentProgress::pendingCountChanged);
    for (int left = 400; left >= 2; --left)
        loaded.reading.setPendingCount(left);
    QTRY_COMPARE(loaded.textOf(u"enrichmentText"_s), u"Reading 2 items"_s);
    QCOMPARE(changes.size(), 1);
    loaded.reading.setPendingCount(0);
    QTRY_VERIFY_WITH_TIMEOUT(!indicator->isVisible(), 3000);
}

void TestMainWindow::toastsShowTheirButtonAndLeave()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::Store &store = loaded.world.store;
    loaded.item(u"toastArea"_s)->setProperty("timeout", 2000);
    QQuickItem *toast = loaded.item(u"toast"_s);
    QVERIFY(!kivo::test::isShown(toast));

    const QString art = loaded.world.addCollection(u"Art"_s);
    store.deleteCollections({art});
    QTRY_VERIFY(kivo::test::isShown(toast));
    QCOMPARE(loaded.textOf(u"toastText"_s), u"Collection Deleted"_s);
    QVERIFY(kivo::test::isShown(loaded.item(u"toastAction"_s)));
    QCOMPARE(loaded.textOf(u"toastActionText"_s), u"Undo"_s);
    // The toast sits at the bottom centre of the content.
    const QPointF centre = toast->mapToScene(QPointF(toast->width() / 2, toast->height()));
    QQuickItem *content = loaded.item(u"viewArea"_s);
    QVERIFY(qAbs(centre.x() - content->mapToScene(QPointF(content->width() / 2, 0)).x()) < 2);
    QVERIFY(centre.y() > loaded.window->height() - 60);
    loaded.screenshot(u"main-window-toast.png"_s);

    // Ctrl+Z presses its button while it shows.
    QTest::keyClick(loaded.window, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(loaded.world.scalar(u"SELECT deletedAt FROM collection WHERE id = ?"_s, {art}).isNull());
    QTRY_VERIFY(!kivo::test::isShown(toast));

    // A toast without a button leaves by itself, and the Store forgets it.
    loaded.item(u"toastArea"_s)->setProperty("timeout", 400);
    store.showToast(u"Copied"_s);
    QTRY_VERIFY(kivo::test::isShown(toast));
    QVERIFY(!loaded.item(u"toastAction"_s)->isVisible());
    QTRY_VERIFY(store.toast().isEmpty());
    QTRY_VERIFY(!kivo::test::isShown(toast));
}

void TestMainWindow::detailsPanelEditsTheItem()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::Store &store = loaded.world.store;
    const QString id = loaded.world.addItem(u"link"_s, 1718000000, [](kivo::LibraryItem &item) {
        item.title = u"Harbour"_s;
        item.sourceURL = u"https://www.example.com/harbour"_s;
    });
    const QString art = loaded.world.addCollection(u"Art"_s);
    store.fileItem(id, art);
    QQuickItem *panel = loaded.item(u"detailsPanel"_s);
    QVERIFY(!panel->isVisible());

    // Ctrl+I opens it on the focused item.
    store.selectItem(id);
    QTest::keyClick(loaded.window, Qt::Key_I, Qt::ControlModifier);
    QCOMPARE(store.detailsItemId(), id);
    QTRY_COMPARE(panel->mapToScene(QPointF(panel->width(), 0)).x(), qreal(loaded.window->width()));
    QCOMPARE(loaded.textOf(u"detailsTitle"_s), u"Harbour"_s);
    QCOMPARE(loaded.textOf(u"info-Source"_s), u"example.com/harbour"_s);
    QVERIFY(kivo::test::isShown(loaded.item(u"membership-"_s + art)));

    // The title is saved when the field is left with Return.
    kivo::test::clickItem(loaded.window, loaded.item(u"detailsTitle"_s));
    QTest::keyClick(loaded.window, Qt::Key_A, Qt::ControlModifier);
    kivo::test::typeText(loaded.window, u"Harbour at dusk"_s);
    QTest::keyClick(loaded.window, Qt::Key_Return);
    QCOMPARE(loaded.world.scalar(u"SELECT title FROM item WHERE id = ?"_s, {id}).toString(), u"Harbour at dusk"_s);

    // The note, when the field loses the focus.
    kivo::test::clickItem(loaded.window, loaded.item(u"detailsNote"_s));
    kivo::test::typeText(loaded.window, u"From the pier"_s);
    QVERIFY(loaded.world.scalar(u"SELECT note FROM item WHERE id = ?"_s, {id}).isNull());
    kivo::test::clickItem(loaded.window, loaded.item(u"detailsTagField"_s));
    QCOMPARE(loaded.world.scalar(u"SELECT note FROM item WHERE id = ?"_s, {id}).toString(), u"From the pier"_s);

    // A tag typed with capitals and blanks is stored in its normal form and shows as a chip.
    kivo::test::typeText(loaded.window, u" Golden Hour "_s);
    QTest::keyClick(loaded.window, Qt::Key_Return);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"tag-golden hour"_s)));
    QCOMPARE(
        loaded.world.scalar(u"SELECT t.name FROM itemTag it JOIN tag t ON t.id = it.tagId WHERE it.itemId = ?"_s, {id})
            .toString(),
        u"golden hour"_s);
    loaded.screenshot(u"main-window-details.png"_s);
    kivo::test::clickItem(loaded.window, findItem(loaded.item(u"tag-golden hour"_s), u"removeTag"_s));
    QTRY_VERIFY(!loaded.item(u"tag-golden hour"_s));
    QCOMPARE(loaded.world.scalar(u"SELECT COUNT(*) FROM itemTag WHERE itemId = ?"_s, {id}).toInt(), 0);

    // A folded section stays folded in the settings.
    kivo::test::clickItem(loaded.window, findItem(loaded.item(u"detailsSection-info"_s), u"sectionHeading"_s));
    QCOMPARE(loaded.world.settings.collapsedInfoSections(), QStringList{u"info"_s});
    QVERIFY(!loaded.item(u"info-Source"_s)->isVisible());

    kivo::test::clickItem(loaded.window, loaded.item(u"closeDetails"_s));
    QVERIFY(store.detailsItemId().isEmpty());
}

void TestMainWindow::itemMenuRunsTheActions()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open());
    kivo::Store &store = loaded.world.store;
    const QString id = loaded.world.addItem(u"image"_s, 100);
    const QString art = loaded.world.addCollection(u"Art"_s);
    store.reloadAll();

    // A right-click on the card opens its menu, and opens nothing else.
    auto *cards = loaded.window->findChild<kivo::MasonryView *>();
    QVERIFY(cards);
    QTRY_VERIFY(cards->cardFor(id));
    kivo::test::clickItem(loaded.window, cards->cardFor(id), Qt::RightButton);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"itemAction-favourite"_s)));
    QVERIFY(loaded.window->findChild<kivo::GridController *>()->previewItemId().isEmpty());
    QCOMPARE(loaded.textOf(u"itemAction-favourite"_s), u"Add to Favourites"_s);
    QCOMPARE(loaded.item(u"itemAction-copyPaths"_s)->property("shortcutText").toString(), u"Ctrl+Alt+C"_s);
    loaded.screenshot(u"main-window-item-menu.png"_s);
    kivo::test::clickItem(loaded.window, loaded.item(u"itemAction-favourite"_s));
    QCOMPARE(loaded.world.scalar(u"SELECT favourite FROM item WHERE id = ?"_s, {id}).toInt(), 1);
    QCOMPARE(store.toast(), u"Added to Favourites"_s);
    QTRY_VERIFY(!loaded.window->findChild<QObject *>(u"itemContextMenu"_s)->property("visible").toBool());

    // The Menu key opens the selected item's menu; "Add to Collection" opens the collections and a
    // click files the item.
    store.selectItem(id);
    loaded.item(u"cardGrid"_s)->forceActiveFocus();
    QTest::keyClick(loaded.window, Qt::Key_Menu);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"itemAction-rename"_s)));
    loaded.click(u"itemAction-file"_s);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"fileInto-"_s + art)));
    loaded.click(u"fileInto-"_s + art);
    QCOMPARE(
        loaded.world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {id, art})
            .toInt(),
        1);
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"itemAction-rename"_s)));

    // The keys act on the focused item, once the focus has left the sidebar (whose own keys these
    // are while it has it); Ctrl+D takes it out of the favourites again.
    store.selectItem(id);
    loaded.item(u"viewArea"_s)->forceActiveFocus();
    QTest::keyClick(loaded.window, Qt::Key_D, Qt::ControlModifier);
    QCOMPARE(loaded.world.scalar(u"SELECT favourite FROM item WHERE id = ?"_s, {id}).toInt(), 0);
    // F2 asks for the title and Return saves it.
    QTest::keyClick(loaded.window, Qt::Key_F2);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"promptField"_s)));
    QTest::keyClick(loaded.window, Qt::Key_A, Qt::ControlModifier);
    kivo::test::typeText(loaded.window, u"Sea"_s);
    QTest::keyClick(loaded.window, Qt::Key_Return);
    QCOMPARE(loaded.world.scalar(u"SELECT title FROM item WHERE id = ?"_s, {id}).toString(), u"Sea"_s);

    // In the list, a right-click on the row opens the same menu.
    loaded.click(u"viewMode-list"_s);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"rowTitle"_s)));
    kivo::test::clickItem(loaded.window, loaded.item(u"rowTitle"_s), Qt::RightButton);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"itemAction-rename"_s)));
    QTest::keyClick(loaded.window, Qt::Key_Escape);
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"itemAction-rename"_s)));
}

void TestMainWindow::appearanceSwitchesTheTheme()
{
    LoadedWindow loaded;
    QVERIFY(loaded.open(u"light"_s));
    const QString art = loaded.world.addCollection(u"Art"_s);
    loaded.world.addCollection(u"Posters"_s, art);
    loaded.world.addCollection(u"Travel"_s);
    QQuickItem *title = loaded.item(u"emptyTitle"_s);
    const QColor lightWindow = loaded.window->color();
    QVERIFY2(lightWindow.lightnessF() > 0.85, qPrintable(lightWindow.name()));
    QVERIFY(lightWindow.lightnessF() - title->property("color").value<QColor>().lightnessF() > 0.6);
    loaded.screenshot(u"main-window-light.png"_s);

    loaded.appearance.setAppearance(u"dark"_s);
    QTRY_VERIFY(loaded.window->color().lightnessF() < 0.15);
    QVERIFY(title->property("color").value<QColor>().lightnessF() - loaded.window->color().lightnessF() > 0.6);
    loaded.screenshot(u"main-window-dark.png"_s);
}

void TestMainWindow::setupErrorIsShown()
{
    // A library inside a plain file can be neither made nor opened.
    kivo::test::Sandbox sandbox;
    kivo::test::writeFile(sandbox.path() + u"/blocker"_s, "not a folder");
    sandbox.setLibraryRoot(sandbox.path() + u"/blocker/Kivo Library"_s);
    kivo::AppSettings settings;
    kivo::Store store(&settings);
    store.initialise();
    kivo::AppearanceController appearance;
    kivo::QmlServices::publishAppearance(&appearance);
    kivo::QmlServices::publishSettings(&settings);
    kivo::QmlServices::publishStore(&store);
    kivo::LibraryImporter importer(&store, &settings);
    kivo::ImportController imports(&importer);
    kivo::QmlServices::publishImporter(&imports);
    QQmlApplicationEngine engine;
    kivo::QmlServices::prepareEngine(engine);
    engine.load(QUrl(u"qrc:/Kivo/window/Main.qml"_s));
    QVERIFY(!engine.rootObjects().isEmpty());
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QVERIFY(store.setupError().startsWith(u"Could not open the library: "_s));
    QVERIFY(kivo::test::isShown(findItem(window->contentItem(), u"setupError"_s)));
    QVERIFY(findItem(window->contentItem(), u"setupErrorText"_s)
                ->property("text")
                .toString()
                .startsWith(u"Could not open the library: "_s));
    QVERIFY(!findItem(window->contentItem(), u"emptyLibrary"_s)->isVisible());
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
