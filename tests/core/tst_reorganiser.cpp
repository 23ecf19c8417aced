#include "core/database.h"
#include "core/records.h"
#include "core/reorganiser.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseQueue;
using kivo::LibraryItem;

namespace {

constexpr double march = 1709294400.0; // 2024-03-01 12:00 UTC
constexpr double april = 1712000000.0; // 2024-04-01 19:33 UTC

QString idOf(const char *prefix, int n)
{
    return QString::fromLatin1(prefix) + u"000000-0000-4000-8000-00000000000"_s + QString::number(n);
}

/** One row of the older library: its old file (if any) and where everything must end up. */
struct Case {
    LibraryItem item;
    QByteArray bytes;          // written to files/<filePath> unless empty
    QString newFilePath;       // empty: NULL afterwards
    QString sidecar;           // relative to items/
};

QList<Case> olderLibrary()
{
    const auto item = [](const QString &id, const char *kind, const QString &title, double addedAt,
                         const QString &filePath = {}) {
        LibraryItem i;
        i.id = id;
        i.kind = QString::fromLatin1(kind);
        i.title = title;
        i.createdAt = i.addedAt = i.modifiedAt = addedAt;
        if (!filePath.isEmpty())
            i.filePath = filePath;
        return i;
    };
    const QString a = idOf("ab", 1), b = idOf("cd", 2), c = idOf("ef", 3), d = idOf("12", 4), e = idOf("23", 5),
                  f = idOf("34", 6), g = idOf("56", 7), h = idOf("67", 8), k = idOf("78", 9);
    QList<Case> cases{
        {item(a, "image", u"Sunset"_s, march, u"ab/"_s + a + u".png"_s), "png bytes of the first sunset",
         u"2024-03/sunset.png"_s, u"2024-03/sunset.kivo.json"_s},
        {item(b, "image", u"SUNSET"_s, march + 60, u"cd/"_s + b + u".jpg"_s), "jpeg bytes of the second",
         u"2024-03/sunset-2.jpg"_s, u"2024-03/sunset-2.kivo.json"_s},
        {item(c, "image", u"Old flyer"_s, march, u"ef/"_s + c + u".gif"_s), "gif bytes in the trash",
         u"_Trash/old-flyer.gif"_s, u"_Trash/old-flyer.kivo.json"_s},
        {item(d, "link", u"Example Site"_s, april), {}, {}, u"2024-04/example-site.kivo.json"_s},
        {item(e, "text", u"Shopping list"_s, march), {}, {}, u"_Trash/shopping-list.kivo.json"_s},
        // The file is absent from "files": the row keeps its old path and still gets a sidecar.
        {item(f, "image", u"Lost photo"_s, march, u"34/"_s + f + u".png"_s), {}, u"34/"_s + f + u".png"_s,
         u"2024-03/lost-photo.kivo.json"_s},
        {item(g, "image", u"???"_s, march, u"56/"_s + g + u".webp"_s), "webp bytes",
         u"2024-03/56000000-000.webp"_s, u"2024-03/56000000-000.kivo.json"_s},
        {item(h, "link", u"sunset"_s, march), {}, {}, u"2024-03/sunset-3.kivo.json"_s},
        {item(k, "video", u"Clip"_s, april, u"78/"_s + k), "a file without extension", u"2024-04/clip"_s,
         u"2024-04/clip.kivo.json"_s},
    };
    cases[2].item.deletedAt = march + 100;
    cases[4].item.deletedAt = march + 100;
    cases[3].item.sourceURL = u"https://example.org/"_s;
    return cases;
}

const QString moodboard = u"c0000000-0000-4000-8000-000000000001"_s;

void buildOlderLibrary(const QString &root)
{
    QDir().mkpath(root);
    const auto queue = DatabaseQueue::open(root + u"/library.sqlite"_s);
    queue->write([&](Database &db) {
        kivo::LibraryCollection board;
        board.id = moodboard;
        board.name = u"Moodboard"_s;
        board.createdAt = board.modifiedAt = march;
        db.insert(board);
        kivo::LibraryCollection gone = board;
        gone.id = u"c0000000-0000-4000-8000-000000000002"_s;
        gone.name = u"Old board"_s;
        gone.deletedAt = april;
        db.insert(gone);
        db.insert(kivo::Tag{u"t1"_s, u"Beach"_s});
        db.insert(kivo::Tag{u"t2"_s, u"sky"_s});
        for (const Case &c : olderLibrary()) {
            db.insert(c.item);
            if (!c.bytes.isEmpty())
                kivo::test::writeFile(root + u"/files/"_s + *c.item.filePath, c.bytes);
        }
        const QString first = olderLibrary().first().item.id;
        db.insert(kivo::ItemTag{first, u"t1"_s, u"user"_s, u"accepted"_s, march});
        db.insert(kivo::ItemTag{first, u"t2"_s, u"ai"_s, u"suggested"_s, march});
        db.insert(kivo::ItemCollection{first, moodboard, march});
        db.insert(kivo::CanvasPosition{first, u"all"_s, 10, 20.5, 1.5, 3});
        db.insert(kivo::CanvasPosition{first, moodboard, -5, 7.25, 1, 0});
    });
}

QJsonObject readJson(const QString &path)
{
    return QJsonDocument::fromJson(kivo::test::readFile(path)).object();
}

void setReorganised(bool value)
{
    kivo::UserDefaults defaults;
    defaults.setValue(u"libraryReorganised"_s, value);
    defaults.sync();
}

// Everything the finished reorganise promises, checked on the library at `root`.
void verifyReorganised(const QString &root)
{
    QVERIFY(kivo::UserDefaults().boolValue(u"libraryReorganised"_s));
    QVERIFY(!QFileInfo::exists(root + u"/.pre-reorganise"_s));
    QVERIFY(!QFileInfo::exists(root + u"/files"_s));

    QStringList expectedFiles{u"library.kivo.json"_s, u"library.sqlite"_s};
    const auto queue = DatabaseQueue::open(root + u"/library.sqlite"_s);
    for (const Case &c : olderLibrary()) {
        const QVariant stored = queue->read([&](Database &db) {
            return db.fetchScalar(u"SELECT filePath FROM item WHERE id = ?"_s, {c.item.id});
        });
        QCOMPARE(stored.toString(), c.newFilePath);
        QCOMPARE(stored.isNull(), c.newFilePath.isEmpty());
        if (!c.bytes.isEmpty()) {
            QCOMPARE(kivo::test::readFile(root + u"/items/"_s + c.newFilePath), c.bytes);
            expectedFiles.append(u"items/"_s + c.newFilePath);
        }
        expectedFiles.append(u"items/"_s + c.sidecar);
        const QJsonObject sidecar = readJson(root + u"/items/"_s + c.sidecar);
        QCOMPARE(sidecar.value(u"id"_s).toString(), c.item.id);
        const QString storedName = c.item.filePath ? stored.toString().section(u'/', -1) : QString();
        QCOMPARE(sidecar.value(u"file"_s).toString(), storedName);
        QCOMPARE(sidecar.contains(u"deletedAt"_s), c.item.deletedAt.has_value());
    }
    QStringList files;
    for (const QString &entry : kivo::test::treeDigest(root).keys()) {
        if (!entry.endsWith(u'/'))
            files.append(entry);
    }
    expectedFiles.sort();
    QCOMPARE(files, expectedFiles);

    const QJsonObject first = readJson(root + u"/items/2024-03/sunset.kivo.json"_s);
    QCOMPARE(first.value(u"tags"_s).toArray(),
             (QJsonArray{QJsonObject{{u"name"_s, u"Beach"_s}, {u"source"_s, u"user"_s}, {u"status"_s, u"accepted"_s}},
                         QJsonObject{{u"name"_s, u"sky"_s}, {u"source"_s, u"ai"_s}, {u"status"_s, u"suggested"_s}}}));
    QCOMPARE(first.value(u"collections"_s).toArray(), QJsonArray{moodboard});
    QCOMPARE(first.value(u"canvas"_s).toArray(),
             (QJsonArray{QJsonObject{{u"collectionKey"_s, u"all"_s}, {u"x"_s, 10}, {u"y"_s, 20.5}, {u"scale"_s, 1.5}, {u"z"_s, 3}},
                         QJsonObject{{u"collectionKey"_s, moodboard}, {u"x"_s, -5}, {u"y"_s, 7.25}, {u"scale"_s, 1}, {u"z"_s, 0}}}));
    QVERIFY(!readJson(root + u"/items/2024-03/sunset-2.kivo.json"_s).contains(u"canvas"_s));
    QCOMPARE(readJson(root + u"/items/2024-04/example-site.kivo.json"_s).value(u"sourceURL"_s).toString(), u"https://example.org/"_s);

    const QJsonObject manifest = readJson(root + u"/library.kivo.json"_s);
    QCOMPARE(manifest.value(u"version"_s).toInt(), 1);
    const QJsonArray collections = manifest.value(u"collections"_s).toArray();
    QCOMPARE(collections.size(), 2);
    QCOMPARE(collections.at(1).toObject().value(u"deletedAt"_s).toDouble(), april);
    QCOMPARE(manifest.value(u"tags"_s).toArray(),
             (QJsonArray{QJsonObject{{u"id"_s, u"t1"_s}, {u"name"_s, u"Beach"_s}}, QJsonObject{{u"id"_s, u"t2"_s}, {u"name"_s, u"sky"_s}}}));
}

} // namespace

/**
 * The one-way move of an older-layout library into the browsable layout: a full run, a run cut
 * off at each moment (then finished by the next start), and a failure rolled back.
 */
class TestReorganiser : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    QString m_root;

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        m_root = m_sandbox->libraryRoot();
        buildOlderLibrary(m_root);
    }

    void cleanup() { m_sandbox.reset(); }

    void roundTrip()
    {
        const kivo::test::LogCapture log;
        QVERIFY(kivo::Reorganiser::run(m_root));
        verifyReorganised(m_root);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(log.linesStartingWith(u"[Library]"_s), QStringList{u"[Library] reorganised into the browsable layout"_s});

        // Later starts change nothing, except that a backup left after the flag was set goes.
        const auto after = kivo::test::treeDigest(m_root);
        kivo::test::writeFile(m_root + u"/.pre-reorganise/files/ab/stale.png"_s, "stale");
        QVERIFY(kivo::Reorganiser::run(m_root));
        QCOMPARE(kivo::test::treeDigest(m_root), after);
    }

    void interruptedRunIsFinishedNextTime_data()
    {
        QTest::addColumn<QString>("stage");
        for (const char *stage : {"copying", "copied", "moving", "moved", "committed"})
            QTest::newRow(stage) << QString::fromLatin1(stage);
    }

    void interruptedRunIsFinishedNextTime()
    {
        QFETCH(QString, stage);
        // A crash at `stage` leaves the folder as it is at that moment: copy it then.
        const QString crashed = m_sandbox->path() + u"/crashed"_s;
        bool reached = false;
        kivo::Reorganiser::run(m_root, [&](const QString &at) {
            if (at == stage && !reached)
                reached = kivo::test::copyTree(m_root, crashed);
        });
        QVERIFY(reached);
        QVERIFY(QFileInfo(crashed + u"/.pre-reorganise"_s).isDir());

        setReorganised(false); // the flag flips only after the last of these moments
        const kivo::test::LogCapture log;
        QVERIFY(kivo::Reorganiser::run(crashed));
        verifyReorganised(crashed);
        QCOMPARE(log.linesStartingWith(u"[Library]"_s), QStringList{u"[Library] reorganised into the browsable layout"_s});
    }

    void failureRollsBackToTheOldState_data() { interruptedRunIsFinishedNextTime_data(); }

    void failureRollsBackToTheOldState()
    {
        QFETCH(QString, stage);
        const auto before = kivo::test::treeDigest(m_root);
        const kivo::test::LogCapture log;
        bool reached = false;
        QVERIFY(!kivo::Reorganiser::run(m_root, [&](const QString &at) {
            if (at == stage) {
                reached = true;
                throw std::runtime_error("the disk is full");
            }
        }));
        QVERIFY(reached);
        QCOMPARE(log.linesStartingWith(u"[Library]"_s),
                 QStringList{u"[Library] reorganise failed, rolled back (library unchanged): the disk is full"_s});
        QCOMPARE(kivo::test::treeDigest(m_root), before);
        QVERIFY(!kivo::UserDefaults().boolValue(u"libraryReorganised"_s));

        // The next start tries again, and succeeds.
        QVERIFY(kivo::Reorganiser::run(m_root));
        verifyReorganised(m_root);
    }
};

QTEST_GUILESS_MAIN(TestReorganiser)
#include "tst_reorganiser.moc"
