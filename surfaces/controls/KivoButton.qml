import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo

// The push button of Kivo's own windows: quiet by default, filled with the accent when it is
// the choice a press of Return would make.
Basic.Button {
    id: button

    property bool prominent: false

    implicitHeight: Theme.metrics.controlHeight
    leftPadding: Theme.space.l
    rightPadding: Theme.space.l
    font.family: Theme.fontFamily
    font.pixelSize: Theme.type.body
    font.weight: prominent ? Font.DemiBold : Font.Medium
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.45

    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    contentItem: Text {
        text: button.text
        font: button.font
        color: button.prominent ? Theme.textOnAccent : Theme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }

    background: Rectangle {
        radius: Theme.radius.m
        color: {
            if (button.prominent)
                return button.down ? Qt.darker(Theme.accentFill, 1.15) : button.hovered ? Qt.lighter(Theme.accentFill, 1.06) : Theme.accentFill;
            return button.down ? Theme.pressed : button.hovered ? Theme.hover : Theme.control;
        }
        border.width: button.prominent ? 0 : 1
        border.color: Theme.controlBorder

        Rectangle {
            // Keyboard focus ring, drawn just outside the button.
            anchors.fill: parent
            anchors.margins: -3
            radius: parent.radius + 3
            color: "transparent"
            border.width: 2
            border.color: Theme.focusRing
            opacity: 0.55
            visible: button.visualFocus
        }
    }
}
