#include "understanding/itemtitles.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
using OptionalString = std::optional<QString>;
}

/** When a title says nothing, and the title made from a picture's text or tags instead. */
class TestItemTitles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void titleLooksGeneric_data()
    {
        QTest::addColumn<OptionalString>("title");
        QTest::addColumn<bool>("generic");
        QTest::newRow("absent") << OptionalString() << true;
        QTest::newRow("empty") << OptionalString(u""_s) << true;
        QTest::newRow("blank lines") << OptionalString(u"  \n\t "_s) << true;
        QTest::newRow("IMG 1234 by prefix") << OptionalString(u"IMG 1234"_s) << true;
        QTest::newRow("IMG_1234 by digit") << OptionalString(u"IMG_1234"_s) << true;
        QTest::newRow("holiday.png by extension") << OptionalString(u"holiday.png"_s) << true;
        QTest::newRow("Summer 2019") << OptionalString(u"Summer 2019"_s) << false;
        QTest::newRow("photo album") << OptionalString(u"photo album"_s) << false;
        QTest::newRow("screenshot name") << OptionalString(u"Screenshot 2024-05-01 at 10.00.00"_s) << true;
        QTest::newRow("screen shot") << OptionalString(u"Screen Shot 2020-01-01"_s) << true;
        QTest::newRow("prefix then words") << OptionalString(u"img 12 beach day"_s) << true;
        QTest::newRow("trimmed first") << OptionalString(u"\t image 5 \n"_s) << true;
        QTest::newRow("prefix alone") << OptionalString(u"photo "_s) << false;
        QTest::newRow("one word") << OptionalString(u"holiday"_s) << false;
        QTest::newRow("unlisted extension") << OptionalString(u"notes.txt"_s) << false;
        QTest::newRow("upper-case extension") << OptionalString(u"Archive.tar.PDF"_s) << true;
        QTest::newRow("only dots") << OptionalString(u"..."_s) << false;
        QTest::newRow("trailing dot") << OptionalString(u"holiday.png."_s) << true;
        QTest::newRow("extension but a blank") << OptionalString(u"Report final.pdf"_s) << false;
        QTest::newRow("tab holds words apart") << OptionalString(u"Report\tfinal.pdf"_s) << false;
        QTest::newRow("no dot, just the word") << OptionalString(u"png"_s) << false;
        QTest::newRow("camera name") << OptionalString(u"DSC00042"_s) << true;
    }
    void titleLooksGeneric()
    {
        QFETCH(OptionalString, title);
        QFETCH(bool, generic);
        QCOMPARE(kivo::ItemTitles::titleLooksGeneric(title), generic);
    }

    void titleFromContent_data()
    {
        QTest::addColumn<QStringList>("tags");
        QTest::addColumn<OptionalString>("ocrText");
        QTest::addColumn<OptionalString>("title");
        const QStringList beach{u"beach"_s, u"sea shore"_s, u"sky"_s};
        QTest::newRow("first line") << beach << OptionalString(u"Hello world\nsecond line"_s)
                                    << OptionalString(u"Hello world"_s);
        QTest::newRow("first non-empty line, trimmed")
            << beach << OptionalString(u"\n\n  Big Sale Today  \nx"_s) << OptionalString(u"Big Sale Today"_s);
        QTest::newRow("one word gives way to tags")
            << beach << OptionalString(u"Hello\nthere you are"_s) << OptionalString(u"Beach, Sea Shore"_s);
        QTest::newRow("eight words") << beach << OptionalString(u"one two three four five six seven eight"_s)
                                     << OptionalString(u"one two three four five six seven eight"_s);
        QTest::newRow("nine words") << beach << OptionalString(u"one two three four five six seven eight nine"_s)
                                    << OptionalString(u"Beach, Sea Shore"_s);
        QTest::newRow("extra blanks are no words")
            << beach << OptionalString(u"two    words"_s) << OptionalString(u"two    words"_s);
        const QString sixty = u"ab "_s.repeated(19) + u"abc"_s; // 60 characters, 20 words
        const QString sixtyShort = u"abcdefghijklmnopqrstuvwxyzabcd abcdefghijklmnopqrstuvwxyzabc"_s;
        QCOMPARE(sixtyShort.size(), 60);
        QTest::newRow("60 characters") << beach << OptionalString(sixtyShort) << OptionalString(sixtyShort);
        QTest::newRow("61 characters") << beach << OptionalString(sixtyShort + u'd')
                                       << OptionalString(u"Beach, Sea Shore"_s);
        QTest::newRow("too many words") << beach << OptionalString(sixty) << OptionalString(u"Beach, Sea Shore"_s);
        QTest::newRow("no letter") << beach << OptionalString(u"12 34"_s) << OptionalString(u"Beach, Sea Shore"_s);
        QTest::newRow("no text, tags") << QStringList{u"new york"_s, u"IPHONE case"_s, u"x"_s} << OptionalString()
                                       << OptionalString(u"New York, Iphone Case"_s);
        QTest::newRow("one tag") << QStringList{u"sea_shore"_s} << OptionalString() << OptionalString(u"Sea_shore"_s);
        QTest::newRow("empty text counts as none")
            << QStringList{u"red"_s} << OptionalString(u""_s) << OptionalString(u"Red"_s);
        QTest::newRow("nothing") << QStringList{} << OptionalString() << OptionalString();
        QTest::newRow("one word, no tags") << QStringList{} << OptionalString(u"Hello"_s) << OptionalString();
    }
    void titleFromContent()
    {
        QFETCH(QStringList, tags);
        QFETCH(OptionalString, ocrText);
        QFETCH(OptionalString, title);
        QCOMPARE(kivo::ItemTitles::titleFromContent(tags, ocrText), title);
    }
};

QTEST_GUILESS_MAIN(TestItemTitles)
#include "tst_itemtitles.moc"
