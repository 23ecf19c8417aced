#include "app/cli/headlessstore.h"

using namespace Qt::StringLiterals;

namespace kivo::cli {

std::unique_ptr<HeadlessStore> HeadlessStore::open(QString *failure)
{
    auto library = HeadlessLibrary::open(failure);
    if (!library)
        return nullptr;
    std::unique_ptr<HeadlessStore> opened(new HeadlessStore);
    opened->m_settings = std::make_unique<AppSettings>();
    opened->m_store = std::make_unique<Store>(opened->m_settings.get());
    opened->m_store->setSidebarExtrasEnabled(false);
    opened->m_store->adoptQueue(library->sharedQueue(), library->root());
    opened->m_library = std::move(library);
    opened->m_store->reloadCollections();
    return opened;
}

std::optional<LibraryItem> HeadlessStore::item(const QString &id, QString *failure) const
{
    auto found = m_store->itemById(id);
    if (!found)
        *failure = u"no item with id "_s + id;
    return found;
}

std::optional<LibraryCollection> HeadlessStore::collection(const QString &id, QString *failure) const
{
    auto found = m_store->collectionById(id);
    if (!found)
        *failure = u"no collection with id "_s + id;
    return found;
}

} // namespace kivo::cli
