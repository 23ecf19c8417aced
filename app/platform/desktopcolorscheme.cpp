#include "app/platform/desktopcolorscheme.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPalette>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcColorScheme, "kivo.app.appearance", QtWarningMsg)

namespace kivo {

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString portalInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString colorSchemeKey = u"color-scheme"_s;

/** Read() wraps the value in one variant more than its signature says; peel them all off. */
QVariant unwrap(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    if (value.canConvert<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        if (argument.currentType() == QDBusArgument::VariantType) {
            QDBusVariant inner;
            argument >> inner;
            return unwrap(inner.variant());
        }
    }
    return value;
}

} // namespace

DesktopColorScheme::DesktopColorScheme(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    qGuiApp->installEventFilter(this);
    m_prefersDark = paletteIsDark();
    askPortal();
}

bool DesktopColorScheme::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange)
        update();
    return QObject::eventFilter(watched, event);
}

void DesktopColorScheme::askPortal()
{
    if (!m_bus.isConnected())
        return;
    // QtDBus connects signals only by signature strings.
    m_bus.connect(portalService, portalPath, portalInterface, u"SettingChanged"_s, this,
                SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    QDBusMessage read = QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, u"Read"_s);
    read << appearanceGroup << colorSchemeKey;
    // Asked without waiting: the window must not hang on a slow or absent portal.
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *call) {
        call->deleteLater();
        const QDBusPendingReply<QVariant> reply = *call;
        if (reply.isError()) {
            qCDebug(lcColorScheme) << "no settings portal:" << reply.error().message();
            return;
        }
        takePortalValue(reply.value());
    });
}

void DesktopColorScheme::portalSettingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group == appearanceGroup && key == colorSchemeKey)
        takePortalValue(value.variant());
}

void DesktopColorScheme::takePortalValue(const QVariant &value)
{
    bool ok = false;
    const int scheme = unwrap(value).toInt(&ok);
    if (!ok)
        return;
    m_portalScheme = scheme;
    update();
}

void DesktopColorScheme::update()
{
    // "No preference" from the portal leaves the decision to the palette.
    const bool dark = m_portalScheme == 1 || (m_portalScheme != 2 && paletteIsDark());
    if (dark == m_prefersDark)
        return;
    m_prefersDark = dark;
    Q_EMIT prefersDarkChanged();
}

bool DesktopColorScheme::paletteIsDark()
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

} // namespace kivo
