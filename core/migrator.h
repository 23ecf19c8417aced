#pragma once

#include <QList>
#include <QString>

#include <functional>

namespace kivo {

class Database;
class DatabaseQueue;

/** One schema step: its identifier, recorded in grdb_migrations, and the body that makes it. */
struct Migration {
    QString identifier;
    std::function<void(Database &)> body;
};

/**
 * Brings a database up to a list of migrations. Each missing step runs once, in its own
 * transaction with foreign keys deferred and checked before commit; a failing step rolls back
 * alone and its error reaches the caller. Identifiers the list does not know are left alone.
 */
namespace Migrator {

void migrate(DatabaseQueue &queue, const QList<Migration> &migrations);

/** The identifiers recorded in the database, in the order they were applied. */
[[nodiscard]] QStringList appliedIdentifiers(DatabaseQueue &queue);

} // namespace Migrator
} // namespace kivo
