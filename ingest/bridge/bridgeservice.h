#pragma once

#include "ingest/bridge/bridgeserver.h"
#include "ingest/bridge/librarybridgehandler.h"

namespace kivo {

class AppSettings;
class Store;

/**
 * The bridge as the running program holds it: the server on the extension's port with the
 * library's handler, started at construction and stopped when the application quits.
 */
class BridgeService
{
public:
    BridgeService(AppSettings &settings, Store &store);
    ~BridgeService();
    BridgeService(const BridgeService &) = delete;
    BridgeService &operator=(const BridgeService &) = delete;

    [[nodiscard]] LibraryBridgeHandler &handler() { return m_handler; }
    [[nodiscard]] BridgeServer &server() { return m_server; }

private:
    LibraryBridgeHandler m_handler;
    BridgeServer m_server;
};

} // namespace kivo
