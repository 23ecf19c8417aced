#pragma once

#include <QObject>

class QSocketNotifier;

namespace kivo {

/**
 * Turns SIGTERM and SIGINT into an ordinary quit on the main thread: the handler only writes the
 * signal's number into a pipe, and a socket notifier reads it in the event loop, where the clean
 * stop (terminate line, services, sidecars) can run. One instance per process.
 */
class QuitSignals : public QObject
{
    Q_OBJECT

public:
    explicit QuitSignals(QObject *parent = nullptr);
    ~QuitSignals() override;

    /** Whether the handlers and the pipe are in place. */
    [[nodiscard]] bool isInstalled() const { return m_notifier != nullptr; }

Q_SIGNALS:
    /** SIGTERM or SIGINT arrived; the number of the signal. */
    void quitRequested(int signalNumber);

private:
    void drain();

    QSocketNotifier *m_notifier = nullptr;
};

} // namespace kivo
