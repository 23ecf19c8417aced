import QtQuick
import Kivo

// The day above a group of cards in the timeline.
Item {
    id: heading

    required property string title

    Text {
        anchors.left: parent.left
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space.s
        text: heading.title
        color: Theme.text
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.headline
        font.weight: Font.DemiBold
    }
}
