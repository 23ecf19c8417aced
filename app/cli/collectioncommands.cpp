#include "app/cli/command.h"
#include "app/cli/headlessstore.h"

#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

QJsonObject describe(const Store &store, const LibraryCollection &collection, int depth)
{
    QJsonObject json{
        {u"id"_s, collection.id},
        {u"name"_s, collection.name},
        {u"depth"_s, depth},
        {u"count"_s, store.counts().value(collection.id, 0)},
        {u"sortIndex"_s, double(collection.sortIndex)},
        {u"pinned"_s, collection.pinnedAt.has_value()},
    };
    json.insert(u"parentId"_s, collection.parentId ? QJsonValue(*collection.parentId) : QJsonValue());
    json.insert(u"icon"_s, collection.icon ? QJsonValue(*collection.icon) : QJsonValue());
    return json;
}

/** `kivo collections`: the inbox, then the collection tree in the sidebar's order. */
class CollectionsCommand final : public Command
{
public:
    QString name() const override { return u"collections"_s; }
    QString synopsis() const override { return {}; }
    QString summary() const override { return u"Show the collection tree in the sidebar's order, with counts"_s; }

    int run(CommandContext &context) override
    {
        if (!context.arguments.isEmpty())
            return context.usageError(u"collections takes no arguments"_s);
        QString failure;
        const auto headless = HeadlessStore::open(&failure);
        if (!headless)
            return context.fail(failure);
        const Store &store = headless->store();
        const QList<CollectionTreeRow> tree = store.collectionTree();
        if (context.json) {
            QJsonArray collections;
            for (const CollectionTreeRow &row : tree)
                collections.append(describe(store, row.collection, row.depth));
            QJsonObject answer{{u"collections"_s, collections}};
            answer.insert(u"inbox"_s,
                store.inboxCollection() ? QJsonValue(describe(store, *store.inboxCollection(), 0)) : QJsonValue());
            context.printJson(answer);
            return 0;
        }
        if (const auto &inbox = store.inboxCollection())
            context.out << inbox->name << u"  ("_s << store.inboxCount() << u")  "_s << inbox->id << u'\n';
        for (const CollectionTreeRow &row : tree) {
            context.out << QString(row.depth * 2, u' ') << row.collection.name << u"  ("_s
                        << store.counts().value(row.collection.id, 0) << u")  "_s << row.collection.id << u'\n';
        }
        context.out.flush();
        return 0;
    }
};

/** `kivo collection create NAME [--parent ID]`: a new collection at the end of the manual order. */
class CollectionCommand final : public Command
{
public:
    QString name() const override { return u"collection"_s; }
    QString synopsis() const override { return u"create NAME [--parent ID]"_s; }
    QString summary() const override { return u"Create a collection, at the top level or inside another"_s; }

    int run(CommandContext &context) override
    {
        QStringList arguments = context.arguments;
        if (arguments.isEmpty() || arguments.takeFirst() != u"create")
            return context.usageError(u"usage: kivo collection create NAME [--parent ID]"_s);
        QString parentId;
        QStringList words;
        for (qsizetype i = 0; i < arguments.size(); ++i) {
            if (arguments.at(i) == u"--parent") {
                if (i + 1 >= arguments.size())
                    return context.usageError(u"--parent needs a collection id"_s);
                parentId = arguments.at(++i);
            } else {
                words.append(arguments.at(i));
            }
        }
        if (words.size() != 1 || words.first().trimmed().isEmpty())
            return context.usageError(u"collection create takes one non-empty NAME (quote a name with spaces)"_s);
        const QString name = words.first().trimmed();

        QString failure;
        const auto headless = HeadlessStore::open(&failure);
        if (!headless)
            return context.fail(failure);
        Store &store = headless->store();
        if (!parentId.isEmpty()) {
            if (!headless->collection(parentId, &failure))
                return context.fail(failure);
            if (parentId == store.inboxIdText())
                return context.fail(u"no collection can be made inside the inbox ("_s + parentId + u')');
        }
        const QString id = store.createCollection(name, parentId);
        if (id.isEmpty())
            return context.fail(u"could not create the collection "_s + name);
        if (context.json) {
            QJsonObject answer{{u"id"_s, id}, {u"name"_s, name}};
            answer.insert(u"parentId"_s, parentId.isEmpty() ? QJsonValue() : QJsonValue(parentId));
            context.printJson(answer);
        } else {
            context.out << id << Qt::endl;
        }
        return 0;
    }
};

} // namespace

Command *makeCollectionsCommand()
{
    return new CollectionsCommand;
}

Command *makeCollectionCommand()
{
    return new CollectionCommand;
}

} // namespace kivo::cli
