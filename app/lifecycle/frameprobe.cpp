#include "app/lifecycle/frameprobe.h"

#include "app/lifecycle/memorywatch.h"
#include "surfaces/grid/itemlistmodel.h"
#include "surfaces/grid/masonryview.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QThread>

#include <ctime>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

qint64 monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// The process's start on the monotonic clock, from /proc/self/stat's start time (in clock ticks
// since boot; the monotonic clock counts from boot too, less any time suspended).
qint64 processStartNs()
{
    QFile stat(u"/proc/self/stat"_s);
    if (!stat.open(QIODevice::ReadOnly))
        return monotonicNs();
    const QByteArray line = stat.readAll();
    // The command name may hold spaces; the fields after it are counted from its closing bracket.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    constexpr int startTimeField = 19; // field 22 of the whole line
    if (fields.size() <= startTimeField)
        return monotonicNs();
    const qint64 ticks = fields.at(startTimeField).toLongLong();
    return ticks * (1000000000 / sysconf(_SC_CLK_TCK));
}

constexpr int loopTickMs = 4;

bool anyMasonryWithCards(QQuickItem *item)
{
    if (const auto *masonry = qobject_cast<MasonryView *>(item); masonry && masonry->isVisible()
        && masonry->activeCount() > 0)
        return true;
    const QList<QQuickItem *> children = item->childItems();
    return std::any_of(children.cbegin(), children.cend(), anyMasonryWithCards);
}

} // namespace

void FrameProbe::attachIfAsked(QQuickWindow *window)
{
    const QString path = qEnvironmentVariable("KIVO_FRAME_PROBE");
    if (path.isEmpty() || !window)
        return;
    new FrameProbe(window, path); // lives as the window's child
}

FrameProbe::FrameProbe(QQuickWindow *window, const QString &path)
    : QObject(window)
    , m_window(window)
    , m_file(path)
{
    bool given = false;
    m_startNs = qEnvironmentVariable("KIVO_FRAME_PROBE_START").toLongLong(&given);
    if (!given)
        m_startNs = processStartNs();
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        qWarning("kivo: cannot write the frame probe to %s", qPrintable(path));
    // Frames are swapped on the render thread when there is one; the record is kept on this one.
    connect(window, &QQuickWindow::frameSwapped, this, &FrameProbe::frameSwapped, Qt::QueuedConnection);
    // The main thread asks for the scene to be taken right after animating and then waits; the
    // render thread starts taking it when it is free. Between the two the main thread is blocked.
    connect(window, &QQuickWindow::afterAnimating, this, [this] { m_syncAskedNs = monotonicNs(); },
        Qt::DirectConnection);
    connect(window, &QQuickWindow::beforeSynchronizing, this, [this] {
        if (QThread::currentThread() == thread() || m_syncAskedNs == 0)
            return; // no render thread: nothing waits
        append("wait " + QByteArray::number(m_syncAskedNs) + ' ' + QByteArray::number(monotonicNs()) + '\n');
    }, Qt::DirectConnection);
    // A fine timer on the main thread: a late tick is time the thread spent away from its loop.
    m_loopTick.setTimerType(Qt::PreciseTimer);
    m_loopTick.setInterval(loopTickMs);
    connect(&m_loopTick, &QTimer::timeout, this, &FrameProbe::loopTicked);
    m_loopTick.start();
    m_flushTimer.setInterval(500);
    connect(&m_flushTimer, &QTimer::timeout, this, &FrameProbe::flush);
    m_flushTimer.start();
}

bool FrameProbe::gridShowsCards() const
{
    return m_window && anyMasonryWithCards(m_window->contentItem());
}

void FrameProbe::frameSwapped()
{
    const qint64 now = monotonicNs();
    append("frame " + QByteArray::number(now) + '\n');
    if (!m_sawGrid && gridShowsCards()) {
        m_sawGrid = true;
        append("first-grid-frame-ms " + QByteArray::number(double(now - m_startNs) / 1e6, 'f', 1) + '\n');
        flush();
    }
}

void FrameProbe::loopTicked()
{
    const qint64 now = monotonicNs();
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    const qint64 cpuNs = (qint64(usage.ru_utime.tv_sec) + usage.ru_stime.tv_sec) * 1'000'000'000
        + (qint64(usage.ru_utime.tv_usec) + usage.ru_stime.tv_usec) * 1000;
    constexpr qint64 worthNoting = 8'000'000;
    const qint64 due = m_lastTickNs + loopTickMs * 1'000'000;
    // The thread's own CPU time and its page faults that waited for the disk over the stretch tell
    // work apart from time spent off the processor (other threads, other processes, the disk).
    if (m_lastTickNs != 0 && now - due > worthNoting)
        append("busy " + QByteArray::number(due) + ' ' + QByteArray::number(now) + ' '
               + QByteArray::number(cpuNs - m_lastCpuNs) + ' '
               + QByteArray::number(qint64(usage.ru_majflt) - m_lastMajorFaults) + ' '
               + QByteArray::number(qint64(usage.ru_nvcsw) - m_lastWaits) + ' '
               + QByteArray::number(qint64(usage.ru_nivcsw) - m_lastPreemptions) + '\n');
    m_lastTickNs = now;
    m_lastCpuNs = cpuNs;
    m_lastMajorFaults = usage.ru_majflt;
    m_lastWaits = usage.ru_nvcsw;
    m_lastPreemptions = usage.ru_nivcsw;
}

void FrameProbe::append(const QByteArray &line)
{
    const QMutexLocker locker(&m_pendingLock);
    m_pending += line;
}

void FrameProbe::flush()
{
    append("rss-bytes " + QByteArray::number(MemoryWatch::residentBytes()) + '\n');
    const QMutexLocker locker(&m_pendingLock);
    m_file.write(m_pending);
    m_pending.clear();
}

} // namespace kivo
