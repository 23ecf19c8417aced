// The capture flow's pure rules: the route of a clip, the card title, what a clip item gives the
// card and the pending list, the pending list's own bookkeeping and the trace lines.

#include "ingest/capture/capturetrace.h"
#include "ingest/capture/cardtitle.h"
#include "ingest/capture/clipitems.h"
#include "ingest/capture/cliproute.h"
#include "ingest/capture/pendingclips.h"
#include "tests/testsupport.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

Q_DECLARE_METATYPE(kivo::ClipRoute)

namespace {

QString pngAddress(const QSize &size, const QString &prefix = u"data:image/png;base64,"_s)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return prefix + QString::fromLatin1(bytes.toBase64());
}

} // namespace

class TestCaptureRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void route_data();
    void route();
    void cardTitle_data();
    void cardTitle();
    void cardTitleKeepsFallbacksApart();
    void previews_data();
    void previews();
    void linkContextOnlyForPages();
    void draftItem_data();
    void draftItem();
    void pendingClipsBookkeeping();
    void traceLines();
};

void TestCaptureRules::route_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("explicitTarget");
    QTest::addColumn<bool>("cardEnabled");
    QTest::addColumn<bool>("shelfEnabled");
    QTest::addColumn<ClipRoute>("route");

    // One clip: an aimed clip is saved at once whatever the settings.
    for (const bool card : {false, true}) {
        for (const bool shelf : {false, true}) {
            QTest::addRow("1 explicit card=%d shelf=%d", card, shelf) << 1 << true << card << shelf << ClipRoute::direct;
            QTest::addRow("3 explicit card=%d shelf=%d", card, shelf) << 3 << true << card << shelf << ClipRoute::direct;
        }
    }
    QTest::newRow("1 card on, shelf off") << 1 << false << true << false << ClipRoute::card;
    QTest::newRow("1 card on, shelf on") << 1 << false << true << true << ClipRoute::card;
    QTest::newRow("1 card off, shelf on") << 1 << false << false << true << ClipRoute::shelf;
    // Both off: the card is the only place left where the clip can be seen.
    QTest::newRow("1 card off, shelf off") << 1 << false << false << false << ClipRoute::card;
    QTest::newRow("2 shelf off, card on") << 2 << false << true << false << ClipRoute::direct;
    QTest::newRow("2 shelf off, card off") << 2 << false << false << false << ClipRoute::direct;
    QTest::newRow("2 shelf on, card on") << 2 << false << true << true << ClipRoute::shelf;
    QTest::newRow("7 shelf on, card off") << 7 << false << false << true << ClipRoute::shelf;
}

void TestCaptureRules::route()
{
    QFETCH(int, count);
    QFETCH(bool, explicitTarget);
    QFETCH(bool, cardEnabled);
    QFETCH(bool, shelfEnabled);
    QFETCH(ClipRoute, route);
    QCOMPARE(clipRoute(count, explicitTarget, cardEnabled, shelfEnabled), route);
}

void TestCaptureRules::cardTitle_data()
{
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("fallback");
    QTest::addColumn<QString>("expected");

    QTest::newRow("trimmed") << u"  Hello World \n"_s << u"example.com"_s << u"Hello World"_s;
    QTest::newRow("counter") << u"(3) Inbox \u2014 Mail"_s << QString() << u"Inbox \u2014 Mail"_s;
    QTest::newRow("counter only") << u"(12) "_s << u"mail.example"_s << u"mail.example"_s;
    QTest::newRow("address removed") << u"Great photo https://t.co/abc123"_s << QString() << u"Great photo"_s;
    QTest::newRow("only an address") << u"https://example.com/x"_s << u"example.com"_s << u"example.com"_s;
    QTest::newRow("named entity") << u"Tom &amp; Jerry"_s << QString() << u"Tom & Jerry"_s;
    QTest::newRow("decimal entity") << u"It&#8217;s here"_s << QString() << u"It\u2019s here"_s;
    QTest::newRow("hex entity") << u"A &#x2014; B"_s << QString() << u"A \u2014 B"_s;
    QTest::newRow("unknown entity stays") << u"&bogus; text"_s << QString() << u"&bogus; text"_s;
    QTest::newRow("empty curly quotes") << u"Quote: \u201c\u201d end"_s << QString() << u"Quote: end"_s;
    QTest::newRow("empty straight quotes") << u"It's ''"_s << QString() << u"It's"_s;
    QTest::newRow("runs of blanks") << u"Hello   big \t  world"_s << QString() << u"Hello big world"_s;
    QTest::newRow("trailing separators") << u"Title -- | \u2022"_s << QString() << u"Title"_s;
    QTest::newRow("trailing closing quote") << u"A: \u201cB\u201d"_s << QString() << u"A: \u201cB"_s;
    QTest::newRow("ellipsis kept") << u"Wait\u2026"_s << QString() << u"Wait\u2026"_s;
    QTest::newRow("blank with fallback") << u"   "_s << u"example.com"_s << u"example.com"_s;
    QTest::newRow("blank without fallback") << QString() << QString() << u"Untitled Link"_s;
    QTest::newRow("nothing but punctuation") << u" - : ;"_s << QString() << u"Untitled Link"_s;
}

void TestCaptureRules::cardTitle()
{
    QFETCH(QString, raw);
    QFETCH(QString, fallback);
    QFETCH(QString, expected);
    QCOMPARE(CardTitle::make(raw, fallback), expected);
    // A second call is answered from the cache with the same words.
    QCOMPARE(CardTitle::make(raw, fallback), expected);
}

void TestCaptureRules::cardTitleKeepsFallbacksApart()
{
    QCOMPARE(CardTitle::make(QString(), u"a.example"_s), u"a.example"_s);
    QCOMPARE(CardTitle::make(QString(), u"b.example"_s), u"b.example"_s);
}

void TestCaptureRules::previews_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QSize>("size");

    QTest::newRow("png") << pngAddress(QSize(40, 30)) << QSize(40, 30);
    QTest::newRow("type not named exactly") << pngAddress(QSize(8, 9), u"data:image/x-anything;base64,"_s) << QSize(8, 9);
    QTest::newRow("not a picture address") << pngAddress(QSize(4, 4), u"data:text/plain;base64,"_s) << QSize();
    QTest::newRow("no comma") << u"data:image/png;base64"_s << QSize();
    QTest::newRow("not base64") << u"data:image/png;base64,***"_s << QSize();
    QTest::newRow("not a picture") << u"data:image/png;base64,aGVsbG8="_s << QSize();
    QTest::newRow("web address") << u"https://example.com/a.png"_s << QSize();
}

void TestCaptureRules::previews()
{
    QFETCH(QString, address);
    QFETCH(QSize, size);
    const QImage image = ClipItems::decodeDataImage(address);
    QCOMPARE(image.isNull(), !size.isValid());
    if (size.isValid())
        QCOMPARE(image.size(), size);
}

void TestCaptureRules::linkContextOnlyForPages()
{
    ClipItem page{.type = u"page"_s, .url = u"https://www.Example.org/story?id=4"_s, .title = u"(2) A story &amp; more - "_s};
    const std::optional<LinkContext> context = ClipItems::linkContext(page);
    QVERIFY(context);
    QCOMPARE(context->sourceURL, page.url); // no sourceURL: the address itself
    QCOMPARE(context->domain, u"example.org"_s);
    QCOMPARE(context->title, u"A story & more"_s);

    page.sourceURL = u"https://news.example.net/front"_s;
    page.title.clear();
    QCOMPARE(ClipItems::linkContext(page)->sourceURL, page.sourceURL);
    QCOMPARE(ClipItems::linkContext(page)->title, u"news.example.net"_s);

    for (const QString &type : {u"image"_s, u"link"_s, u"video"_s, u"selection"_s})
        QVERIFY2(!ClipItems::linkContext(ClipItem{.type = type, .url = page.url}), qPrintable(type));
}

void TestCaptureRules::draftItem_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("kind");
    QTest::newRow("page") << u"page"_s << u"link"_s;
    QTest::newRow("link") << u"link"_s << u"link"_s;
    QTest::newRow("video") << u"video"_s << u"video"_s;
    QTest::newRow("selection") << u"selection"_s << u"text"_s;
    QTest::newRow("text") << u"text"_s << u"text"_s;
    QTest::newRow("image") << u"image"_s << u"image"_s;
    QTest::newRow("unknown") << u"audio"_s << u"image"_s;
}

void TestCaptureRules::draftItem()
{
    QFETCH(QString, type);
    QFETCH(QString, kind);
    const ClipItem clip{.type = type, .url = u"https://cdn.example.com/p.jpg"_s, .sourceURL = u"https://www.example.com/page"_s, .title = u" "_s};
    const LibraryItem first = ClipItems::draftItem(clip);
    const LibraryItem second = ClipItems::draftItem(clip);
    QCOMPARE(first.kind, kind);
    QVERIFY(first.id != second.id);
    QVERIFY(QRegularExpression(u"^[0-9a-f-]{36}$"_s).match(first.id).hasMatch());
    QCOMPARE(first.sourceURL, clip.sourceURL);
    QCOMPARE(first.title, u"www.example.com"_s); // a blank title falls back to the host
    QVERIFY(first.createdAt > 0);
    QCOMPARE(first.addedAt, first.createdAt);
}

void TestCaptureRules::pendingClipsBookkeeping()
{
    PendingClips pending;
    QSignalSpy changed(&pending, &PendingClips::entriesChanged);
    pending.append({ClipEntry{.id = u"a"_s}, ClipEntry{.id = u"b"_s}, ClipEntry{.id = u"c"_s}});
    QCOMPARE(pending.count(), 3);
    QVERIFY(pending.itemIds().isEmpty());

    pending.setItemId(u"b"_s, u"item-b"_s);
    pending.setItemId(u"b"_s, u"item-other"_s); // a bound entry keeps its item
    pending.setItemId(u"a"_s, u"item-a"_s);
    QCOMPARE(pending.itemIds(), (QStringList{u"item-a"_s, u"item-b"_s}));

    pending.removeEntry(u"c"_s);
    QCOMPARE(pending.count(), 2);
    QVERIFY(!pending.addItemId(u"item-a"_s));
    QVERIFY(pending.addItemId(u"item-d"_s));
    QCOMPARE(pending.itemIds(), (QStringList{u"item-a"_s, u"item-b"_s, u"item-d"_s}));

    pending.setDeferredFileTarget(u"collection"_s);
    pending.setDeferredExport(true);
    pending.clear();
    QVERIFY(pending.isEmpty());
    QVERIFY(!pending.deferredFileTarget());
    QVERIFY(!pending.deferredExport());
    QCOMPARE(changed.count(), 4); // append, remove, add, clear
}

void TestCaptureRules::traceLines()
{
    kivo::test::LogCapture log;
    CaptureTrace::mark(u"before any run"_s);
    CaptureTrace::begin(u"clip received (1 item(s))"_s);
    QTest::qWait(30);
    CaptureTrace::mark(u"CARD ON SCREEN (draft)"_s);
    CaptureTrace::mark(u"reloadAll"_s);
    CaptureTrace::clear();
    CaptureTrace::mark(u"after the run"_s);

    const QStringList lines = log.linesStartingWith(u"[CaptureTrace]"_s);
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0), u"[CaptureTrace] --- clip received (1 item(s)) ---"_s);
    const QRegularExpression markLine(u"^\\[CaptureTrace\\] (.+): (\\d+) ms \\(total (\\d+) ms\\)$"_s);
    const QRegularExpressionMatch card = markLine.match(lines.at(1));
    const QRegularExpressionMatch reload = markLine.match(lines.at(2));
    QVERIFY2(card.hasMatch() && reload.hasMatch(), qPrintable(lines.join(u'\n')));
    QCOMPARE(card.captured(1), u"CARD ON SCREEN (draft)"_s);
    QVERIFY(card.captured(2).toInt() >= 25);
    // The total runs from the start, the step from the previous mark.
    QVERIFY(reload.captured(3).toInt() >= card.captured(3).toInt());
    QVERIFY(reload.captured(2).toInt() <= reload.captured(3).toInt());
    QVERIFY(!CaptureTrace::running());
}

QTEST_GUILESS_MAIN(TestCaptureRules)
#include "tst_capturerules.moc"
