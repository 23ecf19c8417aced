// How fast the bridge acknowledges `POST /clip` while the clips it has already taken are being
// imported: the real bridge and handler, the real capture flow and import pipeline, a real library
// in a temporary folder, and pictures downloaded from a server on 127.0.0.1.
//
//   bench_clipack [--clips N] [--interval-ms N] [--size N]
//
// Each clip names a different picture (N×N pixels of noise, as JPEG), so every one is downloaded,
// hashed, stored, measured and written, and the Store reloads after each; a client thread posts
// the clips on fresh connections and times each from `connect` to the server's close.

#include "bench/cliptiming.h"
#include "core/appsettings.h"
#include "core/store.h"
#include "core/userdefaults.h"
#include "ingest/bridge/bridgeserver.h"
#include "ingest/bridge/librarybridgehandler.h"
#include "ingest/capture/captureflow.h"
#include "ingest/capture/pendingclips.h"
#include "ingest/import/libraryimporter.h"
#include "tests/fixtureserver.h"

#include <QBuffer>
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QImage>
#include <QRandomGenerator>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QDir>
#include <QEventLoop>
#include <QFile>
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

QByteArray noisePicture(int size, quint32 seed)
{
    QImage image(size, size, QImage::Format_RGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < size; ++y) {
        auto *line = reinterpret_cast<quint32 *>(image.scanLine(y));
        for (int x = 0; x < size; ++x)
            line[x] = random.generate() | 0xff000000u;
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 90);
    return bytes;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({
        {u"clips"_s, u"Clips posted."_s, u"N"_s, u"300"_s},
        {u"interval-ms"_s, u"Pause between two clips."_s, u"N"_s, u"10"_s},
        {u"size"_s, u"Width and height of each picture."_s, u"N"_s, u"1200"_s},
        {u"renice"_s, u"Experiment: nice value for threads named by the pattern (name=value)."_s, u"NAME=N"_s},
    });
    parser.process(application);
    QTextStream out(stdout);
    const int clipCount = parser.value(u"clips"_s).toInt();
    const int interval = parser.value(u"interval-ms"_s).toInt();
    const int size = parser.value(u"size"_s).toInt();

    QTemporaryDir sandbox;
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, sandbox.path() + u"/config"_s);
    kivo::UserDefaults().setValue(u"libraryPath"_s, sandbox.path() + u"/Kivo Library"_s);

    kivo::test::FixtureServer pictures;
    for (int index = 0; index < clipCount; ++index) {
        pictures.serve(u"/p%1.jpg"_s.arg(index),
            kivo::test::FixtureResponse::bytes(noisePicture(size, quint32(index + 1)), "image/jpeg"));
    }

    kivo::AppSettings settings;
    settings.setCaptureCardEnabled(false); // no card in a benchmark without a screen
    kivo::Store store(&settings);
    store.initialise();
    kivo::LibraryImporter importer(&store, &settings);
    kivo::PendingClips pending;
    kivo::CaptureFlow flow(&store, &settings, &importer, &pending);
    int imported = 0;
    int peakRunning = 0;
    QObject::connect(&flow, &kivo::CaptureFlow::clipFinished, [&](kivo::ClipRoute, const QStringList &saved) {
        imported += int(saved.size());
    });
    kivo::LibraryBridgeHandler handler(&settings, &store);
    QObject::connect(&handler, &kivo::LibraryBridgeHandler::clipArrived, &flow, [&](const kivo::ClipRequest &clip) {
        flow.clip(clip);
        peakRunning = std::max(peakRunning, flow.runningClips());
    });
    kivo::BridgeServer server(&handler);
    server.setPort(0);
    if (!server.start())
        return 1;
    const quint16 port = server.port();
    out << "bridge on 127.0.0.1:" << port << ", " << clipCount << " clips of " << size << "x" << size
        << " JPEG, one every " << interval << " ms" << Qt::endl;

    QTimer renicer;
    if (parser.isSet(u"renice"_s)) {
        const QString name = parser.value(u"renice"_s).section(u'=', 0, 0);
        const int value = parser.value(u"renice"_s).section(u'=', 1).toInt();
        QObject::connect(&renicer, &QTimer::timeout, [name, value] {
            for (const QString &task : QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
                QFile comm(u"/proc/self/task/"_s + task + u"/comm"_s);
                if (comm.open(QIODevice::ReadOnly) && QString::fromUtf8(comm.readAll()).contains(name))
                    setpriority(PRIO_PROCESS, id_t(task.toInt()), value);
            }
        });
        renicer.start(20);
    }
    std::vector<double> timings;
    std::atomic<int> failures{0};
    std::atomic<bool> finished{false};
    std::thread client([&] {
        for (int index = 0; index < clipCount; ++index) {
            const QByteArray body = "{\"items\":[{\"type\":\"image\",\"url\":\""
                + pictures.url(u"/p%1.jpg"_s.arg(index)).toEncoded()
                + "\",\"sourceURL\":\"https://www.example.com/board\"}]}";
            const QByteArray request
                = "POST /clip HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\nContent-Length: "
                + QByteArray::number(body.size()) + "\r\n\r\n" + body;
            const double ms = timedRequest(port, request);
            if (ms < 0)
                ++failures;
            else
                timings.push_back(ms);
            std::this_thread::sleep_for(milliseconds(interval));
        }
        finished = true;
    });
    QElapsedTimer wall;
    wall.start();
    // The main thread sleeps in its event loop as the application's does; a loop of processEvents()
    // would spin and take a core from the threads being measured.
    QEventLoop waiting;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &waiting, [&] {
        if ((finished && flow.runningClips() == 0 && imported + failures >= clipCount) || wall.elapsed() > 600'000)
            waiting.quit();
    });
    check.start(5);
    waiting.exec();
    client.join();
    server.stop();
    out << "imported " << imported << " of " << clipCount << " in " << wall.elapsed() << " ms; up to "
        << peakRunning << " clips importing at once" << Qt::endl
        << "clip acknowledgements: answered " << timings.size() << ", failed " << failures << Qt::endl
        << "  p50 " << percentile(timings, 0.50) << " ms, p99 " << percentile(timings, 0.99) << " ms, max "
        << percentile(timings, 1.0) << " ms" << Qt::endl;
    return failures == 0 && imported == clipCount ? 0 : 1;
}
