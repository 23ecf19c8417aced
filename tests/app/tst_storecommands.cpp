// Runs the real kivo binary's headless commands on a sandboxed library and checks the database
// afterwards, as a script or a user at a terminal would meet them.

#include "core/database.h"
#include "core/records.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;

    [[nodiscard]] QJsonValue json() const
    {
        const QJsonDocument document = QJsonDocument::fromJson(out.toUtf8());
        return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    }
};

} // namespace

/** The list, collections, collection create, file, tag, favourite, hide, trash and restore commands end to end. */
class TestStoreCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void listsInTheWindowsOrder();
    void collectionsAreMadeAndShownAsATree();
    void itemCommandsChangeTheDatabase();
    void errorsNameTheBadId_data();
    void errorsNameTheBadId();

private:
    Outcome run(const QStringList &arguments) const;
    QString seedItem(const QString &kind, double addedAt, const QString &title) const;
    QVariant scalar(const QString &sql, const QVariantList &arguments = {}) const;

    std::unique_ptr<test::Sandbox> m_sandbox;
    QString m_database;
};

void TestStoreCommands::init()
{
    m_sandbox = std::make_unique<test::Sandbox>();
    QDir().mkpath(m_sandbox->libraryRoot());
    m_database = m_sandbox->libraryRoot() + u"/library.sqlite"_s;
    DatabaseQueue::open(m_database); // a library made as the window makes it, then closed
}

void TestStoreCommands::cleanup()
{
    m_sandbox.reset();
}

Outcome TestStoreCommands::run(const QStringList &arguments) const
{
    QProcess kivo;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, m_sandbox->path());
    environment.insert(u"XDG_CONFIG_HOME"_s, m_sandbox->path() + u"/config"_s);
    environment.insert(u"XDG_DATA_HOME"_s, m_sandbox->path() + u"/data"_s);
    environment.insert(u"XDG_STATE_HOME"_s, m_sandbox->path() + u"/state"_s);
    environment.insert(u"XDG_CACHE_HOME"_s, m_sandbox->path() + u"/cache"_s);
    kivo.setProcessEnvironment(environment);
    kivo.start(QStringLiteral(KIVO_BINARY), arguments);
    if (!kivo.waitForFinished(30000))
        return {};
    return {kivo.exitStatus() == QProcess::NormalExit ? kivo.exitCode() : -1,
        QString::fromUtf8(kivo.readAllStandardOutput()), QString::fromUtf8(kivo.readAllStandardError())};
}

QString TestStoreCommands::seedItem(const QString &kind, double addedAt, const QString &title) const
{
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = kind;
    item.title = title;
    item.createdAt = item.addedAt = item.modifiedAt = addedAt;
    DatabaseQueue::open(m_database)->write([&](Database &db) { db.insert(item); });
    return item.id;
}

QVariant TestStoreCommands::scalar(const QString &sql, const QVariantList &arguments) const
{
    return DatabaseQueue::open(m_database)->read([&](Database &db) { return db.fetchScalar(sql, arguments); });
}

void TestStoreCommands::listsInTheWindowsOrder()
{
    const QString older = seedItem(u"image"_s, 10, u"Older picture"_s);
    const QString link = seedItem(u"link"_s, 20, u"A link"_s);
    const QString newer = seedItem(u"image"_s, 30, u"Newer  picture\nwith a break"_s);

    const Outcome plain = run({u"list"_s});
    QCOMPARE(plain.exitCode, 0);
    QCOMPARE(plain.out,
        newer + u"\timage\tNewer picture with a break\n"_s + link + u"\tlink\tA link\n"_s + older
            + u"\timage\tOlder picture\n"_s);

    const Outcome oldest = run({u"list"_s, u"--sort"_s, u"oldest"_s, u"--json"_s});
    QCOMPARE(oldest.exitCode, 0);
    const QJsonArray rows = oldest.json().toArray();
    QCOMPARE(rows.size(), 3);
    QCOMPARE(rows.at(0).toObject().value(u"id"_s).toString(), older);
    QCOMPARE(rows.at(2).toObject().value(u"id"_s).toString(), newer);
    QCOMPARE(rows.at(1).toObject().value(u"kind"_s).toString(), u"link"_s);

    const Outcome images = run({u"list"_s, u"--selection"_s, u"type-image"_s, u"--json"_s});
    QCOMPARE(images.json().toArray().size(), 2);
    // Asking for an order does not store it: the next plain listing is newest first again.
    QCOMPARE(run({u"list"_s, u"--json"_s}).json().toArray().at(0).toObject().value(u"id"_s).toString(), newer);
}

void TestStoreCommands::collectionsAreMadeAndShownAsATree()
{
    const Outcome travel = run({u"collection"_s, u"create"_s, u"Travel"_s, u"--json"_s});
    QCOMPARE(travel.exitCode, 0);
    const QString travelId = travel.json().toObject().value(u"id"_s).toString();
    QCOMPARE(scalar(u"SELECT sortIndex FROM collection WHERE id = ?"_s, {travelId}).toInt(), 1);

    const Outcome rome = run({u"collection"_s, u"create"_s, u"  Rome  "_s, u"--parent"_s, travelId});
    QCOMPARE(rome.exitCode, 0);
    const QString romeId = rome.out.trimmed();
    QCOMPARE(scalar(u"SELECT parentId || '|' || name || '|' || sortIndex FROM collection WHERE id = ?"_s, {romeId})
                 .toString(),
        travelId + u"|Rome|2"_s);
    QVERIFY(run({u"collection"_s, u"create"_s, u"Archive"_s}).exitCode == 0);

    const QString item = seedItem(u"image"_s, 1, u"Colosseum"_s);
    QCOMPARE(run({u"file"_s, item, romeId}).exitCode, 0);

    const Outcome tree = run({u"collections"_s, u"--json"_s});
    QCOMPARE(tree.exitCode, 0);
    const QJsonArray collections = tree.json().toObject().value(u"collections"_s).toArray();
    QStringList shown;
    for (const QJsonValue &row : collections) {
        const QJsonObject object = row.toObject();
        shown.append(QString::number(object.value(u"depth"_s).toInt()) + object.value(u"name"_s).toString()
            + QString::number(object.value(u"count"_s).toInt()));
    }
    QCOMPARE(shown, (QStringList{u"0Travel0"_s, u"1Rome1"_s, u"0Archive0"_s}));
    QCOMPARE(tree.json().toObject().value(u"inbox"_s).toObject().value(u"name"_s).toString(), u"Inbox"_s);

    const Outcome text = run({u"collections"_s});
    QVERIFY(text.out.startsWith(u"Inbox  (0)  "_s));
    QVERIFY(text.out.contains(u"\n  Rome  (1)  "_s + romeId + u'\n'));
}

void TestStoreCommands::itemCommandsChangeTheDatabase()
{
    const QString item = seedItem(u"image"_s, 5, u"Poster"_s);
    const QString inbox
        = run({u"collections"_s, u"--json"_s}).json().toObject().value(u"inbox"_s).toObject().value(u"id"_s).toString();
    QVERIFY(!inbox.isEmpty());

    QCOMPARE(run({u"file"_s, item, inbox}).out, u"Filed in Inbox\n"_s);
    QCOMPARE(
        scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ? AND collectionId = ?"_s, {item, inbox}).toInt(),
        1);

    const Outcome tagged = run({u"tag"_s, item, u"  Bold Type "_s, u"--json"_s});
    QCOMPARE(tagged.json().toObject().value(u"tag"_s).toString(), u"bold type"_s);
    QCOMPARE(
        scalar(u"SELECT t.name || '|' || it.source || '|' || it.status FROM itemTag it JOIN tag t ON t.id = it.tagId"_s)
            .toString(),
        u"bold type|user|accepted"_s);

    QCOMPARE(run({u"favourite"_s, item}).out, u"Added to Favourites\n"_s);
    QCOMPARE(scalar(u"SELECT favourite FROM item WHERE id = ?"_s, {item}).toInt(), 1);
    QCOMPARE(run({u"favourite"_s, item, u"--json"_s}).json().toObject().value(u"favourite"_s).toBool(), false);
    QCOMPARE(scalar(u"SELECT favourite FROM item WHERE id = ?"_s, {item}).toInt(), 0);

    QCOMPARE(run({u"hide"_s, item}).exitCode, 0);
    QVERIFY(!scalar(u"SELECT hiddenAt FROM item WHERE id = ?"_s, {item}).isNull());
    QVERIFY(run({u"list"_s, u"--json"_s}).json().toArray().isEmpty());
    QCOMPARE(run({u"list"_s, u"--selection"_s, u"hidden"_s, u"--json"_s}).json().toArray().size(), 1);

    QCOMPARE(run({u"trash"_s, item}).exitCode, 0);
    const double deletedAt = scalar(u"SELECT deletedAt FROM item WHERE id = ?"_s, {item}).toDouble();
    QVERIFY(deletedAt > 5);
    QCOMPARE(scalar(u"SELECT modifiedAt FROM item WHERE id = ?"_s, {item}).toDouble(), deletedAt);
    // The trashed item keeps its place in the inbox, ready for a restore.
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ?"_s, {item}).toInt(), 1);

    QCOMPARE(run({u"restore"_s, item, u"--json"_s}).json().toObject().value(u"trashed"_s).toBool(), false);
    QVERIFY(scalar(u"SELECT deletedAt FROM item WHERE id = ?"_s, {item}).isNull());
    QCOMPARE(run({u"list"_s, u"--selection"_s, u"inbox"_s, u"--json"_s}).json().toArray().size(), 1);
}

void TestStoreCommands::errorsNameTheBadId_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    // ITEM and COLLECTION stand for a real item and collection of the library.
    QTest::newRow("file: unknown item") << QStringList{u"file"_s, u"nope"_s, u"COLLECTION"_s} << 1
                                        << u"no item with id nope"_s;
    QTest::newRow("file: unknown collection")
        << QStringList{u"file"_s, u"ITEM"_s, u"gone"_s} << 1 << u"no collection with id gone"_s;
    QTest::newRow("trash: unknown item") << QStringList{u"trash"_s, u"ghost"_s} << 1 << u"no item with id ghost"_s;
    QTest::newRow("restore: not trashed") << QStringList{u"restore"_s, u"ITEM"_s} << 1 << u"is not in the trash"_s;
    QTest::newRow("create: unknown parent") << QStringList{u"collection"_s, u"create"_s, u"X"_s, u"--parent"_s,
        u"lost"_s} << 1 << u"no collection with id lost"_s;
    QTest::newRow("list: unknown collection")
        << QStringList{u"list"_s, u"--selection"_s, u"0f0f0f0f-aaaa-bbbb-cccc-000000000000"_s} << 1
        << u"no collection with id 0f0f0f0f-aaaa-bbbb-cccc-000000000000"_s;
    QTest::newRow("tag: blank name") << QStringList{u"tag"_s, u"ITEM"_s, u"   "_s} << 2
                                     << u"usage: kivo tag ITEM NAME"_s;
    QTest::newRow("favourite: no item") << QStringList{u"favourite"_s} << 2 << u"usage: kivo favourite ITEM"_s;
    QTest::newRow("list: bad sort") << QStringList{u"list"_s, u"--sort"_s, u"sideways"_s} << 2
                                    << u"--sort takes newest or oldest"_s;
    QTest::newRow("list: bad key") << QStringList{u"list"_s, u"--selection"_s, u"type-pictures"_s} << 2
                                   << u"names no selection"_s;
    QTest::newRow("create: no name") << QStringList{u"collection"_s, u"create"_s} << 2 << u"one non-empty NAME"_s;
    QTest::newRow("collection: no verb") << QStringList{u"collection"_s, u"delete"_s, u"X"_s} << 2
                                         << u"usage: kivo collection create NAME"_s;
}

void TestStoreCommands::errorsNameTheBadId()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    const QString item = seedItem(u"image"_s, 1, u"Real"_s);
    const QString collection = run({u"collection"_s, u"create"_s, u"Real"_s}).out.trimmed();
    arguments.replaceInStrings(u"ITEM"_s, item);
    arguments.replaceInStrings(u"COLLECTION"_s, collection);
    const qint64 memberships = scalar(u"SELECT COUNT(*) FROM itemCollection"_s).toLongLong();

    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.exitCode, exitCode);
    QVERIFY2(outcome.err.contains(message), qPrintable(outcome.err));
    QVERIFY(outcome.out.isEmpty());
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM itemCollection"_s).toLongLong(), memberships);
    QCOMPARE(scalar(u"SELECT COUNT(*) FROM collection WHERE isInbox = 0"_s).toInt(), 1);
}

QTEST_GUILESS_MAIN(TestStoreCommands)
#include "tst_storecommands.moc"
