pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo
import Kivo.Services

// The list view of a selection: a row per item in list order, arrow keys stepping linearly.
FocusScope {
    id: list

    required property GridController controller

    clip: true
    Keys.onPressed: event => {
        event.accepted = list.controller.handleKey(event.key, event.modifiers);
    }

    ListView {
        id: rows
        objectName: "rowList"
        anchors.fill: parent
        topMargin: Theme.space.s
        bottomMargin: Theme.space.l
        // Hidden, the list holds no rows, so it costs nothing while the grid shows.
        model: list.visible ? list.controller.rows : null
        reuseItems: true
        cacheBuffer: 400
        boundsBehavior: Flickable.StopAtBounds
        Basic.ScrollBar.vertical: Basic.ScrollBar {}
        delegate: ListRow {
            width: rows.width
            controller: list.controller
            dragStack: dragStack
            onActivated: list.forceActiveFocus()
        }
    }

    Connections {
        target: list.controller
        function onScrollToItem(itemId: string, anchorY: real) {
            if (!list.visible)
                return;
            if (itemId === "")
                rows.positionViewAtBeginning();
            else
                rows.positionViewAtIndex(list.controller.rows.indexOf(itemId), anchorY === 0 ? ListView.Beginning : ListView.Contain);
        }
    }

    DragStack {
        id: dragStack
        x: -width - 40
    }

    DropArea {
        anchors.fill: parent
        onEntered: drag => drag.accepted = list.controller.acceptsDrop(drag.text)
        onDropped: drop => {
            if (list.controller.drop(drop.urls, drop.text))
                drop.acceptProposedAction();
        }
    }
}
