#pragma once

#include "core/records.h"
#include "ingest/bridge/bridgemessages.h"
#include "ingest/capture/cliproute.h"

#include <QObject>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace kivo {

class AppSettings;
class CaptureCardHost;
class LibraryImporter;
class PendingClips;
class Store;

/**
 * What happens when the browser extension clips something: the route (saved at once, the capture
 * card, or the pending clips), then the import of the clip's items one after the other, then the
 * card's bind or the toast. Also the keyboard captures of the browser and the end of a clip
 * session. Lives on the main thread; only the downloads inside the imports run elsewhere.
 */
class CaptureFlow : public QObject
{
    Q_OBJECT

public:
    CaptureFlow(Store *store, AppSettings *settings, LibraryImporter *importer, PendingClips *pending,
        QObject *parent = nullptr);
    ~CaptureFlow() override;

    /** The card the card route presents; without one a single clip is saved as if aimed. */
    void setCardHost(CaptureCardHost *host) { m_cardHost = host; }
    /** Sets the bridge's clip session flag (read by the extension through `/clipstate`) under its lock. */
    void setClipSessionFlag(std::function<void(bool)> flag) { m_clipSessionFlag = std::move(flag); }

    /** The route a clip of these items takes with the current settings. */
    [[nodiscard]] ClipRoute routeFor(const ClipRequest &clip) const;

    /** The clip entry: `POST /clip`'s items, its inbox flag and collection id. */
    void clip(const ClipRequest &clip);
    /** The capture entry: `POST /capture`, one thing saved by a keyboard command in the browser. */
    void capture(const CaptureRequest &capture);
    /**
     * Ends the clip session (`POST /clipmode` with `active` false, or "Keep in Inbox"): what is
     * pending stays where it went, the inbox, with the toast "Kept in Inbox".
     */
    void endClipSession();
    /**
     * The pending clips' Return: with an empty query they are kept in the inbox (the end of the
     * session); otherwise filed into the collection of that name, made when there is none. While
     * some are still arriving the collection is remembered and the filing waits for them.
     */
    void filePending(const QString &query);

    /** Clips whose items are still being imported. */
    [[nodiscard]] int runningClips() const { return m_running; }

Q_SIGNALS:
    /** The pending clips want to be seen: the shelf (or the pending panel) opens on them. */
    void pendingShelfWanted();
    /** The clip session ended: a shelf opened for it closes. */
    void pendingShelfDismissed();
    /** A link was saved from a clip: its preview and snapshot are due. */
    void linkSnapshotWanted(const QString &itemId, const QUrl &address);
    /** A clip's last item has been imported and its ending (bind or toast) is done. */
    void clipFinished(kivo::ClipRoute route, const QStringList &savedItemIds);

private:
    struct Run;
    void importNext(const std::shared_ptr<Run> &run);
    void itemDone(const std::shared_ptr<Run> &run, const std::optional<LibraryItem> &item);
    void importAddress(const std::shared_ptr<Run> &run, const ClipItem &item);
    /** An address that could not be fetched is kept as a link, so nothing clipped is lost. */
    std::optional<LibraryItem> keepAsLink(const std::shared_ptr<Run> &run, const QUrl &address);
    /** Stores a video's poster frame as a picture; calls back with the item or nothing. */
    void importPosterFrame(const std::shared_ptr<Run> &run, const ClipItem &item,
        std::function<void(std::optional<LibraryItem>)> done);
    void finishRun(const std::shared_ptr<Run> &run);
    void fetchPreview(const QString &entryId, const QUrl &address);
    /** Files every pending clip into the collection, clears the list and ends the session. */
    void filePendingInto(const QString &collectionId);
    void writeTitle(const QString &itemId, const QString &title, const QUrl &address);
    void setSourceURL(const QString &itemId, const QString &sourceURL);

    QPointer<Store> m_store;
    QPointer<AppSettings> m_settings;
    QPointer<LibraryImporter> m_importer;
    QPointer<PendingClips> m_pending;
    CaptureCardHost *m_cardHost = nullptr;
    std::function<void(bool)> m_clipSessionFlag;
    bool m_shelfOpenedForClip = false;
    int m_running = 0;
};

} // namespace kivo
