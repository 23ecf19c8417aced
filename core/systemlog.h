#pragma once

#include <QString>

#include <exception>
#include <functional>

namespace kivo {

/**
 * Writes one line of the program's own log vocabulary ("[Store] fileItem failed: ...") to the
 * system log: standard error, which the desktop session hands to the journal.
 */
void systemLog(const QString &line);

/** Also hands every line to `observer` (null to stop); for tests that check what was logged. */
void setSystemLogObserver(std::function<void(const QString &)> observer);

/** The readable text of a caught exception. */
[[nodiscard]] QString errorText(const std::exception &error);

} // namespace kivo
