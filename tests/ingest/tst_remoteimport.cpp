// Addresses through the Store's entry against a real HTTP server on 127.0.0.1: what the server
// answers decides between a stored picture or video and a link, and an address that can't be
// fetched is kept as a link.

#include "tests/fixtureserver.h"
#include "tests/ingest/importertestworld.h"

using namespace Qt::StringLiterals;
using namespace kivo;

class TestRemoteImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void pictureIsStoredWithItsPage();
    void answerDecidesBetweenMediaAndLink_data();
    void answerDecidesBetweenMediaAndLink();
    void thumbnailTriesItsFullSizeFirst();
    void unreachableAddressIsKeptAsLink_data();
    void unreachableAddressIsKeptAsLink();
    void sizeLimit_data();
    void sizeLimit();
    void videoIsStoredAndItsJunkTitleRefined();
    void sameBytesAgainKeepTheirFirstSource();

private:
    /** No temporary download is left behind, on any path. */
    void verifyNoTemporaryFiles() const;

    std::unique_ptr<test::ImporterTestWorld> m_world;
    std::unique_ptr<test::FixtureServer> m_server;
    QString m_temporary;
};

void TestRemoteImport::init()
{
    m_world = std::make_unique<test::ImporterTestWorld>();
    m_server = std::make_unique<test::FixtureServer>();
    m_temporary = m_world->library.sandbox.path() + u"/tmp"_s;
    QDir().mkpath(m_temporary);
    qputenv("TMPDIR", m_temporary.toLocal8Bit());
}

void TestRemoteImport::cleanup()
{
    m_server.reset();
    m_world.reset();
    qunsetenv("TMPDIR");
}

void TestRemoteImport::verifyNoTemporaryFiles() const
{
    QCOMPARE(QDir(m_temporary).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void TestRemoteImport::pictureIsStoredWithItsPage()
{
    const QByteArray picture = test::pngBytes(30, 20, 3);
    m_server->serve(u"/photos/Beach.png"_s, test::FixtureResponse::bytes(picture, "Image/PNG; charset=binary"));
    const QString inbox = m_world->inboxId();
    const RemoteImportOutcome outcome = m_world->wait(m_world->importer.importRemote(
        m_server->url(u"/photos/Beach.png"_s), QUrl(u"https://example.org/gallery"_s), std::nullopt, inbox));

    QVERIFY(outcome.result);
    QCOMPARE(outcome.result->kind, RemoteResult::Kind::media);
    const auto stored = m_world->library.item(outcome.result->item.id);
    QVERIFY(stored);
    QCOMPARE(*stored, outcome.result->item);
    QCOMPARE(stored->kind, u"image"_s);
    QCOMPARE(stored->title, u"Beach"_s);
    QCOMPARE(stored->sourceURL, u"https://example.org/gallery"_s);
    QCOMPARE(stored->width, 30.0);
    QCOMPARE(test::readFile(m_world->library.storedPath(*stored)), picture);
    QCOMPARE(m_world->library.memberships(stored->id), QStringList{inbox});
    // Reloaded, announced, and handed on to enrichment and the capture card; no snapshot for a picture.
    QCOMPARE(m_world->store.allCount(), 1);
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->enrichment), QStringList{stored->id});
    QCOMPARE(m_world->cards.size(), 1);
    QCOMPARE(m_world->snapshots.size(), 0);
    verifyNoTemporaryFiles();
}

void TestRemoteImport::answerDecidesBetweenMediaAndLink_data()
{
    QTest::addColumn<test::FixtureResponse>("response");
    QTest::addColumn<QString>("kind");
    QTest::newRow("html page") << test::FixtureResponse::bytes("<html><title>A page</title></html>", "text/html")
                               << u"link"_s;
    QTest::newRow("json") << test::FixtureResponse::bytes("{}", "application/json") << u"link"_s;
    test::FixtureResponse untyped = test::FixtureResponse::bytes(test::pngBytes(4, 4), "");
    untyped.contentType = std::nullopt;
    QTest::newRow("no type, even for picture bytes") << untyped << u"link"_s;
    QTest::newRow("picture") << test::FixtureResponse::bytes(test::jpegWithOrientation(8, 6, 6), "image/jpeg")
                             << u"image"_s;
}

void TestRemoteImport::answerDecidesBetweenMediaAndLink()
{
    QFETCH(test::FixtureResponse, response);
    QFETCH(QString, kind);
    m_server->serve(u"/thing.jpg"_s, response);
    // By name, as a host of digits would make a junk title that the given title replaces.
    QUrl address = m_server->url(u"/thing.jpg"_s);
    address.setHost(u"localhost"_s);
    const RemoteImportOutcome outcome
        = m_world->wait(m_world->importer.importRemote(address, std::nullopt, u"Given title"_s, std::nullopt));
    QVERIFY(outcome.result);
    QCOMPARE(outcome.result->item.kind, kind);
    QCOMPARE(m_world->library.items().size(), 1);
    if (kind == u"link") {
        QCOMPARE(outcome.result->kind, RemoteResult::Kind::page);
        // A page is titled by its host, whatever title came with it, and goes to the snapshots.
        QCOMPARE(outcome.result->item.title, u"localhost"_s);
        QCOMPARE(outcome.result->item.sourceURL, address.toString());
        QCOMPARE(m_world->snapshots.size(), 1);
        QCOMPARE(m_world->snapshots.first().value(1).toUrl(), address);
        QCOMPARE(m_world->enrichment.size(), 0);
    } else {
        QCOMPARE(outcome.result->kind, RemoteResult::Kind::media);
        QCOMPARE(outcome.result->item.title, u"Given title"_s);
        QCOMPARE(outcome.result->item.sourceURL, address.toString());
        QCOMPARE(outcome.result->item.width, 6.0); // orientation 6 turns 8x6 upright
        QCOMPARE(m_world->snapshots.size(), 0);
    }
    QCOMPARE(m_server->requestCount(u"/thing.jpg"_s), 1);
    verifyNoTemporaryFiles();
}

void TestRemoteImport::thumbnailTriesItsFullSizeFirst()
{
    // The address without its size suffix fails; the one without its query answers.
    m_server->serve(u"/img/cat.jpg?w=300"_s, test::FixtureResponse::bytes("gone", "text/plain", 404));
    m_server->serve(u"/img/cat-300x200.jpg"_s, test::FixtureResponse::bytes(test::pngBytes(12, 8), "image/png"));
    m_server->serve(u"/img/cat-300x200.jpg?w=300"_s, test::FixtureResponse::bytes(test::pngBytes(3, 2), "image/png"));
    const RemoteImportOutcome outcome = m_world->wait(m_world->importer.importRemote(
        m_server->url(u"/img/cat-300x200.jpg?w=300"_s), std::nullopt, std::nullopt, std::nullopt));
    QVERIFY(outcome.result);
    QCOMPARE(m_server->requests(), (QStringList{u"/img/cat.jpg?w=300"_s, u"/img/cat-300x200.jpg"_s}));
    QCOMPARE(outcome.result->item.width, 12.0);
    QCOMPARE(outcome.result->item.title, u"cat-300x200"_s);
    // The item remembers the address it was given, not the candidate that answered.
    QCOMPARE(outcome.result->item.sourceURL, m_server->url(u"/img/cat-300x200.jpg?w=300"_s).toString());
}

void TestRemoteImport::unreachableAddressIsKeptAsLink_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<test::FixtureResponse>("response");
    QTest::addColumn<QStringList>("requests");
    QTest::newRow("404 for every candidate")
        << u"/p/shoe-640x480.png?q=80"_s << test::FixtureResponse::bytes("no", "text/html", 404)
        << QStringList{u"/p/shoe.png?q=80"_s, u"/p/shoe-640x480.png"_s, u"/p/shoe-640x480.png?q=80"_s};
    QTest::newRow("server error") << u"/broken.png"_s << test::FixtureResponse::bytes("oops", "text/plain", 500)
                                  << QStringList{u"/broken.png"_s};
    test::FixtureResponse slow = test::FixtureResponse::bytes(test::pngBytes(4, 4), "image/png");
    slow.delayMs = 3000;
    QTest::newRow("time-out") << u"/slow.png"_s << slow << QStringList{u"/slow.png"_s};
}

void TestRemoteImport::unreachableAddressIsKeptAsLink()
{
    QFETCH(QString, path);
    QFETCH(test::FixtureResponse, response);
    QFETCH(QStringList, requests);
    m_server->serve(path.section(u'?', 0, 0), response);
    m_world->importer.setMediaTimeout(500);
    test::LogCapture log;
    const QUrl address = m_server->url(path);
    const RemoteImportOutcome outcome
        = m_world->wait(m_world->importer.importRemote(address, std::nullopt, u"Red shoes"_s, m_world->inboxId()));

    QVERIFY(!outcome.result);
    QVERIFY(outcome.fallbackLink);
    QCOMPARE(outcome.item(), outcome.fallbackLink);
    const auto stored = m_world->library.item(outcome.fallbackLink->id);
    QVERIFY(stored);
    QCOMPARE(stored->kind, u"link"_s);
    QCOMPARE(stored->title, u"Red shoes"_s);
    QCOMPARE(stored->sourceURL, address.toString());
    QCOMPARE(m_world->library.memberships(stored->id), QStringList{m_world->inboxId()});
    QCOMPARE(m_server->requests(), requests);
    const QStringList failures = log.linesStartingWith(u"[Store] importRemote failed for 127.0.0.1: "_s);
    QCOMPARE(failures.size(), 1);
    // The link goes the way of every link: toast, snapshot, enrichment.
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->snapshots), QStringList{stored->id});
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->enrichment), QStringList{stored->id});
    verifyNoTemporaryFiles();
}

void TestRemoteImport::sizeLimit_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("sendLength");
    QTest::addColumn<QString>("kind");
    QTest::newRow("one byte over, length declared") << ImportService::largestDownload + 1 << true << u"link"_s;
    QTest::newRow("one byte over, length unknown") << ImportService::largestDownload + 1 << false << u"link"_s;
    QTest::newRow("exactly the limit") << ImportService::largestDownload << true << u"image"_s;
}

void TestRemoteImport::sizeLimit()
{
    QFETCH(qint64, size);
    QFETCH(bool, sendLength);
    QFETCH(QString, kind);
    // A sparse file: its size on disk is a few blocks, whatever its length.
    const QString huge = m_world->library.sandbox.path() + u"/huge.jpg"_s;
    {
        QFile file(huge);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize(size));
    }
    test::FixtureResponse response = test::FixtureResponse::file(huge, "image/jpeg");
    response.sendLength = sendLength;
    m_server->serve(u"/huge.jpg"_s, response);
    const RemoteImportOutcome outcome = m_world->wait(
        m_world->importer.importRemote(m_server->url(u"/huge.jpg"_s), std::nullopt, std::nullopt, std::nullopt),
        120000);
    QVERIFY(outcome.result);
    QCOMPARE(outcome.result->item.kind, kind);
    if (kind == u"image") {
        QCOMPARE(outcome.result->item.fileSize, size);
        QCOMPARE(QFileInfo(m_world->library.storedPath(outcome.result->item)).size(), size);
    }
    verifyNoTemporaryFiles();
}

void TestRemoteImport::videoIsStoredAndItsJunkTitleRefined()
{
    const QString clip = m_world->library.sandbox.path() + u"/walk.mp4"_s;
    if (!test::makeTurnedClip(clip))
        QSKIP("the ffmpeg command-line tool is needed to make the clip");
    m_server->serve(u"/media/walk.mp4"_s, test::FixtureResponse::file(clip, "video/mp4"));
    const QUrl page(u"https://vimeo.com/123"_s);
    const RemoteImportOutcome outcome = m_world->wait(m_world->importer.importRemote(
        m_server->url(u"/media/walk.mp4"_s), page, u"(2) Walk in the park | Vimeo"_s, std::nullopt));
    QVERIFY(outcome.result);
    QCOMPARE(outcome.result->kind, RemoteResult::Kind::media);
    const auto stored = m_world->library.item(outcome.result->item.id);
    QCOMPARE(stored->kind, u"video"_s);
    QCOMPARE(stored->width, 240.0);
    QCOMPARE(stored->height, 320.0);
    QCOMPARE(stored->sourceURL, page.toString());
    // The file was stored under the download's made-up name; the page's title replaces it.
    QVERIFY(stored->filePath->contains(u"kivo-remote-"_s));
    QCOMPARE(stored->title, u"Vimeo - Walk in the park"_s);
    QCOMPARE(outcome.result->item.title, stored->title);
    QCOMPARE(test::readFile(m_world->library.storedPath(*stored)), test::readFile(clip));
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->enrichment), QStringList{stored->id});
    verifyNoTemporaryFiles();
}

void TestRemoteImport::sameBytesAgainKeepTheirFirstSource()
{
    const QByteArray picture = test::pngBytes(5, 5, 9);
    m_server->serve(u"/a.png"_s, test::FixtureResponse::bytes(picture, "image/png"));
    m_server->serve(u"/mirror/b.png"_s, test::FixtureResponse::bytes(picture, "image/png"));
    const QString board = m_world->library.addCollection(u"Board"_s);
    m_world->store.reloadCollections();
    const auto first = m_world->wait(m_world->importer.importRemote(
        m_server->url(u"/a.png"_s), QUrl(u"https://first.example/"_s), std::nullopt, std::nullopt));
    const auto second = m_world->wait(m_world->importer.importRemote(
        m_server->url(u"/mirror/b.png"_s), QUrl(u"https://second.example/"_s), std::nullopt, board));
    QVERIFY(first.result && second.result);
    QVERIFY(second.result->existing);
    QCOMPARE(second.result->item.id, first.result->item.id);
    QCOMPARE(second.result->item.sourceURL, u"https://first.example/"_s);
    QCOMPARE(m_world->library.item(first.result->item.id)->sourceURL, u"https://first.example/"_s);
    QCOMPARE(m_world->library.memberships(first.result->item.id), QStringList{board});
    QCOMPARE(m_world->store.toast(), u"Saved to Board"_s);
}

QTEST_GUILESS_MAIN(TestRemoteImport)
#include "tst_remoteimport.moc"
