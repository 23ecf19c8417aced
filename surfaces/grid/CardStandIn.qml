import QtQuick
import Kivo

// What a card shows when its item has no picture: a link's title and domain, a note's words, or a
// file's name and type, on a soft ground tinted by the item's accent.
Rectangle {
    id: standIn

    property string kind
    property string title
    property string note
    property string domain
    property color accent: "transparent"

    radius: Theme.radius.m
    color: Theme.surface
    clip: true

    Rectangle {
        anchors.fill: parent
        radius: parent.radius
        color: standIn.accent.a > 0 ? standIn.accent : Theme.accent
        opacity: 0.08
    }

    Column {
        anchors.fill: parent
        anchors.margins: Theme.space.m
        spacing: Theme.space.xs

        Text {
            // Links: the site first, as people recognise them by it.
            visible: standIn.kind === "link" && standIn.domain !== ""
            width: parent.width
            text: standIn.domain
            elide: Text.ElideRight
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.caption
            font.weight: Font.DemiBold
            font.capitalization: Font.AllUppercase
        }

        Text {
            width: parent.width
            height: parent.height - y
            text: standIn.kind === "text" && standIn.note !== "" ? standIn.note : standIn.title
            wrapMode: Text.Wrap
            elide: Text.ElideRight
            maximumLineCount: standIn.kind === "text" ? 12 : 3
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: standIn.kind === "text" ? Theme.type.footnote : Theme.type.callout
            font.weight: standIn.kind === "text" ? Font.Normal : Font.DemiBold
            lineHeight: 1.15
        }
    }

    Text {
        // Files: their type in large letters.
        visible: standIn.kind === "file" || standIn.kind === "video" || standIn.kind === "image"
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.space.m
        text: standIn.kind === "file" ? "FILE" : standIn.kind.toUpperCase()
        color: Theme.tertiaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.caption
        font.weight: Font.Bold
        font.letterSpacing: 1
    }
}
