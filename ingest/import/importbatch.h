#pragma once

#include "ingest/import/importservice.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>

class QThreadPool;

namespace kivo {

class LibraryImporter;

/** How one file of a batch ended: its item (new or existing), or the reason it failed. */
struct FileImportOutcome {
    /** The file's path as it was found (inside a dropped folder: the path of the file itself). */
    QString path;
    std::optional<ImportedItem> imported;
    /** Why the file could not be imported; empty on success. */
    QString error;

    [[nodiscard]] bool succeeded() const { return imported.has_value(); }
    /** The file's last path component, as failures name it. */
    [[nodiscard]] QString fileName() const;
};

/**
 * One drop, paste or command's worth of files, imported strictly one at a time in the order given
 * on a worker thread (folders are walked there first, their files in name order). It lives on the
 * main thread and reports each file as it ends, so a window can show "12 of 1,000" and name the
 * files that failed. `LibraryImporter` makes it and does the follow-up work; the caller may
 * delete it once `finished` has been emitted.
 */
class ImportBatch : public QObject
{
    Q_OBJECT

public:
    ~ImportBatch() override;

    /** The files to import once the folders are walked; 0 until `totalKnown`. */
    [[nodiscard]] int total() const { return m_total; }
    /** Files ended so far, well or not. */
    [[nodiscard]] int done() const { return int(m_outcomes.size()); }
    [[nodiscard]] int succeeded() const { return m_succeeded; }
    [[nodiscard]] int failed() const { return done() - m_succeeded; }
    [[nodiscard]] bool isFinished() const { return m_finished; }
    [[nodiscard]] bool isCancelled() const { return m_cancel->load(); }
    [[nodiscard]] const std::optional<QString> &target() const { return m_target; }
    /** The paths as they were handed in (files and folders). */
    [[nodiscard]] const QStringList &paths() const { return m_paths; }
    [[nodiscard]] const QList<FileImportOutcome> &outcomes() const { return m_outcomes; }
    [[nodiscard]] QList<FileImportOutcome> failures() const;
    /** The first file that gave an item. */
    [[nodiscard]] std::optional<LibraryItem> firstItem() const;

    /** Stops after the file being imported; what was imported stays. */
    void cancel() { m_cancel->store(true); }

Q_SIGNALS:
    /** The folders are walked: this many files will be imported. */
    void totalKnown(int total);
    /** One more file has ended. */
    void progressed(const kivo::FileImportOutcome &outcome);
    /** The last file has ended, or the batch was cancelled; the library has been reloaded. */
    void finished();

private:
    friend class LibraryImporter;
    ImportBatch(const QStringList &paths, const std::optional<QString> &target, LibraryImporter *importer);

    /** Starts the worker's part on `pool`: walk the folders, then import file after file. */
    void start(const ImportContext &context, QThreadPool *pool);
    void noteTotal(int total);
    void noteOutcome(const FileImportOutcome &outcome);
    void noteFinished();

    QPointer<LibraryImporter> m_importer;
    QStringList m_paths;
    std::optional<QString> m_target;
    std::shared_ptr<std::atomic_bool> m_cancel = std::make_shared<std::atomic_bool>(false);
    int m_total = 0;
    int m_succeeded = 0;
    bool m_finished = false;
    QList<FileImportOutcome> m_outcomes;
};

/** Every file under the given paths: files as they are, folders walked to the bottom, hidden entries skipped. */
[[nodiscard]] QStringList expandImportPaths(const QStringList &paths);

} // namespace kivo

Q_DECLARE_METATYPE(kivo::FileImportOutcome)
