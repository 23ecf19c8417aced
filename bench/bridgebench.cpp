// Load on the extension bridge: many concurrent connections answered by wrk, and how fast a clip
// is acknowledged while the main thread is busy importing.
//
//   bench_bridge [--seconds N] [--connections N] [--clips N] [--clients N] [--import-ms N]
//
// Needs `wrk` on the PATH for the first part. Prints the figures recorded in docs/benchmarks.md.

#include "bench/cliptiming.h"
#include "ingest/bridge/bridgehandler.h"
#include "ingest/bridge/bridgeserver.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using kivo::bench::percentile;
using kivo::bench::timedRequest;
using namespace std::chrono;

namespace {

/** Spins the calling thread for a while, as an import's hashing and decoding would. */
void busyFor(milliseconds duration)
{
    const auto end = steady_clock::now() + duration;
    volatile quint64 sink = 0;
    while (steady_clock::now() < end)
        sink = sink + 1;
}

/** A handler whose every clip costs main-thread time, like the imports that follow a clip. */
class BusyHandler : public kivo::BridgeHandler
{
public:
    milliseconds importCost{20};
    std::atomic<int> clips{0};

    kivo::ClipperConfig clipperConfig() override { return {}; }
    kivo::ShortcutSheet shortcuts() override { return {}; }
    QList<kivo::CollectionSummary> collections() override { return {}; }
    void clipStatePolled() override { }
    void clipReceived(const kivo::ClipRequest &) override
    {
        ++clips;
        busyFor(importCost);
    }
    void clipSessionEnded() override { }
    void xBookmarksReceived(const QList<kivo::XBookmark> &) override { }
    void captureReceived(const kivo::CaptureRequest &) override { }
};

/** CPU time this process has used so far, user and system, in seconds. */
double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"seconds"_s, u"How long wrk runs."_s, u"N"_s, u"10"_s},
        {u"connections"_s, u"Concurrent connections wrk holds."_s, u"N"_s, u"1000"_s},
        {u"clips"_s, u"Clips posted for the acknowledgement timing."_s, u"N"_s, u"2000"_s},
        {u"clients"_s, u"Threads posting clips at once."_s, u"N"_s, u"1"_s},
        {u"import-ms"_s, u"Main-thread work per clip (the import)."_s, u"N"_s, u"20"_s},
    });
    parser.process(application);
    QTextStream out(stdout);

    BusyHandler handler;
    const milliseconds importCost(parser.value(u"import-ms"_s).toInt());
    handler.importCost = importCost;
    kivo::BridgeServer server(&handler);
    server.setPort(0);
    if (!server.start())
        return 1;
    const quint16 port = server.port();
    out << "bridge on 127.0.0.1:" << port << Qt::endl;

    // Part 1: GET / under wrk with many connections open at once.
    int peakOpen = 0;
    QTimer sampler;
    QObject::connect(
        &sampler, &QTimer::timeout, [&] { peakOpen = std::max(peakOpen, server.state().openConnections.load()); });
    sampler.start(5);
    QProcess wrk;
    const QStringList wrkArguments{u"-t2"_s, u"-c"_s + parser.value(u"connections"_s),
        u"-d"_s + parser.value(u"seconds"_s) + u's', u"--latency"_s, u"http://127.0.0.1:%1/"_s.arg(port)};
    out << "wrk " << wrkArguments.join(u' ') << Qt::endl;
    const double cpuBefore = cpuSeconds();
    wrk.start(u"wrk"_s, wrkArguments);
    if (!wrk.waitForStarted()) {
        out << "wrk is not installed; skipping the throughput part" << Qt::endl;
    } else {
        while (wrk.state() != QProcess::NotRunning)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        const QString report = QString::fromUtf8(wrk.readAllStandardOutput());
        out << report;
        out << "peak open connections at the bridge: " << peakOpen << Qt::endl;
        // The machine may be shared; the server's own CPU time per request says what it costs.
        const QRegularExpressionMatch done = QRegularExpression(u"(\\d+) requests in"_s).match(report);
        const double requests = done.hasMatch() ? done.captured(1).toDouble() : 0;
        if (requests > 0) {
            const double perRequest = (cpuSeconds() - cpuBefore) / requests * 1e6;
            out << "bridge CPU per request: " << perRequest << " us, that is " << int(1e6 / perRequest)
                << " requests per CPU-second" << Qt::endl;
        }
    }
    sampler.stop();

    // Part 2: clip acknowledgements while the main thread imports. A timer keeps the main thread
    // busy most of the time on top of the per-clip cost, like a batch of imports running.
    QTimer imports;
    QObject::connect(&imports, &QTimer::timeout, [] { busyFor(40ms); });
    imports.start(50);
    const QByteArray clipBody = "{\"items\":[{\"type\":\"image\",\"url\":\"https://images.example/a-picture.png\"}]}";
    const QByteArray clip
        = "POST /clip HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\nContent-Length: "
        + QByteArray::number(clipBody.size()) + "\r\n\r\n" + clipBody;
    const int clipCount = parser.value(u"clips"_s).toInt();
    const int clients = std::max(1, parser.value(u"clients"_s).toInt());
    std::vector<std::vector<double>> timings(static_cast<size_t>(clients));
    std::atomic<int> failures{0};
    std::atomic<int> finished{0};
    std::atomic<qint64> clientMilliseconds{0};
    std::vector<std::thread> threads;
    for (int client = 0; client < clients; ++client) {
        threads.emplace_back([&, client] {
            QElapsedTimer wall;
            wall.start();
            for (int index = client; index < clipCount; index += clients) {
                const double ms = timedRequest(port, clip);
                if (ms < 0)
                    ++failures;
                else
                    timings[size_t(client)].push_back(ms);
            }
            clientMilliseconds = std::max(clientMilliseconds.load(), wall.elapsed());
            ++finished;
        });
    }
    while (finished < clients)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    for (std::thread &thread : threads)
        thread.join();
    handler.importCost = 0ms; // the clips still queued need not keep the benchmark waiting
    const qint64 elapsed = clientMilliseconds;
    imports.stop();
    std::vector<double> all;
    for (const auto &list : timings)
        all.insert(all.end(), list.begin(), list.end());
    out << Qt::endl
        << "clip acknowledgements while importing (" << clients << (clients == 1 ? " client, " : " clients, ")
        << importCost.count() << " ms per clip on the main thread plus 40 ms of every 50 ms busy):" << Qt::endl
        << "  answered " << all.size() << ", failed " << failures << ", in " << elapsed << " ms" << Qt::endl
        << "  p50 " << percentile(all, 0.50) << " ms, p99 " << percentile(all, 0.99) << " ms, max "
        << percentile(all, 1.0) << " ms" << Qt::endl;
    server.stop();
    return failures == 0 ? 0 : 1;
}
