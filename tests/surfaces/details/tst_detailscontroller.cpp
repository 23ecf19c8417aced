// The details panel's logic on a real Store and library: the facts as a person reads them, edits
// of the title, the note, tags and collections written to the database, and the panel keeping
// up with changes made elsewhere.

#include "surfaces/details/detailscontroller.h"
#include "tests/core/storeworld.h"

#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/** Each tag of the controller's list as "name:source:status". */
QStringList tagRows(const QVariantList &tags)
{
    QStringList rows;
    for (const QVariant &tag : tags) {
        const QVariantMap map = tag.toMap();
        rows.append(map.value(u"name"_s).toString() + u':' + map.value(u"source"_s).toString() + u':'
            + map.value(u"status"_s).toString());
    }
    return rows;
}

} // namespace

class TestDetailsController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void factsReadAsWords_data();
    void factsReadAsWords();
    void titleAndNoteAreSavedWhenChanged();
    void tagsAreNormalisedRemovedAndAccepted();
    void collectionsAreListedAddedAndRemoved();
};

void TestDetailsController::factsReadAsWords_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("duration");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QStringList>(
        "expected"); // kindText, sizeText, dimensionsText, durationText, sourceText, fallbackTitle

    QTest::newRow("a picture") << u"image"_s << qint64(2'400'000) << 1920.0 << 1080.0 << 0.0 << QString()
                               << QStringList{u"Image"_s, u"2.4 MB"_s, u"1920 × 1080"_s, QString(), QString(),
                                      u"sea view.jpg"_s};
    QTest::newRow("a video over an hour")
        << u"video"_s << qint64(950) << 640.4 << 359.6 << 3723.4 << QString()
        << QStringList{u"Video"_s, u"950 bytes"_s, u"640 × 360"_s, u"1:02:03"_s, QString(), u"sea view.jpg"_s};
    QTest::newRow("a short clip") << u"video"_s << qint64(-1) << 0.0 << 0.0 << 65.0 << QString()
                                  << QStringList{
                                         u"Video"_s, QString(), QString(), u"1:05"_s, QString(), u"sea view.jpg"_s};
    QTest::newRow("a link") << u"link"_s << qint64(0) << 0.0 << 0.0 << 0.0 << u"https://www.example.com/a/b?x=1"_s
                            << QStringList{u"Link"_s, u"0 bytes"_s, QString(), QString(), u"example.com/a/b"_s,
                                   u"example.com"_s};
    QTest::newRow("a note") << u"text"_s << qint64(-1) << 0.0 << 0.0 << 0.0 << QString()
                            << QStringList{u"Note"_s, QString(), QString(), QString(), QString(), u"Note"_s};
}

void TestDetailsController::factsReadAsWords()
{
    QFETCH(QString, kind);
    QFETCH(qint64, size);
    QFETCH(double, width);
    QFETCH(double, height);
    QFETCH(double, duration);
    QFETCH(QString, source);
    QFETCH(QStringList, expected);

    kivo::test::StoreWorld world;
    const QString id = world.addItem(kind, 1718000000, [&](kivo::LibraryItem &item) {
        item.title.reset();
        if (size >= 0)
            item.fileSize = size;
        if (width > 0) {
            item.width = width;
            item.height = height;
        }
        if (duration > 0)
            item.duration = duration;
        if (kind == u"image" || kind == u"video")
            item.filePath = u"items/2024-06/sea view.jpg"_s;
        if (!source.isEmpty())
            item.sourceURL = source;
    });
    kivo::DetailsController details;
    details.setStore(&world.store);
    details.setItemId(id);
    QVERIFY(details.available());
    QCOMPARE((QStringList{details.kindText(), details.sizeText(), details.dimensionsText(), details.durationText(),
                 details.sourceText(), details.fallbackTitle()}),
        expected);
    // 1718000000 is 10 June 2024, 06:13:20 UTC; the tests run in UTC.
    QCOMPARE(details.addedText(), u"10 Jun 2024, 6:13 AM"_s);
    if (kind == u"image") {
        QVERIFY(details.filePath().startsWith(world.sandbox.libraryRoot() + u'/'));
        QVERIFY(details.filePath().endsWith(u"/items/2024-06/sea view.jpg"_s));
    }
}

void TestDetailsController::titleAndNoteAreSavedWhenChanged()
{
    kivo::test::StoreWorld world;
    const QString id = world.addItem(u"image"_s, 100, [](kivo::LibraryItem &item) { item.title = u"Old"_s; });
    kivo::DetailsController details;
    details.setStore(&world.store);
    details.setItemId(id);
    const auto stored
        = [&](const QString &column) { return world.scalar(u"SELECT %1 FROM item WHERE id = ?"_s.arg(column), {id}); };

    QVERIFY(!details.commitTitle(u"Old"_s)); // unchanged: nothing written
    const double modified = stored(u"modifiedAt"_s).toDouble();
    QVERIFY(details.commitTitle(u"  Harbour at dusk "_s));
    QCOMPARE(stored(u"title"_s).toString(), u"Harbour at dusk"_s);
    QVERIFY(stored(u"modifiedAt"_s).toDouble() > modified);
    QCOMPARE(details.title(), u"Harbour at dusk"_s);
    QVERIFY(!details.commitTitle(u"   "_s));
    QCOMPARE(stored(u"title"_s).toString(), u"Harbour at dusk"_s);

    QVERIFY(details.commitNote(u"Shot from the pier"_s));
    QCOMPARE(stored(u"note"_s).toString(), u"Shot from the pier"_s);
    QCOMPARE(details.note(), u"Shot from the pier"_s);
    QVERIFY(!details.commitNote(u"Shot from the pier"_s));

    // Renamed elsewhere (a headless command, the grid): the panel follows the reload.
    QSignalSpy changed(&details, &kivo::DetailsController::changed);
    world.store.renameItem(id, u"Harbour"_s);
    QVERIFY(!changed.isEmpty());
    QCOMPARE(details.title(), u"Harbour"_s);

    // An item that is not there shows nothing.
    details.setItemId(u"no-such-item"_s);
    QVERIFY(!details.available());
    QVERIFY(!details.commitTitle(u"x"_s));
}

void TestDetailsController::tagsAreNormalisedRemovedAndAccepted()
{
    kivo::test::StoreWorld world;
    const QString id = world.addItem(u"image"_s, 100);
    const QString other = world.addItem(u"image"_s, 200);
    world.db().write([&](kivo::Database &db) {
        db.execute(
            u"INSERT INTO tag (id, name) VALUES ('t-boat', 'boat'), ('t-harbour', 'harbour'), ('t-sea', 'sea')"_s);
        db.execute(
            u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-boat', 'ai', 'suggested', 1)"_s,
            {id});
        db.execute(
            u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-harbour', 'ai', 'accepted', 1)"_s,
            {id});
        db.execute(
            u"INSERT INTO itemTag (itemId, tagId, source, status, addedAt) VALUES (?, 't-sea', 'user', 'accepted', 1)"_s,
            {other});
    });
    kivo::DetailsController details;
    details.setStore(&world.store);
    details.setItemId(id);
    QCOMPARE(tagRows(details.tags()), QStringList{u"harbour:ai:accepted"_s});
    QCOMPARE(tagRows(details.suggestedTags()), QStringList{u"boat:ai:suggested"_s});
    // Completions come from the library, leave out what the item has, and ignore case.
    QCOMPARE(details.tagCompletions(u"S"_s), QStringList{u"sea"_s});
    QCOMPARE(details.tagCompletions(u"b"_s), QStringList());

    QVERIFY(details.addTag(u"  Golden Hour \n"_s));
    QVERIFY(!details.addTag(u" \t "_s));
    QCOMPARE(tagRows(details.tags()), (QStringList{u"golden hour:user:accepted"_s, u"harbour:ai:accepted"_s}));
    // Adding what the AI already put there keeps its source.
    QVERIFY(details.addTag(u"HARBOUR"_s));
    QCOMPARE(tagRows(details.tags()), (QStringList{u"golden hour:user:accepted"_s, u"harbour:ai:accepted"_s}));

    QVERIFY(details.acceptTag(u"t-boat"_s));
    QCOMPARE(tagRows(details.suggestedTags()), QStringList());
    QCOMPARE(tagRows(details.tags()),
        (QStringList{u"boat:user:accepted"_s, u"golden hour:user:accepted"_s, u"harbour:ai:accepted"_s}));

    QVERIFY(details.removeTag(u"t-harbour"_s));
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM itemTag WHERE itemId = ? AND tagId = 't-harbour'"_s, {id}).toInt(), 0);
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM tag WHERE id = 't-harbour'"_s).toInt(), 1); // the tag itself stays
    QCOMPARE(tagRows(details.tags()), (QStringList{u"boat:user:accepted"_s, u"golden hour:user:accepted"_s}));
}

void TestDetailsController::collectionsAreListedAddedAndRemoved()
{
    kivo::test::StoreWorld world;
    const QString id = world.addItem(u"image"_s, 100);
    const QString art = world.addCollection(u"Art"_s);
    const QString posters = world.addCollection(u"Posters"_s, art);
    const QString food = world.addCollection(u"Food"_s);
    world.addMembership(id, world.store.inboxIdText(), 5);
    world.store.reloadAll();
    kivo::DetailsController details;
    details.setStore(&world.store);
    details.setItemId(id);
    const auto paths = [&] {
        QStringList shown;
        for (const QVariant &collection : details.collections())
            shown.append(collection.toMap().value(u"path"_s).toString());
        return shown;
    };
    QCOMPARE(paths(), QStringList{u"Inbox"_s});

    QVERIFY(details.addToCollection(posters));
    QVERIFY(details.addToCollection(food));
    QCOMPARE(paths(), (QStringList{u"Inbox"_s, u"Art / Posters"_s, u"Food"_s}));
    QStringList offered;
    for (const QVariant &choice : details.collectionChoices())
        offered.append(choice.toMap().value(u"id"_s).toString());
    QCOMPARE(offered, QStringList{art});

    QVERIFY(details.removeFromCollection(world.store.inboxIdText()));
    QCOMPARE(paths(), (QStringList{u"Art / Posters"_s, u"Food"_s}));
    QCOMPARE(world.scalar(u"SELECT COUNT(*) FROM itemCollection WHERE itemId = ?"_s, {id}).toInt(), 2);
}

QTEST_GUILESS_MAIN(TestDetailsController)
#include "tst_detailscontroller.moc"
