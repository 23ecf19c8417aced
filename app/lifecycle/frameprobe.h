#pragma once

#include <atomic>

#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QQuickWindow;

namespace kivo {

/**
 * A record of the main window's frames for the window benchmark, off unless the environment's
 * KIVO_FRAME_PROBE names a file. It writes when the first frame showing cards of the grid was
 * swapped (from the launcher's clock reading in KIVO_FRAME_PROBE_START, CLOCK_MONOTONIC
 * nanoseconds, or from the process's start), every frame's swap time, and the resident memory,
 * so that a driver outside the process can time a launch and a scroll made with real input.
 * It also writes every stretch over 8 ms that the main thread spent away from its event loop
 * (a 4 ms timer that fires late), which is what delays input and the next frame's preparation,
 * with the thread's own CPU time over the stretch, its page faults that read the disk, and its
 * voluntary and involuntary switches ("busy FROM TO CPU_NS MAJOR_FAULTS WAITS PREEMPTIONS"): a
 * stretch with little CPU time was spent waiting, for the processor, a lock or a late wake-up.
 * With a render thread, the main thread also waits in every frame for that thread to take the
 * new scene, which happens once the previous frame has been painted and shown at the screen's
 * rate; these waits are written too ("wait FROM TO"), so that a driver can tell the main thread
 * held up by its own work from one paced by the display.
 */
class FrameProbe : public QObject
{
public:
    /** Starts recording the window's frames when the environment asks for it; otherwise nothing. */
    static void attachIfAsked(QQuickWindow *window);

private:
    FrameProbe(QQuickWindow *window, const QString &path);

    void frameSwapped();
    void loopTicked();
    void flush();
    void append(const QByteArray &line);
    [[nodiscard]] bool gridShowsCards() const;

    QPointer<QQuickWindow> m_window;
    QFile m_file;
    QMutex m_pendingLock; // the render thread writes its waits too
    QByteArray m_pending;
    std::atomic<qint64> m_syncAskedNs = 0;
    QTimer m_flushTimer;
    qint64 m_startNs = 0;
    bool m_sawGrid = false;
    QTimer m_loopTick;
    qint64 m_lastTickNs = 0;
    qint64 m_lastCpuNs = 0;
    qint64 m_lastMajorFaults = 0;
    qint64 m_lastWaits = 0; // voluntary switches: a lock, a condition, the disk
    qint64 m_lastPreemptions = 0;
};

} // namespace kivo
