pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Shapes
import Kivo

// A line glyph drawn on a 16-unit grid in the current text colour, so it follows the theme
// without image files or colour effects.
Item {
    id: glyph

    property string name
    property color color: Theme.secondaryText
    property real size: Theme.metrics.glyph
    property real lineWidth: 1.5

    implicitWidth: size
    implicitHeight: size
    // Hardware renderers smooth paths only with multisampling; the software one paints them smooth.
    layer.enabled: GraphicsInfo.api !== GraphicsInfo.Software
    layer.samples: 4
    layer.smooth: true

    readonly property var shapes: ({
        "all": "M2.5 2.5h4.5v4.5h-4.5z M9 2.5h4.5v4.5h-4.5z M2.5 9h4.5v4.5h-4.5z M9 9h4.5v4.5h-4.5z",
        "inbox": "M2 9.5 L4 3.5 H12 L14 9.5 V13 H2 Z M2 9.5 H5.5 L6.5 11 H9.5 L10.5 9.5 H14",
        "favourites": "M8 13.5 C8 13.5 2 10 2 6 C2 4 3.5 2.5 5.25 2.5 C6.5 2.5 7.5 3.2 8 4.2 C8.5 3.2 9.5 2.5 10.75 2.5 C12.5 2.5 14 4 14 6 C14 10 8 13.5 8 13.5 Z",
        "links": "M6.5 9.5 L9.5 6.5 M7.25 4.75 L8.5 3.5 A2.83 2.83 0 0 1 12.5 7.5 L11.25 8.75 M8.75 11.25 L7.5 12.5 A2.83 2.83 0 0 1 3.5 8.5 L4.75 7.25",
        "trash": "M2.5 4.5 H13.5 M6 4.5 V2.75 H10 V4.5 M4 4.5 L4.75 13.5 H11.25 L12 4.5 M6.75 7 V11 M9.25 7 V11",
        "hidden": "M1.75 8 C3.2 5.2 5.4 3.75 8 3.75 C10.6 3.75 12.8 5.2 14.25 8 C12.8 10.8 10.6 12.25 8 12.25 C5.4 12.25 3.2 10.8 1.75 8 Z M8 6 A2 2 0 1 1 8 10 A2 2 0 1 1 8 6 M2.5 2.5 L13.5 13.5",
        "image": "M2.5 3 H13.5 V13 H2.5 Z M2.5 11 L6 7.5 L9.25 10.75 M8.25 9.75 L10 8 L13.5 11.5 M10.25 4.75 A1 1 0 1 1 10.25 6.75 A1 1 0 1 1 10.25 4.75",
        "videos": "M2.5 3.5 H13.5 V12.5 H2.5 Z M6.75 6 L10 8 L6.75 10 Z",
        "documents": "M4 2 H9.5 L12.5 5 V14 H4 Z M9.5 2 V5 H12.5 M6 8.5 H10.5 M6 11 H10.5",
        "tweets": "M2.5 3.5 H13.5 V10.5 H7 L4.5 13 V10.5 H2.5 Z",
        "instagram": "M5 2.5 H11 A2.5 2.5 0 0 1 13.5 5 V11 A2.5 2.5 0 0 1 11 13.5 H5 A2.5 2.5 0 0 1 2.5 11 V5 A2.5 2.5 0 0 1 5 2.5 Z M8 5.6 A2.4 2.4 0 1 1 8 10.4 A2.4 2.4 0 1 1 8 5.6 M11.2 4.6 L11.3 4.7",
        "audio": "M6 12 V3.75 L13 2.5 V10.5 M6 12 A1.75 1.75 0 1 1 2.5 12 A1.75 1.75 0 1 1 6 12 M13 10.5 A1.75 1.75 0 1 1 9.5 10.5 A1.75 1.75 0 1 1 13 10.5",
        "drop": "M8 2 V9.5 M5 6.75 L8 9.75 L11 6.75 M2.5 9.5 V12.5 A1 1 0 0 0 3.5 13.5 H12.5 A1 1 0 0 0 13.5 12.5 V9.5",
        "folder": "M2 4 A1 1 0 0 1 3 3 H6.25 L7.75 4.5 H13 A1 1 0 0 1 14 5.5 V12 A1 1 0 0 1 13 13 H3 A1 1 0 0 1 2 12 Z",
        "warning": "M8 2.5 L14 13 H2 Z M8 6.5 V9.5 M8 11.25 L8 11.3",
        "library": "M3 2.5 H5.5 V13.5 H3 Z M7 2.5 H9.5 V13.5 H7 Z M11 3 L13.4 2.6 L14.5 13 L12.1 13.4 Z",
        "plus": "M8 3 V13 M3 8 H13",
        "tag": "M2.5 2.5 H8 L13.5 8 L8 13.5 L2.5 8 Z M5.25 5 A0.25 0.25 0 1 1 5.25 5.5 A0.25 0.25 0 1 1 5.25 5",
        "close": "M4.5 4.5 L11.5 11.5 M11.5 4.5 L4.5 11.5"
    })

    Shape {
        width: 16
        height: 16
        scale: glyph.size / 16
        transformOrigin: Item.TopLeft
        antialiasing: true

        ShapePath {
            strokeColor: glyph.color
            strokeWidth: glyph.lineWidth
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            joinStyle: ShapePath.RoundJoin
            PathSvg { path: glyph.shapes[glyph.name] ?? "" }
        }
    }
}
