#include "app/platform/trayicon.h"

#include <QGuiApplication>
#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

namespace kivo {

TrayIcon::TrayIcon(QObject *parent)
    : QObject(parent)
    , m_menu(new QMenu)
    , m_icon(new QSystemTrayIcon(this))
{
    m_menu->addAction(u"Open Kivo"_s, this, &TrayIcon::openRequested);
    m_menu->addSeparator();
    m_menu->addAction(u"Quit Kivo"_s, this, &TrayIcon::quitRequested);
    m_icon->setContextMenu(m_menu);
    m_icon->setIcon(QGuiApplication::windowIcon());
    m_icon->setToolTip(u"Kivo"_s);
    connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
            Q_EMIT openRequested();
    });
}

TrayIcon::~TrayIcon()
{
    // The menu has no parent: a QWidget cannot be owned by a plain QObject.
    delete m_menu;
}

bool TrayIcon::isAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

bool TrayIcon::show()
{
    if (!isAvailable())
        return false;
    m_icon->show();
    return true;
}

bool TrayIcon::isVisible() const
{
    return m_icon->isVisible();
}

} // namespace kivo
