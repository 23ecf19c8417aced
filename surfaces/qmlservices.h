#pragma once

class QQmlEngine;

namespace kivo {

class AppSettings;
class AppearanceController;
class ImportController;
class EnrichmentProgress;
class Store;

/**
 * The one place where the application's long-lived objects become QML singletons under
 * "Kivo.Services". Each name is registered once per process; publishing again hands the next
 * engine the new object, which lets tests start several windows on different libraries.
 */
namespace QmlServices {

/** Lets an engine find the Kivo module, which lives in the resources at ":/Kivo". */
void prepareEngine(QQmlEngine &engine);

void publishStore(Store *store);
void publishAppearance(AppearanceController *appearance);
void publishSettings(AppSettings *settings);
/** Drops and pastes into the library, and the progress of imports, as "Importer". */
void publishImporter(ImportController *importer);
void publishEnrichmentProgress(EnrichmentProgress *progress);

} // namespace QmlServices
} // namespace kivo
