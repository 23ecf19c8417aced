#pragma once

#include <QImage>

namespace kivo::bench {

/** A photograph-like picture: smooth gradients, shapes and grain, so that many palette bins fill. */
[[nodiscard]] QImage photoLike(int width, int height, bool withAlpha);

/** A 1024-pixel-wide screenshot of an article: a title and a few paragraphs of 15-pixel text. */
[[nodiscard]] QImage articleScreenshot();

} // namespace kivo::bench
