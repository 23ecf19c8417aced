#include "core/systemlog.h"

#include "core/database.h"

#include <QMutex>

#include <cstdio>

namespace kivo {

namespace {

QMutex &observerMutex()
{
    static QMutex mutex;
    return mutex;
}

std::function<void(const QString &)> &observer()
{
    static std::function<void(const QString &)> current;
    return current;
}

} // namespace

void systemLog(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
    QMutexLocker lock(&observerMutex());
    if (observer())
        observer()(line);
}

void setSystemLogObserver(std::function<void(const QString &)> newObserver)
{
    QMutexLocker lock(&observerMutex());
    observer() = std::move(newObserver);
}

QString errorText(const std::exception &error)
{
    if (const auto *database = dynamic_cast<const DatabaseError *>(&error))
        return database->message();
    return QString::fromUtf8(error.what());
}

} // namespace kivo
