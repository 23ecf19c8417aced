#include "app/lifecycle/appdelegate.h"

#include "app/lifecycle/analyticsclient.h"
#include "app/lifecycle/crashcapture.h"
#include "app/lifecycle/diagnostics.h"
#include "core/librarylocation.h"
#include "core/reorganiser.h"
#include "core/sidecars.h"
#include "core/store.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr int deferredStartMs = 3000;

} // namespace

AppDelegate::AppDelegate(const LaunchOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_heartbeat(Diagnostics::heartbeatPath())
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::didFinishLaunching(const QString &libraryRoot)
{
    startDiagnostics();
    startAnalytics();
    readGuidanceFlags();

    // The library's folders and layout, before the Store's first load reads any row.
    try {
        LibraryLocation::ensureLibrary();
    } catch (const std::exception &error) {
        systemLog(u"[Library] "_s + errorText(error));
    }
    Reorganiser::run(libraryRoot);

    m_memoryWatch.watchApplicationState();
    connect(&m_memoryWatch, &MemoryWatch::purged, this,
            [](const QString &reason) { Diagnostics::log(u"note: in-memory caches purged ("_s + reason + u')'); });

    if (m_options.mouseProbe)
        m_mouseProbe.arm();

    for (const Service &service : std::as_const(m_services)) {
        if (service.start)
            service.start();
    }
    QTimer::singleShot(deferredStartMs, this, [this] {
        for (const auto &start : std::as_const(m_deferredStarts))
            start();
    });
}

void AppDelegate::startDiagnostics()
{
    Diagnostics::start(QCoreApplication::applicationVersion(), QStringLiteral(KIVO_BUILD));
    CrashCapture::install();
    m_heartbeat.start();
}

void AppDelegate::startAnalytics()
{
    m_network = new QNetworkAccessManager(this);
    m_analytics = new AnalyticsClient(AnalyticsClient::configuredHost(), AnalyticsClient::configuredAppKey(), m_network, this);
    m_analytics->track(u"app_opened"_s);
}

void AppDelegate::readGuidanceFlags()
{
    const UserDefaults defaults;
    m_onboardingActive = defaults.boolValue(u"pendingOnboarding"_s) || m_options.onboarding;
    m_onboardingStep = m_options.onboardingStep.value_or(0);
    m_setupChecklistVisible = (defaults.boolValue(u"setupChecklistArmed"_s) && !defaults.boolValue(u"setupChecklistDone"_s))
        || m_options.checklist;
}

void AppDelegate::addService(const QString &name, std::function<void()> start, std::function<void()> stop)
{
    m_services.append({name, std::move(start), std::move(stop)});
}

void AppDelegate::addDeferredStart(std::function<void()> start)
{
    m_deferredStarts.append(std::move(start));
}

void AppDelegate::willTerminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    // Its absence before the next launch line is how a crash or a kill shows in the log.
    Diagnostics::log(Diagnostics::cleanTerminateLine());
    m_heartbeat.stop();

    for (auto service = m_services.crbegin(); service != m_services.crend(); ++service) {
        if (service->stop)
            service->stop();
    }

    const std::shared_ptr<DatabaseQueue> queue = m_store ? m_store->dbQueue() : nullptr;
    if (queue && LibraryLocation::isReorganised()) {
        try {
            Sidecars::refresh(*queue, m_store->libraryRoot());
        } catch (...) {
            // Nothing depends on the sidecars; the next quit or backup mends them.
        }
    }
}

} // namespace kivo
