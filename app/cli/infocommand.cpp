#include "app/cli/command.h"
#include "app/cli/headlesslibrary.h"

#include "core/librarylocation.h"
#include "core/migrator.h"
#include "core/systemlog.h"

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** `kivo info`: where the library is, its layout and schema, and how much it holds. */
class InfoCommand final : public Command
{
public:
    QString name() const override { return u"info"_s; }
    QString synopsis() const override { return {}; }
    QString summary() const override { return u"Show the library's folder, layout, schema steps and counts"_s; }

    int run(CommandContext &context) override
    {
        if (!context.arguments.isEmpty())
            return context.usageError(u"info takes no arguments"_s);
        QString failure;
        const auto library = HeadlessLibrary::open(&failure);
        if (!library)
            return context.fail(failure);
        try {
            const QString layout = LibraryLocation::isReorganised() ? u"browsable"_s : u"older"_s;
            const QStringList migrations = Migrator::appliedIdentifiers(library->queue());
            const auto counts = library->queue().read([](Database &db) {
                return std::array<qint64, 3>{
                    db.fetchScalar(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL"_s).toLongLong(),
                    db.fetchScalar(u"SELECT COUNT(*) FROM collection WHERE deletedAt IS NULL AND isInbox = 0"_s).toLongLong(),
                    db.fetchScalar(u"SELECT COUNT(*) FROM tag"_s).toLongLong(),
                };
            });
            if (context.json) {
                context.printJson(QJsonObject{
                    {u"root"_s, library->root()},
                    {u"layout"_s, layout},
                    {u"migrations"_s, QJsonArray::fromStringList(migrations)},
                    {u"items"_s, counts[0]},
                    {u"collections"_s, counts[1]},
                    {u"tags"_s, counts[2]},
                });
            } else {
                context.out << u"Library:     "_s << library->root() << Qt::endl
                            << u"Layout:      "_s << layout << Qt::endl
                            << u"Migrations:  "_s << migrations.join(u", "_s) << Qt::endl
                            << u"Items:       "_s << counts[0] << Qt::endl
                            << u"Collections: "_s << counts[1] << Qt::endl
                            << u"Tags:        "_s << counts[2] << Qt::endl;
            }
            return 0;
        } catch (const std::exception &error) {
            return context.fail(u"cannot read the library at %1: %2"_s.arg(library->root(), errorText(error)));
        }
    }
};

} // namespace

Command *makeInfoCommand()
{
    return new InfoCommand;
}

} // namespace kivo::cli
