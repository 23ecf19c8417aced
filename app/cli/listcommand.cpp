#include "app/cli/command.h"
#include "app/cli/headlessstore.h"


using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** `kivo list`: the rows of a selection, in the order the window shows them. */
class ListCommand final : public Command
{
public:
    QString name() const override { return u"list"_s; }
    QString synopsis() const override { return u"[--selection KEY] [--sort newest|oldest]"_s; }
    QString summary() const override
    {
        return u"List the items of a selection (all, inbox, favourites, links, trash, hidden, type-image..., or a collection id)"_s;
    }

    int run(CommandContext &context) override
    {
        QString key = u"all"_s;
        std::optional<ItemSort> sort;
        const QStringList &arguments = context.arguments;
        for (qsizetype i = 0; i < arguments.size(); ++i) {
            const QString &argument = arguments.at(i);
            if ((argument == u"--selection" || argument == u"--sort") && i + 1 >= arguments.size())
                return context.usageError(argument + u" needs a value"_s);
            if (argument == u"--selection") {
                key = arguments.at(++i);
            } else if (argument == u"--sort") {
                sort = itemSortFromRaw(arguments.at(++i));
                if (!sort)
                    return context.usageError(u"--sort takes newest or oldest, not '"_s + arguments.at(i) + u'\'');
            } else {
                return context.usageError(u"list does not take '"_s + argument + u'\'');
            }
        }
        const auto selection = SidebarSelection::fromKey(key);
        if (!selection)
            return context.usageError(u"'"_s + key + u"' names no selection"_s);

        QString failure;
        const auto headless = HeadlessStore::open(&failure);
        if (!headless)
            return context.fail(failure);
        if (selection->isCollection() && !headless->collection(selection->collectionId(), &failure))
            return context.fail(failure);
        Store &store = headless->store();
        store.setItemSortOverride(sort);
        if (*selection == store.selection())
            store.reloadItems();
        else
            store.setSelection(*selection);

        return context.printItems(store.items());
    }
};

} // namespace

Command *makeListCommand()
{
    return new ListCommand;
}

} // namespace kivo::cli
