pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo
import Kivo.Services

// A selection's cards as a masonry, or as days of masonry in the timeline, in a scrolling view:
// arrow keys and the other grid keys, the reveal scroll, and drops from other programs.
FocusScope {
    id: grid

    required property GridController controller
    property bool timeline: false
    readonly property MasonryView masonry: masonry
    readonly property Flickable flickable: flick

    clip: true
    Keys.onPressed: event => {
        event.accepted = grid.controller.handleKey(event.key, event.modifiers);
    }

    Flickable {
        id: flick
        objectName: "gridFlickable"
        anchors.fill: parent
        contentWidth: width
        contentHeight: masonry.contentHeight
        boundsBehavior: Flickable.StopAtBounds
        maximumFlickVelocity: 5000
        flickDeceleration: 4000
        Basic.ScrollBar.vertical: Basic.ScrollBar {
            policy: Basic.ScrollBar.AsNeeded
        }

        MasonryView {
            id: masonry
            objectName: "masonry"
            width: flick.width
            height: contentHeight
            model: grid.controller.rows
            timeline: grid.timeline
            columns: Math.floor(AppSettings.gridColumns)
            spacing: AppSettings.gridSpacing
            cardShape: AppSettings.cardShape
            cardShowTitle: AppSettings.cardShowTitle
            cardShowTags: AppSettings.cardShowTags
            viewportY: flick.contentY
            viewportHeight: flick.height
            selectedIds: Store.selectedItemIds
            focusedId: grid.controller.ringId

            delegate: ItemCard {
                controller: grid.controller
                showTitle: AppSettings.cardShowTitle
                showTags: AppSettings.cardShowTags
                spacing: AppSettings.gridSpacing
                dragStack: dragStack
                onActivated: grid.forceActiveFocus()
            }
            sectionDelegate: TimelineHeading {}
        }
    }

    NumberAnimation {
        id: scrolling
        target: flick
        property: "contentY"
        duration: Theme.motion.standard
        easing.type: Theme.motion.move
    }

    Connections {
        target: grid.controller
        function onScrollToItem(itemId: string, anchorY: real) {
            if (!grid.visible)
                return;
            scrolling.stop();
            if (itemId === "") {
                flick.contentY = 0;
                return;
            }
            scrolling.to = masonry.scrollTargetFor(itemId, anchorY);
            scrolling.start();
        }
    }

    DragStack {
        // Drawn outside the clipped area; grabbed as the picture of a drag of several cards.
        id: dragStack
        x: -width - 40
        thumbnailWidth: masonry.thumbnailWidth
    }

    DropArea {
        id: dropArea
        objectName: "gridDropArea"
        anchors.fill: parent
        property bool welcome: false
        onEntered: drag => {
            welcome = grid.controller.acceptsDrop(drag.text);
            drag.accepted = welcome;
        }
        onExited: welcome = false
        onDropped: drop => {
            welcome = false;
            if (grid.controller.drop(drop.urls, drop.text))
                drop.acceptProposedAction();
            else
                drop.accepted = false;
        }
    }

    Rectangle {
        // The whole grid lights up under a drop it will take.
        anchors.fill: parent
        anchors.margins: Theme.space.xs
        radius: Theme.radius.l
        color: "transparent"
        border.width: 2
        border.color: Theme.accent
        visible: dropArea.containsDrag && dropArea.welcome
    }
}
