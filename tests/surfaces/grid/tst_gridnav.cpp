#include "surfaces/grid/gridnav.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

LibraryItem makeItem(const QString &id, const QString &kind, std::optional<double> width = {},
    std::optional<double> height = {}, bool hasFile = true)
{
    LibraryItem item;
    item.id = id;
    item.kind = kind;
    item.width = width;
    item.height = height;
    if (hasFile)
        item.filePath = u"2024-01/"_s + id + u".jpg"_s;
    return item;
}

/**
 * Two columns 100 wide with 10 between (grid width 36 + 100 + 10 + 100). Heights follow from the
 * pictures' shapes:    column 0: A (0..100), C (110..160), D (170..270)
 *                      column 1: B (0..200), E (210..310)
 */
QList<LibraryItem> twoColumnItems()
{
    return {makeItem(u"A"_s, u"image"_s, 100, 100), makeItem(u"B"_s, u"image"_s, 100, 200),
        makeItem(u"C"_s, u"image"_s, 100, 50), makeItem(u"D"_s, u"image"_s, 100, 100),
        makeItem(u"E"_s, u"image"_s, 100, 100)};
}

const CardSettings tenApart{u"original"_s, false, false, 10};
constexpr double twoColumnWidth = 246;

} // namespace

/** Card heights, the column estimate, the cell cache key, the visibility test and arrow-key moves. */
class TestGridNav : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cardHeight_data();
    void cardHeight();
    void columnWidth_data();
    void columnWidth();
    void tiesGoLeft();
    void singleColumnTakesEverything();
    void cellsColumnByColumn();
    void cellsKey();
    void visibility_data();
    void visibility();
    void moveFocus_data();
    void moveFocus();
    void equalDistancePicksTheUpperCard();
};

void TestGridNav::cardHeight_data()
{
    QTest::addColumn<LibraryItem>("item");
    QTest::addColumn<QString>("shape");
    QTest::addColumn<bool>("title");
    QTest::addColumn<bool>("tags");
    QTest::addColumn<double>("height");
    // Column width 200 throughout.
    QTest::newRow("wide picture") << makeItem(u"a"_s, u"image"_s, 1600, 900) << u"original"_s << false << false
                                  << 112.5;
    QTest::newRow("1 x 100 is cut at four times its width")
        << makeItem(u"a"_s, u"image"_s, 1, 100) << u"original"_s << false << false << 800.0;
    QTest::newRow("very wide has no limit")
        << makeItem(u"a"_s, u"image"_s, 1000, 10) << u"original"_s << false << false << 2.0;
    QTest::newRow("square shape") << makeItem(u"a"_s, u"image"_s, 1600, 900) << u"square"_s << false << false << 200.0;
    QTest::newRow("rectangle shape") << makeItem(u"a"_s, u"image"_s, 100, 900) << u"rectangle"_s << false << false
                                     << 150.0;
    QTest::newRow("video without size") << makeItem(u"a"_s, u"video"_s) << u"original"_s << false << false << 112.5;
    QTest::newRow("text without size") << makeItem(u"a"_s, u"text"_s) << u"original"_s << false << false << 170.0;
    QTest::newRow("file without size") << makeItem(u"a"_s, u"file"_s) << u"original"_s << false << false << 200.0;
    QTest::newRow("zero height uses the kind")
        << makeItem(u"a"_s, u"video"_s, 640, 0) << u"original"_s << false << false << 112.5;
    QTest::newRow("link with cover") << makeItem(u"a"_s, u"link"_s) << u"original"_s << false << false << 150.0;
    QTest::newRow("link without cover, original")
        << makeItem(u"a"_s, u"link"_s, 800, 800, false) << u"original"_s << false << false << 100.0;
    QTest::newRow("link without cover, square")
        << makeItem(u"a"_s, u"link"_s, {}, {}, false) << u"square"_s << false << false << 100.0;
    QTest::newRow("link without cover, rectangle")
        << makeItem(u"a"_s, u"link"_s, {}, {}, false) << u"rectangle"_s << false << false << 100.0;
    QTest::newRow("title chip") << makeItem(u"a"_s, u"image"_s, 100, 100) << u"original"_s << true << false << 237.0;
    QTest::newRow("tag chips") << makeItem(u"a"_s, u"image"_s, 100, 100) << u"original"_s << false << true << 236.0;
    QTest::newRow("both chips") << makeItem(u"a"_s, u"image"_s, 100, 100) << u"original"_s << true << true << 258.0;
}

void TestGridNav::cardHeight()
{
    QFETCH(LibraryItem, item);
    QFETCH(QString, shape);
    QFETCH(bool, title);
    QFETCH(bool, tags);
    QFETCH(double, height);
    QCOMPARE(GridNav::itemCardHeight(item, 200, {shape, title, tags, 14}), height);
}

void TestGridNav::columnWidth_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<int>("columns");
    QTest::addColumn<double>("spacing");
    QTest::addColumn<double>("expected");
    QTest::newRow("four") << 1000.0 << 4 << 14.0 << 230.5;
    QTest::newRow("one") << 1000.0 << 1 << 14.0 << 964.0;
    QTest::newRow("zero columns count as one") << 1000.0 << 0 << 14.0 << 964.0;
    QTest::newRow("never below 1") << 40.0 << 6 << 14.0 << 1.0;
}

void TestGridNav::columnWidth()
{
    QFETCH(double, width);
    QFETCH(int, columns);
    QFETCH(double, spacing);
    QFETCH(double, expected);
    QCOMPARE(GridNav::columnWidth(width, columns, spacing), expected);
}

void TestGridNav::tiesGoLeft()
{
    const QList<LibraryItem> items{makeItem(u"1"_s, u"image"_s, 10, 10), makeItem(u"2"_s, u"image"_s, 10, 10),
        makeItem(u"3"_s, u"image"_s, 10, 10)};
    const auto columns = GridNav::estimateColumns(items, 3, 1000, tenApart);
    QCOMPARE(columns.size(), 3);
    for (int column = 0; column < 3; ++column) {
        QCOMPARE(columns[column].size(), 1);
        QCOMPARE(columns[column].first().id, items[column].id);
    }
}

void TestGridNav::singleColumnTakesEverything()
{
    const QList<LibraryItem> items = twoColumnItems();
    const auto columns = GridNav::estimateColumns(items, 1, 1000, tenApart);
    QCOMPARE(columns.size(), 1);
    QCOMPARE(columns.first(), items);
    // The cells of one column still measure with the width formula at n = 1: 1000 - 36 = 964.
    const auto cells = GridNav::estimateCells(items, 1, 1000, tenApart);
    QCOMPARE(cells.size(), 5);
    QCOMPARE(cells[0].height, 964.0);
    QCOMPARE(cells[1].top, 974.0);
    QCOMPARE(cells[1].height, 1928.0);
}

void TestGridNav::cellsColumnByColumn()
{
    const auto cells = GridNav::estimateCells(twoColumnItems(), 2, twoColumnWidth, tenApart);
    QStringList seen;
    for (const auto &cell : cells)
        seen.append(u"%1:%2@%3+%4"_s.arg(cell.item.id).arg(cell.column).arg(cell.top).arg(cell.height));
    QCOMPARE(seen, QStringList({u"A:0@0+100"_s, u"C:0@110+50"_s, u"D:0@170+100"_s, u"B:1@0+200"_s, u"E:1@210+100"_s}));
}

void TestGridNav::cellsKey()
{
    const QList<LibraryItem> items = twoColumnItems();
    QCOMPARE(GridNav::cellsKey(items, 1000, 4.9), u"5|A|E|1000|4"_s);
    QCOMPARE(GridNav::cellsKey({}, 0, 4), u"0|||0|4"_s);
    // A change in the middle that keeps count, first and last keeps the key.
    QList<LibraryItem> shuffled = items;
    shuffled.swapItemsAt(1, 2);
    QCOMPARE(GridNav::cellsKey(shuffled, 1000, 4), GridNav::cellsKey(items, 1000, 4));
}

void TestGridNav::visibility_data()
{
    QTest::addColumn<QRectF>("frame");
    QTest::addColumn<QRectF>("viewport");
    QTest::addColumn<bool>("visible");
    const QRectF viewport(0, 100, 500, 400);
    QTest::newRow("well inside") << QRectF(10, 200, 100, 100) << viewport << true;
    QTest::newRow("exactly 8 from the top") << QRectF(10, 108, 100, 100) << viewport << true;
    QTest::newRow("7 from the top") << QRectF(10, 107, 100, 100) << viewport << false;
    QTest::newRow("exactly 8 from the bottom") << QRectF(10, 392, 100, 100) << viewport << true;
    QTest::newRow("in view by less than 8") << QRectF(10, 393, 100, 100) << viewport << false;
    QTest::newRow("off to the side still counts") << QRectF(900, 200, 100, 100) << viewport << true;
    QTest::newRow("viewport unknown") << QRectF(10, 200, 100, 100) << QRectF() << false;
    QTest::newRow("no frame") << QRectF() << viewport << false;
}

void TestGridNav::visibility()
{
    QFETCH(QRectF, frame);
    QFETCH(QRectF, viewport);
    QFETCH(bool, visible);
    QCOMPARE(GridNav::isFrameVisible(frame, viewport), visible);
}

void TestGridNav::moveFocus_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<double>("width");
    QTest::addColumn<QString>("focused");
    QTest::addColumn<int>("dx");
    QTest::addColumn<int>("dy");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("reveal");
    const int cards = int(ViewMode::cards);
    // "" for expected: no move at all.
    QTest::newRow("right to the nearest middle") << cards << twoColumnWidth << u"A"_s << 1 << 0 << u"B"_s << true;
    QTest::newRow("right from low in a column") << cards << twoColumnWidth << u"D"_s << 1 << 0 << u"E"_s << true;
    QTest::newRow("left back") << cards << twoColumnWidth << u"E"_s << -1 << 0 << u"D"_s << true;
    QTest::newRow("left at column 0") << cards << twoColumnWidth << u"A"_s << -1 << 0 << QString() << false;
    QTest::newRow("right at the last column") << cards << twoColumnWidth << u"B"_s << 1 << 0 << QString() << false;
    QTest::newRow("down the column, onto a visible card")
        << cards << twoColumnWidth << u"A"_s << 0 << 1 << u"C"_s << false;
    QTest::newRow("up the column, onto a visible card")
        << cards << twoColumnWidth << u"D"_s << 0 << -1 << u"C"_s << false;
    QTest::newRow("down the column, off screen") << cards << twoColumnWidth << u"C"_s << 0 << 1 << u"D"_s << true;
    QTest::newRow("up at the top") << cards << twoColumnWidth << u"B"_s << 0 << -1 << QString() << false;
    QTest::newRow("down at the foot") << cards << twoColumnWidth << u"D"_s << 0 << 1 << QString() << false;
    QTest::newRow("nothing focused: the first item")
        << cards << twoColumnWidth << QString() << 1 << 0 << u"A"_s << true;
    QTest::newRow("focused item left the list") << cards << twoColumnWidth << u"gone"_s << 0 << 1 << u"A"_s << true;
    QTest::newRow("unknown width steps linearly") << cards << 0.0 << u"A"_s << 1 << 0 << u"B"_s << true;
    QTest::newRow("linear down by dx + dy") << cards << 0.0 << u"B"_s << 0 << 1 << u"C"_s << false;
    QTest::newRow("linear clamps at the end") << cards << 0.0 << u"E"_s << 1 << 0 << QString() << false;
    QTest::newRow("list: right acts as down")
        << int(ViewMode::list) << twoColumnWidth << u"A"_s << 1 << 0 << u"B"_s << true;
    QTest::newRow("list: left acts as up")
        << int(ViewMode::list) << twoColumnWidth << u"C"_s << -1 << 0 << u"B"_s << true;
    QTest::newRow("list: down") << int(ViewMode::list) << twoColumnWidth << u"C"_s << 0 << 1 << u"D"_s << true;
    QTest::newRow("list: nothing focused counts as the first")
        << int(ViewMode::list) << twoColumnWidth << QString() << 0 << 1 << u"B"_s << true;
    QTest::newRow("timeline ignores arrows")
        << int(ViewMode::timeline) << twoColumnWidth << u"A"_s << 0 << 1 << QString() << false;
    QTest::newRow("canvas ignores arrows")
        << int(ViewMode::canvas) << twoColumnWidth << u"A"_s << 1 << 0 << QString() << false;
}

void TestGridNav::moveFocus()
{
    QFETCH(int, mode);
    QFETCH(double, width);
    QFETCH(QString, focused);
    QFETCH(int, dx);
    QFETCH(int, dy);
    QFETCH(QString, expected);
    QFETCH(bool, reveal);
    const QList<LibraryItem> items = twoColumnItems();
    int cellBuilds = 0;
    GridNav::FocusContext context;
    context.viewMode = ViewMode(mode);
    context.gridNavWidth = width;
    context.cells = [&] {
        ++cellBuilds;
        return GridNav::estimateCells(items, 2, width, tenApart);
    };
    // Only C counts as on screen.
    context.isVisible = [](const QString &id) { return id == u"C"; };
    const auto move
        = GridNav::moveFocus(items, focused.isEmpty() ? std::nullopt : std::optional(focused), dx, dy, context);
    QCOMPARE(move.select.value_or(QString()), expected);
    QCOMPARE(move.reveal, reveal);
    // The cells are only worked out where they matter: cards with a known width.
    QCOMPARE(cellBuilds, (ViewMode(mode) == ViewMode::cards && width > 0) ? 1 : 0);
    QVERIFY(GridNav::moveFocus({}, focused, dx, dy, context).select == std::nullopt);
}

void TestGridNav::equalDistancePicksTheUpperCard()
{
    // Column 0: X (0..100, middle 50). Column 1: P (0..40, middle 20), Q (50..110, middle 80).
    const QList<LibraryItem> items{makeItem(u"X"_s, u"image"_s, 100, 100), makeItem(u"P"_s, u"image"_s, 100, 40),
        makeItem(u"Q"_s, u"image"_s, 100, 60)};
    const auto cells = GridNav::estimateCells(items, 2, twoColumnWidth, tenApart);
    QCOMPARE(cells[2].item.id, u"Q"_s);
    QCOMPARE(cells[2].top, 50.0);
    GridNav::FocusContext context;
    context.gridNavWidth = twoColumnWidth;
    context.cells = [&] { return cells; };
    QCOMPARE(GridNav::moveFocus(items, u"X"_s, 1, 0, context).select, std::optional(u"P"_s));
}

QTEST_GUILESS_MAIN(TestGridNav)
#include "tst_gridnav.moc"
