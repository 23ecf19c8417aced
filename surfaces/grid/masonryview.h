#pragma once

#include "surfaces/grid/cardlayout.h"

#include <QDate>
#include <QHash>
#include <QPointer>
#include <QQmlComponent>
#include <QQuickItem>
#include <QSet>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace kivo {

class ItemListModel;

/**
 * A virtualised masonry of cards: the frames of all cards come from CardLayout (exact, since a
 * card's height follows from its record), and only the cards near the viewport exist as delegate
 * instances, taken from and returned to a pool as the viewport moves. All per-frame work is
 * here in C++; QML only binds the delegate to the properties this view writes.
 *
 * The view sits in a Flickable as its content: it is as tall as `contentHeight`, and the
 * Flickable tells it `viewportY` and `viewportHeight`. Delegates receive, when they declare them,
 * the model's role names, `index`, `selected`, `focused` and `thumbnailWidth`.
 */
class MasonryView : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::ItemListModel *model READ model WRITE setModel NOTIFY modelChanged)
    Q_PROPERTY(QQmlComponent *delegate READ delegate WRITE setDelegate NOTIFY delegateChanged)
    Q_PROPERTY(
        QQmlComponent *sectionDelegate READ sectionDelegate WRITE setSectionDelegate NOTIFY sectionDelegateChanged)
    /** Days of masonry under headings instead of one masonry. */
    Q_PROPERTY(bool timeline READ timeline WRITE setTimeline NOTIFY timelineChanged)
    Q_PROPERTY(int columns READ columns WRITE setColumns NOTIFY columnsChanged)
    Q_PROPERTY(double spacing READ spacing WRITE setSpacing NOTIFY spacingChanged)
    Q_PROPERTY(QString cardShape READ cardShape WRITE setCardShape NOTIFY cardShapeChanged)
    Q_PROPERTY(bool cardShowTitle READ cardShowTitle WRITE setCardShowTitle NOTIFY cardShowTitleChanged)
    Q_PROPERTY(bool cardShowTags READ cardShowTags WRITE setCardShowTags NOTIFY cardShowTagsChanged)
    Q_PROPERTY(double viewportY READ viewportY WRITE setViewportY NOTIFY viewportYChanged)
    Q_PROPERTY(double viewportHeight READ viewportHeight WRITE setViewportHeight NOTIFY viewportHeightChanged)
    Q_PROPERTY(double cacheBuffer READ cacheBuffer WRITE setCacheBuffer NOTIFY cacheBufferChanged)
    Q_PROPERTY(QStringList selectedIds READ selectedIds WRITE setSelectedIds NOTIFY selectedIdsChanged)
    Q_PROPERTY(QString focusedId READ focusedId WRITE setFocusedId NOTIFY focusedIdChanged)
    Q_PROPERTY(double contentHeight READ contentHeight NOTIFY contentHeightChanged)
    Q_PROPERTY(int thumbnailWidth READ thumbnailWidth NOTIFY thumbnailWidthChanged)
    Q_PROPERTY(int activeCount READ activeCount NOTIFY activeCountChanged)

public:
    explicit MasonryView(QQuickItem *parent = nullptr);
    ~MasonryView() override;

    [[nodiscard]] ItemListModel *model() const { return m_model; }
    void setModel(ItemListModel *model);
    [[nodiscard]] QQmlComponent *delegate() const { return m_delegate; }
    void setDelegate(QQmlComponent *delegate);
    [[nodiscard]] QQmlComponent *sectionDelegate() const { return m_sectionDelegate; }
    void setSectionDelegate(QQmlComponent *delegate);
    [[nodiscard]] bool timeline() const { return m_timeline; }
    void setTimeline(bool timeline);
    [[nodiscard]] int columns() const { return m_columns; }
    void setColumns(int columns);
    [[nodiscard]] double spacing() const { return m_settings.gridSpacing; }
    void setSpacing(double spacing);
    [[nodiscard]] QString cardShape() const { return m_settings.cardShape; }
    void setCardShape(const QString &shape);
    [[nodiscard]] bool cardShowTitle() const { return m_settings.cardShowTitle; }
    void setCardShowTitle(bool show);
    [[nodiscard]] bool cardShowTags() const { return m_settings.cardShowTags; }
    void setCardShowTags(bool show);
    [[nodiscard]] double viewportY() const { return m_viewportY; }
    void setViewportY(double y);
    [[nodiscard]] double viewportHeight() const { return m_viewportHeight; }
    void setViewportHeight(double height);
    [[nodiscard]] double cacheBuffer() const { return m_cacheBuffer; }
    void setCacheBuffer(double buffer);
    [[nodiscard]] QStringList selectedIds() const { return m_selectedList; }
    void setSelectedIds(const QStringList &ids);
    [[nodiscard]] QString focusedId() const { return m_focusedId; }
    void setFocusedId(const QString &id);
    [[nodiscard]] double contentHeight() const { return m_layout.contentHeight(); }
    [[nodiscard]] int thumbnailWidth() const { return m_thumbnailWidth; }
    [[nodiscard]] int activeCount() const { return int(m_cards.size()); }
    /** Delegates made so far (pooled ones are reused, so this stays near the number on screen). */
    [[nodiscard]] int createdCount() const { return m_created; }

    /** The layout of the current rows and settings, worked out now if a change is pending. */
    [[nodiscard]] const CardLayout &layout();
    /** The card's frame in this view's coordinates; the null rectangle when it is not in the list. */
    Q_INVOKABLE QRectF frameOf(const QString &itemId);
    /** The viewport in this view's coordinates; the null rectangle until the view has a size. */
    [[nodiscard]] QRectF viewport() const;
    /** Whether the card lies in the viewport, 8 points in from the top and bottom. */
    Q_INVOKABLE bool isCardVisible(const QString &itemId);
    /** The scroll position that puts the card's point at `anchorY` (0 top, 1 bottom) of the viewport. */
    Q_INVOKABLE double scrollTargetFor(const QString &itemId, double anchorY);
    /** The id of the card under a point of this view, or empty. */
    Q_INVOKABLE QString itemAt(double x, double y);
    /** The card with the smallest top edge that is still on screen, or empty. */
    Q_INVOKABLE QString topVisibleItem();
    /** The card delegate showing an item, if it exists now. */
    Q_INVOKABLE QQuickItem *cardFor(const QString &itemId) const { return m_cards.value(itemId); }

Q_SIGNALS:
    void modelChanged();
    void delegateChanged();
    void sectionDelegateChanged();
    void timelineChanged();
    void columnsChanged();
    void spacingChanged();
    void cardShapeChanged();
    void cardShowTitleChanged();
    void cardShowTagsChanged();
    void viewportYChanged();
    void viewportHeightChanged();
    void cacheBufferChanged();
    void selectedIdsChanged();
    void focusedIdChanged();
    void contentHeightChanged();
    void thumbnailWidthChanged();
    void activeCountChanged();
    /** After each new layout (rows, width, columns or card settings changed). */
    void layoutChanged();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void updatePolish() override;

private:
    void invalidateLayout();
    void relayout();
    void syncDelegates();
    QQuickItem *takeCard(int row);
    QQuickItem *create(QQmlComponent *component, const std::function<QVariantMap(QObject *)> &values);
    /** The properties a card's type declares for the row's roles and the view's own values. */
    struct CardProperties {
        const QMetaObject *type = nullptr;
        QList<std::pair<int, QMetaProperty>> roles; // model role, and the property it is written to
        QMetaProperty index;
        QMetaProperty thumbnailWidth;
        QMetaProperty selected;
        QMetaProperty focused;
    };
    [[nodiscard]] const CardProperties &cardPropertiesOf(const QObject *card) const;
    /** The values a card declares properties for: the row's roles, `index`, `thumbnailWidth`, `selected`, `focused`. */
    [[nodiscard]] QVariantMap cardValues(QObject *card, int row) const;
    void releaseAllCards();
    void releaseAllSections();
    void placeCard(QQuickItem *card, int row);
    void writeData(QQuickItem *card, int row);
    void writeState(QQuickItem *card, const QString &itemId);
    void onDataChanged(const QModelIndex &from, const QModelIndex &to, const QList<int> &roles);
    void updateThumbnailWidth();
    /** The row of an item in the laid-out list, or -1. */
    [[nodiscard]] int rowOf(const QString &itemId);
    /** Places the rows of `items` past the laid-out ones on a worker, and takes the layout when nothing has changed since. */
    void continueOnAWorker(const QList<LibraryItem> &items);
    /** Whether `items` starts with the records of the last layout, in order, and has more after them. */
    [[nodiscard]] bool extendsLaidOutRows(const QList<LibraryItem> &items) const;

    QPointer<ItemListModel> m_model;
    mutable CardProperties m_cardProperties;
    QPointer<QQmlComponent> m_delegate;
    QPointer<QQmlComponent> m_sectionDelegate;
    bool m_timeline = false;
    int m_columns = 4;
    CardSettings m_settings;
    double m_viewportY = 0;
    double m_viewportHeight = 0;
    double m_cacheBuffer = 600;
    QStringList m_selectedList;
    QSet<QString> m_selected;
    QString m_focusedId;
    int m_thumbnailWidth = 512;

    CardLayout m_layout;
    /** The records `m_layout` was made from (shared with the model's list), when there are at most `laidOutRowsKept`. */
    QList<LibraryItem> m_laidOut;
    static constexpr qsizetype laidOutRowsKept = 2000;
    /** From how many rows on a continued layout is worked out on a worker. */
    static constexpr qsizetype rowsContinuedOnAWorker = 20000;
    quint64 m_layoutGeneration = 0;
    bool m_layoutDirty = true;
    /** Row of each item id, for the first `m_indexedRows` rows of the list; see `rowOf`. */
    QHash<QString, int> m_rowOfId;
    qsizetype m_indexedRows = 0;
    QHash<QString, QQuickItem *> m_cards;
    QList<QQuickItem *> m_cardPool;
    QList<QQuickItem *> m_sections;
    QList<QQuickItem *> m_sectionPool;
    int m_created = 0;
};

} // namespace kivo
