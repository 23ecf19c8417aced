#include "surfaces/grid/cardlayout.h"

#include "surfaces/grid/masonrylayout.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr double bandHeight = 512;

int bandOf(double y)
{
    return std::max(0, int(std::floor(y / bandHeight)));
}

/** The local calendar day of a time, remembering the last day's span: neighbours mostly share one. */
class LocalDays
{
public:
    QDate operator()(double seconds)
    {
        const auto second = qint64(std::floor(seconds));
        if (second < m_start || second >= m_end) {
            m_day = QDateTime::fromSecsSinceEpoch(second).date();
            m_start = m_day.startOfDay().toSecsSinceEpoch();
            m_end = m_day.addDays(1).startOfDay().toSecsSinceEpoch();
        }
        return m_day;
    }

private:
    qint64 m_start = 1;
    qint64 m_end = 0;
    QDate m_day;
};

} // namespace

CardLayout CardLayout::grid(const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings)
{
    CardLayout layout;
    layout.m_isGrid = true;
    layout.m_columns = columns;
    layout.m_width = width;
    layout.m_settings = settings;
    layout.m_frames.reserve(items.size());
    layout.appendPlacements(GridNav::placeFrom(items, 0, columns, width, settings, layout.m_columnTotals));
    layout.buildIndex();
    return layout;
}

bool CardLayout::continuesAsGrid(int columns, double width, const CardSettings &settings) const
{
    return m_isGrid && m_columns == columns && m_width == width && m_settings == settings;
}

void CardLayout::appendToGrid(const QList<LibraryItem> &items)
{
    Q_ASSERT(m_isGrid);
    const qsizetype from = m_frames.size();
    if (items.size() <= from)
        return;
    m_frames.reserve(items.size());
    appendPlacements(GridNav::placeFrom(items, from, m_columns, m_width, m_settings, m_columnTotals));
    indexRows(from);
}

void CardLayout::appendPlacements(const QList<GridNav::Placement> &placements)
{
    const double cardWidth = GridNav::columnWidth(m_width, std::max(m_columns, 1), m_settings.gridSpacing);
    for (const GridNav::Placement &placement : placements) {
        const QRectF frame(GridNav::horizontalInset / 2 + placement.column * (cardWidth + m_settings.gridSpacing),
            verticalPadding + placement.top, cardWidth, placement.height);
        m_frames.append(frame);
        m_bottom = std::max(m_bottom, frame.bottom());
    }
    m_contentHeight = (m_frames.isEmpty() ? 0 : m_bottom) + verticalPadding;
}

CardLayout CardLayout::timeline(
    const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings, const QDate &today)
{
    CardLayout layout;
    layout.m_frames.resize(items.size());
    QList<int> order(items.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return items[a].addedAt > items[b].addedAt; });
    // Local-time conversion is the costly part: once per day rather than once per item.
    LocalDays localDay;
    QList<QDate> days(items.size());
    for (qsizetype i = 0; i < items.size(); ++i)
        days[i] = localDay(items[i].addedAt);

    const double inner = std::max(width - GridNav::horizontalInset, 1.0);
    const MasonryLayout masonry(std::max(columns, 1), settings.gridSpacing);
    double y = verticalPadding;
    for (qsizetype start = 0; start < order.size();) {
        const QDate day = days[order[start]];
        qsizetype end = start + 1;
        while (end < order.size() && days[order[end]] == day)
            ++end;
        layout.m_sections.append(
            {QRectF(GridNav::horizontalInset / 2, y, inner, sectionHeadingHeight), dayTitle(day, today), order[start]});
        y += sectionHeadingHeight;

        const int count = int(end - start);
        MasonryLayout::Cache cache;
        const QSizeF size = masonry.sizeThatFits(
            inner, count,
            [&](int i, double cardWidth) {
                return GridNav::itemCardHeight(items[order[start + i]], cardWidth, settings);
            },
            cache);
        const QList<QRectF> frames
            = masonry.placeSubviews(QRectF(GridNav::horizontalInset / 2, y, inner, size.height()), count, cache);
        for (int i = 0; i < count; ++i)
            layout.m_frames[order[start + i]] = frames[i];
        y += size.height() + sectionGap;
        start = end;
    }
    layout.m_contentHeight = order.isEmpty() ? verticalPadding : y - sectionGap + verticalPadding;
    layout.buildIndex();
    return layout;
}

QString CardLayout::dayTitle(const QDate &day, const QDate &today)
{
    if (day == today)
        return u"Today"_s;
    if (day == today.addDays(-1))
        return u"Yesterday"_s;
    return QLocale(QLocale::English)
        .toString(day, day.year() == today.year() ? u"dddd d MMMM"_s : u"dddd d MMMM yyyy"_s);
}

void CardLayout::buildIndex()
{
    m_bands.clear();
    indexRows(0);
}

void CardLayout::indexRows(qsizetype from)
{
    // Rows only ever join the end of a band's list, which keeps every list in row order.
    m_bands.resize(std::max<qsizetype>(m_bands.size(), bandOf(m_contentHeight) + 1));
    for (int row = int(from); row < m_frames.size(); ++row) {
        const QRectF &frame = m_frames[row];
        const int last = std::min(bandOf(frame.bottom()), int(m_bands.size()) - 1);
        for (int band = bandOf(frame.top()); band <= last; ++band)
            m_bands[band].append(row);
    }
}

QList<int> CardLayout::rowsIn(double top, double bottom) const
{
    QList<int> rows;
    if (m_bands.isEmpty() || bottom <= top)
        return rows;
    const int first = bandOf(top);
    const int last = std::min(bandOf(bottom), int(m_bands.size()) - 1);
    for (int band = first; band <= last; ++band) {
        for (const int row : m_bands[band]) {
            const QRectF &frame = m_frames[row];
            // A card spanning several bands is taken from the first band of the query it meets.
            if (std::max(bandOf(frame.top()), first) != band)
                continue;
            if (frame.bottom() > top && frame.top() < bottom)
                rows.append(row);
        }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

QList<int> CardLayout::sectionsIn(double top, double bottom) const
{
    QList<int> found;
    const auto firstBelow = std::lower_bound(m_sections.cbegin(), m_sections.cend(), top,
        [](const Section &section, double y) { return section.frame.bottom() <= y; });
    for (auto it = firstBelow; it != m_sections.cend() && it->frame.top() < bottom; ++it)
        found.append(int(it - m_sections.cbegin()));
    return found;
}

} // namespace kivo
