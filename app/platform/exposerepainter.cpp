#include "app/platform/exposerepainter.h"

#include <QEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRectangleNode>

namespace kivo {

namespace {

/** A rectangle over the whole window, one step from clear, that takes no input. */
class Veil : public QQuickItem
{
public:
    explicit Veil(QQuickItem *parent) : QQuickItem(parent)
    {
        setFlag(ItemHasContents);
        // Above every view and popup.
        setZ(1e9);
        setVisible(false);
    }

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *) override
    {
        auto *node = static_cast<QSGRectangleNode *>(old);
        if (!node) {
            node = window()->createRectangleNode();
            node->setColor(QColor(0, 0, 0, 1));
        }
        node->setRect(boundingRect());
        return node;
    }
};

} // namespace

ExposeRepainter::ExposeRepainter(QObject *parent) : QObject(parent) {}

bool ExposeRepainter::isNeeded()
{
    return QQuickWindow::sceneGraphBackend() == QLatin1String("software")
        && qEnvironmentVariable("QSG_RENDER_LOOP") == QLatin1String("threaded");
}

bool ExposeRepainter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Expose) {
        auto *window = qobject_cast<QQuickWindow *>(watched);
        if (window && window->isExposed())
            repaintWhole(window);
    }
    return QObject::eventFilter(watched, event);
}

void ExposeRepainter::repaintWhole(QQuickWindow *window)
{
    QPointer<QQuickItem> &veil = m_veils[window];
    if (!veil) {
        veil = new Veil(window->contentItem());
        connect(window, &QObject::destroyed, this, [this, window] { m_veils.remove(window); });
    }
    // A burst of uncoverings while the veil is down needs nothing more: lifting it repaints all.
    if (veil->isVisible())
        return;
    veil->setSize(window->size());
    veil->setVisible(true);
    connect(window, &QQuickWindow::frameSwapped, veil, [veil = veil.data()] { veil->setVisible(false); },
        Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
}

} // namespace kivo
