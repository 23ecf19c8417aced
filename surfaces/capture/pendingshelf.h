#pragma once

#include "surfaces/capture/pendingclipsmodel.h"

#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <QtQml/qqmlregistration.h>

class QQmlEngine;


namespace kivo {

class CaptureFlow;
class PendingClips;
class Store;

/**
 * The pending clips' own panel at the right edge of the screen that holds the pointer: the clips
 * of a multi-item clip as they arrive, a field to name the collection they go to, and "Keep in
 * Inbox". It stands in for the shelf's pending view, and opens and closes with the clip session.
 */
class PendingShelf : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the pending panel")
    Q_PROPERTY(kivo::PendingClipsModel *clips READ clips CONSTANT)
    Q_PROPERTY(bool showing READ showing NOTIFY showingChanged)
    /** True while a collection was chosen and clips are still arriving. */
    Q_PROPERTY(bool filingDeferred READ filingDeferred NOTIFY filingDeferredChanged)

public:
    PendingShelf(PendingClips *pending, Store *store, CaptureFlow *flow, QObject *parent = nullptr);
    ~PendingShelf() override;

    /** The engine the panel's window is made in; without one the panel keeps its state only. */
    void setEngine(QQmlEngine *engine);

    Q_INVOKABLE void show();
    Q_INVOKABLE void hide();
    /** Return in the panel's field: the clips go to that collection, or to the inbox when empty. */
    Q_INVOKABLE void submit(const QString &query);
    /** "Keep in Inbox": the clip session ends with the clips where they are. */
    Q_INVOKABLE void keepInInbox();

    [[nodiscard]] PendingClipsModel *clips() { return &m_model; }
    [[nodiscard]] bool showing() const { return m_showing; }
    [[nodiscard]] bool filingDeferred() const;
    [[nodiscard]] QQuickWindow *panel() const { return m_panel; }

Q_SIGNALS:
    void showingChanged();
    void filingDeferredChanged();

private:
    QPointer<PendingClips> m_pending;
    QPointer<CaptureFlow> m_flow;
    QPointer<QQmlEngine> m_engine;
    QPointer<QQuickWindow> m_panel;
    PendingClipsModel m_model;
    bool m_showing = false;
};

} // namespace kivo
