pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// An alert in Kivo's own window: a badge, a title, the explanation and the choices stacked
// full width, the first one being what Return does.
Item {
    id: alert

    required property string title
    required property string message
    required property list<string> choices
    property string glyph: "folder"
    property color glyphColor: Theme.accent

    signal chosen(int index)

    implicitWidth: 460
    implicitHeight: column.implicitHeight + 2 * Theme.space.xl

    function focusFirstChoice() {
        const first = buttons.itemAt(0);
        if (first)
            first.forceActiveFocus();
    }

    onVisibleChanged: if (visible) focusFirstChoice()

    Column {
        id: column
        anchors.fill: parent
        anchors.margins: Theme.space.xl
        spacing: Theme.space.l

        Rectangle {
            width: 52
            height: 52
            radius: 14
            color: Theme.sunken
            border.width: 1
            border.color: Theme.hairline

            Glyph {
                anchors.centerIn: parent
                name: alert.glyph
                size: 26
                lineWidth: 1.3
                color: alert.glyphColor
            }
        }

        Text {
            objectName: "alertTitle"
            width: parent.width
            text: alert.title
            wrapMode: Text.Wrap
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.title3
            font.weight: Font.DemiBold
        }

        Text {
            objectName: "alertText"
            width: parent.width
            text: alert.message
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            lineHeight: 1.15
        }

        Item { width: 1; height: Theme.space.xs }

        Column {
            width: parent.width
            spacing: Theme.space.s

            Repeater {
                id: buttons
                model: alert.choices

                KivoButton {
                    required property string modelData
                    required property int index
                    objectName: "choice-" + index
                    width: parent.width
                    text: modelData
                    prominent: index === 0
                    onClicked: alert.chosen(index)
                }
            }
        }
    }
}
