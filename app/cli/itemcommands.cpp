#include "app/cli/command.h"
#include "app/cli/headlessstore.h"

#include <QJsonObject>

#include <functional>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** What an item command does once its item is found; returns the exit status. */
using ItemAction = std::function<int(CommandContext &, HeadlessStore &, const LibraryItem &, const QStringList &)>;

/**
 * A headless command on one item: `kivo NAME ITEM [more]`. The arguments are checked before the
 * library is opened, the item after, and the change goes through the Store's own operation.
 */
class ItemCommand final : public Command
{
public:
    ItemCommand(QString name, QString synopsis, QString summary, QStringList extraArguments, ItemAction action)
        : m_name(std::move(name))
        , m_synopsis(std::move(synopsis))
        , m_summary(std::move(summary))
        , m_extraArguments(std::move(extraArguments))
        , m_action(std::move(action))
    {
    }

    QString name() const override { return m_name; }
    QString synopsis() const override { return m_synopsis; }
    QString summary() const override { return m_summary; }

    int run(CommandContext &context) override
    {
        if (context.arguments.size() != 1 + m_extraArguments.size())
            return context.usageError(u"usage: kivo "_s + m_name + u' ' + m_synopsis);
        for (qsizetype i = 0; i < context.arguments.size(); ++i) {
            if (context.arguments.at(i).trimmed().isEmpty())
                return context.usageError(u"usage: kivo "_s + m_name + u' ' + m_synopsis);
        }
        QString failure;
        const auto headless = HeadlessStore::open(&failure);
        if (!headless)
            return context.fail(failure);
        const auto item = headless->item(context.arguments.first(), &failure);
        if (!item)
            return context.fail(failure);
        return m_action(context, *headless, *item, context.arguments.mid(1));
    }

private:
    QString m_name;
    QString m_synopsis;
    QString m_summary;
    QStringList m_extraArguments;
    ItemAction m_action;
};

/** Prints the answer of an item command: a line of text, or the JSON object. */
int answer(CommandContext &context, const QString &line, const QJsonObject &json)
{
    if (context.json)
        context.printJson(json);
    else
        context.out << line << Qt::endl;
    return 0;
}

int fileAction(CommandContext &context, HeadlessStore &headless, const LibraryItem &item, const QStringList &rest)
{
    QString failure;
    const auto collection = headless.collection(rest.first(), &failure);
    if (!collection)
        return context.fail(failure);
    if (!headless.store().fileItem(item.id, collection->id))
        return context.fail(u"could not file item "_s + item.id);
    return answer(context, u"Filed in "_s + collection->name,
        {{u"itemId"_s, item.id}, {u"collectionId"_s, collection->id}, {u"collection"_s, collection->name}});
}

int tagAction(CommandContext &context, HeadlessStore &headless, const LibraryItem &item, const QStringList &rest)
{
    const QString name = Store::normaliseTagName(rest.first());
    if (!headless.store().addTag({item.id}, name))
        return context.fail(u"could not tag item "_s + item.id);
    return answer(context, u"Tagged as "_s + name, {{u"itemId"_s, item.id}, {u"tag"_s, name}});
}

int favouriteAction(CommandContext &context, HeadlessStore &headless, const LibraryItem &item, const QStringList &)
{
    Store &store = headless.store();
    if (!store.favourite({item.id}))
        return context.fail(u"could not change the favourite mark of item "_s + item.id);
    const bool favourite = store.itemById(item.id).value_or(item).favourite;
    return answer(context, store.toast(), {{u"itemId"_s, item.id}, {u"favourite"_s, favourite}});
}

int hideAction(CommandContext &context, HeadlessStore &headless, const LibraryItem &item, const QStringList &)
{
    if (!headless.store().setHidden({item.id}, true))
        return context.fail(u"could not hide item "_s + item.id);
    return answer(context, u"Hidden from All"_s, {{u"itemId"_s, item.id}, {u"hidden"_s, true}});
}

int trashAction(CommandContext &context, HeadlessStore &headless, const LibraryItem &item, const QStringList &)
{
    if (item.deletedAt)
        return context.fail(u"item "_s + item.id + u" is already in the trash"_s);
    if (!headless.store().deleteItem(item.id))
        return context.fail(u"could not move item "_s + item.id + u" to the trash"_s);
    return answer(context, u"Moved to Trash"_s, {{u"itemId"_s, item.id}, {u"trashed"_s, true}});
}

int restoreAction(CommandContext &context, HeadlessStore &headless, const LibraryItem &item, const QStringList &)
{
    if (!item.deletedAt)
        return context.fail(u"item "_s + item.id + u" is not in the trash"_s);
    if (!headless.store().restoreItem(item.id))
        return context.fail(u"could not restore item "_s + item.id);
    return answer(context, u"Restored"_s, {{u"itemId"_s, item.id}, {u"trashed"_s, false}});
}

} // namespace

Command *makeFileCommand()
{
    return new ItemCommand(u"file"_s, u"ITEM COLLECTION"_s, u"File an item into a collection (or the inbox)"_s,
        {u"COLLECTION"_s}, fileAction);
}

Command *makeTagCommand()
{
    return new ItemCommand(u"tag"_s, u"ITEM NAME"_s, u"Tag an item; the name is stored trimmed and in lower case"_s,
        {u"NAME"_s}, tagAction);
}

Command *makeFavouriteCommand()
{
    return new ItemCommand(
        u"favourite"_s, u"ITEM"_s, u"Mark an item favourite, or clear the mark when it has it"_s, {}, favouriteAction);
}

Command *makeHideCommand()
{
    return new ItemCommand(u"hide"_s, u"ITEM"_s, u"Hide an item from All"_s, {}, hideAction);
}

Command *makeTrashCommand()
{
    return new ItemCommand(u"trash"_s, u"ITEM"_s, u"Move an item to the trash"_s, {}, trashAction);
}

Command *makeRestoreCommand()
{
    return new ItemCommand(u"restore"_s, u"ITEM"_s, u"Bring an item back from the trash"_s, {}, restoreAction);
}

} // namespace kivo::cli
