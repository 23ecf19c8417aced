#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * Decides whether the interface is dark: the `appearance` setting ("light", "dark" or
 * "system") combined with what the desktop prefers, which the platform layer keeps current.
 */
class AppearanceController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Published by the application")
    /** The setting's raw string as stored; an unknown string counts as "system". */
    Q_PROPERTY(QString appearance READ appearance WRITE setAppearance NOTIFY appearanceChanged)
    /** Whether the desktop asks for dark colours; only consulted for "system". */
    Q_PROPERTY(bool desktopPrefersDark READ desktopPrefersDark WRITE setDesktopPrefersDark NOTIFY desktopPrefersDarkChanged)
    Q_PROPERTY(bool dark READ dark NOTIFY darkChanged)

public:
    explicit AppearanceController(QObject *parent = nullptr);

    [[nodiscard]] QString appearance() const { return m_appearance; }
    void setAppearance(const QString &appearance);
    [[nodiscard]] bool desktopPrefersDark() const { return m_desktopPrefersDark; }
    void setDesktopPrefersDark(bool prefersDark);
    [[nodiscard]] bool dark() const { return m_dark; }

Q_SIGNALS:
    void appearanceChanged();
    void desktopPrefersDarkChanged();
    void darkChanged();

private:
    void update();

    QString m_appearance = QStringLiteral("system");
    bool m_desktopPrefersDark = false;
    bool m_dark = false;
};

} // namespace kivo
