#include "surfaces/grid/kivoitemgestures.h"

#include <algorithm>

namespace kivo::KivoItemGestures {

namespace {

constexpr Qt::KeyboardModifiers relevantModifiers
    = Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

} // namespace

ClickAction clickAction(Qt::KeyboardModifiers modifiers, const ClickState &state)
{
    if (state.blocked || state.clickCount > 1)
        return ClickAction::none;
    if (modifiers.testFlag(Qt::ShiftModifier))
        return ClickAction::selectRange;
    if (modifiers.testFlag(Qt::ControlModifier))
        return ClickAction::toggle;
    if (modifiers.testFlag(Qt::AltModifier))
        return ClickAction::showDetails;
    if (state.hasMultiSelection)
        return ClickAction::toggleInSelection;
    if (state.detailsOpen)
        return ClickAction::followDetails;
    return ClickAction::open;
}

KeyAction keyAction(int key, Qt::KeyboardModifiers modifiers, const KeyState &state)
{
    const Qt::KeyboardModifiers held = modifiers & relevantModifiers;
    const bool plain = held == Qt::NoModifier;
    const bool control = held.testFlag(Qt::ControlModifier);
    switch (key) {
    case Qt::Key_V:
        return control ? KeyAction::paste : KeyAction::none;
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        if (plain && state.hasMultiSelection)
            return KeyAction::trashSelection;
        if (plain && state.keyboardFocusActive && !state.lightboxOpen && state.selectedInList)
            return KeyAction::trashFocused;
        return KeyAction::none;
    case Qt::Key_Equal:
    case Qt::Key_Plus:
        return control ? KeyAction::fewerColumns : KeyAction::none;
    case Qt::Key_Minus:
        return control ? KeyAction::moreColumns : KeyAction::none;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (control)
            return KeyAction::openSource;
        return plain && state.selectedInList ? KeyAction::open : KeyAction::none;
    case Qt::Key_Space:
        return plain ? KeyAction::lightbox : KeyAction::none;
    case Qt::Key_Escape:
        return state.hasMultiSelection ? KeyAction::clearSelection : KeyAction::none;
    case Qt::Key_Left:
        return KeyAction::moveLeft;
    case Qt::Key_Right:
        return KeyAction::moveRight;
    case Qt::Key_Up:
        return KeyAction::moveUp;
    case Qt::Key_Down:
        return KeyAction::moveDown;
    case Qt::Key_Menu:
        return plain && state.selectedInList ? KeyAction::menu : KeyAction::none;
    case Qt::Key_F10:
        return held == Qt::ShiftModifier && state.selectedInList ? KeyAction::menu : KeyAction::none;
    default:
        return KeyAction::none;
    }
}

double stepColumns(double gridColumns, KeyAction action)
{
    if (action == KeyAction::fewerColumns)
        return std::max(gridColumns - 1, 1.0);
    if (action == KeyAction::moreColumns)
        return std::min(gridColumns + 1, 10.0);
    return gridColumns;
}

} // namespace kivo::KivoItemGestures
