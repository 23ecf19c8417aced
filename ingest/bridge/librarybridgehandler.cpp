#include "ingest/bridge/librarybridgehandler.h"

#include "core/appsettings.h"
#include "core/database.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"
#include "ingest/bridge/hotkeytext.h"

#include <QLoggingCategory>
#include <QUrl>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcBridge, "kivo.ingest.bridge")

namespace kivo {

namespace {

const QString extensionHasClippedKey = u"extensionHasClipped"_s;

bool isUsableAddress(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.scheme().isEmpty();
}

} // namespace

LibraryBridgeHandler::LibraryBridgeHandler(AppSettings *settings, Store *store, QObject *parent)
    : BridgeHandler(parent)
    , m_settings(settings)
    , m_store(store)
    , m_extensionHasClipped(UserDefaults().boolValue(extensionHasClippedKey))
{
}

ClipperConfig LibraryBridgeHandler::clipperConfig()
{
    ClipperConfig config;
    if (!m_settings)
        return config;
    config.key = m_settings->clipperKey();
    config.shift = m_settings->clipperShift();
    config.alt = m_settings->clipperAlt();
    config.ctrl = m_settings->clipperCtrl();
    config.meta = m_settings->clipperMeta();
    config.optionHold = m_settings->clipperOptionHold();
    return config;
}

ShortcutSheet LibraryBridgeHandler::shortcuts()
{
    ShortcutSheet sheet;
    if (!m_settings)
        return sheet;
    const AppSettings &settings = *m_settings;
    sheet.clipper = HotkeyText::clipperText(settings.clipperKey(), settings.clipperCtrl(), settings.clipperAlt(),
        settings.clipperShift(), settings.clipperMeta());
    sheet.clipperOptionHold = settings.clipperOptionHold();
    sheet.screenshot = HotkeyText::text(settings.screenshotHotkeyKeyCode(), settings.screenshotHotkeyModifiers());
    sheet.launcher = HotkeyText::text(settings.launcherHotkeyKeyCode(), settings.launcherHotkeyModifiers());
    sheet.savePage = HotkeyText::text(settings.savePageHotkeyKeyCode(), settings.savePageHotkeyModifiers());
    sheet.shelf = HotkeyText::text(settings.shelfHotkeyKeyCode(), settings.shelfHotkeyModifiers());
    sheet.dropRingRequiresModifier = settings.dropRingRequireModifier();
    sheet.dropRingModifier
        = settings.dropRingRequireModifier() ? HotkeyText::dropRingGlyph(settings.dropRingModifier()) : QString();
    sheet.dropRingBrowsersOnly = settings.dropRingBrowsersOnly();
    return sheet;
}

QList<CollectionSummary> LibraryBridgeHandler::collections()
{
    if (!libraryOpen())
        return {};
    try {
        return m_store->dbQueue()->read([](Database &db) {
            QList<CollectionSummary> collections;
            db.forEach(u"SELECT c.id AS id, c.name AS name,\n       COUNT(ic.itemId) AS n, MAX(ic.addedAt) AS lastAdd\n"
                       "FROM collection c\nLEFT JOIN itemCollection ic ON ic.collectionId = c.id\n"
                       "WHERE c.deletedAt IS NULL AND c.isInbox = 0\nGROUP BY c.id\n"
                       "ORDER BY lastAdd DESC NULLS LAST, c.name ASC"_s,
                {}, [&](const Row &row) {
                    collections.append({row.text("id"), row.text("name"), row.integer("n")});
                });
            return collections;
        });
    } catch (const std::exception &error) {
        // The extension then offers the inbox only; nothing to tell the user.
        qCWarning(lcBridge) << "collections could not be read:" << errorText(error);
        return {};
    }
}

void LibraryBridgeHandler::clipStatePolled()
{
    noteExtensionHeard();
}

void LibraryBridgeHandler::clipReceived(const ClipRequest &clip)
{
    noteExtensionHeard();
    if (!libraryOpen()) {
        qCInfo(lcBridge) << "no library open; the clip is dropped";
        return;
    }
    Q_EMIT clipArrived(clip);
}

void LibraryBridgeHandler::clipSessionEnded()
{
    Q_EMIT clipSessionEndRequested();
}

void LibraryBridgeHandler::xBookmarksReceived(const QList<XBookmark> &bookmarks)
{
    if (bookmarks.isEmpty() || !m_settings || !m_settings->xBookmarkSyncEnabled() || !libraryOpen())
        return;
    Q_EMIT xBookmarksArrived(bookmarks);
}

void LibraryBridgeHandler::captureReceived(const CaptureRequest &capture)
{
    if (!libraryOpen())
        return;
    const bool actionable = capture.type == u"selection"_s
        ? !capture.text.isEmpty()
        : (capture.type == u"image"_s || capture.type == u"link"_s || capture.type == u"page"_s)
            && isUsableAddress(capture.url);
    if (actionable)
        Q_EMIT captureArrived(capture);
}

bool LibraryBridgeHandler::libraryOpen() const
{
    return m_store && m_store->dbQueue();
}

void LibraryBridgeHandler::noteExtensionHeard()
{
    if (m_extensionHasClipped)
        return;
    m_extensionHasClipped = true;
    UserDefaults defaults;
    defaults.setValue(extensionHasClippedKey, true);
    defaults.sync();
    Q_EMIT extensionHasClippedChanged();
}

} // namespace kivo
