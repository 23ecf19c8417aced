#pragma once

#include <QDBusConnection>
#include <QObject>

class QDBusVariant;

namespace kivo {

/**
 * Whether the desktop asks applications for dark colours. The freedesktop settings portal
 * answers on desktops that have one and tells of later changes; without it, the lightness of
 * the application palette's window colour decides.
 */
class DesktopColorScheme : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool prefersDark READ prefersDark NOTIFY prefersDarkChanged)

public:
    /** Asks the portal on `bus`, the session bus unless a test gives its own. */
    explicit DesktopColorScheme(const QDBusConnection &bus = QDBusConnection::sessionBus(), QObject *parent = nullptr);

    [[nodiscard]] bool prefersDark() const { return m_prefersDark; }
    /** Whether the portal has given an answer (tests, diagnostics). */
    [[nodiscard]] bool portalAnswered() const { return m_portalScheme >= 0; }

Q_SIGNALS:
    void prefersDarkChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void portalSettingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void askPortal();
    void takePortalValue(const QVariant &value);
    void update();
    [[nodiscard]] static bool paletteIsDark();

    QDBusConnection m_bus;
    /** The portal's "color-scheme": 0 no preference, 1 dark, 2 light; -1 until it answers. */
    int m_portalScheme = -1;
    bool m_prefersDark = false;
};

} // namespace kivo
