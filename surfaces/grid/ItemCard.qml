pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// One card of the grid: the item's picture (or what stands for it), its chips, hover, selection
// and the keyboard's focus ring. The masonry view creates cards only near the viewport and reuses
// them, writing the item's fields below; the card itself decides nothing.
Item {
    id: card

    // Written by the masonry view for the item it shows.
    required property int index
    required property string itemId
    required property string kind
    required property string displayTitle
    required property string note
    required property string domain
    required property string thumbnail
    required property bool hasFile
    required property color accent
    required property var colours
    required property bool favourite
    required property var tagNames
    required property string durationText
    required property bool selected
    required property bool focused
    required property int thumbnailWidth

    // From the grid.
    property GridController controller
    property bool showTitle: false
    property bool showTags: false
    property color backdrop: Theme.window
    // The picture of a drag of several cards, shared by the grid.
    property DragStack dragStack
    property real spacing: 14

    readonly property real chipsHeight: (showTitle ? 22 : 0) + (showTags ? 21 : 0) + (showTitle || showTags ? 15 : 0)
    readonly property real radius: Math.min(Theme.radius.m, spacing / 2)
    readonly property bool hovered: pointer.containsMouse
    readonly property bool coverless: thumbnail === "" || picture.status === Image.Error

    signal dragStarted(string itemId)
    // Pressed: the grid takes the keyboard.
    signal activated()

    Item {
        id: frame
        objectName: "cardFrame"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        height: card.height - card.chipsHeight

        // What shows while the picture decodes, and for items without one: the palette's first colour.
        Rectangle {
            anchors.fill: parent
            radius: card.radius
            color: card.colours && card.colours.length > 0 ? card.colours[0] : Theme.sunken
            opacity: picture.status === Image.Ready ? 0 : 1
        }

        Image {
            id: picture
            objectName: "cardPicture"
            anchors.fill: parent
            source: card.thumbnail === "" ? "" : card.thumbnail + "?" + card.thumbnailWidth
            sourceSize.width: card.thumbnailWidth
            fillMode: Image.PreserveAspectCrop
            cache: false
            smooth: true
            opacity: status === Image.Ready ? 1 : 0
            Behavior on opacity {
                NumberAnimation { duration: Theme.motion.standard; easing.type: Theme.motion.enter }
            }
        }

        CardStandIn {
            anchors.fill: parent
            visible: card.coverless
            kind: card.kind
            // Words are laid out only for a card that shows them: a reused card would otherwise
            // shape every title it passes while scrolling.
            title: card.coverless ? card.displayTitle : ""
            note: card.coverless ? card.note : ""
            domain: card.coverless ? card.domain : ""
            accent: card.accent
        }

        Rectangle {
            // A video's length, bottom right.
            visible: card.durationText !== ""
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.margins: Theme.space.s
            width: length.implicitWidth + Theme.space.s * 2
            height: length.implicitHeight + Theme.space.xs
            radius: height / 2
            color: "#99000000"
            Text {
                id: length
                anchors.centerIn: parent
                text: card.durationText
                color: "white"
                font.pixelSize: Theme.type.caption
                font.weight: Font.DemiBold
            }
        }

        Text {
            visible: card.favourite
            anchors.top: parent.top
            anchors.right: parent.right
            anchors.margins: Theme.space.s
            text: "\u2665"
            color: "white"
            style: Text.Raised
            styleColor: "#66000000"
            font.pixelSize: Theme.type.headline
        }

        Rectangle {
            // Hover: the card darkens a touch.
            anchors.fill: parent
            radius: card.radius
            color: "black"
            opacity: card.hovered ? 0.07 : 0
            Behavior on opacity {
                NumberAnimation { duration: Theme.motion.quick }
            }
        }

        Rectangle {
            // The item's accent as a faint edge.
            anchors.fill: parent
            radius: card.radius
            color: "transparent"
            border.width: 1
            border.color: card.accent.a > 0 ? Qt.rgba(card.accent.r, card.accent.g, card.accent.b, 0.45) : Theme.hairline
        }

        Rectangle {
            // Rounds the picture's corners: a frame of the backdrop's colour whose inner edge is the card.
            readonly property real mask: card.radius
            visible: mask > 0
            anchors.fill: parent
            anchors.margins: -mask
            radius: card.radius + mask
            color: "transparent"
            border.width: mask
            border.color: card.backdrop
        }
    }

    Column {
        anchors.top: frame.bottom
        anchors.topMargin: 7
        anchors.left: parent.left
        anchors.right: parent.right
        visible: card.showTitle || card.showTags

        Text {
            visible: card.showTitle
            width: parent.width
            height: 22
            verticalAlignment: Text.AlignVCenter
            text: card.showTitle ? card.displayTitle : ""
            elide: Text.ElideRight
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
            font.weight: Font.Medium
        }

        Row {
            visible: card.showTags
            width: parent.width
            height: 21
            spacing: Theme.space.xs
            clip: true
            Repeater {
                model: card.showTags ? card.tagNames : []
                delegate: TagChip {
                    required property string modelData
                    anchors.verticalCenter: parent.verticalCenter
                    text: modelData
                }
            }
        }
    }

    Rectangle {
        // The multi-selection's mark.
        objectName: "selectionRing"
        visible: card.selected
        anchors.fill: frame
        anchors.margins: -3
        radius: card.radius + 3
        color: "transparent"
        border.width: 3
        border.color: Theme.accent
    }

    Rectangle {
        // The keyboard's focus ring, only while arrow keys lead.
        objectName: "focusRing"
        visible: card.focused
        anchors.fill: frame
        anchors.margins: -5
        radius: card.radius + 5
        color: "transparent"
        border.width: 2
        border.color: Theme.focusRing
    }

    DragOut {
        id: dragOut
        controller: card.controller
        dragStack: card.dragStack
        Drag.onDragStarted: card.dragStarted(card.itemId)
    }

    MouseArea {
        id: pointer
        objectName: "cardPointer"
        anchors.fill: frame
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        drag.target: dragOut
        drag.threshold: 6
        onPressed: mouse => {
            if (mouse.button === Qt.RightButton) {
                if (card.controller)
                    card.controller.requestItemMenu(card.itemId, pointer, mouse.x, mouse.y);
                return;
            }
            card.activated();
            dragOut.prepare(card.itemId, frame, Qt.point(mouse.x, mouse.y));
        }
        onReleased: dragOut.reset()
        drag.onActiveChanged: {
            if (drag.active)
                dragOut.start();
        }
        onClicked: mouse => {
            if (card.controller && mouse.button === Qt.LeftButton)
                card.controller.clickItem(card.itemId, 1, mouse.modifiers);
        }
        onDoubleClicked: mouse => {
            // The second click of a double click never reopens what the first one opened.
            if (card.controller && mouse.button === Qt.LeftButton)
                card.controller.clickItem(card.itemId, 2, mouse.modifiers);
        }
    }
}
