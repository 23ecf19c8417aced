#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * How many items background reading still has before it, for the window's quiet indicator. The
 * reading runs on its own thread; this object lives on the main thread and is told the count
 * through queued calls, so QML reads a plain property.
 */
class EnrichmentProgress : public QObject
{
    Q_OBJECT
    // Known to QML only as the published singleton, so its type name stays free for that.
    QML_ANONYMOUS

    /** Items waiting to be read or being read now; 0 when reading is idle. */
    Q_PROPERTY(int pendingCount READ pendingCount NOTIFY pendingCountChanged)

public:
    explicit EnrichmentProgress(QObject *parent = nullptr) : QObject(parent) { }

    [[nodiscard]] int pendingCount() const { return m_pendingCount; }
    void setPendingCount(int count);

Q_SIGNALS:
    void pendingCountChanged();

private:
    int m_pendingCount = 0;
};

} // namespace kivo
