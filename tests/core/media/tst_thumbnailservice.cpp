#include "core/media/thumbnailcache.h"
#include "core/media/thumbnailservice.h"
#include "tests/testsupport.h"

#include <QFile>
#include <QTest>
#include <QtConcurrent/QtConcurrentRun>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

QImage filled(int side, const QColor &colour)
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

} // namespace

/** The byte-bounded cache and the service that keys decodes by file, time and bound. */
class TestThumbnailService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cacheEvictsLeastRecentlyUsed();
    void cacheRefusesOversizeAndPurges();
    void serviceCachesAndNoticesEdits();
    void serviceDecodesOnThePool();
};

void TestThumbnailService::cacheEvictsLeastRecentlyUsed()
{
    const qint64 oneImage = filled(32, Qt::red).sizeInBytes();
    ThumbnailCache cache(oneImage * 3);
    cache.insert(u"a"_s, filled(32, Qt::red));
    cache.insert(u"b"_s, filled(32, Qt::green));
    cache.insert(u"c"_s, filled(32, Qt::blue));
    QCOMPARE(cache.bytes(), oneImage * 3);
    // Touch "a" so "b" is now the oldest; the fourth insert pushes "b" out.
    QVERIFY(cache.find(u"a"_s));
    cache.insert(u"d"_s, filled(32, Qt::black));
    QCOMPARE(cache.count(), 3);
    QVERIFY(!cache.find(u"b"_s));
    QCOMPARE(cache.find(u"a"_s)->pixelColor(0, 0), QColor(Qt::red));
    QVERIFY(cache.find(u"c"_s) && cache.find(u"d"_s));
    QVERIFY(cache.bytes() <= cache.byteLimit());

    // Lowering the budget trims at once.
    cache.setByteLimit(oneImage);
    QCOMPARE(cache.count(), 1);
}

void TestThumbnailService::cacheRefusesOversizeAndPurges()
{
    ThumbnailCache cache(filled(16, Qt::red).sizeInBytes() * 2);
    cache.insert(u"small"_s, filled(16, Qt::red));
    cache.insert(u"huge"_s, filled(64, Qt::red));
    QVERIFY(!cache.find(u"huge"_s));
    QVERIFY(cache.find(u"small"_s));
    cache.insert(u"null"_s, QImage());
    QVERIFY(!cache.find(u"null"_s));
    cache.purge();
    QCOMPARE(cache.count(), 0);
    QCOMPARE(cache.bytes(), 0);
}

void TestThumbnailService::serviceCachesAndNoticesEdits()
{
    kivo::test::Sandbox sandbox;
    const QString path = sandbox.path() + u"/picture.png"_s;
    QVERIFY(filled(200, Qt::red).save(path));
    ThumbnailService service;

    const QImage first = service.thumbnail(path, {50, 50});
    QCOMPARE(first.size(), QSize(50, 50));
    QCOMPARE(first.pixelColor(10, 10), QColor(Qt::red));
    QCOMPARE(service.cache().count(), 1);
    // Same file, same bound: the very same pixels come back from the cache.
    QCOMPARE(service.thumbnail(path, {50, 50}).constBits(), first.constBits());
    // Another bound is another entry.
    QCOMPARE(service.thumbnail(path, {20, 20}).size(), QSize(20, 20));
    QCOMPARE(service.cache().count(), 2);

    // The file changes (new time and size): the next request decodes the new contents.
    QFile::remove(path);
    QVERIFY(filled(100, Qt::blue).save(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime);
    file.close();
    QCOMPARE(service.thumbnail(path, {50, 50}).pixelColor(10, 10), QColor(Qt::blue));

    service.purge();
    QCOMPARE(service.cache().count(), 0);
    QVERIFY(service.thumbnail(sandbox.path() + u"/missing.png"_s, {50, 50}).isNull());
}

void TestThumbnailService::serviceDecodesOnThePool()
{
    kivo::test::Sandbox sandbox;
    ThumbnailService service;
    QList<QString> paths;
    for (int i = 0; i < 12; ++i) {
        paths.append(sandbox.path() + u"/p%1.png"_s.arg(i));
        QVERIFY(filled(120 + i, QColor::fromHsv(i * 30, 200, 200)).save(paths.last()));
    }
    QList<QFuture<QImage>> futures;
    for (const QString &path : paths)
        futures.append(QtConcurrent::run(&service.pool(), [&service, path] {
            return service.thumbnail(path, {40, 40});
        }));
    for (int i = 0; i < futures.size(); ++i) {
        const QImage image = futures[i].result();
        QCOMPARE(image.size(), QSize(40, 40));
        QCOMPARE(image.pixel(5, 5), QColor::fromHsv(i * 30, 200, 200).rgb());
    }
    QCOMPARE(service.cache().count(), 12);
}

QTEST_GUILESS_MAIN(TestThumbnailService)
#include "tst_thumbnailservice.moc"
