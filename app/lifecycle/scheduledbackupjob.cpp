#include "app/lifecycle/scheduledbackupjob.h"

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace kivo::ScheduledBackupJob {

int run(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(u"Kivo"_s);
    QCoreApplication::setApplicationName(u"Kivo"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(KIVO_VERSION));
    LibraryLocation::setArguments(QCoreApplication::arguments());

    std::shared_ptr<DatabaseQueue> queue;
    try {
        LibraryLocation::ensureLibrary();
        queue = DatabaseQueue::open(LibraryLocation::databasePath());
    } catch (const std::exception &error) {
        systemLog(u"[Backup] scheduled backup could not open the library: "_s + errorText(error));
        return 1;
    }
    const UserDefaults defaults;
    const QString destination = defaults.stringValue(u"backupDestination"_s);
    const qint64 keepVersions = defaults.integerValue(u"backupKeepVersions"_s, 5);

    // ### The backup service is not part of this build yet: this is where it runs, on a worker
    // thread while this one waits, with `queue`, `destination` and `keepVersions`.
    Q_UNUSED(keepVersions)
    systemLog(u"[Backup] scheduled run for %1: the backup service is not available in this build"_s.arg(destination));
    return 0;
}

} // namespace kivo::ScheduledBackupJob
