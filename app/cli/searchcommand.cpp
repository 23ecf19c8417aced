#include "app/cli/command.h"
#include "app/cli/headlessstore.h"
#include "search/searchservice.h"

#include <QEventLoop>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** A search that has not answered in this time has gone wrong somewhere. */
constexpr std::chrono::minutes searchLimit{2};

/**
 * `kivo search QUERY`: the rows the window's search field shows for QUERY in a selection, in
 * their fused order, through the same Store and search.
 */
class SearchCommand final : public Command
{
public:
    QString name() const override { return u"search"_s; }
    QString synopsis() const override { return u"QUERY [--selection KEY]"_s; }
    QString summary() const override
    {
        return u"Search the library as the search field does (words, colours, use), in a selection"_s;
    }

    int run(CommandContext &context) override
    {
        QString key = u"all"_s;
        QStringList words;
        const QStringList &arguments = context.arguments;
        for (qsizetype i = 0; i < arguments.size(); ++i) {
            const QString &argument = arguments.at(i);
            if (argument == u"--selection") {
                if (i + 1 >= arguments.size())
                    return context.usageError(u"--selection needs a value"_s);
                key = arguments.at(++i);
            } else {
                words.append(argument);
            }
        }
        const QString query = words.join(u' ').trimmed();
        if (query.isEmpty())
            return context.usageError(u"search needs a query"_s);
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
        SearchService search(store);

        QEventLoop loop;
        bool answered = false;
        QObject::connect(&search, &SearchService::resultsApplied, &loop, [&] {
            answered = true;
            loop.quit();
        });
        QObject::connect(&search, &SearchService::searchFailed, &loop, [&](quint64, const QString &error) {
            failure = error;
            loop.quit();
        });
        QTimer::singleShot(searchLimit, &loop, &QEventLoop::quit);
        store.setSelection(*selection);
        store.setSearchText(query);
        // Run at once rather than after a keystroke's wait; the typed request goes stale.
        store.reloadItems(false);
        loop.exec();
        if (!answered)
            return context.fail(failure.isEmpty() ? u"the search did not answer"_s : u"search failed: "_s + failure);

        return context.printItems(store.items());
    }
};

} // namespace

Command *makeSearchCommand()
{
    return new SearchCommand;
}

} // namespace kivo::cli
