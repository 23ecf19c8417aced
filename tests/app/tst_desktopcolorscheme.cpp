// Runs a private D-Bus daemon with a settings portal on it, and checks that the desktop's
// colour-scheme preference reaches Kivo at start and on every change, with the palette as the
// fallback where the portal has nothing to say.

#include "app/platform/desktopcolorscheme.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;

} // namespace

/** The settings portal as desktops run it: Read answers a variant wrapped in a variant. */
class FakePortal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    quint32 scheme = 0;

public Q_SLOTS:
    QDBusVariant Read(const QString &group, const QString &key)
    {
        if (group != u"org.freedesktop.appearance" || key != u"color-scheme") {
            sendErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, u"Requested setting not found"_s);
            return {};
        }
        return QDBusVariant(QVariant::fromValue(QDBusVariant(scheme)));
    }
};

class TestDesktopColorScheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void portalAnswerDecidesAtStart_data();
    void portalAnswerDecidesAtStart();
    void portalChangesAreFollowed();
    void withoutPortalThePaletteDecides();

private:
    [[nodiscard]] QDBusConnection clientBus() const { return QDBusConnection(u"client"_s); }
    void startPortal();
    void announce(const QString &key, quint32 value);
    static void setPaletteDark(bool dark);

    QProcess m_daemon;
    QString m_address;
    FakePortal m_portal;
    bool m_portalRunning = false;
};

void TestDesktopColorScheme::initTestCase()
{
    if (QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty())
        QSKIP("dbus-daemon is not installed");
    m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address=1"_s});
    QVERIFY(m_daemon.waitForStarted());
    QTRY_VERIFY(m_daemon.canReadLine());
    m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    QVERIFY(QDBusConnection::connectToBus(m_address, u"client"_s).isConnected());
}

void TestDesktopColorScheme::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(u"client"_s);
    m_daemon.terminate();
    m_daemon.waitForFinished();
}

void TestDesktopColorScheme::init()
{
    setPaletteDark(false);
}

void TestDesktopColorScheme::cleanup()
{
    if (m_portalRunning) {
        QDBusConnection portalBus(u"portal"_s);
        portalBus.unregisterObject(path);
        portalBus.unregisterService(service);
        QDBusConnection::disconnectFromBus(u"portal"_s);
        m_portalRunning = false;
    }
}

void TestDesktopColorScheme::startPortal()
{
    // Its own connection, so the calls really cross the bus.
    QDBusConnection portalBus = QDBusConnection::connectToBus(m_address, u"portal"_s);
    QVERIFY(portalBus.isConnected());
    QVERIFY(portalBus.registerObject(path, &m_portal, QDBusConnection::ExportAllSlots));
    QVERIFY(portalBus.registerService(service));
    m_portalRunning = true;
}

void TestDesktopColorScheme::announce(const QString &key, quint32 value)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, u"SettingChanged"_s);
    signal << u"org.freedesktop.appearance"_s << key << QVariant::fromValue(QDBusVariant(value));
    QVERIFY(QDBusConnection(u"portal"_s).send(signal));
}

void TestDesktopColorScheme::setPaletteDark(bool dark)
{
    QPalette palette = QGuiApplication::palette();
    palette.setColor(QPalette::Window, dark ? QColor(0x20, 0x20, 0x22) : QColor(0xef, 0xef, 0xef));
    QGuiApplication::setPalette(palette);
}

void TestDesktopColorScheme::portalAnswerDecidesAtStart_data()
{
    QTest::addColumn<quint32>("scheme");
    QTest::addColumn<bool>("darkPalette");
    QTest::addColumn<bool>("expected");
    QTest::newRow("prefer dark over a light palette") << 1u << false << true;
    QTest::newRow("prefer light over a dark palette") << 2u << true << false;
    QTest::newRow("no preference, dark palette") << 0u << true << true;
    QTest::newRow("no preference, light palette") << 0u << false << false;
}

void TestDesktopColorScheme::portalAnswerDecidesAtStart()
{
    QFETCH(quint32, scheme);
    QFETCH(bool, darkPalette);
    QFETCH(bool, expected);
    setPaletteDark(darkPalette);
    m_portal.scheme = scheme;
    startPortal();
    kivo::DesktopColorScheme desktop(clientBus());
    QTRY_VERIFY(desktop.portalAnswered());
    QCOMPARE(desktop.prefersDark(), expected);
}

void TestDesktopColorScheme::portalChangesAreFollowed()
{
    m_portal.scheme = 2;
    startPortal();
    kivo::DesktopColorScheme desktop(clientBus());
    QTRY_VERIFY(desktop.portalAnswered());
    QVERIFY(!desktop.prefersDark());
    QSignalSpy changed(&desktop, &kivo::DesktopColorScheme::prefersDarkChanged);

    announce(u"color-scheme"_s, 1);
    QTRY_VERIFY(desktop.prefersDark());
    QCOMPARE(changed.size(), 1);
    // Another key of the same group is not the colour scheme.
    announce(u"accent-color"_s, 2);
    announce(u"color-scheme"_s, 2);
    QTRY_VERIFY(!desktop.prefersDark());
    QCOMPARE(changed.size(), 2);
}

void TestDesktopColorScheme::withoutPortalThePaletteDecides()
{
    kivo::DesktopColorScheme desktop(clientBus());
    QVERIFY(!desktop.prefersDark());
    setPaletteDark(true);
    QTRY_VERIFY(desktop.prefersDark());
    setPaletteDark(false);
    QTRY_VERIFY(!desktop.prefersDark());
    QVERIFY(!desktop.portalAnswered());
}

QTEST_MAIN(TestDesktopColorScheme)
#include "tst_desktopcolorscheme.moc"
