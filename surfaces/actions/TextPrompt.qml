pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import QtQuick.Templates as T
import Kivo

// A small sheet that asks for a few words (a title, a tag, a collection's name), with optional
// completions under the field. Return accepts, Escape cancels.
Basic.Popup {
    id: prompt

    property string title
    property string placeholder
    property string acceptText: "Done"
    /** Called with the field's text to list completions; none when unset. */
    property var completer: null
    readonly property alias text: field.text

    signal accepted(string text)

    function ask(heading: string, initial: string, hint: string) {
        prompt.title = heading;
        prompt.placeholder = hint;
        field.text = initial;
        prompt.open();
        field.selectAll();
        field.forceActiveFocus();
    }

    function accept(words: string) {
        if (words.trim().length === 0)
            return;
        prompt.close();
        prompt.accepted(words);
    }

    objectName: "textPrompt"
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 340
    modal: true
    focus: true
    padding: Theme.space.l
    closePolicy: Basic.Popup.CloseOnEscape | Basic.Popup.CloseOnPressOutside

    T.Overlay.modal: Rectangle { color: Theme.scrim }

    background: Rectangle {
        radius: Theme.radius.xl
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline
    }

    contentItem: Column {
        spacing: Theme.space.m

        Text {
            objectName: "promptTitle"
            text: prompt.title
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.headline
            font.weight: Font.DemiBold
        }

        Basic.TextField {
            id: field
            objectName: "promptField"
            width: parent.width
            placeholderText: prompt.placeholder
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            color: Theme.text
            placeholderTextColor: Theme.tertiaryText
            selectionColor: Theme.accentFill
            selectedTextColor: Theme.textOnAccent
            leftPadding: Theme.space.s + Theme.space.xxs
            background: Rectangle {
                implicitHeight: Theme.metrics.controlHeight
                radius: Theme.radius.m
                color: Theme.control
                border.width: field.activeFocus ? 1.5 : 1
                border.color: field.activeFocus ? Theme.focusRing : Theme.controlBorder
            }
            Keys.onReturnPressed: prompt.accept(field.text)
            Keys.onEnterPressed: prompt.accept(field.text)
            Keys.onDownPressed: completions.forceActiveFocus()
        }

        ListView {
            id: completions
            objectName: "promptCompletions"
            width: parent.width
            height: contentHeight
            visible: count > 0
            interactive: false
            model: prompt.completer && prompt.opened ? prompt.completer(field.text) : []
            keyNavigationEnabled: true
            Keys.onReturnPressed: prompt.accept(completions.model[completions.currentIndex])
            Keys.onUpPressed: event => {
                if (completions.currentIndex === 0)
                    field.forceActiveFocus();
                else
                    event.accepted = false;
            }

            delegate: Rectangle {
                id: suggestion
                required property string modelData
                required property int index
                width: completions.width
                height: Theme.metrics.rowHeight - 4
                radius: Theme.radius.s
                color: completions.activeFocus && completions.currentIndex === index ? Theme.selection
                     : hover.hovered ? Theme.hover : "transparent"

                Glyph {
                    id: tagGlyph
                    anchors.left: parent.left
                    anchors.leftMargin: Theme.space.s
                    anchors.verticalCenter: parent.verticalCenter
                    name: "tag"
                    size: 13
                }
                Text {
                    anchors.left: tagGlyph.right
                    anchors.leftMargin: Theme.space.s
                    anchors.verticalCenter: parent.verticalCenter
                    text: suggestion.modelData
                    color: Theme.text
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.body
                }
                HoverHandler { id: hover }
                TapHandler { onTapped: prompt.accept(suggestion.modelData) }
            }
        }

        Row {
            anchors.right: parent.right
            spacing: Theme.space.s

            KivoButton {
                text: "Cancel"
                onClicked: prompt.close()
            }
            KivoButton {
                objectName: "promptAccept"
                text: prompt.acceptText
                prominent: true
                enabled: field.text.trim().length > 0
                onClicked: prompt.accept(field.text)
            }
        }
    }
}
