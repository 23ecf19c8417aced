// The grid's controller over a real Store on a real library, without any view: the rows it
// presents, arrow keys in each view mode, the click order, the grid's keys, what a drag carries,
// where drops go and what an empty selection says.

#include "core/librarylocation.h"
#include "core/sidebarselection.h"
#include "surfaces/grid/gridcontroller.h"
#include "tests/core/storeworld.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;
using kivo::test::StoreWorld;

namespace {

/** Takes the addresses the desktop would open, so no browser starts. */
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

/** A world whose All list is A..F, newest first, shaped for two columns 100 wide and 10 apart:
 *  column 0: A (0..100), C (110..160), D (170..270), F (280..380); column 1: B (0..200), E (210..310). */
struct GridWorld {
    StoreWorld world;
    GridController controller;
    QStringList ids;

    GridWorld()
    {
        world.settings.setGridColumns(2);
        world.settings.setGridSpacing(10);
        const QList<QSizeF> shapes{{100, 100}, {100, 200}, {100, 50}, {100, 100}, {100, 100}, {100, 100}};
        world.seed([&](test::Seed &seed) {
            for (int i = 0; i < shapes.size(); ++i) {
                ids.append(seed.item(u"image"_s, 1000.0 - i, [&](LibraryItem &item) {
                    item.title = QString(QChar(u'A' + i));
                    item.width = shapes[i].width();
                    item.height = shapes[i].height();
                    item.filePath = u"2024-01/"_s + item.title.value() + u".jpg"_s;
                }));
            }
        });
        world.store.reloadAll();
        controller.setSettings(&world.settings);
        controller.setStore(&world.store);
        controller.setGridNavWidth(246);
    }

    [[nodiscard]] QString id(QChar letter) const { return ids.at(letter.unicode() - u'A'); }
};

} // namespace

class TestGridController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void rowsFollowTheStoreAndTheRail();
    void arrowsInEachViewMode_data();
    void arrowsInEachViewMode();
    void clicksInTheirOrder();
    void gridKeys();
    void dragCarriesFilesLinksAndKivosWords();
    void dropsGoToTheSelectionsCollection();
    void emptySelectionsSayWhy_data();
    void emptySelectionsSayWhy();

private:
    UrlCatcher m_urls;
};

void TestGridController::initTestCase()
{
    QDesktopServices::setUrlHandler(u"https"_s, &m_urls, "open");
}

void TestGridController::rowsFollowTheStoreAndTheRail()
{
    GridWorld grid;
    QCOMPARE(grid.controller.rows()->count(), 6);
    QCOMPARE(grid.controller.rows()->idAt(0), grid.id(u'A'));
    QVERIFY(!grid.controller.railShown());

    // A board of two pictures and two links splits: the links go to the rail, in order.
    const QString board = grid.world.addCollection(u"Mood"_s);
    const QString linkOne
        = grid.world.addItem(u"link"_s, 2000, [](LibraryItem &item) { item.sourceURL = u"https://a.example/"_s; });
    const QString linkTwo
        = grid.world.addItem(u"link"_s, 1999, [](LibraryItem &item) { item.sourceURL = u"https://b.example/"_s; });
    for (const QString &id : {grid.id(u'A'), grid.id(u'B'), linkOne, linkTwo})
        grid.world.addMembership(id, board, 10);
    QSignalSpy railShown(&grid.controller, &GridController::railShownChanged);
    grid.world.store.setSelectionKey(board);
    QCOMPARE(grid.world.store.viewMode(), ViewMode::cards);
    QVERIFY(grid.controller.railShown());
    QCOMPARE(railShown.count(), 1);
    QCOMPARE(grid.controller.railRows()->count(), 2);
    QCOMPARE(grid.controller.rows()->count(), 2);
    // With a rail, arrows still walk only the grid's rows.
    grid.controller.moveGridFocus(1, 0);
    grid.controller.moveGridFocus(1, 0);
    QVERIFY(grid.controller.rows()->indexOf(grid.world.store.selectedItemId()) >= 0);
    // Turned off for this board, the links come back into the grid in list order.
    grid.world.store.setRailSplitOverride(board, false);
    QVERIFY(!grid.controller.railShown());
    QCOMPARE(grid.controller.rows()->count(), 4);
}

void TestGridController::arrowsInEachViewMode_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("visited");
    // Keys: l r u d. Visited: the focused item after each key.
    QTest::newRow("cards across unequal columns") << u"cards"_s << u"rrdluddd"_s << u"ABEDCDFF"_s;
    // With nothing focused the step starts from the first row.
    QTest::newRow("list steps linearly, left and right too") << u"list"_s << u"rrrlduu"_s << u"BCDCDCB"_s;
    QTest::newRow("timeline ignores arrows") << u"timeline"_s << u"rd"_s << u"--"_s;
}

void TestGridController::arrowsInEachViewMode()
{
    QFETCH(QString, mode);
    QFETCH(QString, keys);
    QFETCH(QString, visited);
    GridWorld grid;
    grid.world.store.setViewModeName(mode);
    QSignalSpy reveals(&grid.controller, &GridController::scrollToItem);
    for (int i = 0; i < keys.size(); ++i) {
        const QChar key = keys.at(i);
        grid.controller.moveGridFocus(key == u'l' ? -1 : key == u'r' ? 1 : 0, key == u'u' ? -1 : key == u'd' ? 1 : 0);
        const QString expected = visited.at(i) == u'-' ? QString() : grid.id(visited.at(i));
        QCOMPARE(grid.world.store.selectedItemId(), expected);
        // The ring follows the focus while the keyboard leads.
        QVERIFY(grid.controller.keyboardFocusActive());
        QCOMPARE(grid.controller.ringId(), expected);
    }
    // Without a card view nothing counts as on screen, so every move asked for a scroll.
    QTRY_VERIFY(reveals.count() > 0 || mode == u"timeline");
}

void TestGridController::clicksInTheirOrder()
{
    GridWorld grid;
    Store &store = grid.world.store;
    const auto openCount = [&](const QString &id) {
        return grid.world.scalar(u"SELECT openCount FROM item WHERE id = ?"_s, {id}).toInt();
    };

    // A plain click opens the preview and counts the opening; the second click of a double click does nothing.
    grid.controller.moveGridFocus(1, 0);
    grid.controller.clickItem(grid.id(u'C'), 1, Qt::NoModifier);
    QVERIFY(!grid.controller.keyboardFocusActive());
    QCOMPARE(grid.controller.ringId(), QString());
    QCOMPARE(grid.controller.previewItemId(), grid.id(u'C'));
    QCOMPARE(store.selectedItemId(), grid.id(u'C'));
    QCOMPARE(openCount(grid.id(u'C')), 1);
    grid.controller.clickItem(grid.id(u'C'), 2, Qt::NoModifier);
    QCOMPARE(openCount(grid.id(u'C')), 1);
    grid.controller.closePreview();

    // Alt shows the details; with them open a plain click makes them follow instead of opening.
    grid.controller.clickItem(grid.id(u'B'), 1, Qt::AltModifier);
    QCOMPARE(store.detailsItemId(), grid.id(u'B'));
    grid.controller.clickItem(grid.id(u'D'), 1, Qt::NoModifier);
    QCOMPARE(store.detailsItemId(), grid.id(u'D'));
    QCOMPARE(store.selectedItemId(), grid.id(u'D'));
    QCOMPARE(grid.controller.previewItemId(), QString());

    // Control starts a selection; with two or more selected the details close.
    grid.controller.clickItem(grid.id(u'A'), 1, Qt::ControlModifier);
    QCOMPARE(store.detailsItemId(), grid.id(u'D'));
    grid.controller.clickItem(grid.id(u'E'), 1, Qt::ControlModifier);
    QCOMPARE(store.selectedItemIds().size(), 2);
    QCOMPARE(store.detailsItemId(), QString());
    QCOMPARE(store.selectionAnchorId(), grid.id(u'E'));

    // A link opens its address and no preview.
    const QString link = grid.world.addItem(
        u"link"_s, 5000, [](LibraryItem &item) { item.sourceURL = u"https://example.org/page"_s; });
    store.reloadAll();
    store.clearSelection();
    m_urls.opened.clear();
    grid.controller.clickItem(link, 1, Qt::NoModifier);
    QCOMPARE(m_urls.opened, QList<QUrl>{QUrl(u"https://example.org/page"_s)});
    QCOMPARE(grid.controller.previewItemId(), QString());
}

void TestGridController::gridKeys()
{
    GridWorld grid;
    Store &store = grid.world.store;
    const auto press = [&](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        return grid.controller.handleKey(key, int(modifiers));
    };

    // Columns step within 1..10 and are saved for the view at once.
    grid.world.settings.setGridColumns(1);
    QVERIFY(press(Qt::Key_Equal, Qt::ControlModifier));
    QCOMPARE(grid.world.settings.gridColumns(), 1.0);
    QVERIFY(press(Qt::Key_Minus, Qt::ControlModifier));
    QCOMPARE(grid.world.settings.gridColumns(), 2.0);
    grid.world.settings.setGridColumns(10);
    QVERIFY(press(Qt::Key_Minus, Qt::ControlModifier));
    QCOMPARE(grid.world.settings.gridColumns(), 10.0);
    grid.world.settings.setGridColumns(2);

    // Delete on one item needs a prior arrow; a click never arms it.
    grid.controller.clickItem(grid.id(u'B'), 1, Qt::NoModifier);
    grid.controller.closePreview();
    QVERIFY(!press(Qt::Key_Delete));
    QCOMPARE(store.trashCount(), 0);
    QVERIFY(press(Qt::Key_Right));
    QVERIFY(press(Qt::Key_Delete));
    QCOMPARE(store.trashCount(), 1);

    // Delete with a multi-selection trashes it all; Escape clears a selection first.
    grid.controller.clickItem(grid.id(u'C'), 1, Qt::ControlModifier);
    grid.controller.clickItem(grid.id(u'D'), 1, Qt::ControlModifier);
    QVERIFY(press(Qt::Key_Escape));
    QVERIFY(store.selectedItemIds().isEmpty());
    QVERIFY(!press(Qt::Key_Escape));
    grid.controller.clickItem(grid.id(u'C'), 1, Qt::ControlModifier);
    grid.controller.clickItem(grid.id(u'D'), 1, Qt::ControlModifier);
    QVERIFY(press(Qt::Key_Backspace));
    QCOMPARE(store.trashCount(), 3);

    // Space previews the selected item, else the first; Escape closes the preview before anything else.
    store.selectItem({});
    QVERIFY(press(Qt::Key_Space));
    QCOMPARE(grid.controller.previewItemId(), grid.id(u'A'));
    QVERIFY(press(Qt::Key_Right));
    QCOMPARE(grid.controller.previewItemId(), grid.id(u'E'));
    QVERIFY(press(Qt::Key_Escape));
    QCOMPARE(grid.controller.previewItemId(), QString());

    // Control-Return opens the source, or says there is none.
    QVERIFY(press(Qt::Key_Return, Qt::ControlModifier));
    QCOMPARE(store.toast(), u"No Source for This One"_s);
    // Return opens the selected item.
    QVERIFY(press(Qt::Key_Return));
    QCOMPARE(grid.controller.previewItemId(), store.selectedItemId());
}

void TestGridController::dragCarriesFilesLinksAndKivosWords()
{
    GridWorld grid;
    const QString link = grid.world.addItem(
        u"link"_s, 5000, [](LibraryItem &item) { item.sourceURL = u"https://example.org/page?q=1"_s; });
    grid.world.store.reloadAll();

    const QVariantMap picture = grid.controller.dragMimeData(grid.id(u'C'));
    QCOMPARE(picture.value(u"text/plain"_s).toString(), u"KIVO-ITEM "_s + grid.id(u'C'));
    QCOMPARE(QUrl(picture.value(u"text/uri-list"_s).toString().trimmed()).toLocalFile(),
        LibraryLocation::resolve(u"2024-01/C.jpg"_s));
    const QVariantMap address = grid.controller.dragMimeData(link);
    QCOMPARE(address.value(u"text/uri-list"_s).toString(), u"https://example.org/page?q=1\r\n"_s);
    QCOMPARE(address.value(u"text/plain"_s).toString(), u"KIVO-ITEM "_s + link);

    // A dragged card inside a selection of two or more carries the whole selection, in list order.
    grid.controller.clickItem(grid.id(u'E'), 1, Qt::ControlModifier);
    grid.controller.clickItem(grid.id(u'B'), 1, Qt::ControlModifier);
    const QVariantMap many = grid.controller.dragMimeData(grid.id(u'E'));
    QCOMPARE(many.value(u"text/plain"_s).toString(), u"KIVO-ITEMS %1,%2"_s.arg(grid.id(u'B'), grid.id(u'E')));
    QCOMPARE(many.value(u"text/uri-list"_s).toString().count(u"\r\n"_s), 2);
    // A card outside the selection is dragged alone.
    QCOMPARE(
        grid.controller.dragMimeData(grid.id(u'A')).value(u"text/plain"_s).toString(), u"KIVO-ITEM "_s + grid.id(u'A'));
}

void TestGridController::dropsGoToTheSelectionsCollection()
{
    GridWorld grid;
    QList<std::optional<QString>> destinations;
    QStringList texts;
    grid.controller.setImportHook(
        [&](const QList<QUrl> &, const QString &text, const std::optional<QString> &collection) {
            destinations.append(collection);
            texts.append(text);
        });
    QVERIFY(!grid.controller.drop({}, u"KIVO-ITEM "_s + grid.id(u'A')));
    QVERIFY(!grid.controller.drop({}, u"KIVO-ITEMS a,b"_s));
    QVERIFY(!grid.controller.drop({}, u"KIVO-COLLECTION x"_s));
    QVERIFY(!grid.controller.drop({}, u"  "_s));
    QVERIFY(destinations.isEmpty());

    QVERIFY(grid.controller.drop({QUrl(u"https://example.org"_s)}, {}));
    const QString board = grid.world.addCollection(u"Board"_s);
    grid.world.store.setSelectionKey(board);
    QVERIFY(grid.controller.drop({}, u"a note"_s));
    grid.world.store.setSelectionKey(u"inbox"_s);
    QGuiApplication::clipboard()->setText(u"pasted words"_s);
    QVERIFY(grid.controller.handleKey(Qt::Key_V, Qt::ControlModifier));
    QCOMPARE(destinations, (QList<std::optional<QString>>{std::nullopt, board, grid.world.store.inboxId()}));
    QCOMPARE(texts.last(), u"pasted words"_s);
}

void TestGridController::emptySelectionsSayWhy_data()
{
    QTest::addColumn<bool>("withItems");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QString>("title");
    QTest::newRow("an empty library") << false << u"all"_s << u"Drag anything here"_s;
    QTest::newRow("empty trash") << true << u"trash"_s << u"Trash Is Empty"_s;
    QTest::newRow("no favourites") << true << u"favourites"_s << u"No Favourites Yet"_s;
    QTest::newRow("no videos") << true << u"type-videos"_s << u"No Videos Yet"_s;
    QTest::newRow("a full list says nothing") << true << u"all"_s << QString();
}

void TestGridController::emptySelectionsSayWhy()
{
    QFETCH(bool, withItems);
    QFETCH(QString, selection);
    QFETCH(QString, title);
    StoreWorld world;
    if (withItems)
        world.addItem(u"image"_s, 100);
    world.store.reloadAll();
    GridController controller;
    controller.setStore(&world.store);
    world.store.setSelectionKey(selection);
    QCOMPARE(controller.emptyTitle(), title);
    QCOMPARE(controller.isEmpty(), !title.isEmpty());
    if (selection == u"all" && !withItems)
        QCOMPARE(controller.emptyMessage(), u"Images, links, videos and notes all land in your library."_s);
}

QTEST_MAIN(TestGridController)
#include "tst_gridcontroller.moc"
