// The main window on a library of real pictures, under a real X server (Xvfb): arrow keys move the
// focus ring across columns of unequal height, shift and control clicks make ranges, a card
// dragged out carries Kivo's words and its file, drops of Kivo's own cards are refused, both
// appearances are photographed, and a 100,000-item library is scrolled with its frames timed.

#include "core/appsettings.h"
#include "core/database.h"
#include "core/librarylocation.h"
#include "core/media/thumbnailservice.h"
#include "core/records.h"
#include "core/store.h"
#include "ingest/import/libraryimporter.h"
#include "surfaces/enrichment/enrichmentprogress.h"
#include "surfaces/grid/gridcontroller.h"
#include "surfaces/grid/masonryview.h"
#include "surfaces/import/importcontroller.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "surfaces/thumbnails/thumbnailprovider.h"
#include "tests/surfaces/quickhelpers.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QPainter>
#include <QPainterPath>
#include <QProcess>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using kivo::test::findItem;

namespace {

QString screenshotPath(const QString &name)
{
    QDir().mkpath(QStringLiteral(KIVO_SCREENSHOT_DIR));
    return QStringLiteral(KIVO_SCREENSHOT_DIR) + u'/' + name;
}

/** A picture that looks like one: a sky-to-ground gradient, a sun, hills, in a colour family. */
QImage paintPicture(const QSize &size, int seed)
{
    QRandomGenerator random(quint32(seed) * 7919u + 17u);
    const int hue = random.bounded(360);
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor::fromHsv(hue, 90 + random.bounded(80), 250));
    sky.setColorAt(1, QColor::fromHsv((hue + 40) % 360, 160, 170));
    painter.fillRect(image.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromHsv((hue + 180) % 360, 120, 255, 220));
    const int sun = std::min(size.width(), size.height()) / 4;
    painter.drawEllipse(QPoint(random.bounded(size.width()), size.height() / 3), sun, sun);
    for (int hill = 0; hill < 3; ++hill) {
        painter.setBrush(QColor::fromHsv((hue + 90 + hill * 25) % 360, 140, 90 + hill * 40));
        const int top = size.height() * (55 + hill * 12) / 100;
        QPainterPath path;
        path.moveTo(0, size.height());
        path.lineTo(0, top);
        path.cubicTo(size.width() * 0.3, top - size.height() * 0.2, size.width() * 0.6, top + size.height() * 0.15,
            size.width(), top - random.bounded(size.height() / 6));
        path.lineTo(size.width(), size.height());
        painter.drawPath(path);
    }
    return image;
}

/** What a test library holds: its rows in list order (newest first). */
struct TestLibrary {
    QList<kivo::LibraryItem> items;

    [[nodiscard]] QString id(int row) const { return items.at(row).id; }
};

kivo::LibraryItem pictureItem(const QSize &size, int seed, double addedAt, const QString &title)
{
    kivo::LibraryItem item;
    item.id = kivo::newIdentifier();
    item.kind = u"image"_s;
    item.title = title;
    item.width = size.width();
    item.height = size.height();
    item.createdAt = item.addedAt = item.modifiedAt = addedAt;
    const auto location = kivo::LibraryLocation::newFileLocation(item.id, title, u"jpg"_s, addedAt);
    const QImage picture = paintPicture(size, seed);
    picture.save(location.absolutePath, "JPG", 88);
    item.filePath = location.relativePath;
    item.fileSize = QFileInfo(location.absolutePath).size();
    const QColor main = picture.pixelColor(picture.width() / 2, picture.height() / 5);
    const QColor ground = picture.pixelColor(picture.width() / 2, picture.height() - 2);
    item.colors = u"[\"%1\",\"%2\"]"_s.arg(main.name(), ground.name());
    return item;
}

/** The main window on its own library, with the thumbnail provider the application installs. */
struct GridWindow {
    kivo::test::Sandbox sandbox;
    kivo::AppSettings settings;
    kivo::AppearanceController appearance;
    std::unique_ptr<kivo::Store> store;
    std::unique_ptr<kivo::LibraryImporter> importer;
    std::unique_ptr<kivo::ImportController> imports;
    kivo::EnrichmentProgress reading;
    std::shared_ptr<kivo::ThumbnailService> thumbnails = std::make_shared<kivo::ThumbnailService>();
    std::unique_ptr<QQmlApplicationEngine> engine;
    QQuickWindow *window = nullptr;
    kivo::GridController *controller = nullptr;
    kivo::MasonryView *masonry = nullptr;

    void prepareLibrary() { kivo::LibraryLocation::ensureLibrary(); }

    void open(const QString &appearanceSetting = u"light"_s, QSize size = {1280, 860})
    {
        appearance.setAppearance(appearanceSetting);
        kivo::QmlServices::publishAppearance(&appearance);
        kivo::QmlServices::publishSettings(&settings);
        store = std::make_unique<kivo::Store>(&settings);
        store->initialise();
        kivo::QmlServices::publishStore(store.get());
        importer = std::make_unique<kivo::LibraryImporter>(store.get(), &settings);
        imports = std::make_unique<kivo::ImportController>(importer.get());
        kivo::QmlServices::publishImporter(imports.get());
        kivo::QmlServices::publishEnrichmentProgress(&reading);
        engine = std::make_unique<QQmlApplicationEngine>();
        kivo::QmlServices::prepareEngine(*engine);
        engine->addImageProvider(u"thumb"_s,
            new kivo::ThumbnailProvider(thumbnails, kivo::ThumbnailProvider::databaseResolver(store->dbQueue())));
        engine->load(QUrl(u"qrc:/Kivo/window/Main.qml"_s));
        QVERIFY(!engine->rootObjects().isEmpty());
        window = qobject_cast<QQuickWindow *>(engine->rootObjects().constFirst());
        QVERIFY(window);
        window->setPosition(0, 0);
        window->resize(size);
        window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTRY_VERIFY(store->didInitialLoad());
        controller = window->findChild<kivo::GridController *>(u"gridController"_s);
        masonry = window->findChild<kivo::MasonryView *>(u"masonry"_s);
        QVERIFY(controller && masonry);
    }

    void insert(const QList<kivo::LibraryItem> &items)
    {
        store->dbQueue()->write([&](kivo::Database &db) {
            for (const auto &item : items)
                db.insert(item);
        });
        store->reloadAll();
        QTRY_COMPARE(controller->rows()->count(), int(store->allRows().size()));
    }

    [[nodiscard]] QQuickItem *item(const QString &name) const { return findItem(window->contentItem(), name); }

    /** The middle of an item's card in window coordinates, scrolling it into view first. */
    QPoint cardCentre(const QString &itemId)
    {
        QQuickItem *card = masonry->cardFor(itemId);
        if (!card || !masonry->isCardVisible(itemId)) {
            QMetaObject::invokeMethod(controller, [&] { controller->setRevealItemId(itemId); });
            QTest::qWait(50);
        }
        [&] { QTRY_VERIFY(masonry->isCardVisible(itemId) && masonry->cardFor(itemId)); }();
        card = masonry->cardFor(itemId);
        QQuickItem *frame = findItem(card, u"cardFrame"_s);
        return frame->mapToScene(QPointF(frame->width() / 2, frame->height() / 2)).toPoint();
    }

    [[nodiscard]] QString ringHolder() const
    {
        QString holder;
        for (QQuickItem *card : masonry->childItems()) {
            QQuickItem *ring = findItem(card, u"focusRing"_s);
            if (card->isVisible() && ring && ring->isVisible()) {
                if (!holder.isEmpty())
                    return u"<several>"_s;
                holder = card->property("itemId").toString();
            }
        }
        return holder;
    }

    void screenshot(const QString &name)
    {
        // Let the thumbnails arrive and fade in.
        QTest::qWait(600);
        const QImage image = window->grabWindow();
        QVERIFY(!image.isNull());
        QVERIFY(image.save(screenshotPath(name)));
    }
};

/** Runs xdotool with these arguments (the real pointer under Xvfb), in the background. */
void xdotool(const QStringList &script)
{
    QVERIFY(QProcess::startDetached(u"sh"_s, {u"-c"_s, script.join(u" && "_s)}));
}

QString pointerDrag(QPoint from, QPoint to)
{
    QStringList steps{u"xdotool mousemove %1 %2"_s.arg(from.x()).arg(from.y()), u"sleep 0.2"_s,
        u"xdotool mousedown 1"_s, u"sleep 0.2"_s};
    for (int i = 1; i <= 12; ++i) {
        const QPoint at = from + (to - from) * i / 12;
        steps << u"xdotool mousemove %1 %2"_s.arg(at.x()).arg(at.y()) << u"sleep 0.05"_s;
    }
    steps << u"sleep 0.3"_s << u"xdotool mouseup 1"_s;
    return steps.join(u" && "_s);
}

const QByteArray dropWindowQml = R"qml(
import QtQuick
Window {
    id: root
    width: 300
    height: 300
    visible: true
    color: "#dfe7ff"
    property string text
    property var urls: []
    property int drops: 0
    property string carriedText
    DropArea {
        anchors.fill: parent
        onDropped: drop => {
            root.text = drop.text;
            root.urls = drop.urls;
            root.drops += 1;
            drop.acceptProposedAction();
        }
    }
    // Something from another program to drag into Kivo: an address as text.
    Rectangle {
        width: 80
        height: 80
        color: "#8899cc"
        Item {
            id: carried
            Drag.dragType: Drag.Automatic
            Drag.mimeData: ({ "text/plain": root.carriedText })
        }
        MouseArea {
            anchors.fill: parent
            drag.target: carried
            drag.onActiveChanged: if (drag.active) carried.Drag.active = true
        }
    }
}
)qml";

} // namespace

class TestGridWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void arrowKeysCrossUnequalColumns();
    void shiftAndControlClicksMakeRanges();
    void dragOutCarriesKivosWords();
    void screenshotsOfARealLibrary();
    void scrollingAHundredThousandItems();
};

void TestGridWindow::initTestCase()
{
    if (QGuiApplication::platformName() != u"xcb")
        QSKIP("needs a real X server: run under xvfb-run");
    if (QStandardPaths::findExecutable(u"xdotool"_s).isEmpty())
        QFAIL("xdotool is missing: scripts/bootstrap installs it");
}

void TestGridWindow::arrowKeysCrossUnequalColumns()
{
    GridWindow grid;
    grid.settings.setGridColumns(3);
    grid.prepareLibrary();
    // Three columns; with column width w and gap s, worked out by hand:
    //   column 0: A (0 .. 2w)
    //   column 1: B (0 .. w), D (w+s .. 1.5w+s), F (1.5w+2s .. 2.5w+2s)
    //   column 2: C (0 .. w), E (w+s .. 2w+s)
    const double now = kivo::nowSeconds();
    const QList<QSize> shapes{{300, 600}, {400, 400}, {400, 400}, {600, 300}, {400, 400}, {400, 400}};
    TestLibrary library;
    for (int i = 0; i < shapes.size(); ++i)
        library.items.append(pictureItem(shapes[i], i, now - i, QString(QChar(u'A' + i))));
    grid.open();
    grid.insert(library.items);
    const auto id = [&](QChar letter) { return library.id(letter.unicode() - u'A'); };

    QCOMPARE(grid.ringHolder(), QString());
    const QList<std::tuple<Qt::Key, QChar>> presses{
        {Qt::Key_Right, u'A'}, // nothing focused: the first item
        {Qt::Key_Right, u'D'}, // A's middle (w) is nearest D's (1.25w + s), not B's (0.5w)
        {Qt::Key_Right, u'E'}, // D's middle is nearest E's (1.5w + s)
        {Qt::Key_Right, u'E'}, // the last column
        {Qt::Key_Up, u'C'}, {Qt::Key_Up, u'C'}, // top of the column
        {Qt::Key_Left, u'B'}, {Qt::Key_Down, u'D'}, {Qt::Key_Down, u'F'}, {Qt::Key_Down, u'F'}, // foot of the column
        {Qt::Key_Left, u'A'}, {Qt::Key_Left, u'A'}, // column 0
    };
    // The grid has the keyboard once a card was pressed; here it is given it directly.
    grid.item(u"cardGrid"_s)->forceActiveFocus();
    QTRY_VERIFY(grid.item(u"cardGrid"_s)->hasActiveFocus());
    for (const auto &[key, expected] : presses) {
        QTest::keyClick(grid.window, key);
        QCOMPARE(grid.store->selectedItemId(), id(expected));
        QTRY_COMPARE(grid.ringHolder(), id(expected));
        QVERIFY(grid.controller->keyboardFocusActive());
    }
    // A click drops the keyboard focus and the ring with it; only an arrow raises it again.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ControlModifier, grid.cardCentre(id(u'C')));
    QVERIFY(!grid.controller->keyboardFocusActive());
    QTRY_COMPARE(grid.ringHolder(), QString());
    // Delete without a prior arrow does nothing to a single item; control-= and control-minus step columns.
    grid.store->clearSelection();
    QTest::keyClick(grid.window, Qt::Key_Minus, Qt::ControlModifier);
    QCOMPARE(grid.settings.gridColumns(), 4.0);
    QTest::keyClick(grid.window, Qt::Key_Equal, Qt::ControlModifier);
    QTest::keyClick(grid.window, Qt::Key_Equal, Qt::ControlModifier);
    QCOMPARE(grid.settings.gridColumns(), 2.0);
    grid.screenshot(u"grid-keyboard-light.png"_s);
}

void TestGridWindow::shiftAndControlClicksMakeRanges()
{
    GridWindow grid;
    grid.settings.setGridColumns(4);
    grid.prepareLibrary();
    const double now = kivo::nowSeconds();
    TestLibrary library;
    for (int i = 0; i < 8; ++i)
        library.items.append(pictureItem({400 + i * 40, 300 + (i % 3) * 120}, 40 + i, now - i, u"Photo %1"_s.arg(i)));
    grid.open();
    grid.insert(library.items);
    const auto selected = [&] {
        QStringList ids = grid.store->selectedItemIdList();
        std::sort(ids.begin(), ids.end());
        return ids;
    };
    const auto idsOf = [&](std::initializer_list<int> rows) {
        QStringList ids;
        for (const int row : rows)
            ids.append(library.id(row));
        std::sort(ids.begin(), ids.end());
        return ids;
    };

    // A shift click with no anchor and nothing focused: just that item, anchored there.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ShiftModifier, grid.cardCentre(library.id(2)));
    QCOMPARE(selected(), idsOf({2}));
    QCOMPARE(grid.store->selectionAnchorId(), library.id(2));
    // A later shift click ranges from the anchor in list order, whatever the columns.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ShiftModifier, grid.cardCentre(library.id(6)));
    QCOMPARE(selected(), idsOf({2, 3, 4, 5, 6}));
    // Nearer the anchor, the range shrinks; the anchor stays.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ShiftModifier, grid.cardCentre(library.id(3)));
    QCOMPARE(selected(), idsOf({2, 3}));
    QCOMPARE(grid.store->selectionAnchorId(), library.id(2));
    // Control toggles and re-anchors.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ControlModifier, grid.cardCentre(library.id(0)));
    QCOMPARE(selected(), idsOf({0, 2, 3}));
    QCOMPARE(grid.store->selectionAnchorId(), library.id(0));
    // The selection marks show on exactly those cards.
    for (int row = 0; row < library.items.size(); ++row) {
        QQuickItem *ring = findItem(grid.masonry->cardFor(library.id(row)), u"selectionRing"_s);
        QCOMPARE(ring->isVisible(), selected().contains(library.id(row)));
    }
    grid.screenshot(u"grid-selection-light.png"_s);

    // A plain click in a running selection thins it and opens nothing, down to none.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::NoModifier, grid.cardCentre(library.id(2)));
    QCOMPARE(selected(), idsOf({0, 3}));
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::NoModifier, grid.cardCentre(library.id(0)));
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::NoModifier, grid.cardCentre(library.id(3)));
    QCOMPARE(selected(), QStringList());
    QCOMPARE(grid.controller->previewItemId(), QString());
    // Only now does a plain click open.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::NoModifier, grid.cardCentre(library.id(5)));
    QCOMPARE(grid.controller->previewItemId(), library.id(5));
    QTRY_VERIFY(kivo::test::isShown(grid.item(u"itemPreview"_s)));
    grid.screenshot(u"grid-preview-light.png"_s);
    QTest::keyClick(grid.window, Qt::Key_Escape);
    QCOMPARE(grid.controller->previewItemId(), QString());

    // Escape clears a multi-selection.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ControlModifier, grid.cardCentre(library.id(1)));
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ControlModifier, grid.cardCentre(library.id(4)));
    QCOMPARE(selected(), idsOf({1, 4}));
    QTest::keyClick(grid.window, Qt::Key_Escape);
    QCOMPARE(selected(), QStringList());
}

void TestGridWindow::dragOutCarriesKivosWords()
{
    GridWindow grid;
    grid.prepareLibrary();
    const double now = kivo::nowSeconds();
    TestLibrary library;
    for (int i = 0; i < 6; ++i)
        library.items.append(pictureItem({500, 380}, 70 + i, now - i, u"Dragged %1"_s.arg(i)));
    grid.open(u"light"_s, {1000, 760});
    grid.insert(library.items);
    int imports = 0;
    QString importedText;
    grid.controller->setImportHook([&](const QList<QUrl> &, const QString &text, const std::optional<QString> &) {
        ++imports;
        importedText = text;
    });

    // Another program's window beside Kivo's: it takes whatever is dropped on it.
    QQmlComponent component(grid.engine.get());
    component.setData(dropWindowQml, QUrl::fromLocalFile(u"/drop.qml"_s));
    std::unique_ptr<QQuickWindow> target(qobject_cast<QQuickWindow *>(
        component.createWithInitialProperties({{u"carriedText"_s, u"https://example.org/a-page-to-keep"_s}})));
    QVERIFY2(target, qPrintable(component.errorString()));
    target->setPosition(1050, 100);
    QVERIFY(QTest::qWaitForWindowExposed(target.get()));
    const QPoint targetCentre = target->position() + QPoint(150, 150);

    // One card.
    const QPoint from = grid.window->position() + grid.cardCentre(library.id(1));
    xdotool({pointerDrag(from, targetCentre)});
    QTRY_COMPARE_WITH_TIMEOUT(target->property("drops").toInt(), 1, 15000);
    QCOMPARE(target->property("text").toString(), u"KIVO-ITEM "_s + library.id(1));
    const QVariantList urls = target->property("urls").toList();
    QCOMPARE(urls.size(), 1);
    QCOMPARE(urls.first().toUrl().toLocalFile(), kivo::LibraryLocation::resolve(*library.items[1].filePath));

    // Two selected cards, dragged by one of them: both ids, in list order.
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ControlModifier, grid.cardCentre(library.id(4)));
    QTest::mouseClick(grid.window, Qt::LeftButton, Qt::ControlModifier, grid.cardCentre(library.id(0)));
    xdotool({pointerDrag(grid.window->position() + grid.cardCentre(library.id(4)), targetCentre)});
    QTRY_COMPARE_WITH_TIMEOUT(target->property("drops").toInt(), 2, 15000);
    QCOMPARE(target->property("text").toString(), u"KIVO-ITEMS %1,%2"_s.arg(library.id(0), library.id(4)));
    QCOMPARE(target->property("urls").toList().size(), 2);

    // A card dropped back on its own grid is refused: nothing goes to the import.
    grid.store->clearSelection();
    xdotool({pointerDrag(grid.window->position() + grid.cardCentre(library.id(2)),
        grid.window->position() + grid.cardCentre(library.id(5)))});
    QTest::qWait(2500);
    QCOMPARE(imports, 0);
    QCOMPARE(target->property("drops").toInt(), 2);

    // Another program's drop on the grid goes to the import, with no destination in All.
    xdotool(
        {pointerDrag(target->position() + QPoint(40, 40), grid.window->position() + grid.cardCentre(library.id(3)))});
    QTRY_COMPARE_WITH_TIMEOUT(imports, 1, 15000);
    QCOMPARE(importedText, u"https://example.org/a-page-to-keep"_s);
}

void TestGridWindow::screenshotsOfARealLibrary()
{
    GridWindow grid;
    grid.prepareLibrary();
    grid.settings.setGridColumns(5);
    grid.settings.setCardShowTitle(true);
    const double now = kivo::nowSeconds();
    TestLibrary library;
    QRandomGenerator random(5);
    for (int i = 0; i < 36; ++i) {
        const QSize size(400 + random.bounded(800), 300 + random.bounded(900));
        library.items.append(pictureItem(size, 100 + i, now - i * 5400.0, u"Landscape %1"_s.arg(i + 1)));
    }
    kivo::LibraryItem link;
    link.id = kivo::newIdentifier();
    link.kind = u"link"_s;
    link.title = u"How to build a small cabin"_s;
    link.sourceURL = u"https://www.example.org/cabins/small"_s;
    link.createdAt = link.addedAt = link.modifiedAt = now - 3;
    kivo::LibraryItem note;
    note.id = kivo::newIdentifier();
    note.kind = u"text"_s;
    note.title = u"Palette notes"_s;
    note.note = u"Warm greys for the walls, a deep green for the door, brass for the handles."_s;
    note.createdAt = note.addedAt = note.modifiedAt = now - 7;
    library.items << link << note;

    grid.open(u"light"_s, {1400, 900});
    grid.insert(library.items);
    grid.screenshot(u"grid-library-light.png"_s);
    grid.settings.setListShowDate(true);
    grid.settings.setListShowSize(true);
    grid.store->setViewModeName(u"list"_s);
    QTRY_VERIFY(kivo::test::isShown(grid.item(u"rowList"_s)));
    grid.screenshot(u"list-library-light.png"_s);
    grid.store->setViewModeName(u"timeline"_s);
    QTRY_VERIFY(grid.masonry->timeline());
    grid.screenshot(u"timeline-library-light.png"_s);

    grid.appearance.setAppearance(u"dark"_s);
    grid.store->setViewModeName(u"cards"_s);
    QTRY_VERIFY(!grid.masonry->timeline());
    grid.screenshot(u"grid-library-dark.png"_s);

    // A board with pictures and several links: the links stand in the rail at the trailing edge.
    const QString board = grid.store->createCollection(u"Cabin ideas"_s);
    QStringList members;
    for (int i = 0; i < 9; ++i)
        members.append(library.items[i].id);
    QList<kivo::LibraryItem> links;
    for (const auto &[title, address] : {std::pair{u"Timber frames, explained"_s, u"https://www.example.org/timber"_s},
             std::pair{u"A cabin by the lake"_s, u"https://cabins.example.net/lake"_s},
             std::pair{u"Stove buying guide"_s, u"https://stoves.example.com/guide"_s}}) {
        kivo::LibraryItem item;
        item.id = kivo::newIdentifier();
        item.kind = u"link"_s;
        item.title = title;
        item.sourceURL = address;
        item.createdAt = item.addedAt = item.modifiedAt = now - 100;
        links.append(item);
        members.append(item.id);
    }
    grid.insert(links);
    QVERIFY(grid.store->fileItems(members, board));
    grid.store->setSelectionKey(board);
    QTRY_VERIFY(kivo::test::isShown(grid.item(u"linksRail"_s)));
    QCOMPARE(grid.controller->railRows()->count(), 3);
    QCOMPARE(grid.controller->rows()->count(), 9);
    // The grid gives up the rail's 236 points.
    QCOMPARE(grid.masonry->width(), grid.item(u"selectionView"_s)->width() - 236);
    grid.screenshot(u"board-with-rail-dark.png"_s);
    kivo::test::clickItem(grid.window, grid.item(u"viewOptionsButton"_s));
    QTRY_VERIFY(grid.window->findChild<QObject *>(u"viewOptions"_s)->property("opened").toBool());
    grid.screenshot(u"view-options-dark.png"_s);
}

void TestGridWindow::scrollingAHundredThousandItems()
{
    // Minutes of work on a shared machine, and an exception has escaped it there now and then after
    // the scroll (not yet understood); the frame times themselves come from bench_window.
    if (!qEnvironmentVariableIsSet("KIVO_LARGE_WINDOW_TEST"))
        QSKIP("set KIVO_LARGE_WINDOW_TEST=1 to scroll a 100,000-item library");
    GridWindow grid;
    grid.prepareLibrary();
    grid.settings.setGridColumns(5);
    // 240 real pictures, each shared by many rows: the thumbnails stay real, the library large.
    const double now = kivo::nowSeconds();
    QList<kivo::LibraryItem> pictures;
    QRandomGenerator random(11);
    for (int i = 0; i < 240; ++i)
        pictures.append(
            pictureItem({400 + random.bounded(700), 300 + random.bounded(900)}, 500 + i, now, u"p%1"_s.arg(i)));
    QList<kivo::LibraryItem> items;
    items.reserve(100000);
    for (int i = 0; i < 100000; ++i) {
        kivo::LibraryItem item = pictures[i % pictures.size()];
        item.id = kivo::newIdentifier();
        item.createdAt = item.addedAt = item.modifiedAt = now - i * 30.0;
        items.append(item);
    }
    grid.open(u"light"_s, {1400, 900});
    QElapsedTimer loading;
    loading.start();
    grid.insert(items);
    qInfo("100,000 rows inserted and shown in %lld ms", loading.elapsed());
    QCOMPARE(grid.controller->rows()->count(), 100000);

    auto *flick = grid.window->findChild<QObject *>(u"gridFlickable"_s);
    QVERIFY(flick);
    // Each frame the view moves on by 45 points (2,700 points a second at 60 frames): a brisk scroll.
    const auto scrollAndTime = [&](double from, int frameCount) {
        QList<qint64> swaps;
        QElapsedTimer clock;
        clock.start();
        const double end = from + 45.0 * frameCount;
        auto connection = connect(grid.window, &QQuickWindow::frameSwapped, this, [&] {
            swaps.append(clock.nsecsElapsed());
            const double y = flick->property("contentY").toDouble();
            if (y < end)
                QMetaObject::invokeMethod(
                    flick, [flick, y] { flick->setProperty("contentY", y + 45.0); }, Qt::QueuedConnection);
        });
        flick->setProperty("contentY", from);
        [&] { QTRY_VERIFY_WITH_TIMEOUT(flick->property("contentY").toDouble() >= end, 120000); }();
        disconnect(connection);
        QList<double> frames;
        for (int i = 1; i < swaps.size(); ++i)
            frames.append((swaps[i] - swaps[i - 1]) / 1e6);
        if (qEnvironmentVariableIsSet("KIVO_FRAME_TRACE")) {
            for (int i = 0; i < frames.size(); ++i) {
                if (frames[i] > 30)
                    qInfo("slow frame %d: %.1f ms", i, frames[i]);
            }
        }
        std::sort(frames.begin(), frames.end());
        return frames;
    };
    const auto summary = [](const QList<double> &frames) {
        return u"%1 frames, median %2 ms, 99th percentile %3 ms, longest %4 ms"_s.arg(frames.size())
            .arg(frames[frames.size() / 2], 0, 'f', 1)
            .arg(frames[int(frames.size() * 0.99)], 0, 'f', 1)
            .arg(frames.last(), 0, 'f', 1);
    };
    // The first pass pays once for what the renderer meets for the first time (shaders, glyphs);
    // the second, far down the list, is the steady state.
    const QList<double> first = scrollAndTime(0, 600);
    const QList<double> later = scrollAndTime(1.5e6, 600);
    QVERIFY(first.size() > 500 && later.size() > 500);
    qInfo("scrolling 100,000 items from the top: %s", qPrintable(summary(first)));
    qInfo("scrolling 100,000 items further down: %s", qPrintable(summary(later)));
    qInfo("cards made: %d", grid.masonry->createdCount());
    QFile report(screenshotPath(u"frame-times.txt"_s));
    QVERIFY(report.open(QIODevice::WriteOnly));
    report.write((u"from the top: "_s + summary(first) + u"\nfurther down: "_s + summary(later) + u'\n').toUtf8());
    QVERIFY(grid.masonry->createdCount() < 200);
    grid.screenshot(u"grid-100k-light.png"_s);
}

QTEST_MAIN(TestGridWindow)
#include "tst_gridwindow.moc"
