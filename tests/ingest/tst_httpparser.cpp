#include "ingest/bridge/httpparser.h"

#include <QTest>

using namespace Qt::StringLiterals;
using kivo::ParseResult;
namespace HttpParser = kivo::HttpParser;

/** The request reader: what a buffer holds at each moment, and where it stops listening. */
class TestHttpParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void results_data()
    {
        QTest::addColumn<QByteArray>("buffer");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("body");

        const QByteArray head = "POST /clip HTTP/1.1\r\nContent-Length: 5\r\n\r\n";
        QTest::newRow("plain GET") << QByteArray("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n") << u"complete"_s
                                   << u"GET"_s << u"/"_s << QByteArray();
        QTest::newRow("body whole") << head + "hello" << u"complete"_s << u"POST"_s << u"/clip"_s
                                    << QByteArray("hello");
        QTest::newRow("body short") << head + "hell" << u"needMore"_s << QString() << QString() << QByteArray();
        QTest::newRow("bytes beyond the body are ignored")
            << head + "helloGET / HTTP/1.1\r\n\r\n"
            << u"complete"_s << u"POST"_s << u"/clip"_s << QByteArray("hello");
        QTest::newRow("no head end yet") << QByteArray("GET / HTTP/1.1\r\nHost: x\r\n") << u"needMore"_s << QString()
                                         << QString() << QByteArray();
        QTest::newRow("empty buffer") << QByteArray() << u"needMore"_s << QString() << QString() << QByteArray();
        QTest::newRow("open head at the limit")
            << QByteArray(HttpParser::headLimit, 'a') << u"needMore"_s << QString() << QString() << QByteArray();
        QTest::newRow("open head past the limit")
            << QByteArray(HttpParser::headLimit + 1, 'a') << u"invalid"_s << QString() << QString() << QByteArray();
        QTest::newRow("a closed head of any size")
            << "GET /big HTTP/1.1\r\nX-Pad: " + QByteArray(40000, 'p') + "\r\n\r\n"
            << u"complete"_s << u"GET"_s << u"/big"_s << QByteArray();
        QTest::newRow("empty head") << QByteArray("\r\n\r\n") << u"invalid"_s << QString() << QString() << QByteArray();
        QTest::newRow("head not UTF-8") << QByteArray("GET /\xff HTTP/1.1\r\n\r\n") << u"invalid"_s << QString()
                                        << QString() << QByteArray();
        QTest::newRow("UTF-8 path kept as sent") << QByteArray("GET /caf\xc3\xa9?q=1 HTTP/1.1\r\n\r\n") << u"complete"_s
                                                 << u"GET"_s << u"/café?q=1"_s << QByteArray();
        QTest::newRow("one part on the first line")
            << QByteArray("GET\r\n\r\n") << u"invalid"_s << QString() << QString() << QByteArray();
        QTest::newRow("blanks squeezed, no version needed")
            << QByteArray("  get    /x  \r\n\r\n") << u"complete"_s << u"get"_s << u"/x"_s << QByteArray();
        QTest::newRow("chunked refused") << QByteArray("POST /clip HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n")
                                         << u"invalid"_s << QString() << QString() << QByteArray();
        QTest::newRow("any transfer coding refused")
            << QByteArray("GET / HTTP/1.1\r\ntransfer-encoding: identity\r\n\r\n") << u"invalid"_s << QString()
            << QString() << QByteArray();
        QTest::newRow("length not a number is zero")
            << QByteArray("POST /clip HTTP/1.1\r\nContent-Length: abc\r\n\r\n{\"items\":[]}") << u"complete"_s
            << u"POST"_s << u"/clip"_s << QByteArray();
        QTest::newRow("length that overflows is zero")
            << QByteArray("POST / HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n") << u"complete"_s
            << u"POST"_s << u"/"_s << QByteArray();
        QTest::newRow("negative length") << QByteArray("POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n") << u"invalid"_s
                                         << QString() << QString() << QByteArray();
        QTest::newRow("length over the limit") << QByteArray("POST / HTTP/1.1\r\nContent-Length: 1000001\r\n\r\n")
                                               << u"invalid"_s << QString() << QString() << QByteArray();
        QTest::newRow("length at the limit waits for the body")
            << QByteArray("POST / HTTP/1.1\r\nContent-Length: 1000000\r\n\r\n") << u"needMore"_s << QString()
            << QString() << QByteArray();
        QTest::newRow("later header replaces earlier")
            << QByteArray("POST / HTTP/1.1\r\nContent-Length: 9\r\ncontent-length: 2\r\n\r\nokrest") << u"complete"_s
            << u"POST"_s << u"/"_s << QByteArray("ok");
        QTest::newRow("line without a colon skipped")
            << QByteArray("POST / HTTP/1.1\r\nnonsense\r\nContent-Length:\t 2 \r\n\r\nok") << u"complete"_s << u"POST"_s
            << u"/"_s << QByteArray("ok");
    }

    void results()
    {
        QFETCH(QByteArray, buffer);
        QFETCH(QString, kind);
        const ParseResult result = HttpParser::parse(buffer);
        const QString actual = result.kind == ParseResult::Kind::complete
            ? u"complete"_s
            : (result.kind == ParseResult::Kind::invalid ? u"invalid"_s : u"needMore"_s);
        QCOMPARE(actual, kind);
        if (!result.isComplete())
            return;
        QTEST(result.request.method, "method");
        QTEST(result.request.path, "path");
        QTEST(result.request.body, "body");
    }

    void headers()
    {
        const ParseResult result = HttpParser::parse(
            "OPTIONS /clip HTTP/1.1\r\nORIGIN :  Chrome-Extension://abc \r\nX-Empty:\r\nX-Colon: a:b\r\n\r\n");
        QVERIFY(result.isComplete());
        QCOMPARE(result.request.headers.value(u"origin"_s), u"Chrome-Extension://abc"_s);
        QCOMPARE(result.request.headers.value(u"x-colon"_s), u"a:b"_s);
        QVERIFY(result.request.headers.contains(u"x-empty"_s));
        QCOMPARE(result.request.headers.size(), 3);
    }

    void bodyArrivingInPieces()
    {
        // The whole buffer is read again at each arrival; the awaited size says when that is worth it.
        const QByteArray request = "POST /clip HTTP/1.1\r\nContent-Length: 10\r\n\r\n0123456789";
        const qsizetype headSize = request.indexOf("\r\n\r\n") + 4;
        for (qsizetype size = 0; size < request.size(); ++size) {
            const ParseResult partial = HttpParser::parse(QByteArrayView(request).first(size));
            QVERIFY2(partial.kind == ParseResult::Kind::needMore, qPrintable(QString::number(size)));
            QCOMPARE(partial.awaitedSize, size >= headSize ? request.size() : 0);
        }
        QCOMPARE(HttpParser::parse(request).request.body, QByteArray("0123456789"));
    }

    void integerValues_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isInteger");
        QTest::addColumn<qint64>("value");
        QTest::newRow("digits") << u"1234"_s << true << qint64(1234);
        QTest::newRow("plus sign") << u"+7"_s << true << qint64(7);
        QTest::newRow("minus sign") << u"-7"_s << true << qint64(-7);
        QTest::newRow("smallest") << u"-9223372036854775808"_s << true << std::numeric_limits<qint64>::min();
        QTest::newRow("largest") << u"9223372036854775807"_s << true << std::numeric_limits<qint64>::max();
        QTest::newRow("one past the largest") << u"9223372036854775808"_s << false << qint64(0);
        QTest::newRow("empty") << QString() << false << qint64(0);
        QTest::newRow("sign alone") << u"-"_s << false << qint64(0);
        QTest::newRow("inner blank") << u"1 2"_s << false << qint64(0);
        QTest::newRow("hex") << u"0x10"_s << false << qint64(0);
        QTest::newRow("Arabic-Indic digits") << u"١٢"_s << false << qint64(0);
    }

    void integerValues()
    {
        QFETCH(QString, text);
        QFETCH(bool, isInteger);
        const std::optional<qint64> value = HttpParser::integerValue(text);
        QCOMPARE(value.has_value(), isInteger);
        if (isInteger)
            QTEST(*value, "value");
    }
};

QTEST_GUILESS_MAIN(TestHttpParser)
#include "tst_httpparser.moc"
