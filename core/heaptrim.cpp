#include "core/heaptrim.h"

#include <QtGlobal>

#include <atomic>
#include <chrono>
#include <cstdlib> // defines __GLIBC__ on the GNU C library

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace kivo {

void returnFreedHeapMemory()
{
#if defined(__GLIBC__)
    (void)::malloc_trim(0);
#endif
}

void tuneHeapForLargeLists()
{
#if defined(__GLIBC__)
    (void)::mallopt(M_MXFAST, 0);
    // A list of 100,000 rows is a block of some 50 MB. Mapped afresh for every reload, each of its
    // pages faulted in anew (a third of a million faults over twenty reloads); from the heap, the
    // block a replaced list freed serves the next. The heap is trimmed once reloads settle.
    (void)::mallopt(M_MMAP_THRESHOLD, 256 * 1024 * 1024);
#endif
}

void returnFreedHeapMemoryNowAndThen()
{
    using namespace std::chrono;
    static std::atomic<qint64> lastNs{0};
    const qint64 now = duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
    qint64 last = lastNs.load();
    if (now - last < duration_cast<nanoseconds>(1s).count() || !lastNs.compare_exchange_strong(last, now))
        return;
    returnFreedHeapMemory();
}

} // namespace kivo
