#pragma once

#include "ingest/bridge/httprequest.h"

#include <QByteArrayView>

#include <optional>

namespace kivo::HttpParser {

/** The longest head the bridge waits for while no end of it ("\r\n\r\n") has arrived. */
inline constexpr qsizetype headLimit = 16384;
/** The largest body a request may announce. */
inline constexpr qint64 bodyLimit = 1000000;

/**
 * Reads a connection's whole buffer as one HTTP/1.1 request. Only Content-Length bodies exist:
 * any Transfer-Encoding is refused, and bytes behind the announced body are ignored. Pure and
 * total over any input, so it can be fed anything.
 */
[[nodiscard]] ParseResult parse(QByteArrayView buffer);

/** The integer a Content-Length value stands for; nothing for text that is not an integer (or overflows). */
[[nodiscard]] std::optional<qint64> integerValue(const QString &text);

} // namespace kivo::HttpParser
