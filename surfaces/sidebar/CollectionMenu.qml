pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// The context menu of a collection in the sidebar. Delete acts on the selected collections when
// the clicked one is among them.
KivoMenu {
    id: menu

    required property SidebarController controller
    property string collectionId
    property var collection: ({})
    readonly property var targets: controller.collectionTargets(collectionId)

    signal iconRequested(string collectionId, Item anchor)

    property Item anchorItem

    function openFor(id: string, anchor: Item, x: real, y: real) {
        menu.collectionId = id;
        menu.collection = Store.collectionData(id);
        menu.anchorItem = anchor;
        menu.popup(anchor, x, y);
    }

    KivoMenuItem {
        objectName: "collectionMenuRename"
        text: "Rename"
        shortcutText: "F2"
        onTriggered: menu.controller.beginRename(menu.collectionId)
    }
    KivoMenuItem {
        objectName: "collectionMenuNewInside"
        text: "New Collection Inside"
        onTriggered: menu.controller.createCollection(menu.collectionId)
    }
    KivoMenuSeparator {}
    KivoMenuItem {
        objectName: "collectionMenuPin"
        text: menu.collection.pinned ? "Unpin" : "Pin"
        glyph: "pin"
        onTriggered: Store.pinCollection(menu.collectionId, !menu.collection.pinned)
    }
    KivoMenuItem {
        objectName: "collectionMenuIcon"
        text: "Choose Icon…"
        onTriggered: menu.iconRequested(menu.collectionId, menu.anchorItem)
    }
    KivoMenuItem {
        objectName: "collectionMenuTopLevel"
        text: "Move to Top Level"
        enabled: (menu.collection.parentId ?? "").length > 0
        onTriggered: Store.moveCollection(menu.collectionId, "")
    }
    KivoMenuSeparator {}
    KivoMenuItem {
        objectName: "collectionMenuDelete"
        text: menu.targets.length > 1 ? "Delete " + menu.targets.length + " Collections" : "Delete Collection"
        shortcutText: "Del"
        destructive: true
        onTriggered: menu.controller.deleteCollection(menu.collectionId)
    }
}
