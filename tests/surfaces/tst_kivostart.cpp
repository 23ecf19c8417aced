// Runs the real kivo binary offscreen and watches the library folder: a library that was opened
// before and is gone must never be replaced while the start waits for the user.

#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QtTest>

using namespace Qt::StringLiterals;

class TestKivoStart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void missingLibraryIsNeverRecreated_data();
    void missingLibraryIsNeverRecreated();
};

void TestKivoStart::missingLibraryIsNeverRecreated_data()
{
    QTest::addColumn<bool>("everOpened");
    QTest::addColumn<QString>("presenceLine");
    QTest::addColumn<bool>("libraryExpected");
    // The first run is the control: the same start does make a library when none was ever opened.
    QTest::newRow("opened before, now missing") << true << u"[LibraryPresence] missing at "_s << false;
    QTest::newRow("first run") << false << u"[LibraryPresence] firstRun at "_s << true;
}

void TestKivoStart::missingLibraryIsNeverRecreated()
{
    QFETCH(bool, everOpened);
    QFETCH(QString, presenceLine);
    QFETCH(bool, libraryExpected);

    kivo::test::Sandbox sandbox;
    {
        kivo::UserDefaults defaults;
        defaults.setValue(u"libraryEverOpened"_s, everOpened);
        defaults.sync();
    }
    const QString database = sandbox.libraryRoot() + u"/library.sqlite"_s;

    QProcess kivo;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, sandbox.path());
    environment.insert(u"XDG_CONFIG_HOME"_s, sandbox.path() + u"/config"_s);
    environment.insert(u"XDG_DATA_HOME"_s, sandbox.path() + u"/data"_s);
    environment.insert(u"XDG_STATE_HOME"_s, sandbox.path() + u"/state"_s);
    environment.insert(u"XDG_CACHE_HOME"_s, sandbox.path() + u"/cache"_s);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    kivo.setProcessEnvironment(environment);
    kivo.setProcessChannelMode(QProcess::SeparateChannels);
    kivo.start(QStringLiteral(KIVO_BINARY), {});
    QVERIFY(kivo.waitForStarted());

    QByteArray errors;
    const auto sawPresence = [&] {
        errors += kivo.readAllStandardError();
        return QString::fromUtf8(errors).contains(presenceLine + sandbox.libraryRoot());
    };
    QTRY_VERIFY_WITH_TIMEOUT(sawPresence(), 10000);
    if (libraryExpected) {
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(database), 10000);
    } else {
        // The window waits for an answer; give a silent start every chance to happen.
        QTest::qWait(1500);
        QCOMPARE(kivo.state(), QProcess::Running);
        QVERIFY(!QFileInfo::exists(database));
        QVERIFY(!QFileInfo::exists(sandbox.libraryRoot()));
    }
    QCOMPARE(kivo.state(), QProcess::Running);
    kivo.kill();
    kivo.waitForFinished();
}

QTEST_GUILESS_MAIN(TestKivoStart)
#include "tst_kivostart.moc"
