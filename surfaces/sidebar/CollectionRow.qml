pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// One collection in the sidebar: indent, disclosure, symbol, name (or the field that renames it)
// and count. It can be dragged; items dropped on it are filed into it, files, addresses and text
// from other programs are imported into it, a collection dropped on its middle goes inside it and
// one dropped on its upper or lower edge goes beside it.
Item {
    id: row

    required property int index
    required property string collectionId
    required property string name
    required property int depth
    required property bool hasChildren
    required property bool expanded
    required property int count
    required property string icon
    required property bool pinned
    required property string parentId

    required property SidebarController controller
    /** A row of the pinned list: flat, no disclosure, no reordering. */
    property bool inPinned: false
    property bool keyboardFocus: false

    /** A press, with the keyboard modifiers held. */
    signal activated(int modifiers)
    signal contextMenuRequested(real x, real y)

    readonly property bool selected: Store.selectionKey === collectionId
    readonly property bool multiSelected: Store.selectedCollectionIds.indexOf(collectionId) >= 0
    readonly property bool renaming: !inPinned && Store.renameTargetKind === "collection" && Store.renameTargetId === collectionId
    /** Where a drag over the row would land: "", "inside", "above" or "below". */
    property string dropZone: ""

    objectName: (inPinned ? "pinned-" : "collection-") + collectionId
    implicitHeight: Theme.metrics.rowHeight
    implicitWidth: 200

    // The drag carries Kivo's own words, so the sidebar, boards and other targets recognise it.
    Drag.dragType: Drag.Automatic
    Drag.supportedActions: Qt.MoveAction
    Drag.mimeData: ({ "text/plain": "KIVO-COLLECTION " + row.collectionId })

    onRenamingChanged: {
        if (renaming) {
            field.text = row.name;
            field.selectAll();
            field.forceActiveFocus();
        }
    }
    Component.onCompleted: {
        if (renaming) {
            field.text = row.name;
            field.selectAll();
            field.forceActiveFocus();
        }
    }

    Rectangle {
        id: background
        anchors.fill: parent
        anchors.leftMargin: Theme.space.s
        anchors.rightMargin: Theme.space.s
        radius: Theme.radius.m
        color: row.dropZone === "inside" ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.18)
             : row.selected ? Theme.selection
             : row.multiSelected ? Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.10)
             : hover.hovered ? Theme.hover : "transparent"
        border.width: row.dropZone === "inside" ? 1.5 : 0
        border.color: Theme.accent

        Item {
            id: disclosure
            objectName: "disclosure"
            x: Theme.space.xxs + row.depth * 14
            width: 16
            height: parent.height

            Glyph {
                anchors.centerIn: parent
                visible: row.hasChildren && !row.inPinned
                name: row.expanded ? "chevron.down" : "chevron.right"
                size: 10
                lineWidth: 1.6
                color: Theme.tertiaryText
            }

            TapHandler {
                enabled: row.hasChildren && !row.inPinned
                onTapped: Store.toggleCollapsed(row.collectionId)
            }
        }

        Glyph {
            id: glyph
            anchors.left: disclosure.right
            anchors.leftMargin: Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            name: row.icon
            fallback: "folder"
            color: row.selected && row.keyboardFocus ? Theme.accent : row.selected ? Theme.text : Theme.secondaryText
        }

        Text {
            id: label
            objectName: "title"
            anchors.left: glyph.right
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.right: countLabel.left
            anchors.rightMargin: Theme.space.s
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.renaming
            text: row.name
            elide: Text.ElideRight
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            font.weight: row.selected ? Font.DemiBold : Font.Normal
        }

        Rectangle {
            anchors.fill: field
            anchors.margins: -Theme.space.xxs - 1
            visible: row.renaming
            radius: Theme.radius.s
            color: Theme.control
            border.width: 1.5
            border.color: Theme.focusRing
        }

        TextInput {
            id: field
            objectName: "renameField"
            anchors.left: glyph.right
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.right: parent.right
            anchors.rightMargin: Theme.space.s + Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            visible: row.renaming
            enabled: row.renaming
            color: Theme.text
            selectionColor: Theme.accentFill
            selectedTextColor: Theme.textOnAccent
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            clip: true
            selectByMouse: true

            // Only one of the three endings may act: the first clears the rename state.
            function finish(keep: bool) {
                if (!row.renaming)
                    return;
                if (keep)
                    row.controller.commitRename(row.collectionId, field.text);
                else
                    row.controller.cancelRename();
            }
            Keys.onReturnPressed: finish(true)
            Keys.onEnterPressed: finish(true)
            Keys.onEscapePressed: finish(false)
            onActiveFocusChanged: {
                if (!activeFocus)
                    finish(true);
            }
        }

        Text {
            id: countLabel
            objectName: "count"
            anchors.right: parent.right
            anchors.rightMargin: Theme.space.s + Theme.space.xxs
            anchors.verticalCenter: parent.verticalCenter
            visible: AppSettings.showSidebarCounts && !row.renaming
            text: row.count > 0 ? row.count.toLocaleString(Qt.locale(), "f", 0) : ""
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
        }
    }

    // Where a collection dropped beside this row would go: a line at the indent it would take.
    Rectangle {
        objectName: "dropLine"
        visible: row.dropZone === "above" || row.dropZone === "below"
        x: background.x + disclosure.x + 12
        width: background.width - disclosure.x - 12
        height: 2
        radius: 1
        y: row.dropZone === "above" ? -1 : row.height - 1
        color: Theme.accent
    }

    HoverHandler {
        id: hover
        onHoveredChanged: hovered ? Store.expectSelection(row.collectionId) : Store.stopExpectingSelection(row.collectionId)
    }

    TapHandler {
        acceptedButtons: Qt.LeftButton
        enabled: !row.renaming
        onTapped: (eventPoint, button) => {
            if (tapCount === 2 && !row.inPinned)
                row.controller.beginRename(row.collectionId);
            else if (tapCount === 1)
                row.activated(point.modifiers);
        }
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: (eventPoint, button) => row.contextMenuRequested(eventPoint.position.x, eventPoint.position.y)
    }

    DragHandler {
        // The drag starts once the pointer has moved far enough; its picture is the row itself,
        // taken at the press. The drag ends itself (with the drop), so no binding holds it.
        id: dragHandler
        target: null
        enabled: !row.renaming
        onGrabChanged: (transition, point) => {
            if (transition === PointerDevice.GrabPassive || transition === PointerDevice.GrabExclusive)
                background.grabToImage(result => row.Drag.imageSource = result.url);
        }
        onActiveChanged: {
            if (active) {
                row.Drag.hotSpot = Qt.point(centroid.pressPosition.x, centroid.pressPosition.y);
                row.Drag.active = true;
            }
        }
    }

    DropArea {
        anchors.fill: parent

        function zoneFor(drag: var): string {
            if (!row.controller.isCollectionDrag(drag.text) || row.inPinned)
                return "inside";
            if (drag.y < row.height * 0.25)
                return "above";
            if (drag.y > row.height * 0.75)
                return "below";
            return "inside";
        }

        onEntered: drag => {
            drag.accepted = row.controller.acceptsDrag(drag.text) || row.controller.acceptsImport(drag.urls, drag.text);
            row.dropZone = drag.accepted ? zoneFor(drag) : "";
        }
        onPositionChanged: drag => {
            if (row.dropZone !== "")
                row.dropZone = zoneFor(drag);
        }
        onExited: row.dropZone = ""
        onDropped: drop => {
            const zone = zoneFor(drop);
            row.dropZone = "";
            if (zone === "inside" && !row.controller.acceptsDrag(drop.text))
                row.controller.importInto(drop.urls, drop.text, row.collectionId);
            else if (zone === "inside")
                row.controller.dropOnCollection(drop.text, row.collectionId);
            else
                row.controller.dropInGap(drop.text, zone === "above" ? row.index : row.index + 1);
            drop.accept(row.controller.isCollectionDrag(drop.text) ? Qt.MoveAction : Qt.CopyAction);
        }
    }
}
