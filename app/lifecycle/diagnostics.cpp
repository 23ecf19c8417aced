#include "app/lifecycle/diagnostics.h"

#include <QDir>
#include <QFile>
#include <QMutex>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo::Diagnostics {

namespace {

// Read by the fatal-signal handler, which can only use what exists before it runs.
volatile int keptDescriptor = -1;

QMutex &writeMutex()
{
    static QMutex mutex;
    return mutex;
}

} // namespace

QString folder()
{
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    // XDG base directories must be absolute; a relative XDG_STATE_HOME is not used.
    if (state.isEmpty() || QDir::isRelativePath(state))
        state = QDir::homePath() + u"/.local/state"_s;
    return state + u"/Kivo"_s;
}

QString logPath()
{
    return folder() + u"/diagnostics.log"_s;
}

QString heartbeatPath()
{
    return folder() + u"/heartbeat.txt"_s;
}

void open()
{
    close();
    QDir().mkpath(folder());
    keptDescriptor = ::open(QFile::encodeName(logPath()).constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

int descriptor()
{
    return keptDescriptor;
}

void close()
{
    if (keptDescriptor >= 0)
        ::close(keptDescriptor);
    keptDescriptor = -1;
}

QString stamp(const QDateTime &time)
{
    return time.toString(u"yyyy-MM-dd HH:mm:ss.zzz"_s);
}

void log(const QString &message)
{
    const QByteArray line = (stamp(QDateTime::currentDateTime()) + u' ' + message + u'\n').toUtf8();
    QMutexLocker lock(&writeMutex());
    QFile file(logPath());
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(line);
}

QString launchLine(const QString &version, const QString &build, qint64 pid)
{
    return u"=== LAUNCH v%1 (%2) pid %3 ==="_s.arg(version, build).arg(pid);
}

QString cleanTerminateLine()
{
    return u"=== CLEAN TERMINATE ==="_s;
}

void start(const QString &version, const QString &build)
{
    open();
    log(launchLine(version, build, qint64(::getpid())));
}

} // namespace kivo::Diagnostics
