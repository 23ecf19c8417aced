#include "understanding/enrichment/enrichmentservice.h"

#include "core/backgroundpriority.h"
#include "core/database.h"
#include "core/launchoptions.h"
#include "core/media/thumbnailer.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "understanding/imageclassifier.h"

using namespace Qt::StringLiterals;

namespace kivo {

const QString EnrichmentService::pendingQuery
    = u"SELECT id FROM item\n"
      "WHERE enrichedAt IS NULL AND deletedAt IS NULL AND kind IN ('image', 'video')\n"
      "ORDER BY addedAt DESC"_s;

namespace {

/** Text recognition and classification of one picture run side by side. */
constexpr int visionThreads = 2;

/** A video's representative frame or a document's first page, through the thumbnail decoders. */
QImage framePicture(const QString &path, int maxSide)
{
    return Thumbnailer::make(path, QSize(maxSide, maxSide));
}

/** Fills in what the caller left out: no classifier names nothing, frames come from the thumbnailer. */
EnrichmentHooks completed(EnrichmentHooks hooks)
{
    if (!hooks.classifier)
        hooks.classifier = std::make_shared<AbsentImageClassifier>();
    if (!hooks.framePicture)
        hooks.framePicture = framePicture;
    return hooks;
}

} // namespace

EnrichmentService::EnrichmentService(QObject *parent) : EnrichmentService(LaunchOptions::current().noEnrich, parent)
{
}

EnrichmentService::EnrichmentService(bool disabled, QObject *parent) : QObject(parent), m_disabled(disabled)
{
    qRegisterMetaType<ItemEnricher::Outcome>();
    m_library.hooks = completed({});
    // The recognisers load their models once per thread, so these threads never retire.
    m_vision.setMaxThreadCount(visionThreads);
    m_vision.setExpiryTimeout(-1);
    m_upgrades.setMaxThreadCount(1);
    m_thread.setObjectName(u"Enrichment"_s);
    m_context = new QObject;
    m_context->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_context, &QObject::deleteLater);
    // Runs on the new thread itself: reading pictures gives way to the window.
    connect(&m_thread, &QThread::started, m_context, &lowerCurrentThreadPriority, Qt::DirectConnection);
    m_thread.start(QThread::LowPriority);
}

EnrichmentService::~EnrichmentService()
{
    m_stopping = true;
    m_upgrades.clear();
    m_upgrades.waitForDone();
    // The item being read finishes; the rest of the queue is found again by the next scan.
    m_thread.quit();
    m_thread.wait();
    m_vision.waitForDone();
}

template <typename Work> void EnrichmentService::onWorker(Work &&work)
{
    QMetaObject::invokeMethod(m_context, std::forward<Work>(work), Qt::QueuedConnection);
}

void EnrichmentService::setHooks(EnrichmentHooks hooks)
{
    const std::lock_guard lock(m_libraryMutex);
    m_library.hooks = completed(std::move(hooks));
}

void EnrichmentService::attachStore(Store *store)
{
    if (m_store)
        disconnect(this, nullptr, m_store, nullptr);
    m_store = store;
    setDatabase(store ? store->dbQueue() : nullptr, store ? store->libraryRoot() : QString());
    if (!store)
        return;
    // Queued onto the Store's thread, and dropped with it: the worker never touches the Store itself.
    connect(this, &EnrichmentService::itemFinished, store, [store](const QString &, ItemEnricher::Outcome outcome) {
        if (outcome == ItemEnricher::Outcome::read || outcome == ItemEnricher::Outcome::linkTagged)
            store->noteEnrichmentFinished();
    });
    connect(this, &EnrichmentService::backfillFinished, store, [store](const QString &flag) {
        if (flag == coloursReextractedFlag)
            store->reloadAll();
    });
    // The first scan waits for the Store's word (a few seconds after the first load); after that,
    // whenever the library's counts change, items may have arrived that nobody handed over.
    connect(store, &Store::enrichmentDue, this, [this] {
        m_scanDue = true;
        scanPending();
    });
    connect(store, &Store::countsChanged, this, [this] {
        if (m_scanDue)
            scanPending();
    });
}

void EnrichmentService::setDatabase(std::shared_ptr<DatabaseQueue> db, const QString &libraryRoot)
{
    const std::lock_guard lock(m_libraryMutex);
    m_library.db = std::move(db);
    m_library.root = libraryRoot;
}

EnrichmentService::Library EnrichmentService::library() const
{
    const std::lock_guard lock(m_libraryMutex);
    return m_library;
}

void EnrichmentService::enqueue(const QString &itemId)
{
    onWorker([this, itemId] { append(itemId); });
}

void EnrichmentService::scanPending()
{
    onWorker([this] {
        const std::shared_ptr<DatabaseQueue> db = library().db;
        if (!db)
            return;
        QVariantList ids;
        try {
            ids = db->read([](Database &database) { return database.fetchScalars(pendingQuery); });
            // The scan walks every row through the file's map, a hundred megabytes at 100,000
            // items that would stay resident until the window's own reads settle.
            db->releaseMappedPages();
        } catch (const std::exception &error) {
            systemLog(u"[Enrichment] pending scan failed: "_s + errorText(error));
            Q_EMIT scanFailed(errorText(error));
            return;
        }
        for (const QVariant &id : std::as_const(ids))
            append(id.toString());
        Q_EMIT scanFinished(int(ids.size()));
    });
}

void EnrichmentService::append(const QString &itemId)
{
    if (m_queued.contains(itemId))
        return;
    m_queue.push_back(itemId);
    m_queued.insert(itemId);
    publishCount();
    if (m_isRunning)
        return;
    m_isRunning = true;
    onWorker([this] { drainStep(); });
}

void EnrichmentService::drainStep()
{
    if (m_disabled) {
        // With reading switched off for this run, whatever was queued is dropped unread.
        m_queue.clear();
        m_queued.clear();
        m_isRunning = false;
        publishCount();
        return;
    }
    if (m_queue.empty() || m_stopping) {
        m_isRunning = false;
        publishCount();
        Q_EMIT drained();
        return;
    }
    const QString itemId = m_queue.front();
    m_queue.pop_front();
    m_queued.remove(itemId);
    m_reading = true;
    publishCount();

    const Library current = library();
    ItemEnricher enricher(current.db, current.root, current.hooks, m_vision);
    const ItemEnricher::Outcome outcome = enricher.enrich(itemId);
    m_reading = false;
    Q_EMIT itemFinished(itemId, outcome);
    onWorker([this] { drainStep(); });
}

void EnrichmentService::publishCount()
{
    const int count = int(m_queue.size()) + (m_reading ? 1 : 0);
    if (m_pendingCount.exchange(count) != count)
        Q_EMIT pendingCountChanged(count);
}

} // namespace kivo
