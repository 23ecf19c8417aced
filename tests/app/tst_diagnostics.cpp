// The diagnostics files: where they are, the form of their lines, the kept descriptor the crash
// handler writes to, the heartbeat, and the lines of the mouse probe.

#include "app/lifecycle/diagnostics.h"
#include "app/lifecycle/heartbeat.h"
#include "app/lifecycle/mouseprobe.h"
#include "tests/testsupport.h"

#include <QFile>
#include <QNativeGestureEvent>
#include <QRegularExpression>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
namespace Diagnostics = kivo::Diagnostics;

namespace {

const QRegularExpression stampedLine(uR"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} (.*)$)"_s);

QStringList messages(const QString &path)
{
    QStringList result;
    for (const QString &line : QString::fromUtf8(kivo::test::readFile(path)).split(u'\n', Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = stampedLine.match(line);
        result.append(match.hasMatch() ? match.captured(1) : u"UNSTAMPED: "_s + line);
    }
    return result;
}

} // namespace

class TestDiagnostics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void folderFollowsStateHome_data();
    void folderFollowsStateHome();
    void linesAreStampedAndAppended();
    void keptDescriptorAppendsBesideOrdinaryLines();
    void logComesBackAfterDeletion();
    void failureToOpenIsIgnored();
    void heartbeatIsReplacedAtEachBeat();
    void mouseProbeLines_data();
    void mouseProbeLines();
    void armedProbeLogsWindowEvents();

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
};

void TestDiagnostics::init()
{
    m_sandbox = std::make_unique<kivo::test::Sandbox>();
    qputenv("XDG_STATE_HOME", (m_sandbox->path() + u"/state"_s).toUtf8());
    ::umask(022);
}

void TestDiagnostics::cleanup()
{
    Diagnostics::close();
    qunsetenv("XDG_STATE_HOME");
    m_sandbox.reset();
}

void TestDiagnostics::folderFollowsStateHome_data()
{
    QTest::addColumn<QString>("stateHome");
    QTest::addColumn<QString>("expected"); // relative to the home folder when it starts with "~"
    QTest::newRow("set") << u"/var/tmp/somewhere"_s << u"/var/tmp/somewhere/Kivo"_s;
    QTest::newRow("unset") << QString() << u"~/.local/state/Kivo"_s;
    QTest::newRow("relative, so ignored") << u"state"_s << u"~/.local/state/Kivo"_s;
}

void TestDiagnostics::folderFollowsStateHome()
{
    QFETCH(QString, stateHome);
    QFETCH(QString, expected);
    if (stateHome.isNull())
        qunsetenv("XDG_STATE_HOME");
    else
        qputenv("XDG_STATE_HOME", stateHome.toUtf8());
    if (expected.startsWith(u'~'))
        expected = QDir::homePath() + expected.mid(1);
    QCOMPARE(Diagnostics::folder(), expected);
    QCOMPARE(Diagnostics::logPath(), expected + u"/diagnostics.log"_s);
    QCOMPARE(Diagnostics::heartbeatPath(), expected + u"/heartbeat.txt"_s);
}

void TestDiagnostics::linesAreStampedAndAppended()
{
    const QDateTime before = QDateTime::currentDateTime();
    Diagnostics::start(u"1.2.3"_s, u"abc123"_s);
    Diagnostics::log(u"note: something happened"_s);
    const QStringList lines = messages(Diagnostics::logPath());
    QCOMPARE(lines, (QStringList{u"=== LAUNCH v1.2.3 (abc123) pid %1 ==="_s.arg(::getpid()), u"note: something happened"_s}));

    // The stamp is local time to the millisecond, at the moment of writing.
    const QString first = QString::fromUtf8(kivo::test::readFile(Diagnostics::logPath())).left(23);
    const QDateTime stamped = QDateTime::fromString(first, u"yyyy-MM-dd HH:mm:ss.zzz"_s);
    QVERIFY(stamped.isValid());
    QVERIFY(stamped >= before.addMSecs(-1) && stamped <= QDateTime::currentDateTime());
    QCOMPARE(Diagnostics::stamp(QDateTime(QDate(2024, 3, 5), QTime(7, 8, 9, 45))), u"2024-03-05 07:08:09.045"_s);
}

void TestDiagnostics::keptDescriptorAppendsBesideOrdinaryLines()
{
    Diagnostics::open();
    const int descriptor = Diagnostics::descriptor();
    QVERIFY(descriptor >= 0);
    const int flags = ::fcntl(descriptor, F_GETFL);
    QCOMPARE(flags & O_ACCMODE, O_WRONLY);
    QVERIFY(flags & O_APPEND);
    struct stat status {};
    QCOMPARE(::fstat(descriptor, &status), 0);
    QCOMPARE(status.st_mode & 0777, 0644u);

    // Lines written both ways land in order: every write goes to the end.
    Diagnostics::log(u"one"_s);
    QCOMPARE(::write(descriptor, "raw\n", 4), 4);
    Diagnostics::log(u"two"_s);
    const QString text = QString::fromUtf8(kivo::test::readFile(Diagnostics::logPath()));
    QVERIFY2(text.contains(u" one\nraw\n"_s) && text.endsWith(u" two\n"_s), qPrintable(text));
}

void TestDiagnostics::logComesBackAfterDeletion()
{
    Diagnostics::start(u"1"_s, u"b"_s);
    QVERIFY(QFile::remove(Diagnostics::logPath()));
    Diagnostics::log(u"after the log was deleted"_s);
    QCOMPARE(messages(Diagnostics::logPath()), QStringList{u"after the log was deleted"_s});
}

void TestDiagnostics::failureToOpenIsIgnored()
{
    // The state folder is a plain file: nothing can be created under it.
    const QString blocked = m_sandbox->path() + u"/blocked"_s;
    kivo::test::writeFile(blocked, "x");
    qputenv("XDG_STATE_HOME", blocked.toUtf8());
    Diagnostics::start(u"1"_s, u"b"_s);
    QCOMPARE(Diagnostics::descriptor(), -1);
    Diagnostics::log(u"goes nowhere"_s);
    QCOMPARE(kivo::test::readFile(blocked), QByteArray("x"));
}

void TestDiagnostics::heartbeatIsReplacedAtEachBeat()
{
    QDir().mkpath(Diagnostics::folder());
    const QRegularExpression form(uR"(^(\d+) (\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}) pid (\d+)\n$)"_s);
    kivo::Heartbeat heartbeat(Diagnostics::heartbeatPath(), 120);
    heartbeat.start();
    const QString first = QString::fromUtf8(kivo::test::readFile(Diagnostics::heartbeatPath()));
    const QRegularExpressionMatch match = form.match(first);
    QVERIFY2(match.hasMatch(), qPrintable(first));
    QCOMPARE(match.captured(3).toLongLong(), QCoreApplication::applicationPid());
    QVERIFY(qAbs(match.captured(1).toLongLong() - QDateTime::currentSecsSinceEpoch()) <= 1);

    QTRY_VERIFY(QString::fromUtf8(kivo::test::readFile(Diagnostics::heartbeatPath())) != first);
    QVERIFY(form.match(QString::fromUtf8(kivo::test::readFile(Diagnostics::heartbeatPath()))).hasMatch());

    heartbeat.stop();
    const QByteArray last = kivo::test::readFile(Diagnostics::heartbeatPath());
    QTest::qWait(400);
    QCOMPARE(kivo::test::readFile(Diagnostics::heartbeatPath()), last);
    QCOMPARE(kivo::Heartbeat::line(QDateTime::fromSecsSinceEpoch(1700000000), 42),
             u"1700000000 "_s + Diagnostics::stamp(QDateTime::fromSecsSinceEpoch(1700000000)) + u" pid 42\n"_s);
}

void TestDiagnostics::mouseProbeLines_data()
{
    QTest::addColumn<std::shared_ptr<QEvent>>("event");
    QTest::addColumn<QString>("line");
    const QPointF at(10, 10);
    const auto wheel = [&](QPoint pixels, QPoint angle) {
        return std::make_shared<QWheelEvent>(at, at, pixels, angle, Qt::NoButton, Qt::NoModifier, Qt::ScrollUpdate, false);
    };
    const auto mouse = [&](QEvent::Type type, Qt::MouseButton button) {
        return std::make_shared<QMouseEvent>(type, at, at, button, button, Qt::NoModifier);
    };
    QTest::newRow("touchpad swipe") << std::shared_ptr<QEvent>(wheel({-12, 0}, {-96, 0})) << u"mouse-probe: swipe dx=-12"_s;
    QTest::newRow("tilt wheel") << std::shared_ptr<QEvent>(wheel({}, {120, 0})) << u"mouse-probe: swipe dx=15"_s;
    QTest::newRow("vertical scroll") << std::shared_ptr<QEvent>(wheel({0, 30}, {0, 120})) << QString();
    QTest::newRow("left press") << std::shared_ptr<QEvent>(mouse(QEvent::MouseButtonPress, Qt::LeftButton)) << QString();
    QTest::newRow("back button") << std::shared_ptr<QEvent>(mouse(QEvent::MouseButtonPress, Qt::BackButton))
                                 << u"mouse-probe: other MouseButtonPress"_s;
    QTest::newRow("double click") << std::shared_ptr<QEvent>(mouse(QEvent::MouseButtonDblClick, Qt::LeftButton))
                                  << u"mouse-probe: other MouseButtonDblClick"_s;
    QTest::newRow("move") << std::shared_ptr<QEvent>(mouse(QEvent::MouseMove, Qt::NoButton)) << QString();
    QTest::newRow("swipe gesture") << std::shared_ptr<QEvent>(std::make_shared<QNativeGestureEvent>(
        Qt::SwipeNativeGesture, QPointingDevice::primaryPointingDevice(), 3, at, at, at, 0.0, QPointF(-40, 0)))
                                   << u"mouse-probe: swipe dx=-40"_s;
    QTest::newRow("pinch") << std::shared_ptr<QEvent>(std::make_shared<QNativeGestureEvent>(
        Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, at, at, at, 0.1, QPointF()))
                           << u"mouse-probe: other NativeGesture"_s;
}

void TestDiagnostics::mouseProbeLines()
{
    QFETCH(std::shared_ptr<QEvent>, event);
    QFETCH(QString, line);
    QCOMPARE(kivo::MouseProbe::describe(event.get()), line);
}

void TestDiagnostics::armedProbeLogsWindowEvents()
{
    Diagnostics::open();
    kivo::MouseProbe probe;
    probe.arm();
    QWindow window;
    QWheelEvent swipe(QPointF(5, 5), QPointF(5, 5), QPoint(7, 0), QPoint(56, 0), Qt::NoButton, Qt::NoModifier, Qt::ScrollUpdate, false);
    QCoreApplication::sendEvent(&window, &swipe);
    QCOMPARE(messages(Diagnostics::logPath()), (QStringList{u"note: mouse-probe: armed"_s, u"mouse-probe: swipe dx=7"_s}));
}

QTEST_MAIN(TestDiagnostics)
#include "tst_diagnostics.moc"
