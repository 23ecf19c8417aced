#pragma once

#include <Qt>

namespace kivo {

/**
 * What a click on a card or row, and a key in the grid, mean, decided from the modifiers and the
 * selection state alone so that the grid, the list and the rail share one set of rules. On Linux
 * the command key is Control and the option key is Alt.
 */
namespace KivoItemGestures {

/** The state a click is judged against. */
struct ClickState {
    /** The card is morphing, about to be deleted by hover, or falling as ash. */
    bool blocked = false;
    int clickCount = 1;
    bool hasMultiSelection = false;
    bool detailsOpen = false;
};

enum class ClickAction {
    none,
    /** Shift: select from the anchor to here. */
    selectRange,
    /** Control: add it to the multi-selection or take it out, and anchor here. */
    toggle,
    /** A plain click inside a running multi-selection: the same, without closing the details. */
    toggleInSelection,
    /** Alt: show the item in the details panel. */
    showDetails,
    /** A plain click while the details panel is open: select it and let the panel follow. */
    followDetails,
    /** A plain click: open it. */
    open,
};

[[nodiscard]] ClickAction clickAction(Qt::KeyboardModifiers modifiers, const ClickState &state);

/** The state a key in the grid is judged against. */
struct KeyState {
    bool hasMultiSelection = false;
    bool keyboardFocusActive = false;
    bool lightboxOpen = false;
    /** An item is selected and it is in the current list. */
    bool selectedInList = false;
};

enum class KeyAction {
    /** Not the grid's key: let it pass on. */
    none,
    paste,
    trashSelection,
    trashFocused,
    fewerColumns,
    moreColumns,
    openSource,
    open,
    lightbox,
    clearSelection,
    moveLeft,
    moveRight,
    moveUp,
    moveDown,
    /** The Menu key or Shift-F10: the selected item's context menu. */
    menu,
};

[[nodiscard]] KeyAction keyAction(int key, Qt::KeyboardModifiers modifiers, const KeyState &state);

/** The column count after Control-= (fewer, larger cards) or Control-minus, kept within 1 to 10. */
[[nodiscard]] double stepColumns(double gridColumns, KeyAction action);

} // namespace KivoItemGestures
} // namespace kivo
