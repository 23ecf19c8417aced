// The window's platform services on a real X server: which renderer Qt Quick is given, and when
// a person's input last came.
#include "app/lifecycle/inputactivity.h"
#include "app/platform/exposerepainter.h"
#include "app/platform/scenegraphbackend.h"
#include "surfaces/qmlservices.h"
#include "surfaces/theme/appearancecontroller.h"

#include <atomic>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QPainter>
#include <QQuickWindow>
#include <QRasterWindow>
#include <QScreen>
#include <QSGRendererInterface>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;

class TestWindowServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void softwareRasterizersAreKnownByName_data();
    void softwareRasterizersAreKnownByName();
    void graphicsProcessorsAreFoundByTheirDevices();
    void openGlOnTheProcessorMeansSoftwareDrawing();
    void glyphsAreDrawnThere();
    void uncoveredPartsAreRedrawn();
    void aChoiceInTheEnvironmentStands();
    void inputActivityFollowsRealInput();
};

void TestWindowServices::softwareRasterizersAreKnownByName_data()
{
    QTest::addColumn<QString>("renderer");
    QTest::addColumn<bool>("software");
    QTest::newRow("Mesa llvmpipe") << u"llvmpipe (LLVM 15.0.6, 256 bits)"_s << true;
    QTest::newRow("Mesa softpipe") << u"softpipe"_s << true;
    QTest::newRow("old swrast") << u"Software Rasterizer"_s << true;
    QTest::newRow("Intel") << u"Mesa Intel(R) UHD Graphics 620 (KBL GT2)"_s << false;
    QTest::newRow("AMD") << u"AMD Radeon RX 6600 (navi23, LLVM 15.0.6, DRM 3.49, 6.1.0-13-amd64)"_s << false;
    QTest::newRow("NVIDIA") << u"NVIDIA GeForce RTX 3060/PCIe/SSE2"_s << false;
    QTest::newRow("virtual GPU") << u"virgl (Intel(R) Iris(R) Xe Graphics)"_s << false;
}

void TestWindowServices::softwareRasterizersAreKnownByName()
{
    QFETCH(QString, renderer);
    QFETCH(bool, software);
    QCOMPARE(isSoftwareRasterizer(renderer), software);
}

void TestWindowServices::graphicsProcessorsAreFoundByTheirDevices()
{
    QTemporaryDir dev;
    QVERIFY(QDir(dev.path()).mkpath(u"dri"_s));
    const auto touch = [&](const QString &name) {
        QFile file(dev.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    };
    QVERIFY(!hasGraphicsProcessor(dev.path()));
    // A display-only driver has a card node and nothing to draw with.
    touch(u"dri/card0"_s);
    QVERIFY(!hasGraphicsProcessor(dev.path()));
    touch(u"nvidiactl"_s);
    QVERIFY(!hasGraphicsProcessor(dev.path()));
    touch(u"dri/renderD128"_s);
    QVERIFY(hasGraphicsProcessor(dev.path()));

    QTemporaryDir nvidia;
    QFile node(nvidia.filePath(u"nvidia0"_s));
    QVERIFY(node.open(QIODevice::WriteOnly));
    QVERIFY(hasGraphicsProcessor(nvidia.path()));
    QVERIFY(!hasGraphicsProcessor(nvidia.filePath(u"missing"_s)));
}

void TestWindowServices::aChoiceInTheEnvironmentStands()
{
    // Qt settles its renderer once a process, so only the answer is checked here.
    qputenv("QSG_RHI_BACKEND", "opengl");
    QCOMPARE(chooseSceneGraphBackend(), u"as the environment asks"_s);
    qunsetenv("QSG_RHI_BACKEND");
    qputenv("QT_QUICK_BACKEND", "software");
    QCOMPARE(chooseSceneGraphBackend(), u"as the environment asks"_s);
    qunsetenv("QT_QUICK_BACKEND");
}

void TestWindowServices::openGlOnTheProcessorMeansSoftwareDrawing()
{
    // Xvfb has no graphics processor: its OpenGL, when there is one, is Mesa's rasterizer; and
    // the machine running it may have none at all.
    qunsetenv("QSG_RENDER_LOOP");
    const QString choice = chooseSceneGraphBackend();
    QVERIFY2(choice.startsWith(u"software (OpenGL is "_s) || choice == u"software (no OpenGL)"_s
            || (choice == u"software (no graphics processor)"_s && !hasGraphicsProcessor()),
        qPrintable(choice));

    // And Qt Quick draws with it, away from the main thread: a window shows a red rectangle.
    QQuickWindow window;
    window.resize(64, 64);
    window.setColor(Qt::red);
    std::atomic<QThread *> paintedOn = nullptr;
    connect(&window, &QQuickWindow::frameSwapped, &window, [&] { paintedOn = QThread::currentThread(); },
        Qt::DirectConnection);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
    QTRY_VERIFY(paintedOn.load() != nullptr);
    QVERIFY(paintedOn.load() != QThread::currentThread());
    QTRY_COMPARE(window.grabWindow().pixelColor(10, 10), QColor(Qt::red));
    hideWindowsBeforeTeardown();
}

void TestWindowServices::glyphsAreDrawnThere()
{
    // The window's glyphs under that same renderer: a known one, an unknown one with a known
    // fallback, and an unknown one alone, which draws nothing.
    AppearanceController appearance;
    QmlServices::publishAppearance(&appearance);
    QQmlEngine engine;
    QmlServices::prepareEngine(engine);
    QQmlComponent component(&engine);
    component.setData(R"(
        import QtQuick
        import Kivo
        Row {
            Glyph { size: 48; name: "plus"; color: "red"; lineWidth: 2 }
            Glyph { size: 48; name: "no such glyph"; fallback: "plus"; color: "blue"; lineWidth: 2 }
            Glyph { size: 48; name: "no such glyph"; color: "red" }
        })",
        QUrl(u"qrc:/glyphs.qml"_s));
    QQuickWindow window;
    window.resize(144, 48);
    window.setColor(Qt::white);
    std::unique_ptr<QObject> row(component.create());
    QVERIFY2(row, qPrintable(component.errorString()));
    qobject_cast<QQuickItem *>(row.get())->setParentItem(window.contentItem());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    QTRY_COMPARE(window.grabWindow().pixelColor(24, 24), QColor(Qt::red));
    const QImage drawn = window.grabWindow();
    QCOMPARE(drawn.pixelColor(24, 8), QColor(Qt::red)); // the plus's upright, three units from the top
    QCOMPARE(drawn.pixelColor(6, 6), QColor(Qt::white));
    QCOMPARE(drawn.pixelColor(72, 24), QColor(Qt::blue));
    for (int x = 96; x < 144; x += 4) {
        for (int y = 0; y < 48; y += 4)
            QCOMPARE(drawn.pixelColor(x, y), QColor(Qt::white));
    }
    hideWindowsBeforeTeardown();
}

namespace {

/** Another program's window, all red. */
class RedWindow : public QRasterWindow
{
protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(QRect(QPoint(), size()), Qt::red); }
};

/** What the X server shows at a point of the screen, whoever drew it. */
QColor onScreen(QPoint point)
{
    return QGuiApplication::primaryScreen()->grabWindow(0, point.x(), point.y(), 1, 1).toImage().pixelColor(0, 0);
}

} // namespace

void TestWindowServices::uncoveredPartsAreRedrawn()
{
    // Xvfb has no compositor: when a window over Kivo's goes away, what it covered is Kivo's to
    // draw again, under an opaque item too.
    ExposeRepainter repainter;
    QVERIFY(ExposeRepainter::isNeeded());
    qApp->installEventFilter(&repainter);
    QQuickWindow window;
    window.setFlag(Qt::X11BypassWindowManagerHint);
    window.setGeometry(40, 40, 200, 200);
    window.setColor(Qt::gray);
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nRectangle { width: 200; height: 200; color: \"white\" }", QUrl());
    std::unique_ptr<QObject> sheet(component.create());
    qobject_cast<QQuickItem *>(sheet.get())->setParentItem(window.contentItem());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE(onScreen({140, 140}), QColor(Qt::white));

    RedWindow cover;
    cover.setFlag(Qt::X11BypassWindowManagerHint);
    cover.setGeometry(100, 100, 80, 80);
    cover.show();
    QVERIFY(QTest::qWaitForWindowExposed(&cover));
    QTRY_COMPARE(onScreen({140, 140}), QColor(Qt::red));
    cover.hide();
    QTRY_COMPARE(onScreen({140, 140}), QColor(Qt::white));
    // And the veil that did it is gone again, to the colour.
    QTest::qWait(100);
    QCOMPARE(onScreen({140, 140}), QColor(Qt::white));
    QCOMPARE(window.grabWindow().pixelColor(100, 100), QColor(Qt::white));
    qApp->removeEventFilter(&repainter);
    hideWindowsBeforeTeardown();
}

void TestWindowServices::inputActivityFollowsRealInput()
{
    InputActivity activity;
    QVERIFY(activity.quietFor(1000000)); // nothing has come yet
    QWindow window;
    window.resize(100, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTest::mouseMove(&window, QPoint(10, 10));
    QTest::keyClick(&window, Qt::Key_Down);
    QVERIFY(!activity.quietFor(60000));
    QTRY_VERIFY(activity.quietFor(50));
    // Events that are not a person's input leave the clock alone.
    QEvent update(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(&window, &update);
    QVERIFY(activity.quietFor(50));
    QVERIFY(!InputActivity::isInput(&update));
}

QTEST_MAIN(TestWindowServices)
#include "tst_windowservices.moc"
