#pragma once

#include <QObject>

namespace kivo {

/**
 * The `--mouse-probe` diagnostics: writes the pointer events that matter for gestures into
 * `diagnostics.log`, to understand a mouse or touchpad that behaves oddly on someone's machine.
 * Horizontal scrolls and touchpad swipes give "mouse-probe: swipe dx=" lines; presses of buttons
 * other than the left one, double clicks and other gestures give "mouse-probe: other" lines with
 * the event's name. Plain moves are left out, as they would drown everything else.
 */
class MouseProbe : public QObject
{
    Q_OBJECT

public:
    explicit MouseProbe(QObject *parent = nullptr);

    /** Logs "note: mouse-probe: armed" and starts watching every event of the application. */
    void arm();

    /** The line for an event, or an empty string when it is not one the probe reports. */
    [[nodiscard]] static QString describe(const QEvent *event);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace kivo
