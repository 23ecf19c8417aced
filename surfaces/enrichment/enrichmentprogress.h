#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * How many items background reading still has before it, for the window's quiet indicator. The
 * reading runs on its own thread; this object lives on the main thread and is told the count
 * through queued calls, so QML reads a plain property. Reading can finish hundreds of items a
 * second, and every new count lays its text out again, so changes are shown at most every
 * quarter second; starting and finishing show at once.
 */
class EnrichmentProgress : public QObject
{
    Q_OBJECT
    // Known to QML only as the published singleton, so its type name stays free for that.
    QML_ANONYMOUS

    /** Items waiting to be read or being read now; 0 when reading is idle. */
    Q_PROPERTY(int pendingCount READ pendingCount NOTIFY pendingCountChanged)

public:
    explicit EnrichmentProgress(QObject *parent = nullptr);

    [[nodiscard]] int pendingCount() const { return m_pendingCount; }
    void setPendingCount(int count);

Q_SIGNALS:
    void pendingCountChanged();

private:
    void show();

    int m_pendingCount = 0;
    int m_latestCount = 0;
    QElapsedTimer m_sinceShown;
    QTimer m_showLater;
};

} // namespace kivo
