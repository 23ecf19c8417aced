#include "surfaces/qmlservices.h"

#include "core/appsettings.h"
#include "core/store.h"
#include "surfaces/import/importcontroller.h"
#include "surfaces/enrichment/enrichmentprogress.h"
#include "surfaces/theme/appearancecontroller.h"

#include <QJSEngine>
#include <QPointer>
#include <QQmlEngine>

namespace kivo::QmlServices {

namespace {

constexpr const char *uri = "Kivo.Services";

/** Registers `name` the first time and from then on only swaps the object that engines receive. */
template<typename Service>
void publish(const char *name, Service *service)
{
    static QPointer<Service> current;
    static bool registered = false;
    current = service;
    if (registered)
        return;
    registered = true;
    qmlRegisterSingletonType<Service>(uri, 1, 0, name, [](QQmlEngine *, QJSEngine *) -> Service * {
        Service *object = current.data();
        // The application owns its services; an engine going away must not delete them.
        if (object)
            QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
        return object;
    });
}

} // namespace

void prepareEngine(QQmlEngine &engine)
{
    engine.addImportPath(QStringLiteral("qrc:/"));
}

void publishStore(Store *store)
{
    publish("Store", store);
}

void publishAppearance(AppearanceController *appearance)
{
    publish("Appearance", appearance);
}

void publishSettings(AppSettings *settings)
{
    publish("AppSettings", settings);
}

void publishImporter(ImportController *importer)
{
    publish("Importer", importer);
}

void publishEnrichmentProgress(EnrichmentProgress *progress)
{
    publish("EnrichmentProgress", progress);
}

} // namespace kivo::QmlServices
