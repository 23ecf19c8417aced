#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>

namespace kivo {

/**
 * Replaces `heartbeat.txt` at a steady beat, so that after a crash or a kill the file tells when
 * the program was last alive: "<seconds since 1970> <time stamp> pid <pid>".
 */
class Heartbeat : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultIntervalMs = 15000;

    explicit Heartbeat(const QString &path, int intervalMs = defaultIntervalMs, QObject *parent = nullptr);

    /** Writes one beat now and then one per interval. */
    void start();
    void stop();

    [[nodiscard]] static QString line(const QDateTime &time, qint64 pid);

private:
    void beat();

    QString m_path;
    QTimer m_timer;
};

} // namespace kivo
