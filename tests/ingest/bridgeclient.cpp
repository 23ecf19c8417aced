#include "tests/ingest/bridgeclient.h"

#include "tests/testsupport.h"

#include <QCoreApplication>
#include <QDebug>
#include <QProcess>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <thread>

using namespace Qt::StringLiterals;

namespace kivo::test {

QByteArray Exchange::statusLine() const
{
    const qsizetype end = received.indexOf("\r\n");
    return end < 0 ? QByteArray() : received.first(end);
}

QByteArray Exchange::body() const
{
    const qsizetype end = received.indexOf("\r\n\r\n");
    return end < 0 ? QByteArray() : received.sliced(end + 4);
}

RawConnection::RawConnection(quint16 port, const char *fromAddress)
    : m_fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    if (m_fd < 0)
        return;
    if (fromAddress) {
        sockaddr_in local{};
        local.sin_family = AF_INET;
        inet_pton(AF_INET, fromAddress, &local.sin_addr);
        if (::bind(m_fd, reinterpret_cast<sockaddr *>(&local), sizeof local) != 0)
            return;
    }
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    m_connected = ::connect(m_fd, reinterpret_cast<sockaddr *>(&server), sizeof server) == 0;
}

RawConnection::~RawConnection()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool RawConnection::send(const QByteArray &bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t written = ::send(m_fd, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (written <= 0) {
            if (written < 0 && errno == EINTR)
                continue;
            return false;
        }
        sent += written;
    }
    return true;
}

void RawConnection::finishSending()
{
    ::shutdown(m_fd, SHUT_WR);
}

Exchange RawConnection::receiveUntilClosed(std::chrono::milliseconds limit)
{
    Exchange result;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    char chunk[65536];
    for (;;) {
        const auto left
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            result.timedOut = true;
            return result;
        }
        pollfd watched{m_fd, POLLIN, 0};
        const int ready = ::poll(&watched, 1, int(left.count()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0) {
            result.timedOut = true;
            return result;
        }
        const ssize_t got = ::recv(m_fd, chunk, sizeof chunk, 0);
        if (got > 0) {
            result.received.append(chunk, got);
            continue;
        }
        if (got < 0 && errno == EINTR)
            continue;
        result.closedByServer = true;
        result.error = got < 0 ? errno : 0;
        return result;
    }
}

bool RawConnection::closedWithin(std::chrono::milliseconds wait, QByteArray *received)
{
    const Exchange result = receiveUntilClosed(wait);
    if (received)
        *received = result.received;
    return result.closedByServer;
}

void inBackground(const std::function<void()> &work, std::chrono::milliseconds limit)
{
    auto done = std::make_shared<std::atomic<bool>>(false);
    std::thread worker([work, done] {
        work();
        *done = true;
    });
    const bool finished = QTest::qWaitFor([&] { return done->load(); }, int(limit.count()));
    worker.join();
    if (!finished)
        qWarning() << "background work outlived its limit";
}

Exchange exchange(quint16 port, const QByteArray &request)
{
    Exchange result;
    inBackground([&] {
        RawConnection connection(port);
        if (connection.isConnected() && connection.send(request))
            result = connection.receiveUntilClosed();
    });
    return result;
}

void raiseDescriptorLimit(int wanted)
{
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    if (descriptors.rlim_cur >= rlim_t(wanted))
        return;
    descriptors.rlim_cur = std::min<rlim_t>(rlim_t(wanted), descriptors.rlim_max);
    setrlimit(RLIMIT_NOFILE, &descriptors);
}

bool matchesGolden(const QString &name, const QByteArray &actual)
{
    const QString golden = QStringLiteral(KIVO_TEST_DATA "/ingest/bridge/") + name;
    if (readFile(golden) == actual)
        return true;
    const QString fail = QCoreApplication::applicationDirPath() + u'/' + name + u".fail"_s;
    writeFile(fail, actual);
    QProcess diff;
    diff.start(u"diff"_s, {u"-u"_s, golden, fail});
    diff.waitForFinished();
    qWarning().noquote() << "answer differs from" << golden << "\n" << QString::fromUtf8(diff.readAllStandardOutput());
    return false;
}

} // namespace kivo::test
