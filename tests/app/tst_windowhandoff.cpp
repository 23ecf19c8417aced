// Under a real X server: closing Kivo's window leaves the program running, and launching kivo
// again brings the same window back. Runs under xvfb-run; the window manager's part (the close
// request) is played by this test through the X protocol.

#include "tests/app/kivoprocess.h"

#include <xcb/xcb.h>

#include <memory>

using namespace Qt::StringLiterals;
using kivo::test::KivoRun;
using kivo::test::Sandbox;

namespace {

/** A connection to the test's X server, with the few requests a window manager would make. */
class XServer
{
public:
    XServer()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
    }
    ~XServer() { xcb_disconnect(m_connection); }

    [[nodiscard]] bool isOpen() const { return xcb_connection_has_error(m_connection) == 0; }

    xcb_atom_t atom(const char *name)
    {
        const auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(strlen(name)), name);
        std::unique_ptr<xcb_intern_atom_reply_t, decltype(&free)> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr), &free);
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    /** The top-level windows of a process that take WM_DELETE_WINDOW: its real windows. */
    QList<xcb_window_t> windowsOf(qint64 pid)
    {
        const xcb_atom_t pidAtom = atom("_NET_WM_PID");
        const xcb_atom_t protocols = atom("WM_PROTOCOLS");
        const xcb_atom_t deleteWindow = atom("WM_DELETE_WINDOW");
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        std::unique_ptr<xcb_query_tree_reply_t, decltype(&free)> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, root), nullptr), &free);
        QList<xcb_window_t> found;
        if (!tree)
            return found;
        const xcb_window_t *children = xcb_query_tree_children(tree.get());
        for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
            const xcb_window_t window = children[i];
            if (cardinal(window, pidAtom) == quint32(pid) && atoms(window, protocols).contains(deleteWindow))
                found.append(window);
        }
        return found;
    }

    bool isViewable(xcb_window_t window)
    {
        std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&free)> attributes(
            xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr), &free);
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    /** What a window manager sends when the user clicks the close button. */
    void requestClose(xcb_window_t window)
    {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom("WM_PROTOCOLS");
        event.data.data32[0] = atom("WM_DELETE_WINDOW");
        event.data.data32[1] = XCB_CURRENT_TIME;
        xcb_send_event(m_connection, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&event));
        xcb_flush(m_connection);
    }

private:
    QList<xcb_atom_t> atoms(xcb_window_t window, xcb_atom_t property)
    {
        std::unique_ptr<xcb_get_property_reply_t, decltype(&free)> reply(
            xcb_get_property_reply(m_connection, xcb_get_property(m_connection, 0, window, property, XCB_ATOM_ATOM, 0, 32), nullptr),
            &free);
        QList<xcb_atom_t> values;
        if (reply && reply->format == 32) {
            const auto *data = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get()));
            for (int i = 0; i < xcb_get_property_value_length(reply.get()) / 4; ++i)
                values.append(data[i]);
        }
        return values;
    }

    quint32 cardinal(xcb_window_t window, xcb_atom_t property)
    {
        std::unique_ptr<xcb_get_property_reply_t, decltype(&free)> reply(
            xcb_get_property_reply(m_connection, xcb_get_property(m_connection, 0, window, property, XCB_ATOM_CARDINAL, 0, 1), nullptr),
            &free);
        if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
            return 0;
        return *static_cast<const quint32 *>(xcb_get_property_value(reply.get()));
    }

    xcb_connection_t *m_connection;
};

} // namespace

class TestWindowHandoff : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closedWindowComesBackOnSecondLaunch();
};

void TestWindowHandoff::closedWindowComesBackOnSecondLaunch()
{
    XServer x;
    if (!x.isOpen())
        QSKIP("no X server; this test runs under xvfb-run");
    Sandbox sandbox;
    kivo::test::seedLibrary(sandbox);
    KivoRun kivo(sandbox, u"xcb"_s);
    QVERIFY(kivo.start());

    QList<xcb_window_t> windows;
    QTRY_VERIFY_WITH_TIMEOUT((windows = x.windowsOf(kivo.pid())).size() == 1 && x.isViewable(windows.constFirst()), 20000);
    const xcb_window_t window = windows.constFirst();

    x.requestClose(window);
    QTRY_VERIFY_WITH_TIMEOUT(!x.isViewable(window), 10000);
    // Closed, not quit: the process stays, and no terminate line was written.
    QTest::qWait(500);
    QCOMPARE(kivo.process().state(), QProcess::Running);
    QVERIFY(!QString::fromUtf8(kivo::test::readFile(kivo::test::diagnosticsLog(sandbox))).contains(u"CLEAN TERMINATE"_s));

    QProcess second;
    second.setProcessEnvironment(kivo::test::sandboxEnvironment(sandbox, u"xcb"_s));
    second.start(QStringLiteral(KIVO_BINARY), {});
    QVERIFY(second.waitForFinished(20000));
    QCOMPARE(second.exitCode(), 1);
    // Closing destroyed the native window; showing makes a new one for the same window.
    QTRY_VERIFY_WITH_TIMEOUT((windows = x.windowsOf(kivo.pid())).size() == 1 && x.isViewable(windows.constFirst()), 10000);

    kivo.signal(SIGTERM);
    QVERIFY(kivo.waitForFinished());
    QCOMPARE(kivo.process().exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestWindowHandoff)
#include "tst_windowhandoff.moc"
