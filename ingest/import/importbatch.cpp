#include "ingest/import/importbatch.h"

#include "core/backgroundpriority.h"
#include "core/systemlog.h"
#include "ingest/import/libraryimporter.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFileInfo>
#include <QThreadPool>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

QStringList filesUnder(const QString &folder)
{
    QStringList files;
    QDirIterator walk(folder, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString path = walk.next();
        // Hidden files, and everything inside hidden folders, are the system's, not the user's.
        const QString relative = path.mid(folder.size());
        if (!relative.contains(u"/."_s))
            files.append(path);
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

QString FileImportOutcome::fileName() const
{
    return QFileInfo(path).fileName();
}

QStringList expandImportPaths(const QStringList &paths)
{
    QStringList files;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if (info.isDir())
            files += filesUnder(QDir::cleanPath(info.absoluteFilePath()));
        else
            files.append(path);
    }
    return files;
}

ImportBatch::ImportBatch(const QStringList &paths, const std::optional<QString> &target, LibraryImporter *importer)
    : QObject(importer), m_importer(importer), m_paths(paths), m_target(target)
{
}

ImportBatch::~ImportBatch()
{
    cancel();
}

QList<FileImportOutcome> ImportBatch::failures() const
{
    QList<FileImportOutcome> failed;
    std::copy_if(m_outcomes.begin(), m_outcomes.end(), std::back_inserter(failed),
        [](const FileImportOutcome &outcome) { return !outcome.succeeded(); });
    return failed;
}

std::optional<LibraryItem> ImportBatch::firstItem() const
{
    for (const FileImportOutcome &outcome : m_outcomes) {
        if (outcome.imported)
            return outcome.imported->item;
    }
    return std::nullopt;
}

void ImportBatch::start(const ImportContext &context, QThreadPool *pool)
{
    QPointer<ImportBatch> self(this);
    // The batch is only looked at on the main thread, where it may have been deleted meanwhile.
    const auto post = [self](std::function<void(ImportBatch &)> step) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, step = std::move(step)] {
                if (self)
                    step(*self);
            },
            Qt::QueuedConnection);
    };
    pool->start([context, paths = m_paths, target = m_target, cancel = m_cancel, post] {
        lowerCurrentThreadPriority();
        const QStringList files = expandImportPaths(paths);
        post([total = int(files.size())](ImportBatch &batch) { batch.noteTotal(total); });
        for (const QString &file : files) {
            if (cancel->load())
                break;
            FileImportOutcome outcome{file, std::nullopt, {}};
            try {
                outcome.imported = ImportService::importFile(context, file, target);
            } catch (const std::exception &error) {
                outcome.error = errorText(error);
            }
            post([outcome](ImportBatch &batch) { batch.noteOutcome(outcome); });
        }
        post([](ImportBatch &batch) { batch.noteFinished(); });
    });
}

void ImportBatch::noteTotal(int total)
{
    m_total = total;
    Q_EMIT totalKnown(total);
}

void ImportBatch::noteOutcome(const FileImportOutcome &outcome)
{
    m_outcomes.append(outcome);
    if (outcome.succeeded())
        ++m_succeeded;
    if (m_importer)
        m_importer->batchFileEnded(*this, outcome);
    Q_EMIT progressed(outcome);
}

void ImportBatch::noteFinished()
{
    m_finished = true;
    if (m_importer)
        m_importer->batchEnded(*this);
    Q_EMIT finished();
}

} // namespace kivo
