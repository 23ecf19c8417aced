#pragma once

#include <QString>

namespace kivo::HotkeyText {

/** Modifier masks of stored hotkeys. */
inline constexpr int commandMask = 0x100;
inline constexpr int shiftMask = 0x200;
inline constexpr int optionMask = 0x800;
inline constexpr int controlMask = 0x1000;

/** The name of a stored virtual key code ("S", "Space", "F5", "←"); "" for a code without a name. */
[[nodiscard]] QString keyName(int keyCode);

/** A hotkey as text: the modifier glyphs in the order ⌃ ⌥ ⇧ ⌘, then the key's name. */
[[nodiscard]] QString text(int keyCode, int modifiers);

/** The extension's hotkey as text: its modifier glyphs in the same order and the upper-cased key; "" without a key. */
[[nodiscard]] QString clipperText(const QString &key, bool ctrl, bool alt, bool shift, bool meta);

/** The glyph of the drop ring's modifier setting ("control", "command", "option", "shift"). */
[[nodiscard]] QString dropRingGlyph(const QString &modifier);

} // namespace kivo::HotkeyText
