#pragma once

#include "core/appsettings.h"
#include "core/store.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * The main window's own logic: the key that shows and hides the sidebar (stored as a virtual key
 * code and modifier mask), the sidebar's width within its bounds, and which item the details
 * panel opens on when it is asked for by key or button.
 */
class WindowController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(kivo::AppSettings *settings READ settings WRITE setSettings NOTIFY settingsChanged)
    /** The sidebar key as portable text ("Ctrl+Meta+S"); empty when the stored key has no counterpart. */
    Q_PROPERTY(QString sidebarToggleSequence READ sidebarToggleSequence NOTIFY sidebarToggleSequenceChanged)
    /** Whether this run was started with --view-options, which opens the view options at start. */
    Q_PROPERTY(bool viewOptionsAtStart READ viewOptionsAtStart CONSTANT)

public:
    [[nodiscard]] static bool viewOptionsAtStart();
    static constexpr double minimumSidebarWidth = 180;
    static constexpr double maximumSidebarWidth = 420;

    explicit WindowController(QObject *parent = nullptr);

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] AppSettings *settings() const { return m_settings; }
    void setSettings(AppSettings *settings);
    [[nodiscard]] QString sidebarToggleSequence() const;

    /**
     * A stored key as portable key-sequence text. Modifier bits: 256 command (Ctrl here), 512 shift,
     * 2048 option (Alt), 4096 control (Meta, the Super key); the key code is the keyboard position
     * the setting was made with. Empty for a key code this table does not know.
     */
    [[nodiscard]] static QString keySequence(int keyCode, int modifiers);

    /** Saves a dragged sidebar width, kept within its bounds. */
    Q_INVOKABLE void setSidebarWidth(double width);
    Q_INVOKABLE void toggleSidebar();
    /** Closes the details panel, or opens it on the focused item (or the first of the multi-selection). */
    Q_INVOKABLE void toggleDetails();

Q_SIGNALS:
    void storeChanged();
    void settingsChanged();
    void sidebarToggleSequenceChanged();

private:
    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
};

} // namespace kivo
