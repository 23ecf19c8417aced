#include "app/platform/scenegraphbackend.h"

#include <QDir>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QThread>

using namespace Qt::StringLiterals;

namespace kivo {

bool hasGraphicsProcessor(const QString &deviceFolder)
{
    // A driver that can draw exposes a render node; a display-only one (simpledrm, bochs, virtio
    // without 3D) only a card node. NVIDIA's own driver may expose only its /dev/nvidiaN nodes.
    const QDir devices(deviceFolder);
    return !QDir(devices.filePath(u"dri"_s)).entryList({u"renderD*"_s}, QDir::System | QDir::Files).isEmpty()
        || !devices.entryList({u"nvidia[0-9]*"_s}, QDir::System | QDir::Files).isEmpty();
}

bool isSoftwareRasterizer(const QString &glRenderer)
{
    static const QStringList names{u"llvmpipe"_s, u"softpipe"_s, u"swrast"_s, u"software rasterizer"_s,
        u"swr ("_s, u"lavapipe"_s, u"microsoft basic render"_s};
    const QString lower = glRenderer.toLower();
    return std::any_of(names.cbegin(), names.cend(), [&](const QString &name) { return lower.contains(name); });
}

void hideWindowsBeforeTeardown()
{
    bool hidden = false;
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow *window : windows) {
        if (qobject_cast<QQuickWindow *>(window) && window->isVisible()) {
            window->hide();
            hidden = true;
        }
    }
    // Hiding waits until the render thread has let the window go; what is left of its turn (Qt's
    // own posted events, then going to sleep) takes microseconds, a little more when the cores
    // are busy.
    if (hidden)
        QThread::msleep(30);
}

namespace {

/** The OpenGL renderer's name, or nothing when no OpenGL context can be made at all. */
std::optional<QString> openGlRenderer()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!surface.isValid() || !context.create() || !context.makeCurrent(&surface))
        return std::nullopt;
    const auto *name = reinterpret_cast<const char *>(context.functions()->glGetString(GL_RENDERER));
    QString renderer = name ? QString::fromLatin1(name) : QString();
    context.doneCurrent();
    return renderer;
}

/**
 * The software renderer draws on a thread of its own: painting a frame and putting it on the
 * screen then overlap the interface's work on the next one, and frames come at the screen's rate.
 * On the main thread instead, every frame's painting (7 ms and more for a full grid) adds to the
 * input and layout work of that same frame.
 */
void useSoftwareRenderer()
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    if (!qEnvironmentVariableIsSet("QSG_RENDER_LOOP"))
        qputenv("QSG_RENDER_LOOP", "threaded");
}

} // namespace

QString chooseSceneGraphBackend()
{
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND"))
        return u"as the environment asks"_s;
    const QString platform = QGuiApplication::platformName();
    // These platforms draw without OpenGL already.
    if (platform == u"offscreen" || platform == u"minimal" || platform == u"vnc")
        return u"Qt Quick's default for "_s + platform;
    // Without a graphics processor OpenGL could only be an emulation; asking it which would load
    // Mesa and LLVM for nothing, a tenth of a second and more of the start.
    if (!hasGraphicsProcessor()) {
        useSoftwareRenderer();
        return u"software (no graphics processor)"_s;
    }
    const std::optional<QString> renderer = openGlRenderer();
    if (!renderer) {
        useSoftwareRenderer();
        return u"software (no OpenGL)"_s;
    }
    if (isSoftwareRasterizer(*renderer)) {
        useSoftwareRenderer();
        return u"software (OpenGL is "_s + *renderer + u')';
    }
    return u"hardware ("_s + *renderer + u')';
}

} // namespace kivo
