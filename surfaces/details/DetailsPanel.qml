pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo
import Kivo.Services

// The details panel at the right of the window: the picture, an editable title and note (saved
// when the field is left), tags, the collections the item is in and the facts about it.
Rectangle {
    id: panel

    /** Opens the collection picker for adding the item to a collection. */
    signal addToCollectionRequested(var choices)
    signal closeRequested()

    readonly property alias controller: details

    color: Theme.sidebar

    DetailsController {
        id: details
        objectName: "detailsController"
        store: Store
        itemId: Store.detailsItemId
    }

    // The fields show what is stored whenever it changes underneath them, unless being typed in.
    Connections {
        target: details
        function onChanged() {
            if (!titleField.activeFocus)
                titleField.text = details.title;
            if (!noteField.activeFocus)
                noteField.text = details.note;
        }
    }

    Rectangle {
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: 1
        color: Theme.hairline
    }

    Item {
        id: header
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        height: Theme.metrics.headerHeight

        Text {
            anchors.left: parent.left
            anchors.leftMargin: Theme.space.l
            anchors.verticalCenter: parent.verticalCenter
            text: details.kindText
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
            font.weight: Font.DemiBold
        }
        GlyphButton {
            objectName: "closeDetails"
            anchors.right: parent.right
            anchors.rightMargin: Theme.space.m
            anchors.verticalCenter: parent.verticalCenter
            glyph: "xmark"
            tip: "Close Details"
            onClicked: panel.closeRequested()
        }
    }

    Basic.ScrollView {
        id: scroller
        anchors.top: header.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        contentWidth: availableWidth
        clip: true
        visible: details.available

        Column {
            id: content
            x: Theme.space.l
            width: scroller.availableWidth - 2 * Theme.space.l
            spacing: Theme.space.l
            bottomPadding: Theme.space.xl

            Rectangle {
                // Pictures first: the stored picture, fitted, on a soft well.
                width: parent.width
                height: visible ? Math.min(width * 0.75, Math.max(120, preview.implicitHeight > 0 ? width * preview.implicitHeight / Math.max(1, preview.implicitWidth) : width * 0.6)) : 0
                visible: details.kind === "image" && details.filePath.length > 0
                radius: Theme.radius.l
                color: Theme.sunken
                clip: true

                Image {
                    id: preview
                    objectName: "detailsPreview"
                    anchors.fill: parent
                    source: parent.visible ? "file://" + details.filePath : ""
                    sourceSize.width: 640
                    asynchronous: true
                    fillMode: Image.PreserveAspectFit
                    opacity: status === Image.Ready ? 1 : 0
                    Behavior on opacity { NumberAnimation { duration: Theme.motion.standard } }
                }
            }

            Basic.TextField {
                id: titleField
                objectName: "detailsTitle"
                width: parent.width
                placeholderText: details.fallbackTitle
                text: details.title
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.title3
                font.weight: Font.DemiBold
                color: Theme.text
                placeholderTextColor: Theme.tertiaryText
                selectionColor: Theme.accentFill
                selectedTextColor: Theme.textOnAccent
                leftPadding: Theme.space.xs
                rightPadding: Theme.space.xs
                background: Rectangle {
                    radius: Theme.radius.m
                    color: titleField.activeFocus ? Theme.control : "transparent"
                    border.width: titleField.activeFocus ? 1.5 : 0
                    border.color: Theme.focusRing
                }
                onEditingFinished: {
                    if (!details.commitTitle(titleField.text))
                        titleField.text = details.title;
                }
                Keys.onEscapePressed: {
                    titleField.text = details.title;
                    panel.forceActiveFocus();
                }
            }

            DetailsSection {
                key: "note"
                title: "Note"
                width: parent.width

                Basic.TextArea {
                    id: noteField
                    objectName: "detailsNote"
                    width: parent.width
                    text: details.note
                    placeholderText: "Add a note"
                    wrapMode: TextEdit.Wrap
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.body
                    color: Theme.text
                    placeholderTextColor: Theme.tertiaryText
                    selectionColor: Theme.accentFill
                    selectedTextColor: Theme.textOnAccent
                    background: Rectangle {
                        implicitHeight: 64
                        radius: Theme.radius.m
                        color: Theme.control
                        border.width: noteField.activeFocus ? 1.5 : 1
                        border.color: noteField.activeFocus ? Theme.focusRing : Theme.controlBorder
                    }
                    onActiveFocusChanged: {
                        if (!activeFocus)
                            details.commitNote(noteField.text);
                    }
                }
            }

            DetailsTags {
                width: parent.width
                details: details
            }

            DetailsCollections {
                width: parent.width
                details: details
                onAddRequested: panel.addToCollectionRequested(details.collectionChoices())
            }

            DetailsSection {
                key: "info"
                title: "Information"
                width: parent.width

                InfoLine { label: "Source"; value: details.sourceText; link: details.sourceUrl }
                InfoLine { label: "Kind"; value: details.kindText }
                InfoLine { label: "Size"; value: details.sizeText }
                InfoLine { label: "Dimensions"; value: details.dimensionsText }
                InfoLine { label: "Length"; value: details.durationText }
                InfoLine { label: "Added"; value: details.addedText }
                InfoLine { label: "Created"; value: details.createdText }
                InfoLine { label: "Modified"; value: details.modifiedText }
            }
        }
    }

    Text {
        anchors.centerIn: parent
        visible: !details.available
        text: "Nothing selected"
        color: Theme.tertiaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.body
    }
}
