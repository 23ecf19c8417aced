#pragma once

#include <QString>

namespace kivo {

/**
 * Chooses how Qt Quick draws the windows. With a graphics processor, the default: Qt Quick's
 * hardware renderer. When OpenGL itself is only a rasterizer on the processor (llvmpipe and its
 * kin: virtual machines, remote desktops, X servers without a GPU), or missing, Qt Quick's own
 * software renderer instead: it repaints only what changed, leaves the cores to the interface
 * rather than to a second, emulated pipeline, and keeps no texture copy of every picture. It draws
 * on the main thread: Qt 6.4's threaded software loop leaves layered shapes undrawn and can crash
 * drawing a shape in a popup.
 *
 * A choice already made in the environment (`QT_QUICK_BACKEND`, `QSG_RHI_BACKEND`) is left alone.
 * Call once the application object exists and before the first window. Returns what was chosen,
 * in words for the log.
 */
QString chooseSceneGraphBackend();

/** Whether an OpenGL renderer string names a rasterizer that runs on the processor. */
[[nodiscard]] bool isSoftwareRasterizer(const QString &glRenderer);

} // namespace kivo
