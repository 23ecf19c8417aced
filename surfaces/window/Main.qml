import QtQuick
import QtQuick.Window
import Kivo

Window {
    width: 1100
    height: 720
    visible: true
    title: "Kivo"
    color: Theme.window
    Text {
        anchors.centerIn: parent
        text: "Drag anything here"
        color: Theme.text
    }
}
