// The fused search over a real library: the word query with quoted prefix terms, the title split,
// every selection's scope, colour words against stored palettes, the meaning list's floor and the
// use list, each against orders worked out by hand from the rows seeded here.

#include "core/itemqueries.h"
#include "search/librarysearch.h"
#include "search/wordquery.h"
#include "tests/core/storeworld.h"
#include "understanding/embeddinghooks.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using namespace kivo;
using kivo::test::idsOf;

namespace {

constexpr double now = 1700000000;
constexpr double day = 86400;

/** Fixed nearest pictures for a query, standing in for the image embeddings. */
class FixedMeaning final : public MeaningIndex
{
public:
    bool ready = true;
    QList<Hit> hits;
    QString askedText;
    int askedK = 0;

    bool isReady() const override { return ready; }
    std::optional<QList<float>> embedding(const QString &text) override
    {
        askedText = text;
        return QList<float>{1.0F};
    }
    QList<Hit> topK(const QList<float> &, int k, DatabaseQueue &) override
    {
        askedK = k;
        return hits;
    }
};

} // namespace

class TestLibrarySearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void wordsBecomeQuotedPrefixStrings_data();
    void wordsBecomeQuotedPrefixStrings();
    void eachSelectionKeepsItsScope_data();
    void eachSelectionKeepsItsScope();
    void operatorsAndQuotesAreTakenLiterally_data();
    void operatorsAndQuotesAreTakenLiterally();
    void onlyTheFirstWordIsLookedForInTags();
    void anInboxThatIsNotThereFindsNothing();
    void colourWordsFindPalettes_data();
    void colourWordsFindPalettes();
    void useReordersWhatWasFound();
    void meaningListKeepsHitsAboveTheFloor();
    void semanticIdsNeedAReadyIndex();

private:
    [[nodiscard]] QStringList search(
        const QString &query, const QString &selectionKey, const QStringList &semanticIds = {}) const;
    [[nodiscard]] QString idOf(const QString &name) const { return m_ids.value(name); }
    [[nodiscard]] QStringList idsOfNames(const QStringList &names) const;

    std::unique_ptr<test::StoreWorld> m_world;
    QHash<QString, QString> m_ids; // name -> id
    QString m_collectionId;
};

void TestLibrarySearch::init()
{
    m_world = std::make_unique<test::StoreWorld>();
    m_ids.clear();
    const auto add = [&](const QString &name, const QString &kind, double addedAt,
                         const std::function<void(LibraryItem &)> &tweak) {
        m_ids.insert(name, m_world->addItem(kind, addedAt, tweak));
    };
    // Palettes: #C81E1E is red, #1E6E32 dark green, #1E3CC8 blue, #F0F0F0 white.
    add(u"harbour"_s, u"image"_s, 100, [](LibraryItem &item) {
        item.title = u"Harbour at dusk"_s;
        item.colors = uR"(["#C81E1E","#F0F0F0"])"_s;
    });
    add(u"notes"_s, u"text"_s, 200, [](LibraryItem &item) {
        item.title = u"Weekly notes"_s;
        item.note = u"The harbour office opens at nine"_s;
    });
    add(u"sign"_s, u"image"_s, 300, [](LibraryItem &item) {
        item.title = u"IMG_0042"_s;
        item.ocrText = u"Harbourmaster\nparking only"_s;
        item.colors = uR"(["#F0F0F0","#1E6E32"])"_s;
    });
    add(u"tagged"_s, u"link"_s, 400, [](LibraryItem &item) {
        item.title = u"A page"_s;
        item.sourceURL = u"https://example.org/a"_s;
    });
    add(u"hidden"_s, u"image"_s, 500, [](LibraryItem &item) {
        item.title = u"Red harbour boat"_s;
        item.hiddenAt = 550;
        item.colors = uR"(["#C81E1E"])"_s;
    });
    add(u"trashed"_s, u"image"_s, 600, [](LibraryItem &item) {
        item.title = u"Harbour trashed"_s;
        item.deletedAt = 650;
        item.colors = uR"(["#C81E1E"])"_s;
    });
    add(u"favourite"_s, u"image"_s, 700, [](LibraryItem &item) {
        item.title = u"Blue door"_s;
        item.note = u"harbour view"_s;
        item.favourite = true;
        item.colors = uR"(["#1E3CC8","#F0F0F0"])"_s;
    });
    // The fifth colour is never looked at: this red picture does not answer to "red".
    add(u"fifthRed"_s, u"image"_s, 800, [](LibraryItem &item) {
        item.title = u"Plain"_s;
        item.colors = uR"(["#F0F0F0","#F1F1F1","#F2F2F2","#F3F3F3","#C81E1E"])"_s;
    });
    m_world->seed([&](test::Seed &seed) {
        seed.db().insert(Tag{u"t1"_s, u"harbourside"_s});
        seed.db().insert(ItemTag{idOf(u"tagged"_s), u"t1"_s, u"user"_s, u"accepted"_s, 410});
    });
    m_collectionId = m_world->addCollection(u"Boats"_s);
    m_world->addMembership(idOf(u"sign"_s), m_collectionId, 310);
    m_world->addMembership(idOf(u"notes"_s), m_collectionId, 210);
    m_world->addMembership(idOf(u"harbour"_s), *m_world->store.inboxId(), 110);
}

void TestLibrarySearch::cleanup()
{
    m_world.reset();
}

QStringList TestLibrarySearch::search(
    const QString &query, const QString &selectionKey, const QStringList &semanticIds) const
{
    const auto selection = SidebarSelection::fromKey(selectionKey);
    Q_ASSERT(selection);
    const LibrarySearch::Scope scope{*selection, m_world->store.inboxId()};
    return idsOf(m_world->db().read(
        [&](Database &db) { return LibrarySearch::searchItems(db, query, semanticIds, scope, now); }));
}

QStringList TestLibrarySearch::idsOfNames(const QStringList &names) const
{
    QStringList ids;
    for (const QString &name : names)
        ids.append(name == u"collection" ? m_collectionId : idOf(name));
    return ids;
}

void TestLibrarySearch::wordsBecomeQuotedPrefixStrings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("match");
    QTest::addColumn<QString>("tagPattern");

    QTest::newRow("two words") << u"red car"_s << uR"("red"* "car"*)"_s << u"%red%"_s;
    QTest::newRow("blanks around") << u"  harbour \t lights\n"_s << uR"("harbour"* "lights"*)"_s << u"%harbour%"_s;
    QTest::newRow("quoted by the user") << uR"("red")"_s << uR"("red"*)"_s << u"%red%"_s;
    QTest::newRow("a quote inside") << uR"(O"Brien)"_s << uR"("OBrien"*)"_s << u"%OBrien%"_s;
    QTest::newRow("operators stay inside") << u"a*:b NEAR(x) -y"_s << uR"q("a*:b"* "NEAR(x)"* "-y"*)q"_s << u"%a*:b%"_s;
    QTest::newRow("a lone quote part") << uR"(" sea)"_s << uR"("sea"*)"_s << u"%sea%"_s;
}

void TestLibrarySearch::wordsBecomeQuotedPrefixStrings()
{
    QFETCH(QString, text);
    QFETCH(QString, match);
    QFETCH(QString, tagPattern);
    const auto query = WordQuery::parse(text);
    QVERIFY(query);
    QCOMPARE(query->matchExpression(), match);
    QCOMPARE(query->tagPattern(), tagPattern);
    QVERIFY(!WordQuery::parse(uR"(" "" """)"_s));
    QVERIFY(!WordQuery::parse(u" \n "_s));
}

void TestLibrarySearch::eachSelectionKeepsItsScope_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QStringList>("expected");

    // Title hits ("harbour" in the title) first, then the others newest first: in All the hidden
    // item is no word hit, the trashed never is, and a note, a read text and a tag all count.
    QTest::newRow("all") << u"all"_s << QStringList{u"harbour"_s, u"favourite"_s, u"tagged"_s, u"sign"_s, u"notes"_s};
    // The trash searches the whole live library, hidden items included; trashed ones never.
    QTest::newRow("trash") << u"trash"_s
                           << QStringList{
                                  u"hidden"_s, u"harbour"_s, u"favourite"_s, u"tagged"_s, u"sign"_s, u"notes"_s};
    QTest::newRow("hidden") << u"hidden"_s << QStringList{u"hidden"_s};
    QTest::newRow("favourites") << u"favourites"_s << QStringList{u"favourite"_s};
    QTest::newRow("links") << u"links"_s << QStringList{u"tagged"_s};
    QTest::newRow("type-image") << u"type-image"_s << QStringList{u"hidden"_s, u"harbour"_s, u"favourite"_s, u"sign"_s};
    QTest::newRow("type-documents") << u"type-documents"_s << QStringList{u"notes"_s};
    QTest::newRow("inbox") << u"inbox"_s << QStringList{u"harbour"_s};
    QTest::newRow("collection") << u"collection"_s << QStringList{u"sign"_s, u"notes"_s};
}

void TestLibrarySearch::eachSelectionKeepsItsScope()
{
    QFETCH(QString, selection);
    QFETCH(QStringList, expected);
    QCOMPARE(search(u"harbour"_s, selection == u"collection" ? m_collectionId : selection), idsOfNames(expected));
}

void TestLibrarySearch::operatorsAndQuotesAreTakenLiterally_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("only quotes") << uR"(""")"_s << QStringList{};
    QTest::newRow("a star and a colon") << u"harb*:our"_s << QStringList{};
    // "AND" is one more word that must match; the first word still finds the tag "harbourside".
    QTest::newRow("an FTS5 keyword") << u"harbour AND"_s << QStringList{u"tagged"_s};
    // The bracket is no word character and drops out of the text match, but stays in the query
    // whose substring the titles are compared with: no title holds "(harbour", so newest first.
    QTest::newRow("a bracket") << u"(harbour"_s << QStringList{u"favourite"_s, u"sign"_s, u"notes"_s, u"harbour"_s};
    QTest::newRow("a column filter") << u"title:harbour"_s << QStringList{};
    // Every word must match, each as a prefix, in any column: "park" and "harb" in the read text.
    // The first word alone is also a substring of the tag "harbourside", so the link joins, newer.
    QTest::newRow("prefixes of two words") << u"harb park"_s << QStringList{u"tagged"_s, u"sign"_s};
    QTest::newRow("a longer first word leaves the tag") << u"harbourm park"_s << QStringList{u"sign"_s};
    QTest::newRow("case does not matter") << u"HARBOURMASTER"_s << QStringList{u"sign"_s};
}

void TestLibrarySearch::operatorsAndQuotesAreTakenLiterally()
{
    QFETCH(QString, query);
    QFETCH(QStringList, expected);
    QCOMPARE(search(query, u"all"_s), idsOfNames(expected));
}

void TestLibrarySearch::onlyTheFirstWordIsLookedForInTags()
{
    // "side" is inside the tag "harbourside": the tag finds the link although no text holds "side".
    QCOMPARE(search(u"side harbour"_s, u"all"_s), idsOfNames({u"tagged"_s}));
    // As the second word it is looked for in the text only, with "harbour" in the tags only.
    QCOMPARE(search(u"harbour side"_s, u"all"_s), idsOfNames({u"tagged"_s}));
    QCOMPARE(search(u"office side"_s, u"all"_s), QStringList{});
}

void TestLibrarySearch::anInboxThatIsNotThereFindsNothing()
{
    const LibrarySearch::Scope scope{SidebarSelection::inbox(), std::nullopt};
    const QList<LibraryItem> found = m_world->db().read(
        [&](Database &db) { return LibrarySearch::searchItems(db, u"harbour red"_s, {}, scope, now); });
    QVERIFY(found.isEmpty());
}

void TestLibrarySearch::colourWordsFindPalettes_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QStringList>("expected");

    // No word hits (the hidden boat's title is out of All); by colour the hidden boat comes back,
    // newest first, and the trashed one and the red fifth colour do not.
    QTest::newRow("red in all") << u"red"_s << u"all"_s << QStringList{u"hidden"_s, u"harbour"_s};
    QTest::newRow("red in favourites") << u"red"_s << u"favourites"_s << QStringList{};
    QTest::newRow("red in the inbox") << u"red"_s << u"inbox"_s << QStringList{u"harbour"_s};
    QTest::newRow("dark green") << u"dark green"_s << u"all"_s << QStringList{u"sign"_s};
    QTest::newRow("in a collection") << u"green"_s << u"collection"_s << QStringList{u"sign"_s};
    QTest::newRow("every word must match") << u"blue white"_s << u"all"_s << QStringList{u"favourite"_s};
    // White is second in three palettes: newest first.
    QTest::newRow("white") << u"white"_s << u"all"_s
                           << QStringList{u"fifthRed"_s, u"favourite"_s, u"sign"_s, u"harbour"_s};
    // The word "red" matches the boat's title in the hidden list (1.3/60) and its palette (.6/60).
    QTest::newRow("red in hidden") << u"red"_s << u"hidden"_s << QStringList{u"hidden"_s};
    // Words and colours together: no text holds both words, but the tag holds the first, so the
    // word list is the link (1.3/60 = .02167); the colour list adds hidden (.6/60) and harbour (.6/61).
    QTest::newRow("words and colours") << u"harbour red"_s << u"all"_s
                                       << QStringList{u"tagged"_s, u"hidden"_s, u"harbour"_s};
}

void TestLibrarySearch::colourWordsFindPalettes()
{
    QFETCH(QString, query);
    QFETCH(QString, selection);
    QFETCH(QStringList, expected);
    QCOMPARE(search(query, selection == u"collection" ? m_collectionId : selection), idsOfNames(expected));
}

void TestLibrarySearch::useReordersWhatWasFound()
{
    m_world->db().write([&](Database &db) {
        // Opened ten times a month ago: a use score of 5, enough to lead the fused list.
        db.execute(
            u"UPDATE item SET openCount = 10, lastOpenedAt = ? WHERE id = ?"_s, {now - 30 * day, idOf(u"notes"_s)});
        // Opened, but never found by "harbour": use never adds an item.
        db.execute(u"UPDATE item SET openCount = 50, lastOpenedAt = ? WHERE id = ?"_s, {now, idOf(u"fifthRed"_s)});
    });
    // notes: 1.3/64 + 1.6/60 = .04698 against harbour's 1.3/60 = .02167.
    QCOMPARE(
        search(u"harbour"_s, u"all"_s), idsOfNames({u"notes"_s, u"harbour"_s, u"favourite"_s, u"tagged"_s, u"sign"_s}));
}

void TestLibrarySearch::meaningListKeepsHitsAboveTheFloor()
{
    FixedMeaning meaning;
    meaning.hits = {{idOf(u"favourite"_s), 0.9F}, {idOf(u"trashed"_s), 0.8F}, {u"no-such-item"_s, 0.7F},
        {idOf(u"notes"_s), 0.3F}, {idOf(u"sign"_s), 0.265F}, {idOf(u"harbour"_s), 0.1F}};
    const QStringList semantic = LibrarySearch::semanticIds(&meaning, u"quiet water"_s, m_world->store.dbQueue());
    QCOMPARE(meaning.askedText, u"quiet water"_s);
    QCOMPARE(meaning.askedK, 40);
    // A score of exactly 0.265 is dropped; the trashed and the unknown are dropped later, on reading.
    QCOMPARE(semantic, (QStringList{idOf(u"favourite"_s), idOf(u"trashed"_s), u"no-such-item"_s, idOf(u"notes"_s)}));

    QCOMPARE(search(u"quiet water"_s, u"all"_s, semantic), idsOfNames({u"favourite"_s, u"notes"_s}));
    QCOMPARE(search(u"quiet water"_s, u"type-documents"_s, semantic), idsOfNames({u"notes"_s}));
    // Colour words alone never use meaning: "blue" is the colour list only.
    QCOMPARE(search(u"blue"_s, u"all"_s, semantic), idsOfNames({u"favourite"_s}));
    QCOMPARE(search(u"harbour"_s, u"favourites"_s, semantic), idsOfNames({u"favourite"_s}));
    // Words harbour, favourite, tagged, sign, notes; meaning favourite, notes. favourite 1.3/61 +
    // 1/60 = .03798; notes 1.3/64 + 1/61 = .03671; harbour 1.3/60 = .02167; tagged 1.3/62; sign 1.3/63.
    QCOMPARE(search(u"harbour"_s, u"all"_s, semantic),
        idsOfNames({u"favourite"_s, u"notes"_s, u"harbour"_s, u"tagged"_s, u"sign"_s}));
}

void TestLibrarySearch::semanticIdsNeedAReadyIndex()
{
    FixedMeaning meaning;
    meaning.hits = {{idOf(u"favourite"_s), 0.9F}};
    meaning.ready = false;
    QVERIFY(LibrarySearch::semanticIds(&meaning, u"x"_s, m_world->store.dbQueue()).isEmpty());
    QVERIFY(meaning.askedText.isEmpty());
    meaning.ready = true;
    QVERIFY(LibrarySearch::semanticIds(&meaning, u"x"_s, nullptr).isEmpty());
    QVERIFY(LibrarySearch::semanticIds(nullptr, u"x"_s, m_world->store.dbQueue()).isEmpty());
}

QTEST_GUILESS_MAIN(TestLibrarySearch)
#include "tst_librarysearch.moc"
