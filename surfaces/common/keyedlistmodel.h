#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

namespace kivo {

/**
 * A list model whose rows carry a unique key (an id) and that takes a whole new list on every
 * reload, turning the difference into row removals, moves, insertions and data changes, so that
 * a view keeps its delegates, its scroll position and its animations instead of seeing a reset.
 */
class KeyedListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

protected:
    /**
     * Brings `rows` to `next` through the model's change signals. `keyOf` gives a row's key; rows
     * under the same key that compare unequal get a dataChanged for all roles.
     */
    template <typename Row, typename KeyOf> void replaceRows(QList<Row> &rows, const QList<Row> &next, KeyOf keyOf)
    {
        QSet<QString> nextKeys;
        for (const Row &row : next)
            nextKeys.insert(keyOf(row));

        // Removals, from the bottom up, one contiguous run at a time.
        for (qsizetype last = rows.size() - 1; last >= 0; --last) {
            if (nextKeys.contains(keyOf(rows.at(last))))
                continue;
            qsizetype first = last;
            while (first > 0 && !nextKeys.contains(keyOf(rows.at(first - 1))))
                --first;
            beginRemoveRows({}, int(first), int(last));
            rows.remove(first, last - first + 1);
            endRemoveRows();
            last = first;
        }

        QSet<QString> present;
        for (const Row &row : rows)
            present.insert(keyOf(row));

        // Walk the new order: each place either holds its row already, takes it from further
        // down, or receives a run of new rows.
        for (qsizetype at = 0; at < next.size(); ++at) {
            const QString key = keyOf(next.at(at));
            if (at < rows.size() && keyOf(rows.at(at)) == key)
                continue;
            if (present.contains(key)) {
                qsizetype from = at + 1;
                while (keyOf(rows.at(from)) != key)
                    ++from;
                beginMoveRows({}, int(from), int(from), {}, int(at));
                rows.move(from, at);
                endMoveRows();
                continue;
            }
            qsizetype end = at + 1;
            while (end < next.size() && !present.contains(keyOf(next.at(end))))
                ++end;
            beginInsertRows({}, int(at), int(end - 1));
            for (qsizetype i = at; i < end; ++i)
                rows.insert(i, next.at(i));
            endInsertRows();
            at = end - 1;
        }

        for (qsizetype at = 0; at < rows.size(); ++at) {
            if (rows.at(at) == next.at(at))
                continue;
            rows[at] = next.at(at);
            const QModelIndex changed = index(int(at));
            Q_EMIT dataChanged(changed, changed);
        }
    }
};

} // namespace kivo
