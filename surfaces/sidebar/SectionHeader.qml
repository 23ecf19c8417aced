import QtQuick
import Kivo

// The heading of a sidebar section. A click folds the section away or opens it again; buttons
// of the section (add, sort) sit at its right end.
Item {
    id: header

    property string title
    property bool expanded: true
    property bool collapsible: true
    default property alias trailing: buttons.data

    signal toggled()

    implicitHeight: Theme.metrics.rowHeight + Theme.space.m
    implicitWidth: 200

    Rectangle {
        anchors.fill: parent
        anchors.topMargin: Theme.space.m
        anchors.leftMargin: Theme.space.s
        anchors.rightMargin: Theme.space.s
        radius: Theme.radius.m
        color: hover.hovered && header.collapsible ? Theme.hover : "transparent"

        Item {
            // The heading's own area stops short of its buttons, so they never fold it.
            anchors.left: parent.left
            anchors.right: buttons.left
            height: parent.height

            HoverHandler { id: hover }
            TapHandler {
                enabled: header.collapsible
                onTapped: header.toggled()
            }
        }

        Text {
            id: label
            objectName: "sectionTitle"
            anchors.left: parent.left
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            text: header.title
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.caption
            font.weight: Font.DemiBold
            font.letterSpacing: 0.4
            font.capitalization: Font.AllUppercase
        }

        Glyph {
            anchors.left: label.right
            anchors.leftMargin: Theme.space.xs
            anchors.verticalCenter: parent.verticalCenter
            visible: header.collapsible && (hover.hovered || !header.expanded)
            name: header.expanded ? "chevron.down" : "chevron.right"
            size: 10
            lineWidth: 1.6
            color: Theme.tertiaryText
        }

        Row {
            id: buttons
            anchors.right: parent.right
            anchors.rightMargin: Theme.space.xs
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space.xxs
        }
    }
}
