// Feeds arbitrary bytes to the bridge's request reader and router, as a connection's buffer
// would hold them, and checks what must hold for every input: no crash, no undefined
// behaviour, no leak, and answers that keep their form.

#include "ingest/bridge/bridgerouter.h"
#include "ingest/bridge/httpparser.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace kivo;

namespace {

void require(bool condition, const char *what)
{
    if (!condition) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

void checkAnswer(const BridgeResponse &response)
{
    const QByteArray bytes = response.serialise();
    require(bytes.startsWith("HTTP/1.1 "), "status line");
    const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
    require(headEnd > 0, "head end");
    require(bytes.size() - headEnd - 4 == response.body.size(), "body follows the head");
    require(bytes.first(headEnd).contains("Content-Length: " + QByteArray::number(response.body.size())),
        "length matches the body");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView buffer(reinterpret_cast<const char *>(data), qsizetype(size));
    const ParseResult whole = HttpParser::parse(buffer);

    if (whole.kind == ParseResult::Kind::needMore) {
        require(whole.awaitedSize == 0 ? size <= size_t(HttpParser::headLimit) : whole.awaitedSize > qsizetype(size),
            "waiting only while below a limit or short of the body");
    }
    if (whole.isComplete()) {
        require(whole.request.body.size() <= HttpParser::bodyLimit, "body within the limit");
        require(!whole.request.headers.contains(QStringLiteral("transfer-encoding")), "no transfer coding");
        for (const bool sessionActive : {false, true}) {
            const BridgeDecision decision = BridgeRouter::decide(whole.request, sessionActive);
            if (decision.answer)
                checkAnswer(*decision.answer);
            else
                require(decision.route == BridgeRoute::clipperConfig || decision.route == BridgeRoute::shortcuts
                        || decision.route == BridgeRoute::collections,
                    "only the data routes answer later");
            if (BridgeRouter::hasWebOrigin(whole.request))
                require(decision.route == BridgeRoute::forbidden && decision.answer->status == 403 && !decision.clip
                        && !decision.capture && decision.bookmarks.isEmpty() && !decision.endClipSession,
                    "a web page's request reaches nothing");
        }
    }

    // The same bytes arriving in two pieces: a request complete after the first piece is the
    // request the whole buffer gives, since bytes behind it are ignored.
    if (size > 1) {
        const qsizetype cut = qsizetype(data[0]) * qsizetype(size) / 256;
        const ParseResult first = HttpParser::parse(buffer.first(cut));
        if (first.isComplete()) {
            require(whole.isComplete(), "a complete prefix stays complete");
            require(first.request.method == whole.request.method && first.request.path == whole.request.path
                    && first.request.body == whole.request.body && first.request.headers == whole.request.headers,
                "a complete prefix is the same request");
        }
    }
    return 0;
}
