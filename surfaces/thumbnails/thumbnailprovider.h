#pragma once

#include <QQuickAsyncImageProvider>
#include <QSize>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

namespace kivo {

class DatabaseQueue;
class ThumbnailService;

/** Finds the file of an item id (absolute path, empty when it has none); called on decoding threads. */
using ItemFileResolver = std::function<QString(const QString &itemId)>;

/**
 * Serves "image://thumb/<item id or absolute path>?<width>" to QML: each request becomes a job on
 * the thumbnail service's pool, newest first, so the cards on screen fill before the ones just
 * scrolled past, and nothing is decoded on the interface thread.
 */
class ThumbnailProvider : public QQuickAsyncImageProvider
{
public:
    explicit ThumbnailProvider(std::shared_ptr<ThumbnailService> service, ItemFileResolver resolver = {});

    QQuickImageResponse *requestImageResponse(const QString &id, const QSize &requestedSize) override;

    /** One request, read from the part of the URL after "image://thumb/". */
    struct Request {
        QString itemId;
        QString path;
        /** The decode bound: the asked width, and four times it as height (cards crop taller pictures). */
        QSize bound;
    };
    [[nodiscard]] static Request parse(const QString &id, const QSize &requestedSize);

    /** The smallest width of the fixed ladder at or above `pixels`, so near sizes share one decode. */
    [[nodiscard]] static int widthBucket(double pixels);
    /** Source URL text for an item's thumbnail at a width bucket. */
    [[nodiscard]] static QString sourceForItem(const QString &itemId, int width);
    /** Source URL text for any file's thumbnail, without the width (cards add their own). */
    [[nodiscard]] static QString sourceStemForPath(const QString &absolutePath);
    /** Source URL text for any file's thumbnail at a width bucket. */
    [[nodiscard]] static QString sourceForPath(const QString &absolutePath, int width);

    /** The resolver Kivo uses: the item's `filePath` read through the queue and resolved in the library. */
    [[nodiscard]] static ItemFileResolver databaseResolver(std::shared_ptr<DatabaseQueue> queue);

    [[nodiscard]] ThumbnailService &service() const { return *m_service; }

private:
    std::shared_ptr<ThumbnailService> m_service;
    ItemFileResolver m_resolver;
    std::atomic_int m_priority{0};
};

} // namespace kivo
