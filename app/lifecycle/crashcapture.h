#pragma once

#include <QString>

#include <csignal>
#include <exception>

namespace kivo {

/**
 * Leaves a trace of a crash in `diagnostics.log`: a fatal signal writes its banner and a backtrace
 * to the kept descriptor and then dies by the same signal, so the system's own crash handling
 * still happens; an exception nobody caught is written with its type, its message and the stack.
 */
namespace CrashCapture {

/** The signals caught, in the order their handlers are installed. */
inline constexpr int fatalSignals[] = {SIGSEGV, SIGABRT, SIGILL, SIGTRAP, SIGBUS, SIGFPE};

/** Installs the terminate handler and then the fatal-signal handlers. Call after Diagnostics::open(). */
void install();

/** "*** UNCAUGHT EXCEPTION <type>: <what>" followed by one frame per line. */
[[nodiscard]] QString uncaughtExceptionReport(std::exception_ptr exception);

} // namespace CrashCapture
} // namespace kivo
