import QtQuick
import Kivo

// What a selection without items shows where the cards would be: for an empty library, an
// invitation to drop something in; elsewhere the selection's own words.
Item {
    id: empty

    property string title: "Drag anything here"
    property string message: "Images, links, videos and notes all land in your library."

    implicitWidth: column.implicitWidth
    implicitHeight: column.implicitHeight

    Column {
        id: column
        anchors.centerIn: parent
        spacing: Theme.space.l

        Rectangle {
            // A soft drop well: the place things land.
            anchors.horizontalCenter: parent.horizontalCenter
            width: 88
            height: 88
            radius: 26
            color: Theme.sunken
            border.width: 1
            border.color: Theme.hairline

            Glyph {
                anchors.centerIn: parent
                name: "drop"
                size: 36
                lineWidth: 1.1
                color: Theme.secondaryText
            }
        }

        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: Theme.space.s

            Text {
                objectName: "emptyTitle"
                anchors.horizontalCenter: parent.horizontalCenter
                text: empty.title
                color: Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.title3
                font.weight: Font.DemiBold
            }

            Text {
                objectName: "emptyMessage"
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(implicitWidth, 360)
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
                text: empty.message
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                lineHeight: 1.2
            }
        }
    }
}
