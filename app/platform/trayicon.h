#pragma once

#include <QObject>

class QMenu;
class QSystemTrayIcon;

namespace kivo {

/**
 * Kivo's icon in the desktop's system tray (StatusNotifierItem over D-Bus, or the older XEmbed
 * tray), with "Open Kivo" and "Quit Kivo". The program keeps running when its window closes;
 * this is how the user finds it again, where the desktop has a tray at all.
 */
class TrayIcon : public QObject
{
    Q_OBJECT

public:
    explicit TrayIcon(QObject *parent = nullptr);
    ~TrayIcon() override;

    /** Whether the desktop offers a tray right now. */
    [[nodiscard]] static bool isAvailable();

    /** Shows the icon; returns false when there is no tray. */
    bool show();
    [[nodiscard]] bool isVisible() const;

    /** The menu's entries, for the checks that the right words are there. */
    [[nodiscard]] QMenu *menu() const { return m_menu; }

Q_SIGNALS:
    void openRequested();
    void quitRequested();

private:
    QMenu *m_menu;
    QSystemTrayIcon *m_icon;
};

} // namespace kivo
