// The real kivo binary, started offscreen on a seeded library: how it ends (a signal is a clean
// quit, a kill is not), what it leaves in the diagnostics, how a second launch is answered, and
// the window-less backup run.

#include "tests/app/kivoprocess.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using kivo::test::KivoRun;
using kivo::test::Sandbox;

class TestKivoProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalQuitsCleanlyAndRefreshesSidecars_data();
    void signalQuitsCleanlyAndRefreshesSidecars();
    void killLeavesNoTerminateLine();
    void settingsLockLeftByAKillDoesNotHoldTheNextLaunch();
    void heartbeatNamesTheProcess();
    void secondLaunchHandsOffAndIsRefused();
    void scheduledBackupRunsWithoutWindow_data();
    void scheduledBackupRunsWithoutWindow();
};

void TestKivoProcess::signalQuitsCleanlyAndRefreshesSidecars_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << int(SIGTERM);
    QTest::newRow("SIGINT") << int(SIGINT);
}

void TestKivoProcess::signalQuitsCleanlyAndRefreshesSidecars()
{
    QFETCH(int, signal);
    Sandbox sandbox;
    const QList<kivo::LibraryItem> items = kivo::test::seedLibrary(sandbox);
    // A sidecar of an item that is gone: the refresh must remove it.
    const QString stale = sandbox.libraryRoot() + u"/items/2019-05/forgotten.kivo.json"_s;
    kivo::test::writeFile(stale, "{}");

    KivoRun kivo(sandbox);
    QVERIFY(kivo.start());
    kivo.signal(signal);
    QVERIFY(kivo.waitForFinished());
    QCOMPARE(kivo.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(kivo.process().exitCode(), 0);

    const QString log = QString::fromUtf8(kivo::test::readFile(kivo::test::diagnosticsLog(sandbox)));
    const QStringList lines = log.split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 2);
    const QRegularExpression launch(uR"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} === LAUNCH v%1 \([^ ()]+\) pid %2 ===$)"_s
                                        .arg(QRegularExpression::escape(QStringLiteral(KIVO_VERSION)))
                                        .arg(kivo.pid()));
    QVERIFY2(launch.match(lines.at(0)).hasMatch(), qPrintable(log));
    QVERIFY2(QRegularExpression(uR"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} === CLEAN TERMINATE ===$)"_s).match(lines.at(1)).hasMatch(),
             qPrintable(log));

    QVERIFY(!QFile::exists(stale));
    for (const kivo::LibraryItem &item : items) {
        // Files keep their sidecar beside them; a link's goes into the month of its addition.
        const QString sidecar = item.filePath ? sandbox.libraryRoot() + u"/items/"_s + item.filePath->section(u'.', 0, -2) + u".kivo.json"_s
                                              : sandbox.libraryRoot() + u"/items/2023-11/a-saved-page.kivo.json"_s;
        const QJsonObject object = QJsonDocument::fromJson(kivo::test::readFile(sidecar)).object();
        QCOMPARE(object.value(u"id"_s).toString(), item.id);
    }
    const QJsonObject manifest = QJsonDocument::fromJson(kivo::test::readFile(sandbox.libraryRoot() + u"/library.kivo.json"_s)).object();
    QCOMPARE(manifest.value(u"version"_s).toInt(), 1);
}

void TestKivoProcess::killLeavesNoTerminateLine()
{
    Sandbox sandbox;
    kivo::test::seedLibrary(sandbox);
    {
        KivoRun killed(sandbox);
        QVERIFY(killed.start());
        killed.signal(SIGKILL);
        QVERIFY(killed.waitForFinished());
        QCOMPARE(killed.process().exitStatus(), QProcess::CrashExit);
    }
    // The kernel dropped the library lock with the process: the next start is not refused.
    KivoRun next(sandbox);
    QVERIFY(next.start());
    next.signal(SIGTERM);
    QVERIFY(next.waitForFinished());

    const QStringList lines = QString::fromUtf8(kivo::test::readFile(kivo::test::diagnosticsLog(sandbox))).split(u'\n', Qt::SkipEmptyParts);
    QStringList events;
    for (const QString &line : lines)
        events.append(line.contains(u"=== LAUNCH v"_s) ? u"launch"_s : line.contains(u"=== CLEAN TERMINATE ==="_s) ? u"terminate"_s : u"other"_s);
    QCOMPARE(events, (QStringList{u"launch"_s, u"launch"_s, u"terminate"_s}));
    QVERIFY(lines.at(1).endsWith(u" pid %1 ==="_s.arg(next.pid())));
}

void TestKivoProcess::settingsLockLeftByAKillDoesNotHoldTheNextLaunch()
{
    Sandbox sandbox;
    kivo::test::seedLibrary(sandbox);
    // Killed between creating the settings' lock and writing its name in it: an empty lock, which
    // Qt alone would honour for 30 seconds.
    const QString lock = sandbox.path() + u"/config/Kivo/Kivo.conf.lock"_s;
    QVERIFY(QDir().mkpath(QFileInfo(lock).path()));
    kivo::test::writeFile(lock, QByteArray());
    QElapsedTimer clock;
    clock.start();
    KivoRun kivo(sandbox);
    QVERIFY(kivo.start());
    QVERIFY2(clock.elapsed() < 15000, qPrintable(QString::number(clock.elapsed())));
    QTRY_VERIFY(!QFile::exists(lock) || QFileInfo(lock).size() > 0);
    kivo.signal(SIGTERM);
    QVERIFY(kivo.waitForFinished());
    QCOMPARE(kivo.process().exitCode(), 0);
}

void TestKivoProcess::heartbeatNamesTheProcess()
{
    Sandbox sandbox;
    kivo::test::seedLibrary(sandbox);
    KivoRun kivo(sandbox);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    QVERIFY(kivo.start());
    QTRY_VERIFY(QFile::exists(kivo::test::heartbeatFile(sandbox)));
    const QString beat = QString::fromUtf8(kivo::test::readFile(kivo::test::heartbeatFile(sandbox)));
    const QRegularExpressionMatch match =
        QRegularExpression(uR"(^(\d+) (\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)\.\d{3} pid (\d+)\n$)"_s).match(beat);
    QVERIFY2(match.hasMatch(), qPrintable(beat));
    const qint64 seconds = match.captured(1).toLongLong();
    QVERIFY(seconds >= before && seconds <= QDateTime::currentSecsSinceEpoch());
    // Both times are the same moment: the stamp is the local reading of the seconds.
    QCOMPARE(QDateTime::fromSecsSinceEpoch(seconds).toString(u"yyyy-MM-dd HH:mm:ss"_s), match.captured(2));
    QCOMPARE(match.captured(3).toLongLong(), kivo.pid());
    kivo.signal(SIGTERM);
    QVERIFY(kivo.waitForFinished());
}

void TestKivoProcess::secondLaunchHandsOffAndIsRefused()
{
    Sandbox sandbox;
    kivo::test::seedLibrary(sandbox);
    KivoRun first(sandbox);
    QVERIFY(first.start());

    QProcess second;
    second.setProcessEnvironment(kivo::test::sandboxEnvironment(sandbox));
    second.start(QStringLiteral(KIVO_BINARY), {});
    QVERIFY(second.waitForStarted());
    const qint64 secondPid = second.processId();
    QVERIFY(second.waitForFinished(20000));
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 1);
    const QString errors = QString::fromUtf8(second.readAllStandardError());
    const QString refusal = u"kivo: The library at %1 is already open in another Kivo process (pid %2).\n"_s.arg(sandbox.libraryRoot()).arg(first.pid());
    QVERIFY2(errors.endsWith(refusal), qPrintable(errors));
    QCOMPARE(kivo::test::countOf(errors, u"kivo: "_s), 1);

    // The first process showed its window for the second; the second never started diagnostics.
    const QString log = QString::fromUtf8(kivo::test::readFile(kivo::test::diagnosticsLog(sandbox)));
    QTRY_VERIFY(QString::fromUtf8(kivo::test::readFile(kivo::test::diagnosticsLog(sandbox)))
                    .contains(u" note: window shown for another launch (pid %1)\n"_s.arg(secondPid)));
    QCOMPARE(kivo::test::countOf(log, u"=== LAUNCH v"_s), 1);
    QCOMPARE(first.process().state(), QProcess::Running);
    first.signal(SIGTERM);
    QVERIFY(first.waitForFinished());
    QCOMPARE(first.process().exitCode(), 0);
}

void TestKivoProcess::scheduledBackupRunsWithoutWindow_data()
{
    QTest::addColumn<QVariant>("scrollBars"); // what the setting held before
    QTest::newRow("unset") << QVariant();
    QTest::newRow("always") << QVariant(u"Always"_s);
    QTest::newRow("automatic") << QVariant(u"Automatic"_s);
}

void TestKivoProcess::scheduledBackupRunsWithoutWindow()
{
    QFETCH(QVariant, scrollBars);
    Sandbox sandbox;
    kivo::test::seedLibrary(sandbox);
    {
        kivo::UserDefaults defaults;
        if (scrollBars.isValid())
            defaults.setValue(u"AppleShowScrollBars"_s, scrollBars);
        defaults.sync();
    }
    QProcess job;
    // No display at all: a window would fail to open.
    job.setProcessEnvironment(kivo::test::sandboxEnvironment(sandbox, u"xcb"_s));
    QProcessEnvironment environment = job.processEnvironment();
    environment.remove(u"DISPLAY"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    job.setProcessEnvironment(environment);
    job.start(QStringLiteral(KIVO_BINARY), {u"--run-scheduled-backup"_s});
    QVERIFY(job.waitForFinished(20000));
    QCOMPARE(job.exitStatus(), QProcess::NormalExit);
    QCOMPARE(job.exitCode(), 0);
    QVERIFY(QString::fromUtf8(job.readAllStandardError()).contains(u"[Backup] scheduled run for "_s));
    QVERIFY(!QFile::exists(kivo::test::diagnosticsLog(sandbox)));

    kivo::UserDefaults defaults;
    QCOMPARE(defaults.stringValue(u"AppleShowScrollBars"_s), u"Automatic"_s);
}

QTEST_GUILESS_MAIN(TestKivoProcess)
#include "tst_kivoprocess.moc"
