#include "surfaces/actions/itemactions.h"

#include <QFileInfo>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

struct Shortcut {
    QString action;
    QString sequence;
};

/** One key per action; the menu shows the same text. */
const QList<Shortcut> &shortcutTable()
{
    static const QList<Shortcut> table{
        {u"favourite"_s, u"Ctrl+D"_s},
        {u"hide"_s, u"Ctrl+H"_s},
        {u"unhide"_s, u"Ctrl+H"_s},
        {u"trash"_s, u"Del"_s},
        {u"restore"_s, u"Ctrl+R"_s},
        {u"rename"_s, u"F2"_s},
        {u"tag"_s, u"Ctrl+T"_s},
        {u"file"_s, u"Ctrl+Shift+F"_s},
        {u"removeFromCollection"_s, u"Ctrl+Backspace"_s},
        {u"copy"_s, u"Ctrl+C"_s},
        {u"copyLinks"_s, u"Ctrl+Shift+C"_s},
        {u"copyPaths"_s, u"Ctrl+Alt+C"_s},
        {u"reveal"_s, u"Ctrl+Shift+R"_s},
        {u"saveToDownloads"_s, u"Ctrl+Shift+S"_s},
    };
    return table;
}

QString sequenceOf(const QString &action)
{
    for (const Shortcut &shortcut : shortcutTable()) {
        if (shortcut.action == action)
            return shortcut.sequence;
    }
    return {};
}

QVariantMap entry(const QString &action, const QString &text, bool destructive = false)
{
    return {
        {u"action"_s, action}, {u"text"_s, text}, {u"shortcut"_s, sequenceOf(action)}, {u"destructive"_s, destructive}};
}

const QVariantMap separator{{u"separator"_s, true}};

} // namespace

ItemActions::ItemActions(QObject *parent) : QObject(parent)
{
}

void ItemActions::setStore(Store *store)
{
    if (m_store == store)
        return;
    m_store = store;
    Q_EMIT storeChanged();
}

QVariantList ItemActions::shortcuts() const
{
    QVariantList list;
    QStringList seen;
    for (const Shortcut &shortcut : shortcutTable()) {
        // Del belongs to the grid's own keys, which also run the ash fall.
        if (shortcut.sequence == u"Del" || seen.contains(shortcut.sequence))
            continue;
        seen.append(shortcut.sequence);
        list.append(QVariantMap{{u"action"_s, shortcut.action}, {u"sequence"_s, shortcut.sequence}});
    }
    return list;
}

QStringList ItemActions::targets(const QString &itemId) const
{
    return m_store ? m_store->targetIds(itemId) : QStringList();
}

QString ItemActions::keyTarget() const
{
    if (!m_store)
        return {};
    const QStringList selected = m_store->selectedItemIdList();
    return selected.isEmpty() ? m_store->selectedItemId() : selected.constFirst();
}

QList<LibraryItem> ItemActions::itemsOf(const QStringList &ids) const
{
    // The rows on screen answer for most menus; only items outside them are read.
    QHash<QString, const LibraryItem *> shown;
    for (const LibraryItem &item : m_store->items())
        shown.insert(item.id, &item);
    QList<LibraryItem> items;
    for (const QString &id : ids) {
        if (const LibraryItem *item = shown.value(id))
            items.append(*item);
        else if (const auto read = m_store->itemById(id))
            items.append(*read);
    }
    return items;
}

QString ItemActions::currentCollectionId() const
{
    if (!m_store)
        return {};
    const SidebarSelection &selection = m_store->selection();
    if (selection.kind() == SidebarSelection::Kind::inbox)
        return m_store->inboxIdText();
    return selection.isCollection() ? selection.collectionId() : QString();
}

QVariantList ItemActions::menuFor(const QString &itemId) const
{
    const QStringList ids = targets(itemId);
    if (!m_store || ids.isEmpty())
        return {};
    const bool many = ids.size() > 1;
    const QList<LibraryItem> items = itemsOf(ids);
    const bool allFavourite
        = std::all_of(items.cbegin(), items.cend(), [](const LibraryItem &i) { return i.favourite; });
    const bool allHidden
        = std::all_of(items.cbegin(), items.cend(), [](const LibraryItem &i) { return i.hiddenAt.has_value(); });
    const bool inTrash = m_store->selection().kind() == SidebarSelection::Kind::trash;

    QVariantList menu;
    if (inTrash) {
        menu.append(entry(u"restore"_s, many ? u"Restore %1 Items"_s.arg(ids.size()) : u"Restore"_s));
        menu.append(separator);
    }
    if (!many)
        menu.append(entry(u"rename"_s, u"Rename…"_s));
    menu.append(entry(u"tag"_s, many ? u"Tag %1 Items…"_s.arg(ids.size()) : u"Add Tag…"_s));
    menu.append(entry(u"favourite"_s, allFavourite ? u"Remove from Favourites"_s : u"Add to Favourites"_s));
    menu.append(separator);
    menu.append(entry(u"file"_s, u"Add to Collection"_s));
    const QString collectionId = currentCollectionId();
    if (const auto collection = m_store->collectionById(collectionId))
        menu.append(entry(u"removeFromCollection"_s, u"Remove from "_s + collection->name));
    menu.append(separator);
    if (!many)
        menu.append(entry(u"copy"_s, u"Copy"_s));
    menu.append(entry(u"copyLinks"_s, many ? u"Copy Links"_s : u"Copy Link"_s));
    menu.append(entry(u"copyPaths"_s, many ? u"Copy Paths"_s : u"Copy Path"_s));
    menu.append(entry(u"reveal"_s, u"Show in File Manager"_s));
    menu.append(entry(u"saveToDownloads"_s, u"Save to Downloads"_s));
    menu.append(separator);
    menu.append(allHidden ? entry(u"unhide"_s, u"Unhide"_s) : entry(u"hide"_s, u"Hide"_s));
    if (!inTrash)
        menu.append(entry(u"trash"_s, u"Move to Trash"_s, true));
    return menu;
}

bool ItemActions::applies(const QString &action, const QStringList &ids) const
{
    if (ids.isEmpty())
        return false;
    if (action == u"restore")
        return m_store->selection().kind() == SidebarSelection::Kind::trash;
    if (action == u"trash")
        return m_store->selection().kind() != SidebarSelection::Kind::trash;
    if (action == u"rename" || action == u"copy")
        return ids.size() == 1;
    if (action == u"removeFromCollection")
        return m_store->collectionById(currentCollectionId()).has_value();
    return true;
}

bool ItemActions::trigger(const QString &action, const QString &itemId)
{
    if (!m_store)
        return false;
    const QStringList ids = targets(itemId);
    if (!applies(action, ids))
        return false;
    if (action == u"rename" || action == u"tag" || action == u"file" || action == u"fileNew") {
        Q_EMIT inputRequested(action, itemId);
        return true;
    }
    if (action == u"favourite")
        return m_store->favourite(ids);
    if (action == u"hide" || action == u"unhide")
        return m_store->setHidden(ids, action == u"hide");
    if (action == u"trash")
        return ids.size() == 1 ? m_store->deleteItem(ids.constFirst()) : m_store->trashItems(ids);
    if (action == u"restore") {
        bool restored = true;
        for (const QString &id : ids)
            restored = m_store->restoreItem(id) && restored;
        return restored;
    }
    if (action == u"removeFromCollection") {
        const QString collectionId = currentCollectionId();
        return ids.size() == 1 ? m_store->removeItemFromCollection(ids.constFirst(), collectionId)
                               : m_store->removeItemsFromCollection(ids, collectionId);
    }
    if (action == u"copy")
        m_store->copyItem(ids.constFirst());
    else if (action == u"copyLinks")
        m_store->copyLinks(ids);
    else if (action == u"copyPaths")
        m_store->copyPaths(ids);
    else if (action == u"reveal")
        m_store->revealItems(ids);
    else if (action == u"saveToDownloads")
        m_store->saveToDownloads(ids);
    else
        return false;
    return true;
}

bool ItemActions::triggerFromKeyboard(const QString &action)
{
    const QString target = keyTarget();
    if (target.isEmpty())
        return false;
    // One key stands for hide and unhide: it unhides what is all hidden.
    if (action == u"hide" || action == u"unhide") {
        const QList<LibraryItem> items = itemsOf(targets(target));
        const bool allHidden
            = std::all_of(items.cbegin(), items.cend(), [](const LibraryItem &i) { return i.hiddenAt.has_value(); });
        return trigger(allHidden ? u"unhide"_s : u"hide"_s, target);
    }
    return trigger(action, target);
}

QVariantList ItemActions::fileChoices(const QString &itemId) const
{
    if (!m_store)
        return {};
    const QStringList ids = targets(itemId);
    const QStringList holding = m_store->collectionsHoldingAll(ids);
    QVariantList choices;
    if (const auto &inbox = m_store->inboxCollection()) {
        choices.append(QVariantMap{{u"id"_s, inbox->id}, {u"name"_s, inbox->name}, {u"depth"_s, 0},
            {u"icon"_s, u"inbox"_s}, {u"holdsAll"_s, holding.contains(inbox->id)}});
    }
    for (const QVariant &choice : m_store->collectionChoices()) {
        QVariantMap map = choice.toMap();
        const QString id = map.value(u"id"_s).toString();
        if (map.value(u"icon"_s).toString().isEmpty())
            map.insert(u"icon"_s, m_store->semanticIcon(id).isEmpty() ? u"folder"_s : m_store->semanticIcon(id));
        map.insert(u"holdsAll"_s, holding.contains(id));
        choices.append(map);
    }
    return choices;
}

bool ItemActions::fileInto(const QString &collectionId, const QString &itemId)
{
    const QStringList ids = targets(itemId);
    if (!m_store || ids.isEmpty() || collectionId.isEmpty())
        return false;
    return ids.size() == 1 ? m_store->fileItem(ids.constFirst(), collectionId) : m_store->fileItems(ids, collectionId);
}

bool ItemActions::fileIntoNew(const QString &name, const QString &itemId)
{
    const QStringList ids = targets(itemId);
    if (!m_store || ids.isEmpty() || name.trimmed().isEmpty())
        return false;
    const QString created = m_store->fileItemIntoNew(ids.constFirst(), name);
    if (created.isEmpty())
        return false;
    return ids.size() == 1 || m_store->fileItems(ids.mid(1), created);
}

bool ItemActions::tag(const QString &name, const QString &itemId)
{
    const QStringList ids = targets(itemId);
    if (!m_store || ids.isEmpty() || Store::normaliseTagName(name).isEmpty())
        return false;
    // Tagging the multi-selection is announced and ends it; one item is tagged quietly.
    if (ids.size() > 1 && ids == m_store->selectedItemIdList())
        return m_store->tagSelected(name);
    return m_store->addTag(ids, name);
}

bool ItemActions::rename(const QString &itemId, const QString &title)
{
    return m_store && m_store->renameItem(itemId, title);
}

QString ItemActions::titleOf(const QString &itemId) const
{
    const auto item = m_store ? m_store->itemById(itemId) : std::nullopt;
    if (!item)
        return {};
    if (item->title && !item->title->trimmed().isEmpty())
        return *item->title;
    if (item->filePath)
        return QFileInfo(*item->filePath).completeBaseName();
    return item->sourceURL ? QUrl(*item->sourceURL).host() : QString();
}

} // namespace kivo
