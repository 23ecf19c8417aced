#include "surfaces/capture/clippreviewprovider.h"

#include <QHash>
#include <QMutex>

namespace kivo {

namespace {

struct Previews {
    QMutex lock;
    QHash<QString, QImage> images;
};

Previews &previews()
{
    static Previews instance;
    return instance;
}

} // namespace

ClipPreviewProvider::ClipPreviewProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage ClipPreviewProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    // The key may carry a "?serial" behind it, so that a view asks again for a replaced preview.
    const QString key = id.section(u'?', 0, 0);
    QImage image;
    {
        Previews &p = previews();
        QMutexLocker lock(&p.lock);
        image = p.images.value(key);
    }
    if (!image.isNull() && requestedSize.isValid() && !requestedSize.isEmpty())
        image = image.scaled(requestedSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (size)
        *size = image.size();
    return image;
}

void ClipPreviewProvider::put(const QString &key, const QImage &image)
{
    Previews &p = previews();
    QMutexLocker lock(&p.lock);
    if (image.isNull())
        p.images.remove(key);
    else
        p.images.insert(key, image);
}

void ClipPreviewProvider::remove(const QString &key)
{
    Previews &p = previews();
    QMutexLocker lock(&p.lock);
    p.images.remove(key);
}

bool ClipPreviewProvider::contains(const QString &key)
{
    Previews &p = previews();
    QMutexLocker lock(&p.lock);
    return p.images.contains(key);
}

} // namespace kivo
