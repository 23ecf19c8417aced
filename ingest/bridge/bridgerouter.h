#pragma once

#include "ingest/bridge/bridgemessages.h"
#include "ingest/bridge/bridgeresponse.h"
#include "ingest/bridge/httprequest.h"
#include "ingest/x/xbookmark.h"

#include <optional>

namespace kivo {

/** The bridge's routes, in the order a request is tested against them. */
enum class BridgeRoute {
    forbidden, // a web page's request, whatever it asks
    preflight, // OPTIONS
    clipperConfig,
    clipState,
    shortcuts,
    collections,
    clipMode,
    clip,
    xBookmarks,
    capture,
    alive, // everything else
};

/**
 * What the server does with one request: the answer to send at once (none for the routes that
 * answer with the application's data), and the values the application is handed afterwards.
 */
struct BridgeDecision {
    BridgeRoute route = BridgeRoute::alive;
    std::optional<BridgeResponse> answer;
    std::optional<ClipRequest> clip;
    std::optional<CaptureRequest> capture;
    QList<XBookmark> bookmarks;
    bool endClipSession = false;
};

namespace BridgeRouter {

/** A request sent by a web page: its `Origin`, lower-cased, is an http or https origin. Extensions pass. */
[[nodiscard]] bool hasWebOrigin(const HTTPRequest &request);

/** The route of a request: method exact, path a prefix of the whole target (query included). */
[[nodiscard]] BridgeRoute routeOf(const HTTPRequest &request);

/** Routes a request and reads its body. Pure: the state of the clip session is passed in. */
[[nodiscard]] BridgeDecision decide(const HTTPRequest &request, bool clipSessionActive);

/** The second fence behind the loopback listener: whether a peer's host text is this machine. */
[[nodiscard]] bool isLocalHost(const QString &hostText);

} // namespace BridgeRouter

} // namespace kivo
