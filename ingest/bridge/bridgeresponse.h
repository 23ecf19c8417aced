#pragma once

#include <QByteArray>
#include <QString>

namespace kivo {

/** One answer of the bridge: status, content type and body, written in the one form the extension reads. */
struct BridgeResponse {
    int status = 200;
    QString contentType;
    QByteArray body;

    [[nodiscard]] static BridgeResponse text(int status, const QString &body);
    [[nodiscard]] static BridgeResponse json(const QByteArray &body);

    /** The reason phrase of a status; statuses the bridge never names read "OK". */
    [[nodiscard]] static QString reasonPhrase(int status);

    /**
     * The whole answer as sent: status line, the open CORS headers, the length in bytes and
     * "Connection: close", then the body. The connection closes after it.
     */
    [[nodiscard]] QByteArray serialise() const;
};

} // namespace kivo
