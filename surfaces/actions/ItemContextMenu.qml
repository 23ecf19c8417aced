pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// The context menu of a card, row or rail card, built for the clicked item (or the selection
// holding it) from the actions that apply. "Add to Collection" opens the collections as a
// submenu, ending with "New Collection…".
KivoMenu {
    id: menu

    required property ItemActions actions
    property string itemId

    objectName: "itemContextMenu"

    function openFor(id: string, anchor: Item, x: real, y: real) {
        menu.itemId = id;
        menu.rebuild();
        if (menu.count > 0)
            menu.popup(anchor, x, y);
    }

    function clear() {
        while (menu.count > 0) {
            const item = menu.takeItem(0);
            if (item)
                item.destroy();
        }
    }

    function rebuild() {
        menu.clear();
        for (const entry of menu.actions.menuFor(menu.itemId)) {
            if (entry.separator)
                menu.addItem(separatorComponent.createObject(null));
            else if (entry.action === "file")
                menu.addMenu(fileMenuComponent.createObject(null, { title: entry.text }));
            else
                menu.addItem(itemComponent.createObject(null, { actionName: entry.action, text: entry.text,
                    shortcutText: entry.shortcut, destructive: entry.destructive }));
        }
    }

    Component {
        id: itemComponent
        KivoMenuItem {
            property string actionName
            objectName: "itemAction-" + actionName
            onTriggered: menu.actions.trigger(actionName, menu.itemId)
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
                model: menu.actions.fileChoices(menu.itemId)
                delegate: KivoMenuItem {
                    required property var modelData
                    objectName: "fileInto-" + modelData.id
                    text: modelData.name
                    glyph: modelData.icon
                    leftPadding: Theme.space.m + 14 * modelData.depth
                    checkable: true
                    checked: modelData.holdsAll
                    onTriggered: menu.actions.fileInto(modelData.id, menu.itemId)
                }
                onObjectAdded: (index, object) => fileMenu.insertItem(index, object)
                onObjectRemoved: (index, object) => fileMenu.removeItem(object)
            }
            KivoMenuSeparator {}
            KivoMenuItem {
                objectName: "fileIntoNew"
                text: "New Collection…"
                glyph: "plus"
                onTriggered: menu.actions.trigger("fileNew", menu.itemId)
            }
        }
    }
}
