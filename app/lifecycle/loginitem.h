#pragma once

#include <QObject>
#include <QString>

namespace kivo {

/**
 * Starting Kivo at login, through the desktop's autostart folder: the toggle writes or removes
 * `~/.config/autostart/kivo.desktop`. A failure is logged and changes nothing else.
 */
class LoginItem : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool enabled READ isEnabled WRITE setEnabled NOTIFY enabledChanged)

public:
    explicit LoginItem(QObject *parent = nullptr);

    /** `$XDG_CONFIG_HOME/autostart/kivo.desktop`. */
    [[nodiscard]] static QString autostartPath();
    /** The desktop entry that starts this binary. */
    [[nodiscard]] static QByteArray desktopEntry(const QString &executable);

    [[nodiscard]] bool isEnabled() const;
    /** Registers or unregisters; returns whether the file now says what was asked. */
    bool setEnabled(bool enabled);

Q_SIGNALS:
    void enabledChanged();
};

} // namespace kivo
