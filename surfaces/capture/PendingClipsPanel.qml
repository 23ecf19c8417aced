pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window
import Kivo

// The clips of a multi-item clip, waiting at the right edge of the screen for a collection.
// Return files them into the collection typed in the field (made when there is none); "Keep in
// Inbox" or Escape leaves them in the inbox.
Window {
    id: panel
    objectName: "pendingClipsPanel"

    required property PendingShelf shelf

    width: 300
    height: 460
    flags: Qt.Tool | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint
    color: "transparent"
    title: "Kivo Pending Clips"

    Rectangle {
        anchors.fill: parent
        radius: Theme.radius.xl
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline

        Column {
            id: header
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: Theme.space.l
            spacing: Theme.space.s

            Text {
                text: panel.shelf.clips.count === 1 ? "1 Clip" : panel.shelf.clips.count + " Clips"
                color: Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.headline
                font.weight: Font.DemiBold
            }

            Rectangle {
                width: parent.width
                height: Theme.metrics.controlHeight
                radius: Theme.radius.m
                color: Theme.sunken
                border.width: query.activeFocus ? 1 : 0
                border.color: Theme.focusRingSoft

                TextInput {
                    id: query
                    objectName: "pendingQuery"
                    anchors.fill: parent
                    anchors.leftMargin: Theme.space.m
                    anchors.rightMargin: Theme.space.m
                    verticalAlignment: TextInput.AlignVCenter
                    color: Theme.text
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.body
                    focus: true
                    Keys.onReturnPressed: { panel.shelf.submit(text); text = "" }
                    Keys.onEscapePressed: panel.shelf.keepInInbox()

                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: query.text.length === 0
                        text: "Type a collection"
                        color: Theme.tertiaryText
                        font: query.font
                    }
                }
            }

            Text {
                visible: panel.shelf.filingDeferred
                text: "Filing as soon as every clip has arrived\u2026"
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.footnote
            }
        }

        GridView {
            id: grid
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: header.bottom
            anchors.bottom: footer.top
            anchors.margins: Theme.space.l
            clip: true
            cellWidth: width / 2
            cellHeight: cellWidth
            model: panel.shelf.clips

            delegate: Item {
                id: cell
                required property string preview
                required property string title
                required property string domain
                required property bool saved

                width: grid.cellWidth
                height: grid.cellHeight

                Rectangle {
                    anchors.fill: parent
                    anchors.margins: Theme.space.xs
                    radius: Theme.radius.l
                    color: Theme.sunken
                    clip: true

                    Image {
                        anchors.fill: parent
                        source: cell.preview
                        fillMode: Image.PreserveAspectCrop
                        visible: cell.preview.length > 0
                    }
                    Text {
                        anchors.fill: parent
                        anchors.margins: Theme.space.s
                        visible: cell.preview.length === 0
                        text: cell.title.length > 0 ? cell.title : cell.domain
                        wrapMode: Text.Wrap
                        elide: Text.ElideRight
                        color: Theme.secondaryText
                        font.family: Theme.fontFamily
                        font.pixelSize: Theme.type.footnote
                    }
                    Rectangle {
                        // Still arriving: a small dot until the import has given the item.
                        anchors.right: parent.right
                        anchors.top: parent.top
                        anchors.margins: Theme.space.s
                        width: 8
                        height: 8
                        radius: 4
                        color: Theme.accent
                        visible: !cell.saved
                    }
                }
            }
        }

        Row {
            id: footer
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.margins: Theme.space.l
            spacing: Theme.space.s

            KivoButton {
                objectName: "keepInInbox"
                text: "Keep in Inbox"
                focusPolicy: Qt.NoFocus
                onClicked: panel.shelf.keepInInbox()
            }
            KivoButton {
                objectName: "fileClips"
                text: "File"
                prominent: true
                enabled: query.text.trim().length > 0
                focusPolicy: Qt.NoFocus
                onClicked: { panel.shelf.submit(query.text); query.text = "" }
            }
        }
    }
}
