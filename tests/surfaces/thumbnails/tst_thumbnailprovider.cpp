// The "image://thumb/" provider in a real QML engine: addresses by item id (resolved through a
// real library database) and by path, sizes from the address, decoding off the interface thread.

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/media/thumbnailservice.h"
#include "core/records.h"
#include "surfaces/thumbnails/thumbnailprovider.h"
#include "tests/testsupport.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QThread>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

QImage filled(const QSize &size, const QColor &colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

/** An Image item on `source`, once it has finished loading. */
std::unique_ptr<QQuickItem> loadImage(QQmlEngine &engine, const QString &source)
{
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nImage { cache: false }", QUrl::fromLocalFile(u"/image.qml"_s));
    if (!component.isReady()) {
        qWarning() << component.errors();
        return {};
    }
    std::unique_ptr<QQuickItem> image(
        qobject_cast<QQuickItem *>(component.createWithInitialProperties({{u"source"_s, source}})));
    if (!image)
        qWarning() << component.errors();
    return image;
}

} // namespace

class TestThumbnailProvider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parse_data();
    void parse();
    void widthBuckets_data();
    void widthBuckets();
    void pathsWithAwkwardCharacters();
    void itemIdsThroughTheLibrary();
    void manyRequestsCancelled();
};

void TestThumbnailProvider::parse_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QSize>("requested");
    QTest::addColumn<QString>("itemId");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("bound");
    QTest::newRow("item with width") << u"0f8e-aa?256"_s << QSize() << u"0f8e-aa"_s << QString() << QSize(256, 1024);
    QTest::newRow("item, width from the request")
        << u"0f8e-aa"_s << QSize(300, 200) << u"0f8e-aa"_s << QString() << QSize(300, 1200);
    QTest::newRow("item, nothing said") << u"0f8e-aa"_s << QSize() << u"0f8e-aa"_s << QString() << QSize(512, 2048);
    QTest::newRow("path") << u"/pictures/a b.png?128"_s << QSize() << QString() << u"/pictures/a b.png"_s
                          << QSize(128, 512);
    QTest::newRow("path with escapes") << u"/pictures/what%3F%20%2341.png?96"_s << QSize() << QString()
                                       << u"/pictures/what? #41.png"_s << QSize(96, 384);
}

void TestThumbnailProvider::parse()
{
    QFETCH(QString, id);
    QFETCH(QSize, requested);
    QFETCH(QString, itemId);
    QFETCH(QString, path);
    QFETCH(QSize, bound);
    const auto request = ThumbnailProvider::parse(id, requested);
    QCOMPARE(request.itemId, itemId);
    QCOMPARE(request.path, path);
    QCOMPARE(request.bound, bound);
}

void TestThumbnailProvider::widthBuckets_data()
{
    QTest::addColumn<double>("pixels");
    QTest::addColumn<int>("bucket");
    QTest::newRow("tiny") << 10.0 << 96;
    QTest::newRow("exact") << 256.0 << 256;
    QTest::newRow("just over") << 256.5 << 384;
    QTest::newRow("huge") << 5000.0 << 2048;
}

void TestThumbnailProvider::widthBuckets()
{
    QFETCH(double, pixels);
    QFETCH(int, bucket);
    QCOMPARE(ThumbnailProvider::widthBucket(pixels), bucket);
}

void TestThumbnailProvider::pathsWithAwkwardCharacters()
{
    test::Sandbox sandbox;
    const QString path = sandbox.path() + u"/odd name #1 (100%) ?.png"_s;
    QVERIFY(filled({800, 400}, Qt::darkGreen).save(path));
    QQmlEngine engine;
    auto service = std::make_shared<ThumbnailService>();
    engine.addImageProvider(u"thumb"_s, new ThumbnailProvider(service));
    const QString source = ThumbnailProvider::sourceForPath(path, 160);
    auto image = loadImage(engine, source);
    QVERIFY(image);
    QTRY_COMPARE(image->property("status").toInt(), 1); // Image.Ready
    QCOMPARE(image->property("implicitWidth").toInt(), 160);
    QCOMPARE(image->property("implicitHeight").toInt(), 80);
    QCOMPARE(service->cache().count(), 1);

    auto missing = loadImage(engine, ThumbnailProvider::sourceForPath(sandbox.path() + u"/absent.png"_s, 160));
    QTRY_COMPARE(missing->property("status").toInt(), 3); // Image.Error
}

void TestThumbnailProvider::itemIdsThroughTheLibrary()
{
    test::Sandbox sandbox;
    LibraryLocation::ensureLibrary();
    auto queue = DatabaseQueue::open(LibraryLocation::databasePath());
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = u"image"_s;
    item.createdAt = item.addedAt = item.modifiedAt = nowSeconds();
    const auto location = LibraryLocation::newFileLocation(item.id, u"sunset"_s, u"png"_s, item.addedAt);
    QVERIFY(filled({600, 900}, Qt::darkRed).save(location.absolutePath));
    item.filePath = location.relativePath;
    LibraryItem link;
    link.id = newIdentifier();
    link.kind = u"link"_s;
    link.createdAt = link.addedAt = link.modifiedAt = item.addedAt;
    queue->write([&](Database &db) {
        db.insert(item);
        db.insert(link);
    });

    // The resolver runs where the decode runs: never on the interface thread.
    QThread *const interfaceThread = QThread::currentThread();
    QAtomicInt lookupsOffThread = 0;
    QAtomicInt lookupsOnThread = 0;
    const ItemFileResolver library = ThumbnailProvider::databaseResolver(queue);
    QQmlEngine engine;
    engine.addImageProvider(
        u"thumb"_s, new ThumbnailProvider(std::make_shared<ThumbnailService>(), [&](const QString &id) {
            (QThread::currentThread() == interfaceThread ? lookupsOnThread : lookupsOffThread).fetchAndAddRelaxed(1);
            return library(id);
        }));
    auto image = loadImage(engine, ThumbnailProvider::sourceForItem(item.id, 256));
    QTRY_COMPARE(image->property("status").toInt(), 1);
    QCOMPARE(image->property("implicitWidth").toInt(), 256);
    QCOMPARE(image->property("implicitHeight").toInt(), 384);
    QCOMPARE(lookupsOnThread.loadRelaxed(), 0);
    QCOMPARE(lookupsOffThread.loadRelaxed(), 1);

    // A link without a stored file has no thumbnail: the image errs instead of waiting.
    auto none = loadImage(engine, ThumbnailProvider::sourceForItem(link.id, 256));
    QTRY_COMPARE(none->property("status").toInt(), 3);
}

void TestThumbnailProvider::manyRequestsCancelled()
{
    // Cards scrolled past are destroyed while their decodes wait: nothing may crash or leak a reply.
    test::Sandbox sandbox;
    QStringList paths;
    for (int i = 0; i < 40; ++i) {
        paths.append(sandbox.path() + u"/p%1.png"_s.arg(i));
        QVERIFY(filled({1200, 900}, QColor::fromHsv(i * 9, 200, 200)).save(paths.last()));
    }
    QQmlEngine engine;
    auto service = std::make_shared<ThumbnailService>();
    engine.addImageProvider(u"thumb"_s, new ThumbnailProvider(service));
    for (int round = 0; round < 3; ++round) {
        std::vector<std::unique_ptr<QQuickItem>> images;
        for (const QString &path : paths)
            images.push_back(loadImage(engine, ThumbnailProvider::sourceForPath(path, 384 + round)));
        QTest::qWait(5);
    }
    auto last = loadImage(engine, ThumbnailProvider::sourceForPath(paths.first(), 96));
    QTRY_COMPARE(last->property("status").toInt(), 1);
    service->pool().waitForDone();
    QVERIFY(service->cache().count() < 3 * 40 + 1);
}

QTEST_MAIN(TestThumbnailProvider)
#include "tst_thumbnailprovider.moc"
