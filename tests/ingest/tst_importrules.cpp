// The import pipeline's pure decisions, as tables: kinds by extension, junk titles, link titles,
// the addresses a remote import tries, and where an import goes.

#include "ingest/import/importrules.h"
#include "ingest/import/importservice.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;

using OptionalText = std::optional<QString>;
Q_DECLARE_METATYPE(OptionalText)

class TestImportRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindByExtension_data();
    void kindByExtension();
    void junkTitles_data();
    void junkTitles();
    void linkTitles_data();
    void linkTitles();
    void hostAndSiteNames_data();
    void hostAndSiteNames();
    void textTitleCountsCharacters();
    void destination_data();
    void destination();
    void candidates_data();
    void candidates();
    void fullSizeVariant_data();
    void fullSizeVariant();
};

void TestImportRules::kindByExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("kind");
    QTest::newRow("jpeg") << u"photo.jpg"_s << u"image"_s;
    QTest::newRow("upper case") << u"PHOTO.JPEG"_s << u"image"_s;
    QTest::newRow("svg") << u"icon.svg"_s << u"image"_s;
    QTest::newRow("webp") << u"scan.webp"_s << u"image"_s;
    QTest::newRow("heic") << u"IMG_0001.HEIC"_s << u"image"_s;
    QTest::newRow("mp4") << u"clip.mp4"_s << u"video"_s;
    QTest::newRow("quicktime") << u"clip.mov"_s << u"video"_s;
    QTest::newRow("audio is video") << u"song.mp3"_s << u"video"_s;
    QTest::newRow("flac") << u"take.flac"_s << u"video"_s;
    QTest::newRow("plain text") << u"notes.txt"_s << u"text"_s;
    QTest::newRow("source code is plain text") << u"main.cpp"_s << u"text"_s;
    QTest::newRow("markdown") << u"README.md"_s << u"text"_s;
    QTest::newRow("pdf") << u"paper.pdf"_s << u"file"_s;
    QTest::newRow("zip") << u"archive.zip"_s << u"file"_s;
    QTest::newRow("no extension") << u"README"_s << u"file"_s;
    QTest::newRow("whole-name pattern") << u"Makefile"_s << u"file"_s;
    QTest::newRow("unknown extension") << u"data.kivoblob"_s << u"file"_s;
}

void TestImportRules::kindByExtension()
{
    QFETCH(QString, name);
    QFETCH(QString, kind);
    QCOMPARE(rawString(ImportRules::kindForFileName(name)), kind);
}

void TestImportRules::junkTitles_data()
{
    QTest::addColumn<OptionalText>("title");
    QTest::addColumn<bool>("junk");
    QTest::newRow("absent") << OptionalText() << true;
    QTest::newRow("empty") << OptionalText(u""_s) << true;
    QTest::newRow("blank and newline") << OptionalText(u"  \n "_s) << true;
    QTest::newRow("screenshot name") << OptionalText(u"Screenshot 2024-05-01 at 10.00.00"_s) << true;
    QTest::newRow("older screenshot name") << OptionalText(u"Screen Shot 2020-01-01"_s) << true;
    QTest::newRow("camera with a blank") << OptionalText(u"IMG 2041"_s) << true;
    QTest::newRow("photo then a word") << OptionalText(u"Photo album"_s) << false;
    QTest::newRow("one word with a digit") << OptionalText(u"IMG_1234"_s) << true;
    QTest::newRow("camera roll") << OptionalText(u"DSC0042"_s) << true;
    QTest::newRow("picture file name") << OptionalText(u"holiday.jpeg"_s) << true;
    QTest::newRow("extension in capitals") << OptionalText(u"holiday.JPG"_s) << true;
    QTest::newRow("pdf name") << OptionalText(u"invoice.pdf"_s) << true;
    QTest::newRow("other file name") << OptionalText(u"report.docx"_s) << false;
    QTest::newRow("blank wins over the extension") << OptionalText(u"my holiday.jpeg"_s) << false;
    QTest::newRow("blank wins over a digit") << OptionalText(u"Top 10 chairs"_s) << false;
    QTest::newRow("a plain word") << OptionalText(u"Sunset"_s) << false;
    QTest::newRow("host of a link") << OptionalText(u"example.com"_s) << false;
    QTest::newRow("the default picture title") << OptionalText(u"Image"_s) << false;
}

void TestImportRules::junkTitles()
{
    QFETCH(OptionalText, title);
    QFETCH(bool, junk);
    QCOMPARE(ImportRules::isJunkTitle(title), junk);
}

void TestImportRules::linkTitles_data()
{
    QTest::addColumn<OptionalText>("raw");
    QTest::addColumn<QString>("address");
    QTest::addColumn<OptionalText>("title");
    QTest::newRow("counter and site cut") << OptionalText(u"(3) Feed | LinkedIn"_s)
                                          << u"https://www.linkedin.com/feed"_s << OptionalText(u"LinkedIn - Feed"_s);
    QTest::newRow("plus counter") << OptionalText(u"(12+) Feed - Facebook"_s) << u"https://m.facebook.com/"_s
                                  << OptionalText(u"Facebook - Feed"_s);
    QTest::newRow("site at the end") << OptionalText(u"Some article title - Medium"_s)
                                     << u"https://medium.com/@someone/post"_s
                                     << OptionalText(u"Medium - Some article title"_s);
    QTest::newRow("image host") << OptionalText(u"Pin on Design | Pinterest"_s) << u"https://i.pinimg.com/x.jpg"_s
                                << OptionalText(u"Pinterest - Pin on Design"_s);
    QTest::newRow("middle dot") << OptionalText(u"Shot by Someone \u00b7 Dribbble"_s)
                                << u"https://dribbble.com/shots/1"_s << OptionalText(u"Dribbble - Shot by Someone"_s);
    QTest::newRow("slash, any case") << OptionalText(u"Design systems / figma"_s) << u"https://www.figma.com/file/1"_s
                                     << OptionalText(u"Figma - Design systems"_s);
    QTest::newRow("tail inside the site name")
        << OptionalText(u"Funny cats - Tube"_s) << u"https://www.youtube.com/watch?v=1"_s
        << OptionalText(u"YouTube - Funny cats"_s);
    QTest::newRow("separator that isn't the site")
        << OptionalText(u"Cats \u2014 a story"_s) << u"https://example.org/cats"_s
        << OptionalText(u"Example - Cats \u2014 a story"_s);
    QTest::newRow("last occurrence decides") << OptionalText(u"A | B | Example"_s) << u"https://www.www.example.com/"_s
                                             << OptionalText(u"Example - A | B"_s);
    QTest::newRow("only the site is left")
        << OptionalText(u"GitHub"_s) << u"https://github.com/"_s << OptionalText(u"GitHub - GitHub"_s);
    QTest::newRow("nothing but the counter")
        << OptionalText(u"(5)"_s) << u"https://vimeo.com/1"_s << OptionalText(u"Vimeo"_s);
    QTest::newRow("no host") << OptionalText(u"  Title  "_s) << u"about:blank"_s << OptionalText(u"Title"_s);
    QTest::newRow("blank") << OptionalText(u" \n"_s) << u"https://example.com/"_s << OptionalText();
    QTest::newRow("absent") << OptionalText() << u"https://example.com/"_s << OptionalText();
    QTest::newRow("cut at 70") << OptionalText(QString(100, u'a')) << u"https://unsplash.com/photos/1"_s
                               << OptionalText(u"Unsplash - "_s + QString(59, u'a'));
}

void TestImportRules::linkTitles()
{
    QFETCH(OptionalText, raw);
    QFETCH(QString, address);
    QFETCH(OptionalText, title);
    QCOMPARE(ImportRules::linkTitle(raw, QUrl(address)), title);
}

void TestImportRules::hostAndSiteNames_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("hostTitle");
    QTest::addColumn<QString>("site");
    QTest::newRow("leading www") << u"https://www.example.com/a"_s << u"example.com"_s << u"Example"_s;
    QTest::newRow("www twice") << u"https://www.www.example.com/"_s << u"example.com"_s << u"Example"_s;
    QTest::newRow("www inside") << u"https://shop.www.example.com/"_s << u"shop.example.com"_s << u"Example"_s;
    QTest::newRow("country domain") << u"https://news.bbc.co.uk/"_s << u"news.bbc.co.uk"_s << u"Co"_s;
    QTest::newRow("one label") << u"http://localhost:8080/"_s << u"localhost"_s << u"Localhost"_s;
    QTest::newRow("X picture host") << u"https://pbs.twimg.com/media/a.jpg"_s << u"pbs.twimg.com"_s << u"X"_s;
    QTest::newRow("Google pictures") << u"https://lh3.googleusercontent.com/a"_s << u"lh3.googleusercontent.com"_s
                                     << u"Google"_s;
    QTest::newRow("no host") << u"mailto:someone@example.com"_s << u"mailto:someone@example.com"_s << QString();
}

void TestImportRules::hostAndSiteNames()
{
    QFETCH(QString, address);
    QFETCH(QString, hostTitle);
    QFETCH(QString, site);
    const QUrl url(address);
    QCOMPARE(ImportRules::hostTitle(url), hostTitle);
    QCOMPARE(ImportRules::siteName(url.host()), site);
}

void TestImportRules::textTitleCountsCharacters()
{
    const QString sixtyOne = QString(60, u'x') + u'y';
    QCOMPARE(ImportRules::textTitle(sixtyOne), QString(60, u'x'));
    // An accent written as a combining mark, and an emoji of two code units, each count once.
    const QString accented = QString(59, u'a') + u"e\u0301"_s + u"tail"_s;
    QCOMPARE(ImportRules::textTitle(accented), QString(59, u'a') + u"e\u0301"_s);
    const QString emoji = QString(59, u'a') + u"\U0001F600"_s + u"tail"_s;
    QCOMPARE(ImportRules::textTitle(emoji), QString(59, u'a') + u"\U0001F600"_s);
    QCOMPARE(ImportRules::textTitle(u"short\nnote"_s), u"short\nnote"_s);
}

void TestImportRules::destination_data()
{
    QTest::addColumn<OptionalText>("explicitId");
    QTest::addColumn<QString>("setting");
    QTest::addColumn<OptionalText>("openCollection");
    QTest::addColumn<OptionalText>("expected");
    const OptionalText inbox(u"inbox-id"_s);
    QTest::newRow("explicit wins") << OptionalText(u"c1"_s) << u"auto"_s << OptionalText(u"c2"_s)
                                   << OptionalText(u"c1"_s);
    QTest::newRow("explicit with inbox setting")
        << OptionalText(u"c1"_s) << u"inbox"_s << OptionalText() << OptionalText(u"c1"_s);
    QTest::newRow("inbox setting ignores the open one")
        << OptionalText() << u"inbox"_s << OptionalText(u"c2"_s) << inbox;
    QTest::newRow("automatic takes the open one")
        << OptionalText() << u"auto"_s << OptionalText(u"c2"_s) << OptionalText(u"c2"_s);
    QTest::newRow("automatic without one") << OptionalText() << u"auto"_s << OptionalText() << inbox;
    QTest::newRow("picker") << OptionalText() << u"picker"_s << OptionalText(u"c2"_s) << inbox;
    QTest::newRow("unknown setting is the inbox") << OptionalText() << u"elsewhere"_s << OptionalText(u"c2"_s) << inbox;
}

void TestImportRules::destination()
{
    QFETCH(OptionalText, explicitId);
    QFETCH(QString, setting);
    QFETCH(OptionalText, openCollection);
    QFETCH(OptionalText, expected);
    const auto found = ImportRules::destination(
        explicitId, ImportRules::captureDestinationFromRaw(setting), openCollection, OptionalText(u"inbox-id"_s));
    QCOMPARE(found, expected);
}

void TestImportRules::candidates_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("suffix and width") << u"https://cdn.example.com/img/photo-800x600.jpg?w=300"_s
                                      << QStringList{u"https://cdn.example.com/img/photo.jpg?w=300"_s,
                                             u"https://cdn.example.com/img/photo-800x600.jpg"_s,
                                             u"https://cdn.example.com/img/photo-800x600.jpg?w=300"_s};
    QTest::newRow("hints among other items")
        << u"https://example.com/a.png?width=10&id=7&HEIGHT=20"_s
        << QStringList{u"https://example.com/a.png?id=7"_s, u"https://example.com/a.png?width=10&id=7&HEIGHT=20"_s};
    QTest::newRow("X picture") << u"https://pbs.twimg.com/media/abc.jpg?format=jpg&name=small"_s
                               << QStringList{u"https://pbs.twimg.com/media/abc.jpg?format=jpg&name=orig"_s,
                                      u"https://pbs.twimg.com/media/abc.jpg?format=jpg&name=small"_s};
    QTest::newRow("one digit is no size")
        << u"https://example.com/a-1x1.png"_s << QStringList{u"https://example.com/a-1x1.png"_s};
    QTest::newRow("plain") << u"https://example.com/a.png"_s << QStringList{u"https://example.com/a.png"_s};
    QTest::newRow("suffix without query")
        << u"https://example.com/p/cat-1200x80.webp"_s
        << QStringList{u"https://example.com/p/cat.webp"_s, u"https://example.com/p/cat-1200x80.webp"_s};
}

void TestImportRules::candidates()
{
    QFETCH(QString, address);
    QFETCH(QStringList, expected);
    QStringList found;
    for (const QUrl &url : ImportService::candidateList(QUrl(address)))
        found.append(url.toString(QUrl::FullyEncoded));
    QCOMPARE(found, expected);
}

void TestImportRules::fullSizeVariant_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("expected");
    QTest::newRow("every name goes") << u"https://pbs.twimg.com/media/x.jpg?name=small&name=thumb"_s
                                     << u"https://pbs.twimg.com/media/x.jpg?name=orig"_s;
    QTest::newRow("other items stay") << u"https://pbs.twimg.com/media/x?format=png"_s
                                      << u"https://pbs.twimg.com/media/x?format=png&name=orig"_s;
    QTest::newRow("other host") << u"https://example.com/x.jpg?name=small"_s
                                << u"https://example.com/x.jpg?name=small"_s;
    QTest::newRow("no host") << u"file:///tmp/x.jpg"_s << u"file:///tmp/x.jpg"_s;
}

void TestImportRules::fullSizeVariant()
{
    QFETCH(QString, address);
    QFETCH(QString, expected);
    QCOMPARE(ImportService::fullSizeVariant(QUrl(address)).toString(QUrl::FullyEncoded), expected);
}

QTEST_GUILESS_MAIN(TestImportRules)
#include "tst_importrules.moc"
