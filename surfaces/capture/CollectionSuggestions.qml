pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// The collections under the card's query, recently used first, with the row that makes a new
// collection last when the query names none. The highlighted row is the one Return takes.
Column {
    id: list

    property var rows: []
    property int highlighted: 0
    property int maximumRows: 4

    signal picked(int row)

    spacing: 1

    Repeater {
        // Keep the highlighted row in view by showing a window of rows around it.
        model: {
            const first = Math.max(0, Math.min(list.highlighted - list.maximumRows + 1, list.rows.length - list.maximumRows));
            return list.rows.slice(first, first + list.maximumRows).map((row, i) => Object.assign({ index: first + i }, row));
        }

        delegate: Rectangle {
            id: row
            required property var modelData
            readonly property bool current: modelData.index === list.highlighted

            objectName: "suggestion" + modelData.index
            width: list.width
            height: 30
            radius: Theme.radius.s
            color: current ? Theme.selection : hover.hovered ? Theme.hover : "transparent"

            HoverHandler { id: hover }
            TapHandler { onTapped: list.picked(row.modelData.index) }

            Glyph {
                id: icon
                anchors.left: parent.left
                anchors.leftMargin: Theme.space.s
                anchors.verticalCenter: parent.verticalCenter
                name: row.modelData.create ? "plus" : "folder"
                color: row.modelData.create ? Theme.accent : Theme.secondaryText
            }

            Text {
                anchors.left: icon.right
                anchors.leftMargin: Theme.space.s
                anchors.right: parent.right
                anchors.rightMargin: Theme.space.s
                anchors.verticalCenter: parent.verticalCenter
                text: row.modelData.create ? "Create \u201c" + row.modelData.name + "\u201d" : row.modelData.name
                color: row.modelData.create ? Theme.accent : Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                font.weight: row.current ? Font.Medium : Font.Normal
                elide: Text.ElideRight
            }
        }
    }
}
