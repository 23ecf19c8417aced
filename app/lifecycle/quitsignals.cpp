#include "app/lifecycle/quitsignals.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kivo {

namespace {

int pipeEnds[2] = {-1, -1};

void onQuitSignal(int signalNumber)
{
    const int savedErrno = errno;
    const char number = char(signalNumber);
    (void)::write(pipeEnds[1], &number, 1);
    errno = savedErrno;
}

void restoreDefaults()
{
    ::signal(SIGTERM, SIG_DFL);
    ::signal(SIGINT, SIG_DFL);
}

} // namespace

QuitSignals::QuitSignals(QObject *parent)
    : QObject(parent)
{
    if (pipeEnds[0] >= 0)
        return; // one per process
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, pipeEnds) != 0) {
        pipeEnds[0] = pipeEnds[1] = -1;
        return;
    }
    m_notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitSignals::drain);

    for (const int signalNumber : {SIGTERM, SIGINT}) {
        struct sigaction action {};
        action.sa_handler = onQuitSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        ::sigaction(signalNumber, &action, nullptr);
    }
}

QuitSignals::~QuitSignals()
{
    if (!m_notifier)
        return;
    restoreDefaults();
    delete m_notifier;
    m_notifier = nullptr;
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    pipeEnds[0] = pipeEnds[1] = -1;
}

void QuitSignals::drain()
{
    char numbers[16];
    const ssize_t count = ::read(pipeEnds[0], numbers, sizeof numbers);
    for (ssize_t i = 0; i < count; ++i)
        Q_EMIT quitRequested(int(numbers[i]));
}

} // namespace kivo
