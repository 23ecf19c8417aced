#pragma once

#include "ingest/bridge/bridgemessages.h"
#include "ingest/x/xbookmark.h"

#include <QList>
#include <QObject>

namespace kivo {

/**
 * What the bridge asks of the rest of the application. The server parses and answers on its own
 * thread; every call here arrives later, queued to the handler's thread with values only, so a
 * slow handler never delays an answer that does not need it. The three getters feed the answers
 * that carry the application's data; the rest are hand-overs after "ok" has gone out.
 */
class BridgeHandler : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~BridgeHandler() override;

    /** The extension's clipping hotkey (`GET /clipperconfig`). */
    [[nodiscard]] virtual ClipperConfig clipperConfig() = 0;
    /** Kivo's shortcuts as text (`GET /shortcuts`). */
    [[nodiscard]] virtual ShortcutSheet shortcuts() = 0;
    /** Collections to file into, recently used first (`GET /collections`); empty without a library. */
    [[nodiscard]] virtual QList<CollectionSummary> collections() = 0;

    /** The extension asked for the clip state: it is installed (`GET /clipstate`). */
    virtual void clipStatePolled() = 0;
    /** A clip arrived and was acknowledged (`POST /clip`). */
    virtual void clipReceived(const ClipRequest &clip) = 0;
    /** The extension left clip mode (`POST /clipmode` with `active` false). */
    virtual void clipSessionEnded() = 0;
    /** Bookmarks read on X arrived; the list may be empty (`POST /xbookmarks`). */
    virtual void xBookmarksReceived(const QList<XBookmark> &bookmarks) = 0;
    /** A keyboard capture arrived (`POST /capture`). */
    virtual void captureReceived(const CaptureRequest &capture) = 0;
};

} // namespace kivo
