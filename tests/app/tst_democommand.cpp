// `kivo demo` and `kivo sidecars` through the real binary: a small demo library is checked row by
// row against the files it wrote (hashes, sizes, picture and clip dimensions), for the variety it
// promises, and then gets its sidecars.

#include "tests/app/kivoprocess.h"

#include <QCryptographicHash>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

using namespace Qt::StringLiterals;
using kivo::test::Sandbox;

namespace {

struct Result {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Result runKivo(const Sandbox &sandbox, const QStringList &arguments)
{
    QProcess kivo;
    kivo.setProcessEnvironment(kivo::test::sandboxEnvironment(sandbox));
    kivo.start(QStringLiteral(KIVO_BINARY), arguments);
    if (!kivo.waitForFinished(240000))
        return {};
    return {kivo.exitStatus() == QProcess::NormalExit ? kivo.exitCode() : -1, kivo.readAllStandardOutput(), kivo.readAllStandardError()};
}

QList<kivo::LibraryItem> itemsOf(const QString &root)
{
    auto queue = kivo::DatabaseQueue::open(root + u"/library.sqlite"_s);
    return queue->read([](kivo::Database &db) { return db.fetchAll<kivo::LibraryItem>(u"SELECT * FROM item ORDER BY rowid"_s); });
}

QVariant scalar(const QString &root, const QString &sql)
{
    auto queue = kivo::DatabaseQueue::open(root + u"/library.sqlite"_s);
    return queue->read([&](kivo::Database &db) { return db.fetchScalar(sql); });
}

/** Width, height and duration as ffprobe reads them. */
QStringList probe(const QString &path)
{
    QProcess ffprobe;
    ffprobe.start(u"ffprobe"_s, {u"-v"_s, u"error"_s, u"-show_entries"_s, u"stream=width,height:format=duration"_s, u"-of"_s,
                                 u"default=noprint_wrappers=1"_s, path});
    ffprobe.waitForFinished();
    return QString::fromUtf8(ffprobe.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

class TestDemoCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void demoLibraryHoldsWhatItSays();
    void seedDecidesTheLibrary();
    void secondRunAddsToTheLibrary();
    void wrongUseIsRefused_data();
    void wrongUseIsRefused();
};

void TestDemoCommand::demoLibraryHoldsWhatItSays()
{
    if (QStandardPaths::findExecutable(u"ffprobe"_s).isEmpty())
        QSKIP("ffprobe is not installed (scripts/debian-packages.txt lists ffmpeg)");
    Sandbox sandbox;
    const QString root = sandbox.path() + u"/Demo Library"_s;
    const Result made = runKivo(sandbox, {u"--library"_s, root, u"demo"_s, u"--items"_s, u"300"_s, u"--seed"_s, u"5"_s, u"--json"_s});
    QVERIFY2(made.exitCode == 0, made.err.constData());
    const QJsonObject report = QJsonDocument::fromJson(made.out).object();
    QCOMPARE(report.value(u"items"_s).toInt(), 300);

    const QList<kivo::LibraryItem> items = itemsOf(root);
    QCOMPARE(items.size(), 300);
    QHash<QString, int> kinds;
    QSet<QString> hashes;
    QSet<QString> hosts;
    QSet<QString> extensions;
    int files = 0;
    double earliest = 1e18, latest = 0;
    for (const kivo::LibraryItem &item : items) {
        ++kinds[item.kind];
        earliest = std::min(earliest, item.addedAt);
        latest = std::max(latest, item.addedAt);
        QVERIFY(item.createdAt <= item.addedAt && item.addedAt <= item.modifiedAt);
        if (item.kind == u"link" || item.kind == u"text") {
            QVERIFY(!item.filePath);
            if (item.kind == u"link")
                hosts.insert(QUrl(*item.sourceURL).host());
            else
                QVERIFY(!item.note.value_or(QString()).isEmpty());
            continue;
        }
        // Every stored file: in its month's folder, as long as the row says, with the row's hash.
        QVERIFY(item.filePath);
        ++files;
        QCOMPARE(item.filePath->section(u'/', 0, 0), kivo::LibraryLocation::monthFolderName(item.addedAt));
        const QString path = root + u"/items/"_s + *item.filePath;
        const QByteArray bytes = kivo::test::readFile(path);
        QCOMPARE(qint64(bytes.size()), item.fileSize.value_or(-1));
        QCOMPARE(QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex()), item.fileHash.value_or(QString()));
        hashes.insert(*item.fileHash);
        const QString extension = item.filePath->section(u'.', -1);
        extensions.insert(extension);
        if (item.kind == u"image") {
            QImageReader reader(path);
            const QSize size = reader.size();
            QCOMPARE(size, QSize(int(*item.width), int(*item.height)));
            QVERIFY(std::max(size.width(), size.height()) >= 300 && std::max(size.width(), size.height()) <= 1600);
            QVERIFY2(!reader.read().isNull(), qPrintable(path));
        } else if (item.kind == u"video") {
            const QStringList facts = probe(path);
            const double duration = facts.filter(u"duration="_s).value(0).mid(9).toDouble();
            QVERIFY2(qAbs(duration - item.duration.value_or(0)) < 0.5, qPrintable(path + u' ' + facts.join(u' ')));
            if (item.width)
                QVERIFY2(facts.contains(u"width=%1"_s.arg(*item.width)) && facts.contains(u"height=%1"_s.arg(*item.height)),
                         qPrintable(facts.join(u' ')));
            else
                QVERIFY2(QStringList({u"wav"_s, u"aiff"_s, u"flac"_s, u"mp3"_s, u"ogg"_s, u"m4a"_s, u"aac"_s}).contains(extension), qPrintable(path));
        } else if (extension == u"pdf") {
            QVERIFY(bytes.startsWith("%PDF-") && bytes.trimmed().endsWith("%%EOF"));
        } else {
            QCOMPARE(extension, u"zip"_s);
            QVERIFY(bytes.startsWith("PK\x03\x04"));
        }
    }
    QCOMPARE(hashes.size(), files); // no two files alike, although pictures are reused
    QCOMPARE(report.value(u"files"_s).toInt(), files);
    for (const QString &kind : {u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s}) {
        QVERIFY2(kinds.value(kind) > 0, qPrintable(kind));
        QCOMPARE(report.value(u"kinds"_s).toObject().value(kind).toInt(), kinds.value(kind));
    }
    QVERIFY(extensions.contains(u"jpg"_s) && extensions.contains(u"png"_s) && extensions.contains(u"webp"_s));
    QVERIFY2(hosts.size() >= 6, qPrintable(QStringList(hosts.values()).join(u' ')));
    QVERIFY(latest <= QDateTime::currentSecsSinceEpoch() && latest - earliest > 365 * 86400.0 && latest - earliest <= 731 * 86400.0);

    // Boards three deep, tags of both sources, and the flags of a lived-in library.
    QVERIFY(scalar(root, u"SELECT COUNT(*) FROM collection c JOIN collection p ON c.parentId = p.id "
                         "JOIN collection q ON p.parentId = q.id WHERE q.parentId IS NULL"_s).toInt() > 0);
    QVERIFY(scalar(root, u"SELECT COUNT(DISTINCT collectionId) FROM itemCollection"_s).toInt() > 10);
    QCOMPARE(scalar(root, u"SELECT COUNT(DISTINCT source) FROM itemTag"_s).toInt(), 2);
    QVERIFY(scalar(root, u"SELECT COUNT(*) FROM item WHERE favourite = 1"_s).toInt() > 0);
    QVERIFY(scalar(root, u"SELECT COUNT(*) FROM item WHERE hiddenAt IS NOT NULL"_s).toInt() > 0);
    QVERIFY(scalar(root, u"SELECT COUNT(*) FROM item WHERE deletedAt IS NOT NULL"_s).toInt() > 0);
    QVERIFY(scalar(root, u"SELECT COUNT(*) FROM item WHERE kind = 'image' AND ocrText IS NOT NULL"_s).toInt() > 0);
    QCOMPARE(scalar(root, u"SELECT COUNT(*) FROM item WHERE fileHash IS NOT NULL AND kind IN ('link', 'text')"_s).toInt(), 0);

    // The sidecars, written now by the headless command.
    const Result sidecars = runKivo(sandbox, {u"--library"_s, root, u"sidecars"_s, u"--json"_s});
    QVERIFY2(sidecars.exitCode == 0, sidecars.err.constData());
    QCOMPARE(QJsonDocument::fromJson(sidecars.out).object().value(u"sidecars"_s).toInt(), 300);
    for (const kivo::LibraryItem &item : items) {
        if (item.filePath)
            QVERIFY(QFile::exists(root + u"/items/"_s + item.filePath->section(u'.', 0, -2) + u".kivo.json"_s));
    }
    const QJsonObject manifest = QJsonDocument::fromJson(kivo::test::readFile(root + u"/library.kivo.json"_s)).object();
    QCOMPARE(manifest.value(u"collections"_s).toArray().size(), scalar(root, u"SELECT COUNT(*) FROM collection"_s).toInt());
}

void TestDemoCommand::seedDecidesTheLibrary()
{
    Sandbox sandbox;
    const auto make = [&](const QString &name, const QString &seed) {
        const QString root = sandbox.path() + u'/' + name;
        const Result made = runKivo(sandbox, {u"--library"_s, root, u"demo"_s, u"--items"_s, u"30"_s, u"--seed"_s, seed,
                                              u"--now"_s, u"1760000000"_s});
        QStringList rows;
        for (const kivo::LibraryItem &item : itemsOf(root))
            rows.append(item.id + u' ' + item.kind + u' ' + item.title.value_or(QString()) + u' ' + item.filePath.value_or(QString()));
        return made.exitCode == 0 ? rows : QStringList{};
    };
    const QStringList first = make(u"a"_s, u"9"_s);
    QCOMPARE(first.size(), 30);
    QCOMPARE(make(u"b"_s, u"9"_s), first);
    QVERIFY(make(u"c"_s, u"10"_s) != first);
}

void TestDemoCommand::secondRunAddsToTheLibrary()
{
    Sandbox sandbox;
    const QString root = sandbox.path() + u"/lib"_s;
    const QStringList arguments{u"--library"_s, root, u"demo"_s, u"--items"_s, u"25"_s, u"--seed"_s, u"3"_s};
    QCOMPARE(runKivo(sandbox, arguments).exitCode, 0);
    const int collections = scalar(root, u"SELECT COUNT(*) FROM collection"_s).toInt();
    QCOMPARE(runKivo(sandbox, arguments).exitCode, 0);
    QCOMPARE(scalar(root, u"SELECT COUNT(DISTINCT id) FROM item"_s).toInt(), 50);
    QCOMPARE(scalar(root, u"SELECT COUNT(*) FROM collection"_s).toInt(), collections); // boards are reused by name
    QCOMPARE(scalar(root, u"SELECT COUNT(*) FROM collection WHERE isInbox = 1"_s).toInt(), 1);
}

void TestDemoCommand::wrongUseIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::newRow("no library") << QStringList{u"demo"_s, u"--items"_s, u"5"_s} << 2 << u"demo needs --library PATH"_s;
    QTest::newRow("no count") << QStringList{u"--library"_s, u"@/lib"_s, u"demo"_s} << 2 << u"demo needs --items N"_s;
    QTest::newRow("bad count") << QStringList{u"--library"_s, u"@/lib"_s, u"demo"_s, u"--items"_s, u"many"_s} << 2
                               << u"--items needs a number"_s;
    QTest::newRow("sidecars of no library") << QStringList{u"--library"_s, u"@/nothing"_s, u"sidecars"_s} << 1
                                            << u"the folder does not exist"_s;
}

void TestDemoCommand::wrongUseIsRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    Sandbox sandbox;
    arguments.replaceInStrings(u"@"_s, sandbox.path());
    const Result result = runKivo(sandbox, arguments);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(QString::fromUtf8(result.err).contains(message), result.err.constData());
    QVERIFY(!QFile::exists(sandbox.path() + u"/lib/library.sqlite"_s));
}

QTEST_GUILESS_MAIN(TestDemoCommand)
#include "tst_democommand.moc"
