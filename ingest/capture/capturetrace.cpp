#include "ingest/capture/capturetrace.h"

#include "core/systemlog.h"

#include <QElapsedTimer>
#include <QMutex>

#include <optional>

using namespace Qt::StringLiterals;

namespace kivo::CaptureTrace {

namespace {

struct Times {
    QMutex lock;
    QElapsedTimer clock;
    std::optional<qint64> start; // nanoseconds on `clock`
    std::optional<qint64> last;
};

Times &times()
{
    static Times instance;
    return instance;
}

} // namespace

void begin(const QString &label)
{
    Times &t = times();
    {
        QMutexLocker lock(&t.lock);
        if (!t.clock.isValid())
            t.clock.start();
        t.start = t.last = t.clock.nsecsElapsed();
    }
    systemLog(u"[CaptureTrace] --- "_s + label + u" ---"_s);
}

void mark(const QString &label)
{
    Times &t = times();
    double sinceLast = 0;
    double total = 0;
    {
        QMutexLocker lock(&t.lock);
        if (!t.start || !t.last)
            return;
        const qint64 now = t.clock.nsecsElapsed();
        sinceLast = double(now - *t.last) / 1e6;
        total = double(now - *t.start) / 1e6;
        t.last = now;
    }
    systemLog(QString::asprintf("[CaptureTrace] %s: %.0f ms (total %.0f ms)", qUtf8Printable(label), sinceLast, total));
}

void clear()
{
    Times &t = times();
    QMutexLocker lock(&t.lock);
    t.start.reset();
    t.last.reset();
}

bool running()
{
    Times &t = times();
    QMutexLocker lock(&t.lock);
    return t.start.has_value();
}

} // namespace kivo::CaptureTrace
