import QtQuick
import Kivo
import Kivo.Services

// A titled part of the details panel that folds away; which parts are folded is remembered.
Column {
    id: section

    /** The name kept in `collapsedInfoSections`. */
    required property string key
    required property string title
    default property alias content: body.data
    readonly property bool expanded: AppSettings.collapsedInfoSections.indexOf(key) < 0

    function toggle() {
        const closed = AppSettings.collapsedInfoSections.filter(name => name !== section.key);
        if (section.expanded)
            closed.push(section.key);
        AppSettings.collapsedInfoSections = closed;
    }

    objectName: "detailsSection-" + key
    spacing: Theme.space.s

    Item {
        width: parent.width
        height: Theme.metrics.rowHeight - 4

        Text {
            id: heading
            objectName: "sectionHeading"
            anchors.verticalCenter: parent.verticalCenter
            text: section.title
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.caption
            font.weight: Font.DemiBold
            font.letterSpacing: 0.4
            font.capitalization: Font.AllUppercase
        }
        Glyph {
            anchors.left: heading.right
            anchors.leftMargin: Theme.space.xs
            anchors.verticalCenter: parent.verticalCenter
            name: section.expanded ? "chevron.down" : "chevron.right"
            size: 10
            lineWidth: 1.6
            color: Theme.tertiaryText
            opacity: hover.hovered || !section.expanded ? 1 : 0
        }
        HoverHandler { id: hover }
        TapHandler { onTapped: section.toggle() }
    }

    Column {
        id: body
        width: parent.width
        spacing: Theme.space.s
        visible: section.expanded
    }
}
