// The search as the Store runs it: a keystroke waits out the debounce, a newer reload makes an
// older search stale, a failed read leaves the rows as they were, and the refresh after
// background reading re-runs the search without waiting.

#include "search/librarysearch.h"
#include "search/searchservice.h"
#include "tests/core/storeworld.h"
#include "understanding/embeddinghooks.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;
using kivo::test::idsOf;

namespace {

/** An embedding that waits for the test to let it go, so a search can be held in flight. */
class HeldMeaning final : public MeaningIndex
{
public:
    QSemaphore entered;
    QSemaphore release;

    bool isReady() const override { return true; }
    std::optional<QList<float>> embedding(const QString &) override
    {
        entered.release();
        release.acquire();
        return std::nullopt;
    }
    QList<Hit> topK(const QList<float> &, int, DatabaseQueue &) override { return {}; }
};

} // namespace

class TestSearchService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void typingWaitsAndRunsOnce();
    void aNewerReloadMakesASearchStale();
    void clearingTheTextRestoresTheListing();
    void aFailedReadKeepsTheRows();
    void readingRefreshRerunsTheSearchAtMostTwiceASecond();

private:
    std::unique_ptr<test::StoreWorld> m_world;
    QString m_harbour;
    QString m_lighthouse;
    QString m_other;
};

void TestSearchService::init()
{
    m_world = std::make_unique<test::StoreWorld>();
    m_harbour = m_world->addItem(u"image"_s, 100, [](LibraryItem &item) { item.title = u"Harbour at dusk"_s; });
    m_lighthouse = m_world->addItem(u"image"_s, 200, [](LibraryItem &item) { item.title = u"IMG_0001"_s; });
    m_other = m_world->addItem(u"text"_s, 300, [](LibraryItem &item) { item.title = u"Shopping list"_s; });
    m_world->store.reloadAll();
}

void TestSearchService::cleanup()
{
    m_world.reset();
}

void TestSearchService::typingWaitsAndRunsOnce()
{
    SearchService search(m_world->store);
    QSignalSpy applied(&search, &SearchService::resultsApplied);
    QElapsedTimer sinceLastKey;
    for (const QString &typed : {u"h"_s, u"ha"_s, u"harb"_s}) {
        sinceLastKey.start();
        m_world->store.setSearchText(typed);
    }
    QVERIFY(applied.wait(5000));
    QVERIFY2(sinceLastKey.elapsed() >= LibrarySearch::debounce.count(), "the search ran before the typing pause");
    QCOMPARE(idsOf(m_world->store.items()), QStringList{m_harbour});
    QTest::qWait(300);
    QCOMPARE(applied.size(), 1); // the first two keystrokes were never searched
}

void TestSearchService::aNewerReloadMakesASearchStale()
{
    SearchService search(m_world->store);
    auto meaning = std::make_shared<HeldMeaning>();
    search.setMeaningIndex(meaning);
    QSignalSpy applied(&search, &SearchService::resultsApplied);

    m_world->store.setSearchText(u"harbour"_s);
    m_world->store.reloadItems(false);
    QVERIFY(meaning->entered.tryAcquire(1, 5000)); // the search is in flight, on its meaning step
    m_world->store.setSelection(SidebarSelection::favourites()); // clears the text: a plain listing
    meaning->release.release();
    QTest::qWait(400);
    QCOMPARE(applied.size(), 0);
    QVERIFY(m_world->store.items().isEmpty()); // Favourites, not the stale search's harbour
    QCOMPARE(m_world->store.searchText(), QString());
}

void TestSearchService::clearingTheTextRestoresTheListing()
{
    SearchService search(m_world->store);
    QSignalSpy applied(&search, &SearchService::resultsApplied);
    m_world->store.setSearchText(u"shopping"_s);
    QVERIFY(applied.wait(5000));
    QCOMPARE(idsOf(m_world->store.items()), QStringList{m_other});
    m_world->store.setSearchText(QString());
    // The plain listing comes back at once, without a search.
    QCOMPARE(idsOf(m_world->store.items()), (QStringList{m_other, m_lighthouse, m_harbour}));
}

void TestSearchService::aFailedReadKeepsTheRows()
{
    SearchService search(m_world->store);
    QSignalSpy applied(&search, &SearchService::resultsApplied);
    QSignalSpy failed(&search, &SearchService::searchFailed);
    m_world->store.setSearchText(u"harbour"_s);
    QVERIFY(applied.wait(5000));
    const QList<LibraryItem> before = m_world->store.items();

    test::LogCapture log;
    m_world->db().write([](Database &db) {
        db.execute(u"DROP TRIGGER item_au"_s);
        db.execute(u"DROP TABLE itemFTS"_s);
    });
    m_world->store.reloadItems(false);
    QVERIFY(failed.wait(5000));
    QCOMPARE(log.linesStartingWith(u"[Store] reloadItems failed: "_s).size(), 1);
    QVERIFY(log.contains(u"itemFTS"_s));
    QCOMPARE(m_world->store.items(), before);
}

void TestSearchService::readingRefreshRerunsTheSearchAtMostTwiceASecond()
{
    SearchService search(m_world->store);
    QSignalSpy applied(&search, &SearchService::resultsApplied);
    m_world->store.setSearchText(u"lighthouse"_s);
    QVERIFY(applied.wait(5000));
    QVERIFY(m_world->store.items().isEmpty());

    // Background reading finds the word in a picture, and says so for a burst of items.
    m_world->db().write([&](Database &db) {
        db.execute(u"UPDATE item SET ocrText = ? WHERE id = ?"_s, {u"Old lighthouse road"_s, m_lighthouse});
    });
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 20; ++i)
        m_world->store.noteEnrichmentFinished();
    QVERIFY(applied.wait(5000));
    QVERIFY(clock.elapsed() >= 450);
    QCOMPARE(idsOf(m_world->store.items()), QStringList{m_lighthouse});
    QTest::qWait(700);
    QCOMPARE(applied.size(), 2); // the burst made one refresh

    m_world->store.noteEnrichmentFinished();
    QVERIFY(applied.wait(5000)); // and a later item another
    QCOMPARE(applied.size(), 3);
}

QTEST_GUILESS_MAIN(TestSearchService)
#include "tst_searchservice.moc"
