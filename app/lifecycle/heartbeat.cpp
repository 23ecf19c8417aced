#include "app/lifecycle/heartbeat.h"

#include "app/lifecycle/diagnostics.h"

#include <QCoreApplication>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace kivo {

Heartbeat::Heartbeat(const QString &path, int intervalMs, QObject *parent)
    : QObject(parent)
    , m_path(path)
{
    m_timer.setInterval(intervalMs);
    m_timer.setTimerType(Qt::CoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Heartbeat::beat);
}

void Heartbeat::start()
{
    // The first beat at once: a run that dies within the first interval still leaves its time.
    beat();
    m_timer.start();
}

void Heartbeat::stop()
{
    m_timer.stop();
}

QString Heartbeat::line(const QDateTime &time, qint64 pid)
{
    return u"%1 %2 pid %3\n"_s.arg(time.toSecsSinceEpoch()).arg(Diagnostics::stamp(time)).arg(pid);
}

void Heartbeat::beat()
{
    // Written beside and renamed over, so a reader never sees half a line.
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(line(QDateTime::currentDateTime(), QCoreApplication::applicationPid()).toUtf8());
    file.commit();
}

} // namespace kivo
