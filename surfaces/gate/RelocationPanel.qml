pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import QtQuick.Dialogs
import Kivo

// The folder chooser for a moved library: type the folder's path or browse to it, then Choose.
Item {
    id: panel

    required property LibraryGate gate

    // The folder browser opens inside this window where the desktop offers no chooser of its own,
    // so the window makes room for it.
    readonly property bool browsing: folderDialog.visible

    implicitWidth: browsing ? 680 : 540
    implicitHeight: browsing ? 520 : column.implicitHeight + 2 * Theme.space.xl

    onVisibleChanged: {
        if (visible) {
            field.text = panel.gate.startFolder;
            field.forceActiveFocus();
            field.selectAll();
        }
    }

    Keys.onEscapePressed: panel.gate.cancelChoice()

    Column {
        id: column
        anchors.fill: parent
        anchors.margins: Theme.space.xl
        spacing: Theme.space.m

        Text {
            objectName: "chooserTitle"
            width: parent.width
            text: panel.gate.chooserTitle
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.title3
            font.weight: Font.DemiBold
        }

        Text {
            objectName: "chooserMessage"
            width: parent.width
            text: panel.gate.chooserMessage
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
        }

        Item { width: 1; height: Theme.space.xs }

        Row {
            width: parent.width
            spacing: Theme.space.s

            Basic.TextField {
                id: field
                objectName: "folderField"
                width: parent.width - browse.width - parent.spacing
                height: Theme.metrics.controlHeight
                leftPadding: Theme.space.m
                rightPadding: Theme.space.m
                color: Theme.text
                selectionColor: Theme.accentFill
                selectedTextColor: Theme.textOnAccent
                placeholderText: "Folder path"
                placeholderTextColor: Theme.tertiaryText
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                selectByMouse: true
                onAccepted: choose.clicked()

                background: Rectangle {
                    radius: Theme.radius.m
                    color: Theme.control
                    border.width: field.activeFocus ? 2 : 1
                    border.color: field.activeFocus ? Theme.focusRingSoft : Theme.controlBorder
                }
            }

            KivoButton {
                id: browse
                objectName: "browseButton"
                text: "Browse…"
                onClicked: folderDialog.open()
            }
        }

        Item { width: 1; height: Theme.space.s }

        Row {
            anchors.right: parent.right
            spacing: Theme.space.s

            KivoButton {
                objectName: "cancelButton"
                text: "Cancel"
                onClicked: panel.gate.cancelChoice()
            }

            KivoButton {
                id: choose
                objectName: "chooseButton"
                text: panel.gate.chooserPrompt
                prominent: true
                enabled: field.text.trim().length > 0
                onClicked: panel.gate.choose(field.text)
            }
        }
    }

    FolderDialog {
        id: folderDialog
        title: panel.gate.chooserTitle
        acceptLabel: panel.gate.chooserPrompt
        currentFolder: panel.gate.startFolderUrl
        onAccepted: panel.gate.choose(panel.gate.pathFromUrl(selectedFolder))
    }
}
