// The main window's own rules: stored keys read as key sequences, the sidebar width kept within
// bounds and saved, and which item the details panel opens on.

#include "surfaces/window/windowcontroller.h"
#include "tests/core/storeworld.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using kivo::WindowController;

class TestWindowController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedKeysReadAsSequences_data();
    void storedKeysReadAsSequences();
    void sidebarWidthIsKeptWithinBounds();
    void detailsOpenOnTheFocusedItem();
};

void TestWindowController::storedKeysReadAsSequences_data()
{
    QTest::addColumn<int>("keyCode");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("expected");

    QTest::newRow("the sidebar's default: command and control with S") << 1 << 4352 << u"Ctrl+Meta+S"_s;
    QTest::newRow("command and shift with M") << 46 << 768 << u"Ctrl+Shift+M"_s;
    QTest::newRow("option with K") << 40 << 2048 << u"Alt+K"_s;
    QTest::newRow("all four with 1") << 18 << 256 + 512 + 2048 + 4096 << u"Ctrl+Meta+Alt+Shift+1"_s;
    QTest::newRow("a function key alone") << 101 << 0 << u"F9"_s;
    QTest::newRow("left arrow") << 123 << 256 << u"Ctrl+Left"_s;
    QTest::newRow("a code without a key") << 10 << 256 << QString();
    QTest::newRow("out of range") << 500 << 0 << QString();
}

void TestWindowController::storedKeysReadAsSequences()
{
    QFETCH(int, keyCode);
    QFETCH(int, modifiers);
    QFETCH(QString, expected);
    const QString sequence = WindowController::keySequence(keyCode, modifiers);
    QCOMPARE(sequence, expected);
    // What is produced must be a sequence Qt reads back as one key.
    if (!expected.isEmpty())
        QCOMPARE(QKeySequence::fromString(sequence, QKeySequence::PortableText).count(), 1);
}

void TestWindowController::sidebarWidthIsKeptWithinBounds()
{
    kivo::test::StoreWorld world;
    WindowController window;
    window.setSettings(&world.settings);
    window.setStore(&world.store);
    QCOMPARE(window.sidebarToggleSequence(), u"Ctrl+Meta+S"_s);
    world.settings.setSidebarToggleKeyCode(2);
    QCOMPARE(window.sidebarToggleSequence(), u"Ctrl+Meta+D"_s);

    window.setSidebarWidth(300);
    QCOMPARE(world.settings.sidebarWidth(), 300.0);
    window.setSidebarWidth(20);
    QCOMPARE(world.settings.sidebarWidth(), WindowController::minimumSidebarWidth);
    window.setSidebarWidth(5000);
    QCOMPARE(world.settings.sidebarWidth(), WindowController::maximumSidebarWidth);
    QVERIFY(world.settings.sidebarVisible());
    window.toggleSidebar();
    QVERIFY(!world.settings.sidebarVisible());
    // Both outlive the window: a new settings object reads them back.
    kivo::AppSettings reread;
    QCOMPARE(reread.sidebarWidth(), WindowController::maximumSidebarWidth);
    QVERIFY(!reread.sidebarVisible());
}

void TestWindowController::detailsOpenOnTheFocusedItem()
{
    kivo::test::StoreWorld world;
    const QString first = world.addItem(u"image"_s, 100);
    const QString second = world.addItem(u"image"_s, 200);
    world.store.reloadAll();
    WindowController window;
    window.setStore(&world.store);

    window.toggleDetails(); // nothing focused: stays closed
    QVERIFY(world.store.detailsItemId().isEmpty());
    world.store.selectItem(first);
    window.toggleDetails();
    QCOMPARE(world.store.detailsItemId(), first);
    window.toggleDetails();
    QVERIFY(world.store.detailsItemId().isEmpty());
    world.store.selectItem(QString());
    world.store.setSelectedItemIdList({second, first});
    window.toggleDetails();
    QVERIFY(!world.store.detailsItemId().isEmpty());
    QVERIFY(world.store.selectedItemIdList().contains(world.store.detailsItemId()));
}

QTEST_GUILESS_MAIN(TestWindowController)
#include "tst_windowcontroller.moc"
