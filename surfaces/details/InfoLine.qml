import QtQuick
import Kivo

// One fact of the details panel: a quiet label on the left, the value on the right.
Item {
    id: line

    required property string label
    property string value
    /** Makes the value a link that opens this address. */
    property string link

    visible: value.length > 0
    width: parent ? parent.width : 200
    implicitHeight: valueText.implicitHeight + Theme.space.xxs

    Text {
        id: labelText
        width: 84
        text: line.label
        color: Theme.secondaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.footnote
    }
    Text {
        id: valueText
        objectName: "info-" + line.label
        anchors.left: labelText.right
        anchors.right: parent.right
        text: line.value
        color: line.link.length > 0 ? Theme.accent : Theme.text
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.footnote
        font.underline: line.link.length > 0 && linkHover.hovered
        wrapMode: Text.WrapAnywhere
        maximumLineCount: 3
        elide: Text.ElideRight

        HoverHandler {
            id: linkHover
            enabled: line.link.length > 0
            cursorShape: Qt.PointingHandCursor
        }
        TapHandler {
            enabled: line.link.length > 0
            onTapped: Qt.openUrlExternally(line.link)
        }
    }
}
