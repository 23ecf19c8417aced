#pragma once

#include "ingest/bridge/bridgehandler.h"

#include <QPointer>

namespace kivo {

class AppSettings;
class Store;

/**
 * The bridge's handler in the running program: answers from the settings and the library
 * database, remembers that the extension is installed, and hands clips and captures on through
 * its signals to whatever files them (the capture flow). Without an open library, clips and
 * captures are acknowledged by the server and dropped here.
 */
class LibraryBridgeHandler : public BridgeHandler
{
    Q_OBJECT
    Q_PROPERTY(bool extensionHasClipped READ extensionHasClipped NOTIFY extensionHasClippedChanged)

public:
    /** `store` may be null: the bridge then runs as if no library were open. */
    LibraryBridgeHandler(AppSettings *settings, Store *store, QObject *parent = nullptr);

    [[nodiscard]] ClipperConfig clipperConfig() override;
    [[nodiscard]] ShortcutSheet shortcuts() override;
    [[nodiscard]] QList<CollectionSummary> collections() override;
    void clipStatePolled() override;
    void clipReceived(const ClipRequest &clip) override;
    void clipSessionEnded() override;
    void xBookmarksReceived(const QList<XBookmark> &bookmarks) override;
    void captureReceived(const CaptureRequest &capture) override;

    /** True once the extension has been heard from; kept as "extensionHasClipped" in the user defaults. */
    [[nodiscard]] bool extensionHasClipped() const { return m_extensionHasClipped; }

Q_SIGNALS:
    void extensionHasClippedChanged();
    /** A clip to file, with an open library. */
    void clipArrived(const kivo::ClipRequest &clip);
    /** A keyboard capture that names what it needs (an address, or text for a selection). */
    void captureArrived(const kivo::CaptureRequest &capture);
    /** The extension left clip mode: what is pending goes to the inbox. */
    void clipSessionEndRequested();
    /** Bookmarks to import, when syncing them is on and there are any. */
    void xBookmarksArrived(const QList<kivo::XBookmark> &bookmarks);

private:
    [[nodiscard]] bool libraryOpen() const;
    void noteExtensionHeard();

    QPointer<AppSettings> m_settings;
    QPointer<Store> m_store;
    bool m_extensionHasClipped = false;
};

} // namespace kivo
