#include "ingest/bridge/bridgelistener.h"

#include "core/systemlog.h"
#include "ingest/bridge/bridgehandler.h"
#include "ingest/bridge/httpparser.h"

#include <QTcpSocket>

#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr qint64 readChunk = 65536;
// Descriptors kept free for the rest of the program when the process limit is what bounds the bridge.
constexpr rlim_t reservedDescriptors = 128;

int boundFor(const BridgeLimits &limits)
{
    rlimit descriptors{};
    if (getrlimit(RLIMIT_NOFILE, &descriptors) != 0 || descriptors.rlim_cur == RLIM_INFINITY)
        return limits.maxConnections;
    if (descriptors.rlim_cur <= reservedDescriptors * 2)
        return std::min<int>(limits.maxConnections, int(descriptors.rlim_cur / 2));
    return int(std::min<rlim_t>(rlim_t(limits.maxConnections), descriptors.rlim_cur - reservedDescriptors));
}

} // namespace

BridgeListener::BridgeListener(BridgeHandler *handler, std::shared_ptr<BridgeRelay> relay,
    std::shared_ptr<BridgeState> state, const BridgeLimits &limits)
    : m_handler(handler)
    , m_relay(std::move(relay))
    , m_state(std::move(state))
    , m_limits(limits)
    , m_connectionBound(boundFor(limits))
{
    m_clock.start();
    m_sweepTimer = new QTimer(this); // a child, so it moves to the bridge thread with the listener
    const auto period = std::clamp<qint64>(m_limits.requestTimeout.count() / 4, 10, 250);
    m_sweepTimer->setInterval(int(period));
    connect(m_sweepTimer, &QTimer::timeout, this, &BridgeListener::sweep);
    connect(this, &QTcpServer::acceptError, this, &BridgeListener::recoverFromAcceptError);
}

BridgeListener::~BridgeListener()
{
    close();
    for (auto &[id, connection] : m_connections) {
        connection->socket->disconnect(this);
        connection->socket->abort();
        delete connection->socket;
    }
    m_state->openConnections = 0;
}

bool BridgeListener::open(quint16 port)
{
    // Many peers may knock at once (the extension's tabs, a load test); the kernel queues them.
    setListenBacklogSize(1024);
    return listen(QHostAddress::LocalHost, port);
}

void BridgeListener::incomingConnection(qintptr descriptor)
{
    if (int(m_connections.size()) >= m_connectionBound && !makeRoom()) {
        // Every connection is waiting for its answer: the newcomer has to try again later.
        ::close(int(descriptor));
        return;
    }
    auto *socket = new QTcpSocket(this);
    // Unbuffered: reads and writes go straight to the kernel, so a request that is already there
    // is answered in the same turn of the event loop that accepted it.
    if (!socket->setSocketDescriptor(
            descriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        delete socket;
        ::close(int(descriptor));
        return;
    }
    if (!BridgeRouter::isLocalHost(socket->peerAddress().toString())) {
        ++m_state->refusedPeers;
        socket->abort();
        delete socket;
        return;
    }

    auto connection = std::make_unique<Connection>();
    const quint64 id = m_nextId++;
    connection->id = id;
    connection->socket = socket;
    connection->openedAt = m_clock.elapsed();
    connection->position = m_idleOrder.insert(m_idleOrder.end(), connection.get());
    m_connections.emplace(id, std::move(connection));
    ++m_state->accepted;
    m_state->openConnections = int(m_connections.size());
    if (!m_sweepTimer->isActive())
        m_sweepTimer->start();

    connect(socket, &QTcpSocket::readyRead, this, [this, id] { read(id); });
    connect(socket, &QTcpSocket::bytesWritten, this, [this, id] { finishSending(id); });
    connect(socket, &QTcpSocket::disconnected, this, [this, id] { remove(id); });
    connect(socket, &QTcpSocket::errorOccurred, this, [this, id] {
        if (Connection *connection = find(id);
            connection && connection->socket->state() == QAbstractSocket::UnconnectedState)
            remove(id);
    });
    read(id);
}

void BridgeListener::read(quint64 id)
{
    Connection *connection = find(id);
    // One request a connection: nothing is read after it.
    // ### A peer that half-closes right behind its request is taken as gone by QTcpSocket, so an
    // answer that waits for the application does not reach it. Browsers never half-close.
    if (!connection || connection->phase != Phase::reading)
        return;
    QTcpSocket *socket = connection->socket;
    for (;;) {
        const QByteArray chunk = socket->read(readChunk);
        if (chunk.isEmpty())
            break;
        connection->buffer += chunk;
        m_idleOrder.splice(m_idleOrder.end(), m_idleOrder, connection->position);
        if (connection->awaitedSize > 0 && connection->buffer.size() < connection->awaitedSize)
            continue;
        ParseResult result = HttpParser::parse(connection->buffer);
        if (result.isInvalid()) {
            ++m_state->invalidRequests;
            remove(id);
            return;
        }
        if (!result.isComplete()) {
            connection->awaitedSize = result.awaitedSize;
            continue;
        }
        m_idleOrder.erase(connection->position);
        connection->phase = Phase::waiting;
        connection->buffer = QByteArray();
        dispatch(*connection, result.request);
        return;
    }
    // The peer finished, or the connection failed, before its request was whole.
    if (socket->state() != QAbstractSocket::ConnectedState)
        remove(id);
}

void BridgeListener::dispatch(Connection &connection, const HTTPRequest &request)
{
    BridgeDecision decision = BridgeRouter::decide(request, m_state->readClipSessionActive());
    if (decision.answer)
        send(connection, *decision.answer);

    // The answer is on its way before the application hears of the request.
    BridgeHandler *handler = m_handler;
    switch (decision.route) {
    case BridgeRoute::clipperConfig:
    case BridgeRoute::shortcuts:
    case BridgeRoute::collections:
        askHandler(connection, decision.route);
        break;
    case BridgeRoute::clipState:
        QMetaObject::invokeMethod(
            handler, [handler] { handler->clipStatePolled(); }, Qt::QueuedConnection);
        break;
    case BridgeRoute::clipMode:
        if (decision.endClipSession)
            QMetaObject::invokeMethod(
                handler, [handler] { handler->clipSessionEnded(); }, Qt::QueuedConnection);
        break;
    case BridgeRoute::clip:
        if (decision.clip) {
            systemLog(u"clip received ("_s + QString::number(decision.clip->items.size()) + u" item(s))"_s);
            QMetaObject::invokeMethod(
                handler, [handler, clip = *decision.clip] { handler->clipReceived(clip); }, Qt::QueuedConnection);
        }
        break;
    case BridgeRoute::xBookmarks:
        QMetaObject::invokeMethod(
            handler, [handler, bookmarks = decision.bookmarks] { handler->xBookmarksReceived(bookmarks); },
            Qt::QueuedConnection);
        break;
    case BridgeRoute::capture:
        if (decision.capture) {
            QMetaObject::invokeMethod(
                handler, [handler, capture = *decision.capture] { handler->captureReceived(capture); },
                Qt::QueuedConnection);
        }
        break;
    case BridgeRoute::forbidden:
    case BridgeRoute::preflight:
    case BridgeRoute::alive:
        break;
    }
}

void BridgeListener::askHandler(Connection &connection, BridgeRoute route)
{
    BridgeHandler *handler = m_handler;
    const quint64 id = connection.id;
    QMetaObject::invokeMethod(
        handler,
        [handler, relay = m_relay, route, id] {
            QByteArray body;
            if (route == BridgeRoute::clipperConfig)
                body = handler->clipperConfig().toJson();
            else if (route == BridgeRoute::shortcuts)
                body = handler->shortcuts().toJson();
            else
                body = collectionsJson(handler->collections());
            // The relay is only touched on this thread; a stopped server has cleared it.
            if (BridgeListener *listener = relay->listener) {
                QMetaObject::invokeMethod(
                    listener, [listener, id, response = BridgeResponse::json(body)] { listener->answer(id, response); },
                    Qt::QueuedConnection);
            }
        },
        Qt::QueuedConnection);
}

void BridgeListener::answer(quint64 connectionId, const BridgeResponse &response)
{
    if (Connection *connection = find(connectionId); connection && connection->phase == Phase::waiting)
        send(*connection, response);
}

void BridgeListener::send(Connection &connection, const BridgeResponse &response)
{
    connection.phase = Phase::closing;
    connection.closingSince = m_clock.elapsed();
    connection.position = m_answeredOrder.insert(m_answeredOrder.end(), &connection);
    connection.socket->write(response.serialise());
    finishSending(connection.id);
}

void BridgeListener::finishSending(quint64 id)
{
    Connection *connection = find(id);
    if (!connection || connection->phase != Phase::closing || connection->socket->bytesToWrite() > 0)
        return;
    // The whole answer is with the kernel, which delivers it after the close. Anything the peer
    // sent behind its request is read (from the kernel too: the socket is unbuffered) and dropped
    // first, so that closing is an orderly end and not a reset that could swallow the answer.
    connection->socket->skip(connection->socket->bytesAvailable());
    remove(id);
}

void BridgeListener::remove(quint64 id)
{
    const auto found = m_connections.find(id);
    if (found == m_connections.end())
        return;
    std::unique_ptr<Connection> connection = std::move(found->second);
    m_connections.erase(found);
    if (connection->phase == Phase::reading)
        m_idleOrder.erase(connection->position);
    else if (connection->phase == Phase::closing)
        m_answeredOrder.erase(connection->position);
    connection->socket->disconnect(this);
    connection->socket->abort();
    connection->socket->deleteLater();
    m_state->openConnections = int(m_connections.size());
    if (m_connections.empty())
        m_sweepTimer->stop();
}

bool BridgeListener::makeRoom()
{
    if (!m_answeredOrder.empty()) {
        remove(m_answeredOrder.front()->id);
        return true;
    }
    if (m_idleOrder.empty())
        return false;
    ++m_state->evictedIdle;
    remove(m_idleOrder.front()->id);
    return true;
}

void BridgeListener::sweep()
{
    const qint64 now = m_clock.elapsed();
    QList<quint64> expired;
    for (const auto &[id, connection] : m_connections) {
        if (connection->phase == Phase::reading && now - connection->openedAt >= m_limits.requestTimeout.count()) {
            ++m_state->timedOut;
            expired.append(id);
        } else if (connection->phase == Phase::closing
            && now - connection->closingSince >= m_limits.sendTimeout.count()) {
            expired.append(id);
        }
    }
    for (const quint64 id : std::as_const(expired))
        remove(id);
}

void BridgeListener::recoverFromAcceptError()
{
    // Out of descriptors: make room at the expense of the idlest peer, or wait for one to finish.
    if (makeRoom())
        resumeAccepting();
    else
        QTimer::singleShot(100, this, [this] { resumeAccepting(); });
}

BridgeListener::Connection *BridgeListener::find(quint64 id)
{
    const auto found = m_connections.find(id);
    return found == m_connections.end() ? nullptr : found->second.get();
}

} // namespace kivo
