#include "tests/testsupport.h"
#include "understanding/nounlexicon.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using kivo::NounLexicon;

namespace {

// A licence block first, as in the real lists, then "lemma pos senses ...".
QByteArray indexFile(const QByteArray &lines)
{
    return "  1 This software and database is being provided\n  2 under a licence.\n" + lines;
}

} // namespace

/** The noun lexicon: reading WordNet's lists, inflections, and the choice between noun and verb. */
class TestNounLexicon : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kivo::test::Sandbox> m_sandbox;
    std::shared_ptr<const NounLexicon> m_small;

private Q_SLOTS:
    void initTestCase()
    {
        m_sandbox = std::make_unique<kivo::test::Sandbox>();
        const QString folder = m_sandbox->path() + u"/wordnet"_s;
        kivo::test::writeFile(folder + u"/index.noun"_s,
            indexFile("cat n 8 3 @ ~ #m 8 5 02121808 02121620\n"
                      "mouse n 4 2 @ ~ 4 1 02330245\n"
                      "box n 10 1 @ 10 3 02883344\n"
                      "woman n 4 1 @ 4 3 10787470\n"
                      "make n 2 1 @ 2 0 05845140\n"
                      "design n 7 1 @ 7 2 03179318\n"
                      "sea_shore n 1 1 @ 1 0 09433442\n"
                      "are n 1 1 @ 1 0 13600404\n"
                      "free n 1 1 @ 1 0 09981540\n"
                      "fly n 2 1 @ 2 0 02190166\n"));
        kivo::test::writeFile(folder + u"/index.verb"_s,
            indexFile("cat v 2 1 @ 2 0 00076400\n"
                      "make v 49 1 @ 49 30 01617192\n"
                      "design v 7 1 @ 7 3 01633843\n"
                      "fly v 14 1 @ 14 4 01940403\n"));
        kivo::test::writeFile(folder + u"/index.adj"_s, indexFile("free a 11 1 & 11 5 01058914\n"));
        kivo::test::writeFile(folder + u"/noun.exc"_s, "mice mouse\nwomen woman\n");
        kivo::test::writeFile(folder + u"/verb.exc"_s, "flew fly\n");
        m_small = NounLexicon::load(folder);
        QVERIFY(m_small);
        QCOMPARE(m_small->nounCount(), 9); // the phrase is left out
    }

    void cleanupTestCase() { m_sandbox.reset(); }

    void nounsOfTheSmallLists_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<bool>("noun");
        QTest::newRow("listed") << u"cat"_s << true;
        QTest::newRow("any case") << u"Cat"_s << true;
        QTest::newRow("plural -s") << u"cats"_s << true;
        QTest::newRow("plural -xes") << u"boxes"_s << true;
        QTest::newRow("irregular plural") << u"mice"_s << true;
        QTest::newRow("irregular -men") << u"women"_s << true;
        QTest::newRow("equal noun and verb senses") << u"designs"_s << true;
        QTest::newRow("mostly a verb") << u"make"_s << false;
        QTest::newRow("verb form of a mostly-verb") << u"makes"_s << false;
        QTest::newRow("mostly an adjective") << u"free"_s << false;
        QTest::newRow("verb exception") << u"flew"_s << false;
        QTest::newRow("function word") << u"are"_s << false;
        QTest::newRow("phrase part") << u"sea"_s << false;
        QTest::newRow("unlisted") << u"quickly"_s << false;
        QTest::newRow("empty") << QString() << false;
    }
    void nounsOfTheSmallLists()
    {
        QFETCH(QString, word);
        QFETCH(bool, noun);
        QCOMPARE(m_small->isNoun(word), noun);
    }

    void missingListsGiveNoLexicon()
    {
        QVERIFY(!NounLexicon::load(m_sandbox->path() + u"/nowhere"_s));
        const QString empty = m_sandbox->path() + u"/empty"_s;
        kivo::test::writeFile(empty + u"/index.noun"_s, indexFile(""));
        QVERIFY(!NounLexicon::load(empty));
    }

    void systemLexiconKnowsCommonNouns_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<bool>("noun");
        for (const char *noun : {"bread", "children", "geese", "paris", "trails", "mountains", "kitchen", "recipe",
                 "designs", "photography", "boxes"})
            QTest::newRow(noun) << QString::fromLatin1(noun) << true;
        for (const char *other : {"make", "get", "the", "are", "quickly", "beautiful", "how", "will", "with"})
            QTest::newRow(other) << QString::fromLatin1(other) << false;
    }
    void systemLexiconKnowsCommonNouns()
    {
        if (!QFileInfo::exists(QString::fromLatin1(NounLexicon::systemFolder) + u"/index.noun"_s))
            QSKIP("wordnet-base is not installed");
        QFETCH(QString, word);
        QFETCH(bool, noun);
        const auto lexicon = NounLexicon::shared();
        QVERIFY(lexicon);
        QVERIFY(lexicon->nounCount() > 50000);
        QCOMPARE(lexicon->isNoun(word), noun);
    }

    void systemLexiconLoadsQuickly()
    {
        if (!QFileInfo::exists(QString::fromLatin1(NounLexicon::systemFolder) + u"/index.noun"_s))
            QSKIP("wordnet-base is not installed");
        QElapsedTimer timer;
        timer.start();
        const auto lexicon = NounLexicon::load(QString::fromLatin1(NounLexicon::systemFolder));
        QVERIFY(lexicon);
        // Loaded once per process; a generous bound that still catches an accidental quadratic read.
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed()) + u" ms"_s));
    }
};

QTEST_GUILESS_MAIN(TestNounLexicon)
#include "tst_nounlexicon.moc"
