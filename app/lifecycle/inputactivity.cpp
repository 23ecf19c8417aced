#include "app/lifecycle/inputactivity.h"

#include <QCoreApplication>
#include <QEvent>

namespace kivo {

InputActivity::InputActivity(QObject *parent) : QObject(parent)
{
    if (QCoreApplication *application = QCoreApplication::instance())
        application->installEventFilter(this);
}

bool InputActivity::quietFor(qint64 milliseconds) const
{
    return !m_sinceInput.isValid() || m_sinceInput.elapsed() >= milliseconds;
}

bool InputActivity::isInput(const QEvent *event)
{
    switch (event->type()) {
    case QEvent::Wheel:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::NativeGesture:
    case QEvent::DragMove:
        return true;
    default:
        return false;
    }
}

bool InputActivity::eventFilter(QObject *watched, QEvent *event)
{
    // Each event reaches the filter once per receiver on its way up; restarting a clock is cheap.
    if (isInput(event))
        m_sinceInput.start();
    return QObject::eventFilter(watched, event);
}

} // namespace kivo
