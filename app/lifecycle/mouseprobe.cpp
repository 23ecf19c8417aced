#include "app/lifecycle/mouseprobe.h"

#include "app/lifecycle/diagnostics.h"

#include <QCoreApplication>
#include <QMetaEnum>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QWheelEvent>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

QString eventName(const QEvent *event)
{
    const char *name = QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type());
    return name ? QString::fromLatin1(name) : QString::number(int(event->type()));
}

} // namespace

MouseProbe::MouseProbe(QObject *parent)
    : QObject(parent)
{
}

void MouseProbe::arm()
{
    Diagnostics::log(u"note: mouse-probe: armed"_s);
    QCoreApplication::instance()->installEventFilter(this);
}

QString MouseProbe::describe(const QEvent *event)
{
    switch (event->type()) {
    case QEvent::Wheel: {
        // A touchpad's two-finger swipe arrives as a horizontal scroll with pixel deltas.
        const auto *wheel = static_cast<const QWheelEvent *>(event);
        const double dx = wheel->pixelDelta().isNull() ? wheel->angleDelta().x() / 8.0 : double(wheel->pixelDelta().x());
        if (dx == 0)
            return {};
        return u"mouse-probe: swipe dx=%1"_s.arg(dx);
    }
    case QEvent::NativeGesture: {
        const auto *gesture = static_cast<const QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::SwipeNativeGesture)
            return u"mouse-probe: swipe dx=%1"_s.arg(gesture->delta().x());
        return u"mouse-probe: other "_s + eventName(event);
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        const auto *mouse = static_cast<const QMouseEvent *>(event);
        if (event->type() == QEvent::MouseButtonPress && mouse->button() == Qt::LeftButton)
            return {};
        return u"mouse-probe: other "_s + eventName(event);
    }
    default:
        return {};
    }
}

bool MouseProbe::eventFilter(QObject *watched, QEvent *event)
{
    // Each input event reaches the window and then the items inside it; the window's copy is logged.
    if (watched->isWindowType()) {
        const QString line = describe(event);
        if (!line.isEmpty())
            Diagnostics::log(line);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace kivo
