#include "core/media/thumbnailcache.h"

namespace kivo {

ThumbnailCache::ThumbnailCache(qint64 byteLimit)
{
    m_images.setMaxCost(byteLimit);
}

std::optional<QImage> ThumbnailCache::find(const QString &key) const
{
    QMutexLocker lock(&m_mutex);
    if (const QImage *image = m_images.object(key))
        return *image;
    return std::nullopt;
}

void ThumbnailCache::insert(const QString &key, const QImage &image)
{
    if (image.isNull())
        return;
    QMutexLocker lock(&m_mutex);
    m_images.insert(key, new QImage(image), image.sizeInBytes());
}

void ThumbnailCache::purge()
{
    QMutexLocker lock(&m_mutex);
    m_images.clear();
}

qint64 ThumbnailCache::byteLimit() const
{
    QMutexLocker lock(&m_mutex);
    return m_images.maxCost();
}

void ThumbnailCache::setByteLimit(qint64 bytes)
{
    QMutexLocker lock(&m_mutex);
    m_images.setMaxCost(bytes);
}

qint64 ThumbnailCache::bytes() const
{
    QMutexLocker lock(&m_mutex);
    return m_images.totalCost();
}

int ThumbnailCache::count() const
{
    QMutexLocker lock(&m_mutex);
    return int(m_images.count());
}

} // namespace kivo
