#pragma once

#include <QtGlobal>

namespace kivo {

/** Where a clip from the browser goes: saved at once, onto the capture card, or into the pending list. */
enum class ClipRoute { direct, card, shelf };

/**
 * The route of a clip of `count` items. An explicit target (the inbox or a collection) always
 * saves at once. A single clip otherwise gets the card, unless the card is off and the shelf on;
 * with both off it still gets the card, the only place left where the user could see it. Several
 * items go to the shelf when it is on, else straight to the destination.
 */
[[nodiscard]] constexpr ClipRoute clipRoute(qsizetype count, bool explicitTarget, bool captureCardEnabled,
    bool shelfEnabled)
{
    if (explicitTarget)
        return ClipRoute::direct;
    if (count == 1)
        return !captureCardEnabled && shelfEnabled ? ClipRoute::shelf : ClipRoute::card;
    return shelfEnabled ? ClipRoute::shelf : ClipRoute::direct;
}

} // namespace kivo
