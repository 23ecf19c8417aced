#include "core/database.h"
#include "core/librarylock.h"
#include "tests/testsupport.h"

#include <QDir>
#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using kivo::Database;

namespace {

const QStringList &allIdentifiers = kivo::test::libraryIdentifiers();

/** How a child `kivo` ended, and what it printed. */
struct Outcome {
    int exitCode = -1;
    QString out;
    QString err;
};

} // namespace

/** The real `kivo` binary: its headless commands, and the lock that keeps a library to one process. */
class TestCli : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    QString m_root;

    QProcessEnvironment childEnvironment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const QString home = m_sandbox->path() + u"/child-home"_s;
        const QString runtime = m_sandbox->path() + u"/child-runtime"_s;
        QDir().mkpath(home);
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        environment.insert(u"HOME"_s, home);
        environment.insert(u"XDG_CONFIG_HOME"_s, m_sandbox->path() + u"/child-config"_s);
        environment.insert(u"XDG_RUNTIME_DIR"_s, runtime);
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        return environment;
    }

    // The settings the child reads, in its own configuration folder.
    void setChildSettings(const QVariantMap &values) const
    {
        QSettings settings(m_sandbox->path() + u"/child-config/Kivo/Kivo.conf"_s, QSettings::IniFormat);
        for (auto it = values.constBegin(); it != values.constEnd(); ++it)
            settings.setValue(it.key(), it.value());
    }

    void start(QProcess &process, const QStringList &arguments) const
    {
        process.setProcessEnvironment(childEnvironment());
        process.start(QStringLiteral(KIVO_BINARY), arguments);
        QVERIFY2(process.waitForStarted(), qPrintable(process.errorString()));
    }

    Outcome kivo(const QStringList &arguments) const
    {
        QProcess process;
        start(process, arguments);
        if (!process.waitForFinished(60000))
            process.kill();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
    }

    static QStringList lines(const QString &text) { return text.split(u'\n', Qt::SkipEmptyParts); }

    // Three live items (one of them hidden), one trashed; the inbox, two live boards, one deleted; two tags.
    void fillLibrary() const
    {
        QDir().mkpath(m_root);
        const auto queue = kivo::DatabaseQueue::open(m_root + u"/library.sqlite"_s);
        queue->write([](Database &db) {
            db.executeScript(u"INSERT INTO collection (id, name, isInbox, createdAt, modifiedAt, deletedAt) VALUES "
                             "('c1', 'Inbox', 1, 1, 1, NULL), ('c2', 'Moodboard', 0, 1, 1, NULL), "
                             "('c3', 'Typography', 0, 1, 1, NULL), ('c4', 'Thrown away', 0, 1, 1, 2);"
                             "INSERT INTO item (id, kind, createdAt, addedAt, modifiedAt, hiddenAt, deletedAt) VALUES "
                             "('i1', 'image', 1, 1, 1, NULL, NULL), ('i2', 'link', 1, 1, 1, NULL, NULL), "
                             "('i3', 'text', 1, 1, 1, 2, NULL), ('i4', 'image', 1, 1, 1, NULL, 2);"
                             "INSERT INTO tag VALUES ('t1', 'sea'), ('t2', 'type');"_s);
        });
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        m_root = m_sandbox->path() + u"/My Library"_s;
    }

    void cleanup() { m_sandbox.reset(); }

    void infoDescribesTheLibrary_data()
    {
        QTest::addColumn<bool>("reorganised");
        QTest::addColumn<QString>("layout");
        QTest::newRow("browsable") << true << u"browsable"_s;
        QTest::newRow("older") << false << u"older"_s;
    }

    void infoDescribesTheLibrary()
    {
        QFETCH(bool, reorganised);
        QFETCH(QString, layout);
        fillLibrary();
        setChildSettings({{u"libraryReorganised"_s, reorganised}});

        const Outcome text = kivo({u"--library"_s, m_root, u"info"_s});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(lines(text.out), (QStringList{u"Library:     "_s + m_root, u"Layout:      "_s + layout,
                                               u"Migrations:  "_s + allIdentifiers.join(u", "_s), u"Items:       3"_s,
                                               u"Collections: 2"_s, u"Tags:        2"_s}));

        // Switches may come in any order, and the one after a bare --library is still a switch.
        setChildSettings({{u"libraryPath"_s, m_root}});
        for (const QStringList &arguments : {QStringList{u"info"_s, u"--json"_s, u"--library"_s, m_root},
                                             QStringList{u"--library"_s, u"--json"_s, u"info"_s}}) {
            const Outcome json = kivo(arguments);
            QCOMPARE(json.exitCode, 0);
            QJsonParseError error;
            const QJsonObject object = QJsonDocument::fromJson(json.out.toUtf8(), &error).object();
            QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(arguments.join(u' ') + u": "_s + json.out));
            QCOMPARE(object.value(u"root"_s).toString(), m_root);
            QCOMPARE(object.value(u"layout"_s).toString(), layout);
            QCOMPARE(object.value(u"migrations"_s).toArray(), QJsonArray::fromStringList(allIdentifiers));
            QCOMPARE(object.value(u"items"_s).toInt(), 3);
            QCOMPARE(object.value(u"collections"_s).toInt(), 2);
            QCOMPARE(object.value(u"tags"_s).toInt(), 2);
        }
    }

    void unopenableLibraryFailsInOneLine_data()
    {
        QTest::addColumn<QString>("make");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no folder") << QString() << u"does not exist"_s;
        QTest::newRow("a file, not a folder") << u"file"_s << u"not a folder"_s;
        QTest::newRow("no database") << u"folder"_s << u"no library.sqlite"_s;
        QTest::newRow("not a database") << u"garbage"_s << u"file is not a database"_s;
    }

    void unopenableLibraryFailsInOneLine()
    {
        QFETCH(QString, make);
        QFETCH(QString, reason);
        if (make == u"file")
            kivo::test::writeFile(m_root, "plain file");
        else if (make == u"folder")
            QDir().mkpath(m_root);
        else if (make == u"garbage")
            kivo::test::writeFile(m_root + u"/library.sqlite"_s, QByteArray(4096, 'x'));
        const auto before = kivo::test::treeDigest(m_sandbox->path() + u"/My Library"_s);

        const Outcome outcome = kivo({u"--library"_s, m_root, u"info"_s});
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY(outcome.out.isEmpty());
        const QStringList errors = lines(outcome.err);
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.first().contains(m_root) && errors.first().contains(reason), qPrintable(errors.first()));
        if (make != u"file") {
            auto after = kivo::test::treeDigest(m_root);
            after.remove(u".kivo.lock"_s); // taken before the database is read
            QCOMPARE(after, before);
        }
    }

    void helpAndUnknownCommands()
    {
        const Outcome help = kivo({u"--help"_s});
        QCOMPARE(help.exitCode, 0);
        QVERIFY2(help.out.contains(u"\n  info "_s), qPrintable(help.out));
        const Outcome unknown = kivo({u"frobnicate"_s});
        QCOMPARE(unknown.exitCode, 2);
        QVERIFY(unknown.err.contains(u"frobnicate"_s));
        QVERIFY(unknown.out.isEmpty());
    }

    void lockedLibraryIsRefused()
    {
        fillLibrary();
        setChildSettings({{u"libraryReorganised"_s, true}, {u"libraryEverOpened"_s, true}});
        QProcess window;
        start(window, {u"--library"_s, m_root});
        QTRY_COMPARE_WITH_TIMEOUT(kivo::LibraryLock::holder(m_root), window.processId(), 30000);

        const Outcome refused = kivo({u"--library"_s, m_root, u"info"_s});
        QCOMPARE(refused.exitCode, 1);
        const QStringList errors = lines(refused.err);
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.first().contains(u"(pid %1)"_s.arg(window.processId())), qPrintable(errors.first()));
        QVERIFY(errors.first().contains(m_root));

        // The kernel drops the lock with the process, however it ends.
        ::kill(pid_t(window.processId()), SIGKILL);
        QVERIFY(window.waitForFinished(10000));
        QCOMPARE(kivo::LibraryLock::holder(m_root), 0);
        QCOMPARE(kivo({u"--library"_s, m_root, u"info"_s}).exitCode, 0);
    }

    void lockHoldsAgainstItsOwnProcess()
    {
        fillLibrary();
        QString refusal;
        const auto lock = kivo::LibraryLock::acquire(m_root, &refusal);
        QVERIFY2(lock, qPrintable(refusal));
        // Asking who holds it, or trying again, from the same process must neither share nor drop it.
        QCOMPARE(kivo::LibraryLock::holder(m_root), QCoreApplication::applicationPid());
        QVERIFY(!kivo::LibraryLock::acquire(m_root, &refusal));
        QVERIFY2(refusal.contains(u"(pid %1)"_s.arg(QCoreApplication::applicationPid())), qPrintable(refusal));
        const Outcome other = kivo({u"--library"_s, m_root, u"info"_s});
        QCOMPARE(other.exitCode, 1);
        QVERIFY2(other.err.contains(u"(pid %1)"_s.arg(QCoreApplication::applicationPid())), qPrintable(other.err));
    }

    void missingLibraryGetsNoNewDatabase()
    {
        kivo::test::writeFile(m_root + u"/files/ab/ab12.png"_s, "picture");
        setChildSettings({{u"libraryEverOpened"_s, true}, {u"libraryReorganised"_s, false}});
        QProcess window;
        start(window, {u"--library"_s, m_root});
        QByteArray log;
        // The window now waits on the missing-library alert; nothing may be made meanwhile.
        QTRY_VERIFY_WITH_TIMEOUT((log += window.readAllStandardError()).contains("[LibraryPresence] missing at")
                                     || window.state() == QProcess::NotRunning,
                                 30000);
        QTest::qWait(1000);
        window.kill();
        window.waitForFinished(10000);
        QVERIFY2(log.contains("[LibraryPresence] missing at " + m_root.toUtf8() + " (everOpened=1)"), log.constData());
        QVERIFY(!QFileInfo::exists(m_root + u"/library.sqlite"_s));
        QCOMPARE(kivo::test::readFile(m_root + u"/files/ab/ab12.png"_s), "picture");
        QVERIFY(!QFileInfo::exists(m_root + u"/items"_s));
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
