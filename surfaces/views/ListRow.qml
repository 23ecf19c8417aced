pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// One item as a row of the list view: a small picture, the title, and the fields the view's
// settings ask for, on one line or stacked under the title. Clicks follow the cards' rules.
Item {
    id: row

    required property int index
    required property string itemId
    required property string kind
    required property string displayTitle
    required property string domain
    required property string dateText
    required property var tagNames
    required property string sizeText
    required property string thumbnail
    required property var colours
    required property bool favourite

    property GridController controller
    property DragStack dragStack
    readonly property bool stacked: AppSettings.listRowStyle === "stacked"
    readonly property bool selected: Store.selectedItemIds.indexOf(itemId) >= 0
    readonly property bool focused: controller !== null && controller.ringId === itemId

    signal activated()

    implicitHeight: stacked ? 60 : 44

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.space.s
        anchors.rightMargin: Theme.space.s
        radius: Theme.radius.m
        color: row.selected ? Theme.selection : pointer.containsMouse ? Theme.hover : "transparent"
        border.width: row.focused ? 2 : 0
        border.color: Theme.focusRing
    }

    Rectangle {
        id: picture
        anchors.left: parent.left
        anchors.leftMargin: Theme.space.l
        anchors.verticalCenter: parent.verticalCenter
        width: row.stacked ? 44 : 32
        height: width
        radius: Theme.radius.s
        color: row.colours && row.colours.length > 0 ? row.colours[0] : Theme.sunken
        clip: true
        Image {
            anchors.fill: parent
            source: row.thumbnail === "" ? "" : row.thumbnail + "?96"
            fillMode: Image.PreserveAspectCrop
            cache: false
            opacity: status === Image.Ready ? 1 : 0
            Behavior on opacity {
                NumberAnimation { duration: Theme.motion.standard }
            }
        }
        Glyph {
            anchors.centerIn: parent
            visible: row.thumbnail === ""
            name: row.kind === "link" ? "links" : row.kind === "text" ? "documents" : row.kind === "video" ? "videos" : "documents"
            color: Theme.secondaryText
        }
    }

    Column {
        anchors.left: picture.right
        anchors.leftMargin: Theme.space.m
        anchors.right: parent.right
        anchors.rightMargin: Theme.space.l
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space.xxs

        Row {
            width: parent.width
            spacing: Theme.space.m

            Text {
                id: title
                objectName: "rowTitle"
                width: Math.min(implicitWidth, parent.width - (row.stacked ? 0 : inlineFields.width + parent.spacing))
                text: row.displayTitle
                elide: Text.ElideRight
                color: Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
                font.weight: Font.Medium
            }

            Item {
                // One line: the fields follow the title, pushed to the right.
                width: Math.max(0, parent.width - title.width - inlineFields.width - parent.spacing * 2)
                height: 1
                visible: !row.stacked
            }

            RowFields {
                id: inlineFields
                visible: !row.stacked
                item: row
            }
        }

        RowFields {
            visible: row.stacked
            item: row
        }
    }

    DragOut {
        id: dragOut
        controller: row.controller
        dragStack: row.dragStack
    }

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        drag.target: dragOut
        drag.threshold: 6
        onPressed: mouse => {
            if (mouse.button === Qt.RightButton) {
                row.controller.requestItemMenu(row.itemId, pointer, mouse.x, mouse.y);
                return;
            }
            row.activated();
            dragOut.prepare(row.itemId, picture, Qt.point(mouse.x - picture.x, mouse.y - picture.y));
        }
        onReleased: dragOut.reset()
        drag.onActiveChanged: {
            if (drag.active)
                dragOut.start();
        }
        onClicked: mouse => {
            if (mouse.button === Qt.LeftButton)
                row.controller.clickItem(row.itemId, 1, mouse.modifiers);
        }
        onDoubleClicked: mouse => {
            if (mouse.button === Qt.LeftButton)
                row.controller.clickItem(row.itemId, 2, mouse.modifiers);
        }
    }
}
