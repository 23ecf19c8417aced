#include "surfaces/thumbnails/thumbnailprovider.h"

#include "core/backgroundpriority.h"
#include "core/database.h"
#include "core/heaptrim.h"
#include "core/librarylocation.h"
#include "core/media/thumbnailservice.h"
#include "core/systemlog.h"

#include <QQuickTextureFactory>
#include <QRunnable>
#include <QUrl>

#include <array>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

constexpr int defaultWidth = 512;
constexpr std::array widthLadder{96, 160, 256, 384, 512, 768, 1024, 1536, 2048};

/** One decode on the pool; its result travels back to the response through a queued signal. */
class ThumbnailJob : public QObject, public QRunnable
{
    Q_OBJECT

public:
    ThumbnailJob(std::shared_ptr<std::atomic_bool> cancelled, std::shared_ptr<ThumbnailService> service,
        ItemFileResolver resolver, ThumbnailProvider::Request request)
        : m_cancelled(std::move(cancelled))
        , m_service(std::move(service))
        , m_resolver(std::move(resolver))
        , m_request(std::move(request))
    {
    }

    void run() override
    {
        lowerCurrentThreadPriority();
        QImage image;
        QString error;
        if (m_cancelled->load()) {
            error = u"cancelled"_s;
        } else {
            QString path = m_request.path;
            if (path.isEmpty() && m_resolver)
                path = m_resolver(m_request.itemId);
            if (path.isEmpty())
                error = u"no file for "_s + m_request.itemId;
            else if (image = m_service->thumbnail(path, m_request.bound); image.isNull())
                error = u"no picture in "_s + path;
        }
        Q_EMIT done(image, error);
        // The last decode of a burst gives back what the burst freed on the workers' heaps.
        if (m_service->pool().activeThreadCount() <= 1)
            returnFreedHeapMemoryNowAndThen();
    }

Q_SIGNALS:
    void done(const QImage &image, const QString &error);

private:
    std::shared_ptr<std::atomic_bool> m_cancelled;
    std::shared_ptr<ThumbnailService> m_service;
    ItemFileResolver m_resolver;
    ThumbnailProvider::Request m_request;
};

/**
 * The answer QML waits on. The engine may delete a cancelled response while its job still runs,
 * so the job shares only a flag with it and reaches it through a connection, which dies with it.
 */
class ThumbnailResponse : public QQuickImageResponse
{
    Q_OBJECT

public:
    explicit ThumbnailResponse(ThumbnailJob *job, std::shared_ptr<std::atomic_bool> cancelled)
        : m_cancelled(std::move(cancelled))
    {
        connect(job, &ThumbnailJob::done, this, &ThumbnailResponse::deliver);
    }

    QQuickTextureFactory *textureFactory() const override
    {
        return QQuickTextureFactory::textureFactoryForImage(m_image);
    }
    QString errorString() const override { return m_error; }
    void cancel() override { m_cancelled->store(true); }

private:
    void deliver(const QImage &image, const QString &error)
    {
        m_image = image;
        m_error = error;
        Q_EMIT finished();
    }

    std::shared_ptr<std::atomic_bool> m_cancelled;
    QImage m_image;
    QString m_error;
};

} // namespace

ThumbnailProvider::ThumbnailProvider(std::shared_ptr<ThumbnailService> service, ItemFileResolver resolver)
    : m_service(std::move(service)), m_resolver(std::move(resolver))
{
}

ThumbnailProvider::Request ThumbnailProvider::parse(const QString &id, const QSize &requestedSize)
{
    Request request;
    const qsizetype query = id.lastIndexOf(u'?');
    const QString key = QUrl::fromPercentEncoding((query < 0 ? id : id.left(query)).toUtf8());
    int width = query < 0 ? 0 : id.mid(query + 1).toInt();
    if (width <= 0)
        width = requestedSize.width() > 0 ? requestedSize.width() : defaultWidth;
    request.bound = QSize(width, width * 4);
    if (key.startsWith(u'/'))
        request.path = key;
    else
        request.itemId = key;
    return request;
}

int ThumbnailProvider::widthBucket(double pixels)
{
    for (const int width : widthLadder) {
        if (pixels <= width)
            return width;
    }
    return widthLadder.back();
}

QString ThumbnailProvider::sourceForItem(const QString &itemId, int width)
{
    return u"image://thumb/"_s + itemId + u'?' + QString::number(width);
}

QString ThumbnailProvider::sourceStemForPath(const QString &absolutePath)
{
    // The path keeps its leading slash after the host's: "image://thumb//home/...".
    return u"image://thumb/"_s + QString::fromLatin1(QUrl::toPercentEncoding(absolutePath, "/"));
}

QString ThumbnailProvider::sourceForPath(const QString &absolutePath, int width)
{
    return sourceStemForPath(absolutePath) + u'?' + QString::number(width);
}

ItemFileResolver ThumbnailProvider::databaseResolver(std::shared_ptr<DatabaseQueue> queue)
{
    return [queue](const QString &itemId) -> QString {
        if (!queue)
            return {};
        try {
            const QVariant filePath = queue->read(
                [&](Database &db) { return db.fetchScalar(u"SELECT filePath FROM item WHERE id = ?"_s, {itemId}); });
            const QString relative = filePath.toString();
            return relative.isEmpty() ? QString() : LibraryLocation::resolve(relative);
        } catch (const std::exception &error) {
            systemLog(u"[Thumbnail] lookup failed: "_s + errorText(error));
            return {};
        }
    };
}

QQuickImageResponse *ThumbnailProvider::requestImageResponse(const QString &id, const QSize &requestedSize)
{
    auto cancelled = std::make_shared<std::atomic_bool>(false);
    auto *job = new ThumbnailJob(cancelled, m_service, m_resolver, parse(id, requestedSize));
    auto *response = new ThumbnailResponse(job, std::move(cancelled));
    // Rising priorities make the pool run the newest request first.
    m_service->pool().start(job, m_priority.fetch_add(1) & 0x3fffffff);
    return response;
}

} // namespace kivo

#include "thumbnailprovider.moc"
