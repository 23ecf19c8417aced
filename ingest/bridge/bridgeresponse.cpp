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
    const QString head = u"HTTP/1.1 "_s + QString::number(status) + u' ' + reasonPhrase(status) + u"\r\n"_s
        + u"Content-Type: "_s + contentType + u"\r\n"_s
        + u"Access-Control-Allow-Origin: *\r\n"_s
        + u"Access-Control-Allow-Headers: Content-Type\r\n"_s
        + u"Access-Control-Allow-Methods: POST, GET, OPTIONS\r\n"_s
        + u"Content-Length: "_s + QString::number(body.size()) + u"\r\n"_s
        + u"Connection: close\r\n\r\n"_s;
    return head.toUtf8() + body;
}

} // namespace kivo
