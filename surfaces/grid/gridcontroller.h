#pragma once

#include "core/appsettings.h"
#include "core/store.h"
#include "surfaces/grid/gridnav.h"
#include "surfaces/grid/itemlistmodel.h"
#include "surfaces/grid/masonryview.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

namespace kivo {

/**
 * The QML-facing logic of a selection's views: it presents the Store's `allRows` and `railItems`
 * as list models, owns the keyboard focus (whether the ring shows and where, the cached cells of
 * the column estimate, the card to reveal), and applies the click, key, drag and drop rules to the
 * Store's selection. The views bind to it and call it with ids; they hold no logic of their own.
 */
class GridController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(kivo::AppSettings *settings READ settings WRITE setSettings NOTIFY settingsChanged)
    /** The card grid on screen, for card frames and the viewport; null when the grid is not shown. */
    Q_PROPERTY(kivo::MasonryView *cardView READ cardView WRITE setCardView NOTIFY cardViewChanged)
    Q_PROPERTY(kivo::ItemListModel *rows READ rows CONSTANT)
    Q_PROPERTY(kivo::ItemListModel *railRows READ railRows CONSTANT)
    /** Raised by arrow keys, dropped by any click: the focus ring shows only while it is up. */
    Q_PROPERTY(bool keyboardFocusActive READ keyboardFocusActive NOTIFY keyboardFocusActiveChanged)
    /** The item wearing the focus ring; empty while the keyboard focus is not active. */
    Q_PROPERTY(QString ringId READ ringId NOTIFY ringIdChanged)
    /** The width of the card grid's columns area; 0 when the grid is not on screen (arrows then step linearly). */
    Q_PROPERTY(double gridNavWidth READ gridNavWidth WRITE setGridNavWidth NOTIFY gridNavWidthChanged)
    /** A card to bring into view; taken and cleared at once when it names a current row. */
    Q_PROPERTY(QString revealItemId READ revealItemId WRITE setRevealItemId NOTIFY revealItemIdChanged)
    /** The item shown in the large preview; empty when it is closed. */
    Q_PROPERTY(QString previewItemId READ previewItemId NOTIFY previewItemIdChanged)
    Q_PROPERTY(bool railShown READ railShown NOTIFY railShownChanged)
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY emptyStateChanged)
    Q_PROPERTY(QString emptyMessage READ emptyMessage NOTIFY emptyStateChanged)
    Q_PROPERTY(bool empty READ isEmpty NOTIFY emptyStateChanged)

public:
    /** Where a drop or a paste goes; the import pipeline takes it from here. */
    using ImportHook
        = std::function<void(const QList<QUrl> &urls, const QString &text, const std::optional<QString> &collectionId)>;
    /** Where Control-V goes: the clipboard is read there, so a copied picture is not lost. */
    using PasteHook = std::function<void(const std::optional<QString> &collectionId)>;

    explicit GridController(QObject *parent = nullptr);
    ~GridController() override;

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] AppSettings *settings() const { return m_settings; }
    void setSettings(AppSettings *settings);
    [[nodiscard]] MasonryView *cardView() const { return m_cardView; }
    void setCardView(MasonryView *view);
    [[nodiscard]] ItemListModel *rows() const { return m_rows; }
    [[nodiscard]] ItemListModel *railRows() const { return m_railRows; }
    [[nodiscard]] bool keyboardFocusActive() const { return m_keyboardFocusActive; }
    [[nodiscard]] QString ringId() const { return m_ringId; }
    [[nodiscard]] double gridNavWidth() const { return m_gridNavWidth; }
    void setGridNavWidth(double width);
    [[nodiscard]] QString revealItemId() const { return m_revealItemId; }
    void setRevealItemId(const QString &id);
    /** The unit point of the card that the reveal lines up with the same point of the viewport. */
    void setRevealAnchor(std::optional<double> anchorY) { m_revealAnchor = anchorY; }
    [[nodiscard]] QString previewItemId() const { return m_previewItemId; }
    [[nodiscard]] bool railShown() const { return m_railRows->count() > 0; }
    [[nodiscard]] QString emptyTitle() const { return m_emptyTitle; }
    [[nodiscard]] QString emptyMessage() const { return m_emptyMessage; }
    [[nodiscard]] bool isEmpty() const { return m_rows->count() == 0 && m_railRows->count() == 0; }

    /** The cells of the column estimate for the current rows, rebuilt only when their key changes. */
    [[nodiscard]] QList<GridNav::Cell> gridNavCells();

    /** Arrow keys: (-1, 0) left, (1, 0) right, (0, 1) down, (0, -1) up. */
    Q_INVOKABLE void moveGridFocus(int dx, int dy);
    /** A click on a card, row or rail card, with its click count and keyboard modifiers. */
    Q_INVOKABLE void clickItem(const QString &itemId, int clickCount, int modifiers);
    /** A key pressed in the view; true when it was the view's key. */
    Q_INVOKABLE bool handleKey(int key, int modifiers);
    /**
     * Asks the window for an item's context menu at a point of `anchor` (a right-click on a card,
     * row or rail card); without an anchor, the window picks the place.
     */
    Q_INVOKABLE void requestItemMenu(const QString &itemId, QQuickItem *anchor, double x, double y);
    /** Opens a link's address in the browser; any other item in the preview. */
    Q_INVOKABLE void openItem(const QString &itemId);
    Q_INVOKABLE void openLightbox(const QString &itemId);
    Q_INVOKABLE void closePreview();
    /** The rows, in list order, that a drag of this card carries: the multi-selection when it holds it. */
    Q_INVOKABLE QStringList dragIds(const QString &itemId) const;
    /** What a drag of this card offers other programs: file or link addresses and Kivo's own words. */
    Q_INVOKABLE QVariantMap dragMimeData(const QString &itemId) const;
    /** Whether a drop is one the grid takes: anything but what Kivo itself is dragging. */
    Q_INVOKABLE bool acceptsDrop(const QString &text) const;
    /** Hands dropped addresses and text to the import hook with the selection's destination. */
    Q_INVOKABLE bool drop(const QList<QUrl> &urls, const QString &text);
    /**
     * Control-V: the paste hook with the selection's destination; without one, the clipboard's
     * files, addresses or text to the import hook.
     */
    Q_INVOKABLE void paste();

    /** The text of Kivo's own drag payload for these ids ("KIVO-ITEM id" or "KIVO-ITEMS a,b"). */
    [[nodiscard]] static QString payloadText(const QStringList &ids);

    void setImportHook(ImportHook hook) { m_importHook = std::move(hook); }
    void setPasteHook(PasteHook hook) { m_pasteHook = std::move(hook); }

Q_SIGNALS:
    void storeChanged();
    void settingsChanged();
    void cardViewChanged();
    void keyboardFocusActiveChanged();
    void ringIdChanged();
    void gridNavWidthChanged();
    void revealItemIdChanged();
    void previewItemIdChanged();
    void railShownChanged();
    void emptyStateChanged();
    /** Scroll so the card's point at `anchorY` (0 top, 0.5 middle) meets the viewport's same point. */
    void scrollToItem(const QString &itemId, double anchorY);
    void itemMenuRequested(const QString &itemId, QQuickItem *anchor, double x, double y);

private:
    void setKeyboardFocusActive(bool active);
    void setRingId(const QString &id);
    void reloadRows();
    void reloadRail();
    void updateEmptyState();
    void rememberScrollAnchor(const QString &selectionKey);
    void restoreScrollAnchor();
    [[nodiscard]] std::optional<LibraryItem> rowById(const QString &itemId) const;
    [[nodiscard]] std::optional<QString> dropDestination() const;
    void openSource();
    void stepPreview(int step);
    void trashFocused();

    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
    QPointer<MasonryView> m_cardView;
    ItemListModel *m_rows;
    ItemListModel *m_railRows;
    bool m_keyboardFocusActive = false;
    QString m_ringId;
    double m_gridNavWidth = 0;
    QString m_revealItemId;
    std::optional<double> m_revealAnchor;
    QString m_previewItemId;
    QString m_emptyTitle;
    QString m_emptyMessage;
    QString m_navCellsKey;
    QList<GridNav::Cell> m_navCells;
    bool m_restoreAnchorPending = false;
    ImportHook m_importHook;
    PasteHook m_pasteHook;
};

} // namespace kivo
