#include "search/searchservice.h"

#include "core/systemlog.h"
#include "search/librarysearch.h"
#include "search/palettecache.h"
#include "understanding/embeddinghooks.h"

using namespace Qt::StringLiterals;

namespace kivo {

SearchService::SearchService(Store &store, QObject *parent)
    : QObject(parent)
    , m_store(&store)
    , m_palettes(std::make_shared<PaletteCache>())
    , m_clock(&nowSeconds)
    , m_latest(std::make_shared<std::atomic<quint64>>(0))
{
    // One search reads at a time; a stale one still queued skips its work when its turn comes.
    m_workers.setMaxThreadCount(1);
    m_debounce.setSingleShot(true);
    // A coarse timer may fire up to 5% early, which would cut the typing pause short.
    m_debounce.setTimerType(Qt::PreciseTimer);
    m_debounce.setInterval(LibrarySearch::debounce);
    connect(&m_debounce, &QTimer::timeout, this, [this] {
        if (auto request = std::exchange(m_waiting, std::nullopt))
            start(*request);
    });
    store.setSearchRunner([this](const SearchRequest &request) { run(request); });
}

SearchService::~SearchService()
{
    if (m_store)
        m_store->setSearchRunner({});
    m_latest->store(0);
    m_workers.waitForDone();
}

void SearchService::setMeaningIndex(std::shared_ptr<MeaningIndex> index)
{
    m_meaningIndex = std::move(index);
}

void SearchService::setClock(std::function<double()> clock)
{
    m_clock = std::move(clock);
}

void SearchService::run(const SearchRequest &request)
{
    m_latest->store(request.generation);
    m_debounce.stop();
    m_waiting.reset();
    if (request.typing) {
        m_waiting = request;
        m_debounce.start();
        return;
    }
    start(request);
}

bool SearchService::isCurrent(quint64 generation) const
{
    return m_store && generation == m_store->searchGeneration() && generation == m_latest->load();
}

void SearchService::start(const SearchRequest &request)
{
    if (!isCurrent(request.generation))
        return;
    const std::shared_ptr<DatabaseQueue> queue = m_store->dbQueue();
    if (!queue)
        return;
    const LibrarySearch::Scope scope{request.selection, request.inboxId};
    const double now = m_clock();
    QPointer<SearchService> self(this);
    m_workers.start([self, queue, request, scope, now, latest = m_latest, meaning = m_meaningIndex,
                         palettes = m_palettes] {
        const auto stale = [&] { return latest->load() != request.generation; };
        if (stale())
            return;
        const QStringList semantic = LibrarySearch::semanticIds(meaning.get(), request.text, queue);
        if (stale())
            return;
        QList<LibraryItem> rows;
        QString failure;
        try {
            rows = queue->read(
                [&](Database &db) {
                return LibrarySearch::searchItems(db, request.text, semantic, scope, now, palettes.get());
            });
        } catch (const std::exception &error) {
            failure = errorText(error);
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation = request.generation, rows = std::move(rows), failure] {
                if (!self)
                    return;
                if (!failure.isEmpty()) {
                    systemLog(u"[Store] reloadItems failed: "_s + failure);
                    Q_EMIT self->searchFailed(generation, failure);
                    return;
                }
                if (!self->isCurrent(generation))
                    return;
                self->m_store->applySearchResults(generation, rows);
                Q_EMIT self->resultsApplied(generation, int(rows.size()));
            },
            Qt::QueuedConnection);
    });
}

} // namespace kivo
