#pragma once

#include <QCache>
#include <QImage>
#include <QMutex>
#include <QString>

#include <optional>

namespace kivo {

/**
 * Decoded thumbnails kept in memory up to a byte budget, least recently used first out. Shared by
 * the decoding threads, so every call locks; images are implicitly shared, so a hit copies nothing.
 */
class ThumbnailCache
{
public:
    explicit ThumbnailCache(qint64 byteLimit = qint64(96) * 1024 * 1024);

    [[nodiscard]] std::optional<QImage> find(const QString &key) const;
    /** Keeps the image unless it alone is larger than the whole budget. */
    void insert(const QString &key, const QImage &image);
    /** Drops everything: for memory pressure and for a library switch. */
    void purge();

    [[nodiscard]] qint64 byteLimit() const;
    void setByteLimit(qint64 bytes);
    [[nodiscard]] qint64 bytes() const;
    [[nodiscard]] int count() const;

private:
    mutable QMutex m_mutex;
    // QCache::object() refreshes recency, so lookups go through a mutable cache.
    mutable QCache<QString, QImage> m_images;
};

} // namespace kivo
