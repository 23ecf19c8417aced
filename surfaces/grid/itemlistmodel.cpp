#include "surfaces/grid/itemlistmodel.h"

#include "surfaces/grid/itemcolours.h"

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
    QList<qsizetype> tails;        // positions of the smallest tail of each length
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

qsizetype indexOfId(const QList<LibraryItem> &items, const QString &id)
{
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (items[i].id == id)
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
    const QString tail = u"%1:%2"_s.arg(minutes, hours ? 2 : 1, 10, QLatin1Char('0')).arg(rest, 2, 10, QLatin1Char('0'));
    return hours ? QString::number(hours) + u':' + tail : tail;
}

} // namespace

ItemListModel::ItemListModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

int ItemListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
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
    const LibraryItem &item = m_items[index.row()];
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
        return item.filePath ? u"image://thumb/"_s + item.id : QString();
    case HasFileRole:
        return item.filePath.has_value();
    case AspectRole:
        return item.width && item.height && *item.width > 0 && *item.height > 0 ? *item.width / *item.height : 0.0;
    case ColoursRole:
        return QVariant::fromValue(ItemColours::decode(item.colors.value_or(QString())));
    case AccentRole:
        return ItemColours::accent(ItemColours::decode(item.colors.value_or(QString()))).value_or(QColor(Qt::transparent));
    case FavouriteRole:
        return item.favourite;
    case TagNamesRole:
        return m_tagNames.value(item.id);
    case AddedAtRole:
        return QDateTime::fromMSecsSinceEpoch(qint64(item.addedAt * 1000.0));
    case DateTextRole:
        return QLocale(QLocale::English).toString(QDateTime::fromMSecsSinceEpoch(qint64(item.addedAt * 1000.0)),
                                                  u"d MMM yyyy, h:mm AP"_s);
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
    return int(indexOfId(m_items, itemId));
}

QString ItemListModel::idAt(int row) const
{
    return row >= 0 && row < m_items.size() ? m_items[row].id : QString();
}

void ItemListModel::setItems(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem)
{
    const int before = count();
    QSet<QString> ids;
    ids.reserve(items.size());
    for (const LibraryItem &item : items)
        ids.insert(item.id);
    if (ids.size() != items.size()) {
        // Duplicate ids cannot be matched row for row.
        reset(items, tagNamesByItem);
    } else {
        removeGone(ids);
        if (moveIntoOrder(items)) {
            insertNew(items);
            refreshChanged(items, tagNamesByItem);
        } else {
            reset(items, tagNamesByItem);
        }
    }
    if (count() != before)
        Q_EMIT countChanged();
    Q_EMIT itemsChanged();
}

void ItemListModel::removeGone(const QSet<QString> &kept)
{
    for (qsizetype last = m_items.size() - 1; last >= 0; --last) {
        if (kept.contains(m_items[last].id))
            continue;
        qsizetype first = last;
        while (first > 0 && !kept.contains(m_items[first - 1].id))
            --first;
        beginRemoveRows({}, int(first), int(last));
        m_items.remove(first, last - first + 1);
        endRemoveRows();
        last = first;
    }
}

bool ItemListModel::moveIntoOrder(const QList<LibraryItem> &items)
{
    // The rows that stay put are a longest run already in the new order; only the others move,
    // each to just after the row that precedes it in the new order.
    QHash<QString, qsizetype> current;
    current.reserve(m_items.size());
    for (qsizetype i = 0; i < m_items.size(); ++i)
        current.insert(m_items[i].id, i);
    QList<QString> order;
    QList<qsizetype> positions;
    for (const LibraryItem &item : items) {
        const auto found = current.constFind(item.id);
        if (found != current.cend()) {
            order.append(item.id);
            positions.append(*found);
        }
    }
    const QList<qsizetype> stable = longestIncreasing(positions);
    if (order.size() - stable.size() > maximumMoves)
        return false;
    QSet<QString> staying;
    for (const qsizetype i : stable)
        staying.insert(order[i]);

    for (qsizetype k = 0; k < order.size(); ++k) {
        if (staying.contains(order[k]))
            continue;
        const qsizetype from = indexOfId(m_items, order[k]);
        const qsizetype to = k == 0 ? 0 : indexOfId(m_items, order[k - 1]) + 1;
        if (to == from || to == from + 1)
            continue;
        beginMoveRows({}, int(from), int(from), {}, int(to));
        m_items.move(from, from < to ? to - 1 : to);
        endMoveRows();
    }
    return true;
}

void ItemListModel::insertNew(const QList<LibraryItem> &items)
{
    QSet<QString> existing;
    existing.reserve(m_items.size());
    for (const LibraryItem &item : m_items)
        existing.insert(item.id);
    for (qsizetype k = 0; k < items.size();) {
        if (existing.contains(items[k].id)) {
            ++k;
            continue;
        }
        qsizetype end = k + 1;
        while (end < items.size() && !existing.contains(items[end].id))
            ++end;
        beginInsertRows({}, int(k), int(end - 1));
        m_items.insert(k, end - k, LibraryItem());
        std::copy(items.cbegin() + k, items.cbegin() + end, m_items.begin() + k);
        endInsertRows();
        k = end;
    }
}

void ItemListModel::refreshChanged(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem)
{
    Q_ASSERT(items.size() == m_items.size());
    qsizetype runStart = -1;
    const auto flush = [&](qsizetype end) {
        if (runStart >= 0)
            Q_EMIT dataChanged(index(int(runStart)), index(int(end - 1)));
        runStart = -1;
    };
    for (qsizetype i = 0; i < items.size(); ++i) {
        const bool changed = !(m_items[i] == items[i]) || m_tagNames.value(items[i].id) != tagNamesByItem.value(items[i].id);
        if (changed) {
            m_items[i] = items[i];
            if (runStart < 0)
                runStart = i;
        } else {
            flush(i);
        }
    }
    m_tagNames = tagNamesByItem;
    flush(items.size());
}

void ItemListModel::reset(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem)
{
    beginResetModel();
    m_items = items;
    m_tagNames = tagNamesByItem;
    endResetModel();
}

} // namespace kivo
