#include "ingest/capture/captureflow.h"

#include "core/appsettings.h"
#include "core/backgroundpriority.h"
#include "core/database.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "ingest/capture/capturecardhost.h"
#include "ingest/capture/capturetrace.h"
#include "ingest/capture/clipitems.h"
#include "ingest/capture/pendingclips.h"
#include "ingest/import/importrules.h"
#include "ingest/import/importservice.h"
#include "ingest/import/libraryimporter.h"
#include "ingest/x/xbookmark.h"

#include <QBuffer>
#include <QFuture>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QtConcurrent>

using namespace Qt::StringLiterals;

namespace kivo {

/** One clip on its way in: its items, where they go, and what has come of them so far. */
struct CaptureFlow::Run {
    ClipRequest request;
    ClipRoute route = ClipRoute::direct;
    std::optional<QString> target;
    QStringList entryIds; // shelf route: the pending entry of each item
    int session = 0; // card route: the card's session
    qsizetype next = 0;
    QStringList saved;
};

namespace {

std::optional<QString> nonEmpty(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}

QString hostOrUnknown(const QUrl &url)
{
    return url.host().isEmpty() ? u"?"_s : url.host();
}

} // namespace

CaptureFlow::CaptureFlow(
    Store *store, AppSettings *settings, LibraryImporter *importer, PendingClips *pending, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_settings(settings)
    , m_importer(importer)
    , m_pending(pending)
{
}

CaptureFlow::~CaptureFlow() = default;

ClipRoute CaptureFlow::routeFor(const ClipRequest &clip) const
{
    const bool explicitTarget = clip.toInbox || clip.collectionId.has_value();
    const bool cardEnabled = m_settings ? m_settings->captureCardEnabled() : true;
    const bool shelfEnabled = m_settings ? m_settings->shelfEnabled() : false;
    return clipRoute(clip.items.size(), explicitTarget, cardEnabled, shelfEnabled);
}

void CaptureFlow::clip(const ClipRequest &clip)
{
    if (!m_store || !m_store->dbQueue() || !m_importer || clip.items.isEmpty())
        return;
    CaptureTrace::begin(u"clip received ("_s + QString::number(clip.items.size()) + u" item(s))"_s);

    auto run = std::make_shared<Run>();
    run->request = clip;
    run->route = routeFor(clip);
    if (run->route == ClipRoute::card && !m_cardHost)
        run->route = ClipRoute::direct;
    // The explicit target, or else the inbox; a collection that is gone counts as none.
    if (clip.collectionId && m_store->collectionById(*clip.collectionId))
        run->target = clip.collectionId;
    else
        run->target = m_store->inboxId();

    if (run->route == ClipRoute::shelf && m_pending) {
        QList<ClipEntry> entries;
        for (const ClipItem &item : clip.items) {
            ClipEntry entry{newIdentifier(), std::nullopt, ClipItems::decodeDataImage(item.preview),
                ClipItems::linkContext(item)};
            run->entryIds.append(entry.id);
            entries.append(entry);
            if (entry.preview.isNull() && ClipItems::isWebAddress(item.displaySrc))
                fetchPreview(entry.id, QUrl(item.displaySrc));
        }
        m_pending->append(entries);
        if (m_clipSessionFlag)
            m_clipSessionFlag(true);
        m_shelfOpenedForClip = true;
        Q_EMIT pendingShelfWanted();
    } else if (run->route == ClipRoute::card) {
        const ClipItem &first = clip.items.constFirst();
        run->session = m_cardHost->present(
            ClipItems::draftItem(first), ClipItems::decodeDataImage(first.preview), false);
        CaptureTrace::mark(u"CARD ON SCREEN (draft)"_s);
    }
    ++m_running;
    importNext(run);
}

void CaptureFlow::importNext(const std::shared_ptr<Run> &run)
{
    if (run->next >= run->request.items.size()) {
        finishRun(run);
        return;
    }
    const ClipItem item = run->request.items.at(run->next);
    const std::optional<ImportContext> context = m_importer ? m_importer->context() : std::nullopt;
    if (!context) {
        itemDone(run, std::nullopt);
        return;
    }

    if (item.type == u"image" || item.type == u"video" || item.type == u"link" || item.type == u"page") {
        if (!ClipItems::parsedAddress(item.url)) {
            itemDone(run, std::nullopt);
            return;
        }
        bool onX = false;
        for (const QString &candidate : {item.url, item.sourceURL}) {
            if (const std::optional<QUrl> url = ClipItems::parsedAddress(candidate))
                onX = onX || XPosts::postId(*url).has_value();
        }
        // A video that is not on X and came with its poster frame keeps the frame: the video
        // itself is rarely a file that can be fetched.
        if (!onX && item.type == u"video" && !ClipItems::decodeDataImage(item.posterFrame).isNull()) {
            importPosterFrame(run, item, [this, run, item](std::optional<LibraryItem> stored) {
                if (stored)
                    itemDone(run, stored);
                else
                    importAddress(run, item);
            });
            return;
        }
        importAddress(run, item);
        return;
    }

    if (item.type == u"selection" || item.type == u"text") {
        if (item.text.isEmpty()) {
            itemDone(run, std::nullopt);
            return;
        }
        try {
            itemDone(run, ImportService::insertText(*context, item.text, std::nullopt, run->target));
        } catch (const std::exception &error) {
            systemLog(u"[Store] importText failed: "_s + errorText(error));
            itemDone(run, std::nullopt);
        }
        return;
    }
    itemDone(run, std::nullopt); // a type this version does not know
}

void CaptureFlow::importAddress(const std::shared_ptr<Run> &run, const ClipItem &item)
{
    const std::optional<ImportContext> context = m_importer ? m_importer->context() : std::nullopt;
    if (!context) {
        itemDone(run, std::nullopt);
        return;
    }
    RemoteRequest request;
    request.address = QUrl(item.url);
    request.pageAddress = ClipItems::parsedAddress(item.sourceURL);
    request.target = run->target;
    CaptureTrace::mark(u"bridge -> import starts"_s);
    QFuture<RemoteResult> future
        = ImportService::importRemote(m_importer->networkAccessManager(), *context, request);
    future
        .then(this,
            [this, run, item](const RemoteResult &result) {
                CaptureTrace::mark(u"importRemoteURL (X resolve + media download + insert)"_s);
                LibraryItem stored = result.item;
                if (result.kind == RemoteResult::Kind::media) {
                    if (ImportRules::isJunkTitle(stored.title) && !item.title.isEmpty()) {
                        if (const std::optional<QString> title
                            = ImportRules::linkTitle(item.title, QUrl(ClipItems::pageAddress(item)))) {
                            writeTitle(stored.id, *title, QUrl(item.url));
                            stored.title = title;
                        }
                    }
                    if (m_importer)
                        m_importer->requestEnrichment(stored);
                    itemDone(run, stored);
                    return;
                }
                if (item.type == u"video" && !ClipItems::decodeDataImage(item.posterFrame).isNull()) {
                    // The page stays as a link; its frame is kept beside it as a picture.
                    importPosterFrame(run, item, [this, run, stored](const std::optional<LibraryItem> &) {
                        itemDone(run, stored);
                    });
                    return;
                }
                if (!item.title.isEmpty()) {
                    writeTitle(stored.id, item.title, QUrl(item.url));
                    stored.title = item.title;
                }
                Q_EMIT linkSnapshotWanted(stored.id, QUrl(stored.sourceURL.value_or(item.url)));
                itemDone(run, stored);
            })
        .onFailed(this, [this, run, item](const std::exception &error) {
            CaptureTrace::mark(u"importRemoteURL (X resolve + media download + insert)"_s);
            systemLog(u"[Store] importRemote failed for "_s + hostOrUnknown(QUrl(item.url)) + u": "_s
                + errorText(error));
            itemDone(run, keepAsLink(run, QUrl(item.url)));
        });
}

std::optional<LibraryItem> CaptureFlow::keepAsLink(const std::shared_ptr<Run> &run, const QUrl &address)
{
    // Written without a reload: a card deciding on this clip must hide the link before the grid
    // can show it, and the run reloads once at its end.
    const std::optional<ImportContext> context = m_importer ? m_importer->context() : std::nullopt;
    if (!context)
        return std::nullopt;
    try {
        LibraryItem link = ImportService::insertLink(*context, address, std::nullopt, run->target);
        Q_EMIT linkSnapshotWanted(link.id, address);
        Q_EMIT m_importer->enrichmentWanted(link.id);
        return link;
    } catch (const std::exception &error) {
        systemLog(u"[Store] importLink failed: "_s + errorText(error));
        return std::nullopt;
    }
}

void CaptureFlow::importPosterFrame(
    const std::shared_ptr<Run> &run, const ClipItem &item, std::function<void(std::optional<LibraryItem>)> done)
{
    const std::optional<ImportContext> context = m_importer ? m_importer->context() : std::nullopt;
    if (!context) {
        done(std::nullopt);
        return;
    }
    const QString address = item.posterFrame;
    const std::optional<QString> title = item.title.isEmpty() ? u"Video"_s : item.title;
    const std::optional<QString> target = run->target;
    // Decoding and storing the frame reads and hashes bytes: a worker's job.
    QFuture<ImportedItem> future = QtConcurrent::run([context = *context, address, title, target] {
        lowerCurrentThreadPriority();
        const qsizetype comma = address.indexOf(u',');
        const QByteArray bytes = QByteArray::fromBase64(address.sliced(comma + 1).toLatin1());
        return ImportService::importImageData(context, bytes, title, target);
    });
    future
        .then(this,
            [this, item, done](const ImportedItem &imported) {
                LibraryItem stored = imported.item;
                if (!item.sourceURL.isEmpty()) {
                    setSourceURL(stored.id, item.sourceURL);
                    stored.sourceURL = item.sourceURL;
                }
                if (m_importer)
                    m_importer->requestEnrichment(stored);
                done(stored);
            })
        .onFailed(this, [done](const std::exception &error) {
            systemLog(u"[Store] importImageData failed: "_s + errorText(error));
            done(std::nullopt);
        });
}

void CaptureFlow::itemDone(const std::shared_ptr<Run> &run, const std::optional<LibraryItem> &item)
{
    if (item)
        run->saved.append(item->id);
    if (run->route == ClipRoute::shelf && m_pending && run->next < run->entryIds.size()) {
        const QString &entryId = run->entryIds.at(run->next);
        if (item)
            m_pending->setItemId(entryId, item->id);
        else
            m_pending->removeEntry(entryId);
    }
    if (run->route == ClipRoute::card && item && run->saved.size() == 1 && m_cardHost)
        m_cardHost->noteSavedItem(item->id, run->session);
    ++run->next;
    importNext(run);
}

void CaptureFlow::finishRun(const std::shared_ptr<Run> &run)
{
    --m_running;
    if (m_store) {
        m_store->reloadAll();
        CaptureTrace::mark(u"reloadAll"_s);
    }
    const qsizetype count = run->saved.size();
    const auto announce = [&](const QString &name) {
        if (!m_store || count == 0)
            return;
        m_store->showToast(count == 1 ? u"Saved to "_s + name
                                      : u"Saved "_s + QString::number(count) + u" to "_s + name);
    };
    if (run->route == ClipRoute::card) {
        if (m_cardHost)
            m_cardHost->bind(count > 0 ? std::optional<QString>(run->saved.constFirst()) : std::nullopt, run->session);
        CaptureTrace::mark(u"item bound to the card"_s);
    } else if (run->request.collectionId && m_store
        && m_store->collectionById(*run->request.collectionId)) {
        announce(m_store->collectionById(*run->request.collectionId)->name);
    } else if (run->request.toInbox || run->route != ClipRoute::shelf) {
        announce(u"Inbox"_s);
    } else if (m_pending && m_pending->deferredFileTarget() && m_running == 0) {
        // The user chose a collection while this clip was still arriving.
        filePendingInto(*m_pending->deferredFileTarget());
    }
    CaptureTrace::clear();
    Q_EMIT clipFinished(run->route, run->saved);
}

void CaptureFlow::capture(const CaptureRequest &capture)
{
    if (!m_store || !m_store->dbQueue() || !m_importer)
        return;
    const std::optional<QString> target = m_importer->destination();
    const std::optional<QUrl> address = ClipItems::parsedAddress(capture.url);
    if (capture.type == u"image" && address) {
        m_importer->importRemote(*address, ClipItems::parsedAddress(capture.sourceURL), nonEmpty(capture.title), target);
    } else if ((capture.type == u"link" || capture.type == u"page") && address) {
        m_importer->importLink(*address, nonEmpty(capture.title), target);
    } else if (capture.type == u"selection" && !capture.text.isEmpty()) {
        m_importer->importText(capture.text, std::nullopt, target);
    }
}

void CaptureFlow::endClipSession()
{
    if (m_pending && !m_pending->isEmpty()) {
        m_pending->clear();
        if (m_store)
            m_store->showToast(u"Kept in Inbox"_s);
    }
    if (m_shelfOpenedForClip) {
        m_shelfOpenedForClip = false;
        if (m_clipSessionFlag)
            m_clipSessionFlag(false);
        Q_EMIT pendingShelfDismissed();
    }
}

void CaptureFlow::filePending(const QString &query)
{
    const QString name = query.trimmed();
    if (name.isEmpty() || !m_store || !m_pending) {
        endClipSession();
        return;
    }
    QString collectionId;
    for (const LibraryCollection &collection : m_store->collections()) {
        if (!collection.isInbox && collection.name.compare(name, Qt::CaseInsensitive) == 0) {
            collectionId = collection.id;
            break;
        }
    }
    if (collectionId.isEmpty())
        collectionId = m_store->createCollection(name);
    if (collectionId.isEmpty())
        return; // logged by the Store
    if (m_running > 0 && m_pending->itemIds().size() < m_pending->count()) {
        m_pending->setDeferredFileTarget(collectionId);
        return;
    }
    filePendingInto(collectionId);
}

void CaptureFlow::filePendingInto(const QString &collectionId)
{
    const QStringList ids = m_pending->itemIds();
    const std::optional<LibraryCollection> collection = m_store->collectionById(collectionId);
    if (!ids.isEmpty() && collection && m_store->fileItems(ids, collectionId)) {
        m_store->showToast(ids.size() == 1 ? u"Saved to "_s + collection->name
                                           : u"Saved "_s + QString::number(ids.size()) + u" to "_s + collection->name);
    }
    m_pending->clear();
    endClipSession();
}

void CaptureFlow::fetchPreview(const QString &entryId, const QUrl &address)
{
    if (!m_importer)
        return;
    QNetworkRequest request(address);
    request.setTransferTimeout(10'000);
    QNetworkReply *reply = m_importer->networkAccessManager()->get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply, entryId] {
        reply->deleteLater();
        if (reply->error() != QNetworkReply::NoError || !m_pending)
            return;
        QImage image;
        if (image.loadFromData(reply->readAll()))
            m_pending->setPreview(entryId, image.scaled(480, 480, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    });
}

void CaptureFlow::writeTitle(const QString &itemId, const QString &title, const QUrl &address)
{
    if (!m_store || !m_store->dbQueue())
        return;
    try {
        m_store->dbQueue()->write(
            [&](Database &db) { db.execute(u"UPDATE item SET title = ? WHERE id = ?"_s, {title, itemId}); });
    } catch (const std::exception &error) {
        systemLog(u"[Store] importRemote failed for "_s + hostOrUnknown(address) + u": "_s + errorText(error));
    }
}

void CaptureFlow::setSourceURL(const QString &itemId, const QString &sourceURL)
{
    if (!m_store || !m_store->dbQueue())
        return;
    try {
        m_store->dbQueue()->write(
            [&](Database &db) { db.execute(u"UPDATE item SET sourceURL = ? WHERE id = ?"_s, {sourceURL, itemId}); });
    } catch (const std::exception &error) {
        systemLog(u"[Store] importImageData failed: "_s + errorText(error));
    }
}

} // namespace kivo
