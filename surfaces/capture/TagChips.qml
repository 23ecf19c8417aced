pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// The tags given on the card so far, as small chips that can be taken off again.
Flow {
    id: chips

    property var tags: []
    signal removed(int index)

    spacing: Theme.space.xs
    leftPadding: Theme.space.s

    Repeater {
        model: chips.tags

        delegate: Rectangle {
            id: chip
            required property string modelData
            required property int index

            height: 24
            width: label.implicitWidth + close.width + Theme.space.s * 2 + Theme.space.xs
            radius: 12
            color: Theme.selection

            Text {
                id: label
                anchors.left: parent.left
                anchors.leftMargin: Theme.space.s
                anchors.verticalCenter: parent.verticalCenter
                text: "#" + chip.modelData
                color: Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.footnote
            }
            Glyph {
                id: close
                anchors.right: parent.right
                anchors.rightMargin: Theme.space.xs
                anchors.verticalCenter: parent.verticalCenter
                name: "close"
                size: 12
                TapHandler { onTapped: chips.removed(chip.index) }
            }
        }
    }
}
