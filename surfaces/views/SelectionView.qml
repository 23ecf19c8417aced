pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// The current selection's items as the view mode asks: the card grid (with the links rail at
// its trailing edge when the board has one), the list, or the timeline; the selection's own words
// when it has no items; and the large preview over it all. It fills the area under the window's
// toolbar, whose view switch and view options act on it through the Store and the settings.
FocusScope {
    id: view

    readonly property GridController controller: controller
    readonly property bool listMode: Store.viewMode === "list"

    GridController {
        id: controller
        objectName: "gridController"
        store: Store
        settings: AppSettings
        cardView: view.listMode ? null : cards.masonry
        gridNavWidth: Store.viewMode === "cards" && cards.visible ? cards.masonry.width : 0
    }

    CardGrid {
        id: cards
        objectName: "cardGrid"
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.right: rail.visible ? rail.left : parent.right
        visible: !view.listMode
        focus: !view.listMode
        timeline: Store.viewMode === "timeline"
        controller: controller
    }

    RowList {
        id: list
        objectName: "listView"
        anchors.fill: parent
        visible: view.listMode
        focus: view.listMode
        controller: controller
    }

    LinksRail {
        id: rail
        objectName: "linksRail"
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: 236
        visible: controller.railShown && !view.listMode
        controller: controller
    }

    EmptyLibrary {
        objectName: "emptyLibrary"
        anchors.centerIn: parent
        visible: controller.empty && Store.didInitialLoad
        title: controller.emptyTitle
        message: controller.emptyMessage
    }

    ItemPreview {
        objectName: "itemPreview"
        anchors.fill: parent
        controller: controller
    }
}
