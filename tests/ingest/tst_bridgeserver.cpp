#include "core/appsettings.h"
#include "core/database.h"
#include "core/records.h"
#include "core/store.h"
#include "ingest/bridge/bridgeserver.h"
#include "ingest/bridge/httpparser.h"
#include "ingest/bridge/librarybridgehandler.h"
#include "tests/ingest/bridgeclient.h"
#include "tests/testsupport.h"

#include <QTest>
#include <QThread>

#include <memory>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using kivo::BridgeServer;
using kivo::test::Exchange;
using kivo::test::RawConnection;

namespace {

QByteArray post(const QByteArray &path, const QByteArray &body, const QByteArray &extraHeaders = {})
{
    return "POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1:17894\r\n" + extraHeaders
        + "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray get(const QByteArray &path, const QByteArray &extraHeaders = {})
{
    return "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1:17894\r\n" + extraHeaders + "\r\n";
}

const QByteArray aliveAnswer = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nAccess-Control-Allow-Origin: *\r\n"
                               "Access-Control-Allow-Headers: Content-Type\r\n"
                               "Access-Control-Allow-Methods: POST, GET, OPTIONS\r\nContent-Length: 17\r\n"
                               "Connection: close\r\n\r\nKivo bridge alive";

} // namespace

/** The bridge over real loopback sockets: every route's answer, the order of the fences, and its limits. */
class TestBridgeServer : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    std::unique_ptr<kivo::AppSettings> m_settings;
    std::unique_ptr<kivo::Store> m_store;
    std::unique_ptr<kivo::LibraryBridgeHandler> m_handler;
    std::unique_ptr<BridgeServer> m_server;
    QList<kivo::ClipRequest> m_clips;
    QList<kivo::CaptureRequest> m_captures;
    QList<QList<kivo::XBookmark>> m_bookmarkBatches;
    int m_sessionEnds = 0;

    quint16 port() const { return m_server->port(); }

    std::unique_ptr<BridgeServer> startedServer(const kivo::BridgeLimits &limits)
    {
        auto server = std::make_unique<BridgeServer>(m_handler.get());
        server->setPort(0);
        server->setLimits(limits);
        return server->start() ? std::move(server) : nullptr;
    }

    void seedCollections()
    {
        m_store->dbQueue()->write([](kivo::Database &db) {
            const auto collection = [&](const QString &id, const QString &name, std::optional<double> deletedAt = {}) {
                kivo::LibraryCollection made;
                made.id = id;
                made.name = name;
                made.createdAt = made.modifiedAt = 10;
                made.deletedAt = deletedAt;
                db.insert(made);
            };
            const auto item = [&](const QString &id, std::optional<double> deletedAt = {}) {
                kivo::LibraryItem made;
                made.id = id;
                made.kind = u"image"_s;
                made.createdAt = made.addedAt = made.modifiedAt = 10;
                made.deletedAt = deletedAt;
                db.insert(made);
            };
            const auto file = [&](const QString &itemId, const QString &collectionId, double addedAt) {
                db.insert(kivo::ItemCollection{itemId, collectionId, addedAt});
            };
            collection(u"col-zebra"_s, u"Zebra"_s);
            collection(u"col-alpha"_s, u"Alpha"_s);
            collection(u"col-mood"_s, u"Moodboard"_s);
            collection(u"col-arch"_s, u"Architecture"_s);
            collection(u"col-gone"_s, u"Thrown Away"_s, 20.0);
            item(u"item-1"_s);
            item(u"item-2"_s);
            item(u"item-3"_s, 30.0); // in the trash, and still counted
            file(u"item-1"_s, u"col-mood"_s, 100);
            file(u"item-2"_s, u"col-mood"_s, 300);
            file(u"item-3"_s, u"col-arch"_s, 200);
            file(u"item-1"_s, u"col-gone"_s, 400);
        });
    }

private Q_SLOTS:
    void initTestCase()
    {
        kivo::test::raiseDescriptorLimit(8192);
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        m_settings = std::make_unique<kivo::AppSettings>();
        m_settings->setClipperKey(u"k"_s);
        m_settings->setClipperShift(true);
        m_settings->setClipperMeta(true);
        m_settings->setClipperOptionHold(true);
        m_settings->setScreenshotHotkeyKeyCode(1);
        m_settings->setScreenshotHotkeyModifiers(768);
        m_settings->setLauncherHotkeyKeyCode(40);
        m_settings->setLauncherHotkeyModifiers(4096 | 2048);
        m_settings->setSavePageHotkeyKeyCode(11);
        m_settings->setSavePageHotkeyModifiers(768);
        m_settings->setShelfHotkeyKeyCode(46);
        m_settings->setShelfHotkeyModifiers(4096 | 256);
        m_settings->setDropRingRequireModifier(true);
        m_settings->setDropRingModifier(u"option"_s);
        m_settings->setDropRingBrowsersOnly(true);
        m_settings->setXBookmarkSyncEnabled(true);
        m_store = std::make_unique<kivo::Store>();
        m_store->initialise();
        QVERIFY(m_store->dbQueue());
        seedCollections();

        m_handler = std::make_unique<kivo::LibraryBridgeHandler>(m_settings.get(), m_store.get());
        connect(m_handler.get(), &kivo::LibraryBridgeHandler::clipArrived, this,
            [this](const kivo::ClipRequest &clip) { m_clips.append(clip); });
        connect(m_handler.get(), &kivo::LibraryBridgeHandler::captureArrived, this,
            [this](const kivo::CaptureRequest &capture) { m_captures.append(capture); });
        connect(m_handler.get(), &kivo::LibraryBridgeHandler::xBookmarksArrived, this,
            [this](const QList<kivo::XBookmark> &batch) { m_bookmarkBatches.append(batch); });
        connect(
            m_handler.get(), &kivo::LibraryBridgeHandler::clipSessionEndRequested, this, [this] { ++m_sessionEnds; });

        m_server = std::make_unique<BridgeServer>(m_handler.get());
        m_server->setPort(0);
        QVERIFY(m_server->start());
        QVERIFY(port() != 0);
    }

    void cleanupTestCase()
    {
        m_server.reset();
        m_handler.reset();
        m_store.reset();
        m_settings.reset();
        m_sandbox.reset();
    }

    void answers_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QString>("golden");

        const QByteArray web = "Origin: https://example.com\r\n";
        const QByteArray extension = "Origin: chrome-extension://kivoclipper\r\n";
        const QByteArray clip = "{\"items\":[{\"type\":\"image\",\"url\":\"https://a.example/b.png\"}]}";
        QTest::newRow("GET /") << get("/") << u"alive.http"_s;
        QTest::newRow("unknown path") << get("/favicon.ico") << u"alive.http"_s;
        QTest::newRow("GET on a POST route") << get("/clip") << u"alive.http"_s;
        QTest::newRow("POST on a GET route") << post("/collections", "{}") << u"alive.http"_s;
        QTest::newRow("PUT") << post("/clip", clip).replace(0, 4, "PUT") << u"alive.http"_s;
        QTest::newRow("OPTIONS") << QByteArray("OPTIONS /clip HTTP/1.1\r\n" + extension + "\r\n")
                                 << u"preflight.http"_s;
        QTest::newRow("web page's preflight")
            << QByteArray("OPTIONS /clip HTTP/1.1\r\n" + web + "\r\n") << u"forbidden.http"_s;
        QTest::newRow("web page's GET /") << get("/", web) << u"forbidden.http"_s;
        QTest::newRow("web page's clip") << post("/clip", clip, "Origin: HTTP://LOCALHOST:8000\r\n")
                                         << u"forbidden.http"_s;
        QTest::newRow("web page's collections") << get("/collections", web) << u"forbidden.http"_s;
        QTest::newRow("clipperconfig") << get("/clipperconfig", extension) << u"clipperconfig.http"_s;
        QTest::newRow("shortcuts") << get("/shortcuts") << u"shortcuts.http"_s;
        QTest::newRow("collections") << get("/collections?fresh=1", extension) << u"collections.http"_s;
        QTest::newRow("clipstate") << get("/clipstate") << u"clipstate-idle.http"_s;
        QTest::newRow("clipmode") << post("/clipmode", "{\"active\":true}") << u"ok.http"_s;
        QTest::newRow("clipmode, garbage") << post("/clipmode", "][") << u"ok.http"_s;
        QTest::newRow("clip") << post("/clip", clip, extension) << u"ok.http"_s;
        QTest::newRow("clip, empty items") << post("/clip", "{\"items\":[]}") << u"bad-request.http"_s;
        QTest::newRow("clip, not JSON") << post("/clip", "<html>") << u"bad-request.http"_s;
        QTest::newRow("clip, length not a number")
            << QByteArray("POST /clip HTTP/1.1\r\nContent-Length: abc\r\n\r\n" + clip) << u"bad-request.http"_s;
        QTest::newRow("xbookmarks, garbage") << post("/xbookmarks", "garbage") << u"xbookmarks-none.http"_s;
        QTest::newRow("capture") << post("/capture", "{\"type\":\"link\",\"url\":\"https://a.example\"}")
                                 << u"ok.http"_s;
        QTest::newRow("capture, no type")
            << post("/capture", "{\"url\":\"https://a.example\"}") << u"bad-request.http"_s;
    }

    void answers()
    {
        QFETCH(QByteArray, request);
        QFETCH(QString, golden);
        const Exchange answer = kivo::test::exchange(port(), request);
        QVERIFY(answer.closedByServer);
        QVERIFY(kivo::test::matchesGolden(golden, answer.received));
    }

    void clipStateFollowsTheSession()
    {
        m_server->setClipSessionActive(true);
        QCOMPARE(kivo::test::exchange(port(), get("/clipstate")).body(), "{\"active\":true}");
        m_server->setClipSessionActive(false);
        QCOMPARE(kivo::test::exchange(port(), get("/clipstate")).body(), "{\"active\":false}");
    }

    void answerComesBeforeTheApplicationHearsOfIt()
    {
        m_clips.clear();
        kivo::test::LogCapture log;
        // The main thread is kept from its event loop for the whole exchange: the answer cannot
        // depend on it, and the clip reaches the handler only once it turns again.
        Exchange answer;
        std::thread client([&] {
            RawConnection connection(port());
            connection.send(post("/clip",
                "{\"target\":\"inbox\",\"collectionId\":\"col-mood\",\"items\":["
                "{\"type\":\"page\",\"url\":\"https://a.example/p\",\"title\":\"A page\"},"
                "{\"type\":\"selection\",\"text\":\"words\"}]}"));
            answer = connection.receiveUntilClosed(5s);
        });
        client.join();
        QCOMPARE(answer.body(), "ok");
        QVERIFY(m_clips.isEmpty());
        QTRY_COMPARE(m_clips.size(), 1);
        const kivo::ClipRequest &clip = m_clips.constFirst();
        QVERIFY(clip.toInbox);
        QCOMPARE(clip.collectionId, std::optional<QString>(u"col-mood"_s));
        QCOMPARE(clip.items.size(), 2);
        QCOMPARE(clip.items.at(0).title, u"A page"_s);
        QCOMPARE(clip.items.at(1).text, u"words"_s);
        QCOMPARE(log.lines(), QStringList{u"clip received (2 item(s))"_s});
    }

    void handOvers()
    {
        m_captures.clear();
        m_bookmarkBatches.clear();
        m_sessionEnds = 0;
        kivo::test::exchange(port(), post("/clipmode", "{\"active\":true}"));
        kivo::test::exchange(port(), post("/clipmode", "{\"active\":false}"));
        kivo::test::exchange(port(), post("/capture", "{\"type\":\"selection\",\"text\":\"\"}"));
        kivo::test::exchange(port(), post("/capture", "{\"type\":\"image\",\"url\":\"not an address\"}"));
        kivo::test::exchange(
            port(), post("/capture", "{\"type\":\"image\",\"url\":\"https://a.example/i.png\",\"title\":\"I\"}"));
        const Exchange bookmarks = kivo::test::exchange(port(),
            post("/xbookmarks",
                "{\"items\":[{\"id\":\"9\",\"url\":\"https://x.com/u/status/9\",\"text\":\"t\","
                "\"author\":\"u\",\"media\":[\"https://pbs.example/9.jpg\"]}]}"));
        QCOMPARE(bookmarks.body(), "{\"received\":1}");
        QTRY_COMPARE(m_bookmarkBatches.size(), 1);
        QCOMPARE(m_bookmarkBatches.constFirst().constFirst().media, QStringList{u"https://pbs.example/9.jpg"_s});
        QCOMPARE(m_sessionEnds, 1);
        QCOMPARE(m_captures.size(), 1);
        QCOMPARE(m_captures.constFirst().title, u"I"_s);

        // With the sync off the answer still counts what arrived, and nothing is handed on.
        m_settings->setXBookmarkSyncEnabled(false);
        const QByteArray one = "{\"items\":[{\"id\":\"9\",\"url\":\"https://x.com/u/status/9\"}]}";
        QCOMPARE(kivo::test::exchange(port(), post("/xbookmarks", one)).body(), "{\"received\":1}");
        QTest::qWait(50);
        QCOMPARE(m_bookmarkBatches.size(), 1);
        m_settings->setXBookmarkSyncEnabled(true);
    }

    void bodyInPieces()
    {
        Exchange answer;
        kivo::test::inBackground([&] {
            const QByteArray request = post("/clip", "{\"items\":[{\"type\":\"text\",\"text\":\"slowly\"}]}");
            RawConnection connection(port());
            for (qsizetype at = 0; at < request.size(); at += 9) {
                connection.send(request.mid(at, 9));
                std::this_thread::sleep_for(5ms);
            }
            answer = connection.receiveUntilClosed(5s);
        });
        QCOMPARE(answer.body(), "ok");
    }

    void limits_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<bool>("answered");

        const QByteArray head = "POST / HTTP/1.1\r\nContent-Length: ";
        QTest::newRow("body of 1,000,000 bytes") << head + "1000000\r\n\r\n" + QByteArray(1000000, 'b') << true;
        QTest::newRow("body of 1,000,001 bytes") << head + "1000001\r\n\r\n" + QByteArray(1000001, 'b') << false;
        QTest::newRow("negative length") << head + "-5\r\n\r\n" << false;
        QTest::newRow("open head of 16,385 bytes") << QByteArray(16385, 'h') << false;
        QTest::newRow("chunked body") << QByteArray("POST /clip HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"
                                                    "5\r\nhello\r\n0\r\n\r\n")
                                      << false;
        QTest::newRow("head not UTF-8") << QByteArray("GET /\xc3\x28 HTTP/1.1\r\n\r\n") << false;
        QTest::newRow("request line of one word") << QByteArray("HELLO\r\n\r\n") << false;
        QTest::newRow("empty head") << QByteArray("\r\n\r\n") << false;
    }

    void limits()
    {
        QFETCH(QByteArray, request);
        QFETCH(bool, answered);
        Exchange answer;
        kivo::test::inBackground([&] {
            RawConnection connection(port());
            connection.send(request); // may fail half-way once the server has hung up
            answer = connection.receiveUntilClosed(5s);
        });
        QVERIFY(answer.closedByServer);
        if (answered)
            QCOMPARE(answer.received, aliveAnswer);
        else
            QCOMPARE(answer.received, QByteArray());
    }

    void openHeadAtTheLimitWaits()
    {
        QByteArray head = "GET / HTTP/1.1\r\nX-Pad: ";
        head += QByteArray(kivo::HttpParser::headLimit - head.size(), 'p');
        QCOMPARE(head.size(), 16384);
        Exchange answer;
        bool closedEarly = true;
        kivo::test::inBackground([&] {
            RawConnection connection(port());
            connection.send(head);
            closedEarly = connection.closedWithin(300ms);
            connection.send("\r\n\r\n");
            answer = connection.receiveUntilClosed(5s);
        });
        QVERIFY(!closedEarly);
        QCOMPARE(answer.received, aliveAnswer);
    }

    void oneRequestPerConnection_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::newRow("pipelined") << get("/") + get("/clipstate") + get("/shortcuts");
        QTest::newRow("keep-alive asked for") << get("/", "Connection: keep-alive\r\n");
        QTest::newRow("body followed by another request") << post("/", "{}") + get("/clipstate");
    }

    void oneRequestPerConnection()
    {
        QFETCH(QByteArray, request);
        const Exchange answer = kivo::test::exchange(port(), request);
        QVERIFY(answer.closedByServer);
        QCOMPARE(answer.received, aliveAnswer);
    }

    void peersThatStopSending()
    {
        Exchange answer;
        // Gone half-way through a request: the connection is let go at once, without waiting for the deadline.
        kivo::test::inBackground([&] {
            RawConnection connection(port());
            connection.send("POST /clip HTTP/1.1\r\nContent-Length: 50\r\n\r\n{\"items\"");
            connection.finishSending();
            answer = connection.receiveUntilClosed(5s);
        });
        QVERIFY(answer.closedByServer);
        QCOMPARE(answer.received, QByteArray());
        QTRY_COMPARE(m_server->state().openConnections.load(), 0);
    }

    void peersOnOtherAddressesAreCut()
    {
        const quint64 refusedBefore = m_server->state().refusedPeers;
        QByteArray received = "unset";
        bool closed = false;
        kivo::test::inBackground([&] {
            RawConnection connection(port(), "127.0.0.2");
            if (!connection.isConnected())
                return;
            connection.send(get("/"));
            closed = connection.closedWithin(3s, &received);
        });
        QVERIFY(closed);
        QCOMPARE(received, QByteArray());
        QCOMPARE(m_server->state().refusedPeers, refusedBefore + 1);
    }

    void halfSentRequestsTimeOut()
    {
        kivo::BridgeLimits limits;
        limits.requestTimeout = 400ms;
        auto server = startedServer(limits);
        QVERIFY(server);
        const quint16 slowPort = server->port();
        bool closed = false;
        QByteArray received;
        QElapsedTimer clock;
        qint64 closedAfter = 0;
        kivo::test::inBackground([&] {
            RawConnection connection(slowPort);
            clock.start();
            // A byte every 100 ms: busy enough to never look idle, never finishing.
            const QByteArray trickle = "GET / HTTP/1.1\r\nX-Slow: aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa";
            for (const char byte : trickle) {
                if (!connection.send(QByteArray(1, byte)))
                    break;
                if (connection.closedWithin(100ms, &received)) {
                    closed = true;
                    break;
                }
            }
            closedAfter = clock.elapsed();
        });
        QVERIFY(closed);
        QCOMPARE(received, QByteArray());
        QVERIFY2(closedAfter >= 350 && closedAfter < 2000, qPrintable(QString::number(closedAfter)));
        QCOMPARE(server->state().timedOut, quint64(1));
    }

    void theIdlestGivesWayAtTheBound()
    {
        kivo::BridgeLimits limits;
        limits.maxConnections = 8;
        auto server = startedServer(limits);
        QVERIFY(server);
        const quint16 boundPort = server->port();
        std::vector<std::unique_ptr<RawConnection>> idle;
        kivo::test::inBackground([&] {
            for (int index = 0; index < 8; ++index) {
                idle.push_back(std::make_unique<RawConnection>(boundPort));
                // Partly sent, so each is idle in the middle of a request; the first is the idlest.
                idle.back()->send("GET / HT");
                std::this_thread::sleep_for(20ms);
            }
        });
        QTRY_COMPARE(server->state().openConnections.load(), 8);
        bool firstClosed = false;
        bool othersOpen = true;
        Exchange answer;
        kivo::test::inBackground([&] {
            answer = kivo::test::exchange(boundPort, get("/"));
            firstClosed = idle.front()->closedWithin(2s);
            for (size_t index = 1; index < idle.size(); ++index)
                othersOpen = othersOpen && !idle.at(index)->closedWithin(10ms);
        });
        QCOMPARE(answer.received, aliveAnswer);
        QVERIFY(firstClosed);
        QVERIFY(othersOpen);
        QCOMPARE(server->state().evictedIdle, quint64(1));
    }

    void thousandConnectionsHeldAtOnce()
    {
        constexpr int count = 1000;
        std::vector<std::unique_ptr<RawConnection>> connections;
        kivo::test::inBackground([&] {
            for (int index = 0; index < count; ++index)
                connections.push_back(std::make_unique<RawConnection>(port()));
        });
        QTRY_COMPARE_WITH_TIMEOUT(m_server->state().openConnections.load(), count, 20000);
        int answered = 0;
        kivo::test::inBackground([&] {
            for (auto &connection : connections)
                connection->send(get("/"));
            for (auto &connection : connections)
                answered += connection->receiveUntilClosed(10s).received == aliveAnswer ? 1 : 0;
        });
        QCOMPARE(answered, count);
        connections.clear();
        QTRY_COMPARE(m_server->state().openConnections.load(), 0);
    }

    void startIsIdempotentAndTheTakenPortIsLogged()
    {
        QVERIFY(m_server->start());
        const quint16 first = port();
        QVERIFY(m_server->start());
        QCOMPARE(port(), first);

        kivo::test::LogCapture log;
        BridgeServer second(m_handler.get());
        second.setPort(first);
        QVERIFY(!second.start());
        QVERIFY(!second.isRunning());
        QCOMPARE(log.lines(), QStringList{u"[Bridge] failed to bind port "_s + QString::number(first)});
    }
};

QTEST_GUILESS_MAIN(TestBridgeServer)
#include "tst_bridgeserver.moc"
