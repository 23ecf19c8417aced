// Runs a private D-Bus daemon and checks that "reveal" asks a FileManager1 service on it to show
// the files, with their addresses as file managers expect them, and opens the folders instead
// when no file manager is there or the one there refuses.

#include "app/platform/filemanagerreveal.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

using namespace Qt::StringLiterals;

/** A file manager as far as ShowItems goes: it remembers what it was asked, or refuses. */
class FakeFileManager : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QList<QStringList> shown;
    bool refuse = false;

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &startupId)
    {
        Q_UNUSED(startupId)
        if (refuse) {
            sendErrorReply(QDBusError::Failed, u"cannot show"_s);
            return;
        }
        shown.append(uris);
    }
};

class TestFileManagerReveal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void revealsOrOpensTheFolders_data();
    void revealsOrOpensTheFolders();

private:
    QProcess m_daemon;
    QString m_address;
};

void TestFileManagerReveal::initTestCase()
{
    if (QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty())
        QSKIP("dbus-daemon is not installed");
    m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address=1"_s});
    QVERIFY(m_daemon.waitForStarted());
    QTRY_VERIFY(m_daemon.canReadLine());
    m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    QVERIFY(QDBusConnection::connectToBus(m_address, u"client"_s).isConnected());
}

void TestFileManagerReveal::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(u"client"_s);
    m_daemon.terminate();
    m_daemon.waitForFinished();
}

void TestFileManagerReveal::revealsOrOpensTheFolders_data()
{
    QTest::addColumn<QString>("fileManager");
    QTest::newRow("a file manager shows them") << u"answers"_s;
    QTest::newRow("no file manager on the bus") << u"none"_s;
    QTest::newRow("the file manager refuses") << u"refuses"_s;
}

void TestFileManagerReveal::revealsOrOpensTheFolders()
{
    QFETCH(QString, fileManager);
    FakeFileManager manager;
    manager.refuse = fileManager == u"refuses";
    if (fileManager != u"none") {
        QDBusConnection serverBus = QDBusConnection::connectToBus(m_address, u"filemanager"_s);
        QVERIFY(
            serverBus.registerObject(u"/org/freedesktop/FileManager1"_s, &manager, QDBusConnection::ExportAllSlots));
        QVERIFY(serverBus.registerService(u"org.freedesktop.FileManager1"_s));
    }
    const auto stopServer = qScopeGuard([&] {
        if (fileManager == u"none")
            return;
        QDBusConnection serverBus(u"filemanager"_s);
        serverBus.unregisterService(u"org.freedesktop.FileManager1"_s);
        serverBus.unregisterObject(u"/org/freedesktop/FileManager1"_s);
        QDBusConnection::disconnectFromBus(u"filemanager"_s);
    });

    QList<QUrl> opened;
    kivo::FileManagerReveal reveal(QDBusConnection(u"client"_s), [&](const QUrl &folder) { opened.append(folder); });
    QSignalSpy finished(&reveal, &kivo::FileManagerReveal::finished);
    // Two files in one folder, one in another; a space and a non-ASCII letter in the names.
    reveal.reveal({u"/library/items/2024-06/sea view.jpg"_s, u"/library/items/2024-06/été.png"_s,
        u"/library/items/2024-07/notes.txt"_s});
    QTRY_COMPARE(finished.size(), 1);

    if (fileManager == u"answers") {
        QCOMPARE(finished.constFirst().constFirst().toBool(), true);
        QCOMPARE(manager.shown.size(), 1);
        QCOMPARE(manager.shown.constFirst(),
            (QStringList{u"file:///library/items/2024-06/sea%20view.jpg"_s,
                u"file:///library/items/2024-06/%C3%A9t%C3%A9.png"_s, u"file:///library/items/2024-07/notes.txt"_s}));
        QVERIFY(opened.isEmpty());
    } else {
        QCOMPARE(finished.constFirst().constFirst().toBool(), false);
        QVERIFY(manager.shown.isEmpty());
        QCOMPARE(opened,
            (QList<QUrl>{
                QUrl::fromLocalFile(u"/library/items/2024-06"_s), QUrl::fromLocalFile(u"/library/items/2024-07"_s)}));
    }
}

QTEST_GUILESS_MAIN(TestFileManagerReveal)
#include "tst_filemanagerreveal.moc"
