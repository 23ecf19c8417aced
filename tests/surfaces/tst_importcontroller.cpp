// Drops and pastes through the window's import controller on a real library, and its progress
// card in a real (offscreen) window: the count while files come in, then the files that failed.

#include "surfaces/import/importcontroller.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "tests/fixtureserver.h"
#include "tests/ingest/importertestworld.h"
#include "tests/surfaces/quickhelpers.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using namespace kivo;

class TestImportController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void dropOnACollectionImportsFilesAndFolders();
    void pasteTakesPictureAddressOrText_data();
    void pasteTakesPictureAddressOrText();
    void ownDragsAreNotImported();
    void progressCardNamesTheFailures();

private:
    bool waitIdle(int ms = 30000);

    std::unique_ptr<test::ImporterTestWorld> m_world;
    std::unique_ptr<ImportController> m_controller;
};

void TestImportController::init()
{
    m_world = std::make_unique<test::ImporterTestWorld>();
    m_controller = std::make_unique<ImportController>(&m_world->importer);
}

void TestImportController::cleanup()
{
    m_controller.reset();
    m_world.reset();
}

bool TestImportController::waitIdle(int ms)
{
    QElapsedTimer clock;
    clock.start();
    while (m_controller->busy() && clock.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return !m_controller->busy();
}

void TestImportController::dropOnACollectionImportsFilesAndFolders()
{
    const QString board = m_world->library.addCollection(u"Board"_s);
    m_world->store.reloadCollections();
    const QString loose = m_world->library.source(u"loose.png"_s, test::pngBytes(4, 4, 1));
    (void)m_world->library.source(u"folder/a.txt"_s, "a");
    (void)m_world->library.source(u"folder/inner/b.txt"_s, "b");
    QSignalSpy progress(m_controller.get(), &ImportController::progressChanged);

    QVERIFY(m_controller->importUrls(
        {QUrl::fromLocalFile(loose), QUrl::fromLocalFile(m_world->library.sandbox.path() + u"/sources/folder"_s)},
        board));
    QVERIFY(m_controller->busy());
    QVERIFY(waitIdle());
    QVERIFY(progress.size() >= 4);
    QCOMPARE(m_controller->progressText(), QString());
    QCOMPARE(m_controller->failureCount(), 0);
    QCOMPARE(m_world->store.counts().value(board), 3);
    QCOMPARE(m_world->store.toast(), u"Saved to Board"_s);
}

void TestImportController::pasteTakesPictureAddressOrText_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("title");
    QTest::newRow("picture bytes") << u"png"_s << u"image"_s << u"Image"_s;
    QTest::newRow("a copied image") << u"image"_s << u"image"_s << u"Image"_s;
    QTest::newRow("an address as text") << u"address"_s << u"image"_s << u"pasted"_s;
    QTest::newRow("words") << u"words"_s << u"text"_s << u"Call the framer on Monday about the oak frames"_s;
}

void TestImportController::pasteTakesPictureAddressOrText()
{
    QFETCH(QString, what);
    QFETCH(QString, kind);
    QFETCH(QString, title);
    test::FixtureServer server;
    server.serve(u"/pasted.png"_s, test::FixtureResponse::bytes(test::pngBytes(7, 3), "image/png"));

    auto *mime = new QMimeData;
    if (what == u"png")
        mime->setData(u"image/png"_s, test::pngBytes(5, 5, 3));
    else if (what == u"image") {
        QImage copied(6, 4, QImage::Format_RGB32);
        copied.fill(Qt::darkGreen);
        mime->setImageData(copied);
    } else if (what == u"address")
        mime->setText(u"  "_s + server.url(u"/pasted.png"_s).toString() + u"\n"_s);
    else
        mime->setText(u"Call the framer on Monday about the oak frames"_s);
    QGuiApplication::clipboard()->setMimeData(mime);

    QVERIFY(m_controller->paste());
    QTRY_COMPARE_WITH_TIMEOUT(m_world->library.items().size(), 1, 20000);
    QTRY_COMPARE(m_world->store.allCount(), 1);
    const LibraryItem item = m_world->library.items().first();
    QCOMPARE(item.kind, kind);
    QCOMPARE(item.title, title);
    QCOMPARE(m_world->library.memberships(item.id), QStringList{m_world->inboxId()});
    QCOMPARE(m_world->store.toast(), u"Saved to Inbox"_s);
}

void TestImportController::ownDragsAreNotImported()
{
    QVERIFY(!m_controller->importDrop({}, u"KIVO-ITEM 0a1b"_s));
    QVERIFY(!m_controller->importDrop({}, u"KIVO-ITEMS a,b"_s));
    QVERIFY(!m_controller->importDrop({}, u"KIVO-COLLECTION c"_s));
    QVERIFY(!m_controller->importDrop({}, u"   "_s));
    QVERIFY(m_world->library.items().isEmpty());
}

void TestImportController::progressCardNamesTheFailures()
{
    AppearanceController appearance;
    QmlServices::publishAppearance(&appearance);
    QQmlEngine engine;
    QmlServices::prepareEngine(engine);
    QQmlComponent component(&engine);
    component.setData(
        "import QtQuick\nimport Kivo\nWindow { width: 440; height: 320; visible: true; color: Theme.window\n"
        "  property alias card: card\n"
        "  ImportProgress { id: card; objectName: \"importProgress\"; x: 30; y: 20; controller: importer }\n"
        "  required property ImportController importer }",
        QUrl(u"qrc:/test/ImportProgressWindow.qml"_s));
    std::unique_ptr<QObject> root(
        component.createWithInitialProperties({{u"importer"_s, QVariant::fromValue(m_controller.get())}}));
    QVERIFY2(root, qPrintable(component.errorString()));
    auto *window = qobject_cast<QQuickWindow *>(root.get());
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QQuickItem *card = test::findItem(window->contentItem(), u"importProgress"_s);
    QVERIFY(card);
    QVERIFY(!test::isShown(card));

    QStringList files;
    for (int i = 0; i < 40; ++i)
        files.append(m_world->library.source(u"many/file %1.txt"_s.arg(i), "file " + QByteArray::number(i)));
    const QString missing = m_world->library.sandbox.path() + u"/sources/many/vanished.jpg"_s;
    QList<QUrl> urls;
    for (const QString &file : files.mid(0, 20) + QStringList{missing} + files.mid(20))
        urls.append(QUrl::fromLocalFile(file));
    QVERIFY(m_controller->importUrls(urls));
    QTRY_VERIFY(test::isShown(card));
    QVERIFY(waitIdle());

    QCOMPARE(m_controller->failureCount(), 1);
    QCOMPARE(m_controller->failureSummary(), u"1 file couldn\u2019t be imported"_s);
    QTRY_COMPARE(
        test::findItem(card, u"importFailureSummary"_s)->property("text").toString(), m_controller->failureSummary());
    QVERIFY(!test::isShown(test::findItem(card, u"importFailureList"_s)));
    test::clickItem(window, test::findItem(card, u"importDetailsButton"_s));
    QQuickItem *list = test::findItem(card, u"importFailureList"_s);
    QTRY_VERIFY(test::isShown(list));
    QCOMPARE(list->property("count").toInt(), 1);
    QCOMPARE(m_controller->failures().first().toMap().value(u"name"_s).toString(), u"vanished.jpg"_s);
    QCOMPARE(m_controller->failures().first().toMap().value(u"error"_s).toString(), u"No such file or directory"_s);
    QDir().mkpath(QStringLiteral(KIVO_SCREENSHOT_DIR));
    QTRY_VERIFY(window->grabWindow().save(QStringLiteral(KIVO_SCREENSHOT_DIR) + u"/import-failures.png"_s));

    test::clickItem(window, test::findItem(card, u"importDismissButton"_s));
    QCOMPARE(m_controller->failureCount(), 0);
    QTRY_VERIFY(!test::isShown(card));
    QCOMPARE(m_world->store.allCount(), 40);
}

QTEST_MAIN(TestImportController)
#include "tst_importcontroller.moc"
