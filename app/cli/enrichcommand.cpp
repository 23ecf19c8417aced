#include "app/cli/command.h"
#include "app/cli/headlesslibrary.h"
#include "core/systemlog.h"
#include "understanding/enrichment/enrichmentservice.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

QString outcomeName(ItemEnricher::Outcome outcome)
{
    switch (outcome) {
    case ItemEnricher::Outcome::read:
        return u"read"_s;
    case ItemEnricher::Outcome::linkTagged:
        return u"linkTagged"_s;
    case ItemEnricher::Outcome::unreadable:
        return u"unreadable"_s;
    case ItemEnricher::Outcome::passed:
        return u"passed"_s;
    case ItemEnricher::Outcome::failed:
        return u"failed"_s;
    }
    return {};
}

/**
 * `kivo enrich`: the scan for pictures and videos never read. On its own it says how many wait;
 * with --wait it reads them here, one after another as the window would, and returns when none
 * is left.
 */
class EnrichCommand final : public Command
{
public:
    QString name() const override { return u"enrich"_s; }
    QString synopsis() const override { return u"[--wait]"_s; }
    QString summary() const override
    {
        return u"Find the pictures and videos not yet read (text, colours, tags); with --wait, read them now"_s;
    }

    int run(CommandContext &context) override
    {
        bool wait = false;
        for (const QString &argument : context.arguments) {
            if (argument != u"--wait")
                return context.usageError(u"enrich does not take '"_s + argument + u'\'');
            wait = true;
        }
        QString failure;
        const auto library = HeadlessLibrary::open(&failure);
        if (!library)
            return context.fail(failure);
        return wait ? readAll(context, *library) : report(context, *library);
    }

private:
    static int report(CommandContext &context, const HeadlessLibrary &library)
    {
        QStringList ids;
        try {
            const QVariantList found
                = library.queue().read([](Database &db) { return db.fetchScalars(EnrichmentService::pendingQuery); });
            for (const QVariant &id : found)
                ids.append(id.toString());
        } catch (const std::exception &error) {
            return context.fail(u"pending scan failed: "_s + errorText(error));
        }
        if (context.json) {
            context.printJson(QJsonObject{{u"pending"_s, ids.size()}, {u"ids"_s, QJsonArray::fromStringList(ids)}});
            return 0;
        }
        context.out << (ids.size() == 1 ? u"1 item waits"_s : u"%1 items wait"_s.arg(ids.size()))
                    << u" to be read; 'kivo enrich --wait' reads them now"_s << Qt::endl;
        return 0;
    }

    static int readAll(CommandContext &context, const HeadlessLibrary &library)
    {
        EnrichmentService service(false, nullptr);
        service.setDatabase(library.sharedQueue(), library.root());

        QEventLoop loop;
        QElapsedTimer clock;
        clock.start();
        int found = 0;
        int done = 0;
        QString failure;
        QHash<QString, int> outcomes;
        QObject::connect(&service, &EnrichmentService::scanFinished, &loop, [&](int count) {
            found = count;
            if (count == 0)
                loop.quit();
        });
        QObject::connect(&service, &EnrichmentService::scanFailed, &loop, [&](const QString &error) {
            failure = error;
            loop.quit();
        });
        QObject::connect(&service, &EnrichmentService::itemFinished, &loop,
            [&](const QString &itemId, ItemEnricher::Outcome outcome) {
                ++done;
                ++outcomes[outcomeName(outcome)];
                context.err << u"%1 of %2 %3 %4"_s.arg(done).arg(found).arg(outcomeName(outcome), itemId) << Qt::endl;
            });
        QObject::connect(&service, &EnrichmentService::drained, &loop, &QEventLoop::quit);
        service.scanPending();
        loop.exec();
        if (!failure.isEmpty())
            return context.fail(u"pending scan failed: "_s + failure);

        const double seconds = double(clock.elapsed()) / 1000.0;
        if (context.json) {
            QJsonObject summary{{u"found"_s, found}, {u"seconds"_s, seconds}};
            for (const ItemEnricher::Outcome outcome : {ItemEnricher::Outcome::read, ItemEnricher::Outcome::linkTagged,
                     ItemEnricher::Outcome::unreadable, ItemEnricher::Outcome::passed, ItemEnricher::Outcome::failed})
                summary.insert(outcomeName(outcome), outcomes.value(outcomeName(outcome)));
            context.printJson(summary);
            return 0;
        }
        context.out << u"Read %1 of %2 items in %3 s: %4 unreadable, %5 left as they were, %6 failed"_s
                           .arg(outcomes.value(u"read"_s))
                           .arg(found)
                           .arg(seconds, 0, 'f', 1)
                           .arg(outcomes.value(u"unreadable"_s))
                           .arg(outcomes.value(u"passed"_s))
                           .arg(outcomes.value(u"failed"_s))
                    << Qt::endl;
        return 0;
    }
};

} // namespace

Command *makeEnrichCommand()
{
    return new EnrichCommand;
}

} // namespace kivo::cli
