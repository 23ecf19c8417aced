import QtQuick
import Kivo

// A small glyph button of the sidebar, the toolbar and the panels: no frame until the pointer is on it.
Rectangle {
    id: button

    property string glyph
    property string tip
    property bool checked: false
    property real glyphSize: 14

    signal clicked()

    implicitWidth: 24
    implicitHeight: 24
    radius: Theme.radius.s
    color: tap.pressed ? Theme.pressed : hover.hovered || checked ? Theme.hover : "transparent"
    opacity: enabled ? 1 : 0.35
    activeFocusOnTab: true
    border.width: activeFocus ? 2 : 0
    border.color: Theme.focusRing
    Accessible.role: Accessible.Button
    Accessible.name: tip
    Accessible.onPressAction: button.clicked()
    Keys.onSpacePressed: button.clicked()
    Keys.onReturnPressed: button.clicked()

    Glyph {
        anchors.centerIn: parent
        name: button.glyph
        size: button.glyphSize
        color: button.checked ? Theme.accent : Theme.secondaryText
    }

    HoverHandler { id: hover; cursorShape: Qt.PointingHandCursor }
    TapHandler { id: tap; onTapped: button.clicked() }
}
