pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo
import Kivo.Services

// The sidebar: the fixed lists, the kind filters, the pinned collections and the collection tree,
// each section folding away under its heading. Up and Down move the selection through what is
// open, Left and Right close and open collections, F2 or Return renames, Delete deletes.
Rectangle {
    id: sidebar

    readonly property alias controller: controller
    readonly property alias tree: treeModel
    /** What the window puts at the top of the sidebar (its name, the button that hides it). */
    default property alias header: header.data

    color: Theme.sidebar
    activeFocusOnTab: true

    /** Starts "New Collection" inside the selected collection's parent level: the "+" and its key. */
    function newCollection() {
        controller.createCollection("");
    }

    SidebarModel { id: libraryModel; section: "library"; store: Store }
    SidebarModel { id: typesModel; section: "types"; store: Store }
    CollectionTreeModel { id: treeModel; objectName: "collectionTree"; store: Store; settings: AppSettings }
    CollectionTreeModel { id: pinnedModel; objectName: "pinnedCollections"; pinnedOnly: true; store: Store; settings: AppSettings }
    SidebarController {
        id: controller
        objectName: "sidebarController"
        store: Store
        settings: AppSettings
        tree: treeModel
        pinned: pinnedModel
    }

    // The multi-selection of collections lasts until a plain click elsewhere in the sidebar.
    function select(key: string, modifiers: int) {
        if ((modifiers & Qt.ControlModifier) && key !== Store.inboxId && treeModel.rowOf(key) >= 0) {
            if (Store.selectedCollectionIds.length === 0 && treeModel.rowOf(Store.selectionKey) >= 0)
                Store.toggleCollectionSelection(Store.selectionKey);
            Store.toggleCollectionSelection(key);
        } else {
            Store.clearCollectionSelection();
            Store.selectionKey = key;
        }
        sidebar.forceActiveFocus();
    }

    /** Scrolls the least distance that brings a row fully into view. */
    function reveal(row: Item) {
        if (!row)
            return;
        // A row that has only just been made has no place yet until its column lays out.
        treeColumn.forceLayout();
        column.forceLayout();
        const flickable = scroller.contentItem;
        const top = row.mapToItem(column, 0, 0).y;
        if (top < flickable.contentY)
            flickable.contentY = top;
        else if (top + row.height > flickable.contentY + flickable.height)
            flickable.contentY = top + row.height - flickable.height;
    }

    /** The row that shows a selection key: a fixed row, or the collection's row in the tree (or, folded, the pinned list). */
    function rowFor(key: string): Item {
        for (const repeater of [libraryRows, typeRows]) {
            for (let i = 0; i < repeater.count; ++i) {
                if (repeater.itemAt(i) && repeater.itemAt(i).key === key)
                    return repeater.itemAt(i);
            }
        }
        if (controller.focusSection === "pinned" && pinnedModel.rowOf(key) >= 0)
            return pinnedRows.itemAt(pinnedModel.rowOf(key));
        return treeModel.rowOf(key) >= 0 ? treeRows.itemAt(treeModel.rowOf(key)) : null;
    }

    Connections {
        target: Store
        function onSelectionChanged() {
            Qt.callLater(() => sidebar.reveal(sidebar.rowFor(Store.selectionKey)));
        }
        function onRenamingChanged() {
            if (Store.renameTargetKind === "collection")
                Qt.callLater(() => sidebar.reveal(sidebar.rowFor(Store.renameTargetId)));
        }
    }

    Keys.onPressed: event => {
        const collection = treeModel.rowOf(Store.selectionKey) >= 0 || pinnedModel.rowOf(Store.selectionKey) >= 0;
        if (event.key === Qt.Key_Up || event.key === Qt.Key_Down) {
            Store.clearCollectionSelection();
            controller.moveSelection(event.key === Qt.Key_Up ? -1 : 1);
        } else if (event.key === Qt.Key_Home) {
            controller.moveSelection(-1000000);
        } else if (event.key === Qt.Key_End) {
            controller.moveSelection(1000000);
        } else if (event.key === Qt.Key_Left || event.key === Qt.Key_Right) {
            controller.expandOrEnter(event.key === Qt.Key_Right);
        } else if (collection && (event.key === Qt.Key_F2 || event.key === Qt.Key_Return || event.key === Qt.Key_Enter)) {
            controller.beginRename(Store.selectionKey);
        } else if (collection && (event.key === Qt.Key_Delete || event.key === Qt.Key_Backspace)) {
            controller.deleteCollection(Store.selectionKey);
        } else if (event.key === Qt.Key_Escape && Store.selectedCollectionIds.length > 0) {
            Store.clearCollectionSelection();
        } else {
            return;
        }
        event.accepted = true;
    }

    Basic.ScrollView {
        id: scroller
        anchors.fill: parent
        anchors.topMargin: Theme.metrics.headerHeight - Theme.space.s
        contentWidth: availableWidth
        clip: true

        Column {
            id: column
            width: scroller.availableWidth
            spacing: 1

            Repeater {
                id: libraryRows
                model: libraryModel
                delegate: SidebarRow {
                    id: libraryRow
                    width: column.width
                    keyboardFocus: sidebar.activeFocus
                    onActivated: sidebar.select(key, Qt.NoModifier)

                    DropArea {
                        // The inbox is a collection too: cards dropped on it are filed there.
                        anchors.fill: parent
                        enabled: libraryRow.key === "inbox"
                        onEntered: drag => {
                            drag.accepted = controller.acceptsDrag(drag.text) && !controller.isCollectionDrag(drag.text);
                            libraryRow.dropHighlight = drag.accepted;
                        }
                        onExited: libraryRow.dropHighlight = false
                        onDropped: drop => {
                            libraryRow.dropHighlight = false;
                            controller.dropOnCollection(drop.text, Store.inboxId);
                            drop.accept(Qt.CopyAction);
                        }
                    }
                }
            }

            SectionHeader {
                objectName: "typesHeader"
                width: column.width
                title: "Types"
                expanded: AppSettings.typesSectionExpanded
                onToggled: AppSettings.typesSectionExpanded = !AppSettings.typesSectionExpanded
            }

            Column {
                width: column.width
                spacing: 1
                visible: AppSettings.typesSectionExpanded

                Repeater {
                    id: typeRows
                    model: typesModel
                    delegate: SidebarRow {
                        width: column.width
                        keyboardFocus: sidebar.activeFocus
                        onActivated: sidebar.select(key, Qt.NoModifier)
                    }
                }
            }

            SectionHeader {
                objectName: "pinnedHeader"
                width: column.width
                visible: pinnedModel.count > 0
                title: "Pinned"
                expanded: AppSettings.pinnedSectionExpanded
                onToggled: AppSettings.pinnedSectionExpanded = !AppSettings.pinnedSectionExpanded
            }

            Column {
                width: column.width
                spacing: 1
                visible: pinnedModel.count > 0 && AppSettings.pinnedSectionExpanded

                Repeater {
                    id: pinnedRows
                    model: pinnedModel
                    delegate: CollectionRow {
                        width: column.width
                        controller: controller
                        inPinned: true
                        keyboardFocus: sidebar.activeFocus
                        onActivated: modifiers => {
                            controller.focusSection = "pinned";
                            sidebar.select(collectionId, Qt.NoModifier);
                        }
                        onContextMenuRequested: (x, y) => collectionMenu.openFor(collectionId, this, x, y)
                    }
                }
            }

            Item {
                width: column.width
                height: collectionsHeader.implicitHeight

                SectionHeader {
                    id: collectionsHeader
                    objectName: "collectionsHeader"
                    anchors.fill: parent
                    title: "Collections"
                    expanded: AppSettings.collectionsSectionExpanded
                    onToggled: AppSettings.collectionsSectionExpanded = !AppSettings.collectionsSectionExpanded

                    GlyphButton {
                        objectName: "sortCollectionsButton"
                        glyph: "sort"
                        tip: "Sort Collections"
                        glyphSize: 13
                        onClicked: sortMenu.popup(this, 0, height + Theme.space.xs)
                    }
                    GlyphButton {
                        objectName: "newCollectionButton"
                        glyph: "plus"
                        tip: "New Collection"
                        onClicked: sidebar.newCollection()
                    }
                }

                DropArea {
                    // A collection dropped on the heading leaves its parent for the top level.
                    anchors.fill: parent
                    onEntered: drag => drag.accepted = controller.isCollectionDrag(drag.text)
                    onDropped: drop => {
                        controller.dropAtTopLevel(drop.text);
                        drop.accept(Qt.MoveAction);
                    }
                }
            }

            Column {
                id: treeColumn
                width: column.width
                spacing: 0
                visible: AppSettings.collectionsSectionExpanded

                Repeater {
                    id: treeRows
                    model: treeModel
                    delegate: CollectionRow {
                        width: column.width
                        controller: controller
                        keyboardFocus: sidebar.activeFocus
                        onActivated: modifiers => {
                            controller.focusSection = "collections";
                            sidebar.select(collectionId, modifiers);
                        }
                        onContextMenuRequested: (x, y) => collectionMenu.openFor(collectionId, this, x, y)
                    }
                }

                Text {
                    objectName: "noCollections"
                    visible: treeModel.count === 0
                    x: Theme.space.l + Theme.space.xxs
                    height: Theme.metrics.rowHeight
                    verticalAlignment: Text.AlignVCenter
                    text: "No collections yet"
                    color: Theme.tertiaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.footnote
                }
            }

            Item {
                // The space under the tree: the end of the top level for a dragged collection.
                width: column.width
                height: Math.max(Theme.metrics.rowHeight * 2, scroller.availableHeight - treeColumn.y - treeColumn.height)

                Rectangle {
                    visible: endDrop.containsDrag
                    x: Theme.space.l
                    width: parent.width - 2 * Theme.space.l
                    height: 2
                    radius: 1
                    color: Theme.accent
                }

                DropArea {
                    id: endDrop
                    anchors.fill: parent
                    onEntered: drag => drag.accepted = controller.isCollectionDrag(drag.text)
                    onDropped: drop => {
                        controller.dropInGap(drop.text, treeModel.count);
                        drop.accept(Qt.MoveAction);
                    }
                }

                TapHandler {
                    onDoubleTapped: sidebar.newCollection()
                }
            }
        }
    }

    Rectangle {
        // The top of the sidebar stays put; rows scroll away beneath it.
        id: header
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        height: scroller.anchors.topMargin
        color: Theme.sidebar

        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: 1
            color: Theme.hairline
            visible: scroller.contentItem.contentY > 1
        }
    }

    SortMenu { id: sortMenu }

    CollectionMenu {
        id: collectionMenu
        controller: controller
        onIconRequested: (collectionId, anchor) => iconPicker.openFor(collectionId, anchor)
    }

    IconPicker { id: iconPicker }
}
