pragma ComponentBehavior: Bound
import QtQuick
import Kivo

// The picture under the pointer while several cards are dragged out: up to three of them fanned,
// with the number of items. It is drawn off screen and grabbed once its pictures have arrived.
Item {
    id: stack

    property var ids: []
    property int thumbnailWidth: 256
    readonly property int count: ids.length
    readonly property bool ready: {
        for (let i = 0; i < fan.count; ++i) {
            const thumb = fan.itemAt(i);
            if (thumb && thumb.loading)
                return false;
        }
        return true;
    }

    width: 150
    height: 150

    Repeater {
        id: fan
        model: stack.ids.slice(0, 3).reverse()
        delegate: Rectangle {
            id: thumb
            required property string modelData
            required property int index
            readonly property bool loading: picture.status === Image.Loading
            readonly property int depth: fan.count - 1 - index
            x: 20 + depth * 6
            y: 20 - depth * 4
            width: 110
            height: 110
            radius: Theme.radius.m
            rotation: depth * -5
            antialiasing: true
            color: Theme.surface
            border.width: 2
            border.color: "white"
            clip: true
            Image {
                id: picture
                anchors.fill: parent
                anchors.margins: 2
                source: "image://thumb/" + thumb.modelData + "?" + stack.thumbnailWidth
                fillMode: Image.PreserveAspectCrop
                cache: false
            }
        }
    }

    Rectangle {
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 6
        width: Math.max(28, badge.implicitWidth + 14)
        height: 28
        radius: 14
        color: Theme.accentFill
        Text {
            id: badge
            anchors.centerIn: parent
            text: stack.count
            color: Theme.textOnAccent
            font.family: Theme.fontFamily
            font.pixelSize: Theme.type.callout
            font.weight: Font.Bold
        }
    }

    Timer {
        id: poll
        property var callback
        property int tries
        interval: 16
        repeat: true
        onTriggered: {
            ++tries;
            if (stack.ready || tries > 15) {
                stop();
                const done = callback;
                stack.grabToImage(result => done(result.url));
            }
        }
    }

    // Calls back with a picture of the stack once its thumbnails are in, or after a quarter second.
    function grab(ids: var, done: var) {
        stack.ids = ids;
        poll.callback = done;
        poll.tries = 0;
        poll.restart();
    }
}
