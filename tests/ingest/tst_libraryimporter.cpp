// The Store's import entries: where an import is announced, when the capture card and enrichment
// are asked for, how a batch of files reports, reloads and fails, and links, texts and screenshots.

#include "tests/ingest/importertestworld.h"

using namespace Qt::StringLiterals;
using namespace kivo;

class TestLibraryImporter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void announceNamesTheDestination_data();
    void announceNamesTheDestination();
    void captureCardFollowsTheSettings_data();
    void captureCardFollowsTheSettings();
    void destinationFollowsTheSetting();
    void batchReportsEachFileAndReloadsOnce();
    void batchOfOneOpensTheCard();
    void cancelledBatchKeepsWhatItImported();
    void pendingBatchIsNotAnnounced();
    void enrichmentOnlyForUnreadPicturesAndVideos();
    void linksAndTexts();
    void pictureBytesAndScreenshots();
    void nothingHappensWithoutALibrary();

private:
    QStringList writeFiles(int count, const QString &folder);

    std::unique_ptr<test::ImporterTestWorld> m_world;
};

void TestLibraryImporter::init()
{
    m_world = std::make_unique<test::ImporterTestWorld>();
}

void TestLibraryImporter::cleanup()
{
    m_world.reset();
}

QStringList TestLibraryImporter::writeFiles(int count, const QString &folder)
{
    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths.append(m_world->library.source(
            folder + u"/note %1.txt"_s.arg(i), folder.toUtf8() + " note number " + QByteArray::number(i)));
    return paths;
}

void TestLibraryImporter::announceNamesTheDestination_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("toast");
    QTest::newRow("no target") << QString() << u"Saved to Inbox"_s;
    QTest::newRow("the inbox") << u"inbox"_s << u"Saved to Inbox"_s;
    QTest::newRow("a collection") << u"moodboard"_s << u"Saved to Moodboard"_s;
    QTest::newRow("an unknown id") << u"0f0f0f0f-dead-beef-0000-000000000000"_s << u"Saved to Library"_s;
}

void TestLibraryImporter::announceNamesTheDestination()
{
    QFETCH(QString, target);
    QFETCH(QString, toast);
    const QString moodboard = m_world->library.addCollection(u"Moodboard"_s);
    m_world->store.reloadCollections();
    std::optional<QString> id;
    if (target == u"inbox")
        id = m_world->inboxId();
    else if (target == u"moodboard")
        id = moodboard;
    else if (!target.isEmpty())
        id = target;
    m_world->importer.announce(id, std::nullopt, false);
    QCOMPARE(m_world->store.toast(), toast);
}

void TestLibraryImporter::captureCardFollowsTheSettings_data()
{
    QTest::addColumn<bool>("cardEnabled");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<bool>("quiet");
    QTest::addColumn<int>("batchSize");
    QTest::addColumn<bool>("card");
    QTest::newRow("card on") << true << u"inbox"_s << false << 1 << true;
    QTest::newRow("card off") << false << u"inbox"_s << false << 1 << false;
    QTest::newRow("card off, but pick each time") << false << u"picker"_s << false << 1 << true;
    QTest::newRow("card off, automatic") << false << u"auto"_s << false << 1 << false;
    QTest::newRow("quiet") << true << u"picker"_s << true << 1 << false;
    QTest::newRow("batch of two") << true << u"inbox"_s << false << 2 << false;
}

void TestLibraryImporter::captureCardFollowsTheSettings()
{
    QFETCH(bool, cardEnabled);
    QFETCH(QString, destination);
    QFETCH(bool, quiet);
    QFETCH(int, batchSize);
    QFETCH(bool, card);
    m_world->settings.setCaptureCardEnabled(cardEnabled);
    m_world->settings.setCaptureDestination(destination);
    const auto note = m_world->importer.importText(u"A thought"_s, std::nullopt, m_world->inboxId(), {.quiet = true});
    QVERIFY(note);
    QCOMPARE(m_world->store.toast(), QString()); // a quiet entry says nothing
    m_world->importer.announce(m_world->inboxId(), note, quiet, batchSize);
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(m_world->cards.size(), card ? 1 : 0);
    if (card)
        QCOMPARE(m_world->cards.first().value(0).value<LibraryItem>().id, note->id);
}

void TestLibraryImporter::destinationFollowsTheSetting()
{
    const QString board = m_world->library.addCollection(u"Board"_s);
    m_world->store.reloadCollections();
    m_world->store.setSelection(SidebarSelection::collection(board));
    QCOMPARE(m_world->importer.destination(), m_world->inboxId());
    m_world->settings.setCaptureDestination(u"auto"_s);
    QCOMPARE(m_world->importer.destination(), board);
    QCOMPARE(m_world->importer.destination(u"elsewhere"_s), u"elsewhere"_s);
    m_world->store.setSelection(SidebarSelection::all());
    QCOMPARE(m_world->importer.destination(), m_world->inboxId());
}

void TestLibraryImporter::batchReportsEachFileAndReloadsOnce()
{
    const QStringList loose = writeFiles(3, u"loose"_s);
    writeFiles(2, u"folder/deeper"_s);
    test::writeFile(m_world->library.sandbox.path() + u"/sources/folder/.hidden/secret.txt"_s, "not for the library");
    test::writeFile(m_world->library.sandbox.path() + u"/sources/folder/.DS_Store"_s, "not for the library either");
    const QString missing = m_world->library.sandbox.path() + u"/sources/gone.png"_s;
    const QString board = m_world->library.addCollection(u"Board"_s);
    m_world->store.reloadCollections();

    // The Store's timing lines count its reloads.
    m_world->store.setChurnTrace(true);
    test::LogCapture log;
    ImportBatch *batch = m_world->importer.importFiles(
        loose + QStringList{missing, m_world->library.sandbox.path() + u"/sources/folder"_s}, board);
    QVERIFY(batch);
    QSignalSpy total(batch, &ImportBatch::totalKnown);
    QSignalSpy progressed(batch, &ImportBatch::progressed);
    QVERIFY(m_world->wait(batch));

    QCOMPARE(total.size(), 1);
    QCOMPARE(batch->total(), 6);
    QCOMPARE(progressed.size(), 6);
    QCOMPARE(batch->done(), 6);
    QCOMPARE(batch->succeeded(), 5);
    // In the order given, the folder's files after the loose ones and the missing one.
    QStringList order;
    for (const FileImportOutcome &outcome : batch->outcomes())
        order.append(outcome.fileName());
    QCOMPARE(order,
        (QStringList{
            u"note 0.txt"_s, u"note 1.txt"_s, u"note 2.txt"_s, u"gone.png"_s, u"note 0.txt"_s, u"note 1.txt"_s}));
    QCOMPARE(batch->failures().size(), 1);
    QCOMPARE(batch->failures().first().path, missing);
    QCOMPARE(log.linesStartingWith(u"[Store] import failed for "_s),
        QStringList{u"[Store] import failed for gone.png: No such file or directory"_s});
    QCOMPARE(log.linesStartingWith(u"[trace] reloadAll: "_s).size(), 1);
    QCOMPARE(m_world->store.allCount(), 5);
    QCOMPARE(m_world->store.counts().value(board), 5);
    QCOMPARE(m_world->store.toast(), u"Saved to Board"_s);
    QCOMPARE(m_world->cards.size(), 0);
}

void TestLibraryImporter::batchOfOneOpensTheCard()
{
    const QStringList one = writeFiles(1, u"single"_s);
    QVERIFY(m_world->wait(m_world->importer.importFiles(one, m_world->inboxId())));
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(m_world->cards.size(), 1);
    QCOMPARE(m_world->cards.first().value(0).value<LibraryItem>().title, u"note 0"_s);
}

void TestLibraryImporter::cancelledBatchKeepsWhatItImported()
{
    const QStringList many = writeFiles(300, u"many"_s);
    ImportBatch *batch = m_world->importer.importFiles(many, std::nullopt);
    QObject::connect(batch, &ImportBatch::progressed, batch, [batch] { batch->cancel(); });
    QVERIFY(m_world->wait(batch));
    QVERIFY(batch->isCancelled());
    QVERIFY(batch->done() >= 1);
    QVERIFY(batch->done() < 300);
    QCOMPARE(m_world->library.items().size(), batch->succeeded());
    QCOMPARE(m_world->store.allCount(), batch->succeeded());
}

void TestLibraryImporter::pendingBatchIsNotAnnounced()
{
    const QStringList files = writeFiles(2, u"pending"_s);
    ImportBatch *batch = m_world->importer.importFiles(files, std::nullopt, {.pending = true});
    QVERIFY(m_world->wait(batch));
    QCOMPARE(m_world->store.toast(), QString());
    QStringList ids;
    for (const FileImportOutcome &outcome : batch->outcomes())
        ids.append(outcome.imported->item.id);
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->pending), ids);
}

void TestLibraryImporter::enrichmentOnlyForUnreadPicturesAndVideos()
{
    const QString picture = m_world->library.source(u"red.png"_s, test::pngBytes(6, 6, 200));
    const QString text = m_world->library.source(u"words.txt"_s, "words");
    QVERIFY(m_world->wait(m_world->importer.importFiles({picture, text}, std::nullopt)));
    QCOMPARE(m_world->enrichment.size(), 1);
    const QString pictureId = m_world->enrichment.first().value(0).toString();
    QCOMPARE(m_world->library.item(pictureId)->kind, u"image"_s);

    // Dropped again: not read yet, so asked for again (the service keeps one entry per id).
    QVERIFY(m_world->wait(m_world->importer.importFiles({picture}, std::nullopt)));
    QCOMPARE(m_world->enrichment.size(), 2);
    // Once read, a duplicate is not queued again.
    m_world->library.queue->write([&](Database &db) {
        db.execute(u"UPDATE item SET enrichedAt = ? WHERE id = ?"_s, {nowSeconds(), pictureId});
    });
    QVERIFY(m_world->wait(m_world->importer.importFiles({picture}, std::nullopt)));
    QCOMPARE(m_world->enrichment.size(), 2);
}

void TestLibraryImporter::linksAndTexts()
{
    const QUrl address(u"https://www.dribbble.com/shots/1"_s);
    const auto first = m_world->importer.importLink(address, std::nullopt, m_world->inboxId());
    const auto second = m_world->importer.importLink(address, u"  "_s, m_world->inboxId());
    QVERIFY(first && second);
    QVERIFY(first->id != second->id);
    QCOMPARE(second->title, u"dribbble.com"_s);
    QCOMPARE(m_world->store.linksCount(), 2);
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->snapshots), (QStringList{first->id, second->id}));
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->enrichment), (QStringList{first->id, second->id}));

    const QString text = QString(60, u'a') + u'b';
    const auto note = m_world->importer.importText(text, std::nullopt, std::nullopt);
    QVERIFY(note);
    QCOMPARE(note->title, QString(60, u'a'));
    QCOMPARE(m_world->library.item(note->id)->note, text);
    QCOMPARE(m_world->store.allCount(), 3);

    test::LogCapture log;
    QVERIFY(!m_world->importer.importText(u" \n "_s, std::nullopt, std::nullopt));
    QCOMPARE(log.linesStartingWith(u"[Store] importText failed: "_s).size(), 1);
}

void TestLibraryImporter::pictureBytesAndScreenshots()
{
    const auto pasted
        = m_world->wait(m_world->importer.importImageData(test::pngBytes(9, 9, 5), std::nullopt, m_world->inboxId()));
    QVERIFY(pasted);
    QCOMPARE(pasted->item.title, u"Image"_s);
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
    QCOMPARE(test::ImporterTestWorld::firstArguments(m_world->enrichment), QStringList{pasted->item.id});

    const QString shot = m_world->library.source(u"kivo-capture-1.png"_s, test::pngBytes(16, 9, 44));
    const auto captured = m_world->wait(
        m_world->importer.importScreenshot(shot, QUrl(u"https://example.com/page"_s), m_world->inboxId()));
    QVERIFY(captured);
    QCOMPARE(captured->item.title, u"kivo-capture-1"_s);
    QCOMPARE(m_world->library.item(captured->item.id)->sourceURL, u"https://example.com/page"_s);
    QVERIFY(!QFile::exists(shot));
    QCOMPARE(m_world->store.allCount(), 2);

    test::LogCapture log;
    QVERIFY(!m_world->wait(m_world->importer.importScreenshot(shot, std::nullopt, std::nullopt)));
    QCOMPARE(log.linesStartingWith(u"[Store] screenshot import failed: "_s).size(), 1);
}

void TestLibraryImporter::nothingHappensWithoutALibrary()
{
    AppSettings settings;
    Store closed(&settings);
    LibraryImporter importer(&closed, &settings);
    QVERIFY(!importer.importFiles(writeFiles(1, u"closed"_s), std::nullopt));
    QVERIFY(!importer.importLink(QUrl(u"https://example.com"_s), std::nullopt, std::nullopt));
    QVERIFY(!importer.importText(u"words"_s, std::nullopt, std::nullopt));
    QVERIFY(!m_world->wait(importer.importRemote(QUrl(u"https://example.com"_s), {}, {}, {})).item());
    QVERIFY(m_world->library.items().isEmpty());
}

QTEST_GUILESS_MAIN(TestLibraryImporter)
#include "tst_libraryimporter.moc"
