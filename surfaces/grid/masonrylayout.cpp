#include "surfaces/grid/masonrylayout.h"

#include <algorithm>
#include <cmath>

namespace kivo {

namespace {

constexpr double defaultProposedWidth = 800;

double roundToHalf(double value)
{
    return std::round(value * 2) * 0.5;
}

int shortestColumn(const QList<double> &totals)
{
    int shortest = 0;
    for (int column = 1; column < totals.size(); ++column) {
        if (totals[column] < totals[shortest])
            shortest = column;
    }
    return shortest;
}

} // namespace

MasonryLayout::MasonryLayout(int columns, double spacing) : m_columns(columns), m_spacing(spacing)
{
}

double MasonryLayout::columnWidth(double width) const
{
    const int n = std::max(m_columns, 1);
    return roundToHalf((width - m_spacing * (n - 1)) / n);
}

QSizeF MasonryLayout::sizeThatFits(
    std::optional<double> proposedWidth, int count, const Measure &measure, Cache &cache) const
{
    const double width = proposedWidth.value_or(defaultProposedWidth);
    const bool fresh
        = cache.width == width && cache.columns == m_columns && cache.spacing == m_spacing && cache.count == count;
    if (!fresh) {
        const int n = std::max(m_columns, 1);
        const double cardWidth = columnWidth(width);
        cache = Cache{width, m_columns, m_spacing, count, {}, QList<double>(n, 0.0)};
        cache.heights.reserve(count);
        for (int i = 0; i < count; ++i) {
            const int column = shortestColumn(cache.columnTotals);
            const double height = roundToHalf(measure(i, cardWidth));
            cache.heights.append(height);
            cache.columnTotals[column] += m_spacing + height;
        }
    }
    const double tallest = cache.columnTotals.isEmpty()
        ? m_spacing
        : *std::max_element(cache.columnTotals.cbegin(), cache.columnTotals.cend());
    return {width, std::max(tallest - m_spacing, 0.0)};
}

QList<QRectF> MasonryLayout::placeSubviews(const QRectF &bounds, int count, const Cache &cache) const
{
    const int n = std::max(m_columns, 1);
    const double cardWidth = columnWidth(bounds.width());
    QList<double> totals(n, 0.0);
    QList<QRectF> frames;
    frames.reserve(count);
    for (int i = 0; i < count; ++i) {
        const int column = shortestColumn(totals);
        const double height = i < cache.heights.size() ? cache.heights[i] : 0.0;
        frames.append(
            QRectF(bounds.x() + column * (cardWidth + m_spacing), bounds.y() + totals[column], cardWidth, height));
        totals[column] += height + m_spacing;
    }
    return frames;
}

} // namespace kivo
