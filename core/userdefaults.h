#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace kivo {

/**
 * The persistent key-value store behind the settings: an INI file in the user's configuration
 * folder ("Kivo/Kivo.conf"). Cheap to construct; every instance in the process sees the same
 * values, and instances may live on different threads.
 */
class UserDefaults
{
public:
    UserDefaults();

    [[nodiscard]] bool contains(const QString &key) const { return m_settings.contains(key); }
    [[nodiscard]] QVariant value(const QString &key) const { return m_settings.value(key); }
    [[nodiscard]] bool boolValue(const QString &key, bool fallback = false) const;
    [[nodiscard]] QString stringValue(const QString &key, const QString &fallback = {}) const;
    [[nodiscard]] double doubleValue(const QString &key, double fallback = 0) const;
    [[nodiscard]] qint64 integerValue(const QString &key, qint64 fallback = 0) const;
    [[nodiscard]] QStringList stringListValue(const QString &key, const QStringList &fallback = {}) const;
    [[nodiscard]] QVariantMap mapValue(const QString &key) const;
    [[nodiscard]] QStringList allKeys() const { return m_settings.allKeys(); }

    void setValue(const QString &key, const QVariant &value) { m_settings.setValue(key, value); }
    void remove(const QString &key) { m_settings.remove(key); }
    void sync() { m_settings.sync(); }

    /** The file the values live in. */
    [[nodiscard]] QString fileName() const { return m_settings.fileName(); }

    /**
     * Removes the file's lock when a process died between creating it and writing its own name
     * in it (a kill at that moment): Qt judges such a lock by its age alone and would make every
     * later write wait 30 seconds for it. Waits at most `patience` milliseconds for a young one to
     * show whether it is abandoned. A lock that names its process is left to Qt, which notices a
     * dead owner at once. Call at start, before any value is written.
     */
    static void clearAbandonedLock(int patience = 1500);

private:
    QSettings m_settings;
};

} // namespace kivo
