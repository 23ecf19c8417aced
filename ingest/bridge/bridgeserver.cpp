#include "ingest/bridge/bridgeserver.h"

#include "core/systemlog.h"
#include "ingest/bridge/bridgehandler.h"
#include "ingest/bridge/bridgelistener.h"

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/**
 * Lets the process hold as many descriptors as the bridge may need. Desktop sessions start
 * programs with a soft limit of 1024, below the connections the bridge is meant to hold.
 */
void raiseDescriptorLimit(int connections)
{
    rlimit descriptors{};
    if (getrlimit(RLIMIT_NOFILE, &descriptors) != 0)
        return;
    const rlim_t wanted = rlim_t(connections) * 2 + 256;
    if (descriptors.rlim_cur == RLIM_INFINITY || descriptors.rlim_cur >= wanted)
        return;
    descriptors.rlim_cur = descriptors.rlim_max == RLIM_INFINITY ? wanted : std::min(wanted, descriptors.rlim_max);
    setrlimit(RLIMIT_NOFILE, &descriptors);
}

} // namespace

BridgeHandler::~BridgeHandler() = default;

BridgeServer::BridgeServer(BridgeHandler *handler, QObject *parent)
    : QObject(parent)
    , m_handler(handler)
    , m_state(std::make_shared<BridgeState>())
    , m_relay(std::make_shared<BridgeRelay>())
{
    m_thread.setObjectName(u"app.kivo.bridge"_s);
}

BridgeServer::~BridgeServer()
{
    stop();
}

bool BridgeServer::start()
{
    if (m_listener)
        return true;
    raiseDescriptorLimit(m_limits.maxConnections);
    m_thread.start();
    auto *listener = new BridgeListener(m_handler, m_relay, m_state, m_limits);
    listener->moveToThread(&m_thread);
    bool listening = false;
    quint16 bound = 0;
    QMetaObject::invokeMethod(
        listener,
        [&] {
            listening = listener->open(m_port);
            bound = listener->serverPort();
        },
        Qt::BlockingQueuedConnection);
    if (!listening) {
        systemLog(u"[Bridge] failed to bind port "_s + QString::number(m_port));
        QMetaObject::invokeMethod(
            listener, [listener] { delete listener; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
        return false;
    }
    m_listener = listener;
    m_relay->listener = listener;
    m_boundPort = bound;
    return true;
}

void BridgeServer::stop()
{
    if (!m_listener)
        return;
    // Answers the handler computes from now on find no listener and are dropped.
    m_relay->listener = nullptr;
    BridgeListener *listener = std::exchange(m_listener, nullptr);
    QMetaObject::invokeMethod(
        listener, [listener] { delete listener; }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
    m_boundPort = 0;
}

bool BridgeServer::clipSessionActive() const
{
    return m_state->readClipSessionActive();
}

void BridgeServer::setClipSessionActive(bool active)
{
    QMutexLocker lock(&m_state->stateLock);
    m_state->clipSessionActive = active;
}

} // namespace kivo
