import QtQuick
import Kivo

// The one line that says the library could not be opened; the rest of the window stays calm.
Rectangle {
    id: banner

    required property string message

    implicitHeight: row.implicitHeight + 2 * Theme.space.m
    radius: Theme.radius.l
    color: Theme.warningFill

    Row {
        id: row
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: Theme.space.l
        anchors.rightMargin: Theme.space.l
        spacing: Theme.space.m

        Glyph {
            id: glyph
            name: "warning"
            color: Theme.warning
            anchors.verticalCenter: parent.verticalCenter
        }

        Text {
            objectName: "setupErrorText"
            width: row.width - glyph.width - row.spacing
            anchors.verticalCenter: parent.verticalCenter
            text: banner.message
            wrapMode: Text.Wrap
            color: Theme.warning
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            font.weight: Font.Medium
        }
    }
}
