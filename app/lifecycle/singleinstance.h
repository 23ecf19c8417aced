#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

namespace kivo {

/**
 * Lets a second launch bring back the window of the Kivo already running on the same library,
 * which matters when there is no tray icon to reopen a closed window. The running process listens
 * on a local socket named after the user and the library; the second one, refused by the library
 * lock, asks it to show its window and exits.
 */
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(const QString &libraryRoot, QObject *parent = nullptr);
    ~SingleInstance() override;

    /** Starts listening; call only while holding the library lock, as a stale socket is removed. */
    bool listen();

    /** The socket's name: the user and a digest of the library's path, inside the runtime folder. */
    [[nodiscard]] static QString serverName(const QString &libraryRoot);

    /**
     * Asks the process holding the library to show its window. Returns its answer's process id, or
     * 0 when nobody answered within the time-out (a headless command holds it, or an older build).
     */
    static qint64 askToShow(const QString &libraryRoot, int timeoutMs = 5000);

Q_SIGNALS:
    /** Another launch asked for the window; `pid` is that process. */
    void showRequested(qint64 pid);

private:
    void answer();

    QString m_name;
    QLocalServer *m_server;
};

} // namespace kivo
