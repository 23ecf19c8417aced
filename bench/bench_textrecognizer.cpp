// Text recognition of one 1024-pixel screenshot: Kivo's reused engine against the `tesseract`
// program on the same PNG, both with one OpenMP thread.
//   build/bench/bench_textrecognizer [ROUNDS]

#include "bench/benchimages.h"
#include "understanding/analysisimage.h"
#include "understanding/textrecognizer.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

// Milliseconds of one run of the command, which must succeed.
double timeCommand(const QStringList &arguments)
{
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    // The command at its fastest here: one thread, as Kivo reads.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"OMP_THREAD_LIMIT"_s, u"1"_s);
    process.setProcessEnvironment(environment);
    process.start(u"tesseract"_s, arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        qFatal("tesseract failed: %s", process.readAllStandardError().constData());
    return timer.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const int rounds = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 20;

    QTemporaryDir dir;
    const QString png = dir.filePath(u"screenshot.png"_s);
    const QString dot = dir.filePath(u"dot.png"_s);
    if (!kivo::bench::articleScreenshot().save(png))
        qFatal("cannot write the screenshot");
    QImage tiny(8, 8, QImage::Format_RGB32);
    tiny.fill(Qt::white);
    tiny.save(dot);

    // The first call loads the engine; the enrichment worker pays that once per thread.
    QElapsedTimer timer;
    timer.start();
    const std::optional<QString> first = kivo::TextRecognizer::recognizeText(kivo::AnalysisImage::decode(png));
    const double firstMs = timer.nsecsElapsed() / 1e6;

    QList<double> kivoTimes;
    QList<double> commandTimes;
    QList<double> startTimes;
    for (int i = 0; i < rounds; ++i) {
        timer.restart();
        const std::optional<QString> text = kivo::TextRecognizer::recognizeText(kivo::AnalysisImage::decode(png));
        kivoTimes.append(timer.nsecsElapsed() / 1e6);
        if (text != first)
            qFatal("the reading changed between rounds");
        commandTimes.append(timeCommand({png, u"stdout"_s, u"--oem"_s, u"1"_s, u"-l"_s, u"eng"_s}));
        startTimes.append(timeCommand({dot, u"stdout"_s, u"--oem"_s, u"1"_s, u"-l"_s, u"eng"_s}));
    }

    QTextStream out(stdout);
    const double kivoMs = median(kivoTimes);
    const double commandMs = median(commandTimes);
    const QByteArray limit = qgetenv("OMP_THREAD_LIMIT");
    out << u"OpenMP limit from the environment: %1, %2 rounds, 1024x768 screenshot, %3 characters read\n"_s
               .arg(limit.isEmpty() ? u"none"_s : QString::fromLocal8Bit(limit))
               .arg(rounds)
               .arg(first.value_or(QString()).size());
    out << u"kivo first call (engine load + read): %1 ms\n"_s.arg(firstMs, 0, 'f', 1);
    out << u"kivo decode + read, median:           %1 ms\n"_s.arg(kivoMs, 0, 'f', 1);
    out << u"tesseract command, median:            %1 ms\n"_s.arg(commandMs, 0, 'f', 1);
    out << u"tesseract command on an 8x8 image:    %1 ms (its start-up)\n"_s.arg(median(startTimes), 0, 'f', 1);
    out << u"ratio kivo / command:                 %1\n"_s.arg(kivoMs / commandMs, 0, 'f', 2);
    return kivoMs <= 1.2 * commandMs ? 0 : 1;
}
