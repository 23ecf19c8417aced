#include "surfaces/grid/itemlistmodel.h"

#include "core/itemcolours.h"
#include "core/librarylocation.h"
#include "surfaces/thumbnails/thumbnailprovider.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** Positions (into `sequence`) of one longest strictly increasing subsequence. */
QList<qsizetype> longestIncreasing(const QList<qsizetype> &sequence)
{
    QList<qsizetype> tails; // positions of the smallest tail of each length
    QList<qsizetype> previous(sequence.size(), -1);
    for (qsizetype i = 0; i < sequence.size(); ++i) {
        const auto at = std::lower_bound(tails.begin(), tails.end(), sequence[i],
            [&](qsizetype position, qsizetype value) { return sequence[position] < value; });
        const qsizetype length = at - tails.begin();
        if (length > 0)
            previous[i] = tails[length - 1];
        if (at == tails.end())
            tails.append(i);
        else
            *at = i;
    }
    QList<qsizetype> chain;
    for (qsizetype i = tails.isEmpty() ? -1 : tails.last(); i >= 0; i = previous[i])
        chain.prepend(i);
    return chain;
}

qsizetype indexOfId(const QList<const LibraryItem *> &rows, const QString &id)
{
    for (qsizetype i = 0; i < rows.size(); ++i) {
        if (rows[i]->id == id)
            return i;
    }
    return -1;
}

QString domainOf(const std::optional<QString> &sourceURL)
{
    if (!sourceURL)
        return {};
    QString host = QUrl(*sourceURL).host();
    if (host.startsWith(u"www."))
        host.remove(0, 4);
    return host;
}

QString durationText(double seconds)
{
    if (seconds <= 0)
        return {};
    const qint64 whole = qint64(seconds + 0.5);
    const qint64 hours = whole / 3600, minutes = whole / 60 % 60, rest = whole % 60;
    const QString tail
        = u"%1:%2"_s.arg(minutes, hours ? 2 : 1, 10, QLatin1Char('0')).arg(rest, 2, 10, QLatin1Char('0'));
    return hours ? QString::number(hours) + u':' + tail : tail;
}

} // namespace

ItemListModel::ItemListModel(QObject *parent) : QAbstractListModel(parent)
{
}

int ItemListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QHash<int, QByteArray> ItemListModel::roleNames() const
{
    return {
        {IdRole, "itemId"},
        {KindRole, "kind"},
        {TitleRole, "title"},
        {DisplayTitleRole, "displayTitle"},
        {NoteRole, "note"},
        {SourceUrlRole, "sourceURL"},
        {DomainRole, "domain"},
        {ThumbnailRole, "thumbnail"},
        {HasFileRole, "hasFile"},
        {AspectRole, "aspect"},
        {ColoursRole, "colours"},
        {AccentRole, "accent"},
        {FavouriteRole, "favourite"},
        {TagNamesRole, "tagNames"},
        {AddedAtRole, "addedAt"},
        {DateTextRole, "dateText"},
        {FileSizeRole, "fileSize"},
        {SizeTextRole, "sizeText"},
        {DurationRole, "duration"},
        {DurationTextRole, "durationText"},
    };
}

QVariant ItemListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const LibraryItem &item = *m_rows[index.row()];
    switch (role) {
    case Qt::DisplayRole:
    case DisplayTitleRole:
        if (item.title && !item.title->trimmed().isEmpty())
            return *item.title;
        if (item.filePath && item.kind != u"link")
            return QFileInfo(*item.filePath).completeBaseName();
        return domainOf(item.sourceURL);
    case IdRole:
        return item.id;
    case KindRole:
        return item.kind;
    case TitleRole:
        return item.title.value_or(QString());
    case NoteRole:
        return item.note.value_or(QString());
    case SourceUrlRole:
        return item.sourceURL.value_or(QString());
    case DomainRole:
        return domainOf(item.sourceURL);
    case ThumbnailRole:
        // By path, so a decode never waits on the database queue for the item's file.
        return item.filePath ? ThumbnailProvider::sourceStemForPath(m_itemFolder + u'/' + *item.filePath) : QString();
    case HasFileRole:
        return item.filePath.has_value();
    case AspectRole:
        return item.width && item.height && *item.width > 0 && *item.height > 0 ? *item.width / *item.height : 0.0;
    case ColoursRole:
        return QVariant::fromValue(ItemColours::decode(item.colors.value_or(QString())));
    case AccentRole:
        return ItemColours::accent(ItemColours::decode(item.colors.value_or(QString())))
            .value_or(QColor(Qt::transparent));
    case FavouriteRole:
        return item.favourite;
    case TagNamesRole:
        return m_tagNames.value(item.id);
    case AddedAtRole:
        return QDateTime::fromMSecsSinceEpoch(qint64(item.addedAt * 1000.0));
    case DateTextRole:
        return QLocale(QLocale::English)
            .toString(QDateTime::fromMSecsSinceEpoch(qint64(item.addedAt * 1000.0)), u"d MMM yyyy, h:mm AP"_s);
    case FileSizeRole:
        return item.fileSize ? double(*item.fileSize) : -1.0;
    case SizeTextRole:
        return item.fileSize ? QLocale(QLocale::English).formattedDataSize(*item.fileSize, 1, QLocale::DataSizeSIFormat)
                             : QString();
    case DurationRole:
        return item.duration.value_or(0.0);
    case DurationTextRole:
        return durationText(item.duration.value_or(0.0));
    default:
        return {};
    }
}

int ItemListModel::indexOf(const QString &itemId) const
{
    return int(indexOfId(m_rows, itemId));
}

QString ItemListModel::idAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows[row]->id : QString();
}

void ItemListModel::setItems(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem)
{
    const int before = count();
    m_itemFolder = LibraryLocation::itemFolder();
    // Rows are pointers, into the old list until they are pointed at the new one, so the steps
    // below move 8 bytes a row rather than whole records.
    m_incoming = items;
    if (sameIdsInOrder(items)) {
        // The usual reload after an edit: nothing to move, only records to compare.
        const bool changed = refreshChanged(items, tagNamesByItem);
        m_items = m_incoming;
        m_incoming.clear();
        if (changed)
            Q_EMIT itemsChanged();
        return;
    }
    if (extendsShownRows(items)) {
        // The first screenful followed by the rest of the list: the new rows all go at the end,
        // without the table of every id that a general change needs.
        refreshChanged(items, tagNamesByItem);
        const qsizetype shown = m_rows.size();
        beginInsertRows({}, int(shown), int(items.size() - 1));
        m_rows.resize(items.size());
        for (qsizetype i = shown; i < items.size(); ++i)
            m_rows[i] = m_incoming.constData() + i;
        endInsertRows();
        m_items = m_incoming;
        m_incoming.clear();
        Q_EMIT countChanged();
        Q_EMIT itemsChanged();
        return;
    }
    QHash<QString, qsizetype> newIndex;
    newIndex.reserve(items.size());
    for (qsizetype k = 0; k < items.size(); ++k)
        newIndex.insert(items[k].id, k);
    if (newIndex.size() != items.size()) {
        // Duplicate ids cannot be matched row for row.
        reset(tagNamesByItem);
    } else {
        removeGone(newIndex);
        // Where each new row stands now (-1 for new ones): one pass, no second table.
        QList<qsizetype> currentOfNew(items.size(), -1);
        for (qsizetype i = 0; i < m_rows.size(); ++i)
            currentOfNew[newIndex.value(m_rows[i]->id)] = i;
        if (moveIntoOrder(items, currentOfNew)) {
            insertNew(items, currentOfNew);
            refreshChanged(items, tagNamesByItem);
        } else {
            reset(tagNamesByItem);
        }
    }
    m_items = m_incoming;
    m_incoming.clear();
    if (count() != before)
        Q_EMIT countChanged();
    Q_EMIT itemsChanged();
}

bool ItemListModel::sameIdsInOrder(const QList<LibraryItem> &items) const
{
    if (items.size() != m_rows.size())
        return false;
    return items.constData() == m_items.constData() || startsWithShownIds(items);
}

bool ItemListModel::extendsShownRows(const QList<LibraryItem> &items) const
{
    return !m_rows.isEmpty() && items.size() > m_rows.size() && startsWithShownIds(items);
}

bool ItemListModel::startsWithShownIds(const QList<LibraryItem> &items) const
{
    Q_ASSERT(items.size() >= m_rows.size());
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (items[i].id != m_rows[i]->id)
            return false;
    }
    return true;
}

void ItemListModel::removeGone(const QHash<QString, qsizetype> &kept)
{
    for (qsizetype last = m_rows.size() - 1; last >= 0; --last) {
        if (kept.contains(m_rows[last]->id))
            continue;
        qsizetype first = last;
        while (first > 0 && !kept.contains(m_rows[first - 1]->id))
            --first;
        beginRemoveRows({}, int(first), int(last));
        m_rows.remove(first, last - first + 1);
        endRemoveRows();
        last = first;
    }
}

bool ItemListModel::moveIntoOrder(const QList<LibraryItem> &items, const QList<qsizetype> &currentOfNew)
{
    // The rows that stay put are a longest run already in the new order; only the others move,
    // each to just after the row that precedes it in the new order.
    QList<qsizetype> order; // indexes into `items` of the rows that exist now, in the new order
    QList<qsizetype> positions; // their current rows
    for (qsizetype k = 0; k < items.size(); ++k) {
        if (currentOfNew[k] >= 0) {
            order.append(k);
            positions.append(currentOfNew[k]);
        }
    }
    const QList<qsizetype> stable = longestIncreasing(positions);
    if (order.size() - stable.size() > maximumMoves)
        return false;
    QList<bool> staying(order.size(), false);
    for (const qsizetype i : stable)
        staying[i] = true;

    for (qsizetype k = 0; k < order.size(); ++k) {
        if (staying[k])
            continue;
        const qsizetype from = indexOfId(m_rows, items[order[k]].id);
        const qsizetype to = k == 0 ? 0 : indexOfId(m_rows, items[order[k - 1]].id) + 1;
        if (to == from || to == from + 1)
            continue;
        beginMoveRows({}, int(from), int(from), {}, int(to));
        m_rows.move(from, from < to ? to - 1 : to);
        endMoveRows();
    }
    return true;
}

void ItemListModel::insertNew(const QList<LibraryItem> &items, const QList<qsizetype> &currentOfNew)
{
    for (qsizetype k = 0; k < items.size();) {
        if (currentOfNew[k] >= 0) {
            ++k;
            continue;
        }
        qsizetype end = k + 1;
        while (end < items.size() && currentOfNew[end] < 0)
            ++end;
        beginInsertRows({}, int(k), int(end - 1));
        QList<const LibraryItem *> added(end - k);
        for (qsizetype i = k; i < end; ++i)
            added[i - k] = m_incoming.constData() + i;
        m_rows.insert(k, end - k, nullptr);
        std::copy(added.cbegin(), added.cend(), m_rows.begin() + k);
        endInsertRows();
        k = end;
    }
}

bool ItemListModel::refreshChanged(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem)
{
    bool any = false;
    Q_ASSERT(items.size() >= m_rows.size());
    const bool checkTags = !m_tagNames.isEmpty() || !tagNamesByItem.isEmpty();
    qsizetype runStart = -1;
    const auto flush = [&](qsizetype end) {
        if (runStart >= 0)
            Q_EMIT dataChanged(index(int(runStart)), index(int(end - 1)));
        runStart = -1;
    };
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        const LibraryItem *incoming = m_incoming.constData() + i;
        const bool changed = !(*m_rows[i] == *incoming)
            || (checkTags && m_tagNames.value(incoming->id) != tagNamesByItem.value(incoming->id));
        m_rows[i] = incoming;
        any |= changed;
        if (changed) {
            if (runStart < 0)
                runStart = i;
        } else {
            flush(i);
        }
    }
    m_tagNames = tagNamesByItem;
    flush(m_rows.size());
    return any;
}

void ItemListModel::reset(const QHash<QString, QStringList> &tagNamesByItem)
{
    beginResetModel();
    m_rows.resize(m_incoming.size());
    for (qsizetype i = 0; i < m_incoming.size(); ++i)
        m_rows[i] = m_incoming.constData() + i;
    m_tagNames = tagNamesByItem;
    endResetModel();
}

} // namespace kivo
