#include "core/store.h"

#include "core/appsettings.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** How many selections back and forward remember. */
constexpr qsizetype historyLimit = 100;

const QString viewModePrefix = u"viewMode."_s;

void capHistory(QList<SidebarSelection> &history)
{
    if (history.size() > historyLimit)
        history.remove(0, history.size() - historyLimit);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Selection and history

void Store::setSelection(const SidebarSelection &selection)
{
    if (selection == m_selection)
        return;
    Q_EMIT selectionAboutToChange(m_selection.key());
    if (m_recordingHistory) {
        m_navBack.append(m_selection);
        capHistory(m_navBack);
        m_navForward.clear();
        Q_EMIT historyChanged();
    }
    m_selection = selection;
    Q_EMIT selectionChanged();
    if (!m_searchText.isEmpty()) {
        m_searchText.clear();
        Q_EMIT searchTextChanged();
    }
    if (m_settings)
        m_settings->loadViewPreferences(m_selection.key());
    applyStoredViewMode();
    reloadItems(false);
}

void Store::setSelectionKey(const QString &key)
{
    if (const auto selection = SidebarSelection::fromKey(key))
        setSelection(*selection);
}

void Store::goBack()
{
    if (m_navBack.isEmpty())
        return;
    const SidebarSelection target = m_navBack.takeLast();
    m_navForward.append(m_selection);
    capHistory(m_navForward);
    m_recordingHistory = false;
    setSelection(target);
    m_recordingHistory = true;
    Q_EMIT historyChanged();
}

void Store::goForward()
{
    if (m_navForward.isEmpty())
        return;
    const SidebarSelection target = m_navForward.takeLast();
    m_navBack.append(m_selection);
    capHistory(m_navBack);
    m_recordingHistory = false;
    setSelection(target);
    m_recordingHistory = true;
    Q_EMIT historyChanged();
}

void Store::setSearchText(const QString &text)
{
    if (text == m_searchText)
        return;
    m_searchText = text;
    Q_EMIT searchTextChanged();
    reloadItems(true);
}

// ---------------------------------------------------------------------------------------------
// View mode

void Store::setViewMode(ViewMode mode)
{
    if (mode == m_viewMode)
        return;
    m_viewMode = mode;
    Q_EMIT viewModeChanged();
    // A mode applied for a selection is followed by the rows' reload, which splits them anew.
    if (m_applyingViewMode)
        return;
    rebuildRailSplit();
    // Only a user's choice is stored, so a default never sticks.
    UserDefaults().setValue(viewModePrefix + m_selection.key(), rawString(mode));
    reloadTagNames();
}

void Store::setViewModeName(const QString &mode)
{
    if (const auto parsed = viewModeFromRaw(mode))
        setViewMode(*parsed);
}

void Store::applyStoredViewMode()
{
    m_defaultViewModePending = false;
    const auto stored = viewModeFromRaw(UserDefaults().stringValue(viewModePrefix + m_selection.key()));
    if (!stored && m_selection.kind() != SidebarSelection::Kind::trash && m_dbQueue) {
        // ### The default needs the number of rows and of links in the selection. Those are the
        // rows the selection lists, so they are counted from the read that follows rather than by
        // two more scans of the library (ItemQueries::liveCountQuery and linkCountQuery) at each
        // switch.
        m_defaultViewModePending = true;
        return;
    }
    m_applyingViewMode = true;
    setViewMode(stored.value_or(ViewMode::cards));
    m_applyingViewMode = false;
}

void Store::applyDefaultViewMode(const QList<LibraryItem> &rows)
{
    m_defaultViewModePending = false;
    const bool allLinks = !rows.isEmpty()
        && std::all_of(rows.cbegin(), rows.cend(), [](const LibraryItem &item) { return item.kind == u"link"; });
    // A selection of nothing but links reads best as a list.
    m_applyingViewMode = true;
    setViewMode(allLinks ? ViewMode::list : ViewMode::cards);
    m_applyingViewMode = false;
}

// ---------------------------------------------------------------------------------------------
// Links rail override

void Store::setRailSplitOverride(const QString &selectionKey, bool split)
{
    const auto found = m_railSplitOverride.constFind(selectionKey);
    if (found != m_railSplitOverride.constEnd() && *found == split)
        return;
    m_railSplitOverride.insert(selectionKey, split);
    saveRailSplitOverride();
}

void Store::clearRailSplitOverride(const QString &selectionKey)
{
    if (m_railSplitOverride.remove(selectionKey))
        saveRailSplitOverride();
}

QVariant Store::railSplitOverrideFor(const QString &selectionKey) const
{
    const auto found = m_railSplitOverride.constFind(selectionKey);
    return found == m_railSplitOverride.constEnd() ? QVariant() : QVariant(*found);
}

void Store::saveRailSplitOverride()
{
    QVariantMap stored;
    for (auto it = m_railSplitOverride.constBegin(); it != m_railSplitOverride.constEnd(); ++it)
        stored.insert(it.key(), it.value());
    UserDefaults().setValue(u"railSplitOverride"_s, stored);
    Q_EMIT railSplitOverrideChanged();
    rebuildRailSplit();
}

// ---------------------------------------------------------------------------------------------
// Multi-selection of items

void Store::selectItem(const QString &id)
{
    if (id == m_selectedItemId)
        return;
    m_selectedItemId = id;
    Q_EMIT selectedItemIdChanged();
}

QStringList Store::selectedItemIdList() const
{
    QStringList ordered;
    ordered.reserve(m_selectedItemIds.size());
    for (const LibraryItem &item : m_items) {
        if (ordered.size() == m_selectedItemIds.size())
            break;
        if (m_selectedItemIds.contains(item.id))
            ordered.append(item.id);
    }
    return ordered;
}

void Store::setSelectedItemIds(const QSet<QString> &ids)
{
    if (ids == m_selectedItemIds)
        return;
    m_selectedItemIds = ids;
    Q_EMIT selectedItemIdsChanged();
}

void Store::setSelectedItemIdList(const QStringList &ids)
{
    setSelectedItemIds(QSet<QString>(ids.cbegin(), ids.cend()));
}

void Store::setSelectionAnchorId(const QString &id)
{
    if (id == m_selectionAnchorId)
        return;
    m_selectionAnchorId = id;
    Q_EMIT selectionAnchorIdChanged();
}

void Store::setDetailsItemId(const QString &id)
{
    if (id == m_detailsItemId)
        return;
    m_detailsItemId = id;
    Q_EMIT detailsItemIdChanged();
}

void Store::toggleSelection(const QString &id)
{
    if (id.isEmpty())
        return;
    if (!m_selectedItemIds.remove(id))
        m_selectedItemIds.insert(id);
    Q_EMIT selectedItemIdsChanged();
}

void Store::selectRangeTo(const QString &id)
{
    const QString anchor = m_selectionAnchorId.isEmpty() ? m_selectedItemId : m_selectionAnchorId;
    qsizetype anchorIndex = -1;
    qsizetype targetIndex = -1;
    for (qsizetype i = 0; i < m_items.size() && (anchorIndex < 0 || targetIndex < 0); ++i) {
        if (m_items.at(i).id == anchor)
            anchorIndex = i;
        if (m_items.at(i).id == id)
            targetIndex = i;
    }
    if (anchor.isEmpty() || anchorIndex < 0 || targetIndex < 0) {
        setSelectedItemIds({id});
        selectItem(id);
        setSelectionAnchorId(id);
        return;
    }
    QSet<QString> range;
    for (qsizetype i = std::min(anchorIndex, targetIndex); i <= std::max(anchorIndex, targetIndex); ++i)
        range.insert(m_items.at(i).id);
    setSelectedItemIds(range);
    selectItem(id);
}

void Store::clearSelection()
{
    setSelectedItemIds({});
}

QStringList Store::targetIds(const QString &clickedId) const
{
    if (m_selectedItemIds.contains(clickedId))
        return selectedItemIdList();
    return clickedId.isEmpty() ? QStringList() : QStringList{clickedId};
}

void Store::pruneSelection()
{
    // The multi-selection only ever holds rows that are shown, so an action on it never reaches
    // an item that has left the list.
    if (m_selectedItemIds.isEmpty())
        return;
    QSet<QString> kept;
    for (const LibraryItem &item : std::as_const(m_items)) {
        if (m_selectedItemIds.contains(item.id))
            kept.insert(item.id);
    }
    setSelectedItemIds(kept);
}

QList<LibraryItem> Store::itemsInRowOrder(const QStringList &ids) const
{
    const QSet<QString> wanted(ids.cbegin(), ids.cend());
    QList<LibraryItem> found;
    QSet<QString> seen;
    for (const LibraryItem &item : m_items) {
        if (wanted.contains(item.id)) {
            found.append(item);
            seen.insert(item.id);
        }
    }
    // Items that are not among the rows (a details panel on a search hit, a headless call) are read.
    for (const QString &id : ids) {
        if (seen.contains(id))
            continue;
        seen.insert(id);
        if (auto item = itemById(id))
            found.append(*item);
    }
    return found;
}

} // namespace kivo
