#include "surfaces/window/windowcontroller.h"

#include "core/launchoptions.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** Key positions by the virtual key codes settings are stored with. */
const QHash<int, QString> &keyNames()
{
    static const QHash<int, QString> names{{0, u"A"_s}, {1, u"S"_s}, {2, u"D"_s}, {3, u"F"_s}, {4, u"H"_s}, {5, u"G"_s},
        {6, u"Z"_s}, {7, u"X"_s}, {8, u"C"_s}, {9, u"V"_s}, {11, u"B"_s}, {12, u"Q"_s}, {13, u"W"_s}, {14, u"E"_s},
        {15, u"R"_s}, {16, u"Y"_s}, {17, u"T"_s}, {18, u"1"_s}, {19, u"2"_s}, {20, u"3"_s}, {21, u"4"_s}, {22, u"6"_s},
        {23, u"5"_s}, {24, u"="_s}, {25, u"9"_s}, {26, u"7"_s}, {27, u"-"_s}, {28, u"8"_s}, {29, u"0"_s}, {30, u"]"_s},
        {31, u"O"_s}, {32, u"U"_s}, {33, u"["_s}, {34, u"I"_s}, {35, u"P"_s}, {36, u"Return"_s}, {37, u"L"_s},
        {38, u"J"_s}, {39, u"'"_s}, {40, u"K"_s}, {41, u";"_s}, {42, u"\\"_s}, {43, u","_s}, {44, u"/"_s}, {45, u"N"_s},
        {46, u"M"_s}, {47, u"."_s}, {48, u"Tab"_s}, {49, u"Space"_s}, {50, u"`"_s}, {51, u"Backspace"_s},
        {53, u"Esc"_s}, {96, u"F5"_s}, {97, u"F6"_s}, {98, u"F7"_s}, {99, u"F3"_s}, {100, u"F8"_s}, {101, u"F9"_s},
        {103, u"F11"_s}, {109, u"F10"_s}, {111, u"F12"_s}, {118, u"F4"_s}, {120, u"F2"_s}, {122, u"F1"_s},
        {123, u"Left"_s}, {124, u"Right"_s}, {125, u"Down"_s}, {126, u"Up"_s}};
    return names;
}

} // namespace

WindowController::WindowController(QObject *parent) : QObject(parent)
{
}

void WindowController::setStore(Store *store)
{
    if (m_store == store)
        return;
    m_store = store;
    Q_EMIT storeChanged();
}

void WindowController::setSettings(AppSettings *settings)
{
    if (m_settings == settings)
        return;
    if (m_settings)
        disconnect(m_settings, nullptr, this, nullptr);
    m_settings = settings;
    if (m_settings) {
        connect(m_settings, &AppSettings::sidebarToggleKeyCodeChanged, this,
            &WindowController::sidebarToggleSequenceChanged);
        connect(m_settings, &AppSettings::sidebarToggleModifiersChanged, this,
            &WindowController::sidebarToggleSequenceChanged);
    }
    Q_EMIT settingsChanged();
    Q_EMIT sidebarToggleSequenceChanged();
}

QString WindowController::keySequence(int keyCode, int modifiers)
{
    const QString key = keyNames().value(keyCode);
    if (key.isEmpty())
        return {};
    QStringList parts;
    if (modifiers & 256)
        parts.append(u"Ctrl"_s);
    if (modifiers & 4096)
        parts.append(u"Meta"_s);
    if (modifiers & 2048)
        parts.append(u"Alt"_s);
    if (modifiers & 512)
        parts.append(u"Shift"_s);
    parts.append(key);
    return parts.join(u'+');
}

QString WindowController::sidebarToggleSequence() const
{
    if (!m_settings)
        return {};
    return keySequence(m_settings->sidebarToggleKeyCode(), m_settings->sidebarToggleModifiers());
}

void WindowController::setSidebarWidth(double width)
{
    if (m_settings)
        m_settings->setSidebarWidth(std::clamp(width, minimumSidebarWidth, maximumSidebarWidth));
}

void WindowController::toggleSidebar()
{
    if (m_settings)
        m_settings->setSidebarVisible(!m_settings->sidebarVisible());
}

void WindowController::toggleDetails()
{
    if (!m_store)
        return;
    if (!m_store->detailsItemId().isEmpty()) {
        m_store->setDetailsItemId(QString());
        return;
    }
    QString target = m_store->selectedItemId();
    const QStringList selected = m_store->selectedItemIdList();
    if (target.isEmpty() && !selected.isEmpty())
        target = selected.constFirst();
    m_store->setDetailsItemId(target);
}

bool WindowController::viewOptionsAtStart()
{
    return LaunchOptions::current().viewOptions;
}

} // namespace kivo
