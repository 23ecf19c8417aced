#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

namespace kivo {

/** One request read off a bridge connection: method and target as sent, headers by lower-cased name. */
struct HTTPRequest {
    QString method;
    QString path;
    QHash<QString, QString> headers;
    QByteArray body;

    /** The header's value, or an empty string when it was not sent. */
    [[nodiscard]] QString header(const QString &lowerCaseName) const { return headers.value(lowerCaseName); }
};

/** What a connection's buffer holds so far: a whole request, not enough yet, or something to hang up on. */
struct ParseResult {
    enum class Kind { complete, needMore, invalid };

    Kind kind = Kind::needMore;
    HTTPRequest request; // set when complete
    /**
     * Bytes the buffer must hold before another parse can say anything new; 0 while the head is
     * still open. Lets a connection skip re-reading the head while a body streams in.
     */
    qsizetype awaitedSize = 0;

    [[nodiscard]] bool isComplete() const { return kind == Kind::complete; }
    [[nodiscard]] bool isInvalid() const { return kind == Kind::invalid; }
};

} // namespace kivo
