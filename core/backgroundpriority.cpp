#include "core/backgroundpriority.h"

#if defined(__linux__)
#include <cerrno>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace kivo {

namespace {
// Nice 10 weighs about a tenth of a default thread in the kernel's fair scheduler: background
// work still moves on a busy machine, yet a waking interactive thread preempts it at once.
constexpr int backgroundNice = 10;
} // namespace

void lowerCurrentThreadPriority()
{
#if defined(__linux__)
    thread_local bool lowered = false;
    if (lowered)
        return;
    lowered = true;
    // On Linux the process-level call addresses one thread when given a thread id.
    const auto thread = static_cast<id_t>(::gettid());
    errno = 0;
    const int current = ::getpriority(PRIO_PROCESS, thread);
    if (errno == 0 && current >= backgroundNice)
        return;
    (void)::setpriority(PRIO_PROCESS, thread, backgroundNice);
#endif
}

} // namespace kivo
