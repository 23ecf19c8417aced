pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import QtQuick.Templates as T
import Kivo

// Picks a collection by typing part of its name: the tree, narrowed to the matches, and at its
// foot "New Collection" with what was typed. Up and Down choose, Return takes.
Basic.Popup {
    id: picker

    property string title: "Add to Collection"
    /** Maps of id, name, depth, icon and path, in tree order. */
    property var choices: []

    signal chosen(string collectionId)
    signal createRequested(string name)

    readonly property var matches: {
        const words = filter.text.trim().toLowerCase();
        if (words.length === 0)
            return picker.choices;
        return picker.choices.filter(choice => (choice.path ?? choice.name).toLowerCase().indexOf(words) >= 0);
    }

    function show(options: var) {
        picker.choices = options;
        filter.text = "";
        list.currentIndex = 0;
        picker.open();
        filter.forceActiveFocus();
    }

    function take(index: int) {
        const newRow = index >= picker.matches.length;
        picker.close();
        if (newRow)
            picker.createRequested(filter.text.trim());
        else
            picker.chosen(picker.matches[index].id);
    }

    objectName: "collectionPicker"
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 360
    modal: true
    focus: true
    padding: Theme.space.m
    closePolicy: Basic.Popup.CloseOnEscape | Basic.Popup.CloseOnPressOutside

    T.Overlay.modal: Rectangle { color: Theme.scrim }

    background: Rectangle {
        radius: Theme.radius.xl
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline
    }

    contentItem: Column {
        spacing: Theme.space.s

        Text {
            text: picker.title
            leftPadding: Theme.space.xs
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.headline
            font.weight: Font.DemiBold
        }

        Basic.TextField {
            id: filter
            objectName: "pickerFilter"
            width: parent.width
            placeholderText: "Find or name a collection"
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            color: Theme.text
            placeholderTextColor: Theme.tertiaryText
            leftPadding: Theme.space.s + Theme.space.xxs
            background: Rectangle {
                implicitHeight: Theme.metrics.controlHeight
                radius: Theme.radius.m
                color: Theme.control
                border.width: filter.activeFocus ? 1.5 : 1
                border.color: filter.activeFocus ? Theme.focusRing : Theme.controlBorder
            }
            onTextChanged: list.currentIndex = 0
            Keys.onDownPressed: list.currentIndex = Math.min(list.currentIndex + 1, list.count - 1)
            Keys.onUpPressed: list.currentIndex = Math.max(list.currentIndex - 1, 0)
            Keys.onReturnPressed: picker.take(list.currentIndex)
            Keys.onEnterPressed: picker.take(list.currentIndex)
        }

        ListView {
            id: list
            objectName: "pickerList"
            width: parent.width
            height: Math.min(contentHeight, 320)
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            model: picker.matches.length + 1
            highlightMoveDuration: 0

            delegate: Rectangle {
                id: choiceRow
                required property int index
                readonly property bool isNew: index >= picker.matches.length
                readonly property var choice: isNew ? null : picker.matches[index]
                objectName: isNew ? "pickerNew" : "pickerChoice-" + choice.id
                width: list.width
                height: Theme.metrics.rowHeight
                radius: Theme.radius.m
                color: ListView.isCurrentItem ? Theme.selection : hover.hovered ? Theme.hover : "transparent"

                Glyph {
                    id: choiceGlyph
                    x: Theme.space.s + (choiceRow.isNew || filter.text.length > 0 ? 0 : 14 * choiceRow.choice.depth)
                    anchors.verticalCenter: parent.verticalCenter
                    name: choiceRow.isNew ? "plus" : choiceRow.choice.icon
                    fallback: "folder"
                }
                Text {
                    anchors.left: choiceGlyph.right
                    anchors.leftMargin: Theme.space.s
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space.s
                    anchors.verticalCenter: parent.verticalCenter
                    elide: Text.ElideRight
                    text: choiceRow.isNew ? (filter.text.trim().length > 0 ? "New Collection “" + filter.text.trim() + "”" : "New Collection…")
                        : (filter.text.length > 0 ? (choiceRow.choice.path ?? choiceRow.choice.name) : choiceRow.choice.name)
                    color: choiceRow.isNew ? Theme.accent : Theme.text
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.body
                }
                HoverHandler { id: hover }
                TapHandler { onTapped: picker.take(choiceRow.index) }
            }
        }
    }
}
