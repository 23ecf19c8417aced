#include "tests/testsupport.h"
#include "understanding/analysisimage.h"
#include "understanding/colorpalette.h"

#include <QImage>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::ColorPalette::extractPalette;

namespace {

// Fills whole rows [from, to) of `image`.
void fillRows(QImage &image, int from, int to, QRgb colour)
{
    for (int y = from; y < to; ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, colour);
    }
}

} // namespace

/** Palette extraction from generated pictures whose palettes were worked out by hand. */
class TestColorPalette : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void flatImageHasOneColour_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRgb>("colour");
        QTest::addColumn<QString>("expected");
        QTest::newRow("red 100x50") << QSize(100, 50) << qRgb(255, 0, 0) << u"#FF0000"_s;
        QTest::newRow("odd grey 1023x7") << QSize(1023, 7) << qRgb(0x7b, 0x7c, 0x7d) << u"#7B7C7D"_s;
        QTest::newRow("white 1x1 enlarged") << QSize(1, 1) << qRgb(255, 255, 255) << u"#FFFFFF"_s;
        QTest::newRow("near black 1024x1024") << QSize(1024, 1024) << qRgb(3, 2, 1) << u"#030201"_s;
    }
    void flatImageHasOneColour()
    {
        QFETCH(QSize, size);
        QFETCH(QRgb, colour);
        QFETCH(QString, expected);
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        QCOMPARE(extractPalette(image, 5), QStringList{expected});
    }

    void mixedImageOrdersByCountAndAveragesBins()
    {
        // 48 rows white (3072 pixels), 12 rows blue (768), and 4 rows shared by two colours that
        // fall into one bin (128 each): that bin's colour is its mean, truncated, not its centre.
        QImage image(64, 64, QImage::Format_RGB32);
        fillRows(image, 0, 48, qRgb(255, 255, 255));
        fillRows(image, 48, 60, qRgb(0, 0, 255));
        for (int y = 60; y < 64; ++y) {
            for (int x = 0; x < 64; ++x)
                image.setPixel(x, y, x % 2 ? qRgb(0x10, 0x20, 0x30) : qRgb(0x1F, 0x2F, 0x3F));
        }
        QCOMPARE(extractPalette(image, 5), (QStringList{u"#FFFFFF"_s, u"#0000FF"_s, u"#172737"_s}));
        QCOMPARE(extractPalette(image, 2), (QStringList{u"#FFFFFF"_s, u"#0000FF"_s}));
        QCOMPARE(extractPalette(image, 0), QStringList{});
    }

    void largeImageIsSquashedToTheSampleSquare()
    {
        // 1024x512: each sample pixel covers a 16x8 block, so the first 256 columns (a quarter)
        // stay pure red whatever the aspect; the rest is black.
        QImage image(1024, 512, QImage::Format_RGB32);
        image.fill(qRgb(0, 0, 0));
        QPainter painter(&image);
        painter.fillRect(0, 0, 256, 512, QColor(255, 0, 0));
        painter.end();
        QCOMPARE(extractPalette(image, 5), (QStringList{u"#000000"_s, u"#FF0000"_s}));
    }

    void moreBinsThanAskedKeepsTheLargest()
    {
        // Six vertical bands of 1024 / 6 pixels do not align with the sample grid, so blended
        // edge pixels form small bins of their own; the six bands still lead.
        QImage image(1024, 768, QImage::Format_RGB32);
        const QList<QRgb> bands{
            qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 0), qRgb(0, 255, 255), qRgb(255, 0, 255)};
        QPainter painter(&image);
        for (int i = 0; i < bands.size(); ++i)
            painter.fillRect(QRect(i * 1024 / 6, 0, 1024 / 6 + 1, 768), QColor(bands.at(i)));
        painter.end();
        const QStringList palette = extractPalette(image, 5);
        QCOMPARE(palette.size(), 5);
        QStringList all = extractPalette(image, 4096);
        QVERIFY(all.size() > 6);
        const QStringList expected{u"#FF0000"_s, u"#00FF00"_s, u"#0000FF"_s, u"#FFFF00"_s, u"#00FFFF"_s, u"#FF00FF"_s};
        for (const QString &band : expected)
            QVERIFY2(all.mid(0, 6).contains(band), qPrintable(band + u" not among "_s + all.mid(0, 6).join(u' ')));
    }

    void transparentPixels()
    {
        // Half opaque blue; a quarter red at alpha 128, which counts premultiplied (#800000); an
        // eighth green at alpha 7, below the floor; an eighth fully transparent.
        QImage image(64, 64, QImage::Format_ARGB32);
        fillRows(image, 0, 32, qRgba(0, 0, 255, 255));
        fillRows(image, 32, 48, qRgba(255, 0, 0, 128));
        fillRows(image, 48, 56, qRgba(0, 255, 0, 7));
        fillRows(image, 56, 64, qRgba(0, 0, 0, 0));
        QCOMPARE(extractPalette(image, 5), (QStringList{u"#0000FF"_s, u"#800000"_s}));

        // At alpha 8 a pixel counts again.
        fillRows(image, 48, 64, qRgba(0, 255, 0, 8));
        QCOMPARE(extractPalette(image, 5).size(), 3);

        QImage clear(200, 100, QImage::Format_ARGB32);
        clear.fill(Qt::transparent);
        QCOMPARE(extractPalette(clear, 5), QStringList{});
        QCOMPARE(extractPalette(QImage(), 5), QStringList{});
    }

    void equalCountsFollowTheBinOrder()
    {
        QImage image(64, 64, QImage::Format_RGB32);
        fillRows(image, 0, 32, qRgb(255, 0, 0));
        fillRows(image, 32, 64, qRgb(0, 255, 0));
        QCOMPARE(extractPalette(image, 5), (QStringList{u"#00FF00"_s, u"#FF0000"_s}));
    }

    void encodesAndDecodesTheColumn_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("palette");
        QTest::newRow("two") << u"[\"#FF0000\",\"#00FF00\"]"_s << QStringList{u"#FF0000"_s, u"#00FF00"_s};
        QTest::newRow("spaced") << u" [ \"#ABCDEF\" ] "_s << QStringList{u"#ABCDEF"_s};
        QTest::newRow("empty array") << u"[]"_s << QStringList{};
        QTest::newRow("not json") << u"#FF0000"_s << QStringList{};
        QTest::newRow("object") << u"{\"a\":1}"_s << QStringList{};
        QTest::newRow("numbers") << u"[\"#FF0000\",3]"_s << QStringList{};
        QTest::newRow("empty text") << QString() << QStringList{};
    }
    void encodesAndDecodesTheColumn()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, palette);
        QCOMPARE(kivo::ColorPalette::decodePalette(text), palette);
    }

    void encodingIsCompactAndNullWhenEmpty()
    {
        QCOMPARE(kivo::ColorPalette::encodePalette({u"#FF0000"_s, u"#0A0B0C"_s}),
            std::optional<QString>(u"[\"#FF0000\",\"#0A0B0C\"]"_s));
        QCOMPARE(kivo::ColorPalette::encodePalette({}), std::nullopt);
        QCOMPARE(kivo::ColorPalette::decodePalette(std::optional<QString>()), QStringList{});
    }

    void analysisImageIsBoundedNotEnlarged()
    {
        kivo::test::Sandbox sandbox;
        const QString wide = sandbox.path() + u"/wide.png"_s;
        const QString small = sandbox.path() + u"/small.jpg"_s;
        QImage big(3000, 1500, QImage::Format_RGB32);
        big.fill(qRgb(10, 200, 30));
        QVERIFY(big.save(wide));
        QImage little(300, 200, QImage::Format_RGB32);
        little.fill(qRgb(200, 10, 30));
        QVERIFY(little.save(small));

        QCOMPARE(kivo::AnalysisImage::decode(wide).size(), QSize(1024, 512));
        QCOMPARE(kivo::AnalysisImage::decode(small).size(), QSize(300, 200));
        QVERIFY(kivo::AnalysisImage::decode(sandbox.path() + u"/missing.png"_s).isNull());
        kivo::test::writeFile(sandbox.path() + u"/broken.png"_s, "not a picture");
        QVERIFY(kivo::AnalysisImage::decode(sandbox.path() + u"/broken.png"_s).isNull());
    }
};

QTEST_GUILESS_MAIN(TestColorPalette)
#include "tst_colorpalette.moc"
