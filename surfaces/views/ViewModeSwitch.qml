pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// Cards, list or timeline for the current selection; the choice is remembered per selection.
Rectangle {
    id: modes

    implicitWidth: row.implicitWidth + 4
    implicitHeight: 28
    radius: Theme.radius.m
    color: Theme.sunken
    border.width: 1
    border.color: Theme.hairline

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 2
        Repeater {
            model: [{ mode: "cards", label: "Cards" }, { mode: "list", label: "List" }, { mode: "timeline", label: "Timeline" }]
            delegate: Rectangle {
                id: segment
                required property var modelData
                readonly property bool chosen: Store.viewMode === modelData.mode
                objectName: "viewMode-" + modelData.mode
                width: label.implicitWidth + Theme.space.l * 2 - 4
                height: 24
                radius: Theme.radius.s
                color: chosen ? Theme.control : hover.containsMouse ? Theme.hover : "transparent"
                border.width: chosen ? 1 : 0
                border.color: Theme.controlBorder
                Text {
                    id: label
                    anchors.centerIn: parent
                    text: segment.modelData.label
                    color: segment.chosen ? Theme.text : Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.footnote
                    font.weight: segment.chosen ? Font.DemiBold : Font.Normal
                }
                MouseArea {
                    id: hover
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: Store.viewMode = segment.modelData.mode
                }
            }
        }
    }
}
