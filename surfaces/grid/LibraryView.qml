import QtQuick
import Kivo
import Kivo.Services

// The right side of the main window: the selection's name with the choice of view, then its
// cards (or rows, or days), or the selection's empty state.
Rectangle {
    id: view

    required property string title
    required property int count
    required property string setupError
    required property bool libraryEmpty

    color: Theme.window

    Item {
        id: header
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.leftMargin: Theme.space.xl
        anchors.rightMargin: Theme.space.xl
        height: Theme.metrics.headerHeight

        Text {
            id: titleText
            objectName: "selectionTitle"
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            text: view.title
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.title2
            font.weight: Font.Bold
        }

        Text {
            objectName: "selectionCount"
            anchors.left: titleText.right
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.baseline: titleText.baseline
            visible: view.count > 0
            text: view.count === 1 ? "1 item" : view.count.toLocaleString(Qt.locale(), "f", 0) + " items"
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
        }
    }

    ViewToolbar {
        id: toolbar
        objectName: "viewToolbar"
        anchors.right: parent.right
        anchors.rightMargin: Theme.space.xl
        anchors.verticalCenter: header.verticalCenter
        visible: view.setupError.length === 0
    }

    SetupErrorBanner {
        id: banner
        objectName: "setupError"
        anchors.top: header.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: Theme.space.xl
        anchors.rightMargin: Theme.space.xl
        visible: view.setupError.length > 0
        message: view.setupError
    }

    SelectionView {
        id: selection
        objectName: "selectionView"
        anchors.top: banner.visible ? banner.bottom : header.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        visible: view.setupError.length === 0
    }
}
