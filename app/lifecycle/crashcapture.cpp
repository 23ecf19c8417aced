#include "app/lifecycle/crashcapture.h"

#include "app/lifecycle/diagnostics.h"

#include <QStringList>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <execinfo.h>
#include <typeinfo>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo::CrashCapture {

namespace {

constexpr int maximumFrames = 128;
constexpr char banner[] = "\n*** FATAL SIGNAL CAUGHT ***\n";

// Everything the handler touches exists before it can run: the frame buffer and a stack of its
// own, so that a stack overflow can still be reported.
void *handlerFrames[maximumFrames];
constexpr size_t alternateStackSize = 64 * 1024;
alignas(16) char alternateStack[alternateStackSize];

void writeAll(int descriptor, const char *bytes, size_t length)
{
    while (length > 0) {
        const ssize_t written = ::write(descriptor, bytes, length);
        if (written <= 0)
            return;
        bytes += written;
        length -= size_t(written);
    }
}

void onFatalSignal(int signalNumber)
{
    // Only async-signal-safe calls from here on.
    const int descriptor = Diagnostics::descriptor();
    if (descriptor >= 0) {
        writeAll(descriptor, banner, sizeof(banner) - 1);
        const int depth = ::backtrace(handlerFrames, maximumFrames);
        ::backtrace_symbols_fd(handlerFrames, depth, descriptor);
        ::fsync(descriptor);
    }
    ::signal(signalNumber, SIG_DFL);
    ::raise(signalNumber);
}

QString demangled(const char *name)
{
    int status = 0;
    char *readable = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    const QString result = QString::fromUtf8(status == 0 && readable ? readable : name);
    std::free(readable);
    return result;
}

QStringList callStack()
{
    void *frames[maximumFrames];
    const int depth = ::backtrace(frames, maximumFrames);
    char **symbols = ::backtrace_symbols(frames, depth);
    QStringList lines;
    for (int i = 0; symbols && i < depth; ++i)
        lines.append(QString::fromLocal8Bit(symbols[i]));
    std::free(symbols);
    return lines;
}

[[noreturn]] void onTerminate()
{
    Diagnostics::log(uncaughtExceptionReport(std::current_exception()));
    // The abort that follows is caught as a fatal signal too, with the stack at this point.
    std::abort();
}

} // namespace

QString uncaughtExceptionReport(std::exception_ptr exception)
{
    QString type = u"unknown"_s;
    QString reason = u"(no exception)"_s;
    if (exception) {
        try {
            std::rethrow_exception(exception);
        } catch (const std::exception &error) {
            type = demangled(typeid(error).name());
            reason = QString::fromUtf8(error.what());
        } catch (...) {
            if (const std::type_info *thrown = abi::__cxa_current_exception_type())
                type = demangled(thrown->name());
            reason = u"(not a std::exception)"_s;
        }
    }
    return u"*** UNCAUGHT EXCEPTION "_s + type + u": "_s + reason + u'\n' + callStack().join(u'\n');
}

void install()
{
    std::set_terminate(onTerminate);

    // The first call loads libgcc's unwinder, which would allocate inside the handler.
    void *warmUp[2];
    ::backtrace(warmUp, 2);

    stack_t stack{};
    stack.ss_sp = alternateStack;
    stack.ss_size = alternateStackSize;
    ::sigaltstack(&stack, nullptr);

    for (const int signalNumber : fatalSignals) {
        struct sigaction action {};
        action.sa_handler = onFatalSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_ONSTACK;
        ::sigaction(signalNumber, &action, nullptr);
    }
}

} // namespace kivo::CrashCapture
