#include "app/kivoapp.h"

#include "app/platform/desktopcolorscheme.h"
#include "app/platform/systemdesktop.h"
#include "core/librarylocation.h"
#include "core/librarylock.h"
#include "core/librarypresence.h"
#include "core/reorganiser.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "core/appsettings.h"
#include "ingest/bridge/bridgeservice.h"
#include "surfaces/gate/librarygate.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlEngine>
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
    // The window hides itself at the answer; that must not end the application.
    const bool quitOnClose = QGuiApplication::quitOnLastWindowClosed();
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QEventLoop waiting;
    QObject::connect(&gate, &LibraryGate::finished, &waiting, &QEventLoop::quit);
    waiting.exec();
    QGuiApplication::setQuitOnLastWindowClosed(quitOnClose);
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

} // namespace

int runApplication(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setOrganizationName(u"Kivo"_s);
    QGuiApplication::setApplicationName(u"Kivo"_s);
    QGuiApplication::setApplicationDisplayName(u"Kivo"_s);
    QGuiApplication::setApplicationVersion(QStringLiteral(KIVO_VERSION));
    QGuiApplication::setDesktopFileName(u"app.kivo.Kivo"_s);
    LibraryLocation::setArguments(QGuiApplication::arguments());

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
        std::fprintf(stderr, "kivo: %s\n", qPrintable(refusal));
        return 1;
    }
    Reorganiser::run(root);

    SystemDesktop desktop;
    Store store(&settings);
    store.setDesktop(&desktop);
    store.initialise();
    QmlServices::publishStore(&store);

    QQmlApplicationEngine engine;
    QmlServices::prepareEngine(engine);
    engine.load(QUrl(u"qrc:/Kivo/window/Main.qml"_s));
    if (engine.rootObjects().isEmpty())
        return 1;

    // The browser extension's bridge (127.0.0.1:17894): up after the window, down at quit.
    BridgeService bridge(settings, store);

    return QGuiApplication::exec();
}

} // namespace kivo
