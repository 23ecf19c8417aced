#include "ingest/bridge/bridgeservice.h"

#include "core/store.h"

#include <QCoreApplication>

namespace kivo {

BridgeService::BridgeService(AppSettings &settings, Store &store) : m_handler(&settings, &store), m_server(&m_handler)
{
    // Tests that run a whole Kivo beside a developer's own move it off the extension's port.
    bool overridden = false;
    const int port = qEnvironmentVariableIntValue("KIVO_BRIDGE_PORT", &overridden);
    if (overridden && port > 0 && port < 65536)
        m_server.setPort(quint16(port));
    // A taken port is logged by the server; the program then runs without a bridge.
    m_server.start();
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_server, &BridgeServer::stop);
}

BridgeService::~BridgeService()
{
    m_server.stop();
}

} // namespace kivo
