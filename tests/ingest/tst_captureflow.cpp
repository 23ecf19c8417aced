// The capture flow on a real library: clips arrive as the bridge hands them on, their pictures
// and pages are fetched from a real HTTP server on 127.0.0.1, and what ends in the database, the
// card, the pending list, the toasts and the trace is checked.

#include "core/database.h"
#include "ingest/capture/captureflow.h"
#include "ingest/capture/pendingclips.h"
#include "ingest/import/libraryimporter.h"
#include "surfaces/capture/capturepalette.h"
#include "tests/core/storeworld.h"
#include "tests/fixtureserver.h"

#include <QBuffer>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

Q_DECLARE_METATYPE(kivo::ClipRoute)

namespace {

QByteArray pictureBytes(const QColor &colour, const char *format = "PNG")
{
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QString dataAddress(const QByteArray &png)
{
    return u"data:image/png;base64,"_s + QString::fromLatin1(png.toBase64());
}

/** A library with the flow wired as the application wires it, and a server of pictures and pages. */
struct FlowWorld {
    test::StoreWorld world;
    test::FixtureServer server;
    LibraryImporter importer{&world.store, &world.settings};
    PendingClips pending;
    CaptureFlow flow{&world.store, &world.settings, &importer, &pending};
    CapturePalette palette{&world.store, &world.settings};
    bool clipSessionFlag = false;
    test::LogCapture log;

    FlowWorld()
    {
        importer.setMediaTimeout(5000);
        flow.setCardHost(&palette);
        flow.setClipSessionFlag([this](bool active) { clipSessionFlag = active; });
        server.serve(u"/red.png"_s, test::FixtureResponse::bytes(pictureBytes(Qt::red), "image/png"));
        server.serve(u"/blue.png"_s, test::FixtureResponse::bytes(pictureBytes(Qt::blue), "image/png"));
        server.serve(u"/green.jpg"_s, test::FixtureResponse::bytes(pictureBytes(Qt::green, "JPG"), "image/jpeg"));
        server.serve(u"/article.html"_s, test::FixtureResponse::bytes("<html><title>x</title></html>", "text/html; charset=utf-8"));
    }

    /** Sends a clip and waits until its last item has been imported and its ending is done. */
    QStringList clip(const ClipRequest &request)
    {
        QSignalSpy finished(&flow, &CaptureFlow::clipFinished);
        flow.clip(request);
        // A clip with nothing to download ends before `clip` returns.
        if (finished.isEmpty() && !finished.wait(15000))
            return {u"<no end>"_s};
        return finished.constFirst().at(1).toStringList();
    }

    ClipItem image(const QString &path, const QString &title = {}) const
    {
        ClipItem item{.type = u"image"_s, .url = server.url(path).toString(), .sourceURL = u"https://www.example.com/gallery"_s, .title = title};
        item.preview = dataAddress(pictureBytes(Qt::gray));
        return item;
    }

    [[nodiscard]] QString inboxId() const { return world.store.inboxIdText(); }
    [[nodiscard]] bool isMember(const QString &itemId, const QString &collectionId) const
    {
        return world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s,
                   {itemId, collectionId})
                   .toInt()
            == 1;
    }
};

} // namespace

class TestCaptureFlow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void routes_data();
    void routes();
    void cardRouteBindsTheStoredPicture();
    void failedDownloadIsKeptAsALink();
    void unusableClipEndsTheCard();
    void twoClipsInQuickSuccession();
    void shelfRouteFillsThePendingList();
    void namingACollectionWhileClipsArrive();
    void aimedClipIsSavedWithItsToast();
    void videoKeepsItsPosterFrame();
    void keyboardCaptures();
    void noLibraryDropsTheClip();
};

void TestCaptureFlow::routes_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("toInbox");
    QTest::addColumn<bool>("cardEnabled");
    QTest::addColumn<bool>("shelfEnabled");
    QTest::addColumn<ClipRoute>("route");
    QTest::newRow("single to the card") << 1 << false << true << false << ClipRoute::card;
    QTest::newRow("single to the shelf") << 1 << false << false << true << ClipRoute::shelf;
    QTest::newRow("single, both off") << 1 << false << false << false << ClipRoute::card;
    QTest::newRow("aimed single") << 1 << true << true << true << ClipRoute::direct;
    QTest::newRow("several, shelf off") << 3 << false << true << false << ClipRoute::direct;
    QTest::newRow("several, shelf on") << 3 << false << false << true << ClipRoute::shelf;
}

void TestCaptureFlow::routes()
{
    QFETCH(int, count);
    QFETCH(bool, toInbox);
    QFETCH(bool, cardEnabled);
    QFETCH(bool, shelfEnabled);
    FlowWorld w;
    w.world.settings.setCaptureCardEnabled(cardEnabled);
    w.world.settings.setShelfEnabled(shelfEnabled);
    ClipRequest request;
    for (int i = 0; i < count; ++i)
        request.items.append(ClipItem{.type = u"image"_s, .url = u"https://example.com/"_s + QString::number(i)});
    request.toInbox = toInbox;
    QTEST(w.flow.routeFor(request), "route");
}

void TestCaptureFlow::cardRouteBindsTheStoredPicture()
{
    FlowWorld w;
    const QStringList saved = w.clip(ClipRequest{.items = {w.image(u"/red.png"_s, u"Red square on a page"_s)}});
    QCOMPARE(saved.size(), 1);
    const LibraryItem item = w.world.item(saved.first());
    QCOMPARE(item.kind, u"image"_s);
    QCOMPARE(item.sourceURL, u"https://www.example.com/gallery"_s);
    QVERIFY(w.isMember(item.id, w.inboxId()));

    // The card opened on a draft and is now bound to the stored picture, which the grid hides.
    QVERIFY(w.palette.onScreen());
    QVERIFY(w.palette.model()->bound());
    QCOMPARE(w.palette.boundItemId(), item.id);
    QCOMPARE(w.world.store.capturePendingItemId(), item.id);
    QVERIFY(std::none_of(w.world.store.allRows().cbegin(), w.world.store.allRows().cend(),
        [&](const LibraryItem &row) { return row.id == item.id; }));

    const QStringList trace = w.log.linesStartingWith(u"[CaptureTrace]"_s);
    QStringList labels;
    for (const QString &line : trace)
        labels.append(line.section(u": "_s, 0, 0).mid(15));
    QCOMPARE(labels,
        (QStringList{u"--- clip received (1 item(s)) ---"_s, u"CARD ON SCREEN (draft)"_s, u"bridge -> import starts"_s,
            u"importRemoteURL (X resolve + media download + insert)"_s, u"reloadAll"_s, u"item bound to the card"_s}));

    // Finishing files it by the card's choice.
    w.palette.model()->handleKey(Qt::Key_Return, Qt::ControlModifier, {});
    QCOMPARE(w.world.store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(w.world.store.capturePendingItemId(), QString());
}

void TestCaptureFlow::failedDownloadIsKeptAsALink()
{
    FlowWorld w;
    const QUrl missing = w.server.url(u"/missing.png"_s);
    const QStringList saved = w.clip(ClipRequest{.items = {w.image(u"/missing.png"_s)}});
    QCOMPARE(saved.size(), 1);
    QVERIFY(w.log.contains(u"[Store] importRemote failed for 127.0.0.1: "_s));
    // Nothing clipped is lost: the address is a link in the inbox, and the card is bound to it.
    const LibraryItem link = w.world.item(saved.first());
    QCOMPARE(link.kind, u"link"_s);
    QCOMPARE(link.sourceURL, missing.toString());
    QVERIFY(w.isMember(link.id, w.inboxId()));
    QVERIFY(w.palette.onScreen());
    QCOMPARE(w.palette.boundItemId(), link.id);
    QCOMPARE(w.world.store.capturePendingItemId(), link.id);
    QCOMPARE(w.server.requestCount(u"/missing.png"_s), 1);
}

void TestCaptureFlow::unusableClipEndsTheCard()
{
    FlowWorld w;
    ClipItem nowhere{.type = u"image"_s, .url = u"not an address"_s};
    const QStringList saved = w.clip(ClipRequest{.items = {nowhere}});
    QVERIFY(saved.isEmpty());
    QVERIFY(!w.palette.onScreen());
    QCOMPARE(w.world.store.toast(), u"Capture Failed"_s);
    QCOMPARE(w.world.scalar(u"SELECT COUNT(*) FROM item"_s).toInt(), 0);
}

void TestCaptureFlow::twoClipsInQuickSuccession()
{
    FlowWorld w;
    QSignalSpy finished(&w.flow, &CaptureFlow::clipFinished);
    w.flow.clip(ClipRequest{.items = {w.image(u"/red.png"_s)}});
    w.flow.clip(ClipRequest{.items = {w.image(u"/blue.png"_s)}});
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, 15000);
    QStringList ids;
    for (const QList<QVariant> &arguments : finished)
        ids.append(arguments.at(1).toStringList());
    QCOMPARE(ids.size(), 2);
    const QString second = w.palette.boundItemId().value_or(QString());
    QVERIFY(ids.contains(second));
    const QString first = ids.at(0) == second ? ids.at(1) : ids.at(0);
    // The first card went when the second came: its item is in the trash, the second card untouched.
    QVERIFY(w.world.item(first).deletedAt);
    QVERIFY(!w.world.item(second).deletedAt);
    QVERIFY(w.palette.onScreen());
    QCOMPARE(w.world.store.capturePendingItemId(), second);
}

void TestCaptureFlow::shelfRouteFillsThePendingList()
{
    FlowWorld w;
    w.world.settings.setShelfEnabled(true);
    QSignalSpy shelfWanted(&w.flow, &CaptureFlow::pendingShelfWanted);
    ClipItem page{.type = u"page"_s, .url = w.server.url(u"/article.html"_s).toString(), .title = u"(4) A long read &amp; more |"_s};
    ClipItem missing{.type = u"image"_s, .url = w.server.url(u"/gone.png"_s).toString()};
    ClipItem note{.type = u"selection"_s, .url = u"https://www.example.com/a"_s, .text = u"Some words worth keeping"_s};
    ClipItem withoutPreview{.type = u"image"_s, .url = w.server.url(u"/green.jpg"_s).toString()};
    withoutPreview.displaySrc = w.server.url(u"/blue.png"_s).toString();

    w.flow.clip(ClipRequest{.items = {w.image(u"/red.png"_s), page, missing, note, withoutPreview}});
    // At once: one entry per item, the page's context, the session open and the shelf asked for.
    QCOMPARE(w.pending.count(), 5);
    QCOMPARE(shelfWanted.count(), 1);
    QVERIFY(w.clipSessionFlag);
    const LinkContext context = *w.pending.entries().at(1).link;
    QCOMPARE(context.title, u"A long read & more"_s);
    QCOMPARE(context.domain, u"127.0.0.1"_s);
    QVERIFY(!w.pending.entries().at(0).preview.isNull());
    QVERIFY(!w.pending.entries().at(0).link);

    QTRY_COMPARE_WITH_TIMEOUT(w.flow.runningClips(), 0, 15000);
    // Every entry carries its item in order; the picture that could not be had is kept as a link.
    QCOMPARE(w.pending.count(), 5);
    QCOMPARE(w.pending.itemIds().size(), 5);
    QCOMPARE(w.world.item(w.pending.itemIds().at(1)).kind, u"link"_s);
    QCOMPARE(w.world.item(w.pending.itemIds().at(1)).title, page.title); // the clip's own title
    QCOMPARE(w.world.item(w.pending.itemIds().at(2)).kind, u"link"_s);
    QCOMPARE(w.world.item(w.pending.itemIds().at(2)).sourceURL, missing.url);
    QCOMPARE(w.world.item(w.pending.itemIds().at(3)).note, note.text);
    QTRY_VERIFY(!w.pending.entries().at(4).preview.isNull()); // fetched from displaySrc
    // An item with no usable address leaves no entry behind.
    w.flow.clip(ClipRequest{.items = {ClipItem{.type = u"link"_s, .url = u"::"_s}, note}});
    QTRY_COMPARE_WITH_TIMEOUT(w.flow.runningClips(), 0, 15000);
    QCOMPARE(w.pending.count(), 6);
    QCOMPARE(w.world.item(w.pending.itemIds().at(5)).note, note.text);
    QCOMPARE(w.world.store.toast(), QString()); // the shelf route says nothing

    w.flow.endClipSession();
    QVERIFY(w.pending.isEmpty());
    QCOMPARE(w.world.store.toast(), u"Kept in Inbox"_s);
    QVERIFY(!w.clipSessionFlag);
}

void TestCaptureFlow::namingACollectionWhileClipsArrive()
{
    FlowWorld w;
    w.world.settings.setShelfEnabled(true);
    w.flow.clip(ClipRequest{.items = {w.image(u"/red.png"_s), w.image(u"/blue.png"_s)}});
    // The user names a collection before the pictures are in: the filing waits for them.
    w.flow.filePending(u"  Trips "_s);
    QVERIFY(w.pending.deferredFileTarget());
    QTRY_VERIFY_WITH_TIMEOUT(w.pending.isEmpty(), 15000);
    const QVariant collection = w.world.scalar(u"SELECT id FROM collection WHERE name = 'Trips'"_s);
    QVERIFY(collection.isValid());
    QCOMPARE(w.world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {collection}).toInt(), 2);
    QCOMPARE(w.world.store.toast(), u"Saved 2 to Trips"_s);
    QVERIFY(!w.clipSessionFlag);

    // With nothing pending and an existing name, in any case, the same collection is used.
    w.flow.clip(ClipRequest{.items = {w.image(u"/green.jpg"_s), w.image(u"/red.png"_s)}});
    QTRY_COMPARE_WITH_TIMEOUT(w.flow.runningClips(), 0, 15000);
    w.flow.filePending(u"trips"_s);
    QCOMPARE(w.world.scalar(u"SELECT COUNT(*) FROM collection WHERE name = 'Trips'"_s).toInt(), 1);
    QCOMPARE(w.world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {collection}).toInt(), 3);
}

void TestCaptureFlow::aimedClipIsSavedWithItsToast()
{
    FlowWorld w;
    const QString moodboard = w.world.addCollection(u"Moodboard"_s);
    ClipRequest aimed{.items = {w.image(u"/red.png"_s)}};
    aimed.collectionId = moodboard;
    QStringList saved = w.clip(aimed);
    QCOMPARE(saved.size(), 1);
    QVERIFY(w.isMember(saved.first(), moodboard));
    QCOMPARE(w.world.store.toast(), u"Saved to Moodboard"_s);
    QVERIFY(!w.palette.onScreen());

    // Several with the shelf off go straight to the inbox, counted.
    saved = w.clip(ClipRequest{.items = {w.image(u"/blue.png"_s), w.image(u"/green.jpg"_s)}});
    QCOMPARE(saved.size(), 2);
    QCOMPARE(w.world.store.toast(), u"Saved 2 to Inbox"_s);
    for (const QString &id : saved)
        QVERIFY(w.isMember(id, w.inboxId()));
}

void TestCaptureFlow::videoKeepsItsPosterFrame()
{
    FlowWorld w;
    ClipItem video{.type = u"video"_s, .url = w.server.url(u"/stream.mp4"_s).toString(), .sourceURL = u"https://video.example.com/watch/7"_s, .title = u"A short film"_s};
    video.posterFrame = dataAddress(pictureBytes(Qt::yellow));
    ClipRequest request{.items = {video}};
    request.toInbox = true;
    const QStringList saved = w.clip(request);
    QCOMPARE(saved.size(), 1);
    const LibraryItem item = w.world.item(saved.first());
    QCOMPARE(item.kind, u"image"_s);
    QCOMPARE(item.title, u"A short film"_s);
    QCOMPARE(item.sourceURL, video.sourceURL);
    QCOMPARE(w.server.requestCount(u"/stream.mp4"_s), 0); // the video itself was never fetched
}

void TestCaptureFlow::keyboardCaptures()
{
    FlowWorld w;
    w.world.settings.setCaptureCardEnabled(false);
    w.flow.capture(CaptureRequest{.type = u"selection"_s, .text = u"A sentence from a page"_s});
    QCOMPARE(w.world.scalar(u"SELECT COUNT(*) FROM item WHERE kind = 'text' AND note = 'A sentence from a page'"_s).toInt(), 1);
    w.flow.capture(CaptureRequest{.type = u"page"_s, .url = u"https://www.example.org/essay"_s, .title = u"An essay"_s});
    QCOMPARE(w.world.scalar(u"SELECT title FROM item WHERE kind = 'link'"_s).toString(), u"An essay"_s);
    w.flow.capture(CaptureRequest{.type = u"image"_s, .url = w.server.url(u"/red.png"_s).toString(), .sourceURL = u"https://example.net/p"_s});
    QTRY_COMPARE_WITH_TIMEOUT(
        w.world.scalar(u"SELECT COUNT(*) FROM item WHERE kind = 'image' AND sourceURL = 'https://example.net/p'"_s).toInt(), 1,
        15000);
}

void TestCaptureFlow::noLibraryDropsTheClip()
{
    test::Sandbox sandbox;
    AppSettings settings;
    Store store(&settings); // never initialised: no database
    LibraryImporter importer(&store, &settings);
    PendingClips pending;
    CaptureFlow flow(&store, &settings, &importer, &pending);
    CapturePalette palette(&store, &settings);
    flow.setCardHost(&palette);
    flow.clip(ClipRequest{.items = {ClipItem{.type = u"image"_s, .url = u"https://example.com/a.png"_s}}});
    QVERIFY(!palette.onScreen());
    QCOMPARE(flow.runningClips(), 0);
}

QTEST_MAIN(TestCaptureFlow)
#include "tst_captureflow.moc"
