#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace kivo::ColorNaming {

/** One row of the naming table: hues from `from` up to but not including `below` get `word`. */
struct HueWord {
    double from;
    double below;
    QString word;
};

/** The hue rows, in the order they are tried. */
[[nodiscard]] const QList<HueWord> &hueWords();

/**
 * One plain word for a palette colour ("red", "charcoal", ...), used as the tag of a picture that
 * got no other; nothing when the text is not six hexadecimal digits (the "#" and blanks around
 * them are optional).
 */
[[nodiscard]] std::optional<QString> colourName(const QString &hex);

} // namespace kivo::ColorNaming
