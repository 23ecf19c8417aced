#pragma once

#include <QLoggingCategory>
#include <QString>

#include <exception>

namespace kivo {

Q_DECLARE_LOGGING_CATEGORY(lcLibrary)

/**
 * Writes one line of the program's own log vocabulary ("[Store] fileItem failed: ...") to the
 * system log: standard error, which the desktop session hands to the journal.
 */
void systemLog(const QString &line);

/** The readable text of a caught exception. */
[[nodiscard]] QString errorText(const std::exception &error);

} // namespace kivo
