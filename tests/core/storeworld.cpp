#include "tests/core/storeworld.h"

#include "core/librarylocation.h"
#include "core/systemlog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace kivo::test {

namespace {

/** A library migrated once per test process; each world starts from a copy, as the steps' syncs are slow. */
QString migratedTemplate()
{
    static QTemporaryDir folder;
    static const QString path = [] {
        const QString file = folder.path() + u"/library.sqlite"_s;
        DatabaseQueue::open(file);
        return file;
    }();
    return path;
}

} // namespace

StoreWorld::StoreWorld(const std::function<void(Store &)> &beforeStart)
{
    QDir().mkpath(sandbox.libraryRoot());
    QFile::copy(migratedTemplate(), sandbox.libraryRoot() + u"/library.sqlite"_s);
    desktop.downloads = sandbox.path() + u"/Downloads"_s;
    store.setDesktop(&desktop);
    if (beforeStart)
        beforeStart(store);
    store.initialise();
    if (!QTest::qWaitFor([this] { return store.didInitialLoad(); }, 5000))
        qWarning("The Store's first load did not come");
}

QString Seed::item(const QString &kind, double addedAt, const std::function<void(LibraryItem &)> &tweak)
{
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = kind;
    item.title = kind + u' ' + QString::number(addedAt);
    item.createdAt = item.addedAt = item.modifiedAt = addedAt;
    if (tweak)
        tweak(item);
    m_db.insert(item);
    return item.id;
}

void Seed::membership(const QString &itemId, const QString &collectionId, double addedAt)
{
    m_db.insert(ItemCollection{itemId, collectionId, addedAt});
}

void StoreWorld::seed(const std::function<void(Seed &)> &fill)
{
    db().write([&](Database &database) {
        Seed seed(database);
        fill(seed);
    });
}

QString StoreWorld::addItem(const QString &kind, double addedAt, const std::function<void(LibraryItem &)> &tweak)
{
    QString id;
    seed([&](Seed &seed) { id = seed.item(kind, addedAt, tweak); });
    return id;
}

void StoreWorld::addMembership(const QString &itemId, const QString &collectionId, double addedAt)
{
    seed([&](Seed &seed) { seed.membership(itemId, collectionId, addedAt); });
}

QString StoreWorld::addCollection(const QString &name, const QString &parentId)
{
    return store.createCollection(name, parentId);
}

LibraryItem StoreWorld::item(const QString &id) const
{
    return store.itemById(id).value_or(LibraryItem());
}

QVariant StoreWorld::scalar(const QString &sql, const QVariantList &arguments) const
{
    return db().read([&](Database &database) { return database.fetchScalar(sql, arguments); });
}

QString StoreWorld::storeFile(const QString &relativePath, const QByteArray &bytes)
{
    writeFile(LibraryLocation::resolve(relativePath), bytes);
    return relativePath;
}

QStringList idsOf(const QList<LibraryItem> &items)
{
    QStringList ids;
    for (const LibraryItem &item : items)
        ids.append(item.id);
    return ids;
}

} // namespace kivo::test
