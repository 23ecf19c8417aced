#pragma once

#include <QColor>
#include <QList>
#include <QString>

#include <optional>

namespace kivo {

/**
 * The colour arithmetic over an item's palette (`colors`, a JSON array of "#RRGGBB", most common
 * first): decoding, the accent that edges a card, and the one tint that washes a whole selection.
 */
namespace ItemColours {

/** The palette of a `colors` value; unreadable entries are skipped. */
[[nodiscard]] QList<QColor> decode(const QString &colorsJson);

/**
 * The accent of one palette: per colour, v the largest component, s = (v - smallest) / v and
 * score = (1 - |v - 0.6|) x s; the first colour scoring over 0.05 leads and only a strictly higher
 * score replaces it. With none passing the first colour is the accent; an empty palette has none.
 */
[[nodiscard]] std::optional<QColor> accent(const QList<QColor> &palette);

/**
 * One colour for many: the mean of the colours, each weighted by how vivid it is (its accent
 * score plus a small floor), so a few saturated colours lead a selection of greys without being
 * drowned by them. Invalid for an empty list.
 */
[[nodiscard]] QColor tint(const QList<QColor> &colours);

} // namespace ItemColours
} // namespace kivo
