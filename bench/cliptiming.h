#pragma once

#include <QByteArray>

#include <vector>

namespace kivo::bench {

/**
 * Sends one request to the bridge on 127.0.0.1 on a fresh connection and reads until the server
 * closes it; the time from connecting to the close in milliseconds, or -1 when the request failed
 * or the answer was not "ok".
 */
double timedRequest(quint16 port, const QByteArray &request);

/** The value at `fraction` (0 to 1) of the sorted values; 0 for none. */
double percentile(std::vector<double> values, double fraction);

} // namespace kivo::bench
