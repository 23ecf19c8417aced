#include "core/media/imagedecoder.h"
#include "core/media/pdfpagerenderer.h"
#include "core/media/thumbnailer.h"
#include "core/media/videoframedecoder.h"
#include "tests/testsupport.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

/** A picture whose left half is one colour and right half another, so a turn shows in the result. */
QImage halves(const QSize &size, const QColor &left, const QColor &right)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(QRect(0, 0, size.width() / 2, size.height()), left);
    painter.fillRect(QRect(size.width() / 2, 0, size.width() - size.width() / 2, size.height()), right);
    return image;
}

/** A JPEG of `image` with an EXIF block holding only the orientation tag, as cameras write it. */
QByteArray jpegWithOrientation(const QImage &image, quint16 orientation)
{
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 95);

    QByteArray tiff("MM\0*", 4);
    const auto appendBig = [&](auto value) {
        const auto big = qToBigEndian(value);
        tiff.append(reinterpret_cast<const char *>(&big), sizeof big);
    };
    appendBig(quint32(8)); // first IFD right after the header
    appendBig(quint16(1)); // one entry
    appendBig(quint16(0x0112)); // Orientation
    appendBig(quint16(3)); // SHORT
    appendBig(quint32(1)); // one value
    appendBig(orientation); // inline value, left-aligned
    appendBig(quint16(0));
    appendBig(quint32(0)); // no next IFD
    QByteArray app1("\xFF\xE1", 2);
    const quint16 length = quint16(2 + 6 + tiff.size());
    app1.append(char(length >> 8)).append(char(length & 0xFF));
    app1.append(QByteArray("Exif\0\0", 6)).append(tiff);
    return jpeg.left(2) + app1 + jpeg.mid(2);
}

bool near(const QColor &actual, const QColor &expected, int tolerance = 60)
{
    return std::abs(actual.red() - expected.red()) <= tolerance
        && std::abs(actual.green() - expected.green()) <= tolerance
        && std::abs(actual.blue() - expected.blue()) <= tolerance;
}

QColor pixelAt(const QImage &image, double fx, double fy)
{
    return image.pixelColor(int(fx * (image.width() - 1)), int(fy * (image.height() - 1)));
}

/** Runs the ffmpeg command line quietly; fails the test when it does not succeed. */
bool runFfmpeg(const QStringList &arguments)
{
    QProcess process;
    process.start(u"ffmpeg"_s, QStringList{u"-hide_banner"_s, u"-loglevel"_s, u"error"_s, u"-y"_s} + arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0) {
        qWarning().noquote() << process.readAllStandardError();
        return false;
    }
    return true;
}

/** The rotation ffprobe reads from the stream's display matrix (anticlockwise degrees), or 0. */
int ffprobeRotation(const QString &path)
{
    QProcess process;
    process.start(u"ffprobe"_s,
        {u"-v"_s, u"error"_s, u"-select_streams"_s, u"v:0"_s, u"-show_entries"_s, u"stream_side_data=rotation"_s,
            u"-of"_s, u"default=nw=1:nk=1"_s, path});
    process.waitForFinished(30000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed().toInt();
}

} // namespace

/** Decoding of pictures, video frames and PDF pages on real files made here. */
class TestMediaDecoders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void fitWithin_data();
    void fitWithin();
    void exifOrientation_data();
    void exifOrientation();
    void otherFormatsDecodeBounded_data();
    void otherFormatsDecodeBounded();
    void videoMiddleFrame();
    void videoDisplayRotation_data();
    void videoDisplayRotation();
    void quarterTurns_data();
    void quarterTurns();
    void pdfFirstPage();
    void dispatchByType_data();
    void dispatchByType();

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
};

void TestMediaDecoders::initTestCase()
{
    m_sandbox = std::make_unique<kivo::test::Sandbox>();
    if (QStandardPaths::findExecutable(u"ffmpeg"_s).isEmpty())
        QFAIL("ffmpeg is missing: scripts/bootstrap installs it");
}

void TestMediaDecoders::fitWithin_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("bound");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("wide into square") << QSize(400, 200) << QSize(100, 100) << QSize(100, 50);
    QTest::newRow("tall into square") << QSize(200, 400) << QSize(100, 100) << QSize(50, 100);
    QTest::newRow("never enlarged") << QSize(40, 20) << QSize(100, 100) << QSize(40, 20);
    QTest::newRow("width only") << QSize(1000, 3000) << QSize(250, 0) << QSize(250, 750);
    QTest::newRow("height only") << QSize(1000, 3000) << QSize(0, 300) << QSize(100, 300);
    QTest::newRow("no bound") << QSize(1000, 3000) << QSize() << QSize(1000, 3000);
    QTest::newRow("a sliver keeps one pixel") << QSize(10000, 2) << QSize(100, 100) << QSize(100, 1);
}

void TestMediaDecoders::fitWithin()
{
    QFETCH(QSize, size);
    QFETCH(QSize, bound);
    QFETCH(QSize, expected);
    QCOMPARE(ImageDecoder::fitWithin(size, bound), expected);
}

void TestMediaDecoders::exifOrientation_data()
{
    // The stored picture is 400 × 200, red on the left and blue on the right.
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QSize>("upright");
    QTest::addColumn<QPointF>("redAt");
    QTest::addColumn<QPointF>("blueAt");
    QTest::newRow("1 as stored") << 1 << QSize(400, 200) << QPointF(0.1, 0.5) << QPointF(0.9, 0.5);
    QTest::newRow("3 half turn") << 3 << QSize(400, 200) << QPointF(0.9, 0.5) << QPointF(0.1, 0.5);
    QTest::newRow("6 quarter clockwise") << 6 << QSize(200, 400) << QPointF(0.5, 0.1) << QPointF(0.5, 0.9);
    QTest::newRow("8 quarter anticlockwise") << 8 << QSize(200, 400) << QPointF(0.5, 0.9) << QPointF(0.5, 0.1);
}

void TestMediaDecoders::exifOrientation()
{
    QFETCH(int, orientation);
    QFETCH(QSize, upright);
    QFETCH(QPointF, redAt);
    QFETCH(QPointF, blueAt);
    const QString path = m_sandbox->path() + u"/camera-%1.jpg"_s.arg(orientation);
    kivo::test::writeFile(path, jpegWithOrientation(halves({400, 200}, Qt::red, Qt::blue), quint16(orientation)));

    QCOMPARE(ImageDecoder::uprightSize(path), upright);
    const QImage full = ImageDecoder::decode(path, {});
    QCOMPARE(full.size(), upright);
    // A bound of 100 × 100 keeps the upright shape: the long side becomes 100.
    const QImage small = ImageDecoder::decode(path, {100, 100});
    QCOMPARE(small.size(), ImageDecoder::fitWithin(upright, {100, 100}));
    for (const QImage &image : {full, small}) {
        QVERIFY2(near(pixelAt(image, redAt.x(), redAt.y()), Qt::red),
            qPrintable(pixelAt(image, redAt.x(), redAt.y()).name()));
        QVERIFY2(near(pixelAt(image, blueAt.x(), blueAt.y()), Qt::blue),
            qPrintable(pixelAt(image, blueAt.x(), blueAt.y()).name()));
    }
}

void TestMediaDecoders::otherFormatsDecodeBounded_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("png") << QByteArray("png");
    QTest::newRow("webp") << QByteArray("webp");
    QTest::newRow("tiff") << QByteArray("tiff");
    QTest::newRow("bmp") << QByteArray("bmp");
}

void TestMediaDecoders::otherFormatsDecodeBounded()
{
    QFETCH(QByteArray, format);
    if (!QImageWriter::supportedImageFormats().contains(format))
        QFAIL(qPrintable(
            u"no image plugin writes %1: qt6-image-formats-plugins is missing"_s.arg(QString::fromLatin1(format))));
    const QString path = m_sandbox->path() + u"/picture."_s + QString::fromLatin1(format);
    QVERIFY(halves({640, 480}, Qt::green, Qt::yellow).save(path, format.constData()));

    QCOMPARE(Thumbnailer::sourceFor(path), Thumbnailer::Source::image);
    const QImage image = Thumbnailer::make(path, {160, 160});
    QCOMPARE(image.size(), QSize(160, 120));
    QVERIFY(near(pixelAt(image, 0.1, 0.5), Qt::green));
    QVERIFY(near(pixelAt(image, 0.9, 0.5), Qt::yellow));
}

void TestMediaDecoders::videoMiddleFrame()
{
    // One second each of red, green and blue: the middle of three seconds is green.
    const QString path = m_sandbox->path() + u"/colours.mp4"_s;
    QVERIFY(runFfmpeg({u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=c=red:s=320x240:r=25:d=1"_s, u"-f"_s, u"lavfi"_s, u"-i"_s,
        u"color=c=lime:s=320x240:r=25:d=1"_s, u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=c=blue:s=320x240:r=25:d=1"_s,
        u"-filter_complex"_s, u"[0][1][2]concat=n=3:v=1:a=0"_s, u"-c:v"_s, u"libx264"_s, u"-g"_s, u"50"_s,
        u"-pix_fmt"_s, u"yuv420p"_s, path}));

    const auto info = VideoFrameDecoder::probe(path);
    QVERIFY(info);
    QCOMPARE(info->displaySize, QSize(320, 240));
    QCOMPARE(info->rotation, 0);
    QVERIFY2(std::abs(info->duration - 3.0) < 0.1, qPrintable(QString::number(info->duration)));

    QCOMPARE(Thumbnailer::sourceFor(path), Thumbnailer::Source::video);
    const QImage middle = Thumbnailer::make(path, {160, 160});
    QCOMPARE(middle.size(), QSize(160, 120));
    QVERIFY2(near(pixelAt(middle, 0.5, 0.5), QColor(0, 255, 0)), qPrintable(pixelAt(middle, 0.5, 0.5).name()));
    // The seek really moves: near the start the frame is red, near the end blue.
    QVERIFY(near(pixelAt(VideoFrameDecoder::frame(path, {64, 64}, 0.1), 0.5, 0.5), Qt::red));
    QVERIFY(near(pixelAt(VideoFrameDecoder::frame(path, {64, 64}, 0.9), 0.5, 0.5), Qt::blue));
}

void TestMediaDecoders::videoDisplayRotation_data()
{
    // The recorded picture is 320 × 160 with red on the left and blue on the right; the display
    // matrix says how far to turn it clockwise when showing it.
    QTest::addColumn<int>("clockwise");
    QTest::addColumn<QSize>("shown");
    QTest::addColumn<QPointF>("redAt");
    QTest::addColumn<QPointF>("blueAt");
    QTest::newRow("none") << 0 << QSize(320, 160) << QPointF(0.1, 0.5) << QPointF(0.9, 0.5);
    QTest::newRow("90 clockwise") << 90 << QSize(160, 320) << QPointF(0.5, 0.1) << QPointF(0.5, 0.9);
    QTest::newRow("180") << 180 << QSize(320, 160) << QPointF(0.9, 0.5) << QPointF(0.1, 0.5);
    QTest::newRow("270 clockwise") << 270 << QSize(160, 320) << QPointF(0.5, 0.9) << QPointF(0.5, 0.1);
}

void TestMediaDecoders::videoDisplayRotation()
{
    QFETCH(int, clockwise);
    QFETCH(QSize, shown);
    QFETCH(QPointF, redAt);
    QFETCH(QPointF, blueAt);
    const QString plain = m_sandbox->path() + u"/halves.mp4"_s;
    if (!QFile::exists(plain)) {
        QVERIFY(runFfmpeg({u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=c=red:s=160x160:r=25:d=2"_s, u"-f"_s, u"lavfi"_s,
            u"-i"_s, u"color=c=blue:s=160x160:r=25:d=2"_s, u"-filter_complex"_s, u"[0][1]hstack"_s, u"-c:v"_s,
            u"libx264"_s, u"-pix_fmt"_s, u"yuv420p"_s, plain}));
    }
    const QString path = m_sandbox->path() + u"/turned-%1.mp4"_s.arg(clockwise);
    // FFmpeg 5.1's MP4 muxer writes the legacy "rotate" tag as an anticlockwise display matrix;
    // what counts is the matrix, so ffprobe's reading of it (anticlockwise degrees) is the check.
    const int tag = (360 - clockwise) % 360;
    QVERIFY(runFfmpeg({u"-i"_s, plain, u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s, u"rotate=%1"_s.arg(tag), path}));
    QCOMPARE((ffprobeRotation(path) + clockwise + 360) % 360, 0);

    const auto info = VideoFrameDecoder::probe(path);
    QVERIFY(info);
    QCOMPARE(info->rotation, clockwise);
    QCOMPARE(info->displaySize, shown);
    const QImage image = VideoFrameDecoder::frame(path, {80, 80});
    QCOMPARE(image.size(), ImageDecoder::fitWithin(shown, {80, 80}));
    QVERIFY2(
        near(pixelAt(image, redAt.x(), redAt.y()), Qt::red), qPrintable(pixelAt(image, redAt.x(), redAt.y()).name()));
    QVERIFY2(near(pixelAt(image, blueAt.x(), blueAt.y()), Qt::blue),
        qPrintable(pixelAt(image, blueAt.x(), blueAt.y()).name()));
}

void TestMediaDecoders::quarterTurns_data()
{
    QTest::addColumn<double>("anticlockwise");
    QTest::addColumn<int>("clockwise");
    QTest::newRow("0") << 0.0 << 0;
    QTest::newRow("-90") << -90.0 << 90;
    QTest::newRow("90") << 90.0 << 270;
    QTest::newRow("180") << 180.0 << 180;
    QTest::newRow("-180") << -180.0 << 180;
    QTest::newRow("rounding noise") << -89.99 << 90;
}

void TestMediaDecoders::quarterTurns()
{
    QFETCH(double, anticlockwise);
    QFETCH(int, clockwise);
    QCOMPARE(VideoFrameDecoder::clockwiseQuarterTurn(anticlockwise), clockwise);
}

void TestMediaDecoders::pdfFirstPage()
{
    if (!PdfPageRenderer::available())
        QSKIP("built without poppler-qt6");
    const QString path = m_sandbox->path() + u"/document.pdf"_s;
    {
        QPdfWriter writer(path);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins({});
        QPainter painter(&writer);
        const QRect page = painter.viewport();
        painter.fillRect(QRect(0, 0, page.width(), page.height() / 2), Qt::red);
        writer.newPage();
        painter.fillRect(painter.viewport(), Qt::blue);
    }
    QCOMPARE(Thumbnailer::sourceFor(path), Thumbnailer::Source::pdf);
    const QImage image = Thumbnailer::make(path, {200, 200});
    // A4 is 595 × 842 points: fitted into 200 × 200 it is 141 × 200.
    QCOMPARE(image.size(), QSize(141, 200));
    QVERIFY2(near(pixelAt(image, 0.5, 0.2), Qt::red), qPrintable(pixelAt(image, 0.5, 0.2).name()));
    QVERIFY2(near(pixelAt(image, 0.5, 0.8), Qt::white), qPrintable(pixelAt(image, 0.5, 0.8).name()));

    kivo::test::writeFile(m_sandbox->path() + u"/broken.pdf"_s, "%PDF-1.4 this is not a document");
    QVERIFY(Thumbnailer::make(m_sandbox->path() + u"/broken.pdf"_s, {200, 200}).isNull());
}

void TestMediaDecoders::dispatchByType_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("source");
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        halves({8, 8}, Qt::red, Qt::blue).save(&buffer, "PNG");
    }
    QTest::newRow("jpeg by name") << u"a.jpeg"_s << QByteArray() << int(Thumbnailer::Source::image);
    QTest::newRow("mov by name") << u"a.mov"_s << QByteArray() << int(Thumbnailer::Source::video);
    QTest::newRow("pdf by name") << u"a.pdf"_s << QByteArray() << int(Thumbnailer::Source::pdf);
    QTest::newRow("text") << u"notes.txt"_s << QByteArray("hello") << int(Thumbnailer::Source::none);
    QTest::newRow("mp3 has no picture") << u"song.mp3"_s << QByteArray() << int(Thumbnailer::Source::none);
    QTest::newRow("png without a name") << u"download"_s << png << int(Thumbnailer::Source::image);
}

void TestMediaDecoders::dispatchByType()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(int, source);
    const QString path = m_sandbox->path() + u"/dispatch/"_s + name;
    kivo::test::writeFile(path, bytes);
    QCOMPARE(int(Thumbnailer::sourceFor(path)), source);
}

QTEST_GUILESS_MAIN(TestMediaDecoders)
#include "tst_mediadecoders.moc"
