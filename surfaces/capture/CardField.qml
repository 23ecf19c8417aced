import QtQuick
import Kivo

// One of the card's three fields: a caption, the text typed so far (or its prompt) and a caret
// while it has the card's focus. The card reads every key itself, so this only shows and takes clicks.
Rectangle {
    id: field

    property string caption
    property string text
    property string prompt
    property bool active: false
    // An untouched title is shown selected: the first key replaces it.
    property bool selectedLook: false
    property int pixelSize: Theme.type.body
    property bool strong: false
    default property alias accessory: trailing.data

    signal activated()

    implicitHeight: Math.max(Theme.metrics.controlHeight + 4, column.implicitHeight + Theme.space.s * 2)
    radius: Theme.radius.m
    color: active ? Theme.sunken : "transparent"
    border.width: active ? 1 : 0
    border.color: Theme.focusRingSoft

    Behavior on color { ColorAnimation { duration: Theme.motion.quick } }

    MouseArea {
        anchors.fill: parent
        onClicked: field.activated()
    }

    Column {
        id: column
        anchors.left: parent.left
        anchors.right: trailing.left
        anchors.leftMargin: Theme.space.m
        anchors.rightMargin: Theme.space.s
        anchors.verticalCenter: parent.verticalCenter
        spacing: 1

        Text {
            text: field.caption
            visible: field.caption.length > 0
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.caption
            font.weight: Font.Medium
        }

        Row {
            width: parent.width
            spacing: 1

            Rectangle {
                // The untouched title's selection, a soft wash behind the text.
                width: Math.min(value.implicitWidth, parent.width - caret.width - 1)
                height: value.implicitHeight
                radius: 3
                color: field.selectedLook && field.active && field.text.length > 0 ? Theme.focusRingSoft : "transparent"

                Text {
                    id: value
                    anchors.fill: parent
                    text: field.text.length > 0 ? field.text : field.prompt
                    color: field.text.length > 0 ? Theme.text : Theme.tertiaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: field.pixelSize
                    font.weight: field.strong ? Font.DemiBold : Font.Normal
                    elide: Text.ElideLeft
                    maximumLineCount: 1
                }
            }

            Rectangle {
                id: caret
                width: 2
                height: value.implicitHeight
                radius: 1
                color: Theme.accent
                visible: field.active && !(field.selectedLook && field.text.length > 0)

                SequentialAnimation on opacity {
                    running: caret.visible
                    loops: Animation.Infinite
                    NumberAnimation { to: 0; duration: 480; easing.type: Easing.InOutQuad }
                    NumberAnimation { to: 1; duration: 480; easing.type: Easing.InOutQuad }
                }
            }
        }
    }

    Row {
        id: trailing
        anchors.right: parent.right
        anchors.rightMargin: Theme.space.s
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space.xs
    }
}
