// A child process for the crash-capture test: starts Kivo's diagnostics and crash capture exactly
// as the application does, then dies in the way its argument names.

#include "app/lifecycle/crashcapture.h"
#include "app/lifecycle/diagnostics.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>

// Exported and never inlined, so that the backtrace can be checked for them by name.
extern "C" [[gnu::noinline]] void kivo_crashchild_segfault()
{
    volatile int *nowhere = nullptr;
    *nowhere = 42;
}

volatile int quotient = 0;

extern "C" [[gnu::noinline]] void kivo_crashchild_divide()
{
    volatile int numerator = 1;
    volatile int zero = 0;
    quotient = numerator / zero;
}

extern "C" [[gnu::noinline]] void kivo_crashchild_throw()
{
    throw std::runtime_error("the library shelf fell over");
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc < 2)
        return 2;
    kivo::Diagnostics::start(QStringLiteral("9.9.9"), QStringLiteral("test"));
    kivo::CrashCapture::install();
    const char *how = argv[1];
    if (std::strcmp(how, "segfault") == 0)
        kivo_crashchild_segfault();
    else if (std::strcmp(how, "divide") == 0)
        kivo_crashchild_divide();
    else if (std::strcmp(how, "abort") == 0)
        std::abort();
    else if (std::strcmp(how, "bus") == 0)
        std::raise(SIGBUS);
    else if (std::strcmp(how, "throw") == 0)
        kivo_crashchild_throw();
    return 3; // not reached when the crash happened
}
