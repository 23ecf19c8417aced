import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo

// A context or pull-down menu in Kivo's quiet style: a raised card with soft rows.
Basic.Menu {
    id: menu

    padding: Theme.space.xs + 1
    implicitWidth: Math.max(256, contentWidth + leftPadding + rightPadding)
    font.family: Theme.fontFamily
    font.pixelSize: Theme.type.body
    delegate: KivoMenuItem {}

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion.quick }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion.quick }
    }

    background: Rectangle {
        implicitWidth: 256
        radius: Theme.radius.l
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline

        Rectangle {
            // A soft shadow without an effect: a second card, offset and faint.
            z: -1
            anchors.fill: parent
            anchors.topMargin: 3
            anchors.bottomMargin: -3
            radius: parent.radius
            color: Theme.scrim
            opacity: 0.25
        }
    }
}
