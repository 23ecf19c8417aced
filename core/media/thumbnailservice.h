#pragma once

#include "core/media/thumbnailcache.h"

#include <QImage>
#include <QSize>
#include <QString>
#include <QThreadPool>

namespace kivo {

/**
 * The thumbnail service: bounded decodes through Thumbnailer, remembered in a byte-bounded cache
 * and run on a pool of its own so that the grid, text reading and import share one set of threads
 * and one memory budget.
 */
class ThumbnailService
{
public:
    explicit ThumbnailService(qint64 cacheBytes = qint64(48) * 1024 * 1024);
    ~ThumbnailService();
    ThumbnailService(const ThumbnailService &) = delete;
    ThumbnailService &operator=(const ThumbnailService &) = delete;

    /**
     * The file's picture fitted in `bound`, from the cache or decoded now. Blocks for the decode:
     * call it on the pool (or another worker thread), never on the main thread.
     */
    [[nodiscard]] QImage thumbnail(const QString &path, const QSize &bound);

    /** Where decodes run; newer requests may be given higher priority so the visible ones go first. */
    [[nodiscard]] QThreadPool &pool() { return m_pool; }
    [[nodiscard]] ThumbnailCache &cache() { return m_cache; }
    /** Forgets every decoded picture (memory pressure, window idle, library switch). */
    void purge() { m_cache.purge(); }

    /** The cache key: the path, the file's modification time and the bound, so an edited file decodes anew. */
    [[nodiscard]] static QString cacheKey(const QString &path, const QSize &bound);

private:
    ThumbnailCache m_cache;
    QThreadPool m_pool;
};

} // namespace kivo
