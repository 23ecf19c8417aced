import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo

// One row of a KivoMenu: words, the key that does the same on the right, a check or a submenu arrow.
Basic.MenuItem {
    id: item

    /** The key shown on the right, as portable text ("Ctrl+Shift+C"). */
    property string shortcutText
    /** Red words for what cannot be taken back without an undo. */
    property bool destructive: false
    /** A glyph shown before the words, when set. */
    property string glyph

    implicitHeight: visible ? Theme.metrics.rowHeight - 2 : 0
    leftPadding: Theme.space.m
    rightPadding: Theme.space.m
    font.family: Theme.fontFamily
    font.pixelSize: Theme.type.body
    opacity: enabled ? 1 : 0.45

    arrow: Glyph {
        x: item.width - width - Theme.space.s
        anchors.verticalCenter: parent.verticalCenter
        visible: item.subMenu !== null
        name: "chevron.right"
        size: 12
        color: item.highlighted ? Theme.textOnAccent : Theme.secondaryText
    }

    indicator: Glyph {
        x: item.width - width - Theme.space.s
        anchors.verticalCenter: parent.verticalCenter
        visible: item.checkable && item.checked
        name: "checkmark"
        size: 14
        color: item.highlighted ? Theme.textOnAccent : Theme.accent
    }

    contentItem: Item {
        implicitWidth: lead.width + label.implicitWidth + keys.implicitWidth + 3 * Theme.space.l
        implicitHeight: label.implicitHeight

        Glyph {
            id: lead
            anchors.verticalCenter: parent.verticalCenter
            visible: item.glyph.length > 0
            width: visible ? Theme.metrics.glyph : 0
            name: item.glyph
            fallback: "folder"
            color: item.highlighted ? Theme.textOnAccent : Theme.secondaryText
        }

        Text {
            id: label
            anchors.left: lead.right
            anchors.leftMargin: lead.visible ? Theme.space.s : 0
            anchors.right: keys.left
            anchors.rightMargin: Theme.space.m
            anchors.verticalCenter: parent.verticalCenter
            text: item.text
            font: item.font
            elide: Text.ElideRight
            color: item.highlighted ? Theme.textOnAccent : item.destructive ? Theme.warning : Theme.text
        }

        Text {
            id: keys
            anchors.right: parent.right
            anchors.rightMargin: item.subMenu || item.checkable ? Theme.space.l : 0
            anchors.verticalCenter: parent.verticalCenter
            text: item.shortcutText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
            color: item.highlighted ? Theme.textOnAccent : Theme.tertiaryText
        }
    }

    background: Rectangle {
        implicitWidth: 220
        radius: Theme.radius.s
        color: item.highlighted ? Theme.accentFill : "transparent"
    }
}
