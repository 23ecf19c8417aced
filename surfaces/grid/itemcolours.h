#pragma once

#include <QColor>
#include <QList>
#include <QString>

#include <optional>

namespace kivo {

/** Reading an item's stored palette and picking the one colour its card and shelf edges wear. */
// ### The Store's branch brings the same functions in core/itemcolours.h; this copy goes when it lands.
namespace ItemColours {

/** The "#RRGGBB" strings of a `colors` column (a JSON array), most common first; empty when absent or bad. */
[[nodiscard]] QList<QColor> decode(const QString &colorsJson);

/**
 * The accent: the first colour scoring over 0.05 on (1 - |value - 0.6|) x saturation, replaced
 * only by a strictly higher score; the first colour when none passes; none without colours.
 */
[[nodiscard]] std::optional<QColor> accent(const QList<QColor> &colours);

} // namespace ItemColours
} // namespace kivo
