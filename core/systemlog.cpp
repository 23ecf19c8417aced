#include "core/systemlog.h"

#include "core/database.h"

namespace kivo {

Q_LOGGING_CATEGORY(lcLibrary, "kivo.core.library")
Q_LOGGING_CATEGORY(lcSystemLog, "kivo.log")

void systemLog(const QString &line)
{
    qCInfo(lcSystemLog).noquote() << line;
}

QString errorText(const std::exception &error)
{
    if (const auto *database = dynamic_cast<const DatabaseError *>(&error))
        return database->message();
    return QString::fromUtf8(error.what());
}

} // namespace kivo
