import QtQuick
import Kivo

// The stand-in that a card or row hands to a drag out of Kivo: the item's file or link for other
// programs, Kivo's own words for its own targets, and a picture under the pointer (the card, or
// a fanned stack when several are selected). A mouse area moves it; the card stays in place.
Item {
    id: proxy

    property GridController controller
    property DragStack dragStack

    Drag.dragType: Drag.Automatic
    Drag.supportedActions: Qt.CopyAction
    Drag.proposedAction: Qt.CopyAction

    // Called on press, before the drag can start.
    function prepare(itemId: string, picture: Item, pointer: point) {
        if (!controller)
            return;
        Drag.mimeData = controller.dragMimeData(itemId);
        const ids = controller.dragIds(itemId);
        if (ids.length >= 2 && dragStack) {
            Drag.hotSpot = Qt.point(dragStack.width / 2, dragStack.height / 2);
            dragStack.grab(ids, url => proxy.Drag.imageSource = url);
        } else {
            const scale = Math.min(1, 220 / Math.max(picture.width, picture.height, 1));
            Drag.hotSpot = Qt.point(pointer.x * scale, pointer.y * scale);
            picture.grabToImage(result => proxy.Drag.imageSource = result.url,
                                Qt.size(Math.max(1, picture.width * scale), Math.max(1, picture.height * scale)));
        }
    }

    // Called when the pointer has moved far enough: hands the drag to the desktop until it ends.
    function start() {
        // Automatic drags run the desktop's drag loop inside this assignment and end inactive.
        Drag.active = true;
        reset();
    }

    // Called on release: back under the card for the next press.
    function reset() {
        x = 0;
        y = 0;
    }
}
