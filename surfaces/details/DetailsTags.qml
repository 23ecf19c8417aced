pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic as Basic
import Kivo

// The tags of the details panel: the item's own as pills with a remove button, the suggested
// ones outlined with a button that accepts them, and a field that adds one (with the library's
// tags that start with what is typed offered under it).
DetailsSection {
    id: section

    required property DetailsController details

    key: "tags"
    title: "Tags"

    Flow {
        objectName: "tagFlow"
        width: parent.width
        spacing: Theme.space.xs + 2

        Repeater {
            model: section.details.tags
            delegate: TagPill {
                required property var modelData
                name: modelData.name
                onRemoveRequested: section.details.removeTag(modelData.tagId)
            }
        }
        Repeater {
            model: section.details.suggestedTags
            delegate: TagPill {
                required property var modelData
                name: modelData.name
                suggested: true
                onAcceptRequested: section.details.acceptTag(modelData.tagId)
            }
        }
    }

    Basic.TextField {
        id: tagField
        objectName: "detailsTagField"
        width: parent.width
        placeholderText: "Add a tag"
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.body
        color: Theme.text
        placeholderTextColor: Theme.tertiaryText
        leftPadding: Theme.space.s + Theme.space.xxs
        background: Rectangle {
            implicitHeight: Theme.metrics.controlHeight - 4
            radius: Theme.radius.m
            color: Theme.control
            border.width: tagField.activeFocus ? 1.5 : 1
            border.color: tagField.activeFocus ? Theme.focusRing : Theme.controlBorder
        }
        onAccepted: {
            if (section.details.addTag(tagField.text))
                tagField.text = "";
        }
    }

    Flow {
        // What the library already uses that starts with the typed letters.
        width: parent.width
        spacing: Theme.space.xs
        visible: tagField.activeFocus && tagField.text.trim().length > 0
        Repeater {
            model: tagField.activeFocus ? section.details.tagCompletions(tagField.text) : []
            delegate: Rectangle {
                id: completion
                required property string modelData
                objectName: "tagCompletion-" + modelData
                width: completionText.implicitWidth + 2 * Theme.space.s
                height: 22
                radius: 11
                color: completionHover.hovered ? Theme.hover : "transparent"
                border.width: 1
                border.color: Theme.hairline
                Text {
                    id: completionText
                    anchors.centerIn: parent
                    text: completion.modelData
                    color: Theme.secondaryText
                    font.family: Theme.fontFamily
                    font.pixelSize: Theme.type.footnote
                }
                HoverHandler { id: completionHover }
                TapHandler {
                    onTapped: {
                        section.details.addTag(completion.modelData);
                        tagField.text = "";
                    }
                }
            }
        }
    }
}
