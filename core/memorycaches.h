#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace kivo {

/**
 * The in-memory caches that may be emptied when the program should give memory back: the
 * thumbnail, preview, icon and favicon caches and the model runtimes each register a purge here,
 * and the application's memory watch calls them all at once.
 */
namespace MemoryCaches {

using Purge = std::function<void()>;

/** Registers a purge under a name; returns the token that removes it again. */
int add(const QString &name, Purge purge);
void remove(int token);

/** Calls every registered purge, in the order they were added; returns their names. */
QStringList purgeAll();

/** The names currently registered. */
[[nodiscard]] QStringList names();

} // namespace MemoryCaches
} // namespace kivo
