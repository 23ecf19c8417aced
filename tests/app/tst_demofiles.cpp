// The file-level parts of the demo generator: the stamp that gives reused pictures their own hash
// while leaving every pixel alone, and the zip archives, checked with the unzip tool.

#include "app/demo/documentmaker.h"
#include "app/demo/filestamp.h"
#include "tests/testsupport.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QImageReader>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo::demo;

namespace {

QByteArray encoded(const QImage &image, const QByteArray &format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    writer.write(image);
    return bytes;
}

QImage decoded(const QByteArray &bytes, QSize *size = nullptr)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    if (size)
        *size = reader.size();
    return reader.read();
}

} // namespace

class TestDemoFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stampLeavesPixelsAlone_data();
    void stampLeavesPixelsAlone();
    void crcMatchesTheStandard();
    void zipIsReadByUnzip();
};

void TestDemoFiles::stampLeavesPixelsAlone_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("quality");
    QTest::newRow("jpeg") << QByteArray("jpeg") << 85;
    QTest::newRow("png") << QByteArray("png") << 60;
    QTest::newRow("webp lossy") << QByteArray("webp") << 80;
    QTest::newRow("webp lossless") << QByteArray("webp") << 100;
}

void TestDemoFiles::stampLeavesPixelsAlone()
{
    QFETCH(QByteArray, format);
    QFETCH(int, quality);
    QImage image(97, 61, QImage::Format_RGB32); // odd sizes catch off-by-one canvas fields
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 97, 61);
    gradient.setColorAt(0, Qt::darkMagenta);
    gradient.setColorAt(1, Qt::yellow);
    painter.fillRect(image.rect(), gradient);
    painter.end();

    const QByteArray original = encoded(image, format, quality);
    const QByteArray first = FileStamp::stamped(original, "kivo-demo 1111", image.size());
    const QByteArray second = FileStamp::stamped(original, "kivo-demo 22222", image.size());
    QVERIFY(first.contains("kivo-demo 1111"));
    QVERIFY(QCryptographicHash::hash(first, QCryptographicHash::Sha256) != QCryptographicHash::hash(second, QCryptographicHash::Sha256));

    QSize size;
    const QImage reference = decoded(original);
    for (const QByteArray &stamped : {first, second}) {
        const QImage copy = decoded(stamped, &size);
        QVERIFY(!copy.isNull());
        QCOMPARE(size, image.size());
        QCOMPARE(copy, reference);
    }
    // A format the stamp does not know is left as it is.
    QCOMPARE(FileStamp::stamped("GIF89a....", "m", QSize(1, 1)), QByteArray("GIF89a...."));
}

void TestDemoFiles::crcMatchesTheStandard()
{
    QCOMPARE(FileStamp::crc32("123456789", 9), 0xCBF43926u);
    // Continuing from a partial result gives the same as one pass.
    QCOMPARE(FileStamp::crc32("56789", 5, FileStamp::crc32("1234", 4)), 0xCBF43926u);
}

void TestDemoFiles::zipIsReadByUnzip()
{
    const QString unzip = QStandardPaths::findExecutable(u"unzip"_s);
    if (unzip.isEmpty())
        QSKIP("unzip is not installed (scripts/debian-packages.txt lists it)");
    kivo::test::Sandbox sandbox;
    const QByteArray note = "Ceramics & clay\nsecond line\n";
    const QString archive = sandbox.path() + u"/notes.zip"_s;
    kivo::test::writeFile(archive, DocumentMaker::zip({{u"README.txt"_s, "hello\n"}, {u"notes/1-ceramics.txt"_s, note}}));

    QProcess test;
    test.start(unzip, {u"-t"_s, archive});
    QVERIFY(test.waitForFinished());
    QCOMPARE(test.exitCode(), 0);
    QVERIFY(test.readAllStandardOutput().contains("No errors detected"));

    QProcess extract;
    extract.start(unzip, {u"-p"_s, archive, u"notes/1-ceramics.txt"_s});
    QVERIFY(extract.waitForFinished());
    QCOMPARE(extract.readAllStandardOutput(), note);
}

QTEST_MAIN(TestDemoFiles)
#include "tst_demofiles.moc"
