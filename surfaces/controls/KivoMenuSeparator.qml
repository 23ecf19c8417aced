import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo

// A hairline between groups of a KivoMenu.
Basic.MenuSeparator {
    topPadding: Theme.space.xs
    bottomPadding: Theme.space.xs
    contentItem: Rectangle {
        implicitWidth: 200
        implicitHeight: 1
        color: Theme.hairline
    }
}
