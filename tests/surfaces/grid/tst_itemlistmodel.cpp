#include "core/librarylocation.h"
#include "surfaces/grid/itemlistmodel.h"
#include "surfaces/thumbnails/thumbnailprovider.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QTimeZone>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

LibraryItem item(const QString &id)
{
    LibraryItem record;
    record.id = id;
    record.kind = u"image"_s;
    record.filePath = u"2024-05/"_s + id + u".jpg"_s;
    return record;
}

QList<LibraryItem> items(const QString &ids)
{
    QList<LibraryItem> list;
    for (const QChar id : ids)
        list.append(item(QString(id)));
    return list;
}

QString idsOf(const ItemListModel &model)
{
    QString ids;
    for (const LibraryItem &record : model.items())
        ids += record.id;
    return ids;
}

/**
 * Replays the model's row signals on a plain list of ids: if the signals describe the change
 * truly, the replayed list ends equal to the model.
 */
class SignalReplay : public QObject
{
public:
    explicit SignalReplay(ItemListModel &model) : m_model(model)
    {
        for (const LibraryItem &record : model.items())
            m_ids.append(record.id);
        connect(&model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex &, int first, int last) {
            for (int row = first; row <= last; ++row)
                m_ids.insert(row, m_model.idAt(row));
            ++inserts;
        });
        connect(&model, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex &, int first, int last) {
            m_ids.remove(first, last - first + 1);
            ++removes;
        });
        connect(&model, &QAbstractItemModel::rowsMoved, this,
            [this](const QModelIndex &, int start, int end, const QModelIndex &, int destination) {
                QCOMPARE(start, end);
                m_ids.move(start, start < destination ? destination - 1 : destination);
                ++moves;
            });
        connect(&model, &QAbstractItemModel::modelReset, this, [this] {
            m_ids.clear();
            for (const LibraryItem &record : m_model.items())
                m_ids.append(record.id);
            ++resets;
        });
    }

    [[nodiscard]] QString ids() const { return m_ids.join(QString()); }
    int inserts = 0;
    int removes = 0;
    int moves = 0;
    int resets = 0;

private:
    ItemListModel &m_model;
    QStringList m_ids;
};

} // namespace

/** The id diff of a reload, under the item-model tester, and what each role shows. */
class TestItemListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void diffs_data();
    void diffs();
    void randomReloadsReplayExactly();
    void wholesaleReorderResets();
    void changedRecordsAndTags();
    void roles();
    void accent_data();
    void accent();
};

void TestItemListModel::diffs_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("inserts");
    QTest::addColumn<int>("removes");
    QTest::addColumn<int>("moves");
    QTest::newRow("first load inserts") << QString() << u"abcde"_s << 1 << 0 << 0;
    QTest::newRow("new item on top") << u"abcde"_s << u"xabcde"_s << 1 << 0 << 0;
    QTest::newRow("two runs of new items") << u"abcde"_s << u"xyabcdez"_s << 2 << 0 << 0;
    QTest::newRow("trash one in the middle") << u"abcde"_s << u"abde"_s << 0 << 1 << 0;
    QTest::newRow("trash two apart") << u"abcde"_s << u"bce"_s << 0 << 2 << 0;
    QTest::newRow("everything goes") << u"abcde"_s << QString() << 0 << 1 << 0;
    QTest::newRow("bottom to top is one move") << u"abcde"_s << u"eabcd"_s << 0 << 0 << 1;
    QTest::newRow("top to bottom is one move") << u"abcde"_s << u"bcdea"_s << 0 << 0 << 1;
    QTest::newRow("swap neighbours") << u"abcde"_s << u"bacde"_s << 0 << 0 << 1;
    QTest::newRow("all at once") << u"abcdef"_s << u"xfbdzc"_s << 2 << 2 << 2;
    QTest::newRow("no change") << u"abcde"_s << u"abcde"_s << 0 << 0 << 0;
    QTest::newRow("the rest after a first screenful") << u"abc"_s << u"abcdefg"_s << 1 << 0 << 0;
}

void TestItemListModel::diffs()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(int, inserts);
    QFETCH(int, removes);
    QFETCH(int, moves);
    ItemListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setItems(items(before));
    SignalReplay replay(model);
    QSignalSpy itemsChanged(&model, &ItemListModel::itemsChanged);
    model.setItems(items(after));
    QCOMPARE(idsOf(model), after);
    QCOMPARE(replay.ids(), after);
    QCOMPARE(replay.resets, 0);
    QCOMPARE(replay.inserts, inserts);
    QCOMPARE(replay.removes, removes);
    QCOMPARE(replay.moves, moves);
    QCOMPARE(itemsChanged.count(), before == after ? 0 : 1);
}

void TestItemListModel::randomReloadsReplayExactly()
{
    // Reloads with random removals, insertions and a few moves: the signals must always
    // describe the change exactly, and never as a reset.
    QRandomGenerator random(7);
    ItemListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    int next = 0;
    QList<LibraryItem> current;
    for (int i = 0; i < 200; ++i)
        current.append(item(u"i%1"_s.arg(next++)));
    model.setItems(current);
    for (int round = 0; round < 60; ++round) {
        QList<LibraryItem> updated;
        for (const LibraryItem &record : current) {
            if (random.bounded(10) != 0)
                updated.append(record);
        }
        for (int i = random.bounded(20); i > 0; --i)
            updated.insert(random.bounded(int(updated.size()) + 1), item(u"i%1"_s.arg(next++)));
        for (int i = random.bounded(6); i > 0 && updated.size() > 1; --i)
            updated.move(random.bounded(int(updated.size())), random.bounded(int(updated.size())));
        SignalReplay replay(model);
        model.setItems(updated);
        QStringList expected;
        for (const LibraryItem &record : updated)
            expected.append(record.id);
        QCOMPARE(replay.ids(), expected.join(QString()));
        QCOMPARE(replay.resets, 0);
        QVERIFY(replay.moves <= 5);
        current = updated;
    }
}

void TestItemListModel::wholesaleReorderResets()
{
    QList<LibraryItem> list;
    for (int i = 0; i < 1200; ++i)
        list.append(item(QString::number(i)));
    ItemListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setItems(list);
    std::reverse(list.begin(), list.end());
    SignalReplay replay(model);
    model.setItems(list);
    QCOMPARE(replay.resets, 1);
    QCOMPARE(replay.moves, 0);
    QCOMPARE(model.idAt(0), u"1199"_s);
}

void TestItemListModel::changedRecordsAndTags()
{
    ItemListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QList<LibraryItem> list = items(u"abcde"_s);
    model.setItems(list, {{u"a"_s, {u"red"_s}}});
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    list[1].favourite = true;
    list[2].title = u"Renamed"_s;
    model.setItems(list, {{u"a"_s, {u"red"_s}}, {u"e"_s, {u"blue"_s}}});
    // b and c as one run, then e for its new tag; a keeps its tag and is not reported.
    QCOMPARE(changed.count(), 2);
    QCOMPARE(changed[0][0].value<QModelIndex>().row(), 1);
    QCOMPARE(changed[0][1].value<QModelIndex>().row(), 2);
    QCOMPARE(changed[1][0].value<QModelIndex>().row(), 4);
    QCOMPARE(model.data(model.index(1), ItemListModel::FavouriteRole).toBool(), true);
    QCOMPARE(model.data(model.index(2), ItemListModel::DisplayTitleRole).toString(), u"Renamed"_s);
    QCOMPARE(model.data(model.index(4), ItemListModel::TagNamesRole).toStringList(), QStringList{u"blue"_s});

    // More rows after the shown ones: a changed record among those is still reported, and the new
    // rows come with their records and tags.
    changed.clear();
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    list[0].title = u"First"_s;
    model.setItems(list + items(u"fgh"_s), {{u"e"_s, {u"blue"_s}}, {u"g"_s, {u"green"_s}}});
    QCOMPARE(model.rowCount(), 8);
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(inserted[0][1].toInt(), 5);
    QCOMPARE(inserted[0][2].toInt(), 7);
    QCOMPARE(changed.count(), 1); // a: its title, and the tag it lost
    QCOMPARE(changed[0][0].value<QModelIndex>().row(), 0);
    QCOMPARE(changed[0][1].value<QModelIndex>().row(), 0);
    QCOMPARE(model.data(model.index(0), ItemListModel::DisplayTitleRole).toString(), u"First"_s);
    QCOMPARE(model.data(model.index(0), ItemListModel::TagNamesRole).toStringList(), QStringList());
    QCOMPARE(model.data(model.index(6), ItemListModel::TagNamesRole).toStringList(), QStringList{u"green"_s});
    QCOMPARE(model.idAt(7), u"h"_s);
}

void TestItemListModel::roles()
{
    LibraryItem link;
    link.id = u"l"_s;
    link.kind = u"link"_s;
    link.sourceURL = u"https://www.example.org/a/page?x=1"_s;
    link.addedAt = double(QDateTime(QDate(2024, 3, 5), QTime(14, 7), QTimeZone::utc()).toSecsSinceEpoch());
    LibraryItem video = item(u"v"_s);
    video.kind = u"video"_s;
    video.filePath = u"2024-05/holiday-clip.mp4"_s;
    video.fileSize = 1234567;
    video.duration = 3725.4;
    video.width = 1920;
    video.height = 1080;
    LibraryItem shortClip = item(u"s"_s);
    shortClip.duration = 65;
    ItemListModel model;
    model.setItems({link, video, shortClip});
    const auto value = [&](int row, ItemListModel::Role role) { return model.data(model.index(row), role); };

    QCOMPARE(value(0, ItemListModel::DisplayTitleRole).toString(), u"example.org"_s);
    QCOMPARE(value(0, ItemListModel::DomainRole).toString(), u"example.org"_s);
    QCOMPARE(value(0, ItemListModel::ThumbnailRole).toString(), QString());
    QCOMPARE(value(0, ItemListModel::DateTextRole).toString(), u"5 Mar 2024, 2:07 PM"_s);
    QCOMPARE(value(0, ItemListModel::SizeTextRole).toString(), QString());
    QCOMPARE(value(1, ItemListModel::DisplayTitleRole).toString(), u"holiday-clip"_s);
    // The file's own address in the library, so a decode needs no lookup.
    const QString thumbnail = value(1, ItemListModel::ThumbnailRole).toString();
    QCOMPARE(thumbnail, ThumbnailProvider::sourceStemForPath(LibraryLocation::resolve(u"2024-05/holiday-clip.mp4"_s)));
    QVERIFY(thumbnail.startsWith(u"image://thumb//"_s) && thumbnail.endsWith(u"/2024-05/holiday-clip.mp4"_s));
    QCOMPARE(value(1, ItemListModel::SizeTextRole).toString(), u"1.2 MB"_s);
    QCOMPARE(value(1, ItemListModel::DurationTextRole).toString(), u"1:02:05"_s);
    QCOMPARE(value(1, ItemListModel::AspectRole).toDouble(), 1920.0 / 1080.0);
    QCOMPARE(value(2, ItemListModel::DurationTextRole).toString(), u"1:05"_s);
    QCOMPARE(model.indexOf(u"v"_s), 1);
    QCOMPARE(model.indexOf(u"missing"_s), -1);
    QVERIFY(model.roleNames().values().contains("itemId"));
}

void TestItemListModel::accent_data()
{
    QTest::addColumn<QString>("colors");
    QTest::addColumn<QString>("accent");
    QTest::newRow("none") << QString() << QString();
    QTest::newRow("bad json") << u"not json"_s << QString();
    QTest::newRow("greys only: the first") << u"[\"#808080\",\"#ffffff\"]"_s << u"#808080"_s;
    // Score (1 - |v - 0.6|) x s: #cc3333 v=0.8 s=0.75 -> 0.6; #3366cc the same 0.6 (not strictly more).
    QTest::newRow("a tie keeps the first") << u"[\"#cccccc\",\"#cc3333\",\"#3366cc\"]"_s << u"#cc3333"_s;
    // #999900 v=0.6 s=1 -> 1.0 beats #cc3333.
    QTest::newRow("strictly better wins") << u"[\"#cc3333\",\"#999900\"]"_s << u"#999900"_s;
}

void TestItemListModel::accent()
{
    QFETCH(QString, colors);
    QFETCH(QString, accent);
    LibraryItem record = item(u"a"_s);
    if (!colors.isNull())
        record.colors = colors;
    ItemListModel model;
    model.setItems({record});
    const QColor picked = model.data(model.index(0), ItemListModel::AccentRole).value<QColor>();
    QCOMPARE(picked.alpha() == 0 ? QString() : picked.name(), accent);
}

QTEST_GUILESS_MAIN(TestItemListModel)
#include "tst_itemlistmodel.moc"
