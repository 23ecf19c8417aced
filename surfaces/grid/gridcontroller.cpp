#include "surfaces/grid/gridcontroller.h"

#include "core/appsettings.h"
#include "core/librarylocation.h"
#include "core/store.h"
#include "surfaces/grid/emptystate.h"
#include "surfaces/grid/kivoitemgestures.h"
#include "surfaces/grid/masonryview.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMimeData>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

Q_LOGGING_CATEGORY(lcGrid, "kivo.surfaces.grid")

const QStringList ownPayloadPrefixes{u"KIVO-ITEM "_s, u"KIVO-ITEMS "_s, u"KIVO-COLLECTION "_s};

std::optional<QUrl> parsedUrl(const std::optional<QString> &text)
{
    if (!text)
        return std::nullopt;
    const QUrl url(*text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace

GridController::GridController(QObject *parent)
    : QObject(parent), m_rows(new ItemListModel(this)), m_railRows(new ItemListModel(this))
{
    connect(m_rows, &ItemListModel::countChanged, this, &GridController::updateEmptyState);
    connect(m_railRows, &ItemListModel::countChanged, this, [this] {
        Q_EMIT railShownChanged();
        updateEmptyState();
    });
}

GridController::~GridController() = default;

void GridController::setStore(Store *store)
{
    if (m_store == store)
        return;
    if (m_store)
        m_store->disconnect(this);
    m_store = store;
    if (m_store) {
        connect(m_store, &Store::allRowsChanged, this, &GridController::reloadRows);
        connect(m_store, &Store::railItemsChanged, this, &GridController::reloadRail);
        connect(m_store, &Store::tagNamesByItemChanged, this, [this] {
            reloadRows();
            reloadRail();
        });
        connect(m_store, &Store::selectedItemIdChanged, this, [this] {
            if (m_keyboardFocusActive)
                setRingId(m_store->selectedItemId());
        });
        connect(m_store, &Store::selectionAboutToChange, this, [this](const QString &oldKey) {
            rememberScrollAnchor(oldKey);
            m_restoreAnchorPending = true;
            closePreview();
        });
        connect(m_store, &Store::selectionChanged, this, &GridController::updateEmptyState);
        connect(m_store, &Store::searchTextChanged, this, &GridController::updateEmptyState);
        connect(m_store, &Store::countsChanged, this, &GridController::updateEmptyState);
    }
    reloadRows();
    reloadRail();
    // The lists may have been empty before and after: the words are worked out here, not on a change.
    updateEmptyState();
    Q_EMIT storeChanged();
}

void GridController::setSettings(AppSettings *settings)
{
    if (m_settings == settings)
        return;
    m_settings = settings;
    Q_EMIT settingsChanged();
}

void GridController::setCardView(MasonryView *view)
{
    if (m_cardView == view)
        return;
    m_cardView = view;
    Q_EMIT cardViewChanged();
}

void GridController::setGridNavWidth(double width)
{
    if (m_gridNavWidth == width)
        return;
    m_gridNavWidth = width;
    Q_EMIT gridNavWidthChanged();
}

void GridController::setRevealItemId(const QString &id)
{
    if (m_revealItemId == id)
        return;
    m_revealItemId = id;
    Q_EMIT revealItemIdChanged();
    if (id.isEmpty() || m_rows->indexOf(id) < 0)
        return;
    // Taken at once; the scroll waits for the layout of this turn of the event loop to settle.
    const double anchor = m_revealAnchor.value_or(0.5);
    m_revealItemId.clear();
    Q_EMIT revealItemIdChanged();
    QTimer::singleShot(0, this, [this, id, anchor] { Q_EMIT scrollToItem(id, anchor); });
}

void GridController::setKeyboardFocusActive(bool active)
{
    if (m_keyboardFocusActive == active)
        return;
    m_keyboardFocusActive = active;
    setRingId(active && m_store ? m_store->selectedItemId() : QString());
    Q_EMIT keyboardFocusActiveChanged();
}

void GridController::setRingId(const QString &id)
{
    if (m_ringId == id)
        return;
    m_ringId = id;
    Q_EMIT ringIdChanged();
}

void GridController::reloadRows()
{
    if (!m_store) {
        m_rows->setItems({});
        return;
    }
    m_rows->setItems(m_store->allRows(), m_store->tagNamesByItem());
    if (m_restoreAnchorPending) {
        m_restoreAnchorPending = false;
        restoreScrollAnchor();
    }
}

void GridController::reloadRail()
{
    m_railRows->setItems(m_store ? m_store->railItems() : QList<LibraryItem>(),
        m_store ? m_store->tagNamesByItem() : QHash<QString, QStringList>());
}

void GridController::updateEmptyState()
{
    EmptyState state;
    // Which words fit an empty list depends on whether the library is empty; in the window the
    // numbers come a moment after the first list, and until then nothing is said.
    if (m_store && isEmpty() && m_store->countsKnown()) {
        const bool libraryEmpty = m_store->allCount() == 0 && m_store->hiddenCount() == 0;
        state = EmptyState::forSelection(m_store->selection(), m_store->searchText(), libraryEmpty);
    }
    if (state.title == m_emptyTitle && state.message == m_emptyMessage)
        return;
    m_emptyTitle = state.title;
    m_emptyMessage = state.message;
    Q_EMIT emptyStateChanged();
}

QList<GridNav::Cell> GridController::gridNavCells()
{
    if (!m_store)
        return {};
    const double columns = m_settings ? m_settings->gridColumns() : 4.0;
    const QString key = GridNav::cellsKey(m_store->allRows(), m_gridNavWidth, columns);
    if (key != m_navCellsKey) {
        const CardSettings cardSettings = m_settings ? CardSettings::from(*m_settings) : CardSettings{};
        m_navCells = GridNav::estimateCells(m_store->allRows(), int(columns), m_gridNavWidth, cardSettings);
        m_navCellsKey = key;
    }
    return m_navCells;
}

void GridController::moveGridFocus(int dx, int dy)
{
    if (!m_store)
        return;
    setKeyboardFocusActive(true);
    m_revealAnchor.reset();
    GridNav::FocusContext context;
    context.viewMode = m_store->viewMode();
    context.gridNavWidth = m_gridNavWidth;
    context.cells = [this] { return gridNavCells(); };
    context.isVisible = [this](const QString &id) { return m_cardView && m_cardView->isCardVisible(id); };
    const QString focused = m_store->selectedItemId();
    const GridNav::FocusMove move = GridNav::moveFocus(
        m_store->allRows(), focused.isEmpty() ? std::nullopt : std::optional(focused), dx, dy, context);
    if (!move.select)
        return;
    m_store->selectItem(*move.select);
    if (move.reveal)
        setRevealItemId(*move.select);
}

void GridController::requestItemMenu(const QString &itemId, QQuickItem *anchor, double x, double y)
{
    if (itemId.isEmpty())
        return;
    Q_EMIT itemMenuRequested(itemId, anchor, x, y);
}

void GridController::clickItem(const QString &itemId, int clickCount, int modifiers)
{
    if (!m_store)
        return;
    using namespace KivoItemGestures;
    const ClickAction action = clickAction(Qt::KeyboardModifiers(modifiers),
        {false, clickCount, !m_store->selectedItemIds().isEmpty(), !m_store->detailsItemId().isEmpty()});
    if (action == ClickAction::none)
        return;
    setKeyboardFocusActive(false);
    const auto closeDetailsForMany = [this] {
        if (m_store->selectedItemIds().size() >= 2 && !m_store->detailsItemId().isEmpty())
            m_store->setDetailsItemId({});
    };
    switch (action) {
    case ClickAction::selectRange:
        m_store->selectRangeTo(itemId);
        closeDetailsForMany();
        break;
    case ClickAction::toggle:
        m_store->toggleSelection(itemId);
        m_store->setSelectionAnchorId(itemId);
        closeDetailsForMany();
        break;
    case ClickAction::showDetails:
        m_store->setDetailsItemId(itemId);
        break;
    case ClickAction::toggleInSelection:
        m_store->toggleSelection(itemId);
        m_store->setSelectionAnchorId(itemId);
        break;
    case ClickAction::followDetails:
        m_store->selectItem(itemId);
        m_store->setDetailsItemId(itemId);
        break;
    case ClickAction::open:
        openItem(itemId);
        break;
    case ClickAction::none:
        break;
    }
}

bool GridController::handleKey(int key, int modifiers)
{
    if (!m_store)
        return false;
    using namespace KivoItemGestures;
    const bool previewOpen = !m_previewItemId.isEmpty();
    if (previewOpen && key == Qt::Key_Escape) {
        closePreview();
        return true;
    }
    const QString selected = m_store->selectedItemId();
    const KeyState state{!m_store->selectedItemIds().isEmpty(), m_keyboardFocusActive, previewOpen,
        !selected.isEmpty() && m_rows->indexOf(selected) >= 0};
    const KeyAction action = keyAction(key, Qt::KeyboardModifiers(modifiers), state);
    switch (action) {
    case KeyAction::none:
        return false;
    case KeyAction::paste:
        paste();
        break;
    case KeyAction::trashSelection:
        m_store->trashSelection();
        break;
    case KeyAction::trashFocused:
        trashFocused();
        break;
    case KeyAction::fewerColumns:
    case KeyAction::moreColumns:
        if (m_settings)
            m_settings->setGridColumns(stepColumns(m_settings->gridColumns(), action));
        break;
    case KeyAction::openSource:
        openSource();
        break;
    case KeyAction::open:
        openItem(selected);
        break;
    case KeyAction::lightbox:
        if (previewOpen)
            closePreview();
        else if (!m_rows->items().isEmpty())
            openLightbox(state.selectedInList ? selected : m_rows->items().first().id);
        break;
    case KeyAction::clearSelection:
        m_store->clearSelection();
        break;
    case KeyAction::moveLeft:
    case KeyAction::moveRight:
        if (previewOpen)
            stepPreview(action == KeyAction::moveLeft ? -1 : 1);
        else
            moveGridFocus(action == KeyAction::moveLeft ? -1 : 1, 0);
        break;
    case KeyAction::moveUp:
    case KeyAction::moveDown:
        if (!previewOpen)
            moveGridFocus(0, action == KeyAction::moveUp ? -1 : 1);
        break;
    case KeyAction::menu: {
        // Under the card's top left corner, where a pointer that clicked it would be.
        QQuickItem *card = m_cardView ? m_cardView->cardFor(selected) : nullptr;
        if (card && !card->isVisible())
            card = nullptr;
        requestItemMenu(selected, card, card ? card->width() / 4 : 0, card ? card->height() / 4 : 0);
        break;
    }
    }
    return true;
}

void GridController::openItem(const QString &itemId)
{
    if (!m_store || itemId.isEmpty())
        return;
    setKeyboardFocusActive(false);
    m_store->selectItem(itemId);
    const auto item = rowById(itemId);
    if (item && item->kind == u"link") {
        if (const auto url = parsedUrl(item->sourceURL)) {
            QDesktopServices::openUrl(*url);
            return;
        }
    }
    openLightbox(itemId);
}

void GridController::openLightbox(const QString &itemId)
{
    if (!m_store || itemId.isEmpty())
        return;
    m_store->selectItem(itemId);
    m_store->recordLauncherOpen(itemId);
    if (m_previewItemId == itemId)
        return;
    m_previewItemId = itemId;
    Q_EMIT previewItemIdChanged();
}

void GridController::closePreview()
{
    if (m_previewItemId.isEmpty())
        return;
    m_previewItemId.clear();
    Q_EMIT previewItemIdChanged();
}

void GridController::stepPreview(int step)
{
    const int at = m_rows->indexOf(m_previewItemId);
    const int next = std::clamp(at + step, 0, m_rows->count() - 1);
    if (at < 0 || next == at)
        return;
    m_previewItemId = m_rows->idAt(next);
    m_store->selectItem(m_previewItemId);
    Q_EMIT previewItemIdChanged();
}

void GridController::openSource()
{
    const QString id = m_previewItemId.isEmpty() ? m_store->selectedItemId() : m_previewItemId;
    const auto item = rowById(id);
    if (const auto url = item ? parsedUrl(item->sourceURL) : std::nullopt)
        QDesktopServices::openUrl(*url);
    else
        m_store->showToast(u"No Source for This One"_s);
}

void GridController::trashFocused()
{
    // ### The ash fall that carries the card away is not built yet; the item goes to the trash at once.
    m_store->deleteItem(m_store->selectedItemId());
}

QStringList GridController::dragIds(const QString &itemId) const
{
    if (!m_store)
        return {itemId};
    const QSet<QString> &selected = m_store->selectedItemIds();
    if (selected.size() < 2 || !selected.contains(itemId))
        return {itemId};
    QStringList ids;
    for (const ItemListModel *model : {m_rows, m_railRows}) {
        for (const LibraryItem &item : model->items()) {
            if (selected.contains(item.id))
                ids.append(item.id);
        }
    }
    return ids;
}

QVariantMap GridController::dragMimeData(const QString &itemId) const
{
    const QStringList ids = dragIds(itemId);
    QStringList addresses;
    for (const QString &id : ids) {
        const auto item = rowById(id);
        if (!item)
            continue;
        if (item->filePath)
            addresses.append(
                QString::fromUtf8(QUrl::fromLocalFile(LibraryLocation::resolve(*item->filePath)).toEncoded()));
        else if (const auto url = parsedUrl(item->sourceURL))
            addresses.append(QString::fromUtf8(url->toEncoded()));
    }
    QVariantMap data;
    if (!addresses.isEmpty())
        data.insert(u"text/uri-list"_s, addresses.join(u"\r\n"_s) + u"\r\n"_s);
    data.insert(u"text/plain"_s, payloadText(ids));
    return data;
}

QString GridController::payloadText(const QStringList &ids)
{
    if (ids.size() >= 2)
        return u"KIVO-ITEMS "_s + ids.join(u',');
    return u"KIVO-ITEM "_s + ids.value(0);
}

bool GridController::acceptsDrop(const QString &text) const
{
    for (const QString &prefix : ownPayloadPrefixes) {
        if (text.startsWith(prefix))
            return false;
    }
    return true;
}

bool GridController::drop(const QList<QUrl> &urls, const QString &text)
{
    if (!acceptsDrop(text) || (urls.isEmpty() && text.trimmed().isEmpty()))
        return false;
    const auto destination = dropDestination();
    if (m_importHook)
        m_importHook(urls, text, destination);
    else
        qCInfo(lcGrid) << "import of" << urls.size() << "addresses and" << text.size() << "characters into"
                       << destination.value_or(u"the library"_s) << "waits for the import pipeline";
    return true;
}

void GridController::paste()
{
    if (m_pasteHook) {
        m_pasteHook(dropDestination());
        return;
    }
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    if (!mime)
        return;
    drop(mime->hasUrls() ? mime->urls() : QList<QUrl>(), mime->hasText() ? mime->text() : QString());
}

std::optional<QString> GridController::dropDestination() const
{
    if (!m_store)
        return std::nullopt;
    const SidebarSelection &selection = m_store->selection();
    if (selection.isCollection())
        return selection.collectionId();
    if (selection.kind() == SidebarSelection::Kind::inbox)
        return m_store->inboxId();
    return std::nullopt;
}

std::optional<LibraryItem> GridController::rowById(const QString &itemId) const
{
    for (const ItemListModel *model : {m_rows, m_railRows}) {
        const int row = model->indexOf(itemId);
        if (row >= 0)
            return model->items().at(row);
    }
    return std::nullopt;
}

void GridController::rememberScrollAnchor(const QString &selectionKey)
{
    if (!m_cardView || !m_store)
        return;
    const QString top = m_cardView->topVisibleItem();
    if (!top.isEmpty())
        m_store->setScrollAnchor(selectionKey, top);
}

void GridController::restoreScrollAnchor()
{
    const QString anchor = m_store->scrollAnchor(m_store->selectionKey());
    if (!anchor.isEmpty() && m_rows->indexOf(anchor) >= 0) {
        setRevealAnchor(0.0);
        setRevealItemId(anchor);
        m_revealAnchor.reset();
    } else {
        QTimer::singleShot(0, this, [this] { Q_EMIT scrollToItem(QString(), 0); });
    }
}

} // namespace kivo
