#include "tests/ingest/pictureserver.h"

#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace kivo::test {

PictureServer::PictureServer()
{
    listen(QHostAddress::LocalHost, 0);
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
}

QUrl PictureServer::url(const QString &path) const
{
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(serverPort()).arg(path));
}

void PictureServer::answer(QTcpSocket *socket)
{
    const QByteArray request = socket->peek(socket->bytesAvailable());
    if (!request.contains("\r\n\r\n"))
        return; // the head is not all here yet
    socket->readAll();
    const QList<QByteArray> words = request.left(request.indexOf("\r\n")).split(' ');
    const QString path = words.size() > 1 ? QString::fromLatin1(words.at(1)).section(u'?', 0, 0) : QString();
    m_hits[path] += 1;
    const Answer found = m_answers.value(path, Answer{404, "text/plain", "not here"});
    QByteArray response = "HTTP/1.1 " + QByteArray::number(found.status) + (found.status == 200 ? " OK" : " Error")
        + "\r\nContent-Type: " + found.type + "\r\nContent-Length: " + QByteArray::number(found.body.size())
        + "\r\nConnection: close\r\n\r\n" + found.body;
    socket->write(response);
    socket->disconnectFromHost();
}

} // namespace kivo::test
