#pragma once

#include "ingest/bridge/bridgestate.h"

#include <QObject>
#include <QThread>

#include <memory>

namespace kivo {

class BridgeHandler;
class BridgeListener;
struct BridgeRelay;

/**
 * The small HTTP server on the loopback interface through which the browser extension saves into
 * Kivo and reads its settings. Parsing and answering run on the server's own thread ("app.kivo.bridge"),
 * so an answer never waits for the window or an import; the handler hears of each request afterwards,
 * on its own thread. Created and stopped on the handler's thread.
 */
class BridgeServer : public QObject
{
    Q_OBJECT

public:
    /** The port the extension knows. */
    static constexpr quint16 defaultPort = 17894;

    /** The handler must outlive the server. */
    explicit BridgeServer(BridgeHandler *handler, QObject *parent = nullptr);
    ~BridgeServer() override;

    /** The port to listen on at the next start; 0 takes any free one (tests). */
    void setPort(quint16 port) { m_port = port; }
    void setLimits(const BridgeLimits &limits) { m_limits = limits; }

    /**
     * Starts listening on 127.0.0.1; a second start does nothing. When the port cannot be had it
     * logs "[Bridge] failed to bind port " and the port, and Kivo runs without a bridge.
     */
    bool start();
    /** Stops listening and closes every connection; answers still being computed are dropped. */
    void stop();

    [[nodiscard]] bool isRunning() const { return m_listener != nullptr; }
    /** The port actually listened on; 0 when not running. */
    [[nodiscard]] quint16 port() const { return m_boundPort; }

    /** Whether a multi-item clip is waiting on the shelf; the extension reads it through `/clipstate`. */
    [[nodiscard]] bool clipSessionActive() const;
    void setClipSessionActive(bool active);

    /** Counts for tests and diagnostics: open connections, and peers refused, evicted or timed out. */
    [[nodiscard]] const BridgeState &state() const { return *m_state; }

private:
    BridgeHandler *m_handler;
    quint16 m_port = defaultPort;
    quint16 m_boundPort = 0;
    BridgeLimits m_limits;
    std::shared_ptr<BridgeState> m_state;
    std::shared_ptr<BridgeRelay> m_relay;
    QThread m_thread;
    BridgeListener *m_listener = nullptr;
};

} // namespace kivo
