import QtQuick
import Kivo

// The top of the card: the clip's preview, or a quiet tile with its kind when there is none,
// with the page's host and whether the item has arrived yet.
Rectangle {
    id: preview

    required property CaptureCardModel card
    property string source

    implicitHeight: image.status === Image.Ready ? 132 : 56
    radius: Theme.radius.l
    color: Theme.sunken
    clip: true

    Image {
        id: image
        anchors.fill: parent
        source: preview.source
        fillMode: Image.PreserveAspectCrop
        asynchronous: false
        cache: false
        visible: status === Image.Ready
    }

    Rectangle {
        // A soft band at the foot of the picture so the caption reads on any image.
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 30
        visible: image.visible
        gradient: Gradient {
            GradientStop { position: 0; color: "transparent" }
            GradientStop { position: 1; color: "#66000000" }
        }
    }

    Row {
        anchors.left: parent.left
        anchors.bottom: parent.bottom
        anchors.margins: Theme.space.s
        anchors.leftMargin: Theme.space.m
        spacing: Theme.space.s

        Glyph {
            anchors.verticalCenter: parent.verticalCenter
            name: preview.card.kind === "link" ? "links" : preview.card.kind === "video" ? "videos" : preview.card.kind === "text" ? "documents" : "image"
            color: image.visible ? "#ffffff" : Theme.secondaryText
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: preview.card.domain.length > 0 ? preview.card.domain : preview.card.kind
            color: image.visible ? "#ffffff" : Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
            font.weight: Font.Medium
        }
    }

    Text {
        objectName: "saving"
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.space.s
        anchors.rightMargin: Theme.space.m
        text: preview.card.bound ? "Saved" : "Saving\u2026"
        color: image.visible ? "#ffffff" : Theme.tertiaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.caption
    }
}
