#include "core/librarylocation.h"
#include "core/librarypresence.h"
#include "core/reorganiser.h"
#include "core/store.h"
#include "core/userdefaults.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
namespace Presence = kivo::LibraryPresence;
using Verdict = kivo::LibraryPresence::Verdict;

/**
 * The first decision of a start (ready, first run, missing), relocation, and the promise that a
 * missing library is never replaced by a silent new one.
 */
class TestLibraryPresence : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;

    static void setValue(const QString &key, const QVariant &value)
    {
        kivo::UserDefaults defaults;
        if (value.isValid())
            defaults.setValue(key, value);
        else
            defaults.remove(key);
        defaults.sync();
    }
    static bool flag(const QString &key) { return kivo::UserDefaults().boolValue(key); }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<kivo::test::Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void verdicts_data()
    {
        QTest::addColumn<QString>("folderName");
        QTest::addColumn<bool>("databaseExists");
        QTest::addColumn<QVariant>("everOpened");
        QTest::addColumn<Verdict>("verdict");
        QTest::addColumn<QString>("logTail");
        const QString plain = u"Kivo Library"_s;
        QTest::newRow("ready") << plain << true << QVariant(true) << Verdict::ready << u"(everOpened=1)"_s;
        QTest::newRow("ready, never opened") << plain << true << QVariant() << Verdict::ready << u"(everOpened=0)"_s;
        QTest::newRow("first run") << plain << false << QVariant() << Verdict::firstRun << u"(everOpened=0)"_s;
        QTest::newRow("first run, flag false") << plain << false << QVariant(false) << Verdict::firstRun << u"(everOpened=0)"_s;
        QTest::newRow("missing") << plain << false << QVariant(true) << Verdict::missing << u"(everOpened=1)"_s;
        QTest::newRow("percent signs in the path") << u"Kivo 100%1 %2F"_s << false << QVariant(true) << Verdict::missing
                                                   << u"(everOpened=1)"_s;
    }

    void verdicts()
    {
        QFETCH(QString, folderName);
        QFETCH(bool, databaseExists);
        QFETCH(QVariant, everOpened);
        QFETCH(Verdict, verdict);
        QFETCH(QString, logTail);
        const QString root = m_sandbox->path() + u'/' + folderName;
        m_sandbox->setLibraryRoot(root);
        QDir().mkpath(root);
        if (databaseExists)
            kivo::test::writeFile(root + u"/library.sqlite"_s, "db");
        setValue(u"libraryEverOpened"_s, everOpened);

        const kivo::test::LogCapture log;
        QCOMPARE(Presence::check(), verdict);
        QCOMPARE(log.linesStartingWith(u"[LibraryPresence]"_s),
                 QStringList{u"[LibraryPresence] "_s + Presence::verdictName(verdict) + u" at "_s + root + u' ' + logTail});
        QCOMPARE(flag(u"libraryEverOpened"_s), verdict != Verdict::firstRun);
        QCOMPARE(flag(u"pendingOnboarding"_s), verdict == Verdict::firstRun);
        QCOMPARE(QFileInfo::exists(root + u"/library.sqlite"_s), databaseExists);
    }

    void verdictNames()
    {
        QCOMPARE(Presence::verdictName(Verdict::ready), u"ready"_s);
        QCOMPARE(Presence::verdictName(Verdict::firstRun), u"firstRun"_s);
        QCOMPARE(Presence::verdictName(Verdict::missing), u"missing"_s);
    }

    void missingLibraryWords()
    {
        QCOMPARE(Presence::missingTitle(), u"Kivo can’t find your library"_s);
        QCOMPARE(Presence::missingText(u"/media/usb/Kivo Library"_s),
                 u"It should be here:\n\n/media/usb/Kivo Library\n\nIf you moved or renamed the folder, choose where it is now. "
                 "If it lives on a drive that isn’t plugged in, plug it in and choose it, or quit and open Kivo again later.\n\n"
                 "Nothing has been deleted, and Kivo won’t start a new library unless you ask it to."_s);
        QCOMPARE(Presence::missingChoices(), (QStringList{u"Choose Library…"_s, u"Quit"_s, u"Start a New Library"_s}));
        QCOMPARE(Presence::chooserTitle(), u"Choose Your Kivo Library"_s);
        QCOMPARE(Presence::chooserMessage(), u"Select the Kivo Library folder - the one containing library.sqlite."_s);
        QCOMPARE(Presence::chooserPrompt(), u"Choose"_s);
    }

    void relocate_data()
    {
        QTest::addColumn<bool>("isLibrary");
        QTest::newRow("folder without a library") << false;
        QTest::newRow("folder with a library") << true;
    }

    void relocate()
    {
        QFETCH(bool, isLibrary);
        const QString chosen = m_sandbox->path() + u"/Moved Away"_s;
        QDir().mkpath(chosen);
        if (isLibrary)
            kivo::test::writeFile(chosen + u"/library.sqlite"_s, "db");
        setValue(u"libraryEverOpened"_s, false);
        const kivo::test::LogCapture log;
        const Presence::Relocation answer = Presence::relocate(chosen + u'/');
        QCOMPARE(answer.accepted, isLibrary);
        if (isLibrary) {
            QCOMPARE(kivo::UserDefaults().stringValue(u"libraryPath"_s), chosen);
            QCOMPARE(kivo::LibraryLocation::root(), chosen);
            QVERIFY(flag(u"libraryEverOpened"_s));
            QCOMPARE(log.lines(), QStringList{u"[Library] relocated to "_s + chosen});
        } else {
            QCOMPARE(answer.refusalTitle, u"That folder isn’t a Kivo library"_s);
            QCOMPARE(answer.refusalText, u"Moved Away has no library.sqlite in it. Look for the folder called “Kivo Library”, "
                                         "or the one you renamed it to."_s);
            QCOMPARE(kivo::LibraryLocation::root(), m_sandbox->libraryRoot());
            QVERIFY(!flag(u"libraryEverOpened"_s));
            QVERIFY(log.lines().isEmpty());
        }
    }

    void missingLibraryNeverGetsANewDatabase_data()
    {
        QTest::addColumn<bool>("folderExists");
        QTest::newRow("database gone") << true;
        QTest::newRow("whole folder gone (drive unplugged)") << false;
    }

    void missingLibraryNeverGetsANewDatabase()
    {
        QFETCH(bool, folderExists);
        const QString root = m_sandbox->path() + u"/drive/Kivo Library"_s;
        m_sandbox->setLibraryRoot(root);
        if (folderExists)
            kivo::test::writeFile(root + u"/files/ab/ab12.png"_s, "picture");
        setValue(u"libraryEverOpened"_s, true);
        setValue(u"libraryReorganised"_s, false);
        const QMap<QString, QByteArray> before = kivo::test::treeDigest(m_sandbox->path() + u"/drive"_s);

        // What a start does after the verdict, in its order.
        QCOMPARE(Presence::check(), Verdict::missing);
        kivo::Reorganiser::run(root);
        kivo::Store store;
        store.initialise();
        QVERIFY(!store.dbQueue());
        QVERIFY2(store.setupError().startsWith(u"Could not open the library: "_s), qPrintable(store.setupError()));
        QCOMPARE(kivo::test::treeDigest(m_sandbox->path() + u"/drive"_s), before);
        QVERIFY(flag(u"libraryEverOpened"_s));

        // Only the user's explicit choice starts a new library, at the same path.
        Presence::startNewLibrary();
        kivo::Store fresh;
        fresh.initialise();
        QVERIFY2(fresh.dbQueue(), qPrintable(fresh.setupError()));
        QVERIFY(QFileInfo::exists(root + u"/library.sqlite"_s));
        QVERIFY(flag(u"libraryEverOpened"_s));
    }
};

QTEST_GUILESS_MAIN(TestLibraryPresence)
#include "tst_librarypresence.moc"
