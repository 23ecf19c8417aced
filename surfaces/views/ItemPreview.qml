pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// A large look at one item over the view: its picture (or a note's words) with its title. Arrow
// keys step through the list, Escape or a click beside the picture closes it.
Rectangle {
    id: preview

    required property GridController controller
    readonly property string itemId: controller.previewItemId
    readonly property var item: itemId === "" ? ({}) : Store.itemData(itemId)

    color: Theme.dark ? "#e6101011" : "#ebfafaf8"
    visible: itemId !== ""
    opacity: visible ? 1 : 0
    Behavior on opacity {
        NumberAnimation { duration: Theme.motion.quick }
    }

    MouseArea {
        // A click beside the picture closes; the picture itself swallows its clicks.
        anchors.fill: parent
        onClicked: preview.controller.closePreview()
        onWheel: wheel => wheel.accepted = true
    }

    Image {
        id: picture
        objectName: "previewPicture"
        anchors.fill: parent
        anchors.margins: Theme.space.xxxl
        anchors.bottomMargin: Theme.space.xxxl + caption.height
        visible: preview.item.filePath !== undefined && preview.item.kind !== "text"
        source: visible ? "image://thumb/" + preview.itemId + "?2048" : ""
        fillMode: Image.PreserveAspectFit
        cache: false
        opacity: status === Image.Ready ? 1 : 0
        Behavior on opacity {
            NumberAnimation { duration: Theme.motion.standard }
        }
        MouseArea {
            x: (parent.width - parent.paintedWidth) / 2
            y: (parent.height - parent.paintedHeight) / 2
            width: parent.paintedWidth
            height: parent.paintedHeight
        }
    }

    Text {
        // Notes and links without a picture show their words.
        anchors.centerIn: parent
        width: Math.min(parent.width - Theme.space.xxxl * 2, 640)
        visible: !picture.visible
        text: preview.item.note || preview.item.title || preview.item.sourceURL || ""
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: Theme.text
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.title3
        lineHeight: 1.3
    }

    Column {
        id: caption
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space.xl
        spacing: Theme.space.xs
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: preview.item.title || ""
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.headline
            font.weight: Font.DemiBold
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: text !== ""
            text: preview.item.sourceURL || ""
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
        }
    }

    KivoButton {
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.margins: Theme.space.l
        text: "Close"
        onClicked: preview.controller.closePreview()
    }
}
