pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Window
import Kivo
import Kivo.Services

// The main window: the sidebar of selections beside the library's cards.
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

    SidebarModel {
        id: sidebarModel
        store: Store
    }

    Sidebar {
        id: sidebar
        objectName: "sidebar"
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: Theme.metrics.sidebarWidth
        model: sidebarModel
        focus: true
    }

    Rectangle {
        id: divider
        anchors.left: sidebar.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: 1
        color: Theme.hairline
    }

    LibraryView {
        objectName: "libraryView"
        anchors.left: divider.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        title: sidebarModel.selectionTitle
        count: Math.max(sidebarModel.selectionCount, 0)
        setupError: Store.setupError
        libraryEmpty: Store.didInitialLoad && Store.allCount === 0 && Store.hiddenCount === 0
    }
}
