#include "app/cli/command.h"

#include "app/demo/demogenerator.h"
#include "core/database.h"
#include "core/librarylocation.h"
#include "core/librarylock.h"
#include "core/librarypresence.h"
#include "core/reorganiser.h"
#include "core/systemlog.h"

#include <QCoreApplication>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/**
 * `kivo demo --library PATH --items N [--seed S] [--light]`: makes a library, or adds to one, with
 * N realistic items, for screenshots and for trying Kivo on a large library.
 */
class DemoCommand final : public Command
{
public:
    QString name() const override { return u"demo"_s; }
    QString synopsis() const override { return u"--items N [--seed S] [--light] [--threads T] [--now SECONDS]"_s; }
    QString summary() const override { return u"Make a library (or add to one) with N realistic demo items"_s; }
    bool needsGui() const override { return true; }

    int run(CommandContext &context) override
    {
        demo::DemoOptions options;
        bool itemsGiven = false;
        const QStringList &arguments = context.arguments;
        for (qsizetype i = 0; i < arguments.size(); ++i) {
            const QString &argument = arguments.at(i);
            const auto value = [&](qint64 least) -> std::optional<qint64> {
                bool ok = false;
                const qint64 number = i + 1 < arguments.size() ? arguments.at(i + 1).toLongLong(&ok) : 0;
                if (!ok || number < least)
                    return std::nullopt;
                ++i;
                return number;
            };
            if (argument == u"--items") {
                const auto items = value(0);
                if (!items)
                    return context.usageError(u"--items needs a number of items"_s);
                options.items = *items;
                itemsGiven = true;
            } else if (argument == u"--seed") {
                const auto seed = value(0);
                if (!seed)
                    return context.usageError(u"--seed needs a whole number"_s);
                options.seed = std::uint64_t(*seed);
            } else if (argument == u"--threads") {
                const auto threads = value(1);
                if (!threads)
                    return context.usageError(u"--threads needs a number of at least 1"_s);
                options.threads = int(*threads);
            } else if (argument == u"--now") {
                // The same seed and moment make the same library, for screenshots that can be redone.
                const auto now = value(1);
                if (!now)
                    return context.usageError(u"--now needs a time in seconds since 1970"_s);
                options.now = double(*now);
            } else if (argument == u"--light") {
                options.light = true;
            } else {
                return context.usageError(u"demo does not know '%1'"_s.arg(argument));
            }
        }
        if (!itemsGiven)
            return context.usageError(u"demo needs --items N"_s);

        // A demo library is made where it is asked for, never over the user's own by accident.
        const QString root = LibraryLocation::root();
        if (!LibraryLocation::commandLineOverride(QCoreApplication::arguments()))
            return context.usageError(u"demo needs --library PATH, the folder of the library to make or fill"_s);
        std::unique_ptr<LibraryLock> lock;
        std::shared_ptr<DatabaseQueue> queue;
        try {
            LibraryLocation::ensureLibrary();
            QString refusal;
            lock = LibraryLock::acquire(root, &refusal);
            if (!lock)
                return context.fail(refusal);
            if (!Reorganiser::run(root))
                return context.fail(u"the library at %1 could not be moved into the browsable layout"_s.arg(root));
            queue = DatabaseQueue::open(LibraryLocation::databasePath());
            LibraryPresence::markOpened();
        } catch (const std::exception &error) {
            return context.fail(u"cannot open the library at %1: %2"_s.arg(root, errorText(error)));
        }

        const auto progress = [&context](const QString &line) {
            if (!context.json)
                context.out << line << Qt::endl;
            else
                context.err << line << Qt::endl;
        };
        demo::DemoReport report;
        try {
            demo::DemoGenerator generator(*queue, root, options, progress);
            report = generator.run();
        } catch (const std::exception &error) {
            return context.fail(u"the demo stopped: %1"_s.arg(errorText(error)));
        }

        QJsonObject kinds;
        for (auto it = report.itemsByKind.cbegin(); it != report.itemsByKind.cend(); ++it)
            kinds.insert(it.key(), it.value());
        if (context.json) {
            context.printJson(QJsonObject{
                {u"root"_s, root},
                {u"items"_s, options.items},
                {u"kinds"_s, kinds},
                {u"files"_s, report.files},
                {u"bytes"_s, report.bytes},
                {u"picturesPainted"_s, report.picturesPainted},
                {u"collectionsMade"_s, report.collectionsMade},
                {u"seconds"_s, report.seconds},
            });
        } else {
            QStringList parts;
            for (const QString &kind : {u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s})
                parts.append(u"%1 %2"_s.arg(report.itemsByKind.value(kind)).arg(kind));
            context.out << u"Made %1 items in %2 (%3) with %4 files, from %5 painted pictures, in %6 s"_s.arg(options.items)
                               .arg(root, parts.join(u", "_s))
                               .arg(report.files)
                               .arg(report.picturesPainted)
                               .arg(report.seconds, 0, 'f', 1)
                        << Qt::endl
                        << u"Run 'kivo --library \"%1\" sidecars' to write the sidecars now."_s.arg(root) << Qt::endl;
        }
        return 0;
    }
};

} // namespace

Command *makeDemoCommand()
{
    return new DemoCommand;
}

} // namespace kivo::cli
