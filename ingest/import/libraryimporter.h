#pragma once

#include "ingest/import/importbatch.h"
#include "ingest/import/importservice.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QThreadPool>
#include <QUrl>

#include <optional>

class QNetworkAccessManager;

namespace kivo {

class AppSettings;
class Store;

/** How an entry treats its item afterwards. */
struct ImportFlags {
    /** Add the item to the pending clips (`pendingClipWanted`), and don't announce a batch. */
    bool pending = false;
    /** Don't announce: no toast and no capture card. */
    bool quiet = false;
};

/** What the address entry ended in: the address's own result, or the link it was saved as when the import failed. */
struct RemoteImportOutcome {
    std::optional<RemoteResult> result;
    /** The address saved by `importLink` because fetching it failed. */
    std::optional<LibraryItem> fallbackLink;
    /** The failure that led to the fallback; empty otherwise. */
    QString error;

    /** The item the entry ended in, whichever way; none when nothing could be saved. */
    [[nodiscard]] std::optional<LibraryItem> item() const
    {
        return result ? std::optional<LibraryItem>(result->item) : fallbackLink;
    }
};

/**
 * The Store's import entries, the one way in for every file, picture, address, link and text that
 * becomes an item: each runs the import service's step (files and downloads off the main thread),
 * logs a failure with its line, reloads the Store, announces where the item went ("Saved to
 * Inbox"), and hands the item on to the follow-up work through the signals below (enrichment,
 * link snapshots, the capture card, the pending clips). It lives on the main thread beside the
 * Store, and does nothing while no library is open.
 */
class LibraryImporter : public QObject
{
    Q_OBJECT

public:
    /** `settings` gives the destination and capture-card choices; without it their defaults apply. */
    explicit LibraryImporter(Store *store, AppSettings *settings = nullptr, QObject *parent = nullptr);
    ~LibraryImporter() override;

    [[nodiscard]] Store *store() const;
    /** Downloads go through this manager (not owned; tests point it at their server); without one, the importer's own. */
    void setNetworkAccessManager(QNetworkAccessManager *network);
    [[nodiscard]] QNetworkAccessManager *networkAccessManager();
    /** Each download's time-out, thirty seconds unless a test shortens it. */
    void setMediaTimeout(int milliseconds) { m_mediaTimeoutMs = milliseconds; }
    /** While the Store has a library: where imports write. */
    [[nodiscard]] std::optional<ImportContext> context() const;

    /** The target of an import the user didn't aim: the explicit collection, else by `captureDestination`. */
    [[nodiscard]] std::optional<QString> destination(const std::optional<QString> &explicitCollectionId = {}) const;

    // ---- Entries -----------------------------------------------------------------------------

    /**
     * Files and folders (their files, all the way down), one at a time on a worker. Each failure
     * logs "[Store] import failed for <name>: <error>" and the batch goes on; the Store reloads
     * every few seconds during a long batch and once at its end, which is announced unless
     * `flags.pending`. Null without a library. The batch belongs to the importer; the caller may
     * delete it after `finished`.
     */
    ImportBatch *importFiles(const QStringList &paths, const std::optional<QString> &target, ImportFlags flags = {});

    /**
     * An address: a picture or video is stored, anything else becomes a link; an address that
     * can't be fetched is logged and saved by `importLink` with the same title and target, so
     * nothing sent is lost. The page title refines a junk title of the result.
     */
    QFuture<RemoteImportOutcome> importRemote(const QUrl &address, const std::optional<QUrl> &pageAddress,
        const std::optional<QString> &title, const std::optional<QString> &target, ImportFlags flags = {});

    /** A link item, made every time (a link saved twice is two items); announced unless quiet. */
    std::optional<LibraryItem> importLink(const QUrl &address, const std::optional<QString> &title,
        const std::optional<QString> &target, ImportFlags flags = {});

    /** A text item with the whole text as its note; never checked for an equal one. */
    std::optional<LibraryItem> importText(const QString &text, const std::optional<QString> &title,
        const std::optional<QString> &target, ImportFlags flags = {});

    /** Picture bytes (a paste); hashed and stored on a worker. Resolves to none on failure. */
    QFuture<std::optional<ImportedItem>> importImageData(const QByteArray &bytes, const std::optional<QString> &title,
        const std::optional<QString> &target, ImportFlags flags = {});

    /**
     * A screenshot file: imported as a file (titled by its name), the page it was taken over as
     * its `sourceURL`, the temporary file deleted afterwards, then announced.
     */
    QFuture<std::optional<ImportedItem>> importScreenshot(
        const QString &path, const std::optional<QUrl> &pageAddress, const std::optional<QString> &target);

    // ---- Follow-up ---------------------------------------------------------------------------

    /**
     * Tells the user where an import went ("Saved to Inbox", "Saved to <collection>", "Saved to
     * Library" for an unknown one), and, for a single item that isn't quiet, asks for the capture
     * card when the settings want it.
     */
    void announce(const std::optional<QString> &target, const std::optional<LibraryItem> &item, bool quiet,
        qsizetype batchSize = 1);
    /** Asks for enrichment of a picture or video that hasn't been read yet. */
    void requestEnrichment(const LibraryItem &item);

Q_SIGNALS:
    /** An item to read (text, palette, tags): the enrichment service's queue takes it, once. */
    void enrichmentWanted(const QString &itemId);
    /** A link to fetch a preview and snapshot for. */
    void linkSnapshotWanted(const QString &itemId, const QUrl &address);
    /** A single item just saved, for the capture card to open on. */
    void captureCardWanted(const kivo::LibraryItem &item);
    /** An item for the pending clips (imports made with `ImportFlags::pending`). */
    void pendingClipWanted(const QString &itemId);
    /** A batch of files has started; a window shows its progress. */
    void batchStarted(kivo::ImportBatch *batch);

private:
    friend class ImportBatch;
    void batchFileEnded(ImportBatch &batch, const FileImportOutcome &outcome);
    void batchEnded(ImportBatch &batch);
    /** The follow-up of a single file or picture entry. */
    void finishSingle(
        const std::optional<ImportedItem> &imported, const std::optional<QString> &target, ImportFlags flags);
    /** Writes a refined title for a junk one; the item is updated in place. */
    void refineTitle(LibraryItem &item, const std::optional<QString> &pageTitle, const QUrl &pageAddress);
    void logFailure(const QString &line);

    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
    QPointer<QNetworkAccessManager> m_network;
    QNetworkAccessManager *m_ownNetwork = nullptr;
    int m_mediaTimeoutMs = 30'000;
    struct BatchState {
        ImportFlags flags;
        QElapsedTimer sinceReload;
        bool reloadDue = false;
    };
    QHash<ImportBatch *, BatchState> m_batches;
    /** Hashing and copying; the importer's end waits for it. */
    QThreadPool m_workers;
};

} // namespace kivo

Q_DECLARE_METATYPE(kivo::RemoteImportOutcome)
