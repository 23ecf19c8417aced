#include "tests/fixtureserver.h"

#include <QFile>
#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

namespace kivo::test {

namespace {

constexpr qint64 chunkSize = 1 << 20;

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    default:
        return "Status";
    }
}

} // namespace

/** The server's half that lives on its thread: accepts, reads a request line, answers. */
class FixtureServerWorker : public QObject
{
public:
    explicit FixtureServerWorker(FixtureServer *owner) : m_owner(owner) { }

    quint16 listen()
    {
        m_server = new QTcpServer(this);
        m_server->listen(QHostAddress::LocalHost, 0);
        connect(m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server->nextPendingConnection())
                accept(socket);
        });
        return m_server->serverPort();
    }

private:
    void accept(QTcpSocket *socket)
    {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        auto buffer = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
            if (buffer->contains("\r\n\r\n"))
                return; // the request is in; the rest is ignored
            buffer->append(socket->readAll());
            if (!buffer->contains("\r\n\r\n"))
                return;
            const QList<QByteArray> requestLine = buffer->left(buffer->indexOf("\r\n")).split(' ');
            const QString target = requestLine.size() >= 2 ? QString::fromLatin1(requestLine.at(1)) : u"/"_s;
            const FixtureResponse response = m_owner->responseFor(target);
            QPointer<QTcpSocket> guarded(socket);
            QTimer::singleShot(response.delayMs, socket, [guarded, response] {
                if (guarded)
                    answer(guarded, response);
            });
        });
    }

    static void answer(QTcpSocket *socket, const FixtureResponse &response)
    {
        std::shared_ptr<QFile> file;
        qint64 length = response.body.size();
        if (!response.bodyFile.isEmpty()) {
            file = std::make_shared<QFile>(response.bodyFile);
            if (!file->open(QIODevice::ReadOnly)) {
                socket->write("HTTP/1.1 500 Internal Server Error\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
                socket->disconnectFromHost();
                return;
            }
            length = file->size();
        }
        QByteArray head = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' + reasonPhrase(response.status)
            + "\r\nConnection: close\r\n";
        if (response.contentType)
            head += "Content-Type: " + *response.contentType + "\r\n";
        if (response.sendLength)
            head += "Content-Length: " + QByteArray::number(length) + "\r\n";
        for (const auto &[name, value] : response.headers)
            head += name + ": " + value + "\r\n";
        socket->write(head + "\r\n");
        if (!file) {
            socket->write(response.body);
            socket->disconnectFromHost();
            return;
        }
        // A large file goes out a chunk at a time, as the socket drains, so memory stays small.
        const auto sendMore = [socket, file] {
            while (socket->bytesToWrite() < 4 * chunkSize && !file->atEnd())
                socket->write(file->read(chunkSize));
            if (file->atEnd() && socket->bytesToWrite() == 0)
                socket->disconnectFromHost();
        };
        connect(socket, &QTcpSocket::bytesWritten, socket, sendMore);
        sendMore();
    }

    FixtureServer *m_owner;
    QTcpServer *m_server = nullptr;
};

FixtureResponse FixtureResponse::bytes(const QByteArray &body, const QByteArray &contentType, int status)
{
    FixtureResponse response;
    response.status = status;
    response.body = body;
    response.contentType = contentType;
    return response;
}

FixtureResponse FixtureResponse::file(const QString &path, const QByteArray &contentType, int status)
{
    FixtureResponse response;
    response.status = status;
    response.bodyFile = path;
    response.contentType = contentType;
    return response;
}

FixtureResponse FixtureResponse::redirect(const QString &location, int status)
{
    FixtureResponse response;
    response.status = status;
    response.contentType = std::nullopt;
    response.headers.append({"Location", location.toUtf8()});
    return response;
}

FixtureServer::FixtureServer()
{
    m_thread.setObjectName(u"FixtureServer"_s);
    m_thread.start();
    m_worker = new FixtureServerWorker(this);
    m_worker->moveToThread(&m_thread);
    QMetaObject::invokeMethod(
        m_worker, [this] { m_port = m_worker->listen(); }, Qt::BlockingQueuedConnection);
}

FixtureServer::~FixtureServer()
{
    QMetaObject::invokeMethod(
        m_worker, [this] { delete m_worker; }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

QUrl FixtureServer::url(const QString &pathAndQuery) const
{
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_port).arg(pathAndQuery));
}

void FixtureServer::serve(const QString &pathAndQuery, const FixtureResponse &response)
{
    QMutexLocker lock(&m_mutex);
    m_responses.insert(pathAndQuery, response);
}

int FixtureServer::requestCount(const QString &pathAndQuery) const
{
    QMutexLocker lock(&m_mutex);
    return int(m_requests.count(pathAndQuery));
}

QStringList FixtureServer::requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

FixtureResponse FixtureServer::responseFor(const QString &target)
{
    QMutexLocker lock(&m_mutex);
    m_requests.append(target);
    if (const auto exact = m_responses.constFind(target); exact != m_responses.cend())
        return *exact;
    const QString path = target.section(u'?', 0, 0);
    if (const auto byPath = m_responses.constFind(path); byPath != m_responses.cend())
        return *byPath;
    return FixtureResponse::bytes("not here", "text/plain", 404);
}

} // namespace kivo::test
