#include "surfaces/capture/capturepalette.h"

#include "core/appsettings.h"
#include "core/store.h"
#include "surfaces/capture/clippreviewprovider.h"

#include <QCursor>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr int panelWidth = 420;
const QString cardPreviewKey = u"card"_s;

} // namespace

CapturePalette::CapturePalette(Store *store, AppSettings *settings, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_settings(settings)
{
    m_model.onFinish = [this] { finish(); };
    m_model.onCancel = [this] { cancel(); };
}

CapturePalette::~CapturePalette()
{
    delete m_panel;
}

void CapturePalette::setEngine(QQmlEngine *engine)
{
    m_engine = engine;
    if (engine && !engine->imageProvider(QString::fromLatin1(ClipPreviewProvider::providerId)))
        engine->addImageProvider(QString::fromLatin1(ClipPreviewProvider::providerId), new ClipPreviewProvider);
}

int CapturePalette::present(const LibraryItem &item, const QImage &preview, bool bound)
{
    // One card at a time: the one on screen goes as if cancelled, without a word.
    if (m_onScreen) {
        if (m_model.bound())
            discard(m_model.item().id);
        else
            m_discardOnBind = true;
        close();
    } else if (m_saveOnBind && !m_model.bound()) {
        m_waitingSaves.insert(m_session, decision());
    }
    ++m_session;
    m_saveOnBind = false;
    m_discardOnBind = false;
    m_boundItemId = bound ? std::optional<QString>(item.id) : std::nullopt;
    if (m_store)
        m_store->setCapturePendingItemId(item.id);

    QList<CardCollection> collections;
    if (m_store) {
        for (const CollectionActivity &collection : m_store->collectionsByLastAddition())
            collections.append({collection.id, collection.name});
    }
    m_model.setCollections(collections);
    m_model.reset(item, preview, bound);
    ClipPreviewProvider::put(cardPreviewKey, preview);
    Q_EMIT previewSourceChanged();
    showPanel();
    return m_session;
}

void CapturePalette::presentItem(const QString &itemId)
{
    if (!m_store)
        return;
    if (const std::optional<LibraryItem> item = m_store->itemById(itemId))
        present(*item, QImage(), true);
}

void CapturePalette::noteSavedItem(const QString &itemId, int session)
{
    if (session == m_session && !m_discardOnBind && m_store)
        m_store->setCapturePendingItemId(itemId);
}

void CapturePalette::bind(const std::optional<QString> &itemId, int session)
{
    if (session != m_session) {
        // The card is gone. Its item was never decided on, so it goes as a late cancel, unless
        // the user had finished that card before a newer one came.
        const std::optional<Decision> waiting = m_waitingSaves.contains(session)
            ? std::optional<Decision>(m_waitingSaves.take(session))
            : std::nullopt;
        if (itemId && m_store && m_store->itemById(*itemId)) {
            if (waiting)
                save(*itemId, *waiting);
            else
                discard(*itemId);
        }
        return;
    }
    if (!itemId) {
        close();
        if (m_store) {
            m_store->setCapturePendingItemId({});
            m_store->showToast(u"Capture Failed"_s);
        }
        return;
    }
    if (m_discardOnBind) {
        // The user cancelled this card already and was told so.
        discard(*itemId);
        return;
    }
    const std::optional<LibraryItem> item = m_store ? m_store->itemById(*itemId) : std::nullopt;
    if (!item) {
        close();
        if (m_store) {
            m_store->setCapturePendingItemId({});
            m_store->showToast(u"Capture Failed"_s);
        }
        return;
    }
    m_store->setCapturePendingItemId(item->id);
    m_model.bindItem(*item);
    m_boundItemId = item->id;
    if (m_saveOnBind) {
        m_saveOnBind = false;
        save(item->id, decision());
    }
}

void CapturePalette::finish()
{
    if (!m_model.bound()) {
        m_saveOnBind = true;
        close();
        return;
    }
    const QString itemId = m_boundItemId.value_or(m_model.item().id);
    close();
    save(itemId, decision());
}

void CapturePalette::cancel()
{
    if (!m_model.bound()) {
        m_discardOnBind = true;
        close();
        if (m_store)
            m_store->setCapturePendingItemId({});
    } else {
        close();
        discard(m_boundItemId.value_or(m_model.item().id));
    }
    if (m_store)
        m_store->showToast(u"Capture Cancelled"_s);
}

bool CapturePalette::handleKey(int key, int modifiers, const QString &text)
{
    return m_model.handleKey(key, Qt::KeyboardModifiers(modifiers), text);
}

QString CapturePalette::previewSource() const
{
    if (!m_model.hasPreview())
        return {};
    return u"image://"_s + QString::fromLatin1(ClipPreviewProvider::providerId) + u'/' + cardPreviewKey + u'?'
        + QString::number(m_model.previewSerial());
}

CapturePalette::Decision CapturePalette::decision() const
{
    Decision decided{m_model.title(), m_model.chosen(), m_model.pendingTags()};
    // A tag still being typed when the card was finished counts as given.
    if (!m_model.tagDraft().trimmed().isEmpty() && !decided.tags.contains(m_model.tagDraft().trimmed()))
        decided.tags.append(m_model.tagDraft().trimmed());
    return decided;
}

void CapturePalette::save(const QString &itemId, const Decision &decision)
{
    if (!m_store)
        return;
    Store &store = *m_store;
    if (!decision.title.trimmed().isEmpty())
        store.renameItem(itemId, decision.title);
    // Filing records the last filed collection; write failures are logged by the Store.
    if (decision.chosen) {
        if (!decision.chosen->id.isEmpty())
            store.fileItem(itemId, decision.chosen->id);
        else
            store.fileItemIntoNew(itemId, decision.chosen->name);
    }
    for (const QString &tag : decision.tags) {
        if (!tag.trimmed().isEmpty())
            store.addTag({itemId}, tag);
    }
    if (store.capturePendingItemId() == itemId)
        store.setCapturePendingItemId({});
    store.reloadAll();
    store.showToast(u"Saved to "_s + (decision.chosen ? decision.chosen->name : u"Inbox"_s));
}

void CapturePalette::discard(const QString &itemId)
{
    if (!m_store)
        return;
    m_store->deleteItem(itemId);
    if (m_store->capturePendingItemId() == itemId)
        m_store->setCapturePendingItemId({});
}

void CapturePalette::close()
{
    if (m_panel)
        m_panel->hide();
    if (!m_onScreen)
        return;
    m_onScreen = false;
    Q_EMIT onScreenChanged();
}

void CapturePalette::showPanel()
{
    if (!m_onScreen) {
        m_onScreen = true;
        Q_EMIT onScreenChanged();
    }
    if (!m_engine)
        return;
    if (!m_panel) {
        if (!m_component)
            m_component = new QQmlComponent(m_engine, QUrl(u"qrc:/Kivo/capture/CaptureCard.qml"_s), this);
        QObject *object = m_component->createWithInitialProperties({{u"capture"_s, QVariant::fromValue(this)}});
        m_panel = qobject_cast<QQuickWindow *>(object);
        if (!m_panel) {
            qWarning("The capture card could not be made: %s", qPrintable(m_component->errorString()));
            delete object;
            return;
        }
    }
    // The card opens on the screen that holds the pointer, in the middle, a little above centre.
    QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (screen) {
        const QRect visible = screen->availableGeometry();
        m_panel->setScreen(screen);
        m_panel->setPosition(visible.x() + (visible.width() - panelWidth) / 2,
            visible.y() + int(visible.height() * 0.22));
    }
    QMetaObject::invokeMethod(m_panel, "appear");
    m_panel->show();
    m_panel->raise();
    m_panel->requestActivate();
}

} // namespace kivo
