#include "ingest/bridge/bridgerouter.h"

#include <QTest>

using namespace Qt::StringLiterals;
using kivo::BridgeRoute;
using kivo::HTTPRequest;
namespace BridgeRouter = kivo::BridgeRouter;

Q_DECLARE_METATYPE(kivo::BridgeRoute)

namespace {

HTTPRequest request(const QString &method, const QString &path, const QString &origin = {}, const QByteArray &body = {})
{
    HTTPRequest made;
    made.method = method;
    made.path = path;
    if (!origin.isNull())
        made.headers.insert(u"origin"_s, origin);
    made.body = body;
    return made;
}

} // namespace

/** Which route a request takes, what a body must hold, and which peers count as this machine. */
class TestBridgeRouter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void routes_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("origin");
        QTest::addColumn<BridgeRoute>("route");

        const QString none;
        QTest::newRow("GET /") << u"GET"_s << u"/"_s << none << BridgeRoute::alive;
        QTest::newRow("clipperconfig") << u"GET"_s << u"/clipperconfig"_s << none << BridgeRoute::clipperConfig;
        QTest::newRow("clipstate with a query") << u"GET"_s << u"/clipstate?t=1"_s << none << BridgeRoute::clipState;
        QTest::newRow("shortcuts, longer path") << u"GET"_s << u"/shortcutsXYZ"_s << none << BridgeRoute::shortcuts;
        QTest::newRow("collections") << u"GET"_s << u"/collections"_s << none << BridgeRoute::collections;
        QTest::newRow("clipmode before clip") << u"POST"_s << u"/clipmode"_s << none << BridgeRoute::clipMode;
        QTest::newRow("clip") << u"POST"_s << u"/clip"_s << none << BridgeRoute::clip;
        QTest::newRow("clip with a query") << u"POST"_s << u"/clip?from=menu"_s << none << BridgeRoute::clip;
        QTest::newRow("POST to a GET path that begins with /clip")
            << u"POST"_s << u"/clipstate"_s << none << BridgeRoute::clip;
        QTest::newRow("xbookmarks") << u"POST"_s << u"/xbookmarks"_s << none << BridgeRoute::xBookmarks;
        QTest::newRow("capture") << u"POST"_s << u"/capture"_s << none << BridgeRoute::capture;
        QTest::newRow("GET to a POST path") << u"GET"_s << u"/clip"_s << none << BridgeRoute::alive;
        QTest::newRow("GET to capture") << u"GET"_s << u"/capture"_s << none << BridgeRoute::alive;
        QTest::newRow("POST to a GET path") << u"POST"_s << u"/collections"_s << none << BridgeRoute::alive;
        QTest::newRow("PUT") << u"PUT"_s << u"/clip"_s << none << BridgeRoute::alive;
        QTest::newRow("method is case-sensitive") << u"post"_s << u"/clip"_s << none << BridgeRoute::alive;
        QTest::newRow("prefix of the whole target") << u"GET"_s << u"//clipstate"_s << none << BridgeRoute::alive;
        QTest::newRow("absolute target") << u"GET"_s << u"http://127.0.0.1:17894/clipstate"_s << none
                                         << BridgeRoute::alive;
        QTest::newRow("OPTIONS anywhere") << u"OPTIONS"_s << u"*"_s << none << BridgeRoute::preflight;
        QTest::newRow("web origin on OPTIONS")
            << u"OPTIONS"_s << u"/clip"_s << u"https://example.com"_s << BridgeRoute::forbidden;
        QTest::newRow("web origin on GET /")
            << u"GET"_s << u"/"_s << u"http://localhost:3000"_s << BridgeRoute::forbidden;
        QTest::newRow("web origin in capitals")
            << u"POST"_s << u"/clip"_s << u"HTTPS://EVIL.EXAMPLE"_s << BridgeRoute::forbidden;
        QTest::newRow("chrome extension origin")
            << u"GET"_s << u"/collections"_s << u"chrome-extension://abcdef"_s << BridgeRoute::collections;
        QTest::newRow("firefox extension origin")
            << u"OPTIONS"_s << u"/clip"_s << u"moz-extension://1234"_s << BridgeRoute::preflight;
        QTest::newRow("null origin") << u"GET"_s << u"/clipstate"_s << u"null"_s << BridgeRoute::clipState;
        QTest::newRow("empty origin") << u"GET"_s << u"/clipstate"_s << QString(u""_s) << BridgeRoute::clipState;
        QTest::newRow("scheme without slashes") << u"GET"_s << u"/"_s << u"https:example.com"_s << BridgeRoute::alive;
    }

    void routes()
    {
        QFETCH(QString, method);
        QFETCH(QString, path);
        QFETCH(QString, origin);
        QTEST(BridgeRouter::routeOf(request(method, path, origin)), "route");
    }

    void answersAtOnce_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("answer");

        QTest::newRow("clip") << u"/clip"_s
                              << QByteArray("{\"items\":[{\"type\":\"image\",\"url\":\"https://a/b.png\"}]}") << 200
                              << QByteArray("ok");
        QTest::newRow("clip, items empty")
            << u"/clip"_s << QByteArray("{\"items\":[]}") << 400 << QByteArray("bad request");
        QTest::newRow("clip, no items") << u"/clip"_s << QByteArray("{\"target\":\"inbox\"}") << 400
                                        << QByteArray("bad request");
        QTest::newRow("clip, not JSON") << u"/clip"_s << QByteArray("items=1") << 400 << QByteArray("bad request");
        QTest::newRow("clip, an array") << u"/clip"_s << QByteArray("[{\"items\":[{}]}]") << 400
                                        << QByteArray("bad request");
        QTest::newRow("clip, an item not an object")
            << u"/clip"_s << QByteArray("{\"items\":[\"https://a\"]}") << 400 << QByteArray("bad request");
        QTest::newRow("clip, a field of the wrong type")
            << u"/clip"_s << QByteArray("{\"items\":[{\"url\":5}]}") << 400 << QByteArray("bad request");
        QTest::newRow("clip, item without fields")
            << u"/clip"_s << QByteArray("{\"items\":[{}]}") << 200 << QByteArray("ok");
        QTest::newRow("clipmode, garbage") << u"/clipmode"_s << QByteArray("\x01\x02") << 200 << QByteArray("ok");
        QTest::newRow("clipmode, active true")
            << u"/clipmode"_s << QByteArray("{\"active\":true}") << 200 << QByteArray("ok");
        QTest::newRow("xbookmarks, garbage")
            << u"/xbookmarks"_s << QByteArray("nope") << 200 << QByteArray("{\"received\":0}");
        QTest::newRow("xbookmarks, valid and invalid")
            << u"/xbookmarks"_s
            << QByteArray("{\"items\":[{\"id\":\"1\",\"url\":\"https://x.com/a/status/12\"},"
                          "{\"id\":\"2\",\"url\":\"https://x.com/a/likes\"},{\"url\":\"https://x.com/a/status/3\"},"
                          "{\"id\":\"4\",\"url\":\"https://mobile.twitter.com/b/status/4?s=20\",\"media\":[\"http://"
                          "no\",\"https://yes\"]}]}")
            << 200 << QByteArray("{\"received\":2}");
        QTest::newRow("capture") << u"/capture"_s << QByteArray("{\"type\":\"selection\",\"text\":\"hi\"}") << 200
                                 << QByteArray("ok");
        QTest::newRow("capture without a type")
            << u"/capture"_s << QByteArray("{\"url\":\"https://a\"}") << 400 << QByteArray("bad request");
        QTest::newRow("capture without a url is still ok")
            << u"/capture"_s << QByteArray("{\"type\":\"image\"}") << 200 << QByteArray("ok");
    }

    void answersAtOnce()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, body);
        const kivo::BridgeDecision decision = BridgeRouter::decide(request(u"POST"_s, path, {}, body), false);
        QVERIFY(decision.answer);
        QTEST(decision.answer->status, "status");
        QTEST(decision.answer->body, "answer");
        QCOMPARE(decision.answer->contentType, u"text/plain"_s);
    }

    void clipValues()
    {
        const kivo::BridgeDecision decision
            = BridgeRouter::decide(request(u"POST"_s, u"/clip"_s, {},
                                       "{\"target\":\"inbox\",\"collectionId\":\"c-1\",\"items\":[{\"type\":\"page\","
                                       "\"url\":\"https://a.example/p\","
                                       "\"sourceURL\":\"https://a.example\",\"title\":\"T\",\"preview\":\"data:image/"
                                       "png;base64,AA==\",\"extra\":1},"
                                       "{\"type\":\"selection\",\"text\":\"words\",\"displaySrc\":null}]}"),
                false);
        QVERIFY(decision.clip);
        QVERIFY(decision.clip->toInbox);
        QCOMPARE(decision.clip->collectionId, std::optional<QString>(u"c-1"_s));
        QCOMPARE(decision.clip->items.size(), 2);
        QCOMPARE(decision.clip->items.at(0).type, u"page"_s);
        QCOMPARE(decision.clip->items.at(0).preview, u"data:image/png;base64,AA=="_s);
        QCOMPARE(decision.clip->items.at(1).text, u"words"_s);
        QVERIFY(decision.clip->items.at(1).displaySrc.isEmpty());
    }

    void clipModeEnds_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("ends");
        QTest::newRow("false") << QByteArray("{\"active\":false}") << true;
        QTest::newRow("true") << QByteArray("{\"active\":true}") << false;
        QTest::newRow("missing") << QByteArray("{}") << false;
        QTest::newRow("zero is not false") << QByteArray("{\"active\":0}") << false;
        QTest::newRow("the text false") << QByteArray("{\"active\":\"false\"}") << false;
        QTest::newRow("not JSON") << QByteArray("active=false") << false;
    }

    void clipModeEnds()
    {
        QFETCH(QByteArray, body);
        QTEST(BridgeRouter::decide(request(u"POST"_s, u"/clipmode"_s, {}, body), false).endClipSession, "ends");
    }

    void clipStateIsMadeByHand()
    {
        QCOMPARE(BridgeRouter::decide(request(u"GET"_s, u"/clipstate"_s), true).answer->body, "{\"active\":true}");
        QCOMPARE(BridgeRouter::decide(request(u"GET"_s, u"/clipstate"_s), false).answer->body, "{\"active\":false}");
    }

    void localHosts_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("local");
        QTest::newRow("IPv4 loopback") << u"127.0.0.1"_s << true;
        QTest::newRow("IPv6 loopback") << u"::1"_s << true;
        QTest::newRow("IPv4 loopback mapped into IPv6") << u"::ffff:127.0.0.1"_s << true;
        QTest::newRow("localhost") << u"localhost"_s << true;
        QTest::newRow("another loopback address") << u"127.0.0.2"_s << false;
        QTest::newRow("a LAN address") << u"192.168.1.20"_s << false;
        QTest::newRow("a public IPv6 address") << u"2001:db8::2"_s << false;
    }

    void localHosts()
    {
        QFETCH(QString, host);
        QTEST(BridgeRouter::isLocalHost(host), "local");
    }
};

QTEST_GUILESS_MAIN(TestBridgeRouter)
#include "tst_bridgerouter.moc"
