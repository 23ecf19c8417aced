#pragma once

// Runs the real kivo binary in a sandbox of its own (home, configuration, state and runtime
// folders), and seeds libraries for it to open.

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/records.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtTest>

#include <csignal>

namespace kivo::test {

/** The environment that points a child's every folder into the sandbox. */
inline QProcessEnvironment sandboxEnvironment(const Sandbox &sandbox, const QString &platform = QStringLiteral("offscreen"))
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString base = sandbox.path();
    environment.insert(QStringLiteral("HOME"), base);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), base + QStringLiteral("/config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), base + QStringLiteral("/data"));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), base + QStringLiteral("/state"));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), base + QStringLiteral("/cache"));
    const QString runtime = base + QStringLiteral("/run");
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    return environment;
}

inline QString diagnosticsLog(const Sandbox &sandbox)
{
    return sandbox.path() + QStringLiteral("/state/Kivo/diagnostics.log");
}

inline QString heartbeatFile(const Sandbox &sandbox)
{
    return sandbox.path() + QStringLiteral("/state/Kivo/heartbeat.txt");
}

inline int countOf(const QString &text, const QString &part)
{
    return int(text.count(part));
}

/** One run of the windowed application. */
class KivoRun
{
public:
    explicit KivoRun(const Sandbox &sandbox, const QString &platform = QStringLiteral("offscreen"))
        : m_sandbox(sandbox)
    {
        m_process.setProcessEnvironment(sandboxEnvironment(sandbox, platform));
    }
    ~KivoRun()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    /** Starts and waits until the launch line of this process is in the log. */
    bool start(const QStringList &arguments = {})
    {
        const int launchesBefore = countOf(QString::fromUtf8(readFile(diagnosticsLog(m_sandbox))), QStringLiteral("=== LAUNCH v"));
        m_process.start(QStringLiteral(KIVO_BINARY), arguments);
        if (!m_process.waitForStarted())
            return false;
        m_pid = m_process.processId(); // QProcess forgets it once the process has ended
        QElapsedTimer clock;
        clock.start();
        const QString mine = QStringLiteral(") pid %1 ===").arg(pid());
        while (clock.elapsed() < 20000) {
            const QString log = QString::fromUtf8(readFile(diagnosticsLog(m_sandbox)));
            if (countOf(log, QStringLiteral("=== LAUNCH v")) > launchesBefore && log.contains(mine))
                return true;
            if (m_process.state() == QProcess::NotRunning) {
                explainFailedStart(QStringLiteral("ended before its launch line"));
                return false;
            }
            QTest::qWait(50);
        }
        explainFailedStart(QStringLiteral("wrote no launch line in 20 s"));
        return false;
    }

    /** What a start that failed left behind, for the test's output: a rare failure is read from there. */
    void explainFailedStart(const QString &what)
    {
        if (m_process.state() != QProcess::NotRunning) {
            // Where it stands: the main thread's stack, when a debugger is at hand.
            QProcess gdb;
            gdb.start(QStringLiteral("gdb"), {QStringLiteral("-batch"), QStringLiteral("-p"), QString::number(m_pid),
                                                QStringLiteral("-ex"), QStringLiteral("thread apply all bt 12")});
            if (gdb.waitForFinished(30000))
                qWarning().noquote() << "kivo's threads:\n" << QString::fromLocal8Bit(gdb.readAllStandardOutput());
        }
        qWarning().noquote() << "kivo (pid" << m_pid << ")" << what << "\nits output:\n"
                             << QString::fromLocal8Bit(m_process.readAllStandardOutput() + m_process.readAllStandardError())
                             << "\nthe diagnostics log:\n" << QString::fromUtf8(readFile(diagnosticsLog(m_sandbox)));
    }

    [[nodiscard]] qint64 pid() const { return m_pid; }
    void signal(int number) { ::kill(pid_t(m_pid), number); }
    bool waitForFinished(int ms = 30000) { return m_process.waitForFinished(ms); }
    QProcess &process() { return m_process; }

private:
    const Sandbox &m_sandbox;
    QProcess m_process;
    qint64 m_pid = 0;
};

/** A library in the browsable layout, with two pictures and a link, as a window would leave it. */
inline QList<LibraryItem> seedLibrary(const Sandbox &sandbox)
{
    const QString root = sandbox.libraryRoot();
    UserDefaults defaults;
    defaults.setValue(QStringLiteral("libraryReorganised"), true);
    defaults.setValue(QStringLiteral("libraryEverOpened"), true);
    defaults.sync();
    QDir().mkpath(root + QStringLiteral("/items"));
    auto queue = DatabaseQueue::open(root + QStringLiteral("/library.sqlite"));
    QList<LibraryItem> items;
    const double addedAt = 1700000000; // November 2023
    for (const QString &title : {QStringLiteral("Harbour at dusk"), QStringLiteral("Blue stairwell")}) {
        LibraryItem item;
        item.id = newIdentifier();
        item.kind = QStringLiteral("image");
        item.title = title;
        item.createdAt = item.addedAt = item.modifiedAt = addedAt;
        const NewFileLocation location = LibraryLocation::newFileLocation(root + QStringLiteral("/items"), true, item.id, title,
                                                                          QStringLiteral("png"), addedAt);
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        image.save(location.absolutePath);
        item.filePath = location.relativePath;
        items.append(item);
    }
    LibraryItem link;
    link.id = newIdentifier();
    link.kind = QStringLiteral("link");
    link.title = QStringLiteral("A saved page");
    link.sourceURL = QStringLiteral("https://example.org/page");
    link.createdAt = link.addedAt = link.modifiedAt = addedAt;
    items.append(link);
    queue->write([&](Database &db) {
        for (const LibraryItem &item : std::as_const(items))
            db.insert(item);
    });
    return items;
}

} // namespace kivo::test
