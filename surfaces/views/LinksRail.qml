pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo

// The column of links at the trailing edge of a board's grid, shown when the board holds a good
// mix of links and other things.
Rectangle {
    id: rail

    required property GridController controller

    implicitWidth: 236
    color: Theme.sunken

    Rectangle {
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: 1
        color: Theme.hairline
    }

    Text {
        id: heading
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.margins: Theme.space.m
        text: "Links"
        color: Theme.secondaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.footnote
        font.weight: Font.DemiBold
    }

    ListView {
        objectName: "railList"
        anchors.top: heading.bottom
        anchors.topMargin: Theme.space.s
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.leftMargin: Theme.space.xs
        anchors.rightMargin: Theme.space.xs
        clip: true
        model: rail.controller.railRows
        reuseItems: true
        Basic.ScrollBar.vertical: Basic.ScrollBar {}
        delegate: RailLinkCard {
            width: ListView.view.width
            controller: rail.controller
        }
    }
}
