#include "app/kivoapp.h"

#include "app/lifecycle/appdelegate.h"
#include "app/lifecycle/frameprobe.h"
#include "app/lifecycle/inputactivity.h"
#include "app/lifecycle/diagnostics.h"
#include "app/lifecycle/quitsignals.h"
#include "app/lifecycle/singleinstance.h"
#include "app/platform/desktopcolorscheme.h"
#include "app/platform/exposerepainter.h"
#include "app/platform/systemdesktop.h"
#include "app/platform/scenegraphbackend.h"
#include "app/platform/trayicon.h"
#include "core/appsettings.h"
#include "core/launchoptions.h"
#include "core/librarylocation.h"
#include "core/librarylock.h"
#include "core/librarypresence.h"
#include "core/media/thumbnailservice.h"
#include "core/memorycaches.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "ingest/bridge/bridgeservice.h"
#include "ingest/capture/captureflow.h"
#include "ingest/capture/pendingclips.h"
#include "ingest/import/libraryimporter.h"
#include "search/searchservice.h"
#include "surfaces/capture/capturepalette.h"
#include "surfaces/capture/pendingshelf.h"
#include "surfaces/enrichment/enrichmentprogress.h"
#include "surfaces/gate/librarygate.h"
#include "surfaces/import/importcontroller.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "surfaces/thumbnails/thumbnailprovider.h"
#include "understanding/enrichment/enrichmentservice.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QQmlEngine>
#include <QScopeGuard>
#include <QTimer>
#include <QWindow>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdio>
#include <optional>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** Shows the missing-library window and waits for the user's answer; nullopt if it cannot be shown. */
std::optional<LibraryGate::Outcome> askAboutMissingLibrary(const QString &root)
{
    LibraryGate gate(root);
    QQmlApplicationEngine engine;
    QmlServices::prepareEngine(engine);
    engine.setInitialProperties({{u"gate"_s, QVariant::fromValue(&gate)}});
    engine.load(QUrl(u"qrc:/Kivo/gate/GateWindow.qml"_s));
    if (engine.rootObjects().isEmpty())
        return std::nullopt;
    QEventLoop waiting;
    QObject::connect(&gate, &LibraryGate::finished, &waiting, &QEventLoop::quit);
    waiting.exec();
    hideWindowsBeforeTeardown();
    return gate.outcome();
}

/**
 * Settles where the library is before anything touches it. A library that was opened before and
 * is gone gets the gate, again after each relocation that still leaves it missing (a `--library`
 * override outranks the stored path), so no new database is ever made behind the user's back.
 * Returns the exit status when the start must end here.
 */
std::optional<int> settleLibraryPresence()
{
    while (LibraryPresence::check() == LibraryPresence::Verdict::missing) {
        const auto outcome = askAboutMissingLibrary(LibraryLocation::root());
        if (!outcome) {
            std::fprintf(stderr, "kivo: the library is missing and the window that asks about it could not be shown\n");
            return 1;
        }
        if (*outcome == LibraryGate::Outcome::Quit)
            return 0;
        if (*outcome == LibraryGate::Outcome::StartNew)
            break;
    }
    return std::nullopt;
}

/** Brings a window back from hidden or minimised and asks the window manager for the focus. */
void bringForward(QWindow *window)
{
    if (!window)
        return;
    if (window->windowStates() & Qt::WindowMinimized)
        window->setWindowStates(window->windowStates() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->requestActivate();
}

} // namespace

int runApplication(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(u"Kivo"_s);
    QApplication::setApplicationName(u"Kivo"_s);
    QApplication::setApplicationDisplayName(u"Kivo"_s);
    QApplication::setApplicationVersion(QStringLiteral(KIVO_VERSION));
    QApplication::setDesktopFileName(u"app.kivo.Kivo"_s);
    QApplication::setWindowIcon(QIcon(u":/icons/app.kivo.Kivo.svg"_s));
    // The shelf, the hotkeys and the bridge live on without a window; only a quit ends the program.
    QApplication::setQuitOnLastWindowClosed(false);
    LibraryLocation::setArguments(QApplication::arguments());
    {
        QElapsedTimer chosen;
        chosen.start();
        const QString backend = chooseSceneGraphBackend();
        systemLog(u"[Launch] drawing: "_s + backend + u" (chosen in "_s + QString::number(chosen.elapsed()) + u" ms)"_s);
    }
    ExposeRepainter exposeRepainter;
    if (ExposeRepainter::isNeeded())
        application.installEventFilter(&exposeRepainter);

    DesktopColorScheme desktopScheme;
    AppSettings settings;
    QmlServices::publishSettings(&settings);
    AppearanceController appearance;
    appearance.setAppearance(settings.appearance());
    QObject::connect(&settings, &AppSettings::appearanceChanged, &appearance,
                     [&] { appearance.setAppearance(settings.appearance()); });
    appearance.setDesktopPrefersDark(desktopScheme.prefersDark());
    QObject::connect(&desktopScheme, &DesktopColorScheme::prefersDarkChanged, &appearance,
                     [&] { appearance.setDesktopPrefersDark(desktopScheme.prefersDark()); });
    QmlServices::publishAppearance(&appearance);

    if (const std::optional<int> status = settleLibraryPresence())
        return *status;

    try {
        LibraryLocation::ensureLibrary();
    } catch (const std::exception &error) {
        systemLog(u"[Library] "_s + errorText(error));
    }
    const QString root = LibraryLocation::root();
    QString refusal;
    auto lock = LibraryLock::acquire(root, &refusal);
    if (!lock) {
        // Whoever holds the library shows its window, if it is a window at all; the answer is the same.
        SingleInstance::askToShow(root);
        std::fprintf(stderr, "kivo: %s\n", qPrintable(refusal));
        return 1;
    }

    // Listening and the quit signals come first: a second launch or a SIGTERM that arrives while the
    // window is still loading is answered as soon as the event loop runs.
    SingleInstance instance(root);
    if (!instance.listen())
        systemLog(u"[Launch] could not listen for other launches on "_s + SingleInstance::serverName(root));
    QuitSignals quitSignals;
    bool quitAsked = false;
    QObject::connect(&quitSignals, &QuitSignals::quitRequested, &application, [&quitAsked] {
        quitAsked = true;
        QCoreApplication::quit();
    });

    AppDelegate delegate(LaunchOptions::current());
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate, &AppDelegate::willTerminate);
    delegate.didFinishLaunching(root);

    SystemDesktop desktop;
    InputActivity input;
    Store store(&settings);
    store.setDesktop(&desktop);
    store.setCollectionCountsInBackground(true);
    store.setFirstRowsReadAhead(true);
    store.setMemorySettleGate([&input] { return input.quietFor(1500); });
    store.initialise();
    delegate.setStore(&store);
    QmlServices::publishStore(&store);
    SearchService search(store);

    // Background reading: the one-time upgrades now, the scan for unread items when the Store says
    // (3 seconds after the first load), and whatever importers hand over in between.
    EnrichmentService enrichment;
    enrichment.attachStore(&store);
    enrichment.runBackfills();
    EnrichmentProgress enrichmentProgress;
    QObject::connect(&enrichment, &EnrichmentService::pendingCountChanged, &enrichmentProgress,
        &EnrichmentProgress::setPendingCount);
    QmlServices::publishEnrichmentProgress(&enrichmentProgress);
    // Drops, pastes and the other ways in; what they add is handed on through the importer's
    // signals (enrichment, link snapshots, the capture card) to whoever listens.
    LibraryImporter importer(&store, &settings);
    ImportController imports(&importer);
    QObject::connect(&importer, &LibraryImporter::enrichmentWanted, &enrichment, &EnrichmentService::enqueue);
    QmlServices::publishImporter(&imports);

    QQmlApplicationEngine engine;
    QmlServices::prepareEngine(engine);
    // Cards ask for "image://thumb/<id>?<width>"; the decoded pictures go with the other caches
    // when the memory watch asks for memory back.
    auto thumbnails = std::make_shared<ThumbnailService>();
    engine.addImageProvider(u"thumb"_s,
                            new ThumbnailProvider(thumbnails, ThumbnailProvider::databaseResolver(store.dbQueue())));
    const int thumbnailCache = MemoryCaches::add(u"thumbnails"_s, [thumbnails] { thumbnails->purge(); });
    const auto forgetThumbnailCache = qScopeGuard([thumbnailCache] { MemoryCaches::remove(thumbnailCache); });
    // The library file's mapped pages are a cache as well; the first load leaves most of the file
    // mapped, so once it has settled they go back, and again at every purge. Trimming the heap
    // holds its lock for tens of milliseconds, so it waits, like every settle, for a pause in the
    // person's input rather than catching a scroll that has just begun.
    const int libraryPages = MemoryCaches::add(u"library file pages"_s, [&store] { store.giveBackMemory(); });
    const auto forgetLibraryPages = qScopeGuard([libraryPages] { MemoryCaches::remove(libraryPages); });
    QObject::connect(&store, &Store::didInitialLoadChanged, &store, [&store] { store.giveBackMemoryOnceSettled(); });
    engine.load(QUrl(u"qrc:/Kivo/window/Main.qml"_s));
    if (engine.rootObjects().isEmpty()) {
        delegate.willTerminate();
        return 1;
    }
    QWindow *mainWindow = qobject_cast<QWindow *>(engine.rootObjects().constFirst());
    FrameProbe::attachIfAsked(qobject_cast<QQuickWindow *>(mainWindow));
    const auto showMainWindow = [mainWindow] { bringForward(mainWindow); };
    QObject::connect(&instance, &SingleInstance::showRequested, &instance, [showMainWindow](qint64 pid) {
        showMainWindow();
        Diagnostics::log(u"note: window shown for another launch (pid %1)"_s.arg(pid));
    });

    // The browser extension's bridge (127.0.0.1:17894): up after the window, down at quit.
    BridgeService bridge(settings, store);

    // What the extension clips goes through the same importer to the capture card, the pending
    // clips or straight into the library.
    CapturePalette capturePalette(&store, &settings);
    capturePalette.setEngine(&engine);
    PendingClips pendingClips;
    CaptureFlow captureFlow(&store, &settings, &importer, &pendingClips);
    captureFlow.setCardHost(&capturePalette);
    QObject::connect(&importer, &LibraryImporter::captureCardWanted, &capturePalette,
                     [&capturePalette](const LibraryItem &item) { capturePalette.presentItem(item.id); });
    captureFlow.setClipSessionFlag([&bridge](bool active) { bridge.server().setClipSessionActive(active); });
    PendingShelf pendingShelf(&pendingClips, &store, &captureFlow);
    pendingShelf.setEngine(&engine);
    LibraryBridgeHandler &bridgeHandler = bridge.handler();
    QObject::connect(&bridgeHandler, &LibraryBridgeHandler::clipArrived, &captureFlow, &CaptureFlow::clip);
    QObject::connect(&bridgeHandler, &LibraryBridgeHandler::captureArrived, &captureFlow, &CaptureFlow::capture);
    QObject::connect(&bridgeHandler, &LibraryBridgeHandler::clipSessionEndRequested, &captureFlow,
                     &CaptureFlow::endClipSession);

    TrayIcon tray;
    QObject::connect(&tray, &TrayIcon::openRequested, &tray, showMainWindow);
    QObject::connect(&tray, &TrayIcon::quitRequested, &application, &QCoreApplication::quit);
    tray.show();

    if (quitAsked) { // a signal was handled by a nested loop before the main one started
        delegate.willTerminate();
        hideWindowsBeforeTeardown();
        return 0;
    }
    const int status = QApplication::exec();
    hideWindowsBeforeTeardown();
    return status;
}

} // namespace kivo
