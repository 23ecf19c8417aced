// The sidebar's main path, end to end on a real X server (its own Xvfb) with real pointer and
// keyboard events from xdotool: make a collection with the "+" button and type its name, drag a
// card onto it, delete it from its context menu and press the toast's "Undo". The database is
// read back after each step and the window is saved as a picture.

#include "tests/surfaces/loadedwindow.h"

#include <QGuiApplication>
#include <QProcess>
#include <QQmlComponent>
#include <QStandardPaths>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using kivo::test::LoadedWindow;

namespace {

/** A private X server for the test process, started before the application so that Qt connects to it. */
class XServer
{
public:
    bool start()
    {
        if (QStandardPaths::findExecutable(u"Xvfb"_s).isEmpty()
            || QStandardPaths::findExecutable(u"xdotool"_s).isEmpty())
            return false;
        // -displayfd picks a free display and writes its number when the server is ready.
        m_process.start(
            u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1400x900x24"_s, u"-nolisten"_s, u"tcp"_s});
        if (!m_process.waitForStarted(5000))
            return false;
        QByteArray display;
        while (!display.contains('\n') && m_process.waitForReadyRead(10000))
            display += m_process.readAllStandardOutput();
        if (display.trimmed().isEmpty())
            return false;
        qputenv("DISPLAY", ':' + display.trimmed());
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("QT_QUICK_BACKEND", "software");
        return true;
    }
    ~XServer()
    {
        m_process.terminate();
        m_process.waitForFinished(3000);
    }

private:
    QProcess m_process;
};

/** Runs xdotool with the event loop turning, so the window answers while the pointer moves. */
bool xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start(u"xdotool"_s, arguments);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 20000))
        return false;
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

/** The screen position, as xdotool wants it, of a point of an item (its middle by default). */
QStringList screenPoint(QQuickItem *item, double fractionY = 0.5)
{
    const QPoint point = item->mapToGlobal(QPointF(item->width() / 2, item->height() * fractionY)).toPoint();
    return {QString::number(point.x()), QString::number(point.y())};
}

/** A press at `from`, small steps past the drag threshold, a glide to `to`, a rest, a release. */
QStringList dragPath(const QStringList &from, const QStringList &to)
{
    const int x0 = from.at(0).toInt();
    const int y0 = from.at(1).toInt();
    QStringList path{u"mousemove"_s, from.at(0), from.at(1), u"mousedown"_s, u"1"_s};
    for (int step = 1; step <= 4; ++step)
        path += {u"mousemove"_s, QString::number(x0 + 4 * step), QString::number(y0), u"sleep"_s, u"0.05"_s};
    for (int step = 1; step <= 10; ++step) {
        const int x = x0 + (to.at(0).toInt() - x0) * step / 10;
        const int y = y0 + (to.at(1).toInt() - y0) * step / 10;
        path += {u"mousemove"_s, QString::number(x), QString::number(y), u"sleep"_s, u"0.05"_s};
    }
    path += {u"sleep"_s, u"0.3"_s, u"mouseup"_s, u"1"_s};
    return path;
}

} // namespace

class TestSidebarFlow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makeFileDeleteAndUndo();
    void collectionsNestAndReorderByDrag();
};

void TestSidebarFlow::makeFileDeleteAndUndo()
{
    LoadedWindow loaded;
    const QString itemId = loaded.world.addItem(
        u"image"_s, kivo::nowSeconds(), [](kivo::LibraryItem &item) { item.title = u"Harbour"_s; });
    QVERIFY(loaded.open());
    loaded.window->setPosition(0, 0);
    loaded.window->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(loaded.window));
    const auto query
        = [&](const QString &sql, const QVariantList &arguments = {}) { return loaded.world.scalar(sql, arguments); };

    // A card of its own stands in for the grid's: the same drag, carrying "KIVO-ITEM <id>".
    QQmlComponent cardComponent(loaded.engine.get());
    cardComponent.setData(R"(
        import QtQuick
        import Kivo
        Rectangle {
            id: card
            property string itemId
            objectName: "card"
            width: 180; height: 140; radius: 12
            color: "#9fb7d9"
            Text { anchors.centerIn: parent; text: "Harbour"; font.pixelSize: 15; color: "#1c1c1e" }
            Drag.dragType: Drag.Automatic
            Drag.supportedActions: Qt.CopyAction
            Drag.mimeData: ({ "text/plain": "KIVO-ITEM " + card.itemId })
            DragHandler {
                target: null
                onActiveChanged: if (active) card.Drag.active = true
            }
        })",
        QUrl(u"qrc:/tests/Card.qml"_s));
    auto *card = qobject_cast<QQuickItem *>(cardComponent.createWithInitialProperties({{u"itemId"_s, itemId}}));
    QVERIFY2(card, qPrintable(cardComponent.errorString()));
    card->setParentItem(loaded.item(u"viewArea"_s));
    card->setPosition({48, 40});
    loaded.settle();

    // 1. The "+" makes "New Collection" and opens its name for typing.
    QVERIFY(xdotool(QStringList{u"mousemove"_s} + screenPoint(loaded.item(u"newCollectionButton"_s))
        + QStringList{u"click"_s, u"1"_s}));
    QTRY_VERIFY(!loaded.world.store.renameTargetId().isEmpty());
    const QString collectionId = loaded.world.store.renameTargetId();
    QCOMPARE(query(u"SELECT name FROM collection WHERE id = ?"_s, {collectionId}).toString(), u"New Collection"_s);
    QTRY_VERIFY(kivo::test::findItem(loaded.item(u"collection-"_s + collectionId), u"renameField"_s)->hasActiveFocus());
    QVERIFY(xdotool({u"type"_s, u"--delay"_s, u"40"_s, u"Moodboard"_s}));
    QVERIFY(xdotool({u"key"_s, u"Return"_s}));
    QTRY_COMPARE(query(u"SELECT name FROM collection WHERE id = ?"_s, {collectionId}).toString(), u"Moodboard"_s);
    QCOMPARE(query(u"SELECT COUNT(*) FROM collection WHERE isInbox = 0 AND deletedAt IS NULL"_s).toInt(), 1);
    loaded.screenshot(u"flow-1-collection-made.png"_s);

    // 2. The card dragged onto the collection's row is filed into it.
    loaded.settle();
    const QStringList drag = dragPath(screenPoint(card), screenPoint(loaded.item(u"collection-"_s + collectionId)));
    QVERIFY(xdotool(drag));
    QTRY_COMPARE_WITH_TIMEOUT(
        query(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {itemId, collectionId})
            .toInt(),
        1, 10000);
    QTRY_COMPARE(loaded.textOf(u"collection-"_s + collectionId, u"count"_s), u"1"_s);
    loaded.screenshot(u"flow-2-card-filed.png"_s);

    // 3. Delete from the row's context menu: the collection is marked deleted, its members let go.
    QVERIFY(xdotool(QStringList{u"mousemove"_s} + screenPoint(loaded.item(u"collection-"_s + collectionId))
        + QStringList{u"click"_s, u"3"_s}));
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"collectionMenuDelete"_s)));
    loaded.screenshot(u"flow-3-context-menu.png"_s);
    loaded.settle();
    QVERIFY(xdotool(QStringList{u"mousemove"_s} + screenPoint(loaded.item(u"collectionMenuDelete"_s))
        + QStringList{u"click"_s, u"1"_s}));
    QTRY_VERIFY(!query(u"SELECT deletedAt FROM collection WHERE id = ?"_s, {collectionId}).isNull());
    QCOMPARE(query(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {collectionId}).toInt(), 0);
    QCOMPARE(query(u"SELECT COUNT(*) FROM item WHERE id = ? AND deletedAt IS NULL"_s, {itemId}).toInt(), 1);
    QTRY_VERIFY(!loaded.item(u"collection-"_s + collectionId));
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"toastAction"_s)));
    QCOMPARE(loaded.textOf(u"toastText"_s), u"Collection Deleted"_s);
    loaded.screenshot(u"flow-4-deleted-with-toast.png"_s);

    // 4. The toast's "Undo" brings the collection back with its member.
    loaded.settle();
    QVERIFY(xdotool(
        QStringList{u"mousemove"_s} + screenPoint(loaded.item(u"toastAction"_s)) + QStringList{u"click"_s, u"1"_s}));
    QTRY_VERIFY(query(u"SELECT deletedAt FROM collection WHERE id = ?"_s, {collectionId}).isNull());
    QCOMPARE(
        query(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {itemId, collectionId})
            .toInt(),
        1);
    QTRY_VERIFY(kivo::test::isShown(loaded.item(u"collection-"_s + collectionId)));
    QTRY_COMPARE(loaded.textOf(u"collection-"_s + collectionId, u"title"_s), u"Moodboard"_s);
    QTRY_VERIFY(!kivo::test::isShown(loaded.item(u"toast"_s)));
    loaded.screenshot(u"flow-5-undone.png"_s);
}

void TestSidebarFlow::collectionsNestAndReorderByDrag()
{
    LoadedWindow loaded;
    const QString art = loaded.world.addCollection(u"Art"_s);
    const QString food = loaded.world.addCollection(u"Food"_s);
    const QString travel = loaded.world.addCollection(u"Travel"_s);
    QVERIFY(loaded.open());
    loaded.window->setPosition(0, 0);
    loaded.window->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(loaded.window));
    const auto parentOf = [&](const QString &id) {
        return loaded.world.scalar(u"SELECT parentId FROM collection WHERE id = ?"_s, {id}).toString();
    };
    const auto row = [&](const QString &id) { return loaded.item(u"collection-"_s + id); };

    // Food dropped on the middle of Art's row goes inside Art.
    loaded.settle();
    QVERIFY(xdotool(dragPath(screenPoint(row(food)), screenPoint(row(art)))));
    QTRY_COMPARE_WITH_TIMEOUT(parentOf(food), art, 10000);
    QTRY_COMPARE(loaded.world.store.toast(), u"Food Filed Inside Art"_s);
    loaded.settle();
    QVERIFY(row(food)->mapToScene({}).y() > row(art)->mapToScene({}).y());
    loaded.screenshot(u"flow-6-nested.png"_s);

    // Travel dropped on the upper edge of Art's row goes above it, at the top level.
    QVERIFY(xdotool(dragPath(screenPoint(row(travel)), screenPoint(row(art), 0.12))));
    QTRY_COMPARE_WITH_TIMEOUT(
        loaded.world.scalar(u"SELECT sortIndex FROM collection WHERE id = ?"_s, {travel}).toInt(), 0, 10000);
    QCOMPARE(loaded.world.scalar(u"SELECT sortIndex FROM collection WHERE id = ?"_s, {art}).toInt(), 1);
    QVERIFY(parentOf(travel).isEmpty());
    loaded.settle();
    QTRY_VERIFY(row(travel)->mapToScene({}).y() < row(art)->mapToScene({}).y());

    // Art dropped on its own child is refused with the toast, and nothing moves.
    loaded.settle();
    QVERIFY(xdotool(dragPath(screenPoint(row(art)), screenPoint(row(food)))));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.world.store.toast(), u"That Would Make a Loop"_s, 10000);
    QVERIFY(parentOf(art).isEmpty());
    QCOMPARE(parentOf(food), art);
    loaded.screenshot(u"flow-7-loop-refused.png"_s);
}

int main(int argc, char **argv)
{
    XServer server;
    if (!server.start()) {
        std::fprintf(stderr, "tst_sidebarflow: Xvfb or xdotool is missing; skipped\n");
        return 0;
    }
    QGuiApplication application(argc, argv);
    TestSidebarFlow test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sidebarflow.moc"
