pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// One selection in the sidebar: glyph, name and a quiet count.
Item {
    id: row

    required property int index
    required property string key
    required property string title
    required property int count
    required property string icon
    required property string sectionTitle
    property bool selected: false
    property bool keyboardFocus: false

    signal activated(string key)

    objectName: "sidebar-" + key
    implicitHeight: Theme.metrics.rowHeight + (sectionTitle.length > 0 ? 40 : 0)
    implicitWidth: 200

    Text {
        // The heading of the section this row opens.
        objectName: "sectionHeader"
        visible: row.sectionTitle.length > 0
        anchors.left: parent.left
        anchors.leftMargin: Theme.space.l + Theme.space.xxs
        anchors.bottom: background.top
        anchors.bottomMargin: Theme.space.xs + Theme.space.xxs
        text: row.sectionTitle
        color: Theme.tertiaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.caption
        font.weight: Font.DemiBold
        font.letterSpacing: 0.4
        font.capitalization: Font.AllUppercase
    }

    Rectangle {
        id: background
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: Theme.metrics.rowHeight
        anchors.leftMargin: Theme.space.s
        anchors.rightMargin: Theme.space.s
        radius: Theme.radius.m
        color: row.selected ? Theme.selection : mouse.containsMouse ? Theme.hover : "transparent"

        Glyph {
            id: glyph
            anchors.left: parent.left
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            name: row.icon
            color: row.selected && row.keyboardFocus ? Theme.accent : row.selected ? Theme.text : Theme.secondaryText
        }

        Text {
            id: label
            objectName: "title"
            anchors.left: glyph.right
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.right: countLabel.left
            anchors.rightMargin: Theme.space.s
            anchors.verticalCenter: parent.verticalCenter
            text: row.title
            elide: Text.ElideRight
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            font.weight: row.selected ? Font.DemiBold : Font.Normal
        }

        Text {
            id: countLabel
            objectName: "count"
            anchors.right: parent.right
            anchors.rightMargin: Theme.space.s + Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            // Nothing rather than a row of zeros: an empty selection shows no number.
            text: row.count > 0 ? row.count.toLocaleString(Qt.locale(), "f", 0) : ""
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
        }
    }

    MouseArea {
        id: mouse
        anchors.fill: background
        hoverEnabled: true
        onClicked: row.activated(row.key)
    }
}
