import QtQuick
import Kivo

// The right end of the selection's header: how to show it, and the options of that way.
Row {
    id: toolbar

    spacing: Theme.space.s

    ViewModeSwitch {
        anchors.verticalCenter: parent.verticalCenter
    }

    KivoButton {
        id: optionsButton
        objectName: "viewOptionsButton"
        anchors.verticalCenter: parent.verticalCenter
        implicitHeight: 28
        text: "View"
        onClicked: options.opened ? options.close() : options.open()
    }

    ViewOptionsPopup {
        id: options
        x: toolbar.width - width
        y: toolbar.height + Theme.space.s
    }

    function openOptions() {
        options.open();
    }
}
