#include "ingest/import/libraryimporter.h"

#include "core/appsettings.h"
#include "core/database.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "ingest/import/importrules.h"
#include "ingest/import/workerfuture.h"

#include <QFile>
#include <QNetworkAccessManager>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** During a long batch the grid catches up this often; at its end it reloads once more. */
constexpr qint64 batchReloadIntervalMs = 2000;

/** A given title that is blank counts as none, so the item takes its usual one. */
std::optional<QString> givenTitle(const std::optional<QString> &title)
{
    if (!title || title->trimmed().isEmpty())
        return std::nullopt;
    return title;
}

} // namespace

LibraryImporter::LibraryImporter(Store *store, AppSettings *settings, QObject *parent)
    : QObject(parent), m_store(store), m_settings(settings)
{
    // Each batch holds one thread for its whole run; pictures pasted meanwhile take another.
    m_workers.setMaxThreadCount(4);
}

LibraryImporter::~LibraryImporter()
{
    const QList<ImportBatch *> batches = m_batches.keys();
    for (ImportBatch *batch : batches)
        batch->cancel();
    m_workers.waitForDone();
    // While the importer is whole: each batch's end takes it out of `m_batches`.
    qDeleteAll(batches);
}

Store *LibraryImporter::store() const
{
    return m_store;
}

void LibraryImporter::setNetworkAccessManager(QNetworkAccessManager *network)
{
    m_network = network;
}

QNetworkAccessManager *LibraryImporter::networkAccessManager()
{
    if (!m_network) {
        if (!m_ownNetwork)
            m_ownNetwork = new QNetworkAccessManager(this);
        m_network = m_ownNetwork;
    }
    return m_network;
}

std::optional<ImportContext> LibraryImporter::context() const
{
    if (!m_store || !m_store->dbQueue())
        return std::nullopt;
    return ImportContext::forLibrary(m_store->dbQueue(), m_store->libraryRoot());
}

std::optional<QString> LibraryImporter::destination(const std::optional<QString> &explicitCollectionId) const
{
    if (!m_store)
        return explicitCollectionId;
    const auto setting = m_settings ? ImportRules::captureDestinationFromRaw(m_settings->captureDestination())
                                    : ImportRules::CaptureDestination::inbox;
    std::optional<QString> open;
    if (m_store->selection().isCollection())
        open = m_store->selection().collectionId();
    return ImportRules::destination(explicitCollectionId, setting, open, m_store->inboxId());
}

// ---------------------------------------------------------------------------------------------
// Files

ImportBatch *LibraryImporter::importFiles(
    const QStringList &paths, const std::optional<QString> &target, ImportFlags flags)
{
    const auto importContext = context();
    if (!importContext)
        return nullptr;
    auto *batch = new ImportBatch(paths, target, this);
    BatchState state{flags, {}, false};
    state.sinceReload.start();
    m_batches.insert(batch, state);
    connect(batch, &QObject::destroyed, this, [this, batch] { m_batches.remove(batch); });
    Q_EMIT batchStarted(batch);
    batch->start(*importContext, &m_workers);
    return batch;
}

void LibraryImporter::batchFileEnded(ImportBatch &batch, const FileImportOutcome &outcome)
{
    if (!outcome.succeeded()) {
        logFailure(u"[Store] import failed for "_s + outcome.fileName() + u": "_s + outcome.error);
        return;
    }
    BatchState &state = m_batches[&batch];
    requestEnrichment(outcome.imported->item);
    if (state.flags.pending)
        Q_EMIT pendingClipWanted(outcome.imported->item.id);
    state.reloadDue = true;
    if (m_store && state.sinceReload.elapsed() >= batchReloadIntervalMs) {
        m_store->reloadAll();
        state.sinceReload.restart();
        state.reloadDue = false;
    }
}

void LibraryImporter::batchEnded(ImportBatch &batch)
{
    const BatchState state = m_batches.value(&batch);
    if (batch.succeeded() == 0 || !m_store)
        return;
    m_store->reloadAll();
    if (!state.flags.pending) {
        const auto item = batch.succeeded() == 1 ? batch.firstItem() : std::nullopt;
        announce(batch.target(), item, state.flags.quiet, batch.total());
    }
}

// ---------------------------------------------------------------------------------------------
// Addresses, links and text

QFuture<RemoteImportOutcome> LibraryImporter::importRemote(const QUrl &address, const std::optional<QUrl> &pageAddress,
    const std::optional<QString> &title, const std::optional<QString> &target, ImportFlags flags)
{
    const auto importContext = context();
    if (!importContext)
        return QtFuture::makeReadyFuture(RemoteImportOutcome{});
    const RemoteRequest request{address, pageAddress, givenTitle(title), target, m_mediaTimeoutMs};
    return ImportService::importRemote(networkAccessManager(), *importContext, request)
        .then(this, [this, request, flags](QFuture<RemoteResult> done) {
            RemoteImportOutcome outcome;
            try {
                outcome.result = done.result();
            } catch (const std::exception &error) {
                const QString host = request.address.host();
                outcome.error = errorText(error);
                logFailure(
                    u"[Store] importRemote failed for "_s + (host.isEmpty() ? u"?"_s : host) + u": "_s + outcome.error);
                // Nothing sent is lost: an address that can't be fetched is kept as a link.
                if (m_store && m_store->dbQueue())
                    outcome.fallbackLink = importLink(request.address, request.title, request.target, flags);
                return outcome;
            }
            RemoteResult &result = *outcome.result;
            if (request.title && ImportRules::isJunkTitle(result.item.title))
                refineTitle(result.item, request.title, request.pageAddress.value_or(request.address));
            if (m_store)
                m_store->reloadAll();
            if (!flags.quiet)
                announce(request.target, result.item, false);
            if (flags.pending)
                Q_EMIT pendingClipWanted(result.item.id);
            if (result.kind == RemoteResult::Kind::page)
                Q_EMIT linkSnapshotWanted(result.item.id, QUrl(result.item.sourceURL.value_or(QString())));
            requestEnrichment(result.item);
            return outcome;
        });
}

std::optional<LibraryItem> LibraryImporter::importLink(
    const QUrl &address, const std::optional<QString> &title, const std::optional<QString> &target, ImportFlags flags)
{
    const auto importContext = context();
    if (!importContext)
        return std::nullopt;
    LibraryItem item;
    try {
        item = ImportService::insertLink(*importContext, address, givenTitle(title), target);
    } catch (const std::exception &error) {
        logFailure(u"[Store] importLink failed: "_s + errorText(error));
        return std::nullopt;
    }
    m_store->reloadAll();
    if (!flags.quiet)
        announce(target, item, false);
    if (flags.pending)
        Q_EMIT pendingClipWanted(item.id);
    Q_EMIT linkSnapshotWanted(item.id, address);
    // A link's words are read by enrichment too, whatever its state.
    Q_EMIT enrichmentWanted(item.id);
    return item;
}

std::optional<LibraryItem> LibraryImporter::importText(
    const QString &text, const std::optional<QString> &title, const std::optional<QString> &target, ImportFlags flags)
{
    const auto importContext = context();
    if (!importContext)
        return std::nullopt;
    LibraryItem item;
    try {
        if (text.trimmed().isEmpty())
            throw ImportError(u"the text is empty"_s);
        item = ImportService::insertText(*importContext, text, givenTitle(title), target);
    } catch (const std::exception &error) {
        logFailure(u"[Store] importText failed: "_s + errorText(error));
        return std::nullopt;
    }
    m_store->reloadAll();
    if (!flags.quiet)
        announce(target, item, false);
    if (flags.pending)
        Q_EMIT pendingClipWanted(item.id);
    return item;
}

// ---------------------------------------------------------------------------------------------
// Picture bytes and screenshots

QFuture<std::optional<ImportedItem>> LibraryImporter::importImageData(const QByteArray &bytes,
    const std::optional<QString> &title, const std::optional<QString> &target, ImportFlags flags)
{
    const auto importContext = context();
    if (!importContext)
        return QtFuture::makeReadyFuture(std::optional<ImportedItem>());
    return runOnWorker<ImportedItem>(&m_workers, [context = *importContext, bytes, title = givenTitle(title), target] {
        return ImportService::importImageData(context, bytes, title, target);
    }).then(this, [this, target, flags](QFuture<ImportedItem> done) -> std::optional<ImportedItem> {
        std::optional<ImportedItem> imported;
        try {
            imported = done.result();
        } catch (const std::exception &error) {
            logFailure(u"[Store] importImageData failed: "_s + errorText(error));
            return std::nullopt;
        }
        finishSingle(imported, target, flags);
        return imported;
    });
}

QFuture<std::optional<ImportedItem>> LibraryImporter::importScreenshot(
    const QString &path, const std::optional<QUrl> &pageAddress, const std::optional<QString> &target)
{
    const auto importContext = context();
    if (!importContext)
        return QtFuture::makeReadyFuture(std::optional<ImportedItem>());
    return runOnWorker<ImportedItem>(&m_workers, [context = *importContext, path, pageAddress, target] {
        ImportedItem imported = ImportService::importFile(context, path, target);
        if (pageAddress) {
            const QString source = pageAddress->toString(QUrl::FullyEncoded);
            context.queue->write([&](Database &db) {
                db.execute(u"UPDATE item SET sourceURL = ? WHERE id = ?"_s, {source, imported.item.id});
            });
            imported.item.sourceURL = source;
        }
        // The picture is in the library now; the capture tool's copy goes.
        QFile::remove(path);
        return imported;
    }).then(this, [this, target](QFuture<ImportedItem> done) -> std::optional<ImportedItem> {
        std::optional<ImportedItem> imported;
        try {
            imported = done.result();
        } catch (const std::exception &error) {
            logFailure(u"[Store] screenshot import failed: "_s + errorText(error));
            return std::nullopt;
        }
        finishSingle(imported, target, {});
        return imported;
    });
}

void LibraryImporter::finishSingle(
    const std::optional<ImportedItem> &imported, const std::optional<QString> &target, ImportFlags flags)
{
    if (!imported || !m_store)
        return;
    m_store->reloadAll();
    if (!flags.quiet)
        announce(target, imported->item, false);
    if (flags.pending)
        Q_EMIT pendingClipWanted(imported->item.id);
    requestEnrichment(imported->item);
}

// ---------------------------------------------------------------------------------------------
// Follow-up

void LibraryImporter::announce(
    const std::optional<QString> &target, const std::optional<LibraryItem> &item, bool quiet, qsizetype batchSize)
{
    if (!m_store)
        return;
    QString name;
    if (!target || *target == m_store->inboxId())
        name = u"Inbox"_s;
    else if (const auto collection = m_store->collectionById(*target))
        name = collection->name;
    else
        name = u"Library"_s;
    m_store->showToast(u"Saved to "_s + name);
    if (quiet || batchSize > 1 || !item)
        return;
    const bool cardWanted = m_settings
        ? m_settings->captureDestination() == u"picker" || m_settings->captureCardEnabled()
        : true; // the capture card is on by default
    if (!cardWanted)
        return;
    if (const auto fetched = m_store->itemById(item->id))
        Q_EMIT captureCardWanted(*fetched);
}

void LibraryImporter::requestEnrichment(const LibraryItem &item)
{
    if (item.enrichedAt || (item.kind != u"image" && item.kind != u"video"))
        return;
    Q_EMIT enrichmentWanted(item.id);
}

void LibraryImporter::refineTitle(LibraryItem &item, const std::optional<QString> &pageTitle, const QUrl &pageAddress)
{
    const auto refined = ImportRules::linkTitle(pageTitle, pageAddress);
    if (!refined || !m_store || !m_store->dbQueue())
        return;
    try {
        m_store->dbQueue()->write([&](Database &db) {
            db.execute(u"UPDATE item SET title = ? WHERE id = ?"_s, {*refined, item.id});
        });
        item.title = refined;
    } catch (const std::exception &error) {
        logFailure(u"[Store] importRemote failed for "_s + pageAddress.host() + u": "_s + errorText(error));
    }
}

void LibraryImporter::logFailure(const QString &line)
{
    systemLog(line);
}

} // namespace kivo
