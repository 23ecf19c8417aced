#pragma once

#include "app/lifecycle/heartbeat.h"
#include "app/lifecycle/memorywatch.h"
#include "app/lifecycle/mouseprobe.h"
#include "core/launchoptions.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QNetworkAccessManager;

namespace kivo {

class AnalyticsClient;
class Store;

/**
 * The application's start and stop, in their order: diagnostics and crash capture, analytics,
 * the guidance flags, the library's layout, the memory watch and the probes at launch; the
 * terminate line, the services' stop and the sidecar refresh at a clean quit. Services that come
 * with later parts of the program hook their start and stop in here.
 */
class AppDelegate : public QObject
{
    Q_OBJECT
    /** Onboarding is to be shown: `pendingOnboarding` is set or `--onboarding` was given. */
    Q_PROPERTY(bool onboardingActive READ onboardingActive CONSTANT)
    /** The onboarding step to begin with (`--onboarding-step`), 0 otherwise. */
    Q_PROPERTY(int onboardingStep READ onboardingStep CONSTANT)
    /** The setup checklist is to be shown: armed and not done, or `--checklist`. */
    Q_PROPERTY(bool setupChecklistVisible READ setupChecklistVisible CONSTANT)

public:
    explicit AppDelegate(const LaunchOptions &options, QObject *parent = nullptr);
    ~AppDelegate() override;

    /** Everything between the settled library and the first window, on the main thread. */
    void didFinishLaunching(const QString &libraryRoot);
    /** The clean stop; runs once, however many times it is called. */
    void willTerminate();

    /** The Store whose database the sidecars are refreshed from at a clean quit. */
    void setStore(Store *store) { m_store = store; }

    /** A service's start, run at launch after everything else, and its stop, run at quit. */
    void addService(const QString &name, std::function<void()> start, std::function<void()> stop);
    /** Runs three seconds after launch: the surfaces that need not be there at once. */
    void addDeferredStart(std::function<void()> start);

    [[nodiscard]] bool onboardingActive() const { return m_onboardingActive; }
    [[nodiscard]] int onboardingStep() const { return m_onboardingStep; }
    [[nodiscard]] bool setupChecklistVisible() const { return m_setupChecklistVisible; }
    [[nodiscard]] MemoryWatch &memoryWatch() { return m_memoryWatch; }

private:
    struct Service {
        QString name;
        std::function<void()> start;
        std::function<void()> stop;
    };

    void startDiagnostics();
    void startAnalytics();
    void readGuidanceFlags();

    LaunchOptions m_options;
    Store *m_store = nullptr;
    bool m_terminated = false;
    bool m_onboardingActive = false;
    int m_onboardingStep = 0;
    bool m_setupChecklistVisible = false;
    Heartbeat m_heartbeat;
    MemoryWatch m_memoryWatch;
    MouseProbe m_mouseProbe;
    QNetworkAccessManager *m_network = nullptr;
    AnalyticsClient *m_analytics = nullptr;
    QList<Service> m_services;
    QList<std::function<void()>> m_deferredStarts;
};

} // namespace kivo
