#include "core/memorycaches.h"

#include <QList>
#include <QMutex>

namespace kivo::MemoryCaches {

namespace {

struct Entry {
    int token = 0;
    QString name;
    Purge purge;
};

struct Registry {
    QMutex mutex;
    QList<Entry> entries;
    int nextToken = 1;
};

Registry &registry()
{
    static Registry instance;
    return instance;
}

} // namespace

int add(const QString &name, Purge purge)
{
    Registry &caches = registry();
    QMutexLocker lock(&caches.mutex);
    const int token = caches.nextToken++;
    caches.entries.append({token, name, std::move(purge)});
    return token;
}

void remove(int token)
{
    Registry &caches = registry();
    QMutexLocker lock(&caches.mutex);
    caches.entries.removeIf([token](const Entry &entry) { return entry.token == token; });
}

QStringList purgeAll()
{
    // The purges run outside the lock, so that one may register or remove a cache itself.
    QList<Entry> entries;
    {
        Registry &caches = registry();
        QMutexLocker lock(&caches.mutex);
        entries = caches.entries;
    }
    QStringList purged;
    for (const Entry &entry : entries) {
        entry.purge();
        purged.append(entry.name);
    }
    return purged;
}

QStringList names()
{
    Registry &caches = registry();
    QMutexLocker lock(&caches.mutex);
    QStringList result;
    for (const Entry &entry : caches.entries)
        result.append(entry.name);
    return result;
}

} // namespace kivo::MemoryCaches
