#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kivo {

/**
 * The switches of one run of the program, read once at process entry so that the Store, the
 * enrichment and the surfaces ask one value instead of each reading the argument list again.
 * Every switch is tested by plain membership; `--library` is read by LibraryLocation.
 */
struct LaunchOptions {
    bool runScheduledBackup = false; // --run-scheduled-backup: the window-less backup job
    bool onboarding = false;         // --onboarding: as if `pendingOnboarding` were set
    std::optional<int> onboardingStep; // --onboarding-step N
    bool checklist = false;          // --checklist: show the setup checklist
    bool mouseProbe = false;         // --mouse-probe: pointer events into the diagnostics
    bool churnTrace = false;         // --churn-trace: the Store's "[trace]" lines
    bool noEnrich = false;           // --no-enrich: the enrichment pipeline stays off
    bool viewOptions = false;        // --view-options: open the view options menu at start

    [[nodiscard]] static LaunchOptions parse(const QStringList &arguments);

    /** The options of this process; all off until process entry has set them. */
    [[nodiscard]] static const LaunchOptions &current();
    static void setCurrent(const LaunchOptions &options);
};

} // namespace kivo
