pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// How the collection tree orders each level, and whether the order is turned round.
KivoMenu {
    id: sortMenu

    readonly property var choices: [
        { value: "manual", text: "Manual" },
        { value: "name", text: "Name" },
        { value: "recentlyUsed", text: "Recently Used" },
        { value: "recentlyCreated", text: "Recently Created" }
    ]

    Instantiator {
        model: sortMenu.choices
        delegate: KivoMenuItem {
            required property var modelData
            objectName: "sort-" + modelData.value
            text: modelData.text
            checkable: true
            checked: AppSettings.collectionSort === modelData.value
            onTriggered: AppSettings.collectionSort = modelData.value
        }
        onObjectAdded: (index, object) => sortMenu.insertItem(index, object)
        onObjectRemoved: (index, object) => sortMenu.removeItem(object)
    }
    KivoMenuSeparator {}
    KivoMenuItem {
        objectName: "sort-reversed"
        text: "Reverse Order"
        checkable: true
        checked: AppSettings.collectionSortReversed
        onTriggered: AppSettings.collectionSortReversed = !AppSettings.collectionSortReversed
    }
}
