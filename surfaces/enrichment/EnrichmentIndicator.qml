pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// A quiet note of how many items are still being read in the background (text in pictures,
// colours, tags). It waits a moment before it shows, so a single new item never flashes it, and
// it fades away when reading is done.
Item {
    id: indicator

    required property int pendingCount

    readonly property bool active: pendingCount > 0
    property bool shown: false

    implicitWidth: row.implicitWidth + Theme.space.m * 2
    implicitHeight: Theme.metrics.rowHeight - Theme.space.xs
    opacity: shown ? 1 : 0
    visible: opacity > 0

    Behavior on opacity {
        NumberAnimation { duration: Theme.motion.gentle; easing.type: Theme.motion.move }
    }

    onActiveChanged: {
        if (active) {
            showDelay.restart()
        } else {
            showDelay.stop()
            shown = false
        }
    }

    Timer {
        id: showDelay
        interval: 1500
        onTriggered: indicator.shown = indicator.active
    }

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: Theme.surface
        border.color: Theme.hairline
        border.width: 1
    }

    Row {
        id: row
        anchors.centerIn: parent
        spacing: Theme.space.s

        Rectangle {
            id: pulse
            anchors.verticalCenter: parent.verticalCenter
            width: 6
            height: 6
            radius: 3
            color: Theme.accent

            SequentialAnimation on opacity {
                running: indicator.shown
                loops: Animation.Infinite
                NumberAnimation { from: 1; to: 0.3; duration: 900; easing.type: Easing.InOutSine }
                NumberAnimation { from: 0.3; to: 1; duration: 900; easing.type: Easing.InOutSine }
            }
        }

        Text {
            objectName: "enrichmentText"
            anchors.verticalCenter: parent.verticalCenter
            text: indicator.pendingCount === 1
                  ? qsTr("Reading 1 item")
                  : qsTr("Reading %1 items").arg(indicator.pendingCount.toLocaleString(Qt.locale(), "f", 0))
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
        }
    }
}
