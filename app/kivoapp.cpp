#include "app/kivoapp.h"

#include "core/librarylocation.h"
#include "core/librarylock.h"
#include "core/librarypresence.h"
#include "core/reorganiser.h"
#include "core/store.h"
#include "core/systemlog.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlEngine>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdio>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;

namespace kivo {

int runApplication(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setOrganizationName(u"Kivo"_s);
    QGuiApplication::setApplicationName(u"Kivo"_s);
    QGuiApplication::setApplicationDisplayName(u"Kivo"_s);
    QGuiApplication::setApplicationVersion(QStringLiteral(KIVO_VERSION));
    QGuiApplication::setDesktopFileName(u"app.kivo.Kivo"_s);
    LibraryLocation::setArguments(QGuiApplication::arguments());

    // ### Until the missing-library alert exists, a missing library only stops the folders from
    // being made; the Store then refuses to open it and says why.
    if (LibraryPresence::check() != LibraryPresence::Verdict::missing) {
        try {
            LibraryLocation::ensureLibrary();
        } catch (const std::exception &error) {
            systemLog(u"[Library] "_s + errorText(error));
        }
    }
    const QString root = LibraryLocation::root();
    QString refusal;
    auto lock = LibraryLock::acquire(root, &refusal);
    if (!lock) {
        std::fprintf(stderr, "kivo: %s\n", qPrintable(refusal));
        return 1;
    }
    Reorganiser::run(root);

    Store store;
    store.initialise();

    QQmlApplicationEngine engine;
    engine.addImportPath(u"qrc:/"_s);
    qmlRegisterSingletonInstance("Kivo.Services", 1, 0, "Store", &store);
    engine.load(QUrl(u"qrc:/Kivo/window/Main.qml"_s));
    if (engine.rootObjects().isEmpty())
        return 1;
    return QGuiApplication::exec();
}

} // namespace kivo
