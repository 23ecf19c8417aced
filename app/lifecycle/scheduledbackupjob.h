#pragma once

namespace kivo {

/**
 * The window-less run started by `--run-scheduled-backup` from the user's systemd timer: it opens
 * the library with a handle of its own (the window may be running and holding the library), reads
 * where and how many copies to keep, runs the backup and exits with its result.
 */
namespace ScheduledBackupJob {

int run(int argc, char **argv);

} // namespace ScheduledBackupJob
} // namespace kivo
