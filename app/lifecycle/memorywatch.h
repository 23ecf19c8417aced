#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace kivo {

/**
 * Gives memory back where the desktop has no memory-pressure signal: sixty seconds after the
 * application stops being the active one (cancelled when it becomes active again), and whenever
 * the resident size passes a ceiling. A purge empties every cache registered in MemoryCaches.
 */
class MemoryWatch : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultIdleDelayMs = 60000;
    static constexpr int defaultPollMs = 30000;
    static constexpr qint64 defaultCeilingBytes = qint64(1536) * 1024 * 1024;

    explicit MemoryWatch(QObject *parent = nullptr);

    void setIdleDelay(int milliseconds) { m_idlePurge.setInterval(milliseconds); }
    void setCeiling(qint64 bytes, int pollMs = defaultPollMs);
    /** Where the resident size comes from; /proc/self/statm unless a test says otherwise. */
    void setResidentSizeSource(std::function<qint64()> source) { m_residentSize = std::move(source); }

    /** Follows the application's state: inactive schedules the idle purge, active cancels it. */
    void watchApplicationState();
    void applicationBecameActive();
    void applicationResignedActive();

    [[nodiscard]] bool idlePurgePending() const { return m_idlePurge.isActive(); }

    /** The resident size of this process in bytes, from /proc/self/statm; 0 if unreadable. */
    [[nodiscard]] static qint64 residentBytes();

    void purge(const QString &reason);

Q_SIGNALS:
    void purged(const QString &reason);

private:
    void checkCeiling();

    QTimer m_idlePurge;
    QTimer m_poll;
    qint64 m_ceiling = defaultCeilingBytes;
    bool m_aboveCeiling = false;
    std::function<qint64()> m_residentSize = &MemoryWatch::residentBytes;
};

} // namespace kivo
