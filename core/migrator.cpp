#include "core/migrator.h"

#include "core/database.h"

#include <QSet>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace kivo::Migrator {

namespace {

const QString createBookkeeping = u"CREATE TABLE IF NOT EXISTS grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY)"_s;

void runOne(Database &db, const Migration &migration)
{
    const bool foreignKeysOn = db.fetchScalar(u"PRAGMA foreign_keys"_s).toLongLong() != 0;
    if (foreignKeysOn)
        db.executeScript(u"PRAGMA foreign_keys = OFF"_s);
    try {
        db.executeScript(u"BEGIN IMMEDIATE TRANSACTION"_s);
        try {
            migration.body(db);
            QStringList violations;
            db.forEach(u"PRAGMA foreign_key_check"_s, {}, [&](const Row &row) {
                violations.append(row.text(0) + u" rowid "_s + row.text(1) + u" -> "_s + row.text(2));
            });
            if (!violations.isEmpty())
                throw DatabaseError(SQLITE_CONSTRAINT_FOREIGNKEY,
                                    u"FOREIGN KEY constraint violation in migration "_s + migration.identifier + u": "_s
                                        + violations.join(u"; "_s));
            db.execute(u"INSERT INTO grdb_migrations (identifier) VALUES (?)"_s, {migration.identifier});
            db.executeScript(u"COMMIT TRANSACTION"_s);
        } catch (...) {
            if (!sqlite3_get_autocommit(db.handle()))
                sqlite3_exec(db.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
    } catch (...) {
        if (foreignKeysOn)
            sqlite3_exec(db.handle(), "PRAGMA foreign_keys = ON", nullptr, nullptr, nullptr);
        throw;
    }
    if (foreignKeysOn)
        db.executeScript(u"PRAGMA foreign_keys = ON"_s);
}

} // namespace

void migrate(DatabaseQueue &queue, const QList<Migration> &migrations)
{
    queue.barrier([&](Database &db) {
        db.executeScript(createBookkeeping);
        QSet<QString> applied;
        for (const QVariant &identifier : db.fetchScalars(u"SELECT identifier FROM grdb_migrations"_s))
            applied.insert(identifier.toString());
        for (const Migration &migration : migrations) {
            if (!applied.contains(migration.identifier))
                runOne(db, migration);
        }
    });
}

QStringList appliedIdentifiers(DatabaseQueue &queue)
{
    return queue.read([](Database &db) {
        QStringList identifiers;
        const bool exists = db.fetchScalar(
                                  u"SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = 'grdb_migrations'"_s)
                                .toLongLong()
            > 0;
        if (!exists)
            return identifiers;
        for (const QVariant &identifier : db.fetchScalars(u"SELECT identifier FROM grdb_migrations ORDER BY rowid"_s))
            identifiers.append(identifier.toString());
        return identifiers;
    });
}

} // namespace kivo::Migrator
