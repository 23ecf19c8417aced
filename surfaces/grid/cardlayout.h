#pragma once

#include "core/records.h"
#include "surfaces/grid/gridnav.h"

#include <QDate>
#include <QList>
#include <QRectF>
#include <QString>

namespace kivo {

/**
 * The frames of every card (and section heading) of a view in content coordinates, worked out
 * from the records, with an index by height bands so the virtualised view finds the cards near
 * the viewport without looking at the others.
 */
class CardLayout
{
public:
    /** A heading above a group of cards (the timeline's days). */
    struct Section {
        QRectF frame;
        QString title;
        int firstRow = 0;
    };

    /** Space above the first card and below the last one. */
    static constexpr double verticalPadding = 18;
    static constexpr double sectionHeadingHeight = 40;
    static constexpr double sectionGap = 18;

    /** The card grid: GridNav's placement, inset 18 on each side. */
    [[nodiscard]] static CardLayout grid(
        const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings);
    /**
     * Whether this is a grid laid out for `columns`, `width` and `settings`, which rows added after
     * its own can continue.
     */
    [[nodiscard]] bool continuesAsGrid(int columns, double width, const CardSettings &settings) const;
    /**
     * Places the rows of `items` past this grid's own after its cards: the frames that `grid` of the
     * whole list would give, when the grid's rows are the first of `items` with the same records.
     */
    void appendToGrid(const QList<LibraryItem> &items);
    /**
     * The timeline: items grouped by the calendar day they were added, newest first (a stable
     * order for equal times), each day a masonry of `columns` columns under its heading.
     */
    [[nodiscard]] static CardLayout timeline(
        const QList<LibraryItem> &items, int columns, double width, const CardSettings &settings, const QDate &today);

    /** The frame of each row of the item list, in list order. */
    [[nodiscard]] const QList<QRectF> &frames() const { return m_frames; }
    [[nodiscard]] const QList<Section> &sections() const { return m_sections; }
    [[nodiscard]] double contentHeight() const { return m_contentHeight; }

    /** The rows whose frames meet the band [top, bottom), ascending. */
    [[nodiscard]] QList<int> rowsIn(double top, double bottom) const;
    /** The sections whose frames meet the band [top, bottom). */
    [[nodiscard]] QList<int> sectionsIn(double top, double bottom) const;

    /** The heading of a day: "Today", "Yesterday", else the weekday and date. */
    [[nodiscard]] static QString dayTitle(const QDate &day, const QDate &today);

private:
    void buildIndex();
    /** Adds the rows from `from` on to the band index. */
    void indexRows(qsizetype from);
    /** Adds the placements of the rows from `from` on; the grid's bottom and height follow them. */
    void appendPlacements(const QList<GridNav::Placement> &placements);

    QList<QRectF> m_frames;
    QList<Section> m_sections;
    double m_contentHeight = 0;
    QList<QList<int>> m_bands;
    // What a grid was laid out for, and where its columns end, for rows added later.
    bool m_isGrid = false;
    int m_columns = 0;
    double m_width = 0;
    CardSettings m_settings;
    QList<double> m_columnTotals;
    double m_bottom = 0;
};

} // namespace kivo
