// The main window taking things in, end to end on a real X server (its own Xvfb) with the real
// pointer and keys from xdotool: files and folders dragged from another window onto the grid and
// onto a collection in the sidebar, and Control-V with files, a picture, an address or text on
// the clipboard. The library's database and folder are read back after each step, and what the
// window says (the toast, the failures) is read from the window itself.

#include "tests/fixtureserver.h"
#include "tests/ingest/importtestlibrary.h"
#include "tests/surfaces/loadedwindow.h"
#include "tests/surfaces/xsession.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QQmlComponent>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using kivo::test::dragPath;
using kivo::test::LoadedWindow;
using kivo::test::screenPoint;
using kivo::test::xdotool;
using kivo::test::XServer;

namespace {

/** Another program's window: a tile per bundle of files, each dragged out as a file manager does. */
constexpr auto fileManagerQml = R"(
    import QtQuick
    Window {
        id: files
        width: 220; height: 320
        flags: Qt.Window
        visible: true
        color: "#e8e8ea"
        property var bundles: []
        Column {
            spacing: 12; padding: 12
            Repeater {
                model: files.bundles
                delegate: Rectangle {
                    id: tile
                    required property var modelData
                    required property int index
                    objectName: "bundle" + index
                    width: 196; height: 80; radius: 8
                    color: "#b7c9e2"
                    Drag.dragType: Drag.Automatic
                    Drag.supportedActions: Qt.CopyAction
                    Drag.mimeData: ({ "text/uri-list": tile.modelData })
                    DragHandler {
                        target: null
                        onActiveChanged: if (active) tile.Drag.active = true
                    }
                }
            }
        }
    })";

/** A uri-list as file managers write it. */
QString uriList(const QStringList &paths)
{
    QString list;
    for (const QString &path : paths)
        list += QUrl::fromLocalFile(path).toString() + u"\r\n"_s;
    return list;
}

} // namespace

class TestImportWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dropsOnTheGridAndOnACollection();
    void pasteIntoTheSelectedCollection_data();
    void pasteIntoTheSelectedCollection();

private:
    static bool activate(LoadedWindow &loaded);
};

bool TestImportWindow::activate(LoadedWindow &loaded)
{
    loaded.window->setPosition(0, 0);
    loaded.window->requestActivate();
    return QTest::qWaitForWindowActive(loaded.window);
}

void TestImportWindow::dropsOnTheGridAndOnACollection()
{
    LoadedWindow loaded;
    const QString moodboard = loaded.world.addCollection(u"Moodboard"_s);
    QVERIFY(loaded.open());
    QVERIFY(activate(loaded));
    const auto query
        = [&](const QString &sql, const QVariantList &arguments = {}) { return loaded.world.scalar(sql, arguments); };
    const auto idOfTitle = [&](const QString &title) {
        return query(u"SELECT id FROM item WHERE title = ? AND deletedAt IS NULL"_s, {title}).toString();
    };
    const auto collectionsOf = [&](const QString &itemId) {
        QStringList names;
        loaded.world.store.dbQueue()->read([&](kivo::Database &db) {
                db.forEach(u"SELECT c.name FROM itemCollection ic JOIN collection c ON c.id = ic.collectionId "
                       u"WHERE ic.itemId = ? ORDER BY c.name"_s,
                {itemId}, [&](const kivo::Row &row) { names.append(row.text(0)); });
        });
        return names;
    };

    // What the other program offers: a picture, a folder of notes and sketches (one down a level)
    // and an alias whose file is gone; then a second picture with the first one again.
    QTemporaryDir outside;
    QVERIFY(outside.isValid());
    const QString harbour = outside.filePath(u"harbour.png"_s);
    kivo::test::writeFile(harbour, kivo::test::pngBytes(60, 40, 1));
    kivo::test::writeFile(outside.filePath(u"notes/plan.txt"_s), "Frame the harbour prints in oak.");
    kivo::test::writeFile(outside.filePath(u"notes/deep/sketch.png"_s), kivo::test::pngBytes(30, 50, 2));
    const QString gone = outside.filePath(u"gone.jpg"_s);
    QVERIFY(QFile::link(outside.filePath(u"nothing-here.jpg"_s), gone));
    const QString poster = outside.filePath(u"poster.png"_s);
    kivo::test::writeFile(poster, kivo::test::pngBytes(44, 44, 3));

    QQmlComponent component(loaded.engine.get());
    component.setData(fileManagerQml, QUrl(u"qrc:/tests/FileManager.qml"_s));
    std::unique_ptr<QQuickWindow> files(qobject_cast<QQuickWindow *>(component.createWithInitialProperties(
        {{u"bundles"_s, QStringList{uriList({harbour, outside.filePath(u"notes"_s), gone}), uriList({poster, harbour})}}})));
    QVERIFY2(files, qPrintable(component.errorString()));
    files->setPosition(1240, 60);
    QVERIFY(QTest::qWaitForWindowExposed(files.get()));
    loaded.settle();

    // 1. Onto the grid while "All" is selected: the destination rule files them in the inbox.
    QQuickItem *grid = loaded.item(u"cardGrid"_s);
    QVERIFY(kivo::test::isShown(grid));
    QVERIFY(xdotool(dragPath(screenPoint(kivo::test::findItem(files->contentItem(), u"bundle0"_s)), screenPoint(grid))));
    QTRY_COMPARE_WITH_TIMEOUT(query(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL"_s).toInt(), 3, 20000);
    QTRY_VERIFY_WITH_TIMEOUT(!loaded.imports.busy(), 20000);
    for (const QString &title : {u"harbour"_s, u"plan"_s, u"sketch"_s}) {
        const QString id = idOfTitle(title);
        QVERIFY2(!id.isEmpty(), qPrintable(title));
        QCOMPARE(collectionsOf(id), QStringList{u"Inbox"_s});
        const QString stored = query(u"SELECT filePath FROM item WHERE id = ?"_s, {id}).toString();
        QVERIFY2(QFileInfo::exists(kivo::LibraryLocation::resolve(stored)), qPrintable(stored));
    }
    QCOMPARE(query(u"SELECT kind FROM item WHERE id = ?"_s, {idOfTitle(u"plan"_s)}).toString(), u"text"_s);
    QCOMPARE(query(u"SELECT CAST(width AS INTEGER) || 'x' || CAST(height AS INTEGER) FROM item WHERE id = ?"_s, {idOfTitle(u"sketch"_s)}).toString(),
        u"30x50"_s);
    QTRY_COMPARE(loaded.textOf(u"toastArea"_s), u"Saved to Inbox"_s);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"toast"_s)));

    // The alias that leads nowhere is named in the import's card, with its reason on request.
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"importProgress"_s)));
    QCOMPARE(loaded.textOf(u"importFailureSummary"_s), u"1 file couldn\u2019t be imported"_s);
    loaded.click(u"importDetailsButton"_s);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"importFailureList"_s)));
    const QVariantList failures = loaded.imports.failures();
    QCOMPARE(failures.size(), 1);
    QCOMPARE(failures.first().toMap().value(u"name"_s).toString(), u"gone.jpg"_s);
    QVERIFY(!failures.first().toMap().value(u"error"_s).toString().isEmpty());
    QCOMPARE(loaded.item(u"importFailureList"_s)->property("count").toInt(), 1);
    loaded.screenshot(u"import-drop-failures.png"_s);
    loaded.click(u"importDismissButton"_s);
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"importProgress"_s)));

    // 2. Onto the collection's row: the new picture goes in; the one already in the library is
    // not added again but filed there too.
    const QString harbourId = idOfTitle(u"harbour"_s);
    QVERIFY(xdotool(dragPath(screenPoint(kivo::test::findItem(files->contentItem(), u"bundle1"_s)),
        screenPoint(loaded.item(u"collection-"_s + moodboard)))));
    QTRY_COMPARE_WITH_TIMEOUT(query(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL"_s).toInt(), 4, 20000);
    QTRY_COMPARE_WITH_TIMEOUT(collectionsOf(harbourId), (QStringList{u"Inbox"_s, u"Moodboard"_s}), 20000);
    QCOMPARE(collectionsOf(idOfTitle(u"poster"_s)), QStringList{u"Moodboard"_s});
    QCOMPARE(query(u"SELECT COUNT(*) FROM item WHERE title = 'harbour'"_s).toInt(), 1);
    QTRY_COMPARE(loaded.textOf(u"toastArea"_s), u"Saved to Moodboard"_s);
    QTRY_COMPARE(loaded.textOf(u"collection-"_s + moodboard, u"count"_s), u"2"_s);
    QCOMPARE(loaded.imports.failureCount(), 0);
}

void TestImportWindow::pasteIntoTheSelectedCollection_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("title");
    QTest::newRow("copied files") << u"files"_s << u"image"_s << u"copied"_s;
    QTest::newRow("a copied picture") << u"picture"_s << u"image"_s << u"Image"_s;
    QTest::newRow("an address of a picture") << u"pictureAddress"_s << u"image"_s << u"pier"_s;
    // Not a picture or a video: a link, titled by its host until its preview brings the page's title.
    QTest::newRow("an address of a page") << u"pageAddress"_s << u"link"_s << u"127.0.0.1"_s;
    QTest::newRow("words") << u"words"_s << u"text"_s << u"Ask about the oak frames"_s;
}

void TestImportWindow::pasteIntoTheSelectedCollection()
{
    QFETCH(QString, what);
    QFETCH(QString, kind);
    QFETCH(QString, title);
    kivo::test::FixtureServer server;
    server.serve(u"/pier.png"_s, kivo::test::FixtureResponse::bytes(kivo::test::pngBytes(12, 9, 4), "image/png"));
    server.serve(u"/tides"_s,
        kivo::test::FixtureResponse::bytes("<html><head><title>Tide Tables</title></head><body></body></html>",
            "text/html; charset=utf-8"));

    LoadedWindow loaded;
    const QString prints = loaded.world.addCollection(u"Prints"_s);
    QVERIFY(loaded.open());
    QVERIFY(activate(loaded));
    loaded.world.store.setSelectionKey(prints);
    loaded.item(u"cardGrid"_s)->forceActiveFocus();

    QTemporaryDir outside;
    auto *mime = new QMimeData;
    if (what == u"files") {
        const QString copied = outside.filePath(u"copied.png"_s);
        kivo::test::writeFile(copied, kivo::test::pngBytes(16, 16, 5));
        mime->setUrls({QUrl::fromLocalFile(copied)});
    } else if (what == u"picture") {
        QImage picture(24, 18, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        mime->setImageData(picture);
    } else if (what == u"pictureAddress") {
        mime->setText(server.url(u"/pier.png"_s).toString());
    } else if (what == u"pageAddress") {
        mime->setText(server.url(u"/tides"_s).toString());
    } else {
        mime->setText(title);
    }
    QGuiApplication::clipboard()->setMimeData(mime);

    QVERIFY(xdotool({u"key"_s, u"ctrl+v"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.world.scalar(u"SELECT COUNT(*) FROM item"_s).toInt(), 1, 20000);
    const QString id = loaded.world.scalar(u"SELECT id FROM item"_s).toString();
    QCOMPARE(loaded.world.scalar(u"SELECT kind FROM item"_s).toString(), kind);
    QTRY_COMPARE_WITH_TIMEOUT(loaded.world.scalar(u"SELECT title FROM item"_s).toString(), title, 10000);
    QCOMPARE(loaded.world.scalar(u"SELECT collectionId FROM itemCollection WHERE itemId = ?"_s, {id}).toString(), prints);
    QCOMPARE(loaded.world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ?"_s, {id}).toInt(), 1);
    if (what == u"pageAddress")
        QCOMPARE(loaded.world.scalar(u"SELECT sourceURL FROM item"_s).toString(), server.url(u"/tides"_s).toString());
    QTRY_COMPARE(loaded.textOf(u"toastArea"_s), u"Saved to Prints"_s);
}

int main(int argc, char **argv)
{
    XServer server;
    if (!server.start(u"1600x900"_s)) {
        std::fprintf(stderr, "tst_importwindow: Xvfb or xdotool is missing; skipped\n");
        return 0;
    }
    QGuiApplication application(argc, argv);
    TestImportWindow test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_importwindow.moc"
