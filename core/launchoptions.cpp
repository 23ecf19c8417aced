#include "core/launchoptions.h"

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

LaunchOptions &processOptions()
{
    static LaunchOptions options;
    return options;
}

} // namespace

LaunchOptions LaunchOptions::parse(const QStringList &arguments)
{
    LaunchOptions options;
    options.runScheduledBackup = arguments.contains(u"--run-scheduled-backup"_s);
    options.onboarding = arguments.contains(u"--onboarding"_s);
    options.checklist = arguments.contains(u"--checklist"_s);
    options.mouseProbe = arguments.contains(u"--mouse-probe"_s);
    options.churnTrace = arguments.contains(u"--churn-trace"_s);
    options.noEnrich = arguments.contains(u"--no-enrich"_s);
    options.viewOptions = arguments.contains(u"--view-options"_s);
    const qsizetype step = arguments.indexOf(u"--onboarding-step"_s);
    if (step >= 0 && step + 1 < arguments.size()) {
        bool ok = false;
        const int value = arguments.at(step + 1).toInt(&ok);
        if (ok && value >= 0)
            options.onboardingStep = value;
    }
    return options;
}

const LaunchOptions &LaunchOptions::current()
{
    return processOptions();
}

void LaunchOptions::setCurrent(const LaunchOptions &options)
{
    processOptions() = options;
}

} // namespace kivo
