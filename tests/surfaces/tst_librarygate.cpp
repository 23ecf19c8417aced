// Drives the missing-library window with real clicks and keys on a library that was opened
// before and is gone, and checks what each answer leaves in the settings and on disk.

#include "core/librarylocation.h"
#include "core/userdefaults.h"
#include "surfaces/gate/librarygate.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "tests/surfaces/quickhelpers.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QQmlApplicationEngine>
#include <QSignalSpy>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using kivo::LibraryGate;
using kivo::test::clickItem;
using kivo::test::findItem;
using kivo::test::isShown;

namespace {

/** A library that was opened before and is now gone, and the gate window asking about it. */
struct MissingLibrary {
    kivo::test::Sandbox sandbox;
    kivo::AppearanceController appearance;
    std::unique_ptr<LibraryGate> gate;
    std::unique_ptr<QQmlApplicationEngine> engine;
    QQuickWindow *window = nullptr;

    void open()
    {
        kivo::UserDefaults().setValue(u"libraryEverOpened"_s, true);
        QVERIFY(!QFileInfo::exists(sandbox.libraryRoot()));
        kivo::QmlServices::publishAppearance(&appearance);
        gate = std::make_unique<LibraryGate>(kivo::LibraryLocation::root());
        engine = std::make_unique<QQmlApplicationEngine>();
        kivo::QmlServices::prepareEngine(*engine);
        engine->setInitialProperties({{u"gate"_s, QVariant::fromValue(gate.get())}});
        engine->load(QUrl(u"qrc:/Kivo/gate/GateWindow.qml"_s));
        QVERIFY(!engine->rootObjects().isEmpty());
        window = qobject_cast<QQuickWindow *>(engine->rootObjects().constFirst());
        QVERIFY(window);
        QVERIFY(QTest::qWaitForWindowExposed(window));
    }

    [[nodiscard]] QQuickItem *item(const QString &path) const
    {
        // "view/child": a child of one of the three views, which share names.
        QQuickItem *found = window->contentItem();
        for (const QString &name : path.split(u'/'))
            found = findItem(found, name);
        return found;
    }

    [[nodiscard]] QString text(const QString &path) const
    {
        QQuickItem *found = item(path);
        return found ? found->property("text").toString() : u"<missing %1>"_s.arg(path);
    }

    void typeIntoField(const QString &folder) const
    {
        QQuickItem *field = item(u"relocationPanel/folderField"_s);
        clickItem(window, field);
        QTRY_VERIFY(field->hasActiveFocus());
        QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Backspace);
        // QTest types strings only into widgets; a window gets them one key at a time.
        for (const QChar character : folder)
            QTest::keyClick(window, character.toLatin1());
        QCOMPARE(field->property("text").toString(), folder);
    }
};

} // namespace

class TestLibraryGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alertSaysWhereTheLibraryShouldBe();
    void folderWithoutLibraryIsRefused();
    void cancelledChoiceShowsTheAlertAgain();
    void chosenLibraryIsStored();
    void startNewLibraryForgetsTheOldOne();
    void quitLeavesEverythingAsItWas();
    void closingTheWindowQuits();
};

void TestLibraryGate::alertSaysWhereTheLibraryShouldBe()
{
    MissingLibrary missing;
    missing.open();
    QVERIFY(isShown(missing.item(u"missingAlert"_s)));
    QCOMPARE(missing.text(u"missingAlert/alertTitle"_s), u"Kivo can’t find your library"_s);
    QCOMPARE(missing.text(u"missingAlert/alertText"_s),
             u"It should be here:\n\n"_s + missing.sandbox.libraryRoot()
                 + u"\n\nIf you moved or renamed the folder, choose where it is now. If it lives on a drive that "
                   "isn’t plugged in, plug it in and choose it, or quit and open Kivo again later.\n\nNothing has "
                   "been deleted, and Kivo won’t start a new library unless you ask it to."_s);
    const QStringList buttons{u"Choose Library…"_s, u"Quit"_s, u"Start a New Library"_s};
    qreal previousY = -1;
    for (int index = 0; index < buttons.size(); ++index) {
        QQuickItem *button = missing.item(u"missingAlert/choice-%1"_s.arg(index));
        QVERIFY(isShown(button));
        QCOMPARE(button->property("text").toString(), buttons.at(index));
        QVERIFY(button->mapToScene(QPointF()).y() > previousY);
        previousY = button->mapToScene(QPointF()).y();
    }
    QDir().mkpath(QStringLiteral(KIVO_SCREENSHOT_DIR));
    QVERIFY(missing.window->grabWindow().save(QStringLiteral(KIVO_SCREENSHOT_DIR "/gate-missing.png")));
}

void TestLibraryGate::folderWithoutLibraryIsRefused()
{
    MissingLibrary missing;
    missing.open();
    // Return takes the first choice, which has the focus when the alert opens.
    QTest::keyClick(missing.window, Qt::Key_Return);
    QTRY_VERIFY(isShown(missing.item(u"relocationPanel"_s)));
    QCOMPARE(missing.window->title(), u"Choose Your Kivo Library"_s);
    QCOMPARE(missing.text(u"relocationPanel/chooserMessage"_s),
             u"Select the Kivo Library folder - the one containing library.sqlite."_s);
    QCOMPARE(missing.text(u"relocationPanel/chooseButton"_s), u"Choose"_s);
    // The chooser starts in the folder that held the library.
    QCOMPARE(missing.text(u"relocationPanel/folderField"_s), missing.sandbox.path());
    QVERIFY(missing.window->grabWindow().save(QStringLiteral(KIVO_SCREENSHOT_DIR "/gate-chooser.png")));

    const QString elsewhere = missing.sandbox.path() + u"/Somewhere Else"_s;
    QVERIFY(QDir().mkpath(elsewhere));
    missing.typeIntoField(elsewhere);
    clickItem(missing.window, missing.item(u"relocationPanel/chooseButton"_s));
    QTRY_VERIFY(isShown(missing.item(u"refusalAlert"_s)));
    QCOMPARE(missing.text(u"refusalAlert/alertTitle"_s), u"That folder isn’t a Kivo library"_s);
    QCOMPARE(missing.text(u"refusalAlert/alertText"_s),
             u"Somewhere Else has no library.sqlite in it. Look for the folder called “Kivo Library”, or the one "
             "you renamed it to."_s);
    QVERIFY(missing.window->grabWindow().save(QStringLiteral(KIVO_SCREENSHOT_DIR "/gate-refusal.png")));

    clickItem(missing.window, missing.item(u"refusalAlert/choice-0"_s));
    QTRY_VERIFY(isShown(missing.item(u"missingAlert"_s)));
    QCOMPARE(missing.gate->outcome(), LibraryGate::Outcome::Undecided);
    QCOMPARE(kivo::UserDefaults().stringValue(u"libraryPath"_s), missing.sandbox.libraryRoot());
}

void TestLibraryGate::cancelledChoiceShowsTheAlertAgain()
{
    MissingLibrary missing;
    missing.open();
    clickItem(missing.window, missing.item(u"missingAlert/choice-0"_s));
    QTRY_VERIFY(isShown(missing.item(u"relocationPanel"_s)));
    QTest::keyClick(missing.window, Qt::Key_Escape);
    QTRY_VERIFY(isShown(missing.item(u"missingAlert"_s)));
    QVERIFY(!missing.item(u"relocationPanel"_s)->isVisible());

    clickItem(missing.window, missing.item(u"missingAlert/choice-0"_s));
    QTRY_VERIFY(isShown(missing.item(u"relocationPanel"_s)));
    clickItem(missing.window, missing.item(u"relocationPanel/cancelButton"_s));
    QTRY_VERIFY(isShown(missing.item(u"missingAlert"_s)));
    QCOMPARE(missing.gate->outcome(), LibraryGate::Outcome::Undecided);
}

void TestLibraryGate::chosenLibraryIsStored()
{
    MissingLibrary missing;
    missing.open();
    const QString moved = missing.sandbox.path() + u"/Moved Library"_s;
    kivo::test::writeFile(moved + u"/library.sqlite"_s, "SQLite format 3");
    QSignalSpy finished(missing.gate.get(), &LibraryGate::finished);

    clickItem(missing.window, missing.item(u"missingAlert/choice-0"_s));
    QTRY_VERIFY(isShown(missing.item(u"relocationPanel"_s)));
    missing.typeIntoField(moved);
    QTest::keyClick(missing.window, Qt::Key_Return);

    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(missing.gate->outcome(), LibraryGate::Outcome::Relocated);
    kivo::UserDefaults defaults;
    QCOMPARE(defaults.stringValue(u"libraryPath"_s), moved);
    QVERIFY(defaults.boolValue(u"libraryEverOpened"_s));
    QCOMPARE(kivo::LibraryLocation::root(), moved);
    QTRY_VERIFY(!missing.window->isVisible());
}

void TestLibraryGate::startNewLibraryForgetsTheOldOne()
{
    MissingLibrary missing;
    missing.open();
    QSignalSpy finished(missing.gate.get(), &LibraryGate::finished);
    clickItem(missing.window, missing.item(u"missingAlert/choice-2"_s));
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(missing.gate->outcome(), LibraryGate::Outcome::StartNew);
    QVERIFY(!kivo::UserDefaults().boolValue(u"libraryEverOpened"_s, true));
    // The start makes the new library afterwards, at the same place; the gate itself makes nothing.
    QCOMPARE(kivo::LibraryLocation::root(), missing.sandbox.libraryRoot());
    QVERIFY(!QFileInfo::exists(missing.sandbox.libraryRoot()));
}

void TestLibraryGate::quitLeavesEverythingAsItWas()
{
    MissingLibrary missing;
    missing.open();
    QSignalSpy finished(missing.gate.get(), &LibraryGate::finished);
    QTest::keyClick(missing.window, Qt::Key_Tab);
    QTest::keyClick(missing.window, Qt::Key_Space);
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(missing.gate->outcome(), LibraryGate::Outcome::Quit);
    QVERIFY(kivo::UserDefaults().boolValue(u"libraryEverOpened"_s));
    QVERIFY(!QFileInfo::exists(missing.sandbox.libraryRoot()));
}

void TestLibraryGate::closingTheWindowQuits()
{
    MissingLibrary missing;
    missing.open();
    QSignalSpy finished(missing.gate.get(), &LibraryGate::finished);
    missing.window->close();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(missing.gate->outcome(), LibraryGate::Outcome::Quit);
    QVERIFY(!QFileInfo::exists(missing.sandbox.libraryRoot()));
}

QTEST_MAIN(TestLibraryGate)
#include "tst_librarygate.moc"
