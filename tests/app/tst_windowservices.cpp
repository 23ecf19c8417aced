// The window's platform services on a real X server: which renderer Qt Quick is given, and when
// a person's input last came.
#include "app/lifecycle/inputactivity.h"
#include "app/platform/scenegraphbackend.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace kivo;

class TestWindowServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void softwareRasterizersAreKnownByName_data();
    void softwareRasterizersAreKnownByName();
    void openGlOnTheProcessorMeansSoftwareDrawing();
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
    // Xvfb has no graphics processor: its OpenGL, when there is one, is Mesa's rasterizer.
    const QString choice = chooseSceneGraphBackend();
    QVERIFY2(choice.startsWith(u"software (OpenGL is "_s) || choice == u"software (no OpenGL)"_s, qPrintable(choice));

    // And Qt Quick draws with it: a window shows a red rectangle.
    QQuickWindow window;
    window.resize(64, 64);
    window.setColor(Qt::red);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
    QTRY_COMPARE(window.grabWindow().pixelColor(10, 10), QColor(Qt::red));
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
