// Crashes a child process that runs Kivo's crash capture, and reads what it left: the banner and
// a real backtrace in diagnostics.log, and a death by the same signal, so that the system's own
// crash handling still takes place.

#include "app/lifecycle/crashcapture.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QRegularExpression>
#include <QtTest>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>

extern char **environ;

using namespace Qt::StringLiterals;

namespace {

/** Runs the child with an environment of its own and returns its wait status. */
int runChild(const QString &how, const QString &stateHome)
{
    const QByteArray program = QByteArrayLiteral(KIVO_CRASHCHILD);
    const QByteArray mode = how.toUtf8();
    char *arguments[] = {const_cast<char *>(program.constData()), const_cast<char *>(mode.constData()), nullptr};
    QList<QByteArray> variables;
    for (char **entry = environ; *entry; ++entry) {
        if (!QByteArray(*entry).startsWith("XDG_STATE_HOME="))
            variables.append(*entry);
    }
    variables.append("XDG_STATE_HOME=" + stateHome.toUtf8());
    variables.append("QT_QPA_PLATFORM=offscreen");
    QList<char *> environment;
    for (QByteArray &variable : variables)
        environment.append(variable.data());
    environment.append(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, program.constData(), nullptr, nullptr, arguments, environment.data()) != 0)
        return -1;
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        return -1;
    return status;
}

} // namespace

class TestCrashCapture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fatalSignalLeavesBacktraceAndDiesBySignal_data();
    void fatalSignalLeavesBacktraceAndDiesBySignal();
    void uncaughtExceptionIsNamed();
    void reportNamesTypeAndReason();
};

void TestCrashCapture::fatalSignalLeavesBacktraceAndDiesBySignal_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("frame"); // a function that must appear in the backtrace, or empty
    QTest::newRow("segmentation fault") << u"segfault"_s << SIGSEGV << u"kivo_crashchild_segfault"_s;
    QTest::newRow("division by zero") << u"divide"_s << SIGFPE << u"kivo_crashchild_divide"_s;
    QTest::newRow("abort") << u"abort"_s << SIGABRT << u"abort"_s;
    QTest::newRow("bus error raised") << u"bus"_s << SIGBUS << u"main"_s;
}

void TestCrashCapture::fatalSignalLeavesBacktraceAndDiesBySignal()
{
    QFETCH(QString, how);
    QFETCH(int, signal);
    QFETCH(QString, frame);
    kivo::test::Sandbox sandbox;
    const QString state = sandbox.path() + u"/state"_s;

    const int status = runChild(how, state);
    QVERIFY2(WIFSIGNALED(status), qPrintable(u"status %1"_s.arg(status)));
    QCOMPARE(WTERMSIG(status), signal);

    const QString log = QString::fromUtf8(kivo::test::readFile(state + u"/Kivo/diagnostics.log"_s));
    QVERIFY2(QRegularExpression(uR"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} === LAUNCH v9\.9\.9 \(test\) pid \d+ ===\n)"_s).match(log).hasMatch(),
             qPrintable(log));
    const qsizetype banner = log.indexOf(u"\n*** FATAL SIGNAL CAUGHT ***\n"_s);
    QVERIFY2(banner > 0, qPrintable(log));
    // backtrace_symbols_fd writes one "object(symbol+offset) [address]" line per frame.
    const QStringList frames = log.mid(banner).split(u'\n', Qt::SkipEmptyParts).mid(1);
    QVERIFY2(frames.size() >= 3, qPrintable(log));
    const QRegularExpression frameLine(uR"(^.+\(.*\) ?\[0x[0-9a-f]+\]$)"_s);
    for (const QString &line : frames)
        QVERIFY2(frameLine.match(line).hasMatch(), qPrintable(line));
    QVERIFY2(log.mid(banner).contains(frame), qPrintable(log));
}

void TestCrashCapture::uncaughtExceptionIsNamed()
{
    kivo::test::Sandbox sandbox;
    const QString state = sandbox.path() + u"/state"_s;
    const int status = runChild(u"throw"_s, state);
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGABRT);

    const QString log = QString::fromUtf8(kivo::test::readFile(state + u"/Kivo/diagnostics.log"_s));
    const qsizetype report = log.indexOf(u" *** UNCAUGHT EXCEPTION std::runtime_error: the library shelf fell over\n"_s);
    QVERIFY2(report > 0, qPrintable(log));
    // The stack follows the report, and the abort after it is caught as a fatal signal too.
    const qsizetype banner = log.indexOf(u"*** FATAL SIGNAL CAUGHT ***"_s);
    QVERIFY(banner > report);
    QVERIFY2(log.mid(report, banner - report).contains(u"kivo_crashchild_throw"_s), qPrintable(log));
}

void TestCrashCapture::reportNamesTypeAndReason()
{
    const QString report = kivo::CrashCapture::uncaughtExceptionReport(std::make_exception_ptr(std::out_of_range("item 7")));
    QVERIFY2(report.startsWith(u"*** UNCAUGHT EXCEPTION std::out_of_range: item 7\n"_s), qPrintable(report));
    const QString unusual = kivo::CrashCapture::uncaughtExceptionReport(std::make_exception_ptr(42));
    QVERIFY2(unusual.startsWith(u"*** UNCAUGHT EXCEPTION int: (not a std::exception)\n"_s), qPrintable(unusual));
}

QTEST_GUILESS_MAIN(TestCrashCapture)
#include "tst_crashcapture.moc"
