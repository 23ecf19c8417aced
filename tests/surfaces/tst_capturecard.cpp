// The capture card on a real library, in a real window under X: its keys (the whole table, then
// through the window's own key delivery), finishing and cancelling with what they write, and the
// late binds of cards that are already gone.

#include "core/database.h"
#include "ingest/capture/captureflow.h"
#include "ingest/capture/clipitems.h"
#include "ingest/capture/pendingclips.h"
#include "ingest/import/libraryimporter.h"
#include "surfaces/capture/capturepalette.h"
#include "surfaces/capture/pendingshelf.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "tests/core/storeworld.h"
#include "tests/surfaces/quickhelpers.h"

#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

/** A Store on its own library, the card's palette and the engine its window is made in. */
struct CardWorld {
    test::StoreWorld world;
    AppearanceController appearance;
    QQmlEngine engine;
    CapturePalette palette{&world.store, &world.settings};

    CardWorld()
    {
        appearance.setAppearance(u"light"_s);
        QmlServices::publishAppearance(&appearance);
        QmlServices::publishStore(&world.store);
        QmlServices::publishSettings(&world.settings);
        QmlServices::prepareEngine(engine);
        palette.setEngine(&engine);
    }

    [[nodiscard]] QQuickWindow *panel() const { return palette.panel(); }
    [[nodiscard]] bool inGrid(const QString &id) const
    {
        return std::any_of(world.store.allRows().cbegin(), world.store.allRows().cend(),
            [&](const LibraryItem &item) { return item.id == id; });
    }
    [[nodiscard]] QStringList tagsOf(const QString &itemId) const
    {
        QStringList tags;
        world.db().read([&](Database &db) {
            db.forEach(u"SELECT t.name AS name, it.source AS source FROM itemTag it JOIN tag t ON t.id = it.tagId "
                       "WHERE it.itemId = ? ORDER BY t.name"_s,
                {itemId}, [&](const Row &row) { tags.append(row.text("name") + u'/' + row.text("source")); });
        });
        return tags;
    }
    [[nodiscard]] bool isMember(const QString &itemId, const QString &collectionId) const
    {
        return world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s,
                   {itemId, collectionId})
                   .toInt()
            == 1;
    }
};

/** Keys of the table as short words: "<tab>", "<bs>", "<ret>", "<esc>", "<up>", "<down>", "<alt-x>", "<ctrl-x>", "<ctrl-ret>"; anything else types. */
void press(CaptureCardModel &model, const QStringList &keys)
{
    for (const QString &key : keys) {
        if (key == u"<tab>")
            model.handleKey(Qt::Key_Tab, Qt::NoModifier, u"\t"_s);
        else if (key == u"<bs>")
            model.handleKey(Qt::Key_Backspace, Qt::NoModifier, u"\b"_s);
        else if (key == u"<ret>")
            model.handleKey(Qt::Key_Return, Qt::NoModifier, u"\r"_s);
        else if (key == u"<ctrl-ret>")
            model.handleKey(Qt::Key_Return, Qt::ControlModifier, u"\r"_s);
        else if (key == u"<esc>")
            model.handleKey(Qt::Key_Escape, Qt::NoModifier, u"\x1b"_s);
        else if (key == u"<up>")
            model.handleKey(Qt::Key_Up, Qt::NoModifier, {});
        else if (key == u"<down>")
            model.handleKey(Qt::Key_Down, Qt::NoModifier, {});
        else if (key == u"<alt-x>")
            QVERIFY(!model.handleKey(Qt::Key_X, Qt::AltModifier, u"x"_s));
        else if (key == u"<ctrl-x>")
            QVERIFY(!model.handleKey(Qt::Key_X, Qt::ControlModifier, u"\x18"_s));
        else
            for (const QChar c : key)
                QVERIFY(model.handleKey(Qt::Key_unknown, Qt::NoModifier, QString(c)));
    }
}

/** Types text into a window key by key, through its own event delivery. */
void typeInto(QWindow *window, const QString &text)
{
    for (const QChar c : text)
        QTest::keyClick(window, c.toLatin1());
}

void saveScreenshot(QQuickWindow *window, const QString &name)
{
    QDir().mkpath(QStringLiteral(KIVO_SCREENSHOT_DIR));
    const QImage image = window->grabWindow();
    QVERIFY(!image.isNull());
    QVERIFY(image.save(QStringLiteral(KIVO_SCREENSHOT_DIR) + u'/' + name));
}

QImage samplePreview()
{
    QImage image(480, 320, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, 320);
    sky.setColorAt(0, QColor(u"#f4b37a"_s));
    sky.setColorAt(1, QColor(u"#5a6fb8"_s));
    painter.fillRect(image.rect(), sky);
    painter.setBrush(QColor(u"#2c3550"_s));
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(QPolygon({QPoint(0, 320), QPoint(160, 150), QPoint(260, 240), QPoint(360, 120), QPoint(480, 320)}));
    return image;
}

} // namespace

class TestCaptureCard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keyTable_data();
    void keyTable();
    void finishAndCancelKeys();
    void boundCardByKeyboard();
    void cancelBoundCard();
    void draftFinishedBeforeItsItem();
    void draftCancelledBeforeItsItemNeverShows();
    void lateBindLeavesTheNewCardAlone();
    void failedImportClosesTheCard();
    void pendingPanelFilesByKeyboard();
};

void TestCaptureCard::keyTable_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QString>("focus");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("untouched");
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("highlighted");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("tagDraft");
    QTest::addColumn<QStringList>("tags");
    const QStringList none;

    QTest::newRow("typing replaces an untouched title") << QStringList{u"New"_s} << u"title"_s << u"New"_s << false << QString() << 0 << QString() << QString() << none;
    QTest::newRow("backspace first clears it all") << QStringList{u"<bs>"_s} << u"title"_s << QString() << false << QString() << 0 << QString() << QString() << none;
    QTest::newRow("then typing appends") << QStringList{u"<bs>"_s, u"ab"_s, u"<bs>"_s, u"c"_s} << u"title"_s << u"ac"_s << false << QString() << 0 << QString() << QString() << none;
    QTest::newRow("modified keys are not the card's") << QStringList{u"<alt-x>"_s, u"<ctrl-x>"_s} << u"title"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("tab walks the fields") << QStringList{u"<tab>"_s} << u"collection"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("tab twice") << QStringList{u"<tab>"_s, u"<tab>"_s} << u"tags"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("tab around") << QStringList{u"<tab>"_s, u"<tab>"_s, u"<tab>"_s} << u"title"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("return on the title goes on") << QStringList{u"<ret>"_s} << u"collection"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("query") << QStringList{u"<tab>"_s, u"Mo"_s} << u"collection"_s << u"Old title"_s << true << u"Mo"_s << 0 << QString() << QString() << none;
    QTest::newRow("down moves the highlight") << QStringList{u"<tab>"_s, u"mo"_s, u"<down>"_s} << u"collection"_s << u"Old title"_s << true << u"mo"_s << 1 << QString() << QString() << none;
    QTest::newRow("down stops at the last row") << QStringList{u"<tab>"_s, u"mo"_s, u"<down>"_s, u"<down>"_s, u"<down>"_s, u"<down>"_s} << u"collection"_s << u"Old title"_s << true << u"mo"_s << 2 << QString() << QString() << none;
    QTest::newRow("up stops at zero") << QStringList{u"<tab>"_s, u"<down>"_s, u"<up>"_s, u"<up>"_s} << u"collection"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("typing resets the highlight") << QStringList{u"<tab>"_s, u"mo"_s, u"<down>"_s, u"u"_s} << u"collection"_s << u"Old title"_s << true << u"mou"_s << 0 << QString() << QString() << none;
    QTest::newRow("return takes the highlighted row") << QStringList{u"<tab>"_s, u"mo"_s, u"<down>"_s, u"<ret>"_s} << u"tags"_s << u"Old title"_s << true << QString() << 0 << u"Mountains"_s << QString() << none;
    QTest::newRow("return on the create row") << QStringList{u"<tab>"_s, u"Birds"_s, u"<ret>"_s} << u"tags"_s << u"Old title"_s << true << QString() << 0 << u"Birds"_s << QString() << none;
    QTest::newRow("backspace in the query") << QStringList{u"<tab>"_s, u"typo"_s, u"<bs>"_s} << u"collection"_s << u"Old title"_s << true << u"typ"_s << 0 << QString() << QString() << none;
    QTest::newRow("backspace on an empty query clears the choice") << QStringList{u"<tab>"_s, u"type"_s, u"<ret>"_s, u"<tab>"_s, u"<tab>"_s, u"<bs>"_s} << u"collection"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
    QTest::newRow("tag draft") << QStringList{u"<tab>"_s, u"<tab>"_s, u"red"_s} << u"tags"_s << u"Old title"_s << true << QString() << 0 << QString() << u"red"_s << none;
    QTest::newRow("tab commits the tag") << QStringList{u"<tab>"_s, u"<tab>"_s, u"red"_s, u"<tab>"_s} << u"title"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << QStringList{u"red"_s};
    QTest::newRow("return and comma commit tags") << QStringList{u"<tab>"_s, u"<tab>"_s, u"a"_s, u"<ret>"_s, u"b,c"_s, u"<bs>"_s} << u"tags"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << QStringList{u"a"_s, u"b"_s};
    QTest::newRow("blank tags are not kept") << QStringList{u"<tab>"_s, u"<tab>"_s, u"  "_s, u"<tab>"_s} << u"title"_s << u"Old title"_s << true << QString() << 0 << QString() << QString() << none;
}

void TestCaptureCard::keyTable()
{
    QFETCH(QStringList, keys);
    CaptureCardModel model;
    model.setCollections({{u"c1"_s, u"Moodboard"_s}, {u"c2"_s, u"Mountains"_s}, {u"c3"_s, u"Type"_s}});
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = u"image"_s;
    item.title = u"Old title"_s;
    model.reset(item, {}, true);
    press(model, keys);

    QTEST(model.focusName(), "focus");
    QTEST(model.title(), "title");
    QTEST(model.titleUntouched(), "untouched");
    QTEST(model.query(), "query");
    QTEST(model.highlighted(), "highlighted");
    QTEST(model.chosenName(), "chosen");
    QTEST(model.tagDraft(), "tagDraft");
    QTEST(model.pendingTags(), "tags");
}

void TestCaptureCard::finishAndCancelKeys()
{
    CaptureCardModel model;
    int finished = 0;
    int cancelled = 0;
    model.onFinish = [&] { ++finished; };
    model.onCancel = [&] { ++cancelled; };
    press(model, {u"<ctrl-ret>"_s});
    QCOMPARE(finished, 1);
    press(model, {u"<esc>"_s});
    QCOMPARE(cancelled, 1);
    // Return on an empty tag field is the last step of the keyboard walk.
    press(model, {u"<tab>"_s, u"<tab>"_s, u"<ret>"_s});
    QCOMPARE(finished, 2);
    QCOMPARE(cancelled, 1);
}

void TestCaptureCard::boundCardByKeyboard()
{
    CardWorld w;
    const QString mountains = w.world.addCollection(u"Mountains"_s);
    w.world.addCollection(u"Moodboard"_s);
    const QString id = w.world.addItem(u"image"_s, 1000, [](LibraryItem &item) { item.title = u"IMG_1234"_s; });
    w.world.store.reloadAll();
    QVERIFY(w.inGrid(id));

    w.palette.presentItem(id);
    QQuickWindow *panel = w.panel();
    QVERIFY(panel);
    QVERIFY(QTest::qWaitForWindowExposed(panel));
    QVERIFY(panel->flags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(panel->flags().testFlag(Qt::WindowStaysOnTopHint));
    QCOMPARE(panel->width(), 420);
    QVERIFY(panel->height() <= 382);
    const QRect visible = panel->screen()->availableGeometry();
    QCOMPARE(panel->x(), visible.x() + (visible.width() - 420) / 2);
    QCOMPARE(panel->y(), visible.y() + int(visible.height() * 0.22));
    QCOMPARE(w.world.store.capturePendingItemId(), id);
    QVERIFY(!w.inGrid(id)); // the half-made item is kept out of the grid
    QVERIFY(w.palette.onScreen());

    // The keys go through the window's own delivery, as a person's would.
    QTRY_VERIFY(panel->activeFocusItem());
    typeInto(panel, u"Lake at dawn"_s);
    QTest::keyClick(panel, Qt::Key_Tab);
    typeInto(panel, u"mo"_s);
    QTest::qWait(250); // the fade
    saveScreenshot(panel, u"capture-card-suggestions.png"_s);
    QCOMPARE(w.palette.model()->suggestionCount(), 3); // Mountains, Moodboard, and "Create “mo”"
    typeInto(panel, u"u"_s);
    QTest::keyClick(panel, Qt::Key_Return);
    typeInto(panel, u"blue"_s);
    QTest::keyClick(panel, Qt::Key_Return);
    typeInto(panel, u"Evening"_s);
    QCOMPARE(w.palette.model()->title(), u"Lake at dawn"_s);
    QCOMPARE(w.palette.model()->chosenName(), u"Mountains"_s);
    saveScreenshot(panel, u"capture-card.png"_s);

    QTest::keyClick(panel, Qt::Key_Return, Qt::ControlModifier);
    QTRY_VERIFY(!panel->isVisible());
    QVERIFY(!w.palette.onScreen());
    const LibraryItem saved = w.world.item(id);
    QCOMPARE(saved.title, u"Lake at dawn"_s);
    QVERIFY(w.isMember(id, mountains));
    // A tag still being typed counts; tags are the user's and stored lower-cased.
    QCOMPARE(w.tagsOf(id), (QStringList{u"blue/user"_s, u"evening/user"_s}));
    QCOMPARE(w.world.settings.lastFiledCollectionId(), mountains);
    QCOMPARE(w.world.store.toast(), u"Saved to Mountains"_s);
    QCOMPARE(w.world.store.capturePendingItemId(), QString());
    QVERIFY(w.inGrid(id));
}

void TestCaptureCard::cancelBoundCard()
{
    CardWorld w;
    const QString id = w.world.addItem(u"image"_s, 1000);
    w.world.store.reloadAll();
    const double before = w.world.item(id).modifiedAt;
    w.palette.presentItem(id);
    QVERIFY(QTest::qWaitForWindowExposed(w.panel()));
    QTRY_VERIFY(w.panel()->activeFocusItem());
    QTest::keyClick(w.panel(), Qt::Key_Escape);
    QTRY_VERIFY(!w.panel()->isVisible());
    const LibraryItem trashed = w.world.item(id);
    QVERIFY(trashed.deletedAt);
    QVERIFY(trashed.modifiedAt > before);
    QCOMPARE(w.world.store.toast(), u"Capture Cancelled"_s);
    QVERIFY(!w.inGrid(id));
}

void TestCaptureCard::draftFinishedBeforeItsItem()
{
    CardWorld w;
    const ClipItem clip{.type = u"image"_s, .url = u"https://cdn.example.com/a.jpg"_s, .sourceURL = u"https://www.example.com/post"_s, .title = u"A post"_s};
    const LibraryItem draft = ClipItems::draftItem(clip);
    const int session = w.palette.present(draft, samplePreview(), false);
    QVERIFY(QTest::qWaitForWindowExposed(w.panel()));
    QTRY_VERIFY(w.panel()->activeFocusItem());
    QCOMPARE(w.palette.model()->title(), u"A post"_s);
    QTest::qWait(250);
    saveScreenshot(w.panel(), u"capture-card-draft.png"_s);
    typeInto(w.panel(), u"Kept"_s);
    QTest::keyClick(w.panel(), Qt::Key_Return, Qt::ControlModifier);
    QTRY_VERIFY(!w.panel()->isVisible());
    QVERIFY(w.palette.saveOnBind());

    // The import ends later with a stored item of its own id and title.
    const QString id = w.world.addItem(u"image"_s, 2000, [](LibraryItem &item) { item.title = u"a"_s; });
    w.palette.noteSavedItem(id, session);
    QCOMPARE(w.world.store.capturePendingItemId(), id);
    w.palette.bind(id, session);
    QCOMPARE(w.world.item(id).title, u"Kept"_s);
    QCOMPARE(w.world.store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(w.world.store.capturePendingItemId(), QString());
    QVERIFY(!w.world.item(id).deletedAt);
}

void TestCaptureCard::draftCancelledBeforeItsItemNeverShows()
{
    CardWorld w;
    const LibraryItem draft = ClipItems::draftItem(ClipItem{.type = u"image"_s, .url = u"https://cdn.example.com/b.jpg"_s});
    const int session = w.palette.present(draft, {}, false);
    QVERIFY(QTest::qWaitForWindowExposed(w.panel()));
    QTRY_VERIFY(w.panel()->activeFocusItem());
    QTest::keyClick(w.panel(), Qt::Key_Escape);
    QTRY_VERIFY(!w.panel()->isVisible());
    QCOMPARE(w.world.store.toast(), u"Capture Cancelled"_s);
    QCOMPARE(w.world.store.capturePendingItemId(), QString());
    QVERIFY(w.palette.discardOnBind());

    const QString id = w.world.addItem(u"image"_s, 3000);
    bool shown = false;
    QObject::connect(&w.world.store, &Store::allRowsChanged, &w.palette, [&] { shown = shown || w.inGrid(id); });
    w.palette.noteSavedItem(id, session);
    w.palette.bind(id, session);
    w.world.store.reloadAll();
    QVERIFY(w.world.item(id).deletedAt);
    QVERIFY(!shown);
    QVERIFY(!w.inGrid(id));
}

void TestCaptureCard::lateBindLeavesTheNewCardAlone()
{
    CardWorld w;
    const LibraryItem first = ClipItems::draftItem(ClipItem{.type = u"image"_s, .url = u"https://a.example/1.png"_s, .title = u"First"_s});
    const LibraryItem second = ClipItems::draftItem(ClipItem{.type = u"image"_s, .url = u"https://a.example/2.png"_s, .title = u"Second"_s});
    const int firstSession = w.palette.present(first, {}, false);
    const int secondSession = w.palette.present(second, {}, false);
    QVERIFY(secondSession > firstSession);
    QVERIFY(QTest::qWaitForWindowExposed(w.panel()));
    QTRY_VERIFY(w.panel()->activeFocusItem());
    typeInto(w.panel(), u"Typed on the second"_s);

    const QString firstId = w.world.addItem(u"image"_s, 4000);
    w.palette.noteSavedItem(firstId, firstSession);
    w.palette.bind(firstId, firstSession);
    QVERIFY(w.world.item(firstId).deletedAt); // the gone card's item counts as cancelled late
    QCOMPARE(w.palette.model()->item().id, second.id);
    QVERIFY(!w.palette.model()->bound());
    QCOMPARE(w.palette.model()->title(), u"Typed on the second"_s);
    QCOMPARE(w.world.store.capturePendingItemId(), second.id);
    QVERIFY(w.panel()->isVisible());

    const QString secondId = w.world.addItem(u"image"_s, 5000, [](LibraryItem &item) { item.title = u"Stored"_s; });
    w.palette.bind(secondId, secondSession);
    QVERIFY(w.palette.model()->bound());
    QCOMPARE(*w.palette.boundItemId(), secondId);
    QCOMPARE(w.palette.model()->title(), u"Typed on the second"_s); // a touched title stays
    QCOMPARE(w.world.store.capturePendingItemId(), secondId);
    QVERIFY(!w.world.item(secondId).deletedAt);
}

void TestCaptureCard::failedImportClosesTheCard()
{
    CardWorld w;
    const int session = w.palette.present(ClipItems::draftItem(ClipItem{.type = u"page"_s, .url = u"https://a.example/"_s}), {}, false);
    QVERIFY(QTest::qWaitForWindowExposed(w.panel()));
    w.palette.bind(std::nullopt, session);
    QTRY_VERIFY(!w.panel()->isVisible());
    QCOMPARE(w.world.store.toast(), u"Capture Failed"_s);
    QCOMPARE(w.world.store.capturePendingItemId(), QString());
}


void TestCaptureCard::pendingPanelFilesByKeyboard()
{
    CardWorld w;
    w.world.settings.setShelfEnabled(true);
    LibraryImporter importer(&w.world.store, &w.world.settings);
    PendingClips pending;
    CaptureFlow flow(&w.world.store, &w.world.settings, &importer, &pending);
    bool sessionFlag = false;
    flow.setClipSessionFlag([&](bool active) { sessionFlag = active; });
    PendingShelf shelf(&pending, &w.world.store, &flow);
    shelf.setEngine(&w.engine);

    // Two selections: a multi-item clip goes to the pending clips and opens their panel.
    const ClipItem first{.type = u"selection"_s, .url = u"https://www.example.com/a"_s, .text = u"Light through the pines"_s};
    const ClipItem second{.type = u"selection"_s, .url = u"https://www.example.com/b"_s, .text = u"Fog over the lake"_s};
    flow.clip(ClipRequest{.items = {first, second}});
    QTRY_COMPARE(flow.runningClips(), 0);
    QCOMPARE(pending.itemIds().size(), 2);
    QVERIFY(sessionFlag);
    QQuickWindow *panel = shelf.panel();
    QVERIFY(panel);
    QVERIFY(QTest::qWaitForWindowExposed(panel));
    QVERIFY(panel->flags().testFlag(Qt::WindowStaysOnTopHint));
    const QRect visible = panel->screen()->availableGeometry();
    QCOMPARE(panel->x() + panel->width(), visible.right() - 12);
    QCOMPARE(w.world.store.toast(), QString()); // nothing said until they are filed

    QTRY_VERIFY(panel->activeFocusItem());
    typeInto(panel, u"Trips"_s);
    QTest::qWait(200);
    saveScreenshot(panel, u"pending-clips.png"_s);
    QTest::keyClick(panel, Qt::Key_Return);
    QTRY_VERIFY(!panel->isVisible());
    QVERIFY(!sessionFlag);
    QVERIFY(pending.isEmpty());
    const std::optional<LibraryCollection> trips = [&]() -> std::optional<LibraryCollection> {
        for (const LibraryCollection &collection : w.world.store.collections())
            if (collection.name == u"Trips")
                return collection;
        return std::nullopt;
    }();
    QVERIFY(trips);
    QCOMPARE(w.world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {trips->id}).toInt(), 2);
    QCOMPARE(w.world.store.toast(), u"Saved 2 to Trips"_s);
}

QTEST_MAIN(TestCaptureCard)
#include "tst_capturecard.moc"
