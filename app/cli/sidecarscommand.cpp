#include "app/cli/command.h"
#include "app/cli/headlesslibrary.h"

#include "core/librarylocation.h"
#include "core/sidecars.h"
#include "core/systemlog.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QSet>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** What a refresh left on disk: the sidecars and the folders they are in. */
struct SidecarCount {
    qint64 files = 0;
    qint64 folders = 0;
};

SidecarCount countSidecars(const QString &items)
{
    SidecarCount count;
    QSet<QString> folders;
    QDirIterator walk(items, {u"*.kivo.json"_s}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        ++count.files;
        folders.insert(walk.fileInfo().path());
    }
    count.folders = folders.size();
    return count;
}

/** `kivo sidecars`: rewrites every item's sidecar and the library's manifest now. */
class SidecarsCommand final : public Command
{
public:
    QString name() const override { return u"sidecars"_s; }
    QString synopsis() const override { return {}; }
    QString summary() const override { return u"Rewrite every item's sidecar and the library manifest now"_s; }

    int run(CommandContext &context) override
    {
        if (!context.arguments.isEmpty())
            return context.usageError(u"sidecars takes no arguments"_s);
        QString failure;
        const auto library = HeadlessLibrary::open(&failure);
        if (!library)
            return context.fail(failure);
        if (!LibraryLocation::isReorganised()) {
            // The older layout keeps no sidecars; the window's start moves a library out of it.
            return context.fail(u"the library at %1 still has the older layout (files/); "
                                "open it in Kivo once to move it into the browsable layout"_s.arg(library->root()));
        }
        const QString items = LibraryLocation::itemFolder(library->root(), true);
        const QString manifest = library->root() + u"/library.kivo.json"_s;
        QElapsedTimer clock;
        clock.start();
        try {
            Sidecars::refresh(library->queue(), library->root(), true);
        } catch (const std::exception &error) {
            return context.fail(u"the sidecar refresh of %1 stopped: %2"_s.arg(library->root(), errorText(error)));
        }
        const qint64 elapsed = clock.elapsed();
        const SidecarCount count = countSidecars(items);
        if (context.json) {
            context.printJson(QJsonObject{
                {u"root"_s, library->root()},
                {u"sidecars"_s, count.files},
                {u"folders"_s, count.folders},
                {u"manifest"_s, manifest},
                {u"milliseconds"_s, elapsed},
            });
        } else {
            context.out << u"Wrote %1 sidecars in %2 folders under %3"_s.arg(count.files).arg(count.folders).arg(items)
                        << Qt::endl
                        << u"Wrote the manifest %1"_s.arg(manifest) << Qt::endl
                        << u"Took %1 s"_s.arg(double(elapsed) / 1000.0, 0, 'f', 2) << Qt::endl;
        }
        return 0;
    }
};

} // namespace

Command *makeSidecarsCommand()
{
    return new SidecarsCommand;
}

} // namespace kivo::cli
