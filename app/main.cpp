// The one entry of the `kivo` binary: with a command it works headless on the library and
// prints text or JSON; with none it opens the application.

#include "app/cli/command.h"
#include "app/kivoapp.h"
#include "app/lifecycle/scheduledbackupjob.h"
#include "core/heaptrim.h"
#include "core/launchoptions.h"
#include "core/librarylocation.h"
#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTextStream>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Switches that take the next argument as their value, so it is not read as a command.
const QStringList switchesWithValue{u"--library"_s, u"--onboarding-step"_s};

struct CommandLine {
    QString command;
    QStringList commandArguments;
    bool json = false;
    bool help = false;
    bool version = false;
};

CommandLine parse(const QStringList &arguments)
{
    CommandLine line;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (switchesWithValue.contains(argument)) {
            // Like the library override, a following switch is not taken as the value.
            if (i + 1 < arguments.size() && !arguments.at(i + 1).startsWith(u'-'))
                ++i;
            continue;
        }
        if (argument == u"--json") {
            line.json = true;
        } else if (argument == u"--help" || argument == u"-h") {
            line.help = true;
        } else if (argument == u"--version") {
            line.version = true;
        } else if (line.command.isEmpty() && !argument.startsWith(u'-')) {
            line.command = argument;
        } else if (!line.command.isEmpty()) {
            line.commandArguments.append(argument);
        }
    }
    return line;
}

void printHelp(QTextStream &out)
{
    out << u"Usage: kivo [--library PATH] [COMMAND] [ARGUMENTS] [--json]\n\n"
           "With no command, Kivo opens its window on the library.\n\n"
           "Commands:\n"_s;
    for (const kivo::cli::Command *command : kivo::cli::allCommands()) {
        QString head = u"  "_s + command->name();
        if (!command->synopsis().isEmpty())
            head += u' ' + command->synopsis();
        out << head.leftJustified(44) << u' ' << command->summary() << u'\n';
    }
    out << u"\nOptions:\n"
           "  --library PATH                               use the library folder at PATH\n"
           "  --json                                       print results as JSON\n"
           "  --help                                       show this help\n"
           "  --version                                    show the version\n\n"
           "Application switches: --no-enrich, --churn-trace, --onboarding, --onboarding-step N,\n"
           "--checklist, --mouse-probe, --view-options; --run-scheduled-backup runs the backup job\n"
           "without a window.\n"_s;
    out.flush();
}

// Scroll bars that appear while scrolling, as the interface is drawn for them; a choice the user
// made by hand is kept.
void ensureAutomaticScrollBars()
{
    kivo::UserDefaults defaults;
    if (defaults.stringValue(u"AppleShowScrollBars"_s) != u"Automatic")
        defaults.setValue(u"AppleShowScrollBars"_s, u"Automatic"_s);
}

kivo::cli::Command *findCommand(const QString &name)
{
    for (kivo::cli::Command *command : kivo::cli::allCommands()) {
        if (command->name() == name)
            return command;
    }
    return nullptr;
}

} // namespace

int main(int argc, char **argv)
{
    kivo::tuneHeapForLargeLists();

    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    kivo::LaunchOptions::setCurrent(kivo::LaunchOptions::parse(arguments));
    kivo::UserDefaults::clearAbandonedLock();
    ensureAutomaticScrollBars();

    if (kivo::LaunchOptions::current().runScheduledBackup)
        return kivo::ScheduledBackupJob::run(argc, argv);

    const CommandLine line = parse(arguments);
    if (line.command.isEmpty() && !line.help && !line.version)
        return kivo::runApplication(argc, argv);

    kivo::cli::Command *command = findCommand(line.command);
    std::unique_ptr<QCoreApplication> application;
    if (command && command->needsGui() && !line.help) {
        // Painting needs a GUI application, never a window: the off-screen platform serves anywhere.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setOrganizationName(u"Kivo"_s);
    QCoreApplication::setApplicationName(u"Kivo"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(KIVO_VERSION));
    kivo::LibraryLocation::setArguments(arguments);

    QTextStream out(stdout);
    QTextStream err(stderr);
    if (line.version) {
        out << u"kivo "_s << QCoreApplication::applicationVersion() << Qt::endl;
        return 0;
    }
    if (line.help && line.command.isEmpty()) {
        printHelp(out);
        return 0;
    }
    if (command) {
        if (line.help) {
            out << u"Usage: kivo "_s << command->name() << u' ' << command->synopsis() << u"\n  "_s
                << command->summary() << Qt::endl;
            return 0;
        }
        kivo::cli::CommandContext context{line.commandArguments, line.json, out, err};
        return command->run(context);
    }
    err << u"kivo: unknown command '%1'; run 'kivo --help' for the list"_s.arg(line.command) << Qt::endl;
    return 2;
}
