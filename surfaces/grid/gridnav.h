#pragma once

#include "core/records.h"

#include <QList>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

namespace kivo {

class AppSettings;

/** The settings that shape cards: their crop, their chips and the gap between them. */
struct CardSettings {
    QString cardShape = QStringLiteral("original");
    bool cardShowTitle = false;
    bool cardShowTags = false;
    double gridSpacing = 14;

    [[nodiscard]] static CardSettings from(const AppSettings &settings);
    bool operator==(const CardSettings &) const = default;
};

/**
 * Where every card of the grid would be, worked out from the records alone: no card view needs
 * to exist for the keyboard to move across columns of unequal height, and the virtualised grid
 * places its cards from the same numbers.
 */
namespace GridNav {

/** The grid's horizontal inset: 18 on each side. */
constexpr double horizontalInset = 36;

/** One card's place: its column (from 0), the sum of heights and gaps above it, and its height. */
struct Cell {
    LibraryItem item;
    int column = 0;
    double top = 0;
    double height = 0;
};

/** A card's place without its record: what the view needs to position it. */
struct Placement {
    int column = 0;
    double top = 0;
    double height = 0;
};

/** Width over height of a card for the record under a card shape. */
[[nodiscard]] double aspectRatio(const LibraryItem &item, const QString &cardShape);
/** The card's height at a column width, chips included. */
[[nodiscard]] double itemCardHeight(const LibraryItem &item, double columnWidth, const CardSettings &settings);
/** The column width of a grid `width` wide: the inset and gaps taken off, shared by n, at least 1. */
[[nodiscard]] double columnWidth(double width, int columns, double spacing);

/**
 * Places the items in list order, each in the column with the smallest running total (a tie
 * goes left). Fewer than 2 columns put everything in column 0.
 */
[[nodiscard]] QList<Placement> place(
    const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings);
/**
 * Places `items` from row `from` on, as `place` would, after cards whose running column totals
 * are `totals` (one a column, all 0 for an empty grid), and leaves the new totals there.
 */
[[nodiscard]] QList<Placement> placeFrom(const QList<LibraryItem> &items, qsizetype from, int columns,
    double width, const CardSettings &settings, QList<double> &totals);
[[nodiscard]] QList<QList<LibraryItem>> estimateColumns(
    const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings);
/** The cells column by column, each column from the top. */
[[nodiscard]] QList<Cell> estimateCells(
    const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings);

/** The key under which cells are cached: count, first id, last id, width and whole columns, joined by "|". */
[[nodiscard]] QString cellsKey(const QList<LibraryItem> &items, double width, double gridColumns);

/** Whether a card's frame lies inside the viewport, 8 points in from its top and bottom edges. */
[[nodiscard]] bool isFrameVisible(const QRectF &frame, const QRectF &viewport);

/** The outcome of one arrow key: the item to select, and whether to scroll it into view. */
struct FocusMove {
    std::optional<QString> select;
    bool reveal = false;
};

/** What an arrow key needs to know about the view it moves in. */
struct FocusContext {
    ViewMode viewMode = ViewMode::cards;
    double gridNavWidth = 0;
    /** Cells of the current layout (used in cards mode with a known width). */
    std::function<QList<Cell>()> cells;
    /** Whether the item's card is on screen now; without it nothing counts as visible. */
    std::function<bool(const QString &)> isVisible;
};

/** The focus move for arrow steps (dx, dy) from the focused item over the items in list order. */
[[nodiscard]] FocusMove moveFocus(const QList<LibraryItem> &items, const std::optional<QString> &focusedId, int dx,
    int dy, const FocusContext &context);

} // namespace GridNav
} // namespace kivo
