import QtQuick
import Kivo

// What an empty library shows where the cards will be: an invitation to drop something in.
Item {
    id: empty

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
                text: "Drag anything here"
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
                text: "Images, links, videos and notes all land in your library."
                color: Theme.secondaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                lineHeight: 1.2
            }
        }
    }
}
