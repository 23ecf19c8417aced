#pragma once

#include <QDateTime>
#include <QString>

namespace kivo {

/**
 * The diagnostics that let a crash in the field be understood afterwards: `diagnostics.log`, an
 * append-only file of launch, crash and probe lines in the user's state folder. The log's file
 * descriptor is opened once and kept for the fatal-signal handler, which may not allocate; the
 * ordinary lines open the file for each write, so a log deleted under a running program comes back.
 * A failure to open or write is ignored: diagnostics never stop the program.
 */
namespace Diagnostics {

/** `$XDG_STATE_HOME/Kivo`, by default `~/.local/state/Kivo`. */
[[nodiscard]] QString folder();
[[nodiscard]] QString logPath();
[[nodiscard]] QString heartbeatPath();

/** Makes the folder and opens the kept descriptor (write-only, create, append, 0644). */
void open();
/** The kept descriptor, or -1 when the log could not be opened. */
[[nodiscard]] int descriptor();
/** Closes the kept descriptor; for tests that start over. */
void close();

/** "yyyy-MM-dd HH:mm:ss.SSS" in local time. */
[[nodiscard]] QString stamp(const QDateTime &time);
/** Appends one line: the time stamp, a blank, the message. */
void log(const QString &message);

/** "=== LAUNCH v<version> (<build>) pid <pid> ===" */
[[nodiscard]] QString launchLine(const QString &version, const QString &build, qint64 pid);
[[nodiscard]] QString cleanTerminateLine();

/** Starts a run's diagnostics: opens the log and writes the launch line. */
void start(const QString &version, const QString &build);

} // namespace Diagnostics
} // namespace kivo
