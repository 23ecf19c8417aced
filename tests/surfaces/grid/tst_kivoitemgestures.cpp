#include "surfaces/grid/kivoitemgestures.h"

#include <QTest>

using namespace kivo;
using namespace kivo::KivoItemGestures;

Q_DECLARE_METATYPE(kivo::KivoItemGestures::ClickAction)
Q_DECLARE_METATYPE(kivo::KivoItemGestures::KeyAction)

/** The order of the click tests and the grid's key table. */
class TestKivoItemGestures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void click_data();
    void click();
    void keys_data();
    void keys();
    void columnSteps_data();
    void columnSteps();
};

void TestKivoItemGestures::click_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("blocked");
    QTest::addColumn<int>("clicks");
    QTest::addColumn<bool>("multi");
    QTest::addColumn<bool>("details");
    QTest::addColumn<ClickAction>("action");
    const Qt::KeyboardModifiers none;
    QTest::newRow("plain click opens") << none << false << 1 << false << false << ClickAction::open;
    QTest::newRow("blocked card ignores even shift")
        << Qt::KeyboardModifiers(Qt::ShiftModifier) << true << 1 << false << false << ClickAction::none;
    QTest::newRow("second click of a double click") << none << false << 2 << false << false << ClickAction::none;
    QTest::newRow("shift ranges") << Qt::KeyboardModifiers(Qt::ShiftModifier) << false << 1 << true << true
                                  << ClickAction::selectRange;
    QTest::newRow("shift wins over control") << Qt::KeyboardModifiers(Qt::ShiftModifier | Qt::ControlModifier) << false
                                             << 1 << false << false << ClickAction::selectRange;
    QTest::newRow("control toggles") << Qt::KeyboardModifiers(Qt::ControlModifier) << false << 1 << false << true
                                     << ClickAction::toggle;
    QTest::newRow("alt shows details") << Qt::KeyboardModifiers(Qt::AltModifier) << false << 1 << true << false
                                       << ClickAction::showDetails;
    QTest::newRow("plain click in a multi-selection toggles")
        << none << false << 1 << true << true << ClickAction::toggleInSelection;
    QTest::newRow("plain click with details open follows")
        << none << false << 1 << false << true << ClickAction::followDetails;
}

void TestKivoItemGestures::click()
{
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, blocked);
    QFETCH(int, clicks);
    QFETCH(bool, multi);
    QFETCH(bool, details);
    QFETCH(ClickAction, action);
    QCOMPARE(clickAction(modifiers, {blocked, clicks, multi, details}), action);
}

void TestKivoItemGestures::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<bool>("multi");
    QTest::addColumn<bool>("focusActive");
    QTest::addColumn<bool>("lightbox");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<KeyAction>("action");
    const Qt::KeyboardModifiers none;
    const Qt::KeyboardModifiers control(Qt::ControlModifier);
    QTest::newRow("control-V pastes") << int(Qt::Key_V) << control << false << false << false << false
                                      << KeyAction::paste;
    QTest::newRow("V alone is not ours") << int(Qt::Key_V) << none << false << false << false << false
                                         << KeyAction::none;
    QTest::newRow("delete trashes the selection")
        << int(Qt::Key_Delete) << none << true << false << false << false << KeyAction::trashSelection;
    QTest::newRow("backspace too") << int(Qt::Key_Backspace) << none << true << false << false << false
                                   << KeyAction::trashSelection;
    QTest::newRow("delete on the focused card")
        << int(Qt::Key_Delete) << none << false << true << false << true << KeyAction::trashFocused;
    QTest::newRow("delete needs an arrow first")
        << int(Qt::Key_Delete) << none << false << false << false << true << KeyAction::none;
    QTest::newRow("delete not under the lightbox")
        << int(Qt::Key_Delete) << none << false << true << true << true << KeyAction::none;
    QTest::newRow("delete with a modifier passes") << int(Qt::Key_Delete) << Qt::KeyboardModifiers(Qt::ShiftModifier)
                                                   << true << true << false << true << KeyAction::none;
    QTest::newRow("control-= fewer columns")
        << int(Qt::Key_Equal) << control << false << false << false << false << KeyAction::fewerColumns;
    QTest::newRow("control-plus fewer columns")
        << int(Qt::Key_Plus) << Qt::KeyboardModifiers(Qt::ControlModifier | Qt::ShiftModifier) << false << false
        << false << false << KeyAction::fewerColumns;
    QTest::newRow("control-minus more columns")
        << int(Qt::Key_Minus) << control << false << false << false << false << KeyAction::moreColumns;
    QTest::newRow("control-return opens the source")
        << int(Qt::Key_Return) << control << false << false << false << false << KeyAction::openSource;
    QTest::newRow("return opens the selected")
        << int(Qt::Key_Return) << none << false << false << false << true << KeyAction::open;
    QTest::newRow("keypad enter opens the selected") << int(Qt::Key_Enter) << Qt::KeyboardModifiers(Qt::KeypadModifier)
                                                     << false << false << false << true << KeyAction::open;
    QTest::newRow("return with nothing selected passes")
        << int(Qt::Key_Return) << none << false << false << false << false << KeyAction::none;
    QTest::newRow("space for the lightbox")
        << int(Qt::Key_Space) << none << false << false << false << false << KeyAction::lightbox;
    QTest::newRow("escape clears a selection")
        << int(Qt::Key_Escape) << none << true << false << false << false << KeyAction::clearSelection;
    QTest::newRow("escape otherwise passes")
        << int(Qt::Key_Escape) << none << false << true << false << true << KeyAction::none;
    QTest::newRow("left") << int(Qt::Key_Left) << none << false << false << false << false << KeyAction::moveLeft;
    QTest::newRow("down") << int(Qt::Key_Down) << none << false << false << false << false << KeyAction::moveDown;
    QTest::newRow("menu key for the selected")
        << int(Qt::Key_Menu) << none << false << false << false << true << KeyAction::menu;
    QTest::newRow("shift-F10 too") << int(Qt::Key_F10) << Qt::KeyboardModifiers(Qt::ShiftModifier) << false << false
                                   << false << true << KeyAction::menu;
    QTest::newRow("F10 alone passes") << int(Qt::Key_F10) << none << false << false << false << true << KeyAction::none;
    QTest::newRow("menu key with nothing selected passes")
        << int(Qt::Key_Menu) << none << false << false << false << false << KeyAction::none;
}

void TestKivoItemGestures::keys()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(bool, multi);
    QFETCH(bool, focusActive);
    QFETCH(bool, lightbox);
    QFETCH(bool, selected);
    QFETCH(KeyAction, action);
    QCOMPARE(keyAction(key, modifiers, {multi, focusActive, lightbox, selected}), action);
}

void TestKivoItemGestures::columnSteps_data()
{
    QTest::addColumn<double>("columns");
    QTest::addColumn<KeyAction>("action");
    QTest::addColumn<double>("expected");
    QTest::newRow("fewer") << 4.0 << KeyAction::fewerColumns << 3.0;
    QTest::newRow("fewer stops at 1") << 1.0 << KeyAction::fewerColumns << 1.0;
    QTest::newRow("more") << 4.0 << KeyAction::moreColumns << 5.0;
    QTest::newRow("more stops at 10") << 10.0 << KeyAction::moreColumns << 10.0;
    QTest::newRow("other keys leave it") << 4.0 << KeyAction::open << 4.0;
}

void TestKivoItemGestures::columnSteps()
{
    QFETCH(double, columns);
    QFETCH(KeyAction, action);
    QFETCH(double, expected);
    QCOMPARE(stepColumns(columns, action), expected);
}

QTEST_GUILESS_MAIN(TestKivoItemGestures)
#include "tst_kivoitemgestures.moc"
