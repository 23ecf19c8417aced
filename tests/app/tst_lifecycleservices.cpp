// The smaller services of the application's life: the memory watch and the cache registry, the
// login item's autostart file, the analytics client against a real HTTP server on 127.0.0.1, and
// the local socket through which a second launch asks for the window.

#include "app/lifecycle/analyticsclient.h"
#include "app/lifecycle/loginitem.h"
#include "app/lifecycle/memorywatch.h"
#include "app/lifecycle/singleinstance.h"
#include "core/memorycaches.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QWindow>
#include <QtConcurrent>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/** An HTTP server that records each request and answers 200 with an empty body. */
class RecordingServer : public QObject
{
public:
    struct Request {
        QByteArray head;
        QByteArray body;
    };

    RecordingServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                ++connections;
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
            }
        });
    }

    [[nodiscard]] QUrl url() const { return QUrl(u"http://127.0.0.1:%1/analytics"_s.arg(m_server.serverPort())); }

    QList<Request> requests;
    int connections = 0;

private:
    void read(QTcpSocket *socket)
    {
        QByteArray &buffer = m_buffers[socket];
        buffer += socket->readAll();
        const qsizetype end = buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        const QByteArray head = buffer.left(end);
        qsizetype length = 0;
        for (const QByteArray &line : head.split('\n')) {
            if (line.toLower().startsWith("content-length:"))
                length = line.mid(15).trimmed().toLongLong();
        }
        if (buffer.size() < end + 4 + length)
            return;
        requests.append({head, buffer.mid(end + 4, length)});
        m_buffers.remove(socket);
        socket->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_buffers;
};

} // namespace

class TestLifecycleServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void purgeEmptiesEveryRegisteredCache();
    void idlePurgeWaitsAndIsCancelledByActivation();
    void ceilingPurgesOncePerCrossing();
    void residentSizeIsReadFromTheKernel();
    void loginItemWritesAndRemovesAutostartEntry();
    void loginItemFailureIsLogged();
    void analyticsSendsOnlyWhenConfiguredAndEnabled_data();
    void analyticsSendsOnlyWhenConfiguredAndEnabled();
    void analyticsOnceIsOncePerInstallation();
    void secondLaunchShowsTheHiddenWindow();
    void nobodyListeningMeansNoAnswer();
};

void TestLifecycleServices::purgeEmptiesEveryRegisteredCache()
{
    QStringList thumbnails{u"a"_s, u"b"_s};
    int favicons = 3;
    const int first = kivo::MemoryCaches::add(u"thumbnails"_s, [&] { thumbnails.clear(); });
    const int second = kivo::MemoryCaches::add(u"favicons"_s, [&] { favicons = 0; });
    kivo::MemoryWatch watch;
    QSignalSpy purged(&watch, &kivo::MemoryWatch::purged);
    watch.purge(u"test"_s);
    QVERIFY(thumbnails.isEmpty());
    QCOMPARE(favicons, 0);
    QCOMPARE(purged.size(), 1);

    kivo::MemoryCaches::remove(first);
    thumbnails = {u"c"_s};
    QCOMPARE(kivo::MemoryCaches::purgeAll(), QStringList{u"favicons"_s});
    QCOMPARE(thumbnails, QStringList{u"c"_s});
    kivo::MemoryCaches::remove(second);
    QVERIFY(kivo::MemoryCaches::names().isEmpty());
}

void TestLifecycleServices::idlePurgeWaitsAndIsCancelledByActivation()
{
    kivo::MemoryWatch watch;
    watch.setIdleDelay(300);
    QSignalSpy purged(&watch, &kivo::MemoryWatch::purged);

    watch.applicationResignedActive();
    QVERIFY(watch.idlePurgePending());
    QTest::qWait(100);
    watch.applicationBecameActive();
    QVERIFY(!watch.idlePurgePending());
    QTest::qWait(400);
    QCOMPARE(purged.size(), 0);

    watch.applicationResignedActive();
    QTRY_COMPARE(purged.size(), 1);
    QCOMPARE(purged.constFirst().constFirst().toString(), u"idle"_s);
}

void TestLifecycleServices::ceilingPurgesOncePerCrossing()
{
    kivo::MemoryWatch watch;
    qint64 resident = 100;
    watch.setResidentSizeSource([&resident] { return resident; });
    QSignalSpy purged(&watch, &kivo::MemoryWatch::purged);
    watch.setCeiling(1000, 20);
    QTest::qWait(100);
    QCOMPARE(purged.size(), 0);
    resident = 2000;
    QTRY_COMPARE(purged.size(), 1);
    QTest::qWait(150); // still above: not purged again and again
    QCOMPARE(purged.size(), 1);
    resident = 500;
    QTest::qWait(100);
    resident = 1500;
    QTRY_COMPARE(purged.size(), 2);
}

void TestLifecycleServices::residentSizeIsReadFromTheKernel()
{
    const qint64 before = kivo::MemoryWatch::residentBytes();
    QVERIFY(before > 1024 * 1024);
    // Touching 64 MiB makes them resident; the figure must follow.
    QByteArray block(64 * 1024 * 1024, 'k');
    QVERIFY(kivo::MemoryWatch::residentBytes() >= before + 60 * 1024 * 1024);
    QCOMPARE(block.at(12345), 'k');
}

void TestLifecycleServices::loginItemWritesAndRemovesAutostartEntry()
{
    kivo::test::Sandbox sandbox;
    const QString config = sandbox.path() + u"/xdg-config"_s;
    qputenv("XDG_CONFIG_HOME", config.toUtf8());
    kivo::LoginItem item;
    QSignalSpy changed(&item, &kivo::LoginItem::enabledChanged);
    QCOMPARE(kivo::LoginItem::autostartPath(), config + u"/autostart/kivo.desktop"_s);
    QVERIFY(!item.isEnabled());

    QVERIFY(item.setEnabled(true));
    QVERIFY(item.isEnabled());
    const QString entry = QString::fromUtf8(kivo::test::readFile(kivo::LoginItem::autostartPath()));
    QVERIFY(entry.startsWith(u"[Desktop Entry]\nType=Application\n"_s));
    QVERIFY2(entry.contains(u"\nExec="_s + QCoreApplication::applicationFilePath() + u'\n'), qPrintable(entry));

    QVERIFY(item.setEnabled(false));
    QVERIFY(!QFile::exists(kivo::LoginItem::autostartPath()));
    QCOMPARE(changed.size(), 2);
    qunsetenv("XDG_CONFIG_HOME");

    QCOMPARE(kivo::LoginItem::desktopEntry(u"/opt/My Apps/kivo"_s).split('\n').at(4), QByteArray(R"(Exec="/opt/My Apps/kivo")"));
}

void TestLifecycleServices::loginItemFailureIsLogged()
{
    kivo::test::Sandbox sandbox;
    const QString config = sandbox.path() + u"/xdg-config"_s;
    // "autostart" is a file, so the folder for the entry cannot be made.
    kivo::test::writeFile(config + u"/autostart"_s, "not a folder");
    qputenv("XDG_CONFIG_HOME", config.toUtf8());
    QStringList logged;
    kivo::setSystemLogObserver([&logged](const QString &line) { logged.append(line); });
    kivo::LoginItem item;
    QSignalSpy changed(&item, &kivo::LoginItem::enabledChanged);
    QVERIFY(!item.setEnabled(true));
    kivo::setSystemLogObserver(nullptr);
    qunsetenv("XDG_CONFIG_HOME");
    QCOMPARE(logged.size(), 1);
    QVERIFY2(logged.constFirst().startsWith(u"[LoginItem] toggle failed: "_s), qPrintable(logged.constFirst()));
    QVERIFY(!item.isEnabled());
    QCOMPARE(changed.size(), 0);
}

void TestLifecycleServices::analyticsSendsOnlyWhenConfiguredAndEnabled_data()
{
    QTest::addColumn<bool>("hostSet");
    QTest::addColumn<QVariant>("enabled"); // the stored `analyticsEnabled`, invalid when unset
    QTest::addColumn<bool>("sends");
    QTest::newRow("host, enabled by default") << true << QVariant() << true;
    QTest::newRow("host, enabled") << true << QVariant(true) << true;
    QTest::newRow("host, disabled") << true << QVariant(false) << false;
    QTest::newRow("no host") << false << QVariant() << false;
}

void TestLifecycleServices::analyticsSendsOnlyWhenConfiguredAndEnabled()
{
    QFETCH(bool, hostSet);
    QFETCH(QVariant, enabled);
    QFETCH(bool, sends);
    kivo::test::Sandbox sandbox;
    if (enabled.isValid()) {
        kivo::UserDefaults defaults;
        defaults.setValue(u"analyticsEnabled"_s, enabled);
        defaults.sync();
    }
    RecordingServer server;
    QNetworkAccessManager network;
    kivo::AnalyticsClient client(hostSet ? server.url() : QUrl(), u"A-KEY-1"_s, &network);
    QCOMPARE(client.track(u"app_opened"_s), sends);
    if (!sends) {
        QTest::qWait(300);
        QCOMPARE(server.connections, 0);
        return;
    }
    QTRY_COMPARE(server.requests.size(), 1);
    const RecordingServer::Request request = server.requests.constFirst();
    QVERIFY2(request.head.startsWith("POST /analytics/api/v0/events HTTP/1.1\r\n"), request.head.constData());
    QVERIFY(request.head.contains("\r\nApp-Key: A-KEY-1"));
    const QJsonArray events = QJsonDocument::fromJson(request.body).array();
    QCOMPARE(events.size(), 1);
    const QJsonObject event = events.at(0).toObject();
    QCOMPARE(event.value(u"eventName"_s).toString(), u"app_opened"_s);
    QCOMPARE(event.value(u"props"_s).toObject(), QJsonObject{});
    QVERIFY(QDateTime::fromString(event.value(u"timestamp"_s).toString(), Qt::ISODateWithMs).isValid());
}

void TestLifecycleServices::analyticsOnceIsOncePerInstallation()
{
    kivo::test::Sandbox sandbox;
    RecordingServer server;
    QNetworkAccessManager network;
    kivo::AnalyticsClient client(server.url(), u"k"_s, &network);
    QVERIFY(client.trackOnce(u"library_created"_s));
    QVERIFY(!client.trackOnce(u"library_created"_s));
    QVERIFY(kivo::UserDefaults().boolValue(u"analytics.once.library_created"_s));
    QTRY_COMPARE(server.requests.size(), 1);
    QTest::qWait(200);
    QCOMPARE(server.requests.size(), 1);
}

void TestLifecycleServices::secondLaunchShowsTheHiddenWindow()
{
    kivo::test::Sandbox sandbox;
    qputenv("XDG_RUNTIME_DIR", sandbox.path().toUtf8());
    const QString root = sandbox.libraryRoot();
    QDir().mkpath(root);
    QVERIFY(kivo::SingleInstance::serverName(root).startsWith(sandbox.path() + u"/kivo-"_s));
    // The name depends on the library: another library has another socket.
    QVERIFY(kivo::SingleInstance::serverName(root) != kivo::SingleInstance::serverName(sandbox.path()));

    kivo::SingleInstance instance(root);
    QVERIFY(instance.listen());
    QWindow window;
    QObject::connect(&instance, &kivo::SingleInstance::showRequested, &window, &QWindow::show);
    QSignalSpy requested(&instance, &kivo::SingleInstance::showRequested);
    QVERIFY(!window.isVisible());

    // The second launch blocks while it asks; this process answers from its event loop meanwhile.
    QFuture<qint64> answer = QtConcurrent::run([root] { return kivo::SingleInstance::askToShow(root); });
    QTRY_VERIFY(answer.isFinished());
    QCOMPARE(answer.result(), QCoreApplication::applicationPid());
    QCOMPARE(requested.size(), 1);
    QCOMPARE(requested.constFirst().constFirst().toLongLong(), QCoreApplication::applicationPid());
    QVERIFY(window.isVisible());
    qunsetenv("XDG_RUNTIME_DIR");
}

void TestLifecycleServices::nobodyListeningMeansNoAnswer()
{
    kivo::test::Sandbox sandbox;
    qputenv("XDG_RUNTIME_DIR", sandbox.path().toUtf8());
    QCOMPARE(kivo::SingleInstance::askToShow(sandbox.libraryRoot(), 500), 0);
    qunsetenv("XDG_RUNTIME_DIR");
}

QTEST_MAIN(TestLifecycleServices)
#include "tst_lifecycleservices.moc"
