#pragma once

#include "ingest/capture/capturecardhost.h"
#include "surfaces/capture/capturecardmodel.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

#include <optional>

class QQmlComponent;
class QQmlEngine;


namespace kivo {

class AppSettings;
class Store;

/**
 * The capture card on screen: one card at a time, as a frameless panel that stays on top and
 * takes the keys. It opens on a draft before the download has started and is bound to the stored
 * item when the import ends; finishing writes the title, the collection and the tags, cancelling
 * moves the item to the trash. Each presentation is a session, so an answer for an older card
 * never touches the one on screen.
 */
class CapturePalette : public QObject, public CaptureCardHost
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the capture palette")
    Q_PROPERTY(kivo::CaptureCardModel *model READ model CONSTANT)
    /** Whether a card is on screen; the shelf and launcher hotkeys stand back while it is. */
    Q_PROPERTY(bool onScreen READ onScreen NOTIFY onScreenChanged)
    /** The card preview's image address, changing with each new preview. */
    Q_PROPERTY(QString previewSource READ previewSource NOTIFY previewSourceChanged)

public:
    CapturePalette(Store *store, AppSettings *settings, QObject *parent = nullptr);
    ~CapturePalette() override;

    /**
     * The engine in which the card's window is made. Without one the card has no window: its
     * state and effects work all the same, which is how the logic is tested.
     */
    void setEngine(QQmlEngine *engine);

    int present(const LibraryItem &item, const QImage &preview, bool bound) override;
    void bind(const std::optional<QString> &itemId, int session) override;
    void noteSavedItem(const QString &itemId, int session) override;

    /** Presents the card on a stored item (after a save by hotkey, or with the picker destination). */
    Q_INVOKABLE void presentItem(const QString &itemId);

    /** Finishing: saves now when the item exists, else when it is bound. */
    Q_INVOKABLE void finish();
    /** Cancelling: the item goes to the trash now, or when it is bound. */
    Q_INVOKABLE void cancel();
    /** The view's fallback for every key; true when the card used it. */
    Q_INVOKABLE bool handleKey(int key, int modifiers, const QString &text);

    [[nodiscard]] CaptureCardModel *model() { return &m_model; }
    [[nodiscard]] bool onScreen() const { return m_onScreen; }
    [[nodiscard]] int session() const { return m_session; }
    [[nodiscard]] bool saveOnBind() const { return m_saveOnBind; }
    [[nodiscard]] bool discardOnBind() const { return m_discardOnBind; }
    [[nodiscard]] const std::optional<QString> &boundItemId() const { return m_boundItemId; }
    [[nodiscard]] QQuickWindow *panel() const { return m_panel; }
    [[nodiscard]] QString previewSource() const;

Q_SIGNALS:
    void onScreenChanged();
    void previewSourceChanged();

private:
    /** What the user decided on a card: kept when the card closes before its item exists. */
    struct Decision {
        QString title;
        std::optional<ChosenCollection> chosen;
        QStringList tags;
    };

    [[nodiscard]] Decision decision() const;
    /** Writes the title, collection and tags to a stored item, clears the hidden id, reloads and toasts. */
    void save(const QString &itemId, const Decision &decision);
    /** Moves an item to the trash and lets the grid show it again; no toast. */
    void discard(const QString &itemId);
    /** Closes the card when it is on screen; its state stays until the next presentation. */
    void close();
    void showPanel();

    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
    QPointer<QQmlEngine> m_engine;
    QQmlComponent *m_component = nullptr;
    QPointer<QQuickWindow> m_panel;
    CaptureCardModel m_model;
    std::optional<QString> m_boundItemId;
    bool m_saveOnBind = false;
    bool m_discardOnBind = false;
    bool m_onScreen = false;
    int m_session = 0;
    /** Decisions of cards finished before their item existed, by session, for their late binds. */
    QHash<int, Decision> m_waitingSaves;
};

} // namespace kivo
