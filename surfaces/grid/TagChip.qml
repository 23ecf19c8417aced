import QtQuick
import Kivo

// A tag's name in a small pill, under cards and in list rows.
Rectangle {
    id: chip

    property alias text: label.text

    implicitWidth: label.implicitWidth + Theme.space.s * 2
    implicitHeight: 18
    radius: height / 2
    color: Theme.sunken
    border.width: 1
    border.color: Theme.hairline

    Text {
        id: label
        anchors.centerIn: parent
        color: Theme.secondaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.caption
    }
}
