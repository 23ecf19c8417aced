#include "ingest/bridge/bridgeresponse.h"

using namespace Qt::StringLiterals;

namespace kivo {

BridgeResponse BridgeResponse::text(int status, const QString &body)
{
    return {status, u"text/plain"_s, body.toUtf8()};
}

BridgeResponse BridgeResponse::json(const QByteArray &body)
{
    return {200, u"application/json"_s, body};
}

QString BridgeResponse::reasonPhrase(int status)
{
    switch (status) {
    case 204:
        return u"No Content"_s;
    case 400:
        return u"Bad Request"_s;
    case 403:
        return u"Forbidden"_s;
    default:
        return u"OK"_s;
    }
}

QByteArray BridgeResponse::serialise() const
{
    QByteArray bytes;
    bytes.reserve(256 + body.size());
    bytes += "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status).toUtf8() + "\r\n";
    bytes += "Content-Type: " + contentType.toUtf8() + "\r\n";
    bytes += "Access-Control-Allow-Origin: *\r\n"
             "Access-Control-Allow-Headers: Content-Type\r\n"
             "Access-Control-Allow-Methods: POST, GET, OPTIONS\r\n";
    bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    bytes += "Connection: close\r\n\r\n";
    bytes += body;
    return bytes;
}

} // namespace kivo
