#pragma once

#include <QString>

#include <functional>

namespace kivo {

/**
 * Moves a library from the older layout ("files/ab/<id>.ext", no sidecars) into the browsable one
 * ("items/yyyy-MM/<title>.ext" with a sidecar each), once and one way. Everything it touches is
 * copied to ".pre-reorganise" first, so a failure or a crash half-way is rolled back, now or at
 * the next start.
 */
namespace Reorganiser {

/**
 * Called at named moments of a run, so that tests can stop it there: "copying" (the first file
 * is in the backup), "copied", "moving" (the first file has moved), "moved", "committed".
 */
using Checkpoint = std::function<void(const QString &stage)>;

/**
 * Runs the reorganise on the library at `root` if it has not run yet; finishes or undoes a run
 * that was cut off. Returns whether the library has the browsable layout afterwards. Never throws.
 */
bool run(const QString &root, const Checkpoint &checkpoint = {});

/** Puts the backup back and forgets the browsable layout. */
void rollback(const QString &root);

} // namespace Reorganiser
} // namespace kivo
