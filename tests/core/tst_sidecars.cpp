#include "core/database.h"
#include "core/librarylocation.h"
#include "core/librarysnapshot.h"
#include "core/records.h"
#include "core/sidecars.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseQueue;
using kivo::LibraryItem;

namespace {

constexpr double march = 1709294400.0; // 2024-03-01 12:00 UTC
constexpr double april = 1712000000.0; // 2024-04-01 19:33 UTC

// Compares with tests/data/core/<name>; on a difference leaves <name>.fail beside the test binary.
bool matchesGolden(const QString &name, const QByteArray &actual)
{
    const QString golden = QStringLiteral(KIVO_TEST_DATA "/core/") + name;
    if (kivo::test::readFile(golden) == actual)
        return true;
    const QString fail = QCoreApplication::applicationDirPath() + u'/' + name + u".fail"_s;
    kivo::test::writeFile(fail, actual);
    QProcess diff;
    diff.start(u"diff"_s, {u"-u"_s, golden, fail});
    diff.waitForFinished();
    qWarning().noquote() << "output differs from" << golden << "\n" << QString::fromUtf8(diff.readAllStandardOutput());
    return false;
}

LibraryItem link(const QString &id, const QString &title, double addedAt)
{
    LibraryItem item;
    item.id = id;
    item.kind = u"link"_s;
    item.title = title;
    item.createdAt = item.addedAt = item.modifiedAt = addedAt;
    return item;
}

LibraryItem stored(const QString &id, const QString &title, const QString &filePath)
{
    LibraryItem item = link(id, title, march);
    item.kind = u"image"_s;
    item.filePath = filePath;
    return item;
}

QStringList sidecarsUnder(const QString &folder)
{
    QStringList found;
    for (const QString &entry : kivo::test::treeDigest(folder).keys()) {
        if (entry.endsWith(u".kivo.json"_s))
            found.append(entry);
    }
    return found;
}

} // namespace

/** Sidecars and the manifest: their exact JSON, and the refresh that rewrites them all. */
class TestSidecars : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    QString m_root;
    std::shared_ptr<DatabaseQueue> m_queue;

    void setReorganised(bool value)
    {
        kivo::UserDefaults defaults;
        defaults.setValue(u"libraryReorganised"_s, value);
        defaults.sync();
    }

    // Rows for the refresh, each with the sidecar the refresh must write (relative to items/).
    QList<std::pair<LibraryItem, QString>> refreshRows()
    {
        LibraryItem trashedFile = stored(u"v"_s, u"Old"_s, u"2024-03/old.png"_s);
        trashedFile.deletedAt = april;
        LibraryItem trashedLink = link(u"u"_s, u"Gone"_s, march);
        trashedLink.deletedAt = april;
        LibraryItem trashedText = link(u"x"_s, u"Sunset"_s, march);
        trashedText.kind = u"text"_s;
        trashedText.deletedAt = april;
        // Table order puts links before files, so the files' pass must come first to be fair.
        return {
            {link(u"q"_s, u"Sunset"_s, march), u"2024-03/sunset-2.kivo.json"_s},
            {link(u"r"_s, u"sunset!"_s, march), u"2024-03/sunset-3.kivo.json"_s},
            {stored(u"p"_s, u"Sunset"_s, u"2024-03/sunset.png"_s), u"2024-03/sunset.kivo.json"_s},
            {link(u"s"_s, u"Example"_s, april), u"2024-04/example.kivo.json"_s},
            {link(u"t"_s, u"Example"_s, april), u"2024-04/example-2.kivo.json"_s},
            {trashedLink, u"_Trash/gone.kivo.json"_s},
            {trashedText, u"_Trash/sunset.kivo.json"_s},
            {link(u"w"_s, u"OLD"_s, march), u"2024-03/old-2.kivo.json"_s},
            {trashedFile, u"2024-03/old.kivo.json"_s},
            {stored(u"y"_s, u"Archive"_s, u"2024-04/report.tar.gz"_s), u"2024-04/report.tar.kivo.json"_s},
        };
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        m_root = m_sandbox->libraryRoot();
        QDir().mkpath(m_root);
        m_queue = DatabaseQueue::open(m_root + u"/library.sqlite"_s);
    }

    void cleanup()
    {
        m_queue.reset();
        m_sandbox.reset();
    }

    void goldenSidecarAndManifest()
    {
        const QByteArray rows = kivo::test::readFile(QStringLiteral(KIVO_TEST_DATA "/core/sidecar-rows.sql"));
        QVERIFY(!rows.isEmpty());
        m_queue->write([&](Database &db) { db.executeScript(QString::fromUtf8(rows)); });
        const kivo::LibrarySnapshot snapshot = m_queue->read([](Database &db) { return kivo::LibrarySnapshot::read(db); });
        QCOMPARE(snapshot.items.size(), 1);
        QVERIFY(matchesGolden(u"item-sidecar.kivo.json"_s, kivo::Sidecars::serialise(kivo::Sidecars::itemSidecar(snapshot.items.first(), snapshot))));
        QVERIFY(matchesGolden(u"library-manifest.kivo.json"_s, kivo::Sidecars::serialise(kivo::Sidecars::manifest(snapshot))));
    }

    void unreadableColoursGiveAnEmptyList()
    {
        LibraryItem item = link(u"i"_s, u"x"_s, march);
        item.colors = u"#ff0000, not JSON"_s;
        const QJsonObject sidecar = kivo::Sidecars::itemSidecar(item, kivo::LibrarySnapshot());
        QVERIFY(sidecar.value(u"colors"_s).isArray());
        QVERIFY(sidecar.value(u"colors"_s).toArray().isEmpty());
        QVERIFY(!sidecar.contains(u"file"_s));
        QVERIFY(!sidecar.contains(u"canvas"_s));
        QVERIFY(sidecar.value(u"tags"_s).isArray() && sidecar.value(u"collections"_s).isArray());
        QCOMPARE(kivo::Sidecars::itemSidecar(link(u"i"_s, u"x"_s, march), {}).contains(u"colors"_s), false);
    }

    void refreshNamesAndPlacesEverySidecar()
    {
        setReorganised(true);
        QStringList expected;
        m_queue->write([&](Database &db) {
            for (const auto &[item, sidecar] : refreshRows()) {
                db.insert(item);
                expected.append(sidecar);
            }
        });
        const QString items = m_root + u"/items/"_s;
        for (const QString &file : {u"2024-03/sunset.png"_s, u"2024-03/old.png"_s, u"2024-04/report.tar.gz"_s, u"2024-03/notes.json"_s})
            kivo::test::writeFile(items + file, file.toUtf8());
        for (const QString &stale : {u"2024-01/stale.kivo.json"_s, u"2024-03/sunset.kivo.json"_s, u"deep/a/b.kivo.json"_s, u"_Trash/gone-2.kivo.json"_s})
            kivo::test::writeFile(items + stale, "{}");

        kivo::Sidecars::refresh(*m_queue, m_root);
        expected.sort();
        QCOMPARE(sidecarsUnder(m_root + u"/items"_s), expected);
        QCOMPARE(kivo::test::readFile(items + u"2024-03/notes.json"_s), "2024-03/notes.json");
        QCOMPARE(kivo::test::readFile(items + u"2024-03/sunset.png"_s), "2024-03/sunset.png");
        for (const auto &[item, sidecar] : refreshRows()) {
            const QJsonObject json = QJsonDocument::fromJson(kivo::test::readFile(items + sidecar)).object();
            QCOMPARE(json.value(u"id"_s).toString(), item.id);
            QCOMPARE(json.value(u"file"_s).toString(), item.filePath ? item.filePath->section(u'/', -1) : QString());
        }
        const QJsonObject manifest = QJsonDocument::fromJson(kivo::test::readFile(m_root + u"/library.kivo.json"_s)).object();
        QCOMPARE(manifest.value(u"version"_s).toInt(), 1);

        // A second refresh finds its own files stale and writes the same set again.
        const auto first = kivo::test::treeDigest(m_root + u"/items"_s);
        kivo::Sidecars::refresh(*m_queue, m_root);
        QCOMPARE(kivo::test::treeDigest(m_root + u"/items"_s), first);
    }

    void refreshStopsAtAFailedWrite()
    {
        setReorganised(true);
        m_queue->write([&](Database &db) { db.insert(link(u"a"_s, u"Blocked"_s, march)); });
        QDir().mkpath(m_root + u"/items/2024-03/blocked.kivo.json"_s); // a folder where the file must go
        QVERIFY_THROWS_EXCEPTION(kivo::LibraryError, kivo::Sidecars::refresh(*m_queue, m_root));
        QVERIFY(!QFileInfo::exists(m_root + u"/library.kivo.json"_s));
    }

    void olderLayoutIsLeftAlone()
    {
        setReorganised(false);
        m_queue->write([&](Database &db) {
            for (const auto &row : refreshRows())
                db.insert(row.first);
        });
        kivo::test::writeFile(m_root + u"/files/ab/ab12.png"_s, "png");
        kivo::test::writeFile(m_root + u"/files/ab/old.kivo.json"_s, "{}");
        m_queue.reset();
        const auto before = kivo::test::treeDigest(m_root);
        m_queue = DatabaseQueue::open(m_root + u"/library.sqlite"_s);
        kivo::Sidecars::refresh(*m_queue, m_root);
        QCOMPARE(kivo::test::treeDigest(m_root), before);
    }
};

QTEST_GUILESS_MAIN(TestSidecars)
#include "tst_sidecars.moc"
