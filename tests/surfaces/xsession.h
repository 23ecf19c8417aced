#pragma once

// Window tests on a private X server with real pointer and keyboard events from xdotool: drags
// between windows go through the X drag-and-drop protocol as they do between programs.

#include <QProcess>
#include <QQuickItem>
#include <QStandardPaths>
#include <QStringList>
#include <QtTest>

namespace kivo::test {

using namespace Qt::StringLiterals;

/** A private X server for the test process, started before the application so that Qt connects to it. */
class XServer
{
public:
    /** Starts the server with a screen of `size` ("1400x900"); false when Xvfb or xdotool is missing. */
    bool start(const QString &size = QStringLiteral("1400x900"))
    {
        if (QStandardPaths::findExecutable(u"Xvfb"_s).isEmpty()
            || QStandardPaths::findExecutable(u"xdotool"_s).isEmpty())
            return false;
        // -displayfd picks a free display and writes its number when the server is ready.
        m_process.start(
            u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, size + u"x24"_s, u"-nolisten"_s, u"tcp"_s});
        if (!m_process.waitForStarted(5000))
            return false;
        QByteArray display;
        while (!display.contains('\n') && m_process.waitForReadyRead(10000))
            display += m_process.readAllStandardOutput();
        if (display.trimmed().isEmpty())
            return false;
        qputenv("DISPLAY", ':' + display.trimmed());
        qputenv("QT_QPA_PLATFORM", "xcb");
        qputenv("QT_QUICK_BACKEND", "software");
        return true;
    }
    ~XServer()
    {
        m_process.terminate();
        m_process.waitForFinished(3000);
    }

private:
    QProcess m_process;
};

/** Runs xdotool with the event loop turning, so the window answers while the pointer moves. */
inline bool xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start(u"xdotool"_s, arguments);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 20000))
        return false;
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

/** The screen position, as xdotool wants it, of a point of an item (its middle by default). */
inline QStringList screenPoint(QQuickItem *item, double fractionY = 0.5)
{
    const QPoint point = item->mapToGlobal(QPointF(item->width() / 2, item->height() * fractionY)).toPoint();
    return {QString::number(point.x()), QString::number(point.y())};
}

/** A press at `from`, small steps past the drag threshold, a glide to `to`, a rest, a release. */
inline QStringList dragPath(const QStringList &from, const QStringList &to)
{
    const int x0 = from.at(0).toInt();
    const int y0 = from.at(1).toInt();
    QStringList path{u"mousemove"_s, from.at(0), from.at(1), u"mousedown"_s, u"1"_s};
    for (int step = 1; step <= 4; ++step)
        path += {u"mousemove"_s, QString::number(x0 + 4 * step), QString::number(y0), u"sleep"_s, u"0.05"_s};
    for (int step = 1; step <= 10; ++step) {
        const int x = x0 + (to.at(0).toInt() - x0) * step / 10;
        const int y = y0 + (to.at(1).toInt() - y0) * step / 10;
        path += {u"mousemove"_s, QString::number(x), QString::number(y), u"sleep"_s, u"0.05"_s};
    }
    path += {u"sleep"_s, u"0.3"_s, u"mouseup"_s, u"1"_s};
    return path;
}


} // namespace kivo::test
