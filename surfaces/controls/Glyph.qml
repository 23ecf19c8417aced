pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// A line glyph of Kivo's set in the current text colour, so it follows the theme without image
// files or colour effects.
Item {
    id: glyph

    property string name
    /** Drawn when `name` is not one of the shapes (a symbol this set does not have). */
    property string fallback
    property color color: Theme.secondaryText
    property real size: Theme.metrics.glyph
    property real lineWidth: 1.5

    implicitWidth: size
    implicitHeight: size

    // The symbols the collection icon picker offers, in its order.
    readonly property var collectionSymbols: ["folder", "star", "heart", "bookmark", "sparkles", "lightbulb",
        "paintpalette", "camera", "film", "music.note", "book.closed", "briefcase", "house", "airplane",
        "mappin", "globe", "leaf", "fork.knife", "cup.and.saucer", "tshirt", "gift", "flag", "tag",
        "square.grid.2x2"]

    GlyphShape {
        width: glyph.size
        height: glyph.size
        name: glyph.name
        fallback: glyph.fallback
        color: glyph.color
        lineWidth: glyph.lineWidth
    }
}
