pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window
import Kivo

// The capture card: a small panel on top of everything that takes the keys while the user titles,
// files and tags what was just clipped. Every key goes to the card's own handling first; what it
// does not use is left alone.
Window {
    id: panel
    objectName: "captureCard"

    required property CapturePalette capture
    readonly property CaptureCardModel card: capture.model

    // Brings the card in: a short fade, so it arrives without a jump.
    function appear() {
        body.opacity = 0
        fadeIn.restart()
        body.forceActiveFocus()
    }

    width: 420
    height: Math.min(body.implicitHeight + 2 * margin, 380 + 2 * margin)
    readonly property int margin: 1
    flags: Qt.Tool | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint
    color: "transparent"
    title: "Kivo Capture"

    NumberAnimation {
        id: fadeIn
        target: body
        property: "opacity"
        from: 0
        to: 1
        duration: 160
        easing.type: Theme.motion.enter
    }

    Rectangle {
        id: body
        objectName: "captureCardBody"
        anchors.fill: parent
        anchors.margins: panel.margin
        implicitHeight: content.implicitHeight + Theme.space.l * 2
        radius: Theme.radius.xl
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline
        focus: true
        clip: true

        Keys.onPressed: (event) => {
            event.accepted = panel.capture.handleKey(event.key, event.modifiers, event.text)
        }

        Column {
            id: content
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: Theme.space.l
            spacing: Theme.space.s

            CardPreview {
                // Makes room for the suggestions while a collection is being looked for.
                visible: !suggestions.visible
                width: parent.width
                card: panel.card
                source: panel.capture.previewSource
            }

            CardField {
                objectName: "titleField"
                width: parent.width
                caption: "Title"
                prompt: "Untitled"
                text: panel.card.title
                active: panel.card.focus === "title"
                selectedLook: panel.card.titleUntouched
                pixelSize: Theme.type.headline
                strong: true
                onActivated: panel.card.setFocusField("title")
            }

            CardField {
                objectName: "collectionField"
                width: parent.width
                caption: "Collection"
                text: panel.card.hasChoice && panel.card.query.length === 0 ? panel.card.chosenName : panel.card.query
                prompt: active ? "Type a collection" : "Where does this go?"
                active: panel.card.focus === "collection"
                onActivated: panel.card.setFocusField("collection")

                Text {
                    visible: panel.card.hasChoice && panel.card.chosenIsNew && panel.card.query.length === 0
                    text: "New"
                    color: Theme.accent
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.caption
                    font.weight: Font.DemiBold
                }

                KivoButton {
                    objectName: "chooseDifferent"
                    visible: panel.card.hasChoice && panel.card.query.length === 0
                    text: "Choose a Different Collection"
                    implicitHeight: 24
                    leftPadding: Theme.space.s
                    rightPadding: Theme.space.s
                    font.pixelSize: Theme.type.footnote
                    focusPolicy: Qt.NoFocus
                    onClicked: panel.card.chooseDifferentCollection()
                }
            }

            CollectionSuggestions {
                id: suggestions
                objectName: "suggestions"
                width: parent.width
                maximumRows: 3
                visible: panel.card.focus === "collection" && rows.length > 0
                rows: panel.card.suggestions
                highlighted: panel.card.highlighted
                onPicked: (row) => panel.card.chooseSuggestion(row)
            }

            CardField {
                objectName: "tagsField"
                width: parent.width
                caption: "Tags"
                text: panel.card.tagDraft
                prompt: panel.card.pendingTags.length > 0 ? "" : "Add tags, Return after each"
                active: panel.card.focus === "tags"
                onActivated: panel.card.setFocusField("tags")
            }

            TagChips {
                width: parent.width
                tags: panel.card.pendingTags
                visible: tags.length > 0
                onRemoved: (index) => panel.card.removeTag(index)
            }

            Item {
                width: parent.width
                height: Theme.metrics.controlHeight

                Text {
                    anchors.left: parent.left
                    anchors.verticalCenter: parent.verticalCenter
                    text: "Tab  next field \u00b7  Ctrl+Return  save \u00b7  Esc  cancel"
                    color: Theme.tertiaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.caption
                }

                Row {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space.s

                    KivoButton {
                        objectName: "cancelButton"
                        text: "Cancel"
                        focusPolicy: Qt.NoFocus
                        onClicked: panel.capture.cancel()
                    }
                    KivoButton {
                        objectName: "saveButton"
                        text: "Save"
                        prominent: true
                        focusPolicy: Qt.NoFocus
                        onClicked: panel.capture.finish()
                    }
                }
            }
        }
    }
}
