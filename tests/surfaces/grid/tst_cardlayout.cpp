#include "surfaces/grid/cardlayout.h"
#include "surfaces/grid/masonrylayout.h"

#include <QDateTime>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

LibraryItem picture(const QString &id, double width, double height, double addedAt = 0)
{
    LibraryItem item;
    item.id = id;
    item.kind = u"image"_s;
    item.width = width;
    item.height = height;
    item.filePath = id + u".jpg"_s;
    item.addedAt = addedAt;
    return item;
}

double seconds(const QString &isoDateTime)
{
    return double(QDateTime::fromString(isoDateTime, Qt::ISODate).toSecsSinceEpoch());
}

} // namespace

/** The measured masonry, and the frames and band index the virtualised views place cards from. */
class TestCardLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void masonryColumnWidth_data();
    void masonryColumnWidth();
    void masonrySizeAndPlacement();
    void masonryCacheKeepsMeasurements();
    void masonryEmpty();
    void gridFramesFollowTheEstimate();
    void rowsInMatchesEveryFrame();
    void rowsAddedAfterAGridLandWhereAWholeGridPutsThem();
    void timelineGroupsByDayNewestFirst();
};

void TestCardLayout::masonryColumnWidth_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<int>("columns");
    QTest::addColumn<double>("expected");
    QTest::newRow("exact") << 1000.0 << 3 << 324.0; // (1000 - 28) / 3
    QTest::newRow("up to the half") << 1001.0 << 3 << 324.5; // 324.33
    QTest::newRow("down to the whole") << 1000.5 << 3 << 324.0; // 324.17
    QTest::newRow("no columns count as one") << 500.0 << 0 << 500.0;
}

void TestCardLayout::masonryColumnWidth()
{
    QFETCH(double, width);
    QFETCH(int, columns);
    QFETCH(double, expected);
    QCOMPARE(MasonryLayout(columns, 14).columnWidth(width), expected);
}

void TestCardLayout::masonrySizeAndPlacement()
{
    const MasonryLayout layout(2, 10);
    const QList<double> measured{100.3, 50, 70.74};
    QList<double> askedWidths;
    MasonryLayout::Cache cache;
    // No proposal: 800 wide, so columns of (800 - 10) / 2 = 395.
    const QSizeF size = layout.sizeThatFits(
        std::nullopt, 3,
        [&](int i, double width) {
            askedWidths.append(width);
            return measured[i];
        },
        cache);
    QCOMPARE(askedWidths, QList<double>({395, 395, 395}));
    QCOMPARE(cache.heights, QList<double>({100.5, 50, 70.5}));
    // Column 0: 100.5 + 10. Column 1: 50 + 10 + 70.5 + 10. Height is the tallest less one gap.
    QCOMPARE(cache.columnTotals, QList<double>({110.5, 140.5}));
    QCOMPARE(size, QSizeF(800, 130.5));

    const QList<QRectF> frames = layout.placeSubviews(QRectF(5, 7, 800, size.height()), 3, cache);
    QCOMPARE(frames, QList<QRectF>({QRectF(5, 7, 395, 100.5), QRectF(410, 7, 395, 50), QRectF(410, 67, 395, 70.5)}));
    // A shorter height list places the rest with no height.
    MasonryLayout::Cache shortCache = cache;
    shortCache.heights.resize(1);
    QCOMPARE(layout.placeSubviews(QRectF(0, 0, 800, 0), 2, shortCache).last().height(), 0.0);
}

void TestCardLayout::masonryCacheKeepsMeasurements()
{
    MasonryLayout layout(2, 10);
    MasonryLayout::Cache cache;
    int measures = 0;
    double height = 100;
    const auto measure = [&](int, double) {
        ++measures;
        return height;
    };
    QCOMPARE(layout.sizeThatFits(600.0, 4, measure, cache).height(), 210.0);
    QCOMPARE(measures, 4);
    // Same width, columns, spacing and count: nothing is measured, even if a card grew.
    height = 300;
    QCOMPARE(layout.sizeThatFits(600.0, 4, measure, cache).height(), 210.0);
    QCOMPARE(measures, 4);
    // Any of the four changing measures again.
    QCOMPARE(layout.sizeThatFits(601.0, 4, measure, cache).height(), 610.0);
    QCOMPARE(measures, 8);
    QCOMPARE(layout.sizeThatFits(601.0, 5, measure, cache).height(), 920.0);
    QCOMPARE(measures, 13);
    layout = MasonryLayout(3, 10);
    QCOMPARE(layout.sizeThatFits(601.0, 5, measure, cache).height(), 610.0);
    QCOMPARE(measures, 18);
}

void TestCardLayout::masonryEmpty()
{
    MasonryLayout::Cache cache;
    QCOMPARE(MasonryLayout(3, 14).sizeThatFits(
                 500.0, 0, [](int, double) { return 1.0; }, cache),
        QSizeF(500, 0));
}

void TestCardLayout::gridFramesFollowTheEstimate()
{
    const QList<LibraryItem> items{picture(u"a"_s, 100, 100), picture(u"b"_s, 100, 200), picture(u"c"_s, 100, 50)};
    const CardSettings settings{u"original"_s, false, false, 10};
    const CardLayout layout = CardLayout::grid(items, 2, 246, settings);
    // Inset 18, columns 100 wide and 10 apart, 18 above the first card.
    QCOMPARE(layout.frames(),
        QList<QRectF>({QRectF(18, 18, 100, 100), QRectF(128, 18, 100, 200), QRectF(18, 128, 100, 50)}));
    QCOMPARE(layout.contentHeight(), 18 + 200 + 18.0);
    for (const auto &cell : GridNav::estimateCells(items, 2, 246, settings)) {
        const int row = int(std::find_if(items.cbegin(), items.cend(), [&](const LibraryItem &item) {
            return item.id == cell.item.id;
        }) - items.cbegin());
        QCOMPARE(layout.frames()[row].top(), cell.top + CardLayout::verticalPadding);
        QCOMPARE(layout.frames()[row].height(), cell.height);
    }
    QCOMPARE(CardLayout::grid({}, 4, 1000, settings).contentHeight(), CardLayout::verticalPadding);
}

void TestCardLayout::rowsInMatchesEveryFrame()
{
    // Random shapes, including tall ones crossing several bands; every query is checked by brute force.
    QRandomGenerator random(42);
    QList<LibraryItem> items;
    for (int i = 0; i < 3000; ++i)
        items.append(picture(QString::number(i), 50 + random.bounded(1000), 50 + random.bounded(3000)));
    const CardLayout layout = CardLayout::grid(items, 5, 1400, CardSettings{});
    for (int query = 0; query < 200; ++query) {
        const double top = random.bounded(layout.contentHeight());
        const double bottom = top + random.bounded(2000.0);
        QList<int> expected;
        for (int row = 0; row < layout.frames().size(); ++row) {
            if (layout.frames()[row].bottom() > top && layout.frames()[row].top() < bottom)
                expected.append(row);
        }
        QCOMPARE(layout.rowsIn(top, bottom), expected);
    }
    QVERIFY(layout.rowsIn(100, 100).isEmpty());
}

void TestCardLayout::rowsAddedAfterAGridLandWhereAWholeGridPutsThem()
{
    // A first screenful of rows laid out on its own, then continued with the rest of the list:
    // frames, height and band index as if the whole list had been laid out at once.
    QRandomGenerator random(11);
    QList<LibraryItem> items;
    for (int i = 0; i < 3000; ++i)
        items.append(picture(QString::number(i), 50 + random.bounded(1000), 50 + random.bounded(3000)));
    const CardSettings settings{u"original"_s, true, false, 12};
    CardLayout continued = CardLayout::grid(items.first(400), 5, 1400, settings);
    QVERIFY(continued.continuesAsGrid(5, 1400, settings));
    continued.appendToGrid(items);
    const CardLayout whole = CardLayout::grid(items, 5, 1400, settings);
    QCOMPARE(continued.frames(), whole.frames());
    QCOMPARE(continued.contentHeight(), whole.contentHeight());
    for (int query = 0; query < 100; ++query) {
        const double top = random.bounded(whole.contentHeight());
        const double bottom = top + random.bounded(3000.0);
        QCOMPARE(continued.rowsIn(top, bottom), whole.rowsIn(top, bottom));
    }
    // Anything else about the grid changed, or a timeline: no continuing it.
    QVERIFY(!whole.continuesAsGrid(4, 1400, settings));
    QVERIFY(!whole.continuesAsGrid(5, 1401, settings));
    QVERIFY(!whole.continuesAsGrid(5, 1400, CardSettings{u"square"_s, true, false, 12}));
    QVERIFY(!CardLayout::timeline(items, 5, 1400, settings, QDate(2026, 1, 1)).continuesAsGrid(5, 1400, settings));
    // An empty grid continues into a whole one.
    CardLayout fromNothing = CardLayout::grid({}, 5, 1400, settings);
    fromNothing.appendToGrid(items);
    QCOMPARE(fromNothing.frames(), whole.frames());
}

void TestCardLayout::timelineGroupsByDayNewestFirst()
{
    const QDate today(2024, 5, 10);
    // List order is deliberately not date order; "same1" and "same2" share a time and keep list order.
    const QList<LibraryItem> items{
        picture(u"old"_s, 100, 100, seconds(u"2023-12-24T09:00:00Z"_s)),
        picture(u"yesterday"_s, 100, 100, seconds(u"2024-05-09T23:59:00Z"_s)),
        picture(u"same1"_s, 100, 100, seconds(u"2024-05-10T08:00:00Z"_s)),
        picture(u"later"_s, 100, 100, seconds(u"2024-05-10T18:00:00Z"_s)),
        picture(u"same2"_s, 100, 100, seconds(u"2024-05-10T08:00:00Z"_s)),
        picture(u"march"_s, 100, 100, seconds(u"2024-03-02T12:00:00Z"_s)),
    };
    const CardSettings settings{u"square"_s, false, false, 10};
    // Two columns in 246 - 36 = 210: (210 - 10) / 2 = 100 wide, square cards 100 high.
    const CardLayout layout = CardLayout::timeline(items, 2, 246, settings, today);
    QStringList titles;
    for (const auto &section : layout.sections())
        titles.append(section.title + u" <- "_s + items[section.firstRow].id);
    QCOMPARE(titles,
        QStringList({u"Today <- later"_s, u"Yesterday <- yesterday"_s, u"Saturday 2 March <- march"_s,
            u"Sunday 24 December 2023 <- old"_s}));

    const auto &frames = layout.frames();
    const double firstCards = CardLayout::verticalPadding + CardLayout::sectionHeadingHeight;
    // Today: later, same1, same2 in that order through the masonry (left, right, left).
    QCOMPARE(frames[3], QRectF(18, firstCards, 100, 100));
    QCOMPARE(frames[2], QRectF(128, firstCards, 100, 100));
    QCOMPARE(frames[4], QRectF(18, firstCards + 110, 100, 100));
    // The next heading starts after today's two rows and one gap.
    const double secondHeading = firstCards + 210 + CardLayout::sectionGap;
    QCOMPARE(layout.sections()[1].frame.top(), secondHeading);
    QCOMPARE(frames[1].top(), secondHeading + CardLayout::sectionHeadingHeight);
    QCOMPARE(layout.sectionsIn(secondHeading, secondHeading + 1), QList<int>({1}));
    QCOMPARE(layout.contentHeight(), frames[0].bottom() + CardLayout::verticalPadding);
}

QTEST_GUILESS_MAIN(TestCardLayout)
#include "tst_cardlayout.moc"
