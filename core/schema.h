#pragma once

#include "core/migrator.h"

namespace kivo {

/** The library's schema steps, in the one order they are applied. */
[[nodiscard]] const QList<Migration> &libraryMigrations();

/** The statements that keep the link tables honest before a schema step. */
[[nodiscard]] const QStringList &orphanSweepStatements();

} // namespace kivo
