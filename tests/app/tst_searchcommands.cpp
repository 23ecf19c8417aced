// `kivo enrich` and `kivo search` through the real binary on a sandboxed library with generated
// pictures: what waits, reading with progress, and the fused order the search field would show.

#include "core/database.h"
#include "core/records.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QProcess>
#include <QSettings>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;

    [[nodiscard]] QJsonDocument json() const { return QJsonDocument::fromJson(out.toUtf8()); }
};

QImage picture(const QColor &colour, const QString &text = {})
{
    QImage image(800, 240, QImage::Format_RGB32);
    image.fill(colour);
    if (!text.isEmpty()) {
        QPainter painter(&image);
        QFont font(u"DejaVu Sans"_s);
        font.setPixelSize(44);
        painter.setFont(font);
        painter.setPen(Qt::black);
        painter.drawText(40, 130, text);
    }
    return image;
}

} // namespace

class TestSearchCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void enrichReadsWhatWaitsAndSearchFindsIt();
    void searchKeepsToItsSelection_data();
    void searchKeepsToItsSelection();
    void badArgumentsAreRefused_data();
    void badArgumentsAreRefused();

private:
    Outcome kivo(const QStringList &arguments) const;
    QString addPicture(const QString &title, const QImage &image, double addedAt, const QString &name);
    [[nodiscard]] std::shared_ptr<DatabaseQueue> db() const
    {
        return DatabaseQueue::open(m_root + u"/library.sqlite"_s);
    }

    std::unique_ptr<test::Sandbox> m_sandbox;
    QString m_root;
    QString m_sign;
    QString m_red;
    QString m_garden;
    QString m_note;
};

Outcome TestSearchCommands::kivo(const QStringList &arguments) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, m_sandbox->path());
    environment.insert(u"XDG_CONFIG_HOME"_s, m_sandbox->path() + u"/config"_s);
    environment.insert(u"XDG_DATA_HOME"_s, m_sandbox->path() + u"/data"_s);
    environment.insert(u"XDG_STATE_HOME"_s, m_sandbox->path() + u"/state"_s);
    environment.insert(u"XDG_CACHE_HOME"_s, m_sandbox->path() + u"/cache"_s);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(KIVO_BINARY), QStringList{u"--library"_s, m_root} + arguments);
    if (!process.waitForFinished(120000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

QString TestSearchCommands::addPicture(const QString &title, const QImage &image, double addedAt, const QString &name)
{
    const QString filePath = u"image/2024/05/"_s + name + u".png"_s;
    const QString path = m_root + u"/items/"_s + filePath;
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (!image.save(path, "PNG"))
        return {};
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = u"image"_s;
    item.title = title;
    item.filePath = filePath;
    item.createdAt = item.addedAt = item.modifiedAt = addedAt;
    db()->write([&](Database &database) { database.insert(item); });
    return item.id;
}

void TestSearchCommands::init()
{
    m_sandbox = std::make_unique<test::Sandbox>();
    m_root = m_sandbox->path() + u"/Library"_s;
    // A library made as the window makes it, in the browsable layout, then closed.
    QVERIFY(QDir().mkpath(m_root + u"/items"_s));
    DatabaseQueue::open(m_root + u"/library.sqlite"_s);
    QSettings childDefaults(m_sandbox->path() + u"/config/Kivo/Kivo.conf"_s, QSettings::IniFormat);
    childDefaults.setValue(u"libraryReorganised"_s, true);
    childDefaults.sync();
    QCOMPARE(kivo({u"list"_s}).exitCode, 0);
    m_sign = addPicture(u"IMG_0042"_s, picture(Qt::white, u"Harbour parking only"_s), 100, u"sign"_s);
    m_red = addPicture(u"Red harbour boat"_s, picture(QColor(0xC8, 0x1E, 0x1E)), 200, u"boat"_s);
    m_garden = addPicture(u"Summer garden"_s, picture(QColor(0x1E, 0x6E, 0x32)), 300, u"garden"_s);
    LibraryItem note;
    note.id = newIdentifier();
    note.kind = u"text"_s;
    note.title = u"Harbour notes"_s;
    note.createdAt = note.addedAt = note.modifiedAt = 400;
    db()->write([&](Database &database) { database.insert(note); });
    m_note = note.id;
}

void TestSearchCommands::cleanup()
{
    m_sandbox.reset();
}

void TestSearchCommands::enrichReadsWhatWaitsAndSearchFindsIt()
{
    const Outcome waiting = kivo({u"enrich"_s, u"--json"_s});
    QCOMPARE(waiting.exitCode, 0);
    QCOMPARE(waiting.json().object().value(u"pending"_s).toInt(), 3); // the note is never read
    QCOMPARE(waiting.json().object().value(u"ids"_s).toArray().first().toString(), m_garden); // newest first

    // Before reading, the sign's text is unknown to the search.
    QCOMPARE(kivo({u"search"_s, u"parking"_s}).out, QString());

    const Outcome read = kivo({u"enrich"_s, u"--wait"_s});
    QCOMPARE(read.exitCode, 0);
    // Progress, one line per item, on standard error; the summary on standard output.
    QCOMPARE(read.err.count(u" of 3 read "_s), 3);
    QVERIFY2(read.err.contains(u"3 of 3 read "_s), qPrintable(read.err));
    QVERIFY2(read.out.startsWith(u"Read 3 of 3 items in "_s), qPrintable(read.out));
    QCOMPARE(kivo({u"enrich"_s}).out, u"0 items wait to be read; 'kivo enrich --wait' reads them now\n"_s);
    const Outcome again = kivo({u"enrich"_s, u"--wait"_s, u"--json"_s});
    QCOMPARE(again.json().object().value(u"found"_s).toInt(), 0);

    // The read text found the sign and named it.
    const Outcome parking = kivo({u"search"_s, u"parking"_s});
    QCOMPARE(parking.exitCode, 0);
    QCOMPARE(parking.out, m_sign + u"\timage\tHarbour parking only\n"_s);

    // "harbour": words hit the sign (read text), the boat and the note (titles); all three hold
    // the word in the title now, so newest first: note, boat, sign.
    const Outcome harbour = kivo({u"search"_s, u"harbour"_s, u"--json"_s});
    QCOMPARE(harbour.exitCode, 0);
    QStringList ids;
    for (const QJsonValue &row : harbour.json().array())
        ids.append(row.toObject().value(u"id"_s).toString());
    QCOMPARE(ids, (QStringList{m_note, m_red, m_sign}));

    // Colours from the palettes written by the reading; the words of a query go in any order.
    const Outcome red = kivo({u"search"_s, u"red"_s});
    QCOMPARE(red.out.section(u'\t', 0, 0), m_red);
    QCOMPARE(kivo({u"search"_s, u"dark"_s, u"green"_s}).out.section(u'\t', 0, 0), m_garden);
}

void TestSearchCommands::searchKeepsToItsSelection_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("all") << u"all"_s << QStringList{u"note"_s, u"red"_s};
    QTest::newRow("documents") << u"type-documents"_s << QStringList{u"note"_s};
    QTest::newRow("favourites") << u"favourites"_s << QStringList{u"red"_s};
    QTest::newRow("links") << u"links"_s << QStringList{};
}

void TestSearchCommands::searchKeepsToItsSelection()
{
    QFETCH(QString, selection);
    QFETCH(QStringList, expected);
    db()->write(
        [&](Database &database) { database.execute(u"UPDATE item SET favourite = 1 WHERE id = ?"_s, {m_red}); });
    const QHash<QString, QString> ids{{u"note"_s, m_note}, {u"red"_s, m_red}};
    QStringList expectedIds;
    for (const QString &name : expected)
        expectedIds.append(ids.value(name));
    const Outcome found = kivo({u"search"_s, u"harb"_s, u"--selection"_s, selection});
    QCOMPARE(found.exitCode, 0);
    QStringList foundIds;
    for (const QString &line : found.out.split(u'\n', Qt::SkipEmptyParts))
        foundIds.append(line.section(u'\t', 0, 0));
    QCOMPARE(foundIds, expectedIds);
}

void TestSearchCommands::badArgumentsAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no query") << QStringList{u"search"_s} << u"search needs a query"_s;
    QTest::newRow("blank query") << QStringList{u"search"_s, u"  "_s} << u"search needs a query"_s;
    QTest::newRow("selection without a value")
        << QStringList{u"search"_s, u"x"_s, u"--selection"_s} << u"--selection needs a value"_s;
    QTest::newRow("a selection that is no collection")
        << QStringList{u"search"_s, u"x"_s, u"--selection"_s, u"nowhere"_s} << u"no collection with id nowhere"_s;
    QTest::newRow("enrich with a word") << QStringList{u"enrich"_s, u"now"_s} << u"enrich does not take 'now'"_s;
}

void TestSearchCommands::badArgumentsAreRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Outcome outcome = kivo(arguments);
    QVERIFY(outcome.exitCode != 0);
    QVERIFY2(outcome.err.contains(message), qPrintable(outcome.err));
}

QTEST_MAIN(TestSearchCommands)
#include "tst_searchcommands.moc"
