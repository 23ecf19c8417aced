pragma Singleton
import QtQuick

QtObject {
    property bool dark: false
    readonly property color window: dark ? "#1c1c1e" : "#f6f6f4"
    readonly property color text: dark ? "#f2f2f2" : "#1d1d1f"
}
