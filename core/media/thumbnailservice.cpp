#include "core/media/thumbnailservice.h"

#include "core/media/thumbnailer.h"

#include <QFileInfo>
#include <QThread>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo {

ThumbnailService::ThumbnailService(qint64 cacheBytes) : m_cache(cacheBytes)
{
    // Leave one core to the interface thread; decoding is CPU-bound.
    m_pool.setMaxThreadCount(std::clamp(QThread::idealThreadCount() - 1, 2, 6));
    m_pool.setObjectName(u"ThumbnailService"_s);
}

ThumbnailService::~ThumbnailService()
{
    m_pool.clear();
    m_pool.waitForDone();
}

QString ThumbnailService::cacheKey(const QString &path, const QSize &bound)
{
    const QFileInfo info(path);
    return path + u'|' + QString::number(info.lastModified().toMSecsSinceEpoch()) + u'|' + QString::number(info.size())
        + u'|' + QString::number(bound.width()) + u'x' + QString::number(bound.height());
}

QImage ThumbnailService::thumbnail(const QString &path, const QSize &bound)
{
    const QString key = cacheKey(path, bound);
    if (auto cached = m_cache.find(key))
        return *cached;
    QImage image = Thumbnailer::make(path, bound);
    m_cache.insert(key, image);
    return image;
}

} // namespace kivo
