#pragma once

namespace kivo {

/**
 * Starts the windowed application: settles the library's presence and takes its lock (or hands
 * the window to the Kivo already running on it), then runs the delegate's launch and the main
 * window until a quit from the tray, a signal or the session.
 */
int runApplication(int argc, char **argv);

} // namespace kivo
