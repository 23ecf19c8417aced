#pragma once

namespace kivo {

/**
 * Lets the calling thread give way to the window and the browser bridge. Work that can wait a
 * moment — imports, decoding thumbnails, reading pictures — runs niced, so on a machine with few
 * cores a drawn frame or a clip's acknowledgement is not queued behind it. Qt's thread priorities
 * do nothing under Linux's default scheduler, hence the per-thread nice value.
 *
 * The change is one-way (an unprivileged thread cannot raise itself again), so call it only on
 * threads that do nothing but background work. Calling it again is cheap.
 */
void lowerCurrentThreadPriority();

} // namespace kivo
