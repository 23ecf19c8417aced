// The fusion of rankings and the use score, against orders and figures worked out by hand.

#include "search/librarysearch.h"
#include "search/rankfusion.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

constexpr double day = 86400;
constexpr double now = 1700000000;

LibraryItem item(const QString &id, double addedAt = 0, const QString &title = {})
{
    LibraryItem made;
    made.id = id;
    made.kind = u"image"_s;
    made.addedAt = addedAt;
    if (!title.isEmpty())
        made.title = title;
    return made;
}


/** Narrow rows as a search ranks them; an id has the same rowid in every list, as in a library. */
QList<SearchHit> hits(const QStringList &ids)
{
    static QHash<QString, qint64> rowids;
    QList<SearchHit> made;
    for (const QString &id : ids) {
        const qint64 rowid = rowids.value(id, rowids.size() + 1);
        rowids.insert(id, rowid);
        made.append(SearchHit{rowid, id, 0, 0, std::nullopt});
    }
    return made;
}

template<typename Item>
QStringList idsOf(const QList<Item> &list)
{
    QStringList ids;
    for (const Item &entry : list)
        ids.append(entry.id);
    return ids;
}

LibraryItem opened(const QString &id, qint64 count, std::optional<double> daysAgo)
{
    LibraryItem made = item(id);
    made.openCount = count;
    if (daysAgo)
        made.lastOpenedAt = now - *daysAgo * day;
    return made;
}

} // namespace

class TestRankFusion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fusesTheFourListsWithTheirWeights_data();
    void fusesTheFourListsWithTheirWeights();
    void laterCopiesReplaceEarlierOnes();
    void equalScoresGoNewestFirst();
    void useScoreHalvesEveryThirtyDays_data();
    void useScoreHalvesEveryThirtyDays();
    void useListKeepsOnlyUsedThingsMostUsedFirst();
};

void TestRankFusion::fusesTheFourListsWithTheirWeights_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("meaning");
    QTest::addColumn<QStringList>("colours");
    QTest::addColumn<QStringList>("use");
    QTest::addColumn<QStringList>("expected");

    // A 1.3/60 = .02167; B 1.3/61 + 1.6/60 = .04798; C 1.3/62 + .6/60 = .03097; D .6/61 = .00984.
    QTest::newRow("words, colours and use")
        << QStringList{u"A"_s, u"B"_s, u"C"_s} << QStringList{} << QStringList{u"C"_s, u"D"_s} << QStringList{u"B"_s}
        << QStringList{u"B"_s, u"C"_s, u"A"_s, u"D"_s};
    // A 1.3/60 = .02167 against B, found by colour and opened often: .6/60 + 1.6/60 = .03667.
    QTest::newRow("use outranks the top word hit") << QStringList{u"A"_s} << QStringList{} << QStringList{u"B"_s}
                                                   << QStringList{u"B"_s} << QStringList{u"B"_s, u"A"_s};
    // ...unless the word hit is used too: A 1.3/60 + 1.6/60 = .04833 beats B .6/60 + 1.6/61 = .03623.
    QTest::newRow("a used word hit keeps the top") << QStringList{u"A"_s} << QStringList{} << QStringList{u"B"_s}
                                                   << QStringList{u"A"_s, u"B"_s} << QStringList{u"A"_s, u"B"_s};
    // X 1/60 + .6/61 = .026503, Y 1/61 + .6/60 = .026393: meaning weighs more than colour.
    QTest::newRow("meaning before colour")
        << QStringList{} << QStringList{u"X"_s, u"Y"_s} << QStringList{u"Y"_s, u"X"_s} << QStringList{}
        << QStringList{u"X"_s, u"Y"_s};
    // Word rank 3 (1.3/63 = .020635) against meaning rank 0 (1/60 = .016667) and colour rank 0 (.01).
    QTest::newRow("one list each") << QStringList{u"W0"_s, u"W1"_s, u"W2"_s, u"W3"_s} << QStringList{u"M"_s}
                                   << QStringList{u"C"_s} << QStringList{}
                                   << QStringList{u"W0"_s, u"W1"_s, u"W2"_s, u"W3"_s, u"M"_s, u"C"_s};
    QTest::newRow("nothing found") << QStringList{} << QStringList{} << QStringList{} << QStringList{} << QStringList{};
}

void TestRankFusion::fusesTheFourListsWithTheirWeights()
{
    QFETCH(QStringList, words);
    QFETCH(QStringList, meaning);
    QFETCH(QStringList, colours);
    QFETCH(QStringList, use);
    QFETCH(QStringList, expected);
    const LibrarySearch::Lists lists{hits(words), hits(meaning), hits(colours), hits(use)};
    QCOMPARE(idsOf(LibrarySearch::fuse(lists)), expected);
}

void TestRankFusion::laterCopiesReplaceEarlierOnes()
{
    const QList<LibraryItem> fused = RankFusion::fuse(
        {{1.3, {item(u"A"_s, 0, u"as the words saw it"_s)}}, {0.6, {item(u"A"_s, 0, u"as the colours saw it"_s)}}},
        60.0);
    QCOMPARE(fused.size(), 1);
    QCOMPARE(fused.constFirst().title, u"as the colours saw it"_s);
}

void TestRankFusion::equalScoresGoNewestFirst()
{
    const QList<LibraryItem> fused = RankFusion::fuse({{1.0, {item(u"old"_s, 100)}}, {1.0, {item(u"new"_s, 200)}},
                                                          {1.0, {item(u"b"_s, 50)}}, {1.0, {item(u"a"_s, 50)}}},
        60.0);
    QCOMPARE(idsOf(fused), (QStringList{u"new"_s, u"old"_s, u"a"_s, u"b"_s}));
}

void TestRankFusion::useScoreHalvesEveryThirtyDays_data()
{
    QTest::addColumn<qint64>("openCount");
    QTest::addColumn<double>("daysAgo"); // negative: never opened
    QTest::addColumn<double>("expected");

    QTest::newRow("today") << qint64(4) << 0.0 << 4.0;
    QTest::newRow("one half-life") << qint64(4) << 30.0 << 2.0;
    QTest::newRow("two half-lives") << qint64(4) << 60.0 << 1.0;
    QTest::newRow("a clock behind counts as today") << qint64(4) << -0.5 << 4.0;
    QTest::newRow("never opened") << qint64(0) << 1.0 << 0.0;
}

void TestRankFusion::useScoreHalvesEveryThirtyDays()
{
    QFETCH(qint64, openCount);
    QFETCH(double, daysAgo);
    QFETCH(double, expected);
    QCOMPARE(RankFusion::useScore(opened(u"x"_s, openCount, daysAgo), now, 30.0), expected);
    QCOMPARE(RankFusion::useScore(opened(u"x"_s, openCount, std::nullopt), now, 30.0), 0.0);
}

void TestRankFusion::useListKeepsOnlyUsedThingsMostUsedFirst()
{
    // P: 2 today = 2; Q: 8 sixty days ago = 2 (a tie keeps the given order); R: 3 today = 3.
    const QList<LibraryItem> candidates{opened(u"never"_s, 0, std::nullopt), opened(u"P"_s, 2, 0),
        opened(u"Q"_s, 8, 60), opened(u"R"_s, 3, 0), opened(u"noTime"_s, 5, std::nullopt)};
    QCOMPARE(idsOf(RankFusion::useList(candidates, now, 30.0)), (QStringList{u"R"_s, u"P"_s, u"Q"_s}));
}

QTEST_GUILESS_MAIN(TestRankFusion)
#include "tst_rankfusion.moc"
