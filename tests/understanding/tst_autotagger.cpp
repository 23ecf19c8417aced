#include "core/database.h"
#include "core/records.h"
#include "tests/testsupport.h"
#include "understanding/autotagger.h"
#include "understanding/imageclassifier.h"
#include "understanding/nounlexicon.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::Database;
using kivo::DatabaseQueue;
namespace AutoTagger = kivo::AutoTagger;

namespace {

using OptionalString = std::optional<QString>;
using Observations = QList<kivo::ClassifierObservation>;

bool systemLexiconInstalled()
{
    return QFileInfo::exists(QString::fromLatin1(kivo::NounLexicon::systemFolder) + u"/index.noun"_s);
}

} // namespace

/** Automatic tags: link words with and without the noun lexicon, label and colour tags, and writing them. */
class TestAutoTagger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Rules that hold with or without a lexicon: the domain word and the plain-word split.
    void plainWordTags_data()
    {
        QTest::addColumn<OptionalString>("title");
        QTest::addColumn<OptionalString>("note");
        QTest::addColumn<OptionalString>("url");
        QTest::addColumn<QStringList>("tags");
        QTest::newRow("nothing, one-label host")
            << OptionalString() << OptionalString() << OptionalString(u"http://localhost/some/page"_s) << QStringList{};
        QTest::newRow("registered name") << OptionalString() << OptionalString()
                                         << OptionalString(u"https://www.example.com/a"_s) << QStringList{u"example"_s};
        QTest::newRow("subdomain") << OptionalString() << OptionalString()
                                   << OptionalString(u"https://blog.kivo-app.io/post"_s) << QStringList{u"kivo-app"_s};
        QTest::newRow("country suffix label too short")
            << OptionalString() << OptionalString() << OptionalString(u"https://shop.example.co.uk"_s) << QStringList{};
        QTest::newRow("not a url") << OptionalString() << OptionalString() << OptionalString(u"not a url"_s)
                                   << QStringList{};
        QTest::newRow("plain words in order, four at most")
            << OptionalString(u"Best hiking trails in Norway, 2024 edition"_s) << OptionalString() << OptionalString()
            << QStringList{u"best"_s, u"hiking"_s, u"trails"_s, u"norway"_s};
        QTest::newRow("title and note joined")
            << OptionalString(u"Ox"_s) << OptionalString(u"Moose"_s) << OptionalString() << QStringList{u"moose"_s};
        QTest::newRow("24 letters pass, 25 do not")
            << OptionalString(u"abcdefghijklmnopqrstuvwxy abcdefghijklmnopqrstuvwx"_s) << OptionalString()
            << OptionalString() << QStringList{u"abcdefghijklmnopqrstuvwx"_s};
        QTest::newRow("digits alone refused")
            << OptionalString(u"2024 1999 mp3"_s) << OptionalString() << OptionalString() << QStringList{u"mp3"_s};
        QTest::newRow("stop words only") << OptionalString(u"Welcome to our home page"_s) << OptionalString()
                                         << OptionalString(u"https://www.kivo.app/"_s) << QStringList{u"kivo"_s};
        QTest::newRow("each word once") << OptionalString(u"Bread bread BREAD"_s) << OptionalString()
                                        << OptionalString() << QStringList{u"bread"_s};
        QTest::newRow("domain word first, not repeated")
            << OptionalString(u"Example of examples"_s) << OptionalString() << OptionalString(u"https://example.org"_s)
            << QStringList{u"example"_s, u"examples"_s};
        QTest::newRow("www removed everywhere")
            << OptionalString() << OptionalString() << OptionalString(u"https://www.awww.com"_s) << QStringList{};
        QTest::newRow("accented letters") << OptionalString(u"Crème brûlée façile"_s) << OptionalString()
                                          << OptionalString() << QStringList{u"crème"_s, u"brûlée"_s, u"façile"_s};
    }
    void plainWordTags()
    {
        QFETCH(OptionalString, title);
        QFETCH(OptionalString, note);
        QFETCH(OptionalString, url);
        QFETCH(QStringList, tags);
        QCOMPARE(AutoTagger::linkTags(title, note, url, nullptr), tags);
    }

    // With WordNet: the nouns of the text, and plain words only when nouns give fewer than two.
    void nounTags_data()
    {
        QTest::addColumn<OptionalString>("title");
        QTest::addColumn<OptionalString>("note");
        QTest::addColumn<OptionalString>("url");
        QTest::addColumn<QStringList>("tags");
        QTest::newRow("verbs and fillers left out")
            << OptionalString(u"How to make sourdough bread at home"_s) << OptionalString()
            << OptionalString(u"https://www.bbc.co.uk/food"_s) << QStringList{u"sourdough"_s, u"bread"_s};
        QTest::newRow("domain then nouns, cut to four")
            << OptionalString(u"A guide to kitchen knives, cutting boards and recipes"_s) << OptionalString()
            << OptionalString(u"https://www.seriouseats.com/x"_s)
            << QStringList{u"seriouseats"_s, u"guide"_s, u"kitchen"_s, u"knives"_s};
        QTest::newRow("possessive split off") << OptionalString(u"Kivo's design notes"_s) << OptionalString()
                                              << OptionalString() << QStringList{u"design"_s, u"notes"_s};
        QTest::newRow("one noun, plain words fill up")
            << OptionalString(u"Get started quickly with recipes"_s) << OptionalString() << OptionalString()
            << QStringList{u"recipes"_s, u"get"_s, u"started"_s, u"quickly"_s};
        QTest::newRow("stop words only") << OptionalString(u"Welcome to our home page"_s) << OptionalString()
                                         << OptionalString(u"https://www.kivo.app/"_s) << QStringList{u"kivo"_s};
        QTest::newRow("note counts too") << OptionalString() << OptionalString(u"Saved for the mountain cabin"_s)
                                         << OptionalString() << QStringList{u"mountain"_s, u"cabin"_s};
    }
    void nounTags()
    {
        if (!systemLexiconInstalled())
            QSKIP("wordnet-base is not installed");
        QFETCH(OptionalString, title);
        QFETCH(OptionalString, note);
        QFETCH(OptionalString, url);
        QFETCH(QStringList, tags);
        QCOMPARE(AutoTagger::linkTags(title, note, url), tags);
    }

    void labelTags_data()
    {
        QTest::addColumn<Observations>("observations");
        QTest::addColumn<QStringList>("tags");
        QTest::newRow("none") << Observations{} << QStringList{};
        QTest::newRow("floor is exclusive, recall required")
            << Observations{{u"sky"_s, 0.2, true}, {u"sea_shore"_s, 0.21, true}, {u"sand"_s, 0.9, false}}
            << QStringList{u"sea shore"_s};
        QTest::newRow("classifier's order and wording, six at most")
            << Observations{{u"b"_s, 0.3, true}, {u"a"_s, 0.9, true}, {u"c_d_e"_s, 0.5, true}, {u"F"_s, 0.5, true},
                   {u"x"_s, 0.1, true}, {u"g"_s, 0.5, true}, {u"h"_s, 0.5, true}, {u"i"_s, 0.5, true}}
            << QStringList{u"b"_s, u"a"_s, u"c d e"_s, u"F"_s, u"g"_s, u"h"_s};
    }
    void labelTags()
    {
        QFETCH(Observations, observations);
        QFETCH(QStringList, tags);
        QCOMPARE(kivo::ImageClassifier::labelTags(observations), tags);
    }

    void absentClassifierSeesNothing()
    {
        QImage picture(32, 32, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QCOMPARE(kivo::AbsentImageClassifier().classify(picture), QStringList{});
    }

    void colourFallback_data()
    {
        QTest::addColumn<QStringList>("tags");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QStringList>("palette");
        QTest::addColumn<QStringList>("result");
        QTest::newRow("very dark picture")
            << QStringList{} << u"image"_s << QStringList{u"#0A0A0A"_s, u"#FF0000"_s} << QStringList{u"black"_s};
        QTest::newRow("video frame") << QStringList{} << u"video"_s << QStringList{u"#FF0000"_s}
                                     << QStringList{u"red"_s};
        QTest::newRow("file") << QStringList{} << u"file"_s << QStringList{u"#404040"_s} << QStringList{u"charcoal"_s};
        QTest::newRow("tags stand") << QStringList{u"dog"_s} << u"image"_s << QStringList{u"#FF0000"_s}
                                    << QStringList{u"dog"_s};
        QTest::newRow("link") << QStringList{} << u"link"_s << QStringList{u"#FF0000"_s} << QStringList{};
        QTest::newRow("text") << QStringList{} << u"text"_s << QStringList{u"#FF0000"_s} << QStringList{};
        QTest::newRow("no palette") << QStringList{} << u"image"_s << QStringList{} << QStringList{};
        QTest::newRow("unnameable") << QStringList{} << u"image"_s << QStringList{u"bad"_s} << QStringList{};
    }
    void colourFallback()
    {
        QFETCH(QStringList, tags);
        QFETCH(QString, kind);
        QFETCH(QStringList, palette);
        QFETCH(QStringList, result);
        QCOMPARE(AutoTagger::withColourFallback(tags, kind, palette), result);
    }

    void applyTagWritesAcceptedTagsAndKeepsTheUsers()
    {
        kivo::test::Sandbox sandbox;
        QDir().mkpath(sandbox.libraryRoot());
        const auto queue = DatabaseQueue::open(sandbox.libraryRoot() + u"/library.sqlite"_s);
        kivo::LibraryItem item;
        item.id = kivo::newIdentifier();
        item.kind = u"image"_s;
        item.createdAt = item.addedAt = item.modifiedAt = 1;
        const QString userTag = kivo::newIdentifier();
        const QString otherTag = kivo::newIdentifier();
        queue->write([&](Database &db) {
            db.insert(item);
            db.insert(kivo::Tag{userTag, u"beach"_s});
            db.insert(kivo::Tag{otherTag, u"Sky"_s});
            db.insert(kivo::ItemTag{item.id, userTag, u"user"_s, u"accepted"_s, 5});
        });

        queue->write([&](Database &db) {
            AutoTagger::applyTag(db, item.id, u"beach"_s, 10); // the user's tag stays as it is
            AutoTagger::applyTag(db, item.id, u"sea shore"_s, 10); // a new tag
            AutoTagger::applyTag(db, item.id, u"sea shore"_s, 11); // once only
            AutoTagger::applyTag(db, item.id, u"Beach"_s, 12); // same tag in another case
            AutoTagger::applyTag(db, item.id, u"sky"_s, 13); // joins the existing "Sky"
        });

        const QStringList rows = queue->read([&](Database &db) {
            QStringList result;
            db.forEach(u"SELECT t.id, t.name, it.source, it.status, it.addedAt FROM itemTag it "
                       "JOIN tag t ON t.id = it.tagId WHERE it.itemId = ? ORDER BY it.addedAt"_s,
                {item.id}, [&](const kivo::Row &row) {
                    const QString id = row.text(0);
                    const QString shownId = id == userTag ? u"user-tag"_s : id == otherTag ? u"sky-tag"_s : u"new"_s;
                    result.append(
                        u"%1|%2|%3|%4|%5"_s.arg(shownId, row.text(1), row.text(2), row.text(3)).arg(row.real(4)));
                });
            return result;
        });
        QCOMPARE(rows,
            (QStringList{u"user-tag|beach|user|accepted|5"_s, u"new|sea shore|ai|accepted|10"_s,
                u"sky-tag|Sky|ai|accepted|13"_s}));
        const qint64 tags
            = queue->read([](Database &db) { return db.fetchScalar(u"SELECT COUNT(*) FROM tag"_s).toLongLong(); });
        QCOMPARE(tags, 3);
        const QString newId = queue->read(
            [](Database &db) { return db.fetchScalar(u"SELECT id FROM tag WHERE name = 'sea shore'"_s).toString(); });
        QCOMPARE(newId, newId.toLower());
        QCOMPARE(newId.size(), 36);
    }
};

QTEST_GUILESS_MAIN(TestAutoTagger)
#include "tst_autotagger.moc"
