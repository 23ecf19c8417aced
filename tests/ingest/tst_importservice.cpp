// The import service on a real library: files of every kind are copied, measured and inserted;
// the same bytes twice give one item; picture bytes get the extension of their type.

#include "ingest/import/importservice.h"
#include "tests/ingest/importtestlibrary.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

using OptionalNumber = std::optional<double>;
Q_DECLARE_METATYPE(OptionalNumber)

class TestImportService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void filesOfEachKind_data();
    void filesOfEachKind();
    void turnedVideoIsMeasuredUpright();
    void sameBytesGiveOneItem();
    void trashedCopyDoesNotCount();
    void sameTitlesGetTheirOwnNames();
    void unreadableFileWritesNothing();
    void pictureBytes_data();
    void pictureBytes();
    void linksAndTexts();

private:
    std::unique_ptr<test::ImportTestLibrary> m_library;
};

void TestImportService::init()
{
    m_library = std::make_unique<test::ImportTestLibrary>();
}

void TestImportService::cleanup()
{
    m_library.reset();
}

void TestImportService::filesOfEachKind_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("storedName");
    QTest::addColumn<OptionalNumber>("width");
    QTest::addColumn<OptionalNumber>("height");
    // A camera's portrait photo: stored landscape, turned by EXIF orientation 6.
    QTest::newRow("jpeg, orientation 6") << u"Harbour at dusk.JPG"_s << test::jpegWithOrientation(400, 300, 6)
                                         << u"image"_s << u"harbour-at-dusk.jpg"_s << OptionalNumber(300)
                                         << OptionalNumber(400);
    QTest::newRow("jpeg, orientation 3 keeps its sides")
        << u"upside.jpg"_s << test::jpegWithOrientation(400, 300, 3) << u"image"_s << u"upside.jpg"_s
        << OptionalNumber(400) << OptionalNumber(300);
    QTest::newRow("jpeg, orientation 8") << u"left.jpeg"_s << test::jpegWithOrientation(400, 300, 8) << u"image"_s
                                         << u"left.jpeg"_s << OptionalNumber(300) << OptionalNumber(400);
    QTest::newRow("png") << u"plain.png"_s << test::pngBytes(64, 16) << u"image"_s << u"plain.png"_s
                         << OptionalNumber(64) << OptionalNumber(16);
    QTest::newRow("unreadable picture keeps empty sizes")
        << u"broken.png"_s << QByteArray("not a picture") << u"image"_s << u"broken.png"_s << OptionalNumber()
        << OptionalNumber();
    QTest::newRow("text") << u"Shopping list.txt"_s << QByteArray("eggs\nmilk\n") << u"text"_s << u"shopping-list.txt"_s
                          << OptionalNumber() << OptionalNumber();
    QTest::newRow("pdf") << u"paper.pdf"_s << QByteArray("%PDF-1.4\n%%EOF\n") << u"file"_s << u"paper.pdf"_s
                         << OptionalNumber() << OptionalNumber();
    QTest::newRow("unknown extension") << u"blob.kivoblob"_s << QByteArray("\x01\x02\x03", 3) << u"file"_s
                                       << u"blob.kivoblob"_s << OptionalNumber() << OptionalNumber();
    QTest::newRow("no extension") << u"LICENSE"_s << QByteArray("Permission is granted") << u"file"_s << u"license"_s
                                  << OptionalNumber() << OptionalNumber();
}

void TestImportService::filesOfEachKind()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, kind);
    QFETCH(QString, storedName);
    QFETCH(OptionalNumber, width);
    QFETCH(OptionalNumber, height);

    const QString path = m_library->source(name, bytes);
    const ImportedItem imported = ImportService::importFile(m_library->context, path, std::nullopt);
    QVERIFY(!imported.existing);
    const auto stored = m_library->item(imported.item.id);
    QVERIFY(stored);
    QCOMPARE(*stored, imported.item);
    QCOMPARE(stored->kind, kind);
    QCOMPARE(stored->title, QFileInfo(name).completeBaseName());
    QCOMPARE(stored->fileSize, bytes.size());
    QCOMPARE(
        stored->fileHash, QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex()));
    QCOMPARE(stored->width, width);
    QCOMPARE(stored->height, height);
    QVERIFY(!stored->enrichedAt);
    QCOMPARE(stored->createdAt, stored->addedAt);
    QCOMPARE(stored->modifiedAt, stored->addedAt);
    // Filed by month of addition, under a name made from the title, with the same bytes.
    QCOMPARE(stored->filePath, LibraryLocation::monthFolderName(stored->addedAt) + u'/' + storedName);
    QCOMPARE(test::readFile(m_library->storedPath(*stored)), bytes);
    QVERIFY(m_library->memberships(stored->id).isEmpty());
}

void TestImportService::turnedVideoIsMeasuredUpright()
{
    const QString clip = m_library->sandbox.path() + u"/turned.mp4"_s;
    if (!test::makeTurnedClip(clip))
        QSKIP("the ffmpeg command-line tool is needed to make the clip");
    // The clip must really carry the turn, as ffprobe reads it, or the test proves nothing.
    QCOMPARE(test::probedRotation(clip).remove(u'-'), u"90"_s);
    const QString target = m_library->addCollection(u"Clips"_s);
    const ImportedItem imported = ImportService::importFile(m_library->context, clip, target);
    QCOMPARE(imported.item.kind, u"video"_s);
    QCOMPARE(imported.item.width, OptionalNumber(240));
    QCOMPARE(imported.item.height, OptionalNumber(320));
    QVERIFY(imported.item.duration);
    QVERIFY(qAbs(*imported.item.duration - 1.0) < 0.15);
    QCOMPARE(m_library->memberships(imported.item.id), QStringList{target});

    // A sound has a length and no size.
    const QString sound = m_library->sandbox.path() + u"/tone.wav"_s;
    QVERIFY(test::runFfmpeg({u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=440:duration=2"_s, sound}));
    const ImportedItem tone = ImportService::importFile(m_library->context, sound, std::nullopt);
    QCOMPARE(tone.item.kind, u"video"_s);
    QVERIFY(!tone.item.width && !tone.item.height);
    QVERIFY(tone.item.duration && qAbs(*tone.item.duration - 2.0) < 0.1);
}

void TestImportService::sameBytesGiveOneItem()
{
    const QString first = m_library->addCollection(u"Moodboard"_s);
    const QString second = m_library->addCollection(u"Kitchen"_s);
    const QByteArray bytes = test::pngBytes(20, 20, 7);
    const ImportedItem original
        = ImportService::importFile(m_library->context, m_library->source(u"a.png"_s, bytes), first);

    // The same bytes under another name, dropped on another collection: filed there too, nothing else changes.
    const ImportedItem again
        = ImportService::importFile(m_library->context, m_library->source(u"copy of a.png"_s, bytes), second);
    QVERIFY(again.existing);
    QCOMPARE(again.item, original.item);
    QCOMPARE(m_library->items().size(), 1);
    QStringList both{first, second};
    both.sort();
    QCOMPARE(m_library->memberships(original.item.id), both);
    QCOMPARE(QDir(QFileInfo(m_library->storedPath(original.item)).path()).entryList(QDir::Files).size(), 1);

    // Dropped again where it already is: the membership keeps its first time.
    const double firstFiled = m_library->queue->read([&](Database &db) {
        return db
            .fetchScalar(u"SELECT addedAt FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s,
                {original.item.id, first})
            .toDouble();
    });
    QTest::qWait(20);
    QVERIFY(ImportService::importFile(m_library->context, m_library->source(u"b.png"_s, bytes), first).existing);
    QCOMPARE(m_library->queue->read([&](Database &db) {
        return db
            .fetchScalar(u"SELECT addedAt FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s,
                {original.item.id, first})
            .toDouble();
    }),
        firstFiled);
}

void TestImportService::trashedCopyDoesNotCount()
{
    const QByteArray bytes("the same words");
    const ImportedItem first = ImportService::importFile(m_library->context, m_library->source(u"a.txt"_s, bytes), {});
    m_library->queue->write([&](Database &db) {
        db.execute(u"UPDATE item SET deletedAt = ? WHERE id = ?"_s, {nowSeconds(), first.item.id});
    });
    const ImportedItem second = ImportService::importFile(m_library->context, m_library->source(u"a.txt"_s, bytes), {});
    QVERIFY(!second.existing);
    QVERIFY(second.item.id != first.item.id);
    QCOMPARE(m_library->items().size(), 2);
    QVERIFY(second.item.filePath != first.item.filePath);
}

void TestImportService::sameTitlesGetTheirOwnNames()
{
    const ImportedItem one = ImportService::importFile(
        m_library->context, m_library->source(u"one/Sunset.png"_s, test::pngBytes(8, 8, 1)), {});
    const ImportedItem two = ImportService::importFile(
        m_library->context, m_library->source(u"two/Sunset.png"_s, test::pngBytes(8, 8, 2)), {});
    QVERIFY(one.item.filePath->endsWith(u"/sunset.png"_s));
    QVERIFY(two.item.filePath->endsWith(u"/sunset-2.png"_s));
}

void TestImportService::unreadableFileWritesNothing()
{
    const QString missing = m_library->sandbox.path() + u"/nowhere/gone.png"_s;
    QVERIFY_THROWS_EXCEPTION(ImportError, ImportService::importFile(m_library->context, missing, std::nullopt));
    QVERIFY(m_library->items().isEmpty());
}

void TestImportService::pictureBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<OptionalNumber>("width");
    QTest::newRow("png") << test::pngBytes(10, 5) << u"png"_s << OptionalNumber(10);
    QTest::newRow("jpeg") << test::jpegWithOrientation(10, 5, 1) << u"jpg"_s << OptionalNumber(10);
    QTest::newRow("gif") << QByteArray::fromBase64("R0lGODlhAQABAIAAAP///wAAACH5BAEAAAAALAAAAAABAAEAAAICRAEAOw==")
                         << u"gif"_s << OptionalNumber(1);
    QTest::newRow("not a picture, kept as png") << QByteArray("<html>nope</html>") << u"png"_s << OptionalNumber();
}

void TestImportService::pictureBytes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, extension);
    QFETCH(OptionalNumber, width);
    const ImportedItem imported = ImportService::importImageData(m_library->context, bytes, std::nullopt, std::nullopt);
    QCOMPARE(imported.item.kind, u"image"_s);
    QCOMPARE(imported.item.title, u"Image"_s);
    QCOMPARE(QFileInfo(*imported.item.filePath).fileName(), u"image."_s + extension);
    QCOMPARE(imported.item.width, width);
    QCOMPARE(test::readFile(m_library->storedPath(imported.item)), bytes);

    const ImportedItem titled = ImportService::importImageData(
        m_library->context, bytes + QByteArray(1, '\0'), u"Pasted sketch"_s, std::nullopt);
    QCOMPARE(titled.item.title, u"Pasted sketch"_s);
}

void TestImportService::linksAndTexts()
{
    const QString inbox = m_library->addCollection(u"Inbox"_s, true);
    const LibraryItem link = ImportService::insertLink(
        m_library->context, QUrl(u"https://www.www.example.com/a?b=1"_s), std::nullopt, inbox);
    QCOMPARE(link.kind, u"link"_s);
    QCOMPARE(link.title, u"example.com"_s);
    QCOMPARE(link.sourceURL, u"https://www.www.example.com/a?b=1"_s);
    QVERIFY(!link.filePath);
    QCOMPARE(m_library->memberships(link.id), QStringList{inbox});
    // No check for an equal address: a link saved twice is two items.
    const LibraryItem again = ImportService::insertLink(
        m_library->context, QUrl(u"https://www.www.example.com/a?b=1"_s), u"Mine"_s, std::nullopt);
    QVERIFY(again.id != link.id);
    QCOMPARE(again.title, u"Mine"_s);

    const QString text = QString(60, u'w') + u'!';
    const LibraryItem note = ImportService::insertText(m_library->context, text, std::nullopt, std::nullopt);
    QCOMPARE(m_library->item(note.id)->note, text);
    QCOMPARE(m_library->item(note.id)->title, QString(60, u'w'));
    QCOMPARE(m_library->items().size(), 3);
}

QTEST_GUILESS_MAIN(TestImportService)
#include "tst_importservice.moc"
