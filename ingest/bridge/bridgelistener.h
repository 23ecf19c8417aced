#pragma once

#include "ingest/bridge/bridgerouter.h"
#include "ingest/bridge/bridgestate.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTimer>

#include <list>
#include <memory>
#include <unordered_map>

class QTcpSocket;

namespace kivo {

class BridgeHandler;

/** Where the handler's thread sends the answers it computed; cleared on that thread when the server stops. */
struct BridgeRelay {
    class BridgeListener *listener = nullptr;
};

/**
 * The bridge's loopback listener and its connections, living on the bridge thread: reads each
 * request, answers it, and hands what the application must do to the handler's thread. One
 * request a connection; the answer is one write, then the connection is closed. Connections are
 * bounded (an answered one, else the one idle the longest, gives way to a new one) and a request must arrive in time.
 */
class BridgeListener : public QTcpServer
{
    Q_OBJECT

public:
    BridgeListener(BridgeHandler *handler, std::shared_ptr<BridgeRelay> relay, std::shared_ptr<BridgeState> state,
        const BridgeLimits &limits);
    ~BridgeListener() override;

    /** Listens on 127.0.0.1 at the port (0 for any free one). */
    bool open(quint16 port);
    /** Sends an answer computed by the handler; a connection that went away meanwhile is skipped. */
    void answer(quint64 connectionId, const BridgeResponse &response);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    enum class Phase { reading, waiting, closing };

    struct Connection {
        quint64 id = 0;
        QTcpSocket *socket = nullptr;
        Phase phase = Phase::reading;
        QByteArray buffer;
        qsizetype awaitedSize = 0;
        qint64 openedAt = 0;
        qint64 closingSince = 0;
        std::list<Connection *>::iterator position; // in m_idleOrder while reading, m_answeredOrder while closing
    };

    void read(quint64 id);
    void dispatch(Connection &connection, const HTTPRequest &request);
    void askHandler(Connection &connection, BridgeRoute route);
    void send(Connection &connection, const BridgeResponse &response);
    void finishSending(quint64 id);
    void remove(quint64 id);
    bool makeRoom();
    void sweep();
    void recoverFromAcceptError();
    [[nodiscard]] Connection *find(quint64 id);

    BridgeHandler *m_handler;
    std::shared_ptr<BridgeRelay> m_relay;
    std::shared_ptr<BridgeState> m_state;
    BridgeLimits m_limits;
    int m_connectionBound;
    QElapsedTimer m_clock;
    QTimer *m_sweepTimer = nullptr;
    quint64 m_nextId = 1;
    std::unordered_map<quint64, std::unique_ptr<Connection>> m_connections;
    // Connections that may give way at the bound, in the order they do: answered ones waiting for
    // their peer to close, oldest first; then those still reading, least recently active first.
    std::list<Connection *> m_answeredOrder;
    std::list<Connection *> m_idleOrder;
};

} // namespace kivo
