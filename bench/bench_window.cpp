// Times the real `kivo` window on a library: from the launch to the first frame that shows the
// grid's cards, the frames while the grid is scrolled with the real mouse wheel (xdotool), and the
// resident memory after the launch and after the scroll. Run it under an X server:
//
//   xvfb-run -a -s "-screen 0 1920x1200x24" build/bench/bench_window --library PATH [--runs 3] [--home DIR]
//
// The runs share one set of settings, state and cache folders, as a person's launches do, and a
// first, unmeasured launch does the once-only work there: the move into the browsable layout with
// its sidecars (recorded in the settings), and under Xvfb, Mesa's software OpenGL compiling Qt
// Quick's shaders into its cache, which otherwise adds seconds to every launch. `--cold` gives
// every launch empty folders instead. The process is killed at the end, so no quit-time work is
// timed. Stalls are the main thread's stretches away from its event loop; when Qt Quick paints on a
// render thread, the part spent waiting for that thread is told apart from the main thread's own work,
// and so is the time the thread was off the processor: its own CPU time in each stretch is what its
// code did, the rest went to other threads and processes, or to a wake-up the system delivered late.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

qint64 monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

struct ProbeRecord {
    std::optional<double> firstGridFrameMs;
    QList<qint64> frames;
    QList<std::pair<qint64, qint64>> busy; // the main thread away from its event loop, from and to
    QList<qint64> busyCpuNs; // the main thread's own CPU time in each of those stretches (-1: not recorded)
    QList<std::pair<qint64, qint64>> waits; // the main thread waiting for the render thread to be free
    qint64 lastResidentBytes = 0;
};

ProbeRecord readProbe(const QString &path)
{
    ProbeRecord record;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return record;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const qsizetype space = line.indexOf(' ');
        if (space < 0)
            continue;
        const QByteArray key = line.left(space);
        const QByteArray value = line.mid(space + 1);
        if (key == "frame")
            record.frames.append(value.toLongLong());
        else if (const QList<QByteArray> span = value.split(' '); key == "busy" && span.size() >= 2) {
            record.busy.append({span.at(0).toLongLong(), span.at(1).toLongLong()});
            record.busyCpuNs.append(span.size() >= 3 ? span.at(2).toLongLong() : -1);
        }
        else if (const QList<QByteArray> span = value.split(' '); key == "wait" && span.size() == 2)
            record.waits.append({span.at(0).toLongLong(), span.at(1).toLongLong()});
        else if (key == "first-grid-frame-ms")
            record.firstGridFrameMs = value.toDouble();
        else if (key == "rss-bytes")
            record.lastResidentBytes = value.toLongLong();
    }
    return record;
}

double percentile(QList<double> sorted, double fraction)
{
    if (sorted.isEmpty())
        return 0;
    std::sort(sorted.begin(), sorted.end());
    return sorted.at(std::min<qsizetype>(sorted.size() - 1, qsizetype(double(sorted.size()) * fraction)));
}

bool runQuietly(const QString &program, const QStringList &arguments, int timeoutMs = 120000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    return process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

struct RunFigures {
    double launchMs = 0;
    double residentAfterLaunchMb = 0;
    double residentAfterScrollMb = 0;
    double mainThreadScrollCpuMs = 0; // the main thread's CPU time over the whole scroll
    QList<double> frameMs;
    QList<double> busyMs; // the main thread's stretches over 8 ms away from its event loop
    QList<double> workMs; // the same stretches less the time spent waiting for the render thread
    QList<double> cpuMs; // the main thread's own CPU time in each stretch: its work, apart from time off the processor
};

// How much of [from, to] the sorted, disjoint spans cover.
qint64 coveredBy(qint64 from, qint64 to, const QList<std::pair<qint64, qint64>> &spans)
{
    qint64 covered = 0;
    for (const auto &[start, end] : spans)
        covered += std::max<qint64>(0, std::min(to, end) - std::max(from, start));
    return covered;
}

// CPU time so far, in clock ticks (user and system), from a stat file of /proc: a process's own,
// or one of its threads' (task) files.
qint64 cpuTicksIn(const QString &statPath)
{
    QFile stat(statPath);
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 12 ? fields.at(11).toLongLong() + fields.at(12).toLongLong() : -1;
}

qint64 cpuTicks(qint64 pid)
{
    return cpuTicksIn(u"/proc/%1/stat"_s.arg(pid));
}

// The main thread's CPU time so far, in milliseconds; its task has the process's id.
double mainThreadCpuMs(qint64 pid)
{
    const qint64 ticks = cpuTicksIn(u"/proc/%1/task/%1/stat"_s.arg(pid));
    return ticks < 0 ? -1 : double(ticks) * 1000.0 / double(sysconf(_SC_CLK_TCK));
}

// Waits until the process has used under 0.1 s of CPU in each of three seconds running, so that
// the warm-up launch finishes its once-only work in the background before it is killed.
void waitUntilIdle(qint64 pid, int limitSeconds)
{
    qint64 last = cpuTicks(pid);
    int quietSeconds = 0;
    for (int second = 0; second < limitSeconds && quietSeconds < 3 && last >= 0; ++second) {
        QThread::sleep(1);
        const qint64 now = cpuTicks(pid);
        quietSeconds = now - last < 10 ? quietSeconds + 1 : 0;
        last = now;
    }
}

std::optional<RunFigures> runOnce(const QString &kivo, const QString &library, const QString &homeFolder,
                                  int clicks, bool noEnrich, bool warmUp = false)
{
    const QDir home(homeFolder);
    const QString probePath = home.filePath(u"frames.txt"_s);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &folder : {u"config"_s, u"state"_s, u"cache"_s, u"data"_s})
        home.mkpath(folder);
    environment.insert(u"XDG_CONFIG_HOME"_s, home.filePath(u"config"_s));
    environment.insert(u"XDG_STATE_HOME"_s, home.filePath(u"state"_s));
    environment.insert(u"XDG_CACHE_HOME"_s, home.filePath(u"cache"_s));
    environment.insert(u"XDG_DATA_HOME"_s, home.filePath(u"data"_s));
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"KIVO_FRAME_PROBE"_s, probePath);
    // Another Kivo on the machine keeps the bridge's port; this one only needs its window.
    environment.insert(u"KIVO_BRIDGE_PORT"_s, u"0"_s);

    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    QStringList arguments{u"--library"_s, library};
    if (noEnrich)
        arguments << u"--no-enrich"_s;
    // Until Kivo opens it anew, the last run's probe would pass for this one's first frame.
    QFile::remove(probePath);
    const qint64 start = monotonicNs();
    environment.insert(u"KIVO_FRAME_PROBE_START"_s, QString::number(start));
    process.setProcessEnvironment(environment);
    process.start(kivo, arguments);
    if (!process.waitForStarted()) {
        std::fprintf(stderr, "bench_window: could not start %s\n", qPrintable(kivo));
        return std::nullopt;
    }
    const auto stop = qScopeGuard([&process] {
        process.kill();
        process.waitForFinished();
    });

    RunFigures figures;
    QElapsedTimer waited;
    waited.start();
    ProbeRecord record;
    while (!record.firstGridFrameMs) {
        if (waited.elapsed() > (warmUp ? 1800000 : 120000) || process.state() != QProcess::Running) {
            std::fprintf(stderr, "bench_window: no grid frame came (is the library empty?)\n");
            return std::nullopt;
        }
        QThread::msleep(5);
        record = readProbe(probePath);
    }
    figures.launchMs = *record.firstGridFrameMs;

    // Let the first thumbnails come in, as a person looks before they scroll.
    QThread::sleep(3);
    if (warmUp)
        waitUntilIdle(process.processId(), 300);
    figures.residentAfterLaunchMb = double(readProbe(probePath).lastResidentBytes) / 1e6;

    const QString windowId = [&] {
        QProcess search;
        search.start(u"xdotool"_s, {u"search"_s, u"--sync"_s, u"--onlyvisible"_s, u"--pid"_s,
                                    QString::number(process.processId())});
        search.waitForFinished(10000);
        return QString::fromUtf8(search.readAllStandardOutput()).split(u'\n').value(0).trimmed();
    }();
    if (windowId.isEmpty()) {
        std::fprintf(stderr, "bench_window: could not find Kivo's window\n");
        return std::nullopt;
    }
    // The pointer over the grid, right of the sidebar and below the toolbar.
    runQuietly(u"xdotool"_s, {u"mousemove"_s, u"--window"_s, windowId, u"700"_s, u"450"_s});
    QThread::msleep(300);
    const double cpuBefore = mainThreadCpuMs(process.processId());
    const qint64 scrollStart = monotonicNs();
    runQuietly(u"xdotool"_s, {u"click"_s, u"--repeat"_s, QString::number(clicks), u"--delay"_s, u"16"_s, u"5"_s});
    const qint64 scrollEnd = monotonicNs();
    figures.mainThreadScrollCpuMs = mainThreadCpuMs(process.processId()) - cpuBefore;
    QThread::sleep(1);
    record = readProbe(probePath);
    figures.residentAfterScrollMb = double(record.lastResidentBytes) / 1e6;
    for (qsizetype i = 1; i < record.frames.size(); ++i) {
        if (record.frames.at(i - 1) >= scrollStart && record.frames.at(i) <= scrollEnd)
            figures.frameMs.append(double(record.frames.at(i) - record.frames.at(i - 1)) / 1e6);
    }
    for (qsizetype i = 0; i < record.busy.size(); ++i) {
        const auto &[from, to] = record.busy.at(i);
        if (to >= scrollStart && from <= scrollEnd) {
            figures.busyMs.append(double(to - from) / 1e6);
            figures.workMs.append(double(to - from - coveredBy(from, to, record.waits)) / 1e6);
            if (record.busyCpuNs.at(i) >= 0)
                figures.cpuMs.append(double(record.busyCpuNs.at(i)) / 1e6);
        }
    }
    return figures;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Times Kivo's launch, scrolling and memory on a library."_s);
    parser.addHelpOption();
    parser.addOption({u"library"_s, u"The library folder to open."_s, u"path"_s});
    parser.addOption({u"kivo"_s, u"The kivo binary."_s, u"path"_s,
                      QCoreApplication::applicationDirPath() + u"/../bin/kivo"_s});
    parser.addOption({u"runs"_s, u"How many launches."_s, u"n"_s, u"3"_s});
    parser.addOption({u"clicks"_s, u"Wheel clicks per scroll, one every 16 ms."_s, u"n"_s, u"400"_s});
    parser.addOption({u"no-enrich"_s, u"Start Kivo with background reading off."_s});
    parser.addOption({u"cold"_s, u"Give every launch empty settings, state and cache folders; no warm-up launch."_s});
    parser.addOption({u"home"_s,
                      u"Keep the settings, state and cache folders in this folder, already warmed by an earlier run; no warm-up launch."_s,
                      u"path"_s});
    parser.process(application);
    if (!parser.isSet(u"library"_s) || qEnvironmentVariableIsEmpty("DISPLAY")) {
        std::fprintf(stderr, "usage: xvfb-run -a -s \"-screen 0 1920x1200x24\" bench_window --library PATH\n");
        return 2;
    }

    QTemporaryDir sharedHome;
    const bool cold = parser.isSet(u"cold"_s);
    const QString givenHome = parser.value(u"home"_s);
    const auto homeFor = [&] {
        if (!givenHome.isEmpty())
            return givenHome;
        if (!cold)
            return sharedHome.path();
        const QString fresh = sharedHome.filePath(QString::number(monotonicNs()));
        QDir().mkpath(fresh);
        return fresh;
    };
    if (!cold && givenHome.isEmpty() && !runOnce(parser.value(u"kivo"_s), parser.value(u"library"_s), homeFor(), 10,
                          parser.isSet(u"no-enrich"_s), true))
        return 1;

    QList<double> launches;
    QList<double> frames;
    QList<double> residentAfterLaunch;
    QList<double> residentAfterScroll;
    const int runs = parser.value(u"runs"_s).toInt();
    for (int run = 0; run < runs; ++run) {
        const auto figures = runOnce(parser.value(u"kivo"_s), parser.value(u"library"_s), homeFor(),
                                     parser.value(u"clicks"_s).toInt(), parser.isSet(u"no-enrich"_s));
        if (!figures)
            return 1;
        const qsizetype over16 = std::count_if(figures->frameMs.cbegin(), figures->frameMs.cend(),
                                               [](double ms) { return ms > 16.7; });
        const qsizetype missed = std::count_if(figures->frameMs.cbegin(), figures->frameMs.cend(),
                                               [](double ms) { return ms > 25; });
        const qsizetype stalls = std::count_if(figures->busyMs.cbegin(), figures->busyMs.cend(),
                                               [](double ms) { return ms > 16; });
        const qsizetype workStalls = std::count_if(figures->workMs.cbegin(), figures->workMs.cend(),
                                                   [](double ms) { return ms > 16; });
        const qsizetype cpuStalls = std::count_if(figures->cpuMs.cbegin(), figures->cpuMs.cend(),
                                                  [](double ms) { return ms > 16; });
        std::printf("run %d: first grid frame %.0f ms; memory %.0f MB after launch, %.0f MB after scrolling; "
                    "%lld frames while scrolling, median %.1f ms, 99th percentile %.1f ms, longest %.1f ms, "
                    "%lld over 16.7 ms, %lld over 25 ms; main thread away from its loop over 16 ms: %lld times, "
                    "longest %.1f ms; of that at work (not waiting for the render thread) over 16 ms: %lld "
                    "times, longest %.1f ms; its own CPU time in one stretch over 16 ms: %lld times, longest "
                    "%.1f ms; main thread's CPU time over the scroll %.0f ms\n",
                    run + 1, figures->launchMs, figures->residentAfterLaunchMb, figures->residentAfterScrollMb,
                    qlonglong(figures->frameMs.size()), percentile(figures->frameMs, 0.5),
                    percentile(figures->frameMs, 0.99), percentile(figures->frameMs, 1.0), qlonglong(over16),
                    qlonglong(missed), qlonglong(stalls), percentile(figures->busyMs, 1.0), qlonglong(workStalls),
                    percentile(figures->workMs, 1.0), qlonglong(cpuStalls), percentile(figures->cpuMs, 1.0),
                    figures->mainThreadScrollCpuMs);
        std::fflush(stdout);
        launches.append(figures->launchMs);
        frames.append(figures->frameMs);
        residentAfterLaunch.append(figures->residentAfterLaunchMb);
        residentAfterScroll.append(figures->residentAfterScrollMb);
    }
    std::printf("median of %d runs: first grid frame %.0f ms; memory %.0f MB after launch, %.0f MB after "
                "scrolling; all frames while scrolling: median %.1f ms, 95th %.1f ms, 99th %.1f ms\n",
                runs, percentile(launches, 0.5), percentile(residentAfterLaunch, 0.5),
                percentile(residentAfterScroll, 0.5), percentile(frames, 0.5), percentile(frames, 0.95),
                percentile(frames, 0.99));
    return 0;
}
