// `kivo import`, `kivo add-link` and `kivo add-text`: the window's import entries run headless,
// each waiting for its work in a local event loop and then saying what became of every input.

#include "app/cli/command.h"
#include "app/cli/headlessstore.h"
#include "ingest/import/libraryimporter.h"

#include <QEventLoop>
#include <QFutureWatcher>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** A command's arguments with its options taken out: `--to C`, `--title T`. */
struct ParsedArguments {
    QStringList positional;
    std::optional<QString> collection;
    std::optional<QString> title;
    QString problem;
};

ParsedArguments parseArguments(const QStringList &arguments, bool takesTitle)
{
    ParsedArguments parsed;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        const bool isTo = argument == u"--to";
        const bool isTitle = takesTitle && argument == u"--title";
        if (isTo || isTitle) {
            if (i + 1 >= arguments.size()) {
                parsed.problem = argument + u" needs a value"_s;
                return parsed;
            }
            (isTo ? parsed.collection : parsed.title) = arguments.at(++i);
        } else if (argument.startsWith(u"--")) {
            parsed.problem = u"unknown option "_s + argument;
            return parsed;
        } else {
            parsed.positional.append(argument);
        }
    }
    return parsed;
}

/** The collection `--to` names: an id, "inbox", or a name that only one live collection has. */
std::optional<LibraryCollection> findCollection(const Store &store, const QString &wanted, QString *failure)
{
    if (const auto byId = store.collectionById(wanted))
        return byId;
    if (wanted.compare(u"inbox"_s, Qt::CaseInsensitive) == 0 && store.inboxCollection())
        return store.inboxCollection();
    std::optional<LibraryCollection> found;
    for (const LibraryCollection &collection : store.collections()) {
        if (collection.name.compare(wanted, Qt::CaseInsensitive) != 0)
            continue;
        if (found) {
            *failure = u"more than one collection is named "_s + wanted + u"; give its id"_s;
            return std::nullopt;
        }
        found = collection;
    }
    if (!found)
        *failure = u"no collection with id or name "_s + wanted;
    return found;
}

/** The destination of a headless import: `--to` when given, else the rule the window follows. */
bool resolveTarget(const CommandContext &context, HeadlessStore &headless, const LibraryImporter &importer,
    const std::optional<QString> &wanted, std::optional<QString> *target, int *status)
{
    std::optional<QString> explicitId;
    if (wanted) {
        QString failure;
        const auto collection = findCollection(headless.store(), *wanted, &failure);
        if (!collection) {
            *status = context.fail(failure);
            return false;
        }
        explicitId = collection->id;
    }
    *target = importer.destination(explicitId);
    return true;
}

QString collectionName(const Store &store, const std::optional<QString> &target)
{
    if (!target)
        return {};
    const auto collection = store.collectionById(*target);
    return collection ? collection->name : *target;
}

QString quotedTitle(const LibraryItem &item)
{
    return u"\""_s + item.title.value_or(QString()) + u"\""_s;
}

template <typename T> T waitFor(QFuture<T> future)
{
    QFutureWatcher<T> watcher;
    QEventLoop loop;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    if (!future.isFinished())
        loop.exec();
    return future.result();
}

/** What `kivo import` found, in the order of the inputs. */
struct ImportReport {
    QJsonArray added;
    QJsonArray duplicates;
    QJsonArray failed;
    QStringList lines;

    void noteAdded(const QString &source, const LibraryItem &item, const QString &note = {})
    {
        QJsonObject entry = item.toJson();
        entry.insert(u"source"_s, source);
        if (!note.isEmpty())
            entry.insert(u"note"_s, note);
        added.append(entry);
        lines.append(u"Added %1 %2 (%3) from %4%5"_s.arg(
            item.kind, quotedTitle(item), item.id, source, note.isEmpty() ? QString() : u" ("_s + note + u')'));
    }
    void noteDuplicate(const QString &source, const LibraryItem &item, const QString &filedIn)
    {
        QJsonObject entry = item.toJson();
        entry.insert(u"source"_s, source);
        entry.insert(u"filedIn"_s, filedIn.isEmpty() ? QJsonValue() : QJsonValue(filedIn));
        duplicates.append(entry);
        lines.append(u"Already there: %1 is %2 (%3)%4"_s.arg(
            source, quotedTitle(item), item.id, filedIn.isEmpty() ? QString() : u", filed in "_s + filedIn));
    }
    void noteFailed(const QString &source, const QString &error)
    {
        failed.append(QJsonObject{{u"source"_s, source}, {u"error"_s, error}});
        lines.append(u"Failed: %1: %2"_s.arg(source, error));
    }
};

bool isAddress(const QString &argument)
{
    return argument.startsWith(u"http://"_s, Qt::CaseInsensitive)
        || argument.startsWith(u"https://"_s, Qt::CaseInsensitive);
}

/** `kivo import PATH|URL... [--to COLLECTION]`: files, folders (all their files) and web addresses. */
class ImportCommand final : public Command
{
public:
    QString name() const override { return u"import"_s; }
    QString synopsis() const override { return u"PATH|URL... [--to COLLECTION]"_s; }
    QString summary() const override
    {
        return u"Import files, folders (all their files) and http(s) addresses; exit 1 if any failed"_s;
    }

    int run(CommandContext &context) override
    {
        const ParsedArguments parsed = parseArguments(context.arguments, false);
        if (!parsed.problem.isEmpty() || parsed.positional.isEmpty())
            return context.usageError(
                parsed.problem.isEmpty() ? u"usage: kivo import "_s + synopsis() : parsed.problem);
        QString failure;
        const auto headless = HeadlessStore::open(&failure);
        if (!headless)
            return context.fail(failure);
        LibraryImporter importer(&headless->store(), &headless->settings());
        std::optional<QString> target;
        int status = 0;
        if (!resolveTarget(context, *headless, importer, parsed.collection, &target, &status))
            return status;
        const QString filedIn = collectionName(headless->store(), target);

        QStringList files;
        QStringList addresses;
        for (const QString &argument : parsed.positional)
            (isAddress(argument) ? addresses : files).append(argument);

        ImportReport report;
        if (!files.isEmpty())
            importFiles(importer, files, target, filedIn, report);
        for (const QString &address : std::as_const(addresses))
            importAddress(importer, address, target, filedIn, report);

        if (context.json) {
            context.printJson(QJsonObject{{u"added"_s, report.added}, {u"duplicates"_s, report.duplicates},
                {u"failed"_s, report.failed},
                {u"collection"_s,
                    target ? QJsonValue(QJsonObject{{u"id"_s, *target}, {u"name"_s, filedIn}}) : QJsonValue()}});
        } else {
            for (const QString &line : std::as_const(report.lines))
                context.out << line << u'\n';
            context.out << u"%1 added, %2 already there, %3 failed"_s.arg(report.added.size())
                               .arg(report.duplicates.size())
                               .arg(report.failed.size())
                        << Qt::endl;
        }
        return report.failed.isEmpty() ? 0 : 1;
    }

private:
    static void importFiles(LibraryImporter &importer, const QStringList &files, const std::optional<QString> &target,
        const QString &filedIn, ImportReport &report)
    {
        ImportBatch *batch = importer.importFiles(files, target, {.pending = false, .quiet = true});
        if (!batch)
            return;
        QEventLoop loop;
        QObject::connect(batch, &ImportBatch::finished, &loop, &QEventLoop::quit);
        if (!batch->isFinished())
            loop.exec();
        for (const FileImportOutcome &outcome : batch->outcomes()) {
            if (!outcome.imported)
                report.noteFailed(outcome.path, outcome.error);
            else if (outcome.imported->existing)
                report.noteDuplicate(outcome.path, outcome.imported->item, filedIn);
            else
                report.noteAdded(outcome.path, outcome.imported->item);
        }
        delete batch;
    }

    static void importAddress(LibraryImporter &importer, const QString &address, const std::optional<QString> &target,
        const QString &filedIn, ImportReport &report)
    {
        const QUrl url(address, QUrl::StrictMode);
        if (!url.isValid() || url.host().isEmpty()) {
            report.noteFailed(address, u"not a web address"_s);
            return;
        }
        const RemoteImportOutcome outcome = waitFor(
            importer.importRemote(url, std::nullopt, std::nullopt, target, {.pending = false, .quiet = true}));
        if (outcome.result && outcome.result->existing)
            report.noteDuplicate(address, outcome.result->item, filedIn);
        else if (outcome.result)
            report.noteAdded(address, outcome.result->item);
        else if (outcome.fallbackLink)
            report.noteAdded(address, *outcome.fallbackLink, u"kept as a link: "_s + outcome.error);
        else
            report.noteFailed(address, outcome.error.isEmpty() ? u"could not be saved"_s : outcome.error);
    }
};

/** The shared shape of `add-link` and `add-text`: one thing in, one item out. */
class AddCommand : public Command
{
public:
    int run(CommandContext &context) override
    {
        const ParsedArguments parsed = parseArguments(context.arguments, true);
        if (!parsed.problem.isEmpty())
            return context.usageError(parsed.problem);
        if (parsed.positional.size() != 1 || parsed.positional.first().trimmed().isEmpty())
            return context.usageError(u"usage: kivo "_s + name() + u' ' + synopsis());
        QString problem;
        if (!accepts(parsed.positional.first(), &problem))
            return context.usageError(problem);
        QString failure;
        const auto headless = HeadlessStore::open(&failure);
        if (!headless)
            return context.fail(failure);
        LibraryImporter importer(&headless->store(), &headless->settings());
        std::optional<QString> target;
        int status = 0;
        if (!resolveTarget(context, *headless, importer, parsed.collection, &target, &status))
            return status;
        const auto item = add(importer, parsed.positional.first(), parsed.title, target);
        if (!item)
            return context.fail(u"could not save the "_s + (name() == u"add-link" ? u"link"_s : u"text"_s));
        const QString filedIn = collectionName(headless->store(), target);
        if (context.json) {
            QJsonObject answer = item->toJson();
            answer.insert(u"filedIn"_s, filedIn.isEmpty() ? QJsonValue() : QJsonValue(filedIn));
            context.printJson(answer);
        } else {
            context.out << u"Added %1 %2 (%3)%4"_s.arg(
                item->kind, quotedTitle(*item), item->id, filedIn.isEmpty() ? QString() : u" to "_s + filedIn)
                        << Qt::endl;
        }
        return 0;
    }

protected:
    virtual bool accepts(const QString &argument, QString *problem) const = 0;
    virtual std::optional<LibraryItem> add(LibraryImporter &importer, const QString &argument,
        const std::optional<QString> &title, const std::optional<QString> &target) const = 0;
};

class AddLinkCommand final : public AddCommand
{
public:
    QString name() const override { return u"add-link"_s; }
    QString synopsis() const override { return u"URL [--title T] [--to COLLECTION]"_s; }
    QString summary() const override { return u"Save a link; saving it twice gives two items"_s; }

protected:
    bool accepts(const QString &argument, QString *problem) const override
    {
        const QUrl url(argument, QUrl::StrictMode);
        if (url.isValid() && !url.scheme().isEmpty())
            return true;
        *problem = u"not an address: "_s + argument;
        return false;
    }
    std::optional<LibraryItem> add(LibraryImporter &importer, const QString &argument,
        const std::optional<QString> &title, const std::optional<QString> &target) const override
    {
        return importer.importLink(QUrl(argument, QUrl::StrictMode), title, target, {.pending = false, .quiet = true});
    }
};

class AddTextCommand final : public AddCommand
{
public:
    QString name() const override { return u"add-text"_s; }
    QString synopsis() const override { return u"TEXT [--title T] [--to COLLECTION]"_s; }
    QString summary() const override { return u"Save a piece of text as a note item"_s; }

protected:
    bool accepts(const QString &, QString *) const override { return true; }
    std::optional<LibraryItem> add(LibraryImporter &importer, const QString &argument,
        const std::optional<QString> &title, const std::optional<QString> &target) const override
    {
        return importer.importText(argument, title, target, {.pending = false, .quiet = true});
    }
};

} // namespace

Command *makeImportCommand()
{
    return new ImportCommand;
}

Command *makeAddLinkCommand()
{
    return new AddLinkCommand;
}

Command *makeAddTextCommand()
{
    return new AddTextCommand;
}

} // namespace kivo::cli
