#pragma once

namespace kivo {

/** Starts the windowed application: settles the library's presence, then opens the main window. */
int runApplication(int argc, char **argv);

} // namespace kivo
