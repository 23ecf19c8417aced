// Background reading over a real library: generated pictures with known text and colours, a real
// video, a broken file, links and notes go through the service, and the database, the tags, the
// titles, the search and the Store's rows are checked afterwards against what was drawn.

#include "core/librarylocation.h"
#include "core/userdefaults.h"
#include "search/librarysearch.h"
#include "tests/core/storeworld.h"
#include "understanding/enrichment/enrichmentservice.h"

#include <QBuffer>
#include <QFont>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

const QStringList signLines{u"Harbour parking only"_s, u"Residents after six"_s};

QByteArray png(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

/** A screenshot-like picture: dark text on white, in a real font large enough to read. */
QImage textPicture(const QStringList &lines)
{
    QImage image(900, 260, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(40);
    painter.setFont(font);
    painter.setPen(Qt::black);
    for (int i = 0; i < lines.size(); ++i)
        painter.drawText(40, 90 + i * 70, lines.at(i));
    return image;
}

QImage solidPicture(const QColor &colour)
{
    QImage image(400, 300, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

qsizetype editDistance(const QString &a, const QString &b)
{
    QList<qsizetype> previous(b.size() + 1);
    QList<qsizetype> current(b.size() + 1);
    for (qsizetype j = 0; j <= b.size(); ++j)
        previous[j] = j;
    for (qsizetype i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const qsizetype substitution = previous[j - 1] + (a.at(i - 1) == b.at(j - 1) ? 0 : 1);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, substitution});
        }
        std::swap(previous, current);
    }
    return previous[b.size()];
}

double characterAccuracy(const QString &expected, const QString &read)
{
    return 1.0 - double(editDistance(expected, read)) / double(expected.size());
}

/** Every outcome the service reported, gathered on the test's thread. */
struct Outcomes {
    explicit Outcomes(EnrichmentService &service)
    {
        QObject::connect(&service, &EnrichmentService::itemFinished, &context,
            [this](const QString &id, ItemEnricher::Outcome outcome) {
                byId.insert(id, outcome);
                ++count;
            });
        QObject::connect(&service, &EnrichmentService::backfillFinished, &context,
            [this](const QString &flag) { flags.append(flag); });
    }
    /** How the item's last reading ended; nothing when it was never handled. */
    [[nodiscard]] std::optional<ItemEnricher::Outcome> of(const QString &id) const
    {
        const auto found = byId.constFind(id);
        return found == byId.constEnd() ? std::nullopt : std::optional(*found);
    }
    QObject context;
    QMultiHash<QString, ItemEnricher::Outcome> byId;
    int count = 0;
    QStringList flags;
};

} // namespace

class TestEnrichmentService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void readsPicturesVideosLinksAndBrokenFiles();
    void aWriteThatFailsLeavesTheItemPending();
    void anItemWaitsOnceAndIsReadAgainLater();
    void switchedOffReadsNothing();
    void theStoreStartsTheScanAndRescansWhenItemsArrive();
    void backfillsRunOnceBehindTheirFlags();
    void backfillsWithoutALibraryRunAgainNextTime();

private:
    [[nodiscard]] QString addPicture(
        const QString &title, const QImage &picture, double addedAt, const QString &name = {});
    [[nodiscard]] QStringList tagsOf(const QString &itemId) const;
    [[nodiscard]] QString tagStatus(const QString &itemId, const QString &tag) const;
    [[nodiscard]] QStringList searchIds(const QString &query) const;
    static bool makeVideo(const QString &path, const QString &colour);

    std::unique_ptr<test::StoreWorld> m_world;
};

void TestEnrichmentService::init()
{
    m_world = std::make_unique<test::StoreWorld>();
}

void TestEnrichmentService::cleanup()
{
    m_world.reset();
}

QString TestEnrichmentService::addPicture(
    const QString &title, const QImage &picture, double addedAt, const QString &name)
{
    const QString filePath = m_world->storeFile(
        u"image/2024/05/"_s + (name.isEmpty() ? QString::number(addedAt) : name) + u".png"_s, png(picture));
    return m_world->addItem(u"image"_s, addedAt, [&](LibraryItem &item) {
        item.title = title;
        item.filePath = filePath;
    });
}

QStringList TestEnrichmentService::tagsOf(const QString &itemId) const
{
    QStringList names;
    for (const QVariant &name : m_world->db().read([&](Database &db) {
             return db.fetchScalars(u"SELECT t.name FROM itemTag it JOIN tag t ON t.id = it.tagId WHERE it.itemId = ? "
                                    "ORDER BY it.rowid"_s,
                 {itemId});
         }))
        names.append(name.toString());
    return names;
}

QString TestEnrichmentService::tagStatus(const QString &itemId, const QString &tag) const
{
    return m_world
        ->scalar(u"SELECT it.source || '/' || it.status FROM itemTag it JOIN tag t ON t.id = it.tagId "
                 "WHERE it.itemId = ? AND t.name = ?"_s,
            {itemId, tag})
        .toString();
}

QStringList TestEnrichmentService::searchIds(const QString &query) const
{
    const LibrarySearch::Scope scope{SidebarSelection::all(), m_world->store.inboxId()};
    return test::idsOf(m_world->db().read(
        [&](Database &db) { return LibrarySearch::searchItems(db, query, {}, scope, nowSeconds()); }));
}

bool TestEnrichmentService::makeVideo(const QString &path, const QString &colour)
{
    QProcess ffmpeg;
    ffmpeg.start(u"ffmpeg"_s,
        {u"-hide_banner"_s, u"-loglevel"_s, u"error"_s, u"-y"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
            u"color=c=%1:s=320x240:r=25:d=2"_s.arg(colour), u"-c:v"_s, u"libx264"_s, u"-pix_fmt"_s, u"yuv420p"_s,
            path});
    return ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0;
}

void TestEnrichmentService::readsPicturesVideosLinksAndBrokenFiles()
{
    QVERIFY2(
        !QStandardPaths::findExecutable(u"ffmpeg"_s).isEmpty(), "ffmpeg is missing: scripts/bootstrap installs it");
    const QString sign = addPicture(u"IMG_0042"_s, textPicture(signLines), 100);
    const QString red = addPicture(u"Screenshot 2024-05-01 at 10.00.00"_s, solidPicture(QColor(0xC8, 0x1E, 0x1E)), 200);
    const QString kept = addPicture(u"Summer garden"_s, solidPicture(QColor(0x1E, 0x6E, 0x32)), 300);
    const QString broken = m_world->addItem(u"image"_s, 400, [&](LibraryItem &item) {
        item.title = u"broken.png"_s;
        item.filePath = m_world->storeFile(u"image/2024/05/broken.png"_s, "not a picture at all");
    });
    const QString videoPath = u"video/2024/05/clip.mp4"_s;
    QVERIFY(QDir().mkpath(QFileInfo(LibraryLocation::resolve(videoPath)).absolutePath()));
    QVERIFY(makeVideo(LibraryLocation::resolve(videoPath), u"blue"_s));
    const QString video = m_world->addItem(u"video"_s, 500, [&](LibraryItem &item) {
        item.title = u"VID_0001"_s;
        item.filePath = videoPath;
    });
    const QString trashed = addPicture(u"IMG_9"_s, solidPicture(Qt::red), 600, u"trashed"_s);
    m_world->db().write(
        [&](Database &db) { db.execute(u"UPDATE item SET deletedAt = 650 WHERE id = ?"_s, {trashed}); });
    const QString link = m_world->addItem(u"link"_s, 700, [](LibraryItem &item) {
        item.title = u"How to make sourdough bread at home"_s;
        item.sourceURL = u"https://www.bbc.co.uk/food"_s;
    });
    const QString note = m_world->addItem(u"text"_s, 800, [](LibraryItem &item) { item.title = u"Shopping"_s; });
    m_world->store.reloadAll();

    EnrichmentService service(false, nullptr);
    service.attachStore(&m_world->store);
    Outcomes outcomes(service);
    test::LogCapture log;
    service.scanPending();
    // Links and texts are never found by the scan; importers hand them over.
    service.enqueue(link);
    service.enqueue(note);
    QTRY_COMPARE_WITH_TIMEOUT(outcomes.count, 7, 60000);
    QVERIFY(outcomes.of(sign) == ItemEnricher::Outcome::read);
    QVERIFY(outcomes.of(video) == ItemEnricher::Outcome::read);
    QVERIFY(outcomes.of(broken) == ItemEnricher::Outcome::unreadable);
    QVERIFY(outcomes.of(link) == ItemEnricher::Outcome::linkTagged);
    QVERIFY(outcomes.of(note) == ItemEnricher::Outcome::passed);
    QVERIFY(!outcomes.byId.contains(trashed));
    QVERIFY2(log.lines().filter(u"[Enrichment]"_s).isEmpty(), qPrintable(log.lines().join(u'\n')));

    // The sign: its text read, the first line (three words) its title, white its colour and tag.
    const LibraryItem signItem = m_world->item(sign);
    QVERIFY(signItem.ocrText);
    const double accuracy = characterAccuracy(signLines.join(u'\n'), *signItem.ocrText);
    QVERIFY2(accuracy >= 0.95, qPrintable(u"accuracy %1 for: %2"_s.arg(accuracy).arg(*signItem.ocrText)));
    QCOMPARE(signItem.title, u"Harbour parking only"_s);
    QVERIFY(signItem.colors);
    QCOMPARE(tagsOf(sign), QStringList{u"white"_s});
    QCOMPARE(tagStatus(sign, u"white"_s), u"ai/accepted"_s);
    QVERIFY(signItem.enrichedAt);
    QCOMPARE(signItem.modifiedAt, *signItem.enrichedAt);

    // No text and a screenshot's name: the colour word is the tag and, capitalised, the title.
    const LibraryItem redItem = m_world->item(red);
    QVERIFY(!redItem.ocrText);
    QCOMPARE(redItem.colors, uR"(["#C81E1E"])"_s);
    QCOMPARE(tagsOf(red), QStringList{u"red"_s});
    QCOMPARE(redItem.title, u"Red"_s);
    // A title that says something stays.
    QCOMPARE(m_world->item(kept).title, u"Summer garden"_s);
    QCOMPARE(tagsOf(kept), QStringList{u"green"_s});
    // The video's middle frame is read like a picture.
    QCOMPARE(tagsOf(video), QStringList{u"blue"_s});
    QCOMPARE(m_world->item(video).title, u"Blue"_s);
    // The broken file is named by its kind and marked, so no scan tries it again.
    QCOMPARE(tagsOf(broken), QStringList{u"image"_s});
    QVERIFY(m_world->item(broken).enrichedAt);
    QCOMPARE(m_world->item(broken).title, u"broken.png"_s);
    // The link's tags come from the nouns of its title; the note has no file and stays unread.
    QCOMPARE(tagsOf(link), (QStringList{u"sourdough"_s, u"bread"_s}));
    QVERIFY(m_world->item(link).enrichedAt);
    QVERIFY(!m_world->item(note).enrichedAt);
    QVERIFY(!m_world->item(trashed).enrichedAt);
    QCOMPARE(m_world
                 ->scalar(u"SELECT COUNT(*) FROM item WHERE enrichedAt IS NULL AND deletedAt IS NULL "
                          "AND kind IN ('image', 'video')"_s)
                 .toInt(),
        0);

    // What was read is searchable, and the window's rows show the new titles after the refresh.
    QCOMPARE(searchIds(u"parking"_s), QStringList{sign});
    QCOMPARE(searchIds(u"residents six"_s), QStringList{sign});
    QCOMPARE(searchIds(u"dark green"_s), QStringList{kept});
    QVERIFY(searchIds(u"white"_s).contains(sign));
    QVERIFY(searchIds(u"red"_s).contains(red));
    QCOMPARE(searchIds(u"sourdough"_s), QStringList{link});
    QTRY_VERIFY_WITH_TIMEOUT(
        std::any_of(m_world->store.items().cbegin(), m_world->store.items().cend(),
            [&](const LibraryItem &item) { return item.id == sign && item.title == u"Harbour parking only"; }),
        5000);

    // A second scan finds nothing left to do.
    const int before = outcomes.count;
    service.scanPending();
    QTest::qWait(500);
    QCOMPARE(outcomes.count, before);
}

void TestEnrichmentService::aWriteThatFailsLeavesTheItemPending()
{
    const QString refused = addPicture(u"IMG_1"_s, textPicture(signLines), 100);
    const QString fine = addPicture(u"IMG_2"_s, solidPicture(QColor(0xC8, 0x1E, 0x1E)), 200);
    m_world->db().write([&](Database &db) {
        db.execute(u"CREATE TRIGGER refuse BEFORE UPDATE OF ocrText ON item WHEN NEW.id = '%1' "
                   "BEGIN SELECT RAISE(ABORT, 'refused by the test'); END"_s.arg(refused));
    });
    EnrichmentService service(false, nullptr);
    service.setDatabase(m_world->store.dbQueue(), m_world->sandbox.libraryRoot());
    Outcomes outcomes(service);
    test::LogCapture log;
    service.scanPending();
    QTRY_COMPARE_WITH_TIMEOUT(outcomes.count, 2, 30000);
    QVERIFY(outcomes.of(refused) == ItemEnricher::Outcome::failed);
    QCOMPARE(log.linesStartingWith(u"[Enrichment] failed for "_s + refused + u": "_s).size(), 1);
    QVERIFY(log.contains(u"refused by the test"_s));
    // The whole write rolled back: no title, no tag, still pending; the other item went on.
    const LibraryItem item = m_world->item(refused);
    QCOMPARE(item.title, u"IMG_1"_s);
    QVERIFY(!item.enrichedAt);
    QVERIFY(tagsOf(refused).isEmpty());
    QVERIFY(outcomes.of(fine) == ItemEnricher::Outcome::read);
    QCOMPARE(tagsOf(fine), QStringList{u"red"_s});
}

void TestEnrichmentService::anItemWaitsOnceAndIsReadAgainLater()
{
    const QString first = addPicture(u"IMG_1"_s, solidPicture(Qt::white), 100);
    const QString second = addPicture(u"IMG_2"_s, solidPicture(Qt::black), 200);
    EnrichmentService service(false, nullptr);
    service.setDatabase(m_world->store.dbQueue(), m_world->sandbox.libraryRoot());
    Outcomes outcomes(service);
    QList<int> counts;
    QObject context;
    connect(&service, &EnrichmentService::pendingCountChanged, &context, [&](int count) { counts.append(count); });
    for (int i = 0; i < 3; ++i) {
        service.enqueue(first);
        service.enqueue(second);
    }
    QTRY_COMPARE_WITH_TIMEOUT(outcomes.count, 2, 30000);
    QTest::qWait(300);
    QCOMPARE(outcomes.count, 2);
    QCOMPARE(outcomes.byId.count(first), 1);
    QCOMPARE(counts.first(), 1);
    QCOMPARE(*std::max_element(counts.cbegin(), counts.cend()), 2);
    QTRY_COMPARE(service.pendingCount(), 0);
    QCOMPARE(tagsOf(second), QStringList{u"black"_s});

    // Handed over again after its turn, it is read again (the tags are not doubled).
    service.enqueue(first);
    QTRY_COMPARE_WITH_TIMEOUT(outcomes.byId.count(first), 2, 30000);
    QCOMPARE(tagsOf(first), QStringList{u"white"_s});
}

void TestEnrichmentService::switchedOffReadsNothing()
{
    const QString picture = addPicture(u"IMG_1"_s, solidPicture(Qt::white), 100);
    EnrichmentService service(true, nullptr);
    service.setDatabase(m_world->store.dbQueue(), m_world->sandbox.libraryRoot());
    Outcomes outcomes(service);
    service.scanPending();
    service.enqueue(picture);
    QTest::qWait(500);
    QCOMPARE(outcomes.count, 0);
    QCOMPARE(service.pendingCount(), 0);
    QVERIFY(!m_world->item(picture).enrichedAt);
}

void TestEnrichmentService::theStoreStartsTheScanAndRescansWhenItemsArrive()
{
    const QString early = addPicture(u"IMG_1"_s, solidPicture(QColor(0xC8, 0x1E, 0x1E)), 100);
    EnrichmentService service(false, nullptr);
    service.attachStore(&m_world->store);
    Outcomes outcomes(service);
    // Nothing is read before the Store says so, three seconds after its first load.
    m_world->store.reloadAll();
    QTest::qWait(300);
    QCOMPARE(outcomes.count, 0);
    QTRY_VERIFY_WITH_TIMEOUT(outcomes.of(early) == ItemEnricher::Outcome::read, 10000);

    // An item that arrives without being handed over is found when the library's counts change.
    const QString late = addPicture(u"IMG_2"_s, solidPicture(QColor(0x1E, 0x3C, 0xC8)), 200);
    m_world->store.reloadAll();
    QTRY_VERIFY_WITH_TIMEOUT(outcomes.of(late) == ItemEnricher::Outcome::read, 10000);
    QCOMPARE(tagsOf(late), QStringList{u"blue"_s});
    QCOMPARE(m_world->item(late).colors, uR"(["#1E3CC8"])"_s);
    QCOMPARE(outcomes.count, 2);
}

void TestEnrichmentService::backfillsRunOnceBehindTheirFlags()
{
    // An older library: a palette from an earlier reading, a picture and a link read but never
    // tagged, and automatic tags that were only proposals.
    const QString stale = addPicture(u"Sea"_s, solidPicture(QColor(0x1E, 0x3C, 0xC8)), 100);
    const QString untagged = addPicture(u"Field"_s, solidPicture(QColor(0x1E, 0x6E, 0x32)), 200);
    const QString link = m_world->addItem(u"link"_s, 300, [](LibraryItem &item) {
        item.title = u"Saved for the mountain cabin"_s;
        item.enrichedAt = 300;
    });
    m_world->db().write([&](Database &db) {
        db.execute(u"UPDATE item SET colors = '[\"#000000\"]', enrichedAt = 100 WHERE id = ?"_s, {stale});
        db.execute(u"UPDATE item SET enrichedAt = 200 WHERE id = ?"_s, {untagged});
        db.insert(Tag{u"t1"_s, u"ocean"_s});
        db.insert(ItemTag{stale, u"t1"_s, u"ai"_s, u"suggested"_s, 100});
    });
    {
        EnrichmentService service(false, nullptr);
        service.attachStore(&m_world->store);
        Outcomes outcomes(service);
        service.runBackfills();
        QTRY_COMPARE_WITH_TIMEOUT(outcomes.flags.size(), 4, 30000);
        QTRY_COMPARE_WITH_TIMEOUT(outcomes.count, 2, 30000);
        QCOMPARE(m_world->item(stale).colors, uR"(["#1E3CC8"])"_s);
        QCOMPARE(tagStatus(stale, u"ocean"_s), u"ai/accepted"_s);
        QCOMPARE(tagsOf(untagged), QStringList{u"green"_s});
        QCOMPARE(tagsOf(link), (QStringList{u"mountain"_s, u"cabin"_s}));
        // The stale picture has a tag and was not read again.
        QVERIFY(!outcomes.byId.contains(stale));
    }
    UserDefaults defaults;
    for (const QLatin1StringView flag :
        {EnrichmentService::coloursReextractedFlag, EnrichmentService::autoTaggedAllFlag,
            EnrichmentService::autoTaggedLinksFlag, EnrichmentService::acceptedAITagFlag})
        QVERIFY2(defaults.boolValue(QString(flag)), flag.data());

    // With the flags set, nothing runs again.
    m_world->db().write(
        [&](Database &db) { db.execute(u"UPDATE item SET colors = '[\"#000000\"]' WHERE id = ?"_s, {stale}); });
    EnrichmentService again(false, nullptr);
    again.attachStore(&m_world->store);
    Outcomes later(again);
    again.runBackfills();
    QTest::qWait(2500);
    QVERIFY(later.flags.isEmpty());
    QCOMPARE(m_world->item(stale).colors, uR"(["#000000"])"_s);
}

void TestEnrichmentService::backfillsWithoutALibraryRunAgainNextTime()
{
    {
        EnrichmentService service(false, nullptr);
        service.runBackfills();
    } // waits for the upgrades to end
    UserDefaults defaults;
    QVERIFY(!defaults.boolValue(QString(EnrichmentService::coloursReextractedFlag)));
    QVERIFY(!defaults.boolValue(QString(EnrichmentService::autoTaggedAllFlag)));
    QVERIFY(!defaults.boolValue(QString(EnrichmentService::autoTaggedLinksFlag)));
    // The old tags' upgrade sets its flag at once, whatever happens after.
    QVERIFY(defaults.boolValue(QString(EnrichmentService::acceptedAITagFlag)));
}

QTEST_MAIN(TestEnrichmentService)
#include "tst_enrichmentservice.moc"
