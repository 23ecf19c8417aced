#pragma once

#include "core/records.h"

#include <QAbstractListModel>
#include <QHash>
#include <QList>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace kivo {

/**
 * One of the Store's published item lists (`allRows` or `railItems`) as a QML list model. A new
 * list is diffed against the old one by id, so QML sees removes, moves, inserts and changed rows
 * rather than a reset, and the cards on screen stay where they are.
 */
class ItemListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Item lists come from the selection controller")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        /** string: the item's id. */
        IdRole = Qt::UserRole + 1,
        /** string: "image", "video", "link", "text" or "file". */
        KindRole,
        /** string: the stored title, or empty. */
        TitleRole,
        /** string: what to call it on screen: the title, else the file name, else the domain. */
        DisplayTitleRole,
        /** string: the note, or empty. */
        NoteRole,
        /** string: where it came from, or empty. */
        SourceUrlRole,
        /** string: the host of the source address without "www.", or empty. */
        DomainRole,
        /** string: "image://thumb/<id>" when the item has a stored file, else empty (add "?<width>"). */
        ThumbnailRole,
        /** bool: whether a stored file stands behind the item. */
        HasFileRole,
        /** double: width over height of the stored picture (0 when unknown). */
        AspectRole,
        /** list of colours: the stored palette, most common first. */
        ColoursRole,
        /** colour: the one colour for the card's edge; transparent when there are none. */
        AccentRole,
        /** bool */
        FavouriteRole,
        /** list of strings: visible tag names, by name. */
        TagNamesRole,
        /** date-time: when it was added. */
        AddedAtRole,
        /** string: the added date as "d MMM yyyy, h:mm AM". */
        DateTextRole,
        /** number: bytes of the stored file, -1 when unknown. */
        FileSizeRole,
        /** string: the file size for people ("1.2 MB"), or empty. */
        SizeTextRole,
        /** double: seconds of a video, 0 when unknown. */
        DurationRole,
        /** string: a video's length as "m:ss" or "h:mm:ss", or empty. */
        DurationTextRole,
    };
    Q_ENUM(Role)

    explicit ItemListModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] int count() const { return int(m_items.size()); }
    [[nodiscard]] const QList<LibraryItem> &items() const { return m_items; }
    /** The row of an id, or -1. */
    Q_INVOKABLE int indexOf(const QString &itemId) const;
    /** The id at a row, or empty. */
    Q_INVOKABLE QString idAt(int row) const;

    /**
     * Replaces the list. Rows are matched by id: gone ones are removed, new ones inserted, the
     * rest moved into the new order (fewest moves) and reported changed when their record or tags
     * differ. A wholesale reorder past `maximumMoves` is a reset instead.
     */
    void setItems(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem = {});

    static constexpr int maximumMoves = 500;

Q_SIGNALS:
    void countChanged();
    /** After every change of rows, positions or records (the views lay out again); not after a reload that changed
     * nothing. */
    void itemsChanged();

private:
    [[nodiscard]] bool sameIdsInOrder(const QList<LibraryItem> &items) const;
    /** Whether `items` starts with the shown rows, in order, and has more after them. */
    [[nodiscard]] bool extendsShownRows(const QList<LibraryItem> &items) const;
    /** Whether the first rows of `items`, at least as many as are shown, have the shown ids in order. */
    [[nodiscard]] bool startsWithShownIds(const QList<LibraryItem> &items) const;
    void removeGone(const QHash<QString, qsizetype> &kept);
    bool moveIntoOrder(const QList<LibraryItem> &items, const QList<qsizetype> &currentOfNew);
    void insertNew(const QList<LibraryItem> &items, const QList<qsizetype> &currentOfNew);
    /** Points every row at its record in `items` (which may run on past the rows); reports (and returns) those
     * whose record or tags differ. */
    bool refreshChanged(const QList<LibraryItem> &items, const QHash<QString, QStringList> &tagNamesByItem);
    void reset(const QHash<QString, QStringList> &tagNamesByItem);

    /** The current list, shared with the Store's copy; `items()`. */
    QList<LibraryItem> m_items;
    /** The list being taken in during `setItems`. */
    QList<LibraryItem> m_incoming;
    /** Row to record: into `m_items`, or during `setItems` into either list. */
    QList<const LibraryItem *> m_rows;
    QHash<QString, QStringList> m_tagNames;
    /** Where the rows' files live, read once a list rather than once a card. */
    QString m_itemFolder;
};

} // namespace kivo
