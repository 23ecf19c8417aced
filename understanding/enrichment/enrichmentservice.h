#pragma once

#include "understanding/enrichment/itemenricher.h"

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QThread>
#include <QThreadPool>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>

namespace kivo {

class DatabaseQueue;
class Store;

/**
 * The one background worker that turns a freshly saved item into a searchable one: it reads the
 * text in pictures, their palettes, tags and titles, and gives links word tags. It finds its work
 * in the database (pictures and videos never read) and takes items handed to it by importers; it
 * also runs the one-time upgrades that bring an older library up to what it produces now.
 *
 * The queue lives on the service's own thread and is worked through one item after another;
 * every call here may come from any thread and only queues work. Results reach the surfaces
 * through the Store's throttled refresh; nothing here is shown as a job.
 */
class EnrichmentService : public QObject
{
    Q_OBJECT

public:
    /** `disabled` (the `--no-enrich` switch by default) makes every drain empty the queue unread. */
    explicit EnrichmentService(QObject *parent = nullptr);
    EnrichmentService(bool disabled, QObject *parent);
    ~EnrichmentService() override;

    /**
     * Sets what items are read with; call before the first item is queued. Left out, the classifier
     * names nothing and frames of videos and documents come from the thumbnail decoders.
     */
    void setHooks(EnrichmentHooks hooks);

    /**
     * The window's library: its database and root, and the Store asked to refresh after each item
     * (and to reload everything after the colour upgrade). The pending scan runs when the Store
     * says it is due and again whenever its counts change after that. Main thread.
     */
    void attachStore(Store *store);
    /** A library without a Store to refresh (headless commands). */
    void setDatabase(std::shared_ptr<DatabaseQueue> db, const QString &libraryRoot);

    /** Queues an item unless it is already waiting; starts the worker when it is idle. */
    void enqueue(const QString &itemId);
    /** Queues every picture and video never read, newest first. */
    void scanPending();
    /** Starts the one-time upgrades whose flags are not yet set (colours, untagged items, old tags). */
    void runBackfills();

    /** Items waiting or being read right now. */
    [[nodiscard]] int pendingCount() const { return m_pendingCount.load(); }

    /** The pending query: pictures and videos never read, newest first. */
    static const QString pendingQuery;
    /** The user-defaults flags of the one-time upgrades, set once each has run. */
    static constexpr QLatin1StringView coloursReextractedFlag{"coloursReextractedV2"};
    static constexpr QLatin1StringView autoTaggedAllFlag{"autoTaggedAllV1"};
    static constexpr QLatin1StringView autoTaggedLinksFlag{"autoTaggedLinksV2"};
    static constexpr QLatin1StringView acceptedAITagFlag{"acceptedAITagBackfill"};

Q_SIGNALS:
    /** The number of items waiting or being read changed; emitted on the worker thread. */
    void pendingCountChanged(int count);
    /** One item was handled; emitted on the worker thread. A Store attached refreshes on `read` and `linkTagged`. */
    void itemFinished(const QString &itemId, kivo::ItemEnricher::Outcome outcome);
    /** A pending scan found `found` items and queued them; emitted on the worker thread. */
    void scanFinished(int found);
    /** A pending scan could not read the database (logged); emitted on the worker thread. */
    void scanFailed(const QString &error);
    /** The queue ran empty. */
    void drained();
    /** A one-time upgrade ended and set its flag; emitted on the upgrade's thread. */
    void backfillFinished(const QString &flag);

private:
    /** Runs `work` on the worker thread, in order with every other call. */
    template <typename Work> void onWorker(Work &&work);
    /** Worker thread: appends unless waiting already; starts a drain when none is running. */
    void append(const QString &itemId);
    /** Worker thread: one item, then the next turn, so items queued meanwhile are seen. */
    void drainStep();
    void publishCount();

    // enrichmentbackfills.cpp
    void reextractColours();
    void queueUntagged(QLatin1StringView flag, const QString &sql);
    void acceptSuggestedTags();

    /** The current library and what its items are read with, taken together under the lock. */
    struct Library {
        std::shared_ptr<DatabaseQueue> db;
        QString root;
        EnrichmentHooks hooks;
    };
    [[nodiscard]] Library library() const;

    const bool m_disabled;
    QThread m_thread;
    QObject *m_context = nullptr; // lives on m_thread: the actor's executor
    QThreadPool m_vision;
    QThreadPool m_upgrades;
    std::atomic<bool> m_stopping = false;

    mutable std::mutex m_libraryMutex;
    Library m_library;
    QPointer<Store> m_store;
    bool m_scanDue = false; // main thread: the Store asked for the first scan

    // Worker-thread state.
    std::deque<QString> m_queue;
    QSet<QString> m_queued;
    bool m_isRunning = false;
    bool m_reading = false;
    std::atomic<int> m_pendingCount = 0;
};

} // namespace kivo

Q_DECLARE_METATYPE(kivo::ItemEnricher::Outcome)
