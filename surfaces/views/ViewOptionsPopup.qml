pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import QtQuick.Layouts
import Kivo
import Kivo.Services

// How the current selection is shown: columns, spacing and crop of the cards, their chips, and
// the fields of the list's rows. Every control writes the setting for this view at once.
Basic.Popup {
    id: popup
    objectName: "viewOptions"

    width: 300
    padding: Theme.space.l
    modal: false
    focus: true
    closePolicy: Basic.Popup.CloseOnEscape | Basic.Popup.CloseOnPressOutside

    background: Rectangle {
        radius: Theme.radius.l
        color: Theme.surface
        border.width: 1
        border.color: Theme.hairline
    }

    component Heading: Text {
        color: Theme.tertiaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.caption
        font.weight: Font.DemiBold
        font.capitalization: Font.AllUppercase
        Layout.topMargin: Theme.space.s
    }
    component Label: Text {
        color: Theme.text
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.body
        Layout.fillWidth: true
    }
    component Toggle: Basic.Switch {
        id: toggle
        Layout.alignment: Qt.AlignRight
        indicator: Rectangle {
            implicitWidth: 32
            implicitHeight: 18
            radius: 9
            color: toggle.checked ? Theme.accentFill : Theme.pressed
            Rectangle {
                x: toggle.checked ? parent.width - width - 2 : 2
                y: 2
                width: 14
                height: 14
                radius: 7
                color: "white"
                Behavior on x {
                    NumberAnimation { duration: Theme.motion.quick }
                }
            }
        }
    }
    component Choice: Rectangle {
        id: choice
        property string label
        property bool chosen
        signal picked()
        implicitWidth: text.implicitWidth + Theme.space.m * 2
        implicitHeight: 24
        radius: Theme.radius.s
        color: chosen ? Theme.accentFill : Theme.sunken
        Text {
            id: text
            anchors.centerIn: parent
            text: choice.label
            color: choice.chosen ? Theme.textOnAccent : Theme.text
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.footnote
        }
        MouseArea {
            anchors.fill: parent
            onClicked: choice.picked()
        }
    }

    contentItem: ColumnLayout {
        spacing: Theme.space.s

        Heading { text: "Cards" }
        RowLayout {
            Label { text: "Columns" }
            Text {
                text: Math.floor(AppSettings.gridColumns)
                color: Theme.secondaryText
                font.pixelSize: Theme.type.footnote
            }
        }
        Basic.Slider {
            objectName: "columnsSlider"
            Layout.fillWidth: true
            from: 1
            to: 10
            stepSize: 1
            snapMode: Basic.Slider.SnapAlways
            value: AppSettings.gridColumns
            onMoved: AppSettings.gridColumns = value
        }
        RowLayout {
            Label { text: "Spacing" }
            Text {
                text: Math.round(AppSettings.gridSpacing)
                color: Theme.secondaryText
                font.pixelSize: Theme.type.footnote
            }
        }
        Basic.Slider {
            Layout.fillWidth: true
            from: 0
            to: 40
            stepSize: 1
            value: AppSettings.gridSpacing
            onMoved: AppSettings.gridSpacing = value
        }
        RowLayout {
            Label { text: "Shape" }
            Repeater {
                model: [{ shape: "original", label: "Original" }, { shape: "square", label: "Square" }, { shape: "rectangle", label: "4:3" }]
                delegate: Choice {
                    required property var modelData
                    label: modelData.label
                    chosen: AppSettings.cardShape === modelData.shape
                    onPicked: AppSettings.cardShape = modelData.shape
                }
            }
        }
        RowLayout {
            Label { text: "Show titles" }
            Toggle {
                checked: AppSettings.cardShowTitle
                onToggled: AppSettings.cardShowTitle = checked
            }
        }
        RowLayout {
            Label { text: "Show tags" }
            Toggle {
                checked: AppSettings.cardShowTags
                onToggled: AppSettings.cardShowTags = checked
            }
        }

        Heading { text: "List" }
        RowLayout {
            Label { text: "Rows" }
            Choice {
                label: "One line"
                chosen: AppSettings.listRowStyle === "oneLine"
                onPicked: AppSettings.listRowStyle = "oneLine"
            }
            Choice {
                label: "Stacked"
                chosen: AppSettings.listRowStyle === "stacked"
                onPicked: AppSettings.listRowStyle = "stacked"
            }
        }
        RowLayout {
            Label { text: "Domain" }
            Toggle {
                checked: AppSettings.listShowDomain
                onToggled: AppSettings.listShowDomain = checked
            }
        }
        RowLayout {
            Label { text: "Date" }
            Toggle {
                checked: AppSettings.listShowDate
                onToggled: AppSettings.listShowDate = checked
            }
        }
        RowLayout {
            Label { text: "Tags" }
            Toggle {
                checked: AppSettings.listShowTags
                onToggled: AppSettings.listShowTags = checked
            }
        }
        RowLayout {
            Label { text: "Size" }
            Toggle {
                checked: AppSettings.listShowSize
                onToggled: AppSettings.listShowSize = checked
            }
        }
    }
}
