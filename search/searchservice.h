#pragma once

#include "core/store.h"

#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace kivo {

class MeaningIndex;
class PaletteCache;

/**
 * The search behind the Store's search field. The Store hands it a request whenever its rows
 * would come from a search; a keystroke waits out the debounce first, every other trigger runs
 * at once. The meaning list and the fused query run on a worker, off the main thread, and the
 * rows go back to the Store only if no newer reload has happened since, so an older search can
 * never overwrite a newer one. The stored palettes are kept between searches and read again only
 * after the library has changed.
 */
class SearchService : public QObject
{
    Q_OBJECT

public:
    /** Installs itself as the Store's search; taken out again when it is destroyed. */
    explicit SearchService(Store &store, QObject *parent = nullptr);
    ~SearchService() override;

    /** The embeddings behind the meaning list; none (the default) leaves that list empty. */
    void setMeaningIndex(std::shared_ptr<MeaningIndex> index);
    /** The clock that ages openings in the use list (seconds since 1970); the wall clock by default. */
    void setClock(std::function<double()> clock);

    /** Runs one request as the Store asks; public so tests can drive it without a Store reload. */
    void run(const SearchRequest &request);

Q_SIGNALS:
    /** A search's rows reached the Store (`count` of them, before the view's kind filter). */
    void resultsApplied(quint64 generation, int count);
    /** A search's read failed; the Store's rows stay as they were. */
    void searchFailed(quint64 generation, const QString &error);

private:
    void start(const SearchRequest &request);
    [[nodiscard]] bool isCurrent(quint64 generation) const;

    QPointer<Store> m_store;
    std::shared_ptr<MeaningIndex> m_meaningIndex;
    std::shared_ptr<PaletteCache> m_palettes;
    std::function<double()> m_clock;
    QTimer m_debounce;
    std::optional<SearchRequest> m_waiting;
    /** The newest generation asked for; workers read it to skip work that has gone stale. */
    std::shared_ptr<std::atomic<quint64>> m_latest;
    QThreadPool m_workers;
};

} // namespace kivo
