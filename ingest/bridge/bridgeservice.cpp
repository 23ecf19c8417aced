#include "ingest/bridge/bridgeservice.h"

#include "core/store.h"

#include <QCoreApplication>

namespace kivo {

BridgeService::BridgeService(AppSettings &settings, Store &store) : m_handler(&settings, &store), m_server(&m_handler)
{
    // A taken port is logged by the server; the program then runs without a bridge.
    m_server.start();
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &m_server, &BridgeServer::stop);
}

BridgeService::~BridgeService()
{
    m_server.stop();
}

} // namespace kivo
