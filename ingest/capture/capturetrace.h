#pragma once

#include <QString>

namespace kivo {

/**
 * Timing lines for diagnosing a slow capture: one run from the clip's arrival to the card's bind,
 * with a line per step giving the time since the previous step and since the start. Process-wide
 * and guarded by a lock, since a clip's steps may be marked from different places.
 */
namespace CaptureTrace {

/** Starts a run: logs "[CaptureTrace] --- <label> ---". A run already under way is restarted. */
void begin(const QString &label);
/** Logs "[CaptureTrace] <label>: <n> ms (total <n> ms)" when a run is under way; else nothing. */
void mark(const QString &label);
/** Ends the run; later marks log nothing until the next begin. */
void clear();
/** Whether a run is under way. */
[[nodiscard]] bool running();

} // namespace CaptureTrace
} // namespace kivo
