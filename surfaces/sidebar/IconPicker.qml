pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo
import Kivo.Services

// A small grid of symbols for a collection; the first choice gives the name's own icon back.
Basic.Popup {
    id: picker

    property string collectionId
    property string current

    function openFor(id: string, anchor: Item) {
        picker.collectionId = id;
        picker.current = Store.collectionData(id).icon ?? "";
        picker.parent = anchor;
        picker.x = Theme.space.l;
        picker.y = anchor.height;
        picker.open();
        grid.forceActiveFocus();
    }

    function choose(symbol: string) {
        Store.setCollectionIcon(picker.collectionId, symbol);
        picker.close();
    }

    padding: Theme.space.s
    // Kept inside the window, so a row near the foot opens it upwards.
    margins: Theme.space.s
    modal: false
    focus: true
    closePolicy: Basic.Popup.CloseOnEscape | Basic.Popup.CloseOnPressOutside

    background: Rectangle {
        radius: Theme.radius.l
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline
    }

    contentItem: Column {
        spacing: Theme.space.s

        Text {
            text: "Icon"
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.caption
            font.weight: Font.DemiBold
            font.capitalization: Font.AllUppercase
            leftPadding: Theme.space.xs
        }

        GridView {
            id: grid
            objectName: "iconGrid"
            width: 6 * cellWidth
            height: Math.ceil(count / 6) * cellHeight
            cellWidth: 34
            cellHeight: 34
            interactive: false
            keyNavigationEnabled: true
            model: ["", ...glyphs.collectionSymbols]
            Keys.onReturnPressed: picker.choose(grid.model[grid.currentIndex])
            Keys.onSpacePressed: picker.choose(grid.model[grid.currentIndex])

            Glyph { id: glyphs; visible: false }

            delegate: Rectangle {
                id: cell
                required property string modelData
                required property int index
                objectName: "icon-" + (modelData.length > 0 ? modelData : "automatic")
                width: 30
                height: 30
                radius: Theme.radius.m
                color: picker.current === modelData ? Theme.selection : hover.hovered ? Theme.hover : "transparent"
                border.width: grid.activeFocus && grid.currentIndex === index ? 2 : 0
                border.color: Theme.focusRing

                Glyph {
                    anchors.centerIn: parent
                    name: cell.modelData.length > 0 ? cell.modelData : "sparkles"
                    color: cell.modelData.length > 0 ? Theme.text : Theme.tertiaryText
                }

                HoverHandler { id: hover }
                TapHandler { onTapped: picker.choose(cell.modelData) }
            }
        }
    }
}
