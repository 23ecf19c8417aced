#pragma once

#include <QElapsedTimer>
#include <QObject>

namespace kivo {

/**
 * When a person last used the pointer or the keyboard in any of the application's windows. Work
 * that would hold the interface for a moment (giving a large heap back to the system) waits for a
 * pause rather than landing in the middle of a scroll.
 */
class InputActivity : public QObject
{
    Q_OBJECT

public:
    /** Watches every event of the application from now on. */
    explicit InputActivity(QObject *parent = nullptr);

    /** Whether no input has come for at least `milliseconds` (true before any input). */
    [[nodiscard]] bool quietFor(qint64 milliseconds) const;

    [[nodiscard]] static bool isInput(const QEvent *event);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QElapsedTimer m_sinceInput;
};

} // namespace kivo
