#include "app/lifecycle/singleinstance.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

const QByteArray showRequest = "show ";
const QByteArray shownAnswer = "shown ";

// One request line and one answer line, each a word and a process id.
qint64 pidAfter(const QByteArray &line, const QByteArray &word)
{
    if (!line.startsWith(word))
        return -1;
    bool ok = false;
    const qint64 pid = line.mid(word.size()).trimmed().toLongLong(&ok);
    return ok ? pid : -1;
}

} // namespace

SingleInstance::SingleInstance(const QString &libraryRoot, QObject *parent)
    : QObject(parent)
    , m_name(serverName(libraryRoot))
    , m_server(new QLocalServer(this))
{
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

SingleInstance::~SingleInstance()
{
    m_server->close();
}

QString SingleInstance::serverName(const QString &libraryRoot)
{
    const QString canonical = QFileInfo(libraryRoot).canonicalFilePath();
    const QByteArray digest = QCryptographicHash::hash((canonical.isEmpty() ? libraryRoot : canonical).toUtf8(),
                                                       QCryptographicHash::Sha256)
                                  .toHex()
                                  .left(16);
    const QString name = u"kivo-%1-%2"_s.arg(::getuid()).arg(QString::fromLatin1(digest));
    // The runtime folder is the user's own; without one, Qt puts the socket in the temporary folder.
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime).isDir())
        return runtime + u'/' + name;
    return name;
}

bool SingleInstance::listen()
{
    // Whoever made a leftover socket has died: we hold the library lock now.
    QLocalServer::removeServer(m_name);
    return m_server->listen(m_name);
}

void SingleInstance::answer()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
            if (!socket->canReadLine())
                return;
            const qint64 pid = pidAfter(socket->readLine(), showRequest);
            if (pid < 0) {
                socket->disconnectFromServer();
                return;
            }
            Q_EMIT showRequested(pid);
            socket->write(shownAnswer + QByteArray::number(QCoreApplication::applicationPid()) + '\n');
            socket->flush();
            socket->disconnectFromServer();
        });
    }
}

qint64 SingleInstance::askToShow(const QString &libraryRoot, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(serverName(libraryRoot));
    if (!socket.waitForConnected(timeoutMs))
        return 0;
    socket.write(showRequest + QByteArray::number(QCoreApplication::applicationPid()) + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return 0;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return 0;
    }
    return std::max<qint64>(pidAfter(socket.readLine(), shownAnswer), 0);
}

} // namespace kivo
