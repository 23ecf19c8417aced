pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// The sidebar: the fixed selections, then the kind filters under "Types". Up and Down move the
// selection, Home and End jump to either end.
Rectangle {
    id: sidebar

    required property SidebarModel model

    color: Theme.sidebar
    activeFocusOnTab: true

    Keys.onUpPressed: sidebar.model.moveSelection(-1)
    Keys.onDownPressed: sidebar.model.moveSelection(1)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_Home) {
            sidebar.model.moveSelection(-sidebar.model.rowCount());
            event.accepted = true;
        } else if (event.key === Qt.Key_End) {
            sidebar.model.moveSelection(sidebar.model.rowCount());
            event.accepted = true;
        }
    }

    Text {
        id: wordmark
        anchors.left: parent.left
        anchors.leftMargin: Theme.space.l + Theme.space.xxs
        anchors.top: parent.top
        height: Theme.metrics.headerHeight
        verticalAlignment: Text.AlignVCenter
        text: "Kivo"
        color: Theme.text
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.headline
        font.weight: Font.Bold
        font.letterSpacing: 0.2
    }

    ListView {
        id: list
        objectName: "sidebarList"
        anchors.top: wordmark.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        model: sidebar.model
        currentIndex: sidebar.model.selectedRow
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: false
        spacing: 1

        delegate: SidebarRow {
            width: ListView.view.width
            selected: ListView.isCurrentItem
            keyboardFocus: sidebar.activeFocus
            onActivated: key => {
                sidebar.model.select(key);
                sidebar.forceActiveFocus();
            }
        }
    }
}
