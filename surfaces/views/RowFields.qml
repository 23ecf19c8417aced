pragma ComponentBehavior: Bound
import QtQuick
import Kivo
import Kivo.Services

// The optional fields of a list row, in the order the view's settings name them.
Row {
    id: fields

    required property Item item

    spacing: Theme.space.m

    component Field: Text {
        color: Theme.secondaryText
        font.family: Theme.fontFamily
        font.pixelSize: Theme.type.footnote
        elide: Text.ElideRight
    }

    Field {
        visible: AppSettings.listShowDomain && fields.item.domain !== ""
        text: fields.item.domain
    }
    Row {
        visible: AppSettings.listShowTags && fields.item.tagNames.length > 0
        spacing: Theme.space.xs
        Repeater {
            model: AppSettings.listShowTags ? fields.item.tagNames : []
            delegate: TagChip {
                required property string modelData
                text: modelData
            }
        }
    }
    Field {
        visible: AppSettings.listShowDate
        text: fields.item.dateText
    }
    Field {
        visible: AppSettings.listShowSize && fields.item.sizeText !== ""
        text: fields.item.sizeText
    }
}
