// `kivo import`, `kivo add-link` and `kivo add-text` through the real binary on a sandboxed
// library: a thousand files with a few that can't be read, addresses from a real server, and
// what the commands print.

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/records.h"
#include "tests/fixtureserver.h"
#include "tests/testsupport.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;

    [[nodiscard]] QJsonObject json() const { return QJsonDocument::fromJson(out.toUtf8()).object(); }
};

QStringList sources(const QJsonArray &entries)
{
    QStringList found;
    for (const QJsonValue &entry : entries)
        found.append(entry.toObject().value(u"source"_s).toString());
    return found;
}

} // namespace

class TestImportCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void thousandFilesWithSomeUnreadable();
    void addressesFromAServer();
    void linksAndTexts();
    void badArguments_data();
    void badArguments();

private:
    Outcome run(const QStringList &arguments, int timeoutMs = 120000) const;
    QString addCollection(const QString &name) const;
    QVariant scalar(const QString &sql, const QVariantList &arguments = {}) const;

    std::unique_ptr<test::Sandbox> m_sandbox;
    QString m_database;
};

void TestImportCommands::init()
{
    m_sandbox = std::make_unique<test::Sandbox>();
    QDir().mkpath(m_sandbox->libraryRoot());
    m_database = m_sandbox->libraryRoot() + u"/library.sqlite"_s;
    DatabaseQueue::open(m_database); // a library made as the window makes it, then closed
}

void TestImportCommands::cleanup()
{
    m_sandbox.reset();
}

Outcome TestImportCommands::run(const QStringList &arguments, int timeoutMs) const
{
    QProcess kivo;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString base = m_sandbox->path();
    environment.insert(u"HOME"_s, base);
    environment.insert(u"XDG_CONFIG_HOME"_s, base + u"/config"_s);
    environment.insert(u"XDG_DATA_HOME"_s, base + u"/data"_s);
    environment.insert(u"XDG_STATE_HOME"_s, base + u"/state"_s);
    environment.insert(u"XDG_CACHE_HOME"_s, base + u"/cache"_s);
    environment.insert(u"TMPDIR"_s, base);
    kivo.setProcessEnvironment(environment);
    kivo.start(QStringLiteral(KIVO_BINARY), arguments);
    if (!kivo.waitForFinished(timeoutMs))
        return {};
    return {kivo.exitStatus() == QProcess::NormalExit ? kivo.exitCode() : -1,
        QString::fromUtf8(kivo.readAllStandardOutput()), QString::fromUtf8(kivo.readAllStandardError())};
}

QString TestImportCommands::addCollection(const QString &name) const
{
    LibraryCollection collection;
    collection.id = newIdentifier();
    collection.name = name;
    collection.sortIndex = 1;
    collection.createdAt = collection.modifiedAt = nowSeconds();
    DatabaseQueue::open(m_database)->write([&](Database &db) { db.insert(collection); });
    return collection.id;
}

QVariant TestImportCommands::scalar(const QString &sql, const QVariantList &arguments) const
{
    return DatabaseQueue::open(m_database)->read([&](Database &db) { return db.fetchScalar(sql, arguments); });
}

void TestImportCommands::thousandFilesWithSomeUnreadable()
{
    const QString travel = addCollection(u"Travel"_s);
    const QString folder = m_sandbox->path() + u"/drop"_s;
    // A tenth pictures, the rest notes, spread over nested folders; every file's bytes its own.
    for (int i = 0; i < 1000; ++i) {
        const QString sub = folder + u"/part %1"_s.arg(i / 250);
        if (i % 10 == 0) {
            QImage picture(8 + i % 7, 6, QImage::Format_RGB32);
            picture.fill(QColor::fromRgb(i % 256, i / 256, 7));
            QDir().mkpath(sub);
            QVERIFY(picture.save(sub + u"/picture %1.png"_s.arg(i, 4, 10, QLatin1Char('0'))));
        } else {
            test::writeFile(sub + u"/note %1.txt"_s.arg(i, 4, 10, QLatin1Char('0')), "note " + QByteArray::number(i));
        }
    }
    // Files that can't be read: aliases whose targets are gone, and, where permissions hold
    // (not for root), files nobody may read.
    QStringList unreadable;
    for (int i = 0; i < 3; ++i) {
        const QString alias = m_sandbox->path() + u"/gone %1.jpg"_s.arg(i);
        QVERIFY(QFile::link(m_sandbox->path() + u"/nothing here %1.jpg"_s.arg(i), alias));
        unreadable.append(alias);
    }
    QStringList locked;
    if (::geteuid() != 0) {
        for (const QString &name : {u"/part 1/note 0251.txt"_s, u"/part 3/note 0999.txt"_s}) {
            QVERIFY(QFile::setPermissions(folder + name, QFileDevice::WriteOwner));
            locked.append(folder + name);
        }
    }

    QElapsedTimer clock;
    clock.start();
    const Outcome first
        = run(QStringList{u"import"_s, folder} + unreadable + QStringList{u"--to"_s, u"travel"_s, u"--json"_s});
    qInfo("1,000 files through kivo import: %lld ms", clock.elapsed());
    QCOMPARE(first.exitCode, 1);
    const QJsonObject answer = first.json();
    QCOMPARE(answer.value(u"collection"_s).toObject().value(u"id"_s).toString(), travel);
    const QJsonArray failed = answer.value(u"failed"_s).toArray();
    QCOMPARE(sources(failed), locked + unreadable);
    for (const QJsonValue &failure : failed) {
        const QString error = failure.toObject().value(u"error"_s).toString();
        QVERIFY2(error == u"No such file or directory" || error == u"Permission denied", qPrintable(error));
    }
    const int expected = 1000 - int(locked.size());
    QCOMPARE(answer.value(u"added"_s).toArray().size(), expected);
    QCOMPARE(answer.value(u"duplicates"_s).toArray().size(), 0);
    // Each failure is also in the log, by the file's name.
    for (const QString &path : unreadable)
        QVERIFY(first.err.contains(u"[Store] import failed for "_s + QFileInfo(path).fileName() + u": "_s));

    QCOMPARE(scalar(u"SELECT COUNT(*) FROM item"_s).toInt(), expected);
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM item WHERE kind = 'image' AND width IS NOT NULL"_s).toInt(), 100);
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {travel}).toInt(), expected);
    const QJsonObject someNote = answer.value(u"added"_s).toArray().at(1).toObject();
    QCOMPARE(someNote.value(u"kind"_s).toString(), u"text"_s);
    QCOMPARE(test::readFile(m_sandbox->libraryRoot() + u"/files/"_s + someNote.value(u"filePath"_s).toString()),
        test::readFile(someNote.value(u"source"_s).toString()));

    // The same folder again, now without the broken ones: everything is already there.
    for (const QString &path : std::as_const(locked))
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    const Outcome again = run({u"import"_s, folder + u"/part 0"_s, u"--to"_s, travel});
    QCOMPARE(again.exitCode, 0);
    QVERIFY(again.out.contains(u", filed in Travel\n"_s));
    QVERIFY(again.out.endsWith(u"0 added, 250 already there, 0 failed\n"_s));
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM item"_s).toInt(), expected);
}

void TestImportCommands::addressesFromAServer()
{
    test::FixtureServer server;
    QImage picture(12, 10, QImage::Format_RGB32);
    picture.fill(Qt::magenta);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    server.serve(u"/shots/poster.png"_s, test::FixtureResponse::bytes(png, "image/png"));
    server.serve(u"/article"_s, test::FixtureResponse::bytes("<html></html>", "text/html; charset=utf-8"));

    const QString picturePath = server.url(u"/shots/poster.png"_s).toString();
    const QString missing = server.url(u"/gone.png"_s).toString();
    const QString article = server.url(u"/article"_s).toString();
    const Outcome outcome = run({u"import"_s, picturePath, missing, article, u"--json"_s});
    QCOMPARE(outcome.exitCode, 0);
    const QJsonArray added = outcome.json().value(u"added"_s).toArray();
    QCOMPARE(sources(added), (QStringList{picturePath, missing, article}));
    QCOMPARE(added.at(0).toObject().value(u"kind"_s).toString(), u"image"_s);
    QCOMPARE(added.at(0).toObject().value(u"title"_s).toString(), u"poster"_s);
    QCOMPARE(added.at(1).toObject().value(u"kind"_s).toString(), u"link"_s);
    QCOMPARE(added.at(1).toObject().value(u"note"_s).toString(), u"kept as a link: the server answered 404"_s);
    QCOMPARE(added.at(2).toObject().value(u"kind"_s).toString(), u"link"_s);
    QCOMPARE(added.at(2).toObject().value(u"title"_s).toString(), u"127.0.0.1"_s);
    QVERIFY(outcome.err.contains(u"[Store] importRemote failed for 127.0.0.1: the server answered 404"_s));
    // Without --to, the inbox takes them.
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM itemCollection ic JOIN collection c ON c.id = ic.collectionId "
                    "WHERE c.isInbox = 1"_s)
                 .toInt(),
        3);
    QCOMPARE(outcome.json().value(u"collection"_s).toObject().value(u"name"_s).toString(), u"Inbox"_s);
}

void TestImportCommands::linksAndTexts()
{
    const Outcome link = run({u"add-link"_s, u"https://www.www.example.com/read"_s, u"--json"_s});
    QCOMPARE(link.exitCode, 0);
    QCOMPARE(link.json().value(u"title"_s).toString(), u"example.com"_s);
    QCOMPARE(link.json().value(u"filedIn"_s).toString(), u"Inbox"_s);
    const Outcome again = run({u"add-link"_s, u"https://www.www.example.com/read"_s, u"--title"_s, u"Read later"_s});
    QCOMPARE(again.exitCode, 0);
    QVERIFY(again.out.startsWith(u"Added link \"Read later\" ("_s));
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM item WHERE kind = 'link'"_s).toInt(), 2);

    const QString board = addCollection(u"Ideas"_s);
    const QString words = u"Paint the hallway a warm grey, not the cold one from the sample card."_s;
    const Outcome text = run({u"add-text"_s, words, u"--to"_s, u"Ideas"_s});
    QCOMPARE(text.exitCode, 0);
    QVERIFY(text.out.endsWith(u") to Ideas\n"_s));
    QCOMPARE(scalar(u"SELECT note FROM item WHERE kind = 'text'"_s).toString(), words);
    QCOMPARE(scalar(u"SELECT title FROM item WHERE kind = 'text'"_s).toString(), words.left(60));
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM itemCollection WHERE collectionId = ?"_s, {board}).toInt(), 1);
}

void TestImportCommands::badArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::newRow("nothing to import") << QStringList{u"import"_s} << 2 << u"usage: kivo import"_s;
    QTest::newRow("--to without a value")
        << QStringList{u"import"_s, u"a.png"_s, u"--to"_s} << 2 << u"--to needs a value"_s;
    QTest::newRow("unknown collection") << QStringList{u"import"_s, u"a.png"_s, u"--to"_s, u"Nowhere"_s} << 1
                                        << u"no collection with id or name Nowhere"_s;
    QTest::newRow("no link") << QStringList{u"add-link"_s} << 2 << u"usage: kivo add-link"_s;
    QTest::newRow("not an address") << QStringList{u"add-link"_s, u"just words"_s} << 2 << u"not an address"_s;
    QTest::newRow("blank text") << QStringList{u"add-text"_s, u"   "_s} << 2 << u"usage: kivo add-text"_s;
}

void TestImportCommands::badArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.exitCode, exitCode);
    QVERIFY2(outcome.err.contains(message), qPrintable(outcome.err));
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM item"_s).toInt(), 0);
}

QTEST_GUILESS_MAIN(TestImportCommands)
#include "tst_importcommands.moc"
