// Checks that a keyed list model turns any change of its list into row signals a view can follow:
// never a reset, and the rows always ending up exactly as the new list, under the model tester.

#include "surfaces/common/keyedlistmodel.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

struct Entry {
    QString id;
    int value = 0;
    bool operator==(const Entry &) const = default;
};

/** The smallest keyed model: one role, the entry's value. */
class EntryModel : public kivo::KeyedListModel
{
public:
    using KeyedListModel::KeyedListModel;

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(m_rows.size()); }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::DisplayRole)
            return {};
        return m_rows.at(index.row()).id + u':' + QString::number(m_rows.at(index.row()).value);
    }
    void set(const QList<Entry> &next)
    {
        replaceRows(m_rows, next, [](const Entry &entry) { return entry.id; });
    }
    [[nodiscard]] QStringList shown() const
    {
        QStringList texts;
        for (int row = 0; row < rowCount(); ++row)
            texts.append(data(index(row), Qt::DisplayRole).toString());
        return texts;
    }

private:
    QList<Entry> m_rows;
};

QList<Entry> entries(const QString &ids, int value = 0)
{
    QList<Entry> list;
    for (const QChar id : ids)
        list.append({QString(id), value});
    return list;
}

QStringList texts(const QList<Entry> &list)
{
    QStringList result;
    for (const Entry &entry : list)
        result.append(entry.id + u':' + QString::number(entry.value));
    return result;
}

} // namespace

class TestKeyedListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changesBecomeRowSignals_data();
    void changesBecomeRowSignals();
    void changedValuesAreAnnounced();
    void randomChangesKeepTheModelSound();
};

void TestKeyedListModel::changesBecomeRowSignals_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("inserts");
    QTest::addColumn<int>("removes");
    QTest::addColumn<int>("moves");

    // Counts of signals worked out by hand: runs of neighbours travel in one signal.
    QTest::newRow("first load is one insert") << ""
                                              << "abcde" << 1 << 0 << 0;
    QTest::newRow("clear is one removal") << "abcde"
                                          << "" << 0 << 1 << 0;
    QTest::newRow("same list, nothing") << "abc"
                                        << "abc" << 0 << 0 << 0;
    QTest::newRow("one in the middle") << "abd"
                                       << "abcd" << 1 << 0 << 0;
    QTest::newRow("two runs removed") << "abcdefg"
                                      << "adg" << 0 << 2 << 0;
    QTest::newRow("last to first is one move") << "abcd"
                                               << "dabc" << 0 << 0 << 1;
    QTest::newRow("swap") << "abcd"
                          << "abdc" << 0 << 0 << 1;
    QTest::newRow("mixed") << "abcdef"
                           << "xfbay" << 2 << 1 << 2;
}

void TestKeyedListModel::changesBecomeRowSignals()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(int, inserts);
    QFETCH(int, removes);
    QFETCH(int, moves);

    EntryModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.set(entries(before));
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy moved(&model, &QAbstractItemModel::rowsMoved);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    model.set(entries(after));
    QCOMPARE(model.shown(), texts(entries(after)));
    QCOMPARE(inserted.size(), inserts);
    QCOMPARE(removed.size(), removes);
    QCOMPARE(moved.size(), moves);
    QCOMPARE(reset.size(), 0);
    QCOMPARE(changed.size(), 0);
}

void TestKeyedListModel::changedValuesAreAnnounced()
{
    EntryModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.set(entries(u"abc"_s));
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QList<Entry> next = entries(u"cab"_s);
    next[1].value = 7; // "a" changes while it moves
    model.set(next);
    QCOMPARE(model.shown(), (QStringList{u"c:0"_s, u"a:7"_s, u"b:0"_s}));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.constFirst().at(0).toModelIndex().row(), 1);
}

void TestKeyedListModel::randomChangesKeepTheModelSound()
{
    EntryModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QRandomGenerator random(20240611);
    const QString alphabet = u"abcdefghijklmnopqrstuvwxyz0123456789"_s;
    for (int round = 0; round < 400; ++round) {
        QList<Entry> next;
        for (const QChar id : alphabet) {
            if (random.bounded(3) != 0)
                next.append({QString(id), int(random.bounded(2))});
        }
        std::shuffle(next.begin(), next.end(), random);
        next.resize(random.bounded(int(next.size()) + 1));
        model.set(next);
        QCOMPARE(model.shown(), texts(next));
    }
    QCOMPARE(reset.size(), 0);
}

QTEST_GUILESS_MAIN(TestKeyedListModel)
#include "tst_keyedlistmodel.moc"
