pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// One of the sidebar's fixed lists or kind filters: glyph, name and a quiet count. Items dropped
// on the Inbox are filed into it.
Item {
    id: row

    required property string key
    required property string title
    required property int count
    required property string icon
    property bool keyboardFocus: false
    property bool dropHighlight: false

    signal activated()

    readonly property bool selected: Store.selectionKey === key

    objectName: "sidebar-" + key
    implicitHeight: Theme.metrics.rowHeight
    implicitWidth: 200

    Rectangle {
        id: background
        anchors.fill: parent
        anchors.leftMargin: Theme.space.s
        anchors.rightMargin: Theme.space.s
        radius: Theme.radius.m
        color: row.dropHighlight ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.18)
             : row.selected ? Theme.selection : hover.hovered ? Theme.hover : "transparent"

        Glyph {
            id: glyph
            anchors.left: parent.left
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            name: row.icon
            color: row.selected && row.keyboardFocus ? Theme.accent : row.selected ? Theme.text : Theme.secondaryText
        }

        Text {
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
            visible: AppSettings.showSidebarCounts
            // Nothing rather than a row of zeros: an empty selection shows no number.
            text: row.count > 0 ? row.count.toLocaleString(Qt.locale(), "f", 0) : ""
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
        }
    }

    HoverHandler {
        id: hover
        onHoveredChanged: hovered ? Store.expectSelection(row.key) : Store.stopExpectingSelection(row.key)
    }
    TapHandler { onTapped: row.activated() }
}
