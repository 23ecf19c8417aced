#include "surfaces/capture/pendingshelf.h"

#include "ingest/capture/captureflow.h"
#include "ingest/capture/pendingclips.h"

#include <QCursor>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr int panelWidth = 300;
constexpr int edgeGap = 12;

} // namespace

PendingShelf::PendingShelf(PendingClips *pending, Store *store, CaptureFlow *flow, QObject *parent)
    : QObject(parent)
    , m_pending(pending)
    , m_flow(flow)
    , m_model(pending, store)
{
    if (flow) {
        connect(flow, &CaptureFlow::pendingShelfWanted, this, &PendingShelf::show);
        connect(flow, &CaptureFlow::pendingShelfDismissed, this, &PendingShelf::hide);
    }
    if (pending)
        connect(pending, &PendingClips::entriesChanged, this, &PendingShelf::filingDeferredChanged);
}

PendingShelf::~PendingShelf()
{
    delete m_panel;
}

void PendingShelf::setEngine(QQmlEngine *engine)
{
    m_engine = engine;
}

bool PendingShelf::filingDeferred() const
{
    return m_pending && m_pending->deferredFileTarget().has_value();
}

void PendingShelf::show()
{
    if (!m_showing) {
        m_showing = true;
        Q_EMIT showingChanged();
    }
    if (!m_engine)
        return;
    if (!m_panel) {
        QQmlComponent component(m_engine, QUrl(u"qrc:/Kivo/capture/PendingClipsPanel.qml"_s));
        QObject *object = component.createWithInitialProperties({{u"shelf"_s, QVariant::fromValue(this)}});
        m_panel = qobject_cast<QQuickWindow *>(object);
        if (!m_panel) {
            qWarning("The pending panel could not be made: %s", qPrintable(component.errorString()));
            delete object;
            return;
        }
    }
    QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (screen) {
        const QRect visible = screen->availableGeometry();
        m_panel->setScreen(screen);
        m_panel->setHeight(std::min(m_panel->height(), visible.height() - 2 * edgeGap));
        m_panel->setPosition(visible.right() - panelWidth - edgeGap, visible.y() + (visible.height() - m_panel->height()) / 2);
    }
    m_panel->show();
    m_panel->raise();
    // Its field takes the collection's name from the keyboard.
    m_panel->requestActivate();
}

void PendingShelf::hide()
{
    if (m_panel)
        m_panel->hide();
    if (!m_showing)
        return;
    m_showing = false;
    Q_EMIT showingChanged();
}

void PendingShelf::submit(const QString &query)
{
    if (m_flow)
        m_flow->filePending(query);
    Q_EMIT filingDeferredChanged();
}

void PendingShelf::keepInInbox()
{
    if (m_flow)
        m_flow->endClipSession();
    else
        hide();
}

} // namespace kivo
