pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo
import Kivo.Services

// The bar above the cards: back and forward, the selection's name, the search field, the view
// switch with its options and the details toggle. Quiet until something is under the pointer.
Item {
    id: bar

    required property string title
    /** The rows of the selection; no number when there are none. */
    property int count: 0
    property bool sidebarShown: true
    property bool detailsShown: false
    readonly property alias searchField: search

    signal toggleSidebar()
    signal toggleDetails()

    function openViewOptions() {
        viewOptions.open();
    }

    implicitHeight: Theme.metrics.headerHeight

    Row {
        id: leading
        anchors.left: parent.left
        anchors.leftMargin: Theme.space.m
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space.xxs

        GlyphButton {
            objectName: "toggleSidebar"
            glyph: "sidebar"
            tip: bar.sidebarShown ? "Close Sidebar" : "Open Sidebar"
            visible: !bar.sidebarShown
            onClicked: bar.toggleSidebar()
        }
        GlyphButton {
            objectName: "backButton"
            glyph: "chevron.left"
            tip: "Back"
            enabled: Store.canGoBack
            onClicked: Store.goBack()
        }
        GlyphButton {
            objectName: "forwardButton"
            glyph: "chevron.right"
            tip: "Forward"
            enabled: Store.canGoForward
            onClicked: Store.goForward()
        }
    }

    Item {
        id: heading
        anchors.left: leading.right
        anchors.leftMargin: Theme.space.m
        anchors.right: trailing.left
        anchors.rightMargin: Theme.space.l
        anchors.verticalCenter: parent.verticalCenter
        height: titleText.implicitHeight

        Text {
            id: titleText
            objectName: "selectionTitle"
            width: Math.min(implicitWidth, heading.width - countText.implicitWidth - Theme.space.s)
            text: bar.title
            elide: Text.ElideRight
            color: Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.title2
            font.weight: Font.Bold
        }

        Text {
            id: countText
            objectName: "selectionCount"
            anchors.left: titleText.right
            anchors.leftMargin: Theme.space.s + Theme.space.xxs
            anchors.baseline: titleText.baseline
            visible: bar.count > 0
            text: bar.count === 1 ? "1 item" : bar.count.toLocaleString(Qt.locale(), "f", 0) + " items"
            color: Theme.tertiaryText
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
        }
    }

    Row {
        id: trailing
        anchors.right: parent.right
        anchors.rightMargin: Theme.space.m
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space.s

        EnrichmentIndicator {
            objectName: "enrichmentIndicator"
            anchors.verticalCenter: parent.verticalCenter
            // Absent in windows that run without background reading.
            pendingCount: typeof EnrichmentProgress !== "undefined" && EnrichmentProgress
                          ? EnrichmentProgress.pendingCount : 0
        }

        Basic.TextField {
            id: search
            objectName: "searchField"
            width: Math.min(260, Math.max(140, bar.width * 0.26))
            anchors.verticalCenter: parent.verticalCenter
            placeholderText: "Search"
            text: Store.searchText
            onTextEdited: Store.searchText = text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.body
            color: Theme.text
            placeholderTextColor: Theme.tertiaryText
            selectionColor: Theme.accentFill
            selectedTextColor: Theme.textOnAccent
            leftPadding: Theme.space.xl + Theme.space.xxs
            Keys.onEscapePressed: {
                Store.searchText = "";
                search.focus = false;
            }
            background: Rectangle {
                implicitHeight: Theme.metrics.controlHeight - 2
                radius: height / 2
                color: search.activeFocus ? Theme.control : Theme.sunken
                border.width: search.activeFocus ? 1.5 : 1
                border.color: search.activeFocus ? Theme.focusRing : Theme.hairline

                Glyph {
                    anchors.left: parent.left
                    anchors.leftMargin: Theme.space.s + Theme.space.xxs
                    anchors.verticalCenter: parent.verticalCenter
                    name: "search"
                    size: 13
                    color: Theme.tertiaryText
                }
            }
        }

        Rectangle {
            // One control for the three ways of showing a selection.
            objectName: "viewModeSwitch"
            anchors.verticalCenter: parent.verticalCenter
            width: modes.width + 4
            height: 28
            radius: Theme.radius.m
            color: Theme.sunken
            border.width: 1
            border.color: Theme.hairline

            Row {
                id: modes
                anchors.centerIn: parent
                spacing: 2

                Repeater {
                    model: [
                        { mode: "cards", glyph: "cards", tip: "Cards" },
                        { mode: "list", glyph: "list", tip: "List" },
                        { mode: "timeline", glyph: "timeline", tip: "Timeline" }
                    ]
                    delegate: Rectangle {
                        id: segment
                        required property var modelData
                        readonly property bool current: Store.viewMode === modelData.mode
                        objectName: "viewMode-" + modelData.mode
                        width: 30
                        height: 24
                        radius: Theme.radius.s
                        color: current ? Theme.control : segmentHover.hovered ? Theme.hover : "transparent"
                        border.width: current ? 1 : 0
                        border.color: Theme.controlBorder
                        Accessible.role: Accessible.RadioButton
                        Accessible.name: modelData.tip
                        Accessible.checked: current

                        Glyph {
                            anchors.centerIn: parent
                            name: segment.modelData.glyph
                            size: 14
                            color: segment.current ? Theme.text : Theme.secondaryText
                        }
                        HoverHandler { id: segmentHover }
                        TapHandler { onTapped: Store.viewMode = segment.modelData.mode }
                    }
                }
            }
        }

        GlyphButton {
            id: viewOptionsButton
            objectName: "viewOptionsButton"
            anchors.verticalCenter: parent.verticalCenter
            glyph: "sliders"
            tip: "View Options"
            checked: viewOptions.opened
            onClicked: viewOptions.opened ? viewOptions.close() : viewOptions.open()

            ViewOptionsPopup {
                id: viewOptions
                x: viewOptionsButton.width - width
                y: viewOptionsButton.height + Theme.space.s
            }
        }

        GlyphButton {
            objectName: "toggleDetails"
            anchors.verticalCenter: parent.verticalCenter
            glyph: "details"
            tip: bar.detailsShown ? "Hide Details" : "Show Details"
            checked: bar.detailsShown
            onClicked: bar.toggleDetails()
        }
    }
}
