pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// One short message at the bottom centre of the window, with its button when it has one. It
// leaves by itself after a few seconds, but not while the pointer rests on it or it has the
// keyboard focus, so an "Undo" can always be reached. Ctrl+Z presses the button while it shows.
Item {
    id: area

    /** The words; empty hides the toast. */
    property string text
    /** The button's words ("Undo"); empty for none. */
    property string actionText
    /** Changes with every toast, also when the words repeat, to start the time again. */
    property int serial
    property int timeout: 4000

    signal actionTriggered()
    signal dismissed()

    readonly property bool showing: card.state === "shown"

    implicitHeight: card.height

    function restart() {
        if (area.text.length === 0) {
            card.state = "";
            return;
        }
        card.state = "shown";
        life.restart();
    }

    onSerialChanged: restart()
    onTextChanged: restart()
    Component.onCompleted: restart()

    Timer {
        id: life
        interval: area.timeout
        running: false
        onTriggered: {
            if (hover.hovered || card.activeFocus || actionButton.activeFocus)
                life.restart();
            else
                area.dismissed();
        }
    }

    Shortcut {
        sequences: [StandardKey.Undo]
        enabled: area.showing && area.actionText.length > 0
        onActivated: area.actionTriggered()
    }

    Rectangle {
        id: card
        objectName: "toast"
        anchors.horizontalCenter: parent.horizontalCenter
        y: Theme.space.l
        width: Math.min(row.implicitWidth + 2 * Theme.space.l, area.width - 2 * Theme.space.xl)
        height: Theme.metrics.controlHeight + Theme.space.m
        radius: height / 2
        color: Theme.dark ? "#f2f2f4" : "#27272a"
        opacity: 0
        visible: opacity > 0
        activeFocusOnTab: visible
        Accessible.role: Accessible.AlertMessage
        Accessible.name: area.text

        Keys.onEscapePressed: area.dismissed()

        states: State {
            name: "shown"
            PropertyChanges { card.opacity: 1; card.y: 0 }
        }
        transitions: [
            Transition {
                to: "shown"
                NumberAnimation { properties: "opacity,y"; duration: Theme.motion.standard; easing.type: Theme.motion.enter }
            },
            Transition {
                from: "shown"
                NumberAnimation { properties: "opacity,y"; duration: Theme.motion.quick; easing.type: Theme.motion.move }
            }
        ]

        HoverHandler { id: hover }

        Row {
            id: row
            anchors.centerIn: parent
            spacing: Theme.space.m

            Text {
                objectName: "toastText"
                anchors.verticalCenter: parent.verticalCenter
                text: area.text
                color: Theme.dark ? "#1c1c1e" : "#f4f4f5"
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                font.weight: Font.Medium
                elide: Text.ElideRight
                width: Math.min(implicitWidth, area.width - 2 * Theme.space.xl - actionButton.width - 3 * Theme.space.l)
            }

            Rectangle {
                id: actionButton
                objectName: "toastAction"
                visible: area.actionText.length > 0
                anchors.verticalCenter: parent.verticalCenter
                width: actionLabel.implicitWidth + 2 * Theme.space.m
                height: Theme.metrics.controlHeight - Theme.space.s
                radius: height / 2
                color: actionMouse.pressed ? Qt.rgba(0.5, 0.5, 0.5, 0.35)
                     : actionMouse.containsMouse || activeFocus ? Qt.rgba(0.5, 0.5, 0.5, 0.22) : Qt.rgba(0.5, 0.5, 0.5, 0.12)
                activeFocusOnTab: visible
                border.width: activeFocus ? 2 : 0
                border.color: Theme.focusRing
                Accessible.role: Accessible.Button
                Accessible.name: area.actionText
                Accessible.onPressAction: area.actionTriggered()
                Keys.onReturnPressed: area.actionTriggered()
                Keys.onEnterPressed: area.actionTriggered()
                Keys.onSpacePressed: area.actionTriggered()

                Text {
                    id: actionLabel
                    objectName: "toastActionText"
                    anchors.centerIn: parent
                    text: area.actionText
                    color: Theme.dark ? Theme.accentFill : "#a9b8ff"
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.body
                    font.weight: Font.DemiBold
                }

                MouseArea {
                    id: actionMouse
                    anchors.fill: parent
                    hoverEnabled: true
                    cursorShape: Qt.PointingHandCursor
                    onClicked: area.actionTriggered()
                }
            }
        }
    }
}
