// The search as it runs (narrow rows, whole rows read once, palettes kept between searches)
// against a plain reading of the same rules on a generated library: whole rows decoded for every
// list, palettes matched through ColorSearch::matchIndex, tags joined row by row. Both must give
// the same rows in the same order for every query and selection, before and after the library
// changes under a kept palette cache.

#include "core/itemqueries.h"
#include "search/librarysearch.h"
#include "search/palettecache.h"
#include "search/rankfusion.h"
#include "search/wordquery.h"
#include "tests/core/storeworld.h"
#include "understanding/colorpalette.h"
#include "understanding/colorsearch.h"

#include <QtTest>

#include <random>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

constexpr double now = 1700000000;
constexpr double day = 86400;

/** The search's rules, read the plain way: every list of whole rows, nothing kept or skipped. */
QList<LibraryItem> referenceSearch(
    Database &db, const QString &query, const QStringList &semanticIds, const LibrarySearch::Scope &scope)
{
    const auto clause = ItemQueries::scopeClause(scope.selection, scope.inboxId);
    if (!clause)
        return {};
    // The meaning and colour lists look at every live item in All and in the trash, hidden ones too.
    const bool everything = scope.selection.kind() == SidebarSelection::Kind::all
        || scope.selection.kind() == SidebarSelection::Kind::trash;
    const QString inScopeSql = u"SELECT i.* FROM item i WHERE i.deletedAt IS NULL "_s + (everything ? QString() : clause->sql);

    QList<LibraryItem> words;
    if (const auto parsed = WordQuery::parse(query)) {
        QVariantList arguments{parsed->matchExpression(), parsed->tagPattern()};
        arguments.append(clause->arguments);
        const auto found = db.fetchAll<LibraryItem>(
            u"SELECT i.* FROM item i WHERE i.deletedAt IS NULL AND (i.rowid IN (SELECT rowid FROM itemFTS WHERE itemFTS "
            "MATCH ?) OR i.id IN (SELECT it.itemId FROM itemTag it WHERE it.tagId IN (SELECT t.id FROM tag t WHERE "
            "t.name LIKE ?))) "_s
                + clause->sql + u" ORDER BY i.addedAt DESC"_s,
            arguments);
        QList<LibraryItem> others;
        for (const LibraryItem &item : found) {
            (item.title && item.title->toLower().contains(query.toLower()) ? words : others).append(item);
        }
        words.append(others);
    }

    const QList<LibraryItem> inScope
        = db.fetchAll<LibraryItem>(inScopeSql, everything ? QVariantList{} : clause->arguments);
    QList<LibraryItem> meaning;
    if (!ColorSearch::isColourQuery(query)) {
        for (const QString &id : semanticIds) {
            for (const LibraryItem &item : inScope) {
                if (item.id == id)
                    meaning.append(item);
            }
        }
    }
    QList<LibraryItem> colours;
    const QStringList colourWords = ColorSearch::colourWords(query);
    if (!colourWords.isEmpty()) {
        for (const LibraryItem &item : inScope) {
            if (!item.colors || item.colors->isEmpty())
                continue;
            const QStringList palette = ColorPalette::decodePalette(*item.colors);
            if (std::all_of(colourWords.cbegin(), colourWords.cend(),
                    [&](const QString &word) { return ColorSearch::matchIndex(palette, word).has_value(); }))
                colours.append(item);
        }
        std::stable_sort(colours.begin(), colours.end(),
            [](const LibraryItem &a, const LibraryItem &b) { return a.addedAt > b.addedAt; });
    }
    QList<LibraryItem> candidates;
    QSet<QString> seen;
    for (const QList<LibraryItem> *list : {&words, &meaning, &colours}) {
        for (const LibraryItem &item : *list) {
            if (!seen.contains(item.id)) {
                seen.insert(item.id);
                candidates.append(item);
            }
        }
    }
    const QList<LibraryItem> use = RankFusion::useList(candidates, now, LibrarySearch::openingHalfLifeDays);
    return RankFusion::fuse({{LibrarySearch::wordWeight, words}, {LibrarySearch::meaningWeight, meaning},
                                {LibrarySearch::colourWeight, colours}, {LibrarySearch::useWeight, use}},
        LibrarySearch::fusionK);
}

} // namespace

class TestSearchReference : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void answersAsThePlainReading_data();
    void answersAsThePlainReading();
    void keptPalettesFollowChanges();
    void equalMomentsKeepTheDatabaseOrder();

private:
    void compareAll(PaletteCache *palettes);
    [[nodiscard]] LibrarySearch::Scope scopeOf(const QString &key) const;

    std::unique_ptr<test::StoreWorld> m_world;
    QString m_collectionId;
    QStringList m_ids;
};

void TestSearchReference::initTestCase()
{
    m_world = std::make_unique<test::StoreWorld>();
    m_collectionId = m_world->addCollection(u"Boats"_s);
    const QString inboxId = *m_world->store.inboxId();
    std::mt19937 random(20240611);
    const auto pick = [&](const QStringList &from) { return from.at(int(random() % from.size())); };
    const auto chance = [&](int percent) { return int(random() % 100) < percent; };
    const QStringList words{u"harbour"_s, u"red"_s, u"kitchen"_s, u"studio"_s, u"park"_s, u"dark"_s, u"blue"_s,
        u"IMG_0042"_s, u"harbourmaster"_s, u"orchard"_s, u"white"_s, u"lights"_s};
    // Red, dark green, blue, white, black, orange, grey, and a pale pink.
    const QStringList colours{u"#C81E1E"_s, u"#1E6E32"_s, u"#1E3CC8"_s, u"#F0F0F0"_s, u"#101010"_s, u"#E6781E"_s,
        u"#808080"_s, u"#F4C8D2"_s};
    const QStringList kinds{u"image"_s, u"image"_s, u"link"_s, u"text"_s, u"video"_s, u"pdf"_s};
    const auto phrase = [&](int count) {
        QStringList parts;
        for (int i = 0; i < count; ++i)
            parts.append(pick(words));
        return parts.join(u' ');
    };
    m_world->seed([&](test::Seed &seed) {
        for (int n = 0; n < 400; ++n) {
            // Every item its own moment of adding: equal moments leave the order to the database.
            const double addedAt = 1000 + n * 7 + int(random() % 5);
            const QString id = seed.item(pick(kinds), addedAt, [&](LibraryItem &item) {
                item.title = chance(85) ? std::optional(phrase(1 + int(random() % 3))) : std::nullopt;
                if (chance(30))
                    item.note = phrase(4);
                if (chance(25))
                    item.ocrText = phrase(3);
                if (item.kind == u"link")
                    item.sourceURL = u"https://example.org/"_s + QString::number(n);
                if (chance(70)) {
                    QStringList palette;
                    for (int c = 0, count = 1 + int(random() % 6); c < count; ++c)
                        palette.append(u'"' + pick(colours) + u'"');
                    // A few palettes are written with spaces, which the quick reading leaves to the general one.
                    item.colors = u'[' + palette.join(chance(10) ? u", "_s : u","_s) + u']';
                }
                if (chance(8))
                    item.deletedAt = addedAt + 1;
                if (chance(8))
                    item.hiddenAt = addedAt + 1;
                item.favourite = chance(15);
                if (chance(20)) {
                    item.openCount = 1 + int(random() % 20);
                    item.lastOpenedAt = now - double(random() % 120) * day;
                }
            });
            m_ids.append(id);
            if (chance(15))
                seed.membership(id, m_collectionId, addedAt + 2);
            if (chance(15))
                seed.membership(id, inboxId, addedAt + 3);
        }
        seed.db().insert(Tag{u"t1"_s, u"harbourside"_s});
        seed.db().insert(Tag{u"t2"_s, u"red"_s});
        seed.db().insert(Tag{u"t3"_s, u"studio work"_s});
        for (int n = 0; n < 400; n += 3)
            seed.db().insert(ItemTag{m_ids.at(n), pick({u"t1"_s, u"t2"_s, u"t3"_s}), u"user"_s, u"accepted"_s, 5000});
    });
}

void TestSearchReference::cleanupTestCase()
{
    m_world.reset();
}

LibrarySearch::Scope TestSearchReference::scopeOf(const QString &key) const
{
    const auto selection = SidebarSelection::fromKey(key == u"collection" ? m_collectionId : key);
    Q_ASSERT(selection);
    return {*selection, m_world->store.inboxId()};
}

void TestSearchReference::answersAsThePlainReading_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QStringList>("semanticIds");

    const QStringList queries{u"harbour"_s, u"red"_s, u"dark green"_s, u"blue white"_s, u"studio"_s, u"harb park"_s,
        u"kit"_s, u"img"_s, u"red harbour"_s, u"white"_s, u"side"_s, u"orange black"_s, u"pink"_s};
    const QStringList selections{u"all"_s, u"trash"_s, u"hidden"_s, u"favourites"_s, u"links"_s, u"type-image"_s,
        u"inbox"_s, u"collection"_s};
    for (const QString &query : queries) {
        for (const QString &selection : selections)
            QTest::addRow("%s in %s", qPrintable(query), qPrintable(selection)) << query << selection << QStringList{};
    }
    // The meaning list joins for word queries; the ids are taken when the library exists.
    QTest::newRow("meaning with words") << u"harbour"_s << u"all"_s << QStringList{u"meaning"_s};
    QTest::newRow("meaning in a collection") << u"lights"_s << u"collection"_s << QStringList{u"meaning"_s};
}

void TestSearchReference::answersAsThePlainReading()
{
    QFETCH(QString, query);
    QFETCH(QString, selection);
    QFETCH(QStringList, semanticIds);
    if (!semanticIds.isEmpty())
        semanticIds = {m_ids.at(5), m_ids.at(99), u"no-such-item"_s, m_ids.at(250), m_ids.at(17)};
    const LibrarySearch::Scope scope = scopeOf(selection);
    PaletteCache palettes;
    m_world->db().read([&](Database &db) {
        const QList<LibraryItem> expected = referenceSearch(db, query, semanticIds, scope);
        if (selection == u"all" && query != u"side" && query != u"pink")
            QVERIFY2(expected.size() >= 10, "too few rows in All to compare an order");
        QCOMPARE(LibrarySearch::searchItems(db, query, semanticIds, scope, now), expected);
        // Once to fill the kept palettes, once from them.
        QCOMPARE(LibrarySearch::searchItems(db, query, semanticIds, scope, now, &palettes), expected);
        QCOMPARE(LibrarySearch::searchItems(db, query, semanticIds, scope, now, &palettes), expected);
    });
    QCOMPARE(palettes.fills(), ColorSearch::colourWords(query).isEmpty() ? 0 : 1);
}

void TestSearchReference::keptPalettesFollowChanges()
{
    PaletteCache palettes;
    const auto compare = [&](const QString &query) {
        m_world->db().read([&](Database &db) {
            for (const QString &key : {u"all"_s, u"collection"_s}) {
                const LibrarySearch::Scope scope = scopeOf(key);
                QCOMPARE(LibrarySearch::searchItems(db, query, {}, scope, now, &palettes),
                    referenceSearch(db, query, {}, scope));
            }
        });
    };
    compare(u"red"_s);
    QCOMPARE(palettes.fills(), 1);
    compare(u"blue"_s);
    QCOMPARE(palettes.fills(), 1);

    // Through this connection: a picture turns blue, a blue one goes to the trash, one is opened.
    m_world->db().write([&](Database &db) {
        db.execute(u"UPDATE item SET colors = '[\"#1E3CC8\"]', deletedAt = NULL WHERE id = ?"_s, {m_ids.at(10)});
        db.execute(u"UPDATE item SET deletedAt = ? WHERE colors LIKE '[\"#1E3CC8\"%' AND id <> ?"_s,
            {now, m_ids.at(10)});
        db.execute(u"UPDATE item SET openCount = 99, lastOpenedAt = ? WHERE id = ?"_s, {now, m_ids.at(11)});
    });
    compare(u"blue"_s);
    QCOMPARE(palettes.fills(), 2);

    // Through another connection to the same file, as a second process would.
    {
        const auto other = DatabaseQueue::open(m_world->store.libraryRoot() + u"/library.sqlite"_s);
        other->write([&](Database &db) {
            db.execute(u"UPDATE item SET colors = NULL WHERE id IN (?, ?)"_s, {m_ids.at(10), m_ids.at(12)});
        });
    }
    compare(u"blue"_s);
    compare(u"red"_s);
    QCOMPARE(palettes.fills(), 3);
}

void TestSearchReference::equalMomentsKeepTheDatabaseOrder()
{
    // Imported together: word hits added at three moments, eight at each, so the order within a
    // moment is the database's own sort (in memory it would come out differently).
    m_world->seed([&](test::Seed &seed) {
        for (int n = 0; n < 24; ++n) {
            const double addedAt = 8000 + (n % 3) * 500;
            seed.item(u"image"_s, addedAt, [](LibraryItem &item) {
                item.title = u"quay"_s;
                item.colors = uR"(["#C81E1E"])"_s;
            });
        }
    });
    m_world->db().read([&](Database &db) {
        // The words alone, and the words with every red picture of the library by colour.
        for (const QString &query : {u"quay"_s, u"red quay"_s}) {
            const QList<LibraryItem> expected = referenceSearch(db, query, {}, scopeOf(u"all"_s));
            QVERIFY(expected.size() >= 24);
            QCOMPARE(LibrarySearch::searchItems(db, query, {}, scopeOf(u"all"_s), now), expected);
        }
    });
}

QTEST_GUILESS_MAIN(TestSearchReference)
#include "tst_searchreference.moc"
