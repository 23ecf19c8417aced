#include "app/lifecycle/memorywatch.h"

#include "core/heaptrim.h"
#include "core/memorycaches.h"

#include <QFile>
#include <QGuiApplication>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo {

MemoryWatch::MemoryWatch(QObject *parent)
    : QObject(parent)
{
    m_idlePurge.setSingleShot(true);
    m_idlePurge.setInterval(defaultIdleDelayMs);
    connect(&m_idlePurge, &QTimer::timeout, this, [this] { purge(u"idle"_s); });
    m_poll.setInterval(defaultPollMs);
    m_poll.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_poll, &QTimer::timeout, this, &MemoryWatch::checkCeiling);
    m_poll.start();
}

void MemoryWatch::setCeiling(qint64 bytes, int pollMs)
{
    m_ceiling = bytes;
    m_aboveCeiling = false;
    m_poll.start(pollMs);
}

void MemoryWatch::watchApplicationState()
{
    auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (!application)
        return;
    connect(application, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive)
            applicationBecameActive();
        else
            applicationResignedActive();
    });
}

void MemoryWatch::applicationBecameActive()
{
    m_idlePurge.stop();
}

void MemoryWatch::applicationResignedActive()
{
    if (!m_idlePurge.isActive())
        m_idlePurge.start();
}

qint64 MemoryWatch::residentBytes()
{
    // statm: total program size, then the resident set, both in pages.
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    if (fields.size() < 2)
        return 0;
    return fields.at(1).toLongLong() * qint64(::sysconf(_SC_PAGESIZE));
}

void MemoryWatch::checkCeiling()
{
    const bool above = m_residentSize() > m_ceiling;
    // One purge per crossing: a process that stays above the ceiling is not purged again and again.
    if (above && !m_aboveCeiling)
        purge(u"resident size above the ceiling"_s);
    m_aboveCeiling = above;
}

void MemoryWatch::purge(const QString &reason)
{
    MemoryCaches::purgeAll();
    returnFreedHeapMemory();
    Q_EMIT purged(reason);
}

} // namespace kivo
