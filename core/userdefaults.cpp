#include "core/userdefaults.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLockFile>
#include <QThread>

using namespace Qt::StringLiterals;

namespace kivo {

UserDefaults::UserDefaults()
    : m_settings(QSettings::NativeFormat, QSettings::UserScope, u"Kivo"_s, u"Kivo"_s)
{
}

void UserDefaults::clearAbandonedLock(int patience)
{
    QLockFile lock(UserDefaults().fileName() + u".lock"_s);
    // A live writer fills the file in the moment after creating it.
    constexpr qint64 abandonedAfterMs = 1000;
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        const QFileInfo file(lock.fileName());
        qint64 pid = 0;
        QString hostName;
        QString applicationName;
        if (!file.exists() || lock.getLockInfo(&pid, &hostName, &applicationName))
            return;
        if (file.lastModified().msecsTo(QDateTime::currentDateTime()) > abandonedAfterMs) {
            lock.removeStaleLockFile();
            return;
        }
        if (waited.elapsed() > patience)
            return;
        QThread::msleep(100);
    }
}

bool UserDefaults::boolValue(const QString &key, bool fallback) const
{
    const QVariant stored = m_settings.value(key);
    return stored.isValid() ? stored.toBool() : fallback;
}

QString UserDefaults::stringValue(const QString &key, const QString &fallback) const
{
    const QVariant stored = m_settings.value(key);
    return stored.isValid() ? stored.toString() : fallback;
}

double UserDefaults::doubleValue(const QString &key, double fallback) const
{
    const QVariant stored = m_settings.value(key);
    bool ok = false;
    const double value = stored.toDouble(&ok);
    return ok ? value : fallback;
}

qint64 UserDefaults::integerValue(const QString &key, qint64 fallback) const
{
    const QVariant stored = m_settings.value(key);
    bool ok = false;
    const qint64 value = stored.toLongLong(&ok);
    return ok ? value : fallback;
}

QStringList UserDefaults::stringListValue(const QString &key, const QStringList &fallback) const
{
    const QVariant stored = m_settings.value(key);
    if (!stored.isValid())
        return fallback;
    // The INI format gives a one-element list back as a plain string.
    if (stored.typeId() == QMetaType::QString)
        return {stored.toString()};
    return stored.toStringList();
}

QVariantMap UserDefaults::mapValue(const QString &key) const
{
    return m_settings.value(key).toMap();
}

} // namespace kivo
