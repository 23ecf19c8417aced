// The virtualised masonry in a real (offscreen) window: only cards near the viewport exist, they
// come back from the pool while scrolling, sit exactly on the layout's frames, keep their
// identity through a reload and carry the selection and focus the view is told about.

#include "surfaces/grid/itemlistmodel.h"
#include "surfaces/grid/masonryview.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"
#include "tests/testsupport.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>
#include <QtTest>

Q_IMPORT_QML_PLUGIN(KivoPlugin)

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

const QByteArray scene = R"(
import QtQuick
import Kivo

Window {
    width: 1000
    height: 800
    visible: true
    property alias view: masonry
    property alias flick: flick
    Flickable {
        id: flick
        anchors.fill: parent
        contentHeight: masonry.contentHeight
        MasonryView {
            id: masonry
            objectName: "masonry"
            width: flick.width
            height: contentHeight
            columns: 4
            spacing: 10
            viewportY: flick.contentY
            viewportHeight: flick.height
            cacheBuffer: 200
            delegate: Rectangle {
                required property int index
                required property string itemId
                required property bool selected
                required property bool focused
                required property int thumbnailWidth
                property int writes: 0
                onItemIdChanged: ++writes
                color: selected ? "red" : "grey"
            }
            sectionDelegate: Item {
                required property string title
            }
        }
    }
}
)";

QList<LibraryItem> makeItems(int count, int firstId = 0)
{
    QList<LibraryItem> items;
    items.reserve(count);
    for (int i = 0; i < count; ++i) {
        LibraryItem item;
        item.id = u"item-%1"_s.arg(firstId + i);
        item.kind = u"image"_s;
        item.filePath = item.id + u".jpg"_s;
        // Shapes from wide to tall, so columns grow unevenly.
        item.width = 1000;
        item.height = 400 + (i * 7919 % 1600);
        item.addedAt = 1.7e9 - (firstId + i) * 600.0;
        items.append(item);
    }
    return items;
}

QList<QQuickItem *> visibleCards(MasonryView *view)
{
    QList<QQuickItem *> cards;
    for (QQuickItem *child : view->childItems()) {
        if (child->isVisible() && child->property("itemId").isValid())
            cards.append(child);
    }
    return cards;
}

} // namespace

class TestMasonryView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void onlyCardsNearTheViewportExist();
    void cardsSitOnTheirFrames();
    void scrollingReusesCards();
    void reloadKeepsCardsAndMovesThem();
    void theRestOfTheListJoinsBelowTheFirstScreenful();
    void selectionAndFocusReachTheCards();
    void visibilityAndScrollTargets();
    void timelineHeadings();

private:
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<ItemListModel> m_model;
    MasonryView *m_view = nullptr;
    QObject *m_flick = nullptr;
};

void TestMasonryView::init()
{
    // The module's theme reads the appearance service.
    static AppearanceController appearance;
    QmlServices::publishAppearance(&appearance);
    m_engine = std::make_unique<QQmlEngine>();
    m_engine->addImportPath(u"qrc:/"_s);
    QQmlComponent component(m_engine.get());
    component.setData(scene, QUrl::fromLocalFile(u"/masonry.qml"_s));
    QVERIFY2(component.isReady(), qPrintable(component.errorString()));
    m_window.reset(qobject_cast<QQuickWindow *>(component.create()));
    QVERIFY2(m_window, qPrintable(component.errorString()));
    m_view = m_window->findChild<MasonryView *>(u"masonry"_s);
    m_flick = m_window->property("flick").value<QObject *>();
    QVERIFY(m_view && m_flick);
    m_model = std::make_unique<ItemListModel>();
    m_model->setItems(makeItems(100000));
    m_view->setModel(m_model.get());
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QTRY_VERIFY(m_view->activeCount() > 0);
}

void TestMasonryView::cleanup()
{
    m_view = nullptr;
    m_window.reset();
    m_model.reset();
    m_engine.reset();
}

void TestMasonryView::onlyCardsNearTheViewportExist()
{
    const QList<QRectF> &frames = m_view->layout().frames();
    QCOMPARE(frames.size(), 100000);
    // Exactly the cards meeting the viewport plus the 200-point buffer below it (nothing above at the top).
    int expected = 0;
    for (const QRectF &frame : frames)
        expected += frame.top() < 800 + 200 ? 1 : 0;
    QCOMPARE(m_view->activeCount(), expected);
    QCOMPARE(visibleCards(m_view).size(), expected);
    QVERIFY(m_view->createdCount() < 60);
    QVERIFY(m_view->contentHeight() > 1e6);
}

void TestMasonryView::cardsSitOnTheirFrames()
{
    for (QQuickItem *card : visibleCards(m_view)) {
        const QString id = card->property("itemId").toString();
        QCOMPARE(QRectF(card->position(), card->size()), m_view->frameOf(id));
        QCOMPARE(m_model->idAt(card->property("index").toInt()), id);
        QVERIFY(card->property("thumbnailWidth").toInt() >= 160);
    }
}

void TestMasonryView::scrollingReusesCards()
{
    int mostAtOnce = m_view->activeCount();
    for (int step = 1; step <= 60; ++step) {
        const double y = step * 9000.0;
        m_flick->setProperty("contentY", y);
        // After the next frame every card shown belongs to the new viewport and its buffer.
        const auto allNear = [&] {
            const QList<QQuickItem *> cards = visibleCards(m_view);
            return !cards.isEmpty() && std::all_of(cards.cbegin(), cards.cend(), [&](QQuickItem *card) {
                return card->y() + card->height() > y - 200 && card->y() < y + 1000;
            });
        };
        QTRY_VERIFY(allNear());
        mostAtOnce = std::max(mostAtOnce, m_view->activeCount());
    }
    // Far down the list, the cards made are still only about one screenful: the pool gives them back.
    QVERIFY2(m_view->createdCount() <= mostAtOnce + 5,
        qPrintable(u"%1 made for at most %2 at once"_s.arg(m_view->createdCount()).arg(mostAtOnce)));
}

void TestMasonryView::reloadKeepsCardsAndMovesThem()
{
    QQuickItem *first = m_view->cardFor(u"item-0"_s);
    QVERIFY(first);
    const QRectF before(first->position(), first->size());
    const int writesBefore = first->property("writes").toInt();
    // Two new items land on top: the first card's item moves to another column.
    QList<LibraryItem> items = makeItems(2, 200000) + makeItems(100000);
    m_model->setItems(items);
    QTRY_COMPARE(m_view->layout().frames().size(), 100002);
    QTRY_VERIFY(m_view->cardFor(u"item-200000"_s));
    QCOMPARE(m_view->cardFor(u"item-0"_s), first);
    QCOMPARE(first->property("writes").toInt(), writesBefore);
    QCOMPARE(QRectF(first->position(), first->size()), m_view->frameOf(u"item-0"_s));
    QVERIFY(QRectF(first->position(), first->size()) != before);
    QCOMPARE(first->property("index").toInt(), 2);
}

void TestMasonryView::theRestOfTheListJoinsBelowTheFirstScreenful()
{
    // At launch the first screenful is shown before the whole list: the cards on screen keep
    // their places and the grid's frames end up as a whole list's would.
    const QList<LibraryItem> whole = makeItems(100000);
    m_model->setItems(whole.first(400));
    QTRY_COMPARE(m_view->layout().frames().size(), 400);
    QQuickItem *first = m_view->cardFor(u"item-0"_s);
    QVERIFY(first);
    const QRectF before(first->position(), first->size());
    const int writesBefore = first->property("writes").toInt();
    m_model->setItems(whole);
    QTRY_COMPARE(m_view->layout().frames().size(), 100000);
    const CardSettings settings{m_view->cardShape(), m_view->cardShowTitle(), m_view->cardShowTags(), m_view->spacing()};
    const CardLayout expected = CardLayout::grid(whole, m_view->columns(), m_view->width(), settings);
    QCOMPARE(m_view->layout().frames(), expected.frames());
    QCOMPARE(m_view->contentHeight(), expected.contentHeight());
    QCOMPARE(m_view->cardFor(u"item-0"_s), first);
    QCOMPARE(QRectF(first->position(), first->size()), before);
    QCOMPARE(first->property("writes").toInt(), writesBefore);
    QCOMPARE(m_view->frameOf(u"item-99999"_s), expected.frames().last());

    // A long continuation is worked out on a worker; a list that replaces it meanwhile wins.
    m_model->setItems(whole.first(400));
    QCOMPARE(m_view->layout().frames().size(), 400);
    m_model->setItems(whole);
    QCOMPARE(m_view->layout().frames().size(), 400); // the rest is being placed
    const QList<LibraryItem> other = makeItems(50, 500000);
    m_model->setItems(other);
    QCOMPARE(m_view->layout().frames().size(), 50);
    QTest::qWait(500);
    QCOMPARE(m_view->layout().frames().size(), 50);
    QCOMPARE(m_view->layout().frames(), CardLayout::grid(other, m_view->columns(), m_view->width(), settings).frames());

    // A first screenful whose records changed in the meantime is laid out afresh.
    QList<LibraryItem> changed = makeItems(100000);
    changed[0].height = 3000;
    m_model->setItems(changed.first(400));
    QTRY_COMPARE(m_view->layout().frames().size(), 400);
    changed[1].height = 100;
    m_model->setItems(changed);
    QTRY_COMPARE(m_view->layout().frames().size(), 100000);
    QCOMPARE(m_view->layout().frames(), CardLayout::grid(changed, m_view->columns(), m_view->width(), settings).frames());
}

void TestMasonryView::selectionAndFocusReachTheCards()
{
    m_view->setSelectedIds({u"item-1"_s, u"item-2"_s});
    m_view->setFocusedId(u"item-3"_s);
    QCOMPARE(m_view->cardFor(u"item-1"_s)->property("selected").toBool(), true);
    QCOMPARE(m_view->cardFor(u"item-2"_s)->property("selected").toBool(), true);
    QCOMPARE(m_view->cardFor(u"item-3"_s)->property("selected").toBool(), false);
    QCOMPARE(m_view->cardFor(u"item-3"_s)->property("focused").toBool(), true);
    m_view->setFocusedId(u"item-1"_s);
    QCOMPARE(m_view->cardFor(u"item-3"_s)->property("focused").toBool(), false);
    // A card taken from the pool for another item forgets the old state.
    m_flick->setProperty("contentY", 50000.0);
    QTRY_VERIFY(!m_view->cardFor(u"item-1"_s));
    for (QQuickItem *card : visibleCards(m_view)) {
        QVERIFY(!card->property("selected").toBool());
        QVERIFY(!card->property("focused").toBool());
    }
}

void TestMasonryView::visibilityAndScrollTargets()
{
    const QString top = m_view->topVisibleItem();
    QVERIFY(!top.isEmpty());
    QCOMPARE(m_view->frameOf(top).top(), 18.0);
    QVERIFY(m_view->isCardVisible(top));
    const QString far = u"item-5000"_s;
    QVERIFY(!m_view->isCardVisible(far));
    const QRectF frame = m_view->frameOf(far);
    QCOMPARE(m_view->scrollTargetFor(far, 0.5), frame.center().y() - 400);
    QCOMPARE(m_view->scrollTargetFor(far, 0.0), frame.top());
    m_flick->setProperty("contentY", m_view->scrollTargetFor(far, 0.5));
    QTRY_VERIFY(m_view->isCardVisible(far));
    QCOMPARE(m_view->itemAt(frame.center().x(), frame.center().y()), far);
    // Clamped at both ends.
    QCOMPARE(m_view->scrollTargetFor(u"item-0"_s, 0.5), 0.0);
    QCOMPARE(m_view->scrollTargetFor(u"missing"_s, 0.5), m_view->viewportY());
}

void TestMasonryView::timelineHeadings()
{
    m_view->setTimeline(true);
    // One item every ten minutes: 144 a day, so the first screen shows one heading at least.
    QTRY_VERIFY(!m_view->layout().sections().isEmpty());
    QSet<QDate> days;
    for (const LibraryItem &item : m_model->items())
        days.insert(QDateTime::fromSecsSinceEpoch(qint64(item.addedAt)).date());
    QCOMPARE(m_view->layout().sections().size(), days.size());
    const QString firstDay = m_view->layout().sections().first().title;
    const auto headingShown = [&] {
        const QList<QQuickItem *> children = m_view->childItems();
        return std::any_of(children.cbegin(), children.cend(), [&](QQuickItem *child) {
            return child->isVisible() && child->property("title").toString() == firstDay && child->y() == 18;
        });
    };
    QTRY_VERIFY(headingShown());
}

QTEST_MAIN(TestMasonryView)
#include "tst_masonryview.moc"
