#pragma once

#include <QString>

namespace kivo {

/**
 * Chooses how Qt Quick draws the windows. With a graphics processor, the default: Qt Quick's
 * hardware renderer. Without one, or when OpenGL is only a rasterizer on the processor (llvmpipe
 * and its kin: virtual machines, remote desktops, X servers without a GPU) or missing, Qt Quick's
 * own software renderer instead, on its own render thread: it repaints only what changed, leaves
 * the cores to the interface rather than to a second, emulated pipeline, and keeps no texture copy
 * of every picture. A render loop named in `QSG_RENDER_LOOP` is obeyed.
 *
 * A choice already made in the environment (`QT_QUICK_BACKEND`, `QSG_RHI_BACKEND`) is left alone.
 * Call once the application object exists and before the first window. Returns what was chosen,
 * in words for the log.
 */
QString chooseSceneGraphBackend();

/**
 * Hides every Qt Quick window and gives their render threads a moment to fall idle; call before
 * windows are destroyed. Qt 6.4's threaded software loop can hang for good when a window is
 * destroyed while its render thread is busy drawing: the thread misses the call to stop and waits
 * for work that never comes. A hidden window's thread has nothing to draw and is idle by then.
 */
void hideWindowsBeforeTeardown();

/** Whether the machine has a device that draws (a DRM render node, or NVIDIA's own nodes). */
[[nodiscard]] bool hasGraphicsProcessor(const QString &deviceFolder = QStringLiteral("/dev"));

/** Whether an OpenGL renderer string names a rasterizer that runs on the processor. */
[[nodiscard]] bool isSoftwareRasterizer(const QString &glRenderer);

} // namespace kivo
