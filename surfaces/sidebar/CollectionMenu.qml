pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// The context menu of a collection in the sidebar. Delete acts on the selected collections when
// the clicked one is among them.
KivoMenu {
    id: collectionMenu

    required property SidebarController controller
    property string collectionId
    property var collection: ({})
    readonly property var targets: controller.collectionTargets(collectionId)

    signal iconRequested(string collectionId, Item anchor)

    property Item anchorItem

    function openFor(id: string, anchor: Item, x: real, y: real) {
        collectionMenu.collectionId = id;
        collectionMenu.collection = Store.collectionData(id);
        collectionMenu.anchorItem = anchor;
        collectionMenu.popup(anchor, x, y);
    }

    KivoMenuItem {
        objectName: "collectionMenuRename"
        text: "Rename"
        shortcutText: "F2"
        onTriggered: collectionMenu.controller.beginRename(collectionMenu.collectionId)
    }
    KivoMenuItem {
        objectName: "collectionMenuNewInside"
        text: "New Collection Inside"
        onTriggered: collectionMenu.controller.createCollection(collectionMenu.collectionId)
    }
    KivoMenuSeparator {}
    KivoMenuItem {
        objectName: "collectionMenuPin"
        text: collectionMenu.collection.pinned ? "Unpin" : "Pin"
        glyph: "pin"
        onTriggered: Store.pinCollection(collectionMenu.collectionId, !collectionMenu.collection.pinned)
    }
    KivoMenuItem {
        objectName: "collectionMenuIcon"
        text: "Choose Icon…"
        onTriggered: collectionMenu.iconRequested(collectionMenu.collectionId, collectionMenu.anchorItem)
    }
    KivoMenuItem {
        objectName: "collectionMenuTopLevel"
        text: "Move to Top Level"
        enabled: (collectionMenu.collection.parentId ?? "").length > 0
        onTriggered: Store.moveCollection(collectionMenu.collectionId, "")
    }
    KivoMenuSeparator {}
    KivoMenuItem {
        objectName: "collectionMenuDelete"
        text: collectionMenu.targets.length > 1 ? "Delete " + collectionMenu.targets.length + " Collections" : "Delete Collection"
        shortcutText: "Del"
        destructive: true
        onTriggered: collectionMenu.controller.deleteCollection(collectionMenu.collectionId)
    }
}
