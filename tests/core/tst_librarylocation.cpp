#include "core/librarylocation.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <ctime>

using namespace Qt::StringLiterals;
namespace Location = kivo::LibraryLocation;

namespace {

const QString someId = u"0a1b2c3d-4e5f-4000-8000-00000000abcd"_s;
// 2024-03-01 12:00:00 UTC.
constexpr double march2024 = 1709294400.0;

void setTimeZone(const QByteArray &zone)
{
    qputenv("TZ", zone);
    tzset();
}

} // namespace

/** Where the library is, how stored files are named and placed, and how the folder is made. */
class TestLibraryLocation : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;

    void setFlag(const QString &key, bool value)
    {
        kivo::UserDefaults defaults;
        defaults.setValue(key, value);
        defaults.sync();
    }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<kivo::test::Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void rootResolution_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("expected"); // "~" stands for the home folder
        const QVariant stored(u"/srv/stored library"_s);
        QTest::newRow("override") << QStringList{u"kivo"_s, u"--library"_s, u"/srv/lib"_s, u"info"_s} << stored << u"/srv/lib"_s;
        QTest::newRow("override with tilde") << QStringList{u"kivo"_s, u"--library"_s, u"~/Elsewhere"_s} << stored << u"~/Elsewhere"_s;
        QTest::newRow("switch as last argument") << QStringList{u"kivo"_s, u"--library"_s} << stored << u"/srv/stored library"_s;
        QTest::newRow("followed by a switch") << QStringList{u"kivo"_s, u"--library"_s, u"--json"_s} << stored << u"/srv/stored library"_s;
        QTest::newRow("empty value") << QStringList{u"kivo"_s, u"--library"_s, QString()} << stored << u"/srv/stored library"_s;
        QTest::newRow("stored with tilde") << QStringList{u"kivo"_s} << QVariant(u"~/Libs/Mine"_s) << u"~/Libs/Mine"_s;
        QTest::newRow("stored empty") << QStringList{u"kivo"_s} << QVariant(QString()) << u"~/Pictures/Kivo Library"_s;
        QTest::newRow("unset") << QStringList{u"kivo"_s} << QVariant() << u"~/Pictures/Kivo Library"_s;
    }

    void rootResolution()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QVariant, stored);
        QFETCH(QString, expected);
        {
            kivo::UserDefaults defaults;
            if (stored.isValid())
                defaults.setValue(u"libraryPath"_s, stored);
            else
                defaults.remove(u"libraryPath"_s);
        }
        Location::setArguments(arguments);
        if (expected.startsWith(u'~'))
            expected = m_sandbox->homePath() + expected.mid(1);
        QCOMPARE(Location::root(), expected);
        QCOMPARE(Location::databasePath(), expected + u"/library.sqlite"_s);
    }

    void slug_data()
    {
        QTest::addColumn<QVariant>("stem"); // invalid: no title at all
        QTest::addColumn<QString>("expected");
        const QString a59(59, u'a');
        QTest::newRow("plain") << QVariant(u"Sunset"_s) << u"sunset"_s;
        QTest::newRow("trimmed") << QVariant(u"\n  Sunset at the Pier \t\n"_s) << u"sunset-at-the-pier"_s;
        QTest::newRow("runs collapse") << QVariant(u"a -- b__c..d"_s) << u"a-b-c-d"_s;
        QTest::newRow("no leading hyphen") << QVariant(u"--...Hello!"_s) << u"hello"_s;
        QTest::newRow("numbers") << QVariant(u"Photo 2024-05-01"_s) << u"photo-2024-05-01"_s;
        QTest::newRow("unicode letters") << QVariant(u"Café Ünïcode 東京"_s) << u"café-ünïcode-東京"_s;
        QTest::newRow("upper case accents") << QVariant(u"ÉCOLE"_s) << u"école"_s;
        QTest::newRow("decomposed accents") << QVariant(u"Cafe\u0301 nai\u0308ve"_s) << u"cafe\u0301-nai\u0308ve"_s;
        QTest::newRow("emoji") << QVariant(u"🌅 Sunset 🌅"_s) << u"sunset"_s;
        QTest::newRow("punctuation only") << QVariant(u"!!! ?? ..."_s) << u"0a1b2c3d-4e5"_s;
        QTest::newRow("empty") << QVariant(QString()) << u"0a1b2c3d-4e5"_s;
        QTest::newRow("no title") << QVariant() << u"0a1b2c3d-4e5"_s;
        QTest::newRow("100 letters") << QVariant(QString(100, u'x')) << QString(60, u'x');
        QTest::newRow("60 letters") << QVariant(QString(60, u'x')) << QString(60, u'x');
        QTest::newRow("61 letters") << QVariant(QString(61, u'x')) << QString(60, u'x');
        QTest::newRow("cut on a hyphen") << QVariant(a59 + u" bcd"_s) << a59;
        QTest::newRow("cut counts characters") << QVariant(a59 + u"e\u0301xyz"_s) << a59 + u"e\u0301"_s;
    }

    void slug()
    {
        QFETCH(QVariant, stem);
        QFETCH(QString, expected);
        const std::optional<QString> title = stem.isValid() ? std::optional(stem.toString()) : std::nullopt;
        QCOMPARE(Location::slug(title, someId), expected);
    }

    void newFileLocation_data()
    {
        QTest::addColumn<bool>("reorganised");
        QTest::addColumn<QString>("stem");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QStringList>("existing"); // relative to the item folder
        QTest::addColumn<QString>("expected");
        QTest::newRow("free") << true << u"Sunset"_s << u"png"_s << QStringList() << u"2024-03/sunset.png"_s;
        QTest::newRow("file taken") << true << u"Sunset"_s << u"png"_s << QStringList{u"2024-03/sunset.png"_s} << u"2024-03/sunset-2.png"_s;
        QTest::newRow("sidecar taken") << true << u"Sunset"_s << u"png"_s << QStringList{u"2024-03/sunset.kivo.json"_s} << u"2024-03/sunset-2.png"_s;
        QTest::newRow("both kinds taken") << true << u"Sunset"_s << u"png"_s
                                          << QStringList{u"2024-03/sunset.png"_s, u"2024-03/sunset-2.kivo.json"_s}
                                          << u"2024-03/sunset-3.png"_s;
        QTest::newRow("other extension") << true << u"Sunset"_s << u"png"_s << QStringList{u"2024-03/sunset.jpg"_s} << u"2024-03/sunset.png"_s;
        QTest::newRow("other month") << true << u"Sunset"_s << u"png"_s << QStringList{u"2024-02/sunset.png"_s} << u"2024-03/sunset.png"_s;
        QTest::newRow("no extension") << true << u"Read me"_s << QString() << QStringList{u"2024-03/read-me"_s} << u"2024-03/read-me-2"_s;
        QTest::newRow("older layout") << false << u"Sunset"_s << u"png"_s << QStringList() << u"0a/"_s + someId + u".png"_s;
        QTest::newRow("older, no extension") << false << u"Sunset"_s << QString() << QStringList() << u"0a/"_s + someId;
    }

    void newFileLocation()
    {
        QFETCH(bool, reorganised);
        QFETCH(QString, stem);
        QFETCH(QString, extension);
        QFETCH(QStringList, existing);
        QFETCH(QString, expected);
        setFlag(u"libraryReorganised"_s, reorganised);
        const QString itemFolder = m_sandbox->libraryRoot() + (reorganised ? u"/items/"_s : u"/files/"_s);
        QCOMPARE(Location::itemFolder(), itemFolder.chopped(1));
        for (const QString &path : existing)
            kivo::test::writeFile(itemFolder + path, "taken");
        const kivo::NewFileLocation location = Location::newFileLocation(someId, stem, extension, march2024);
        QCOMPARE(location.relativePath, expected);
        QCOMPARE(location.absolutePath, itemFolder + expected);
        QCOMPARE(Location::resolve(location.relativePath), location.absolutePath);
        QVERIFY(QFileInfo(location.absolutePath).dir().exists());
        QVERIFY(!QFileInfo::exists(location.absolutePath));
    }

    void monthFolderInLocalTime_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<double>("addedAt");
        QTest::addColumn<QString>("expected");
        QTest::newRow("UTC, first second") << QByteArray("UTC") << 1709251200.0 << u"2024-03"_s;
        QTest::newRow("UTC, just before") << QByteArray("UTC") << 1709251199.5 << u"2024-02"_s;
        QTest::newRow("west of UTC") << QByteArray("XST5") << 1709251200.0 + 3600 << u"2024-02"_s;
        QTest::newRow("east of UTC") << QByteArray("XST-9") << 1709251200.0 - 3600 << u"2024-03"_s;
        QTest::newRow("year boundary") << QByteArray("XST5") << 1704067200.0 << u"2023-12"_s;
    }

    void monthFolderInLocalTime()
    {
        QFETCH(QByteArray, zone);
        QFETCH(double, addedAt);
        QFETCH(QString, expected);
        setTimeZone(zone);
        const QString month = Location::monthFolderName(addedAt);
        setFlag(u"libraryReorganised"_s, true);
        const QString relative = Location::newFileLocation(someId, u"x"_s, u"png"_s, addedAt).relativePath;
        setTimeZone("UTC");
        QCOMPARE(month, expected);
        QCOMPARE(relative, expected + u"/x.png"_s);
    }

    void legacyLibraryMovesIntoPlace_data()
    {
        QTest::addColumn<bool>("targetExists");
        QTest::newRow("target absent") << false;
        QTest::newRow("target present") << true;
    }

    void legacyLibraryMovesIntoPlace()
    {
        QFETCH(bool, targetExists);
        kivo::UserDefaults().remove(u"libraryPath"_s);
        const QString pictures = m_sandbox->homePath() + u"/Pictures"_s;
        kivo::test::writeFile(pictures + u"/Orvo Library/library.sqlite"_s, "older");
        if (targetExists)
            kivo::test::writeFile(pictures + u"/Kivo Library/library.sqlite"_s, "current");
        const kivo::test::LogCapture log;
        Location::ensureLibrary();
        QCOMPARE(Location::root(), pictures + u"/Kivo Library"_s);
        QCOMPARE(kivo::test::readFile(pictures + u"/Kivo Library/library.sqlite"_s), targetExists ? "current" : "older");
        QCOMPARE(QFileInfo::exists(pictures + u"/Orvo Library"_s), targetExists);
        QCOMPARE(log.linesStartingWith(u"[Library]"_s),
                 targetExists ? QStringList() : QStringList{u"[Library] migrated Orvo Library -> Kivo Library"_s});
        QVERIFY(QFileInfo(pictures + u"/Kivo Library/files"_s).isDir());
    }

    void ensureLibraryMakesTheFolders_data()
    {
        QTest::addColumn<bool>("reorganised");
        QTest::addColumn<QStringList>("filesContent"); // null list: no files folder at all
        QTest::addColumn<bool>("filesRemains");
        QTest::newRow("older layout") << false << QStringList() << true;
        QTest::newRow("browsable, no files folder") << true << QStringList{u"<none>"_s} << false;
        QTest::newRow("browsable, empty files folder") << true << QStringList() << false;
        QTest::newRow("browsable, files left") << true << QStringList{u"ab/leftover.png"_s} << true;
        QTest::newRow("browsable, hidden file left") << true << QStringList{u".hidden"_s} << true;
        QTest::newRow("browsable, empty subfolder left") << true << QStringList{u"ab/"_s} << true;
    }

    void ensureLibraryMakesTheFolders()
    {
        QFETCH(bool, reorganised);
        QFETCH(QStringList, filesContent);
        QFETCH(bool, filesRemains);
        const QString root = m_sandbox->path() + u"/drive/deep/Kivo Library"_s;
        m_sandbox->setLibraryRoot(root);
        setFlag(u"libraryReorganised"_s, reorganised);
        if (filesContent != QStringList{u"<none>"_s}) {
            QDir().mkpath(root + u"/files"_s);
            for (const QString &entry : filesContent) {
                if (entry.endsWith(u'/'))
                    QDir().mkpath(root + u"/files/"_s + entry);
                else
                    kivo::test::writeFile(root + u"/files/"_s + entry, "kept");
            }
        }
        Location::ensureLibrary();
        QVERIFY(QFileInfo(root + (reorganised ? u"/items"_s : u"/files"_s)).isDir());
        QCOMPARE(QFileInfo::exists(root + u"/files"_s), filesRemains);
        QCOMPARE(QFileInfo::exists(root + u"/items"_s), reorganised);
        for (const QString &entry : filesContent) {
            if (filesRemains && !entry.endsWith(u'/'))
                QCOMPARE(kivo::test::readFile(root + u"/files/"_s + entry), "kept");
        }
    }
};

QTEST_GUILESS_MAIN(TestLibraryLocation)
#include "tst_librarylocation.moc"
