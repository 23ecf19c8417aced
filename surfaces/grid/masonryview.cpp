#include "surfaces/grid/masonryview.h"

#include "surfaces/grid/itemlistmodel.h"
#include "surfaces/thumbnails/thumbnailprovider.h"

#include <QFutureWatcher>
#include <QQmlContext>
#include <QtConcurrent/QtConcurrentRun>
#include <QQuickWindow>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

bool declares(const QObject *object, const char *name)
{
    return object->metaObject()->indexOfProperty(name) >= 0;
}

/** Writes a property of a card when its type declares it. */
void writeIfValid(QObject *card, const QMetaProperty &property, const QVariant &value)
{
    if (property.isValid())
        property.write(card, value);
}

/** Writes a property the delegate declares; a delegate that does not want it simply lacks it. */
void writeIfDeclared(QObject *object, const char *name, const QVariant &value)
{
    if (declares(object, name))
        object->setProperty(name, value);
}

} // namespace

MasonryView::MasonryView(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents, false);
}

MasonryView::~MasonryView()
{
    qDeleteAll(m_cards);
    qDeleteAll(m_cardPool);
    qDeleteAll(m_sections);
    qDeleteAll(m_sectionPool);
}

void MasonryView::setModel(ItemListModel *model)
{
    if (m_model == model)
        return;
    if (m_model)
        m_model->disconnect(this);
    m_model = model;
    m_cardProperties = {}; // other roles
    if (m_model) {
        connect(m_model, &ItemListModel::itemsChanged, this, &MasonryView::invalidateLayout);
        connect(m_model, &QAbstractItemModel::modelReset, this, &MasonryView::invalidateLayout);
        connect(m_model, &QAbstractItemModel::dataChanged, this, &MasonryView::onDataChanged);
    }
    releaseAllCards();
    invalidateLayout();
    Q_EMIT modelChanged();
}

void MasonryView::setDelegate(QQmlComponent *delegate)
{
    if (m_delegate == delegate)
        return;
    releaseAllCards();
    qDeleteAll(m_cardPool);
    m_cardPool.clear();
    m_delegate = delegate;
    m_cardProperties = {}; // another type of card, whose type may even reuse the old one's address
    polish();
    Q_EMIT delegateChanged();
}

void MasonryView::setSectionDelegate(QQmlComponent *delegate)
{
    if (m_sectionDelegate == delegate)
        return;
    releaseAllSections();
    qDeleteAll(m_sectionPool);
    m_sectionPool.clear();
    m_sectionDelegate = delegate;
    polish();
    Q_EMIT sectionDelegateChanged();
}

void MasonryView::setTimeline(bool timeline)
{
    if (m_timeline == timeline)
        return;
    m_timeline = timeline;
    invalidateLayout();
    Q_EMIT timelineChanged();
}

void MasonryView::setColumns(int columns)
{
    if (m_columns == columns)
        return;
    m_columns = columns;
    invalidateLayout();
    Q_EMIT columnsChanged();
}

void MasonryView::setSpacing(double spacing)
{
    if (m_settings.gridSpacing == spacing)
        return;
    m_settings.gridSpacing = spacing;
    invalidateLayout();
    Q_EMIT spacingChanged();
}

void MasonryView::setCardShape(const QString &shape)
{
    if (m_settings.cardShape == shape)
        return;
    m_settings.cardShape = shape;
    invalidateLayout();
    Q_EMIT cardShapeChanged();
}

void MasonryView::setCardShowTitle(bool show)
{
    if (m_settings.cardShowTitle == show)
        return;
    m_settings.cardShowTitle = show;
    invalidateLayout();
    Q_EMIT cardShowTitleChanged();
}

void MasonryView::setCardShowTags(bool show)
{
    if (m_settings.cardShowTags == show)
        return;
    m_settings.cardShowTags = show;
    invalidateLayout();
    Q_EMIT cardShowTagsChanged();
}

void MasonryView::setViewportY(double y)
{
    if (m_viewportY == y)
        return;
    m_viewportY = y;
    polish();
    Q_EMIT viewportYChanged();
}

void MasonryView::setViewportHeight(double height)
{
    if (m_viewportHeight == height)
        return;
    m_viewportHeight = height;
    polish();
    Q_EMIT viewportHeightChanged();
}

void MasonryView::setCacheBuffer(double buffer)
{
    if (m_cacheBuffer == buffer)
        return;
    m_cacheBuffer = buffer;
    polish();
    Q_EMIT cacheBufferChanged();
}

void MasonryView::setSelectedIds(const QStringList &ids)
{
    if (m_selectedList == ids)
        return;
    const QSet<QString> before = m_selected;
    m_selectedList = ids;
    m_selected = QSet<QString>(ids.cbegin(), ids.cend());
    for (auto it = m_cards.cbegin(); it != m_cards.cend(); ++it) {
        if (before.contains(it.key()) != m_selected.contains(it.key()))
            writeState(it.value(), it.key());
    }
    Q_EMIT selectedIdsChanged();
}

void MasonryView::setFocusedId(const QString &id)
{
    if (m_focusedId == id)
        return;
    const QString before = m_focusedId;
    m_focusedId = id;
    for (const QString &changed : {before, id}) {
        if (QQuickItem *card = m_cards.value(changed))
            writeState(card, changed);
    }
    Q_EMIT focusedIdChanged();
}

const CardLayout &MasonryView::layout()
{
    if (m_layoutDirty)
        relayout();
    return m_layout;
}

int MasonryView::rowOf(const QString &itemId)
{
    if (m_layoutDirty)
        relayout();
    static const QList<LibraryItem> none;
    const QList<LibraryItem> &items = m_model ? m_model->items() : none;
    // The table is made when first asked for, and then only for the rows not yet in it: a layout
    // pass does not pay for it, at launch or after an edit.
    if (m_indexedRows < items.size()) {
        m_rowOfId.reserve(items.size());
        for (qsizetype row = m_indexedRows; row < items.size(); ++row)
            m_rowOfId.insert(items[row].id, int(row));
        m_indexedRows = items.size();
    }
    return m_rowOfId.value(itemId, -1);
}

QRectF MasonryView::frameOf(const QString &itemId)
{
    const int row = rowOf(itemId);
    if (row < 0 || row >= m_layout.frames().size())
        return {};
    return m_layout.frames()[row];
}

QRectF MasonryView::viewport() const
{
    if (m_viewportHeight <= 0 || width() <= 0)
        return {};
    return {0, m_viewportY, width(), m_viewportHeight};
}

bool MasonryView::isCardVisible(const QString &itemId)
{
    return GridNav::isFrameVisible(frameOf(itemId), viewport());
}

double MasonryView::scrollTargetFor(const QString &itemId, double anchorY)
{
    const QRectF frame = frameOf(itemId);
    if (frame.isNull())
        return m_viewportY;
    const double target = frame.top() + frame.height() * anchorY - m_viewportHeight * anchorY;
    return std::clamp(target, 0.0, std::max(contentHeight() - m_viewportHeight, 0.0));
}

QString MasonryView::itemAt(double x, double y)
{
    for (const int row : layout().rowsIn(y, y + 1)) {
        if (m_layout.frames()[row].contains(QPointF(x, y)))
            return m_model ? m_model->idAt(row) : QString();
    }
    return {};
}

QString MasonryView::topVisibleItem()
{
    const QRectF shown = viewport();
    if (shown.isNull() || !m_model)
        return {};
    int best = -1;
    for (const int row : layout().rowsIn(shown.top(), shown.bottom())) {
        if (best < 0 || m_layout.frames()[row].top() < m_layout.frames()[best].top())
            best = row;
    }
    return best < 0 ? QString() : m_model->idAt(best);
}

void MasonryView::componentComplete()
{
    QQuickItem::componentComplete();
    invalidateLayout();
}

void MasonryView::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.width() != oldGeometry.width())
        invalidateLayout();
}

void MasonryView::invalidateLayout()
{
    m_layoutDirty = true;
    polish();
}

void MasonryView::updatePolish()
{
    if (m_layoutDirty)
        relayout();
    syncDelegates();
}

void MasonryView::relayout()
{
    m_layoutDirty = false;
    ++m_layoutGeneration; // a layout still being continued on a worker is for an older list
    const double before = m_layout.contentHeight();
    static const QList<LibraryItem> none;
    const QList<LibraryItem> &items = m_model ? m_model->items() : none;
    // The launch's first screenful is followed by the whole list: the cards already placed stay
    // where they are, and only the rows after them are placed.
    const bool continues = !m_timeline && m_layout.continuesAsGrid(m_columns, width(), m_settings)
        && extendsLaidOutRows(items);
    if (continues && items.size() - m_laidOut.size() >= rowsContinuedOnAWorker) {
        continueOnAWorker(items);
        return;
    }
    if (continues) {
        // The rows already indexed and the cards already placed keep their rows and frames.
        m_layout.appendToGrid(items);
    } else {
        m_layout = m_timeline ? CardLayout::timeline(items, m_columns, width(), m_settings, QDate::currentDate())
                              : CardLayout::grid(items, m_columns, width(), m_settings);
        m_rowOfId.clear();
        m_indexedRows = 0;
        // Cards keep their item but may have moved: every one on screen is placed again.
        if (!m_cards.isEmpty()) {
            for (qsizetype row = 0; row < items.size(); ++row) {
                if (QQuickItem *card = m_cards.value(items[row].id))
                    placeCard(card, int(row));
            }
        }
    }
    // Only a short list's records are kept: a long one would outlive its replacement in the model
    // and be freed here, on the main thread.
    m_laidOut = items.size() <= laidOutRowsKept ? items : QList<LibraryItem>();
    releaseAllSections();
    updateThumbnailWidth();
    setImplicitHeight(m_layout.contentHeight());
    if (before != m_layout.contentHeight())
        Q_EMIT contentHeightChanged();
    Q_EMIT layoutChanged();
}

void MasonryView::continueOnAWorker(const QList<LibraryItem> &items)
{
    // Placing a long list's rows holds the window for tens of milliseconds, a third of a second at a
    // million; meanwhile the grid goes on showing the rows it has, which are all at its top.
    const quint64 generation = m_layoutGeneration;
    auto *watcher = new QFutureWatcher<CardLayout>(this);
    connect(watcher, &QFutureWatcher<CardLayout>::finished, this, [this, watcher, generation, items] {
        watcher->deleteLater();
        if (generation != m_layoutGeneration)
            return;
        const double before = m_layout.contentHeight();
        m_layout = watcher->result();
        m_laidOut = items.size() <= laidOutRowsKept ? items : QList<LibraryItem>();
        setImplicitHeight(m_layout.contentHeight());
        if (before != m_layout.contentHeight())
            Q_EMIT contentHeightChanged();
        Q_EMIT layoutChanged();
        polish(); // cards for the rows now placed near the viewport
    });
    watcher->setFuture(QtConcurrent::run([layout = m_layout, items]() mutable {
        layout.appendToGrid(items);
        return layout;
    }));
}

bool MasonryView::extendsLaidOutRows(const QList<LibraryItem> &items) const
{
    if (m_laidOut.isEmpty() || items.size() <= m_laidOut.size() || m_layout.frames().size() != m_laidOut.size())
        return false;
    for (qsizetype i = 0; i < m_laidOut.size(); ++i) {
        if (!(items[i] == m_laidOut[i]))
            return false;
    }
    return true;
}

void MasonryView::syncDelegates()
{
    if (!m_model || !m_delegate || !isComponentComplete())
        return;
    const double top = m_viewportY - m_cacheBuffer;
    const double bottom = m_viewportY + std::max(m_viewportHeight, 0.0) + m_cacheBuffer;
    const QList<int> rows = m_layout.rowsIn(top, bottom);
    const QList<LibraryItem> &items = m_model->items();

    QSet<QString> wanted;
    wanted.reserve(rows.size());
    for (const int row : rows)
        wanted.insert(items[row].id);
    const int before = int(m_cards.size());
    for (auto it = m_cards.begin(); it != m_cards.end();) {
        if (wanted.contains(it.key())) {
            ++it;
            continue;
        }
        it.value()->setVisible(false);
        m_cardPool.append(it.value());
        it = m_cards.erase(it);
    }
    for (const int row : rows) {
        const QString &id = items[row].id;
        if (m_cards.contains(id))
            continue;
        QQuickItem *card = takeCard(row);
        if (!card)
            break;
        m_cards.insert(id, card);
        placeCard(card, row);
        card->setVisible(true);
    }

    if (m_sectionDelegate) {
        releaseAllSections();
        for (const int index : m_layout.sectionsIn(top, bottom)) {
            const CardLayout::Section &info = m_layout.sections()[index];
            QQuickItem *section = m_sectionPool.isEmpty()
                ? create(m_sectionDelegate,
                    [&info](QObject *heading) {
                        return declares(heading, "title") ? QVariantMap{{u"title"_s, info.title}} : QVariantMap();
                    })
                : m_sectionPool.takeLast();
            if (!section)
                break;
            section->setPosition(info.frame.topLeft());
            section->setSize(info.frame.size());
            writeIfDeclared(section, "title", info.title);
            section->setVisible(true);
            m_sections.append(section);
        }
    }
    if (before != m_cards.size())
        Q_EMIT activeCountChanged();
}

QQuickItem *MasonryView::takeCard(int row)
{
    if (!m_cardPool.isEmpty()) {
        QQuickItem *card = m_cardPool.takeLast();
        writeData(card, row);
        return card;
    }
    return create(m_delegate, [this, row](QObject *card) { return cardValues(card, row); });
}

QQuickItem *MasonryView::create(QQmlComponent *component, const std::function<QVariantMap(QObject *)> &values)
{
    QQmlContext *context = component->creationContext() ? component->creationContext() : qmlContext(this);
    QObject *object = component->beginCreate(context);
    auto *item = qobject_cast<QQuickItem *>(object);
    if (!item) {
        delete object;
        qWarning() << "MasonryView: the delegate must be an Item" << component->errors();
        return nullptr;
    }
    // Required properties get their first values before the delegate completes.
    component->setInitialProperties(item, values(item));
    item->setParent(this);
    item->setParentItem(this);
    component->completeCreate();
    ++m_created;
    return item;
}

const MasonryView::CardProperties &MasonryView::cardPropertiesOf(const QObject *card) const
{
    const QMetaObject *type = card->metaObject();
    if (m_cardProperties.type == type)
        return m_cardProperties;
    // Every card of a grid is of one type: its properties are looked up by name once, not for
    // every card that comes into view.
    CardProperties found;
    found.type = type;
    const auto property = [type](const char *name) {
        const int at = type->indexOfProperty(name);
        return at >= 0 ? type->property(at) : QMetaProperty();
    };
    if (m_model) {
        const auto roles = m_model->roleNames();
        for (auto it = roles.cbegin(); it != roles.cend(); ++it) {
            if (const QMetaProperty declared = property(it.value().constData()); declared.isValid())
                found.roles.append({it.key(), declared});
        }
    }
    found.index = property("index");
    found.thumbnailWidth = property("thumbnailWidth");
    found.selected = property("selected");
    found.focused = property("focused");
    m_cardProperties = std::move(found);
    return m_cardProperties;
}

QVariantMap MasonryView::cardValues(QObject *card, int row) const
{
    const CardProperties &properties = cardPropertiesOf(card);
    QVariantMap values;
    const auto put = [&](const QMetaProperty &property, const QVariant &value) {
        if (property.isValid())
            values.insert(QString::fromLatin1(property.name()), value);
    };
    // Only the roles the card declares are worked out: dates, sizes and palettes cost real time
    // for every card that comes into view.
    const QModelIndex index = m_model->index(row);
    for (const auto &[role, property] : properties.roles)
        put(property, m_model->data(index, role));
    const QString id = m_model->idAt(row);
    const QRectF frame = m_layout.frames().value(row);
    // The card completes at its size, so its text is laid out once.
    values.insert(u"x"_s, frame.x());
    values.insert(u"y"_s, frame.y());
    values.insert(u"width"_s, frame.width());
    values.insert(u"height"_s, frame.height());
    put(properties.index, row);
    put(properties.thumbnailWidth, m_thumbnailWidth);
    put(properties.selected, m_selected.contains(id));
    put(properties.focused, !m_focusedId.isEmpty() && m_focusedId == id);
    return values;
}

void MasonryView::releaseAllCards()
{
    for (QQuickItem *card : std::as_const(m_cards)) {
        card->setVisible(false);
        m_cardPool.append(card);
    }
    const bool had = !m_cards.isEmpty();
    m_cards.clear();
    if (had)
        Q_EMIT activeCountChanged();
}

void MasonryView::releaseAllSections()
{
    for (QQuickItem *section : std::as_const(m_sections)) {
        section->setVisible(false);
        m_sectionPool.append(section);
    }
    m_sections.clear();
}

void MasonryView::placeCard(QQuickItem *card, int row)
{
    const QRectF frame = m_layout.frames().value(row);
    card->setPosition(frame.topLeft());
    card->setSize(frame.size());
    writeIfValid(card, cardPropertiesOf(card).index, row);
}

void MasonryView::writeData(QQuickItem *card, int row)
{
    const CardProperties &properties = cardPropertiesOf(card);
    // The size first, so that text is laid out at the card's width only once.
    const QRectF frame = m_layout.frames().value(row);
    card->setPosition(frame.topLeft());
    card->setSize(frame.size());
    const QModelIndex index = m_model->index(row);
    for (const auto &[role, property] : properties.roles)
        property.write(card, m_model->data(index, role));
    const QString id = m_model->idAt(row);
    writeIfValid(card, properties.index, row);
    writeIfValid(card, properties.thumbnailWidth, m_thumbnailWidth);
    writeIfValid(card, properties.selected, m_selected.contains(id));
    writeIfValid(card, properties.focused, !m_focusedId.isEmpty() && m_focusedId == id);
}

void MasonryView::writeState(QQuickItem *card, const QString &itemId)
{
    const CardProperties &properties = cardPropertiesOf(card);
    writeIfValid(card, properties.selected, m_selected.contains(itemId));
    writeIfValid(card, properties.focused, !m_focusedId.isEmpty() && m_focusedId == itemId);
}

void MasonryView::onDataChanged(const QModelIndex &from, const QModelIndex &to, const QList<int> &)
{
    for (int row = from.row(); row <= to.row(); ++row) {
        // Positions wait for the layout pass that follows every change of the list.
        if (QQuickItem *card = m_cards.value(m_model->idAt(row)))
            writeData(card, row);
    }
}

void MasonryView::updateThumbnailWidth()
{
    const double ratio = window() ? window()->effectiveDevicePixelRatio() : 1.0;
    const int bucket
        = ThumbnailProvider::widthBucket(GridNav::columnWidth(width(), m_columns, m_settings.gridSpacing) * ratio);
    if (bucket == m_thumbnailWidth)
        return;
    m_thumbnailWidth = bucket;
    for (QQuickItem *card : std::as_const(m_cards))
        writeIfDeclared(card, "thumbnailWidth", m_thumbnailWidth);
    Q_EMIT thumbnailWidthChanged();
}

} // namespace kivo
