pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Kivo

// The import's own card at the foot of the window: while files come in, how many of how many with
// a cancel; afterwards, the files that couldn't be imported, named one by one on request, until
// the user dismisses them.
Rectangle {
    id: card

    required property ImportController controller
    readonly property bool showing: controller.busy || controller.failureCount > 0
    property bool detailsOpen: false

    width: 380
    implicitHeight: content.implicitHeight + 2 * Theme.space.l
    radius: Theme.radius.l
    color: Theme.surface
    border.width: 1
    border.color: Theme.hairline
    opacity: showing ? 1 : 0
    visible: opacity > 0
    Behavior on opacity {
        NumberAnimation { duration: Theme.motion.standard; easing.type: Theme.motion.enter }
    }

    ColumnLayout {
        id: content
        anchors.fill: parent
        anchors.margins: Theme.space.l
        spacing: Theme.space.m

        RowLayout {
            visible: card.controller.busy
            spacing: Theme.space.m
            Layout.fillWidth: true

            Text {
                objectName: "importProgressText"
                text: card.controller.progressText
                color: Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                font.weight: Font.Medium
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            KivoButton {
                objectName: "importCancelButton"
                text: "Cancel"
                onClicked: card.controller.cancel()
            }
        }

        Rectangle {
            // The batch's share done, as a hairline that fills.
            visible: card.controller.busy
            Layout.fillWidth: true
            implicitHeight: 4
            radius: 2
            color: Theme.sunken

            Rectangle {
                width: parent.width * card.controller.progress
                height: parent.height
                radius: parent.radius
                color: Theme.accent
                Behavior on width {
                    NumberAnimation { duration: Theme.motion.quick }
                }
            }
        }

        RowLayout {
            visible: card.controller.failureCount > 0
            spacing: Theme.space.s
            Layout.fillWidth: true

            Glyph {
                name: "warning"
                color: Theme.warning
            }
            Text {
                objectName: "importFailureSummary"
                text: card.controller.failureSummary
                color: Theme.warning
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                font.weight: Font.Medium
                elide: Text.ElideRight
                Layout.fillWidth: true
            }
            KivoButton {
                objectName: "importDetailsButton"
                text: card.detailsOpen ? "Hide" : "Details"
                onClicked: card.detailsOpen = !card.detailsOpen
            }
            KivoButton {
                objectName: "importDismissButton"
                text: "Dismiss"
                onClicked: {
                    card.detailsOpen = false;
                    card.controller.dismissFailures();
                }
            }
        }

        ListView {
            id: failedFiles
            objectName: "importFailureList"
            visible: card.detailsOpen && card.controller.failureCount > 0
            model: card.controller.failures
            clip: true
            spacing: Theme.space.xs
            Layout.fillWidth: true
            implicitHeight: Math.min(contentHeight, 180)

            delegate: Column {
                id: failure
                required property var modelData
                width: failedFiles.width

                Text {
                    width: parent.width
                    text: failure.modelData.name
                    color: Theme.text
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.footnote
                    font.weight: Font.Medium
                    elide: Text.ElideMiddle
                }
                Text {
                    width: parent.width
                    text: failure.modelData.error
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.caption
                    elide: Text.ElideRight
                }
            }
        }
    }
}
