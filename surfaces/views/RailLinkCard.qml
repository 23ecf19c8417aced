pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// One link in the rail beside the grid: its picture or initial, title and domain. A click opens it.
Item {
    id: link

    required property int index
    required property string itemId
    required property string displayTitle
    required property string domain
    required property string thumbnail
    required property color accent

    property GridController controller

    implicitHeight: 58

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.space.xxs
        radius: Theme.radius.m
        color: pointer.containsMouse ? Theme.hover : "transparent"
    }

    Rectangle {
        id: icon
        anchors.left: parent.left
        anchors.leftMargin: Theme.space.s
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        radius: Theme.radius.s
        color: link.accent.a > 0 ? link.accent : Theme.sunken
        clip: true
        Text {
            anchors.centerIn: parent
            visible: picture.status !== Image.Ready
            text: (link.domain || link.displayTitle || "?").charAt(0).toUpperCase()
            color: link.accent.a > 0 ? "white" : Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.headline
            font.weight: Font.Bold
        }
        Image {
            id: picture
            anchors.fill: parent
            source: link.thumbnail === "" ? "" : link.thumbnail + "?96"
            fillMode: Image.PreserveAspectCrop
            cache: false
        }
    }

    Column {
        anchors.left: icon.right
        anchors.leftMargin: Theme.space.s
        anchors.right: parent.right
        anchors.rightMargin: Theme.space.s
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space.xxs
        Text {
            width: parent.width
            text: link.displayTitle
            elide: Text.ElideRight
            maximumLineCount: 1
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
            font.weight: Font.Medium
        }
        Text {
            width: parent.width
            text: link.domain
            elide: Text.ElideRight
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.caption
        }
    }

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: mouse => {
            if (mouse.button === Qt.RightButton)
                link.controller.requestItemMenu(link.itemId, pointer, mouse.x, mouse.y);
            else
                link.controller.openItem(link.itemId);
        }
    }
}
