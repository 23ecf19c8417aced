#include "bench/cliptiming.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

using namespace std::chrono;

namespace kivo::bench {

double timedRequest(quint16 port, const QByteArray &request)
{
    const auto start = steady_clock::now();
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool ok = ::connect(fd, reinterpret_cast<sockaddr *>(&server), sizeof server) == 0
        && ::send(fd, request.constData(), size_t(request.size()), MSG_NOSIGNAL) == request.size();
    QByteArray answer;
    char chunk[4096];
    while (ok) {
        const ssize_t got = ::recv(fd, chunk, sizeof chunk, 0);
        if (got <= 0)
            break;
        answer.append(chunk, got);
    }
    ::close(fd);
    if (!ok || !answer.endsWith("\r\n\r\nok"))
        return -1;
    return duration<double, std::milli>(steady_clock::now() - start).count();
}

double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values.at(std::min(values.size() - 1, size_t(fraction * double(values.size()))));
}

} // namespace kivo::bench
