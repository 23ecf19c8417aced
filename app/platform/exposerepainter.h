#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>

class QQuickItem;
class QQuickWindow;

namespace kivo {

/**
 * Repaints a whole Qt Quick window when the window system uncovers part of it, for the software
 * renderer on its own thread. That loop in Qt 6.4 puts on screen only what changed in the scene,
 * so where another window or a drag picture had been, its remains stay until that part of Kivo
 * changes (on X servers without a compositor, where the uncovered part is Kivo's to redraw).
 *
 * An uncovering lays a veil over the whole window for one frame: a colour one step from clear,
 * which hides nothing and so makes the renderer draw everything under it, and again once the veil
 * is lifted. Install on the application object; it watches every Qt Quick window.
 */
class ExposeRepainter : public QObject
{
    Q_OBJECT

public:
    explicit ExposeRepainter(QObject *parent = nullptr);

    /** Whether Qt Quick draws with the software renderer on a render thread of its own. */
    [[nodiscard]] static bool isNeeded();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void repaintWhole(QQuickWindow *window);

    QHash<QQuickWindow *, QPointer<QQuickItem>> m_veils;
};

} // namespace kivo
