pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window
import Kivo
import Kivo.Services

// The main window: the sidebar (resizable, hideable), the toolbar and the selection's view, the
// details panel at the right, one toast at the bottom centre and the import's progress card at the
// bottom right. The window's keys live here: back and forward, the sidebar and details toggles, a
// new collection, paste, and the item actions.
Window {
    id: window
    objectName: "mainWindow"

    width: 1180
    height: 760
    minimumWidth: 720
    minimumHeight: 460
    visible: true
    title: "Kivo"
    color: Theme.window

    readonly property bool sidebarShown: AppSettings.sidebarVisible
    readonly property real sidebarWidth: Math.max(180, Math.min(420, AppSettings.sidebarWidth))
    readonly property bool detailsShown: Store.detailsItemId.length > 0
    /** Keys that edit text belong to the field that has the focus, not to the items. */
    readonly property bool typing: activeFocusItem instanceof TextInput || activeFocusItem instanceof TextEdit

    /** Opens the context menu of an item at a point of `anchor`; the grid, list and rail call it. */
    function openItemMenu(itemId: string, anchor: Item, x: real, y: real) {
        itemMenu.openFor(itemId, anchor, x, y);
    }

    /** Asks for what an action needs first: a title, a tag, a collection or a new collection's name. */
    function askFor(action: string, itemId: string) {
        prompt.itemId = itemId;
        prompt.action = action;
        if (action === "rename") {
            prompt.completer = null;
            prompt.acceptText = "Rename";
            prompt.ask("Rename", itemActions.titleOf(itemId), "Title");
        } else if (action === "tag") {
            prompt.completer = text => {
                const wanted = text.trim().toLowerCase();
                return Store.allTags().map(tag => tag.name).filter(name => wanted.length > 0 && name.startsWith(wanted)).slice(0, 6);
            };
            prompt.acceptText = "Tag";
            prompt.ask(itemActions.targets(itemId).length > 1 ? "Tag " + itemActions.targets(itemId).length + " Items" : "Add Tag", "", "Tag");
        } else if (action === "fileNew") {
            prompt.completer = null;
            prompt.acceptText = "Create";
            prompt.ask("New Collection", "", "Name");
        } else if (action === "file") {
            picker.itemId = itemId;
            picker.show(itemActions.fileChoices(itemId));
        }
    }

    WindowController {
        id: windowController
        objectName: "windowController"
        store: Store
        settings: AppSettings
    }

    ItemActions {
        id: itemActions
        objectName: "itemActions"
        store: Store
        onInputRequested: (action, itemId) => window.askFor(action, itemId)
    }

    Sidebar {
        id: sidebar
        objectName: "sidebar"
        x: window.sidebarShown ? 0 : -width - 1
        width: window.sidebarWidth
        height: parent.height
        focus: true
        Behavior on x { NumberAnimation { duration: Theme.motion.standard; easing.type: Theme.motion.move } }

        GlyphButton {
            objectName: "hideSidebar"
            anchors.right: parent.right
            anchors.rightMargin: Theme.space.m
            y: (Theme.metrics.headerHeight - height) / 2
            glyph: "sidebar"
            tip: "Close Sidebar"
            onClicked: windowController.toggleSidebar()
        }

        Text {
            anchors.left: parent.left
            anchors.leftMargin: Theme.space.l + Theme.space.xxs
            height: Theme.metrics.headerHeight
            verticalAlignment: Text.AlignVCenter
            text: "Kivo"
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.headline
            font.weight: Font.Bold
            font.letterSpacing: 0.2
        }
    }

    Rectangle {
        id: divider
        x: sidebar.x + sidebar.width
        width: 1
        height: parent.height
        color: Theme.hairline
        visible: window.sidebarShown
        // Above the content, whose cards take presses: the grip reaches over the grid's edge.
        z: 1

        MouseArea {
            // The splitter: a grip wider than the line it stands on.
            objectName: "sidebarSplitter"
            anchors.horizontalCenter: parent.horizontalCenter
            width: 9
            height: parent.height
            cursorShape: Qt.SplitHCursor
            preventStealing: true
            property real pressX: 0
            property real startWidth: 0
            onPressed: mouse => {
                pressX = mapToItem(null, mouse.x, 0).x;
                startWidth = sidebar.width;
            }
            onPositionChanged: mouse => {
                if (pressed)
                    windowController.setSidebarWidth(startWidth + mapToItem(null, mouse.x, 0).x - pressX);
            }
        }
    }

    Item {
        id: content
        anchors.left: divider.right
        anchors.right: details.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom

        Toolbar {
            id: toolbar
            objectName: "toolbar"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            title: sidebar.controller.selectionTitle
            count: Store.itemCount
            sidebarShown: window.sidebarShown
            detailsShown: window.detailsShown
            onToggleSidebar: windowController.toggleSidebar()
            onToggleDetails: windowController.toggleDetails()
            Component.onCompleted: if (windowController.viewOptionsAtStart) openViewOptions()
        }

        Item {
            id: viewArea
            objectName: "viewArea"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: toolbar.bottom
            anchors.bottom: parent.bottom

            SetupErrorBanner {
                id: setupError
                objectName: "setupError"
                anchors.top: parent.top
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.leftMargin: Theme.space.xl
                anchors.rightMargin: Theme.space.xl
                visible: Store.setupError.length > 0
                message: Store.setupError
            }

            SelectionView {
                // The cards (or rows, or days) with their own empty state; files, addresses and
                // text dropped on them, and Control-V, go to the importer.
                id: selectionView
                objectName: "selectionView"
                anchors.top: setupError.visible ? setupError.bottom : parent.top
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                visible: Store.setupError.length === 0
                Component.onCompleted: Importer.serveGrid(selectionView.controller)
            }
        }

        ImportProgress {
            id: importProgress
            objectName: "importProgress"
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.margins: Theme.space.xl
            anchors.bottomMargin: Theme.space.xl + (toasts.showing ? toasts.height + Theme.space.m : 0)
            controller: Importer
        }
    }

    Connections {
        // A right-click on a card, row or rail card, or the Menu key on the selected one.
        target: selectionView.controller
        function onItemMenuRequested(itemId: string, anchor: Item, x: real, y: real) {
            if (anchor)
                window.openItemMenu(itemId, anchor, x, y);
            else
                window.openItemMenu(itemId, selectionView, selectionView.width / 3, selectionView.height / 3);
        }
    }

    Connections {
        // Files, addresses and text from other programs dropped on a collection (or the inbox).
        target: sidebar.controller
        function onImportRequested(urls: list<url>, text: string, collectionId: string) {
            Importer.importDrop(urls, text, collectionId);
        }
    }

    DetailsPanel {
        id: details
        objectName: "detailsPanel"
        x: window.width - (window.detailsShown ? width : 0)
        width: 320
        height: parent.height
        visible: x < window.width
        Behavior on x { NumberAnimation { duration: Theme.motion.standard; easing.type: Theme.motion.move } }
        onCloseRequested: Store.detailsItemId = ""
        onAddToCollectionRequested: choices => {
            picker.itemId = Store.detailsItemId;
            picker.show(choices);
        }
    }

    ToastArea {
        id: toasts
        objectName: "toastArea"
        anchors.horizontalCenter: content.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space.xl
        width: content.width
        text: Store.toast
        actionText: Store.toastAction
        serial: Store.toastSerial
        onActionTriggered: Store.triggerToastAction()
        onDismissed: Store.dismissToast()
    }

    ItemContextMenu {
        id: itemMenu
        actions: itemActions
    }

    TextPrompt {
        id: prompt
        property string itemId
        property string action
        onAccepted: words => {
            if (prompt.action === "rename")
                itemActions.rename(prompt.itemId, words);
            else if (prompt.action === "tag")
                itemActions.tag(words, prompt.itemId);
            else if (prompt.action === "fileNew")
                itemActions.fileIntoNew(words, prompt.itemId);
        }
    }

    CollectionPicker {
        id: picker
        property string itemId
        onChosen: collectionId => itemActions.fileInto(collectionId, picker.itemId)
        onCreateRequested: name => {
            if (name.length > 0)
                itemActions.fileIntoNew(name, picker.itemId);
            else
                window.askFor("fileNew", picker.itemId);
        }
    }

    // Window keys. Back and forward also come from the mouse's side buttons (below).
    // (The desktop's standard Back and Forward are Alt+Left and Alt+Right; listing both would make
    // the keys ambiguous, and an ambiguous shortcut does nothing.)
    Shortcut { sequences: ["Alt+Left", "Ctrl+[", "Back"]; onActivated: Store.goBack() }
    Shortcut { sequences: ["Alt+Right", "Ctrl+]", "Forward"]; onActivated: Store.goForward() }
    Shortcut { sequence: "Ctrl+Shift+N"; onActivated: sidebar.newCollection() }
    Shortcut { sequence: "Ctrl+I"; onActivated: windowController.toggleDetails() }
    Shortcut { sequence: "Ctrl+F"; onActivated: toolbar.searchField.forceActiveFocus() }
    Shortcut {
        // Files, a picture, an address or text from the clipboard, into the selected collection
        // (or where the destination rule says); a field being typed in keeps its own paste.
        sequences: [StandardKey.Paste]
        enabled: !window.typing
        onActivated: selectionView.controller.paste()
    }
    Shortcut {
        sequences: windowController.sidebarToggleSequence.length > 0 ? [windowController.sidebarToggleSequence, "F9"] : ["F9"]
        onActivated: windowController.toggleSidebar()
    }

    // The item keys act where the items are: not while a field or the sidebar (with keys of its
    // own for collections) has the focus.
    Instantiator {
        model: itemActions.shortcuts
        delegate: Shortcut {
            required property var modelData
            sequence: modelData.sequence
            enabled: !window.typing && !sidebar.activeFocus
            onActivated: itemActions.triggerFromKeyboard(modelData.action)
        }
    }

    MouseArea {
        // Only the side buttons: every other press goes through to what is underneath.
        anchors.fill: parent
        z: 1000
        acceptedButtons: Qt.BackButton | Qt.ForwardButton
        onPressed: mouse => {
            if (mouse.button === Qt.BackButton)
                Store.goBack();
            else
                Store.goForward();
        }
    }
}
