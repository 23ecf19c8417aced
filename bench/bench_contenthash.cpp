// Times the content hash of an import (SHA-256 over a whole file) against Qt's own SHA-256, on
// in-memory buffers of a few sizes. Run by hand; figures in docs/benchmarks.md.

#include "ingest/import/importservice.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>

namespace {

template <typename Hash> double medianMs(const QByteArray &bytes, Hash hash)
{
    QList<double> times;
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer clock;
        clock.start();
        hash(bytes);
        times.append(double(clock.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times.at(2);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    std::printf("| Bytes | Kivo (OpenSSL) | Qt QCryptographicHash | Kivo MB/s |\n|---|---|---|---|\n");
    for (const qsizetype size : {qsizetype(1) << 20, qsizetype(16) << 20, qsizetype(128) << 20}) {
        QByteArray bytes(size, Qt::Uninitialized);
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / 4);
        const double kivo = medianMs(bytes, [](const QByteArray &b) { return kivo::ImportService::contentHash(b); });
        const double qt = medianMs(
            bytes, [](const QByteArray &b) { return QCryptographicHash::hash(b, QCryptographicHash::Sha256); });
        if (kivo::ImportService::contentHash(bytes)
            != QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex())) {
            std::fprintf(stderr, "the two hashes differ\n");
            return 1;
        }
        std::printf("| %lld MiB | %.1f ms | %.1f ms | %.0f |\n", static_cast<long long>(size >> 20), kivo, qt,
            double(size) / 1e6 / (kivo / 1000.0));
    }
    return 0;
}
