#pragma once

#include <QList>
#include <QRectF>
#include <QSizeF>

#include <functional>
#include <optional>

namespace kivo {

/**
 * Places measured cards in columns, each card in the shortest column (a tie goes left), with
 * column widths and heights rounded to half points. The cache keeps the measurement until the
 * width, columns, spacing or card count change; a card that only changes height keeps it.
 */
class MasonryLayout
{
public:
    /** What a layout pass remembers for the next one. */
    struct Cache {
        double width = -1;
        int columns = 0;
        double spacing = 0;
        int count = -1;
        QList<double> heights;
        QList<double> columnTotals;
    };

    /** Measures card `index` at a column width, with free height. */
    using Measure = std::function<double(int index, double columnWidth)>;

    MasonryLayout(int columns, double spacing);

    [[nodiscard]] int columns() const { return m_columns; }
    [[nodiscard]] double spacing() const { return m_spacing; }

    /** The column width for a proposed width, rounded to the nearest half point. */
    [[nodiscard]] double columnWidth(double width) const;

    /**
     * The layout's size for a proposed width (800 when none is proposed), measuring the cards
     * only when the cache does not match.
     */
    [[nodiscard]] QSizeF sizeThatFits(
        std::optional<double> proposedWidth, int count, const Measure &measure, Cache &cache) const;

    /** The frame of each card, in order, within `bounds` (whose width is the one measured). */
    [[nodiscard]] QList<QRectF> placeSubviews(const QRectF &bounds, int count, const Cache &cache) const;

private:
    int m_columns;
    double m_spacing;
};

} // namespace kivo
