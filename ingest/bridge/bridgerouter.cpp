#include "ingest/bridge/bridgerouter.h"

using namespace Qt::StringLiterals;

namespace kivo::BridgeRouter {

namespace {

BridgeResponse ok()
{
    return BridgeResponse::text(200, u"ok"_s);
}

BridgeResponse badRequest()
{
    return BridgeResponse::text(400, u"bad request"_s);
}

} // namespace

bool hasWebOrigin(const HTTPRequest &request)
{
    const auto origin = request.headers.constFind(u"origin"_s);
    if (origin == request.headers.constEnd())
        return false;
    const QString lowered = origin->toLower();
    return lowered.startsWith(u"http://"_s) || lowered.startsWith(u"https://"_s);
}

BridgeRoute routeOf(const HTTPRequest &request)
{
    if (hasWebOrigin(request))
        return BridgeRoute::forbidden;
    const QString &method = request.method;
    const QString &path = request.path;
    if (method == u"OPTIONS"_s)
        return BridgeRoute::preflight;
    if (method == u"GET"_s) {
        if (path.startsWith(u"/clipperconfig"_s))
            return BridgeRoute::clipperConfig;
        if (path.startsWith(u"/clipstate"_s))
            return BridgeRoute::clipState;
        if (path.startsWith(u"/shortcuts"_s))
            return BridgeRoute::shortcuts;
        if (path.startsWith(u"/collections"_s))
            return BridgeRoute::collections;
    }
    if (method == u"POST"_s) {
        // "/clipmode" before "/clip", which is a prefix of it.
        if (path.startsWith(u"/clipmode"_s))
            return BridgeRoute::clipMode;
        if (path.startsWith(u"/clip"_s))
            return BridgeRoute::clip;
        if (path.startsWith(u"/xbookmarks"_s))
            return BridgeRoute::xBookmarks;
        if (path.startsWith(u"/capture"_s))
            return BridgeRoute::capture;
    }
    return BridgeRoute::alive;
}

BridgeDecision decide(const HTTPRequest &request, bool clipSessionActive)
{
    BridgeDecision decision;
    decision.route = routeOf(request);
    switch (decision.route) {
    case BridgeRoute::forbidden:
        decision.answer = BridgeResponse::text(403, u"forbidden"_s);
        break;
    case BridgeRoute::preflight:
        decision.answer = BridgeResponse::text(204, QString());
        break;
    case BridgeRoute::clipperConfig:
    case BridgeRoute::shortcuts:
    case BridgeRoute::collections:
        break; // answered once the application has read its settings or its database
    case BridgeRoute::clipState:
        decision.answer = BridgeResponse::json(clipStateJson(clipSessionActive));
        break;
    case BridgeRoute::clipMode:
        // This route never refuses: an unreadable body is simply no change.
        decision.endClipSession = clipModeEndsSession(request.body);
        decision.answer = ok();
        break;
    case BridgeRoute::clip:
        decision.clip = ClipRequest::fromBody(request.body);
        decision.answer = decision.clip ? ok() : badRequest();
        break;
    case BridgeRoute::xBookmarks:
        decision.bookmarks = XPosts::parseBookmarks(request.body);
        decision.answer
            = BridgeResponse::text(200, u"{\"received\":"_s + QString::number(decision.bookmarks.size()) + u'}');
        break;
    case BridgeRoute::capture:
        decision.capture = CaptureRequest::fromBody(request.body);
        decision.answer = decision.capture ? ok() : badRequest();
        break;
    case BridgeRoute::alive:
        decision.answer = BridgeResponse::text(200, u"Kivo bridge alive"_s);
        break;
    }
    return decision;
}

bool isLocalHost(const QString &hostText)
{
    return hostText.contains(u"127.0.0.1"_s) || hostText.contains(u"::1"_s) || hostText.startsWith(u"localhost"_s);
}

} // namespace kivo::BridgeRouter
