pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// The context menu of a card, row or rail card, built for the clicked item (or the selection
// holding it) from the actions that apply. "Add to Collection" opens the collections as a
// submenu, ending with "New Collection…".
KivoMenu {
    id: contextMenu

    required property ItemActions actions
    property string itemId

    objectName: "itemContextMenu"

    function openFor(id: string, anchor: Item, x: real, y: real) {
        contextMenu.itemId = id;
        contextMenu.rebuild();
        if (contextMenu.count > 0)
            contextMenu.popup(anchor, x, y);
    }

    function clear() {
        while (contextMenu.count > 0) {
            const item = contextMenu.itemAt(0);
            if (item.subMenu)
                contextMenu.removeMenu(item.subMenu);
            else
                contextMenu.removeItem(item);
        }
    }

    function rebuild() {
        contextMenu.clear();
        for (const entry of contextMenu.actions.menuFor(contextMenu.itemId)) {
            if (entry.separator)
                contextMenu.addItem(separatorComponent.createObject(null));
            else if (entry.action === "file") {
                contextMenu.addMenu(fileMenuComponent.createObject(null, { title: entry.text }));
                contextMenu.itemAt(contextMenu.count - 1).objectName = "itemAction-file";
            }
            else
                contextMenu.addItem(itemComponent.createObject(null, { actionName: entry.action, text: entry.text,
                    shortcutText: entry.shortcut, destructive: entry.destructive }));
        }
    }

    Component {
        id: itemComponent
        KivoMenuItem {
            property string actionName
            objectName: "itemAction-" + actionName
            onTriggered: contextMenu.actions.trigger(actionName, contextMenu.itemId)
        }
    }

    Component {
        id: separatorComponent
        KivoMenuSeparator {}
    }

    Component {
        id: fileMenuComponent
        KivoMenu {
            id: fileMenu
            objectName: "fileIntoMenu"

            Instantiator {
                model: contextMenu.actions.fileChoices(contextMenu.itemId)
                delegate: KivoMenuItem {
                    required property var modelData
                    objectName: "fileInto-" + modelData.id
                    text: modelData.name
                    glyph: modelData.icon
                    leftPadding: Theme.space.m + 14 * modelData.depth
                    checkable: true
                    checked: modelData.holdsAll
                    onTriggered: contextMenu.actions.fileInto(modelData.id, contextMenu.itemId)
                }
                onObjectAdded: (index, object) => fileMenu.insertItem(index, object)
                onObjectRemoved: (index, object) => fileMenu.removeItem(object)
            }
            KivoMenuSeparator {}
            KivoMenuItem {
                objectName: "fileIntoNew"
                text: "New Collection…"
                glyph: "plus"
                onTriggered: contextMenu.actions.trigger("fileNew", contextMenu.itemId)
            }
        }
    }
}
