#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <optional>

class QMimeData;

namespace kivo {

class ImportBatch;
class LibraryImporter;
struct FileImportOutcome;

/**
 * What the window hands to the import pipeline when something is dropped on the grid or on a
 * collection, or pasted: files and folders, web addresses, a picture, a piece of text. It shows
 * the running batches' progress with a cancel, and keeps the names of the files that failed until
 * the user dismisses them.
 */
class ImportController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes the one import controller and publishes it as Importer")

    /** Whether files are being imported. */
    Q_PROPERTY(bool busy READ busy NOTIFY progressChanged)
    /** Files ended so far, over all running batches. */
    Q_PROPERTY(int done READ done NOTIFY progressChanged)
    /** Files to import over all running batches; 0 while folders are still being walked. */
    Q_PROPERTY(int total READ total NOTIFY progressChanged)
    /** `done` over `total`, 0 to 1. */
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    /** "Importing 12 of 1,000". */
    Q_PROPERTY(QString progressText READ progressText NOTIFY progressChanged)
    Q_PROPERTY(int failureCount READ failureCount NOTIFY failuresChanged)
    /** "3 files couldn't be imported"; empty without failures. */
    Q_PROPERTY(QString failureSummary READ failureSummary NOTIFY failuresChanged)
    /** The failed files, each a map of `name`, `path` and `error`, in the order they failed. */
    Q_PROPERTY(QVariantList failures READ failures NOTIFY failuresChanged)

public:
    explicit ImportController(LibraryImporter *importer, QObject *parent = nullptr);
    ~ImportController() override;

    [[nodiscard]] bool busy() const { return !m_batches.isEmpty(); }
    [[nodiscard]] int done() const;
    [[nodiscard]] int total() const;
    [[nodiscard]] double progress() const;
    [[nodiscard]] QString progressText() const;
    [[nodiscard]] int failureCount() const { return int(m_failures.size()); }
    [[nodiscard]] QString failureSummary() const;
    [[nodiscard]] QVariantList failures() const { return m_failures; }

    /**
     * Imports dropped addresses: local files and folders as one batch, web addresses one after
     * another. `collectionId` is where they were dropped; empty leaves it to the destination rule.
     */
    Q_INVOKABLE bool importUrls(const QList<QUrl> &urls, const QString &collectionId = {});
    /** A drop as QML sees it: its addresses, else its text (a web address, or words for a note). */
    Q_INVOKABLE bool importDrop(const QList<QUrl> &urls, const QString &text, const QString &collectionId = {});
    /** Whatever the data holds, best first: files or addresses, a picture, text. */
    bool importMimeData(const QMimeData *mime, const QString &collectionId = {});
    /** Control-V: the clipboard's contents, as a drop. */
    Q_INVOKABLE bool paste(const QString &collectionId = {});
    /** Stops the running batches after their current file; what was imported stays. */
    Q_INVOKABLE void cancel();
    /** Forgets the failures shown. */
    Q_INVOKABLE void dismissFailures();

Q_SIGNALS:
    void progressChanged();
    void failuresChanged();

private:
    [[nodiscard]] std::optional<QString> target(const QString &collectionId) const;
    bool importText(const QString &text, const std::optional<QString> &target);
    void queueAddress(const QUrl &address, const std::optional<QString> &target);
    void importNextAddress();
    void watch(ImportBatch *batch);
    void noteOutcome(const FileImportOutcome &outcome);
    void batchFinished(ImportBatch *batch);

    QPointer<LibraryImporter> m_importer;
    QList<QPointer<ImportBatch>> m_batches;
    QVariantList m_failures;
    struct PendingAddress {
        QUrl address;
        std::optional<QString> target;
    };
    QList<PendingAddress> m_addresses;
    bool m_addressRunning = false;
};

} // namespace kivo
