pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// The collections of the details panel: where the item is filed (a click opens the collection,
// the × takes the item out of it) and the button that files it somewhere more.
DetailsSection {
    id: section

    required property DetailsController details

    signal addRequested()

    key: "collections"
    title: "Collections"

    Repeater {
        model: section.details.collections
        delegate: Rectangle {
            id: membership
            required property var modelData
            objectName: "membership-" + modelData.id
            width: parent.width
            height: Theme.metrics.rowHeight - 2
            radius: Theme.radius.m
            color: membershipHover.hovered ? Theme.hover : "transparent"

            Glyph {
                id: membershipGlyph
                anchors.left: parent.left
                anchors.leftMargin: Theme.space.xs
                anchors.verticalCenter: parent.verticalCenter
                name: membership.modelData.id === Store.inboxId ? "inbox" : "folder"
            }
            Text {
                anchors.left: membershipGlyph.right
                anchors.leftMargin: Theme.space.s
                anchors.right: removeMembership.left
                anchors.verticalCenter: parent.verticalCenter
                text: membership.modelData.path
                elide: Text.ElideMiddle
                color: Theme.text
                font.family: Theme.fontFamily
                font.pixelSize: Theme.type.body
            }
            GlyphButton {
                id: removeMembership
                objectName: "removeMembership"
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: membershipHover.hovered || activeFocus
                glyph: "xmark"
                glyphSize: 11
                tip: "Remove from " + membership.modelData.name
                onClicked: section.details.removeFromCollection(membership.modelData.id)
            }
            HoverHandler { id: membershipHover }
            TapHandler { onTapped: Store.selectionKey = membership.modelData.id === Store.inboxId ? "inbox" : membership.modelData.id }
        }
    }

    Text {
        visible: section.details.collections.length === 0
        text: "In no collection"
        color: Theme.tertiaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.footnote
    }

    KivoButton {
        objectName: "addToCollection"
        text: "Add to Collection…"
        onClicked: section.addRequested()
    }
}
