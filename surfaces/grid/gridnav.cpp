#include "surfaces/grid/gridnav.h"

#include "core/appsettings.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kivo {

CardSettings CardSettings::from(const AppSettings &settings)
{
    return {settings.cardShape(), settings.cardShowTitle(), settings.cardShowTags(), settings.gridSpacing()};
}

namespace GridNav {

namespace {

constexpr double titleChipHeight = 22;
constexpr double tagChipHeight = 21;
constexpr double chipPadding = 15;

FocusMove selectIfMoved(const QString &target, const std::optional<QString> &focusedId, const FocusContext &context)
{
    if (focusedId && *focusedId == target)
        return {};
    return {target, !(context.isVisible && context.isVisible(target))};
}

qsizetype indexOfId(const QList<LibraryItem> &items, const std::optional<QString> &id)
{
    if (!id)
        return -1;
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (items[i].id == *id)
            return i;
    }
    return -1;
}

FocusMove linearStep(
    const QList<LibraryItem> &items, const std::optional<QString> &focusedId, int step, const FocusContext &context)
{
    const qsizetype current = std::max<qsizetype>(indexOfId(items, focusedId), 0);
    const qsizetype next = std::clamp<qsizetype>(current + step, 0, items.size() - 1);
    return selectIfMoved(items[next].id, focusedId, context);
}

} // namespace

double aspectRatio(const LibraryItem &item, const QString &cardShape)
{
    if (cardShape == u"square")
        return 1.0;
    if (cardShape == u"rectangle")
        return 1.3333333333333333;
    if (item.width && item.height && *item.width > 0 && *item.height > 0)
        return std::max(*item.width / *item.height, 0.25);
    if (item.kind == u"video")
        return 1.7777777777777777;
    if (item.kind == u"link")
        return 1.3333333333333333;
    if (item.kind == u"text")
        return 1.1764705882352942;
    return 1.0;
}

double itemCardHeight(const LibraryItem &item, double columnWidth, const CardSettings &settings)
{
    double height = columnWidth / aspectRatio(item, settings.cardShape);
    // A link without a stored cover shows a short placeholder in every shape.
    if (item.kind == u"link" && !item.filePath)
        height = columnWidth * 0.5;
    if (settings.cardShowTitle)
        height += titleChipHeight;
    if (settings.cardShowTags)
        height += tagChipHeight;
    if (settings.cardShowTitle || settings.cardShowTags)
        height += chipPadding;
    return height;
}

double columnWidth(double width, int columns, double spacing)
{
    const int n = std::max(columns, 1);
    return std::max((width - horizontalInset - spacing * (n - 1)) / n, 1.0);
}

QList<Placement> place(const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings)
{
    QList<double> totals(std::max(columns, 1), 0.0);
    return placeFrom(items, 0, columns, width, settings, totals);
}

QList<Placement> placeFrom(const QList<LibraryItem> &items, qsizetype from, int columns, double width,
    const CardSettings &settings, QList<double> &totals)
{
    QList<Placement> placements;
    placements.reserve(std::max<qsizetype>(items.size() - from, 0));
    const int n = std::max(columns, 1);
    const double cardWidth = columnWidth(width, n, settings.gridSpacing);
    totals.resize(n, 0.0);
    for (qsizetype row = from; row < items.size(); ++row) {
        const LibraryItem &item = items[row];
        int shortest = 0;
        for (int column = 1; column < n; ++column) {
            if (totals[column] < totals[shortest])
                shortest = column;
        }
        const double height = itemCardHeight(item, cardWidth, settings);
        placements.append({shortest, totals[shortest], height});
        totals[shortest] += height + settings.gridSpacing;
    }
    return placements;
}

QList<QList<LibraryItem>> estimateColumns(
    const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings)
{
    if (columns < 2)
        return {items};
    QList<QList<LibraryItem>> result(columns);
    const QList<Placement> placements = place(items, columns, width, settings);
    for (qsizetype i = 0; i < items.size(); ++i)
        result[placements[i].column].append(items[i]);
    return result;
}

QList<Cell> estimateCells(const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings)
{
    const int n = std::max(columns, 1);
    const QList<Placement> placements = place(items, n, width, settings);
    QList<QList<qsizetype>> byColumn(n);
    for (qsizetype i = 0; i < items.size(); ++i)
        byColumn[placements[i].column].append(i);
    QList<Cell> cells;
    cells.reserve(items.size());
    for (int column = 0; column < n; ++column) {
        for (const qsizetype i : byColumn[column])
            cells.append({items[i], column, placements[i].top, placements[i].height});
    }
    return cells;
}

QString cellsKey(const QList<LibraryItem> &items, double width, double gridColumns)
{
    Q_ASSERT_X(std::isfinite(gridColumns), "GridNav::cellsKey", "gridColumns must be finite");
    const QString first = items.isEmpty() ? QString() : items.first().id;
    const QString last = items.isEmpty() ? QString() : items.last().id;
    return QStringList{
        QString::number(items.size()), first, last, QString::number(width), QString::number(qint64(gridColumns))}
        .join(u'|');
}

bool isFrameVisible(const QRectF &frame, const QRectF &viewport)
{
    if (viewport.isNull() || frame.isNull() || frame.isEmpty())
        return false;
    return frame.top() >= viewport.top() + 8 && frame.bottom() <= viewport.bottom() - 8;
}

FocusMove moveFocus(const QList<LibraryItem> &items, const std::optional<QString> &focusedId, int dx, int dy,
    const FocusContext &context)
{
    if (items.isEmpty())
        return {};
    switch (context.viewMode) {
    case ViewMode::timeline:
    case ViewMode::canvas:
        return {};
    case ViewMode::list:
        return linearStep(items, focusedId, dy != 0 ? dy : dx, context);
    case ViewMode::cards:
        if (context.gridNavWidth <= 0 || !context.cells)
            return linearStep(items, focusedId, dx + dy, context);
        break;
    }

    const QList<Cell> cells = context.cells();
    const auto focused = std::find_if(
        cells.cbegin(), cells.cend(), [&](const Cell &cell) { return focusedId && cell.item.id == *focusedId; });
    if (focused == cells.cend())
        return {items.first().id, true};

    if (dy != 0) {
        QList<const Cell *> column;
        for (const Cell &cell : cells) {
            if (cell.column == focused->column)
                column.append(&cell);
        }
        std::stable_sort(column.begin(), column.end(), [](const Cell *a, const Cell *b) { return a->top < b->top; });
        const qsizetype at = column.indexOf(&*focused);
        const qsizetype next = std::clamp<qsizetype>(at + dy, 0, column.size() - 1);
        return selectIfMoved(column[next]->item.id, focusedId, context);
    }
    if (dx == 0)
        return {};

    // Cells come column by column from the top, so on a tie the first (higher) candidate stays.
    const double middle = focused->top + focused->height * 0.5;
    const Cell *best = nullptr;
    double bestDistance = 0;
    for (const Cell &cell : cells) {
        if (cell.column != focused->column + dx)
            continue;
        const double distance = std::abs(cell.top + cell.height * 0.5 - middle);
        if (!best || distance < bestDistance) {
            best = &cell;
            bestDistance = distance;
        }
    }
    if (!best)
        return {};
    return selectIfMoved(best->item.id, focusedId, context);
}

} // namespace GridNav
} // namespace kivo
