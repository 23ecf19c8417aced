import QtQuick
import Kivo

// A tag in the details panel: the name with a small ×, or, for a suggestion, a dashed outline
// and a + that accepts it.
Rectangle {
    id: chip

    required property string name
    property bool suggested: false

    signal removeRequested()
    signal acceptRequested()

    objectName: (suggested ? "suggestedTag-" : "tag-") + name
    implicitWidth: label.implicitWidth + button.width + Theme.space.s + Theme.space.xs
    implicitHeight: 24
    radius: height / 2
    color: suggested ? "transparent" : Theme.sunken
    border.width: 1
    border.color: suggested ? Theme.controlBorder : Theme.hairline

    Text {
        id: label
        anchors.left: parent.left
        anchors.leftMargin: Theme.space.s + Theme.space.xxs
        anchors.verticalCenter: parent.verticalCenter
        text: chip.name
        color: chip.suggested ? Theme.secondaryText : Theme.text
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.footnote
    }

    Rectangle {
        id: button
        objectName: chip.suggested ? "acceptTag" : "removeTag"
        anchors.right: parent.right
        anchors.rightMargin: 3
        anchors.verticalCenter: parent.verticalCenter
        width: 18
        height: 18
        radius: 9
        color: hover.hovered ? Theme.hover : "transparent"
        Accessible.role: Accessible.Button
        Accessible.name: (chip.suggested ? "Accept " : "Remove ") + chip.name

        Glyph {
            anchors.centerIn: parent
            name: chip.suggested ? "plus" : "xmark"
            size: 10
            lineWidth: 1.6
            color: Theme.secondaryText
        }
        HoverHandler { id: hover }
        TapHandler { onTapped: chip.suggested ? chip.acceptRequested() : chip.removeRequested() }
    }
}
