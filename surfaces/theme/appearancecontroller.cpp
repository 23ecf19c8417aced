#include "surfaces/theme/appearancecontroller.h"

using namespace Qt::StringLiterals;

namespace kivo {

AppearanceController::AppearanceController(QObject *parent)
    : QObject(parent)
{
}

void AppearanceController::setAppearance(const QString &appearance)
{
    if (m_appearance == appearance)
        return;
    m_appearance = appearance;
    Q_EMIT appearanceChanged();
    update();
}

void AppearanceController::setDesktopPrefersDark(bool prefersDark)
{
    if (m_desktopPrefersDark == prefersDark)
        return;
    m_desktopPrefersDark = prefersDark;
    Q_EMIT desktopPrefersDarkChanged();
    update();
}

void AppearanceController::update()
{
    bool dark = m_desktopPrefersDark;
    if (m_appearance == u"dark")
        dark = true;
    else if (m_appearance == u"light")
        dark = false;
    if (dark == m_dark)
        return;
    m_dark = dark;
    Q_EMIT darkChanged();
}

} // namespace kivo
