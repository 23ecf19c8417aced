#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>
#include <functional>

namespace kivo::test {

/** What a peer of the bridge saw: the bytes that came back and how the connection ended. */
struct Exchange {
    QByteArray received;
    bool closedByServer = false; // an orderly end (FIN) or a reset
    bool timedOut = false;
    int error = 0;

    /** The status line of the answer, or "" without one. */
    [[nodiscard]] QByteArray statusLine() const;
    /** The body behind the head. */
    [[nodiscard]] QByteArray body() const;
};

/**
 * A plain blocking socket to the bridge, as a browser's extension or an attacker would hold one.
 * Each call blocks its thread only; tests run it off the main thread through `inBackground` so the
 * handler there keeps answering.
 */
class RawConnection
{
public:
    /** Connects to 127.0.0.1:port, from `fromAddress` when given (another loopback address). */
    explicit RawConnection(quint16 port, const char *fromAddress = nullptr);
    ~RawConnection();
    RawConnection(const RawConnection &) = delete;
    RawConnection &operator=(const RawConnection &) = delete;

    [[nodiscard]] bool isConnected() const { return m_fd >= 0 && m_connected; }
    bool send(const QByteArray &bytes);
    /** Half-closes: tells the server nothing more is coming, and keeps reading. */
    void finishSending();
    /** Reads until the server ends the connection or `limit` passes. */
    Exchange receiveUntilClosed(std::chrono::milliseconds limit = std::chrono::seconds(10));
    /** Whether the server has ended the connection within `wait` (nothing else arrives meanwhile). */
    bool closedWithin(std::chrono::milliseconds wait, QByteArray *received = nullptr);

private:
    int m_fd = -1;
    bool m_connected = false;
};

/** Runs `work` on a fresh thread while the calling (main) thread keeps its event loop turning. */
void inBackground(const std::function<void()> &work, std::chrono::milliseconds limit = std::chrono::seconds(60));

/** Sends one request on a new connection and reads until the server closes it. */
Exchange exchange(quint16 port, const QByteArray &request);

/** Raises this process's descriptor limit so a test can hold many connections on both ends. */
void raiseDescriptorLimit(int wanted);

/** Compares with tests/data/ingest/bridge/<name>; on a difference leaves <name>.fail beside the test binary. */
bool matchesGolden(const QString &name, const QByteArray &actual);

} // namespace kivo::test
