#include "core/records.h"
#include "understanding/colornaming.h"
#include "understanding/colorsearch.h"

#include <QTest>

using namespace Qt::StringLiterals;
namespace ColorSearch = kivo::ColorSearch;

namespace {

using OptionalInt = std::optional<int>;
using OptionalString = std::optional<QString>;

kivo::LibraryItem itemWith(const QString &id, const OptionalString &colors, bool hasFile)
{
    kivo::LibraryItem item;
    item.id = id;
    item.kind = u"image"_s;
    item.colors = colors;
    if (hasFile)
        item.filePath = u"2024-05/"_s + id + u".png"_s;
    return item;
}

QStringList ids(const QList<kivo::LibraryItem> &items)
{
    QStringList result;
    for (const kivo::LibraryItem &item : items)
        result.append(item.id);
    return result;
}

} // namespace

/** Colour words: the naming table, the swatch table and the queries matched against palettes. */
class TestColorSearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Hues worked out by hand from the HSB model: h = ((g - b) / (max - min)) / 6 for a red
    // maximum, (2 + (b - r) / delta) / 6 for green, (4 + (r - g) / delta) / 6 for blue.
    void colourName_data()
    {
        QTest::addColumn<QString>("hex");
        QTest::addColumn<OptionalString>("word");
        QTest::newRow("white") << u"#FFFFFF"_s << OptionalString(u"white"_s);
        QTest::newRow("grey 0.502") << u"#808080"_s << OptionalString(u"grey"_s);
        QTest::newRow("charcoal") << u"#404040"_s << OptionalString(u"charcoal"_s);
        QTest::newRow("black") << u"#000000"_s << OptionalString(u"black"_s);
        QTest::newRow("no hash") << u"FF0000"_s << OptionalString(u"red"_s);
        QTest::newRow("three digits") << u"#FFF"_s << OptionalString();
        QTest::newRow("blanks and hashes") << u" ##00ff00# "_s << OptionalString(u"green"_s);
        QTest::newRow("not hex") << u"#GG0000"_s << OptionalString();
        QTest::newRow("hex prefix") << u"0x12AB"_s << OptionalString();
        QTest::newRow("sign") << u"+FFFFF"_s << OptionalString();
        QTest::newRow("line break is no blank") << u"#FF0000\n"_s << OptionalString();
        QTest::newRow("empty") << QString() << OptionalString();
        QTest::newRow("brightness 0.157 is black") << u"#282828"_s << OptionalString(u"black"_s);
        QTest::newRow("brightness 0.165 is charcoal") << u"#29292A"_s << OptionalString(u"charcoal"_s);
        QTest::newRow("pale pink-grey is white") << u"#E0D8D8"_s << OptionalString(u"white"_s);
        QTest::newRow("hue 0.083 orange") << u"#FF8000"_s << OptionalString(u"orange"_s);
        QTest::newRow("hue 0.125 amber") << u"#FFC000"_s << OptionalString(u"amber"_s);
        QTest::newRow("hue 0.208 olive") << u"#C0FF00"_s << OptionalString(u"olive"_s);
        QTest::newRow("hue 0.333 green") << u"#00FF00"_s << OptionalString(u"green"_s);
        QTest::newRow("hue 0.459 teal") << u"#00FFC0"_s << OptionalString(u"teal"_s);
        QTest::newRow("hue 0.583 blue") << u"#0080FF"_s << OptionalString(u"blue"_s);
        QTest::newRow("hue 0.750 violet") << u"#8000FF"_s << OptionalString(u"violet"_s);
        QTest::newRow("hue 0.875 magenta") << u"#FF00C0"_s << OptionalString(u"magenta"_s);
        QTest::newRow("hue 0.958 red") << u"#FF0040"_s << OptionalString(u"red"_s);
        QTest::newRow("dark saturated navy is blue") << u"#000033"_s << OptionalString(u"blue"_s);
    }
    void colourName()
    {
        QFETCH(QString, hex);
        QFETCH(OptionalString, word);
        QCOMPARE(kivo::ColorNaming::colourName(hex), word);
    }

    void matchIndex_data()
    {
        QTest::addColumn<QStringList>("palette");
        QTest::addColumn<QString>("word");
        QTest::addColumn<OptionalInt>("index");
        const QString grey = u"#808080"_s;
        QTest::newRow("teal 008080") << QStringList{u"#008080"_s} << u"teal"_s << OptionalInt(0);
        QTest::newRow("alias cyan") << QStringList{u"#008080"_s} << u"cyan"_s << OptionalInt(0);
        QTest::newRow("red at hue 0.970") << QStringList{grey, u"#FF002E"_s} << u"red"_s << OptionalInt(1);
        QTest::newRow("red at hue 0.020") << QStringList{u"#FF1F00"_s} << u"red"_s << OptionalInt(0);
        QTest::newRow("no red at hue 0.5") << QStringList{u"#00FFFF"_s} << u"red"_s << OptionalInt();
        QTest::newRow("fourth colour") << QStringList{grey, grey, grey, u"#FF0000"_s} << u"red"_s << OptionalInt(3);
        QTest::newRow("fifth is not looked at")
            << QStringList{grey, grey, grey, grey, u"#FF0000"_s} << u"red"_s << OptionalInt();
        QTest::newRow("first of several") << QStringList{u"#FF0000"_s, u"#EE0000"_s} << u"scarlet"_s << OptionalInt(0);
        QTest::newRow("word from naming table only") << QStringList{u"#404040"_s} << u"charcoal"_s << OptionalInt();
        QTest::newRow("exact case only") << QStringList{u"#FF0000"_s} << u"Red"_s << OptionalInt();
        QTest::newRow("empty palette") << QStringList{} << u"red"_s << OptionalInt();
        QTest::newRow("unparsable skipped") << QStringList{u"nonsense"_s, u"#FF0000"_s} << u"red"_s << OptionalInt(1);
        QTest::newRow("trimmed, one hash") << QStringList{u" #ff0000\n"_s} << u"red"_s << OptionalInt(0);
        QTest::newRow("two hashes") << QStringList{u"##FF0000"_s} << u"red"_s << OptionalInt();
        QTest::newRow("no hash") << QStringList{u"FF0000"_s} << u"crimson"_s << OptionalInt(0);
        // Windows are inclusive: brightness 0.2 is both black and grey.
        QTest::newRow("black at 0.2") << QStringList{u"#333333"_s} << u"black"_s << OptionalInt(0);
        QTest::newRow("grey at 0.2") << QStringList{u"#333333"_s} << u"gray"_s << OptionalInt(0);
        QTest::newRow("white") << QStringList{u"#F5F5F5"_s} << u"white"_s << OptionalInt(0);
        QTest::newRow("saturated is no grey") << QStringList{u"#FF0000"_s} << u"silver"_s << OptionalInt();
        QTest::newRow("navy at brightness 0.4") << QStringList{u"#000066"_s} << u"navy"_s << OptionalInt(0);
        QTest::newRow("no navy at 0.5") << QStringList{u"#000080"_s} << u"navy"_s << OptionalInt();
        QTest::newRow("blue at 0.5") << QStringList{u"#000080"_s} << u"blue"_s << OptionalInt(0);
        // hue 0.125, saturation 0.8, brightness 0.8: gold, not yet yellow.
        QTest::newRow("gold") << QStringList{u"#CCA329"_s} << u"golden"_s << OptionalInt(0);
        QTest::newRow("not yellow") << QStringList{u"#CCA329"_s} << u"yellow"_s << OptionalInt();
        QTest::newRow("cream") << QStringList{u"#F5E6C8"_s} << u"off-white"_s << OptionalInt(0);
        QTest::newRow("brown") << QStringList{u"#8B4513"_s} << u"chocolate"_s << OptionalInt(0);
        QTest::newRow("pink") << QStringList{u"#FF99CC"_s} << u"pink"_s << OptionalInt(0);
        QTest::newRow("purple") << QStringList{u"#8040C0"_s} << u"lavender"_s << OptionalInt(0);
    }
    void matchIndex()
    {
        QFETCH(QStringList, palette);
        QFETCH(QString, word);
        QFETCH(OptionalInt, index);
        QCOMPARE(ColorSearch::matchIndex(palette, word), index);
    }

    void isColourQuery_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("colour");
        QTest::newRow("dark green") << u"dark green"_s << true;
        QTest::newRow("green door") << u"green door"_s << false;
        QTest::newRow("very dark") << u"very dark"_s << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("off-white splits") << u"Off-White"_s << true;
        QTest::newRow("punctuation separates") << u"Teal!"_s << true;
        QTest::newRow("digit ends a token") << u"grey2"_s << true;
        QTest::newRow("redwood") << u"redwood"_s << false;
        QTest::newRow("two colours") << u"navy, gold"_s << true;
        QTest::newRow("only separators") << u" - 42 "_s << false;
    }
    void isColourQuery()
    {
        QFETCH(QString, text);
        QFETCH(bool, colour);
        QCOMPARE(ColorSearch::isColourQuery(text), colour);
    }

    void colourWords_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("dark green") << u"dark green"_s << QStringList{u"green"_s};
        QTest::newRow("redwood") << u"redwood"_s << QStringList{u"red"_s};
        QTest::newRow("credit") << u"Credit card"_s << QStringList{u"red"_s};
        QTest::newRow("tangerine") << u"tangerine"_s << QStringList{u"brown"_s};
        QTest::newRow("off-white") << u"off-white"_s << QStringList{u"white"_s, u"cream"_s};
        QTest::newRow("table order") << u"Blue and GOLD"_s << QStringList{u"gold"_s, u"blue"_s};
        QTest::newRow("once each") << u"red crimson red"_s << QStringList{u"red"_s};
        QTest::newRow("navy blue") << u"navy blue"_s << QStringList{u"blue"_s, u"navy"_s};
        QTest::newRow("none") << u"mountains"_s << QStringList{};
    }
    void colourWords()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, words);
        QCOMPARE(ColorSearch::colourWords(text), words);
    }

    void everyWordMustMatchAndScoresAdd()
    {
        const QStringList palette{u"#FFFFFF"_s, u"#0000FF"_s, u"#FF0000"_s};
        QCOMPARE(ColorSearch::matchScore(palette, {u"blue"_s, u"red"_s}), OptionalInt(3));
        QCOMPARE(ColorSearch::matchScore(palette, {u"blue"_s, u"green"_s}), OptionalInt());
        QCOMPARE(ColorSearch::matchScore(palette, {}), OptionalInt(0));
    }

    void rankByColoursCountsAllAndListsItemsWithFiles()
    {
        // Newest first. "red" scores by the index of the first red colour.
        const QList<kivo::LibraryItem> items{
            itemWith(u"a"_s, u"[\"#FFFFFF\",\"#FF0000\"]"_s, true), // 1
            itemWith(u"b"_s, u"[\"#FF0000\"]"_s, false), // 0, but no file
            itemWith(u"c"_s, u"[\"#EE1111\",\"#FFFFFF\"]"_s, true), // 0
            itemWith(u"d"_s, u"[\"#0000FF\"]"_s, true), // no red
            itemWith(u"e"_s, std::nullopt, true), // never analysed
            itemWith(u"f"_s, u"not json"_s, true), // unreadable
            itemWith(u"g"_s, u"[\"#FFFFFF\",\"#FF0000\"]"_s, true), // 1, older than a
            itemWith(u"h"_s, u"[\"#CC0000\"]"_s, true), // 0, oldest
        };
        ColorSearch::ColourMatches matches = ColorSearch::rankByColours(items, {u"red"_s}, 10);
        QCOMPARE(matches.total, 5);
        QCOMPARE(ids(matches.items), (QStringList{u"c"_s, u"h"_s, u"a"_s, u"g"_s}));

        matches = ColorSearch::rankByColours(items, {u"red"_s}, 3);
        QCOMPARE(matches.total, 5);
        QCOMPARE(ids(matches.items), (QStringList{u"c"_s, u"h"_s, u"a"_s}));

        matches = ColorSearch::rankByColours(items, {u"red"_s, u"white"_s}, 10);
        QCOMPARE(matches.total, 3);
        QCOMPARE(ids(matches.items), (QStringList{u"a"_s, u"c"_s, u"g"_s}));
    }
};

QTEST_GUILESS_MAIN(TestColorSearch)
#include "tst_colorsearch.moc"
