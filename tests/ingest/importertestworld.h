#pragma once

// The Store's import entries over a real library: a Store on the test's database, the settings
// it reads, an importer, and a record of everything the importer handed on.

#include "core/appsettings.h"
#include "core/store.h"
#include "ingest/import/libraryimporter.h"
#include "tests/ingest/importtestlibrary.h"

#include <QSignalSpy>
#include <QtTest>

namespace kivo::test {

class ImporterTestWorld
{
public:
    ImporterTestWorld()
        : store(&settings)
        , importer(&store, &settings)
        , enrichment(&importer, &LibraryImporter::enrichmentWanted)
        , snapshots(&importer, &LibraryImporter::linkSnapshotWanted)
        , cards(&importer, &LibraryImporter::captureCardWanted)
        , pending(&importer, &LibraryImporter::pendingClipWanted)
    {
        store.setSidebarExtrasEnabled(false);
        store.adoptQueue(library.queue, library.sandbox.libraryRoot());
        store.reloadAll();
    }

    [[nodiscard]] QString inboxId() const { return store.inboxIdText(); }

    /** Waits for a future of the importer (its follow-up runs on this thread's event loop). */
    template <typename T> T wait(QFuture<T> future, int ms = 30000)
    {
        QElapsedTimer clock;
        clock.start();
        while (!future.isFinished() && clock.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return future.result();
    }

    /** Waits for a batch to end; false on a time-out. */
    bool wait(ImportBatch *batch, int ms = 60000)
    {
        QElapsedTimer clock;
        clock.start();
        while (batch && !batch->isFinished() && clock.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return batch && batch->isFinished();
    }

    static QStringList firstArguments(const QSignalSpy &spy)
    {
        QStringList values;
        for (const QList<QVariant> &call : spy)
            values.append(call.value(0).toString());
        return values;
    }

    ImportTestLibrary library;
    AppSettings settings;
    Store store;
    LibraryImporter importer;
    QSignalSpy enrichment;
    QSignalSpy snapshots;
    QSignalSpy cards;
    QSignalSpy pending;
};

} // namespace kivo::test
