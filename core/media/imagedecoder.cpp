#include "core/media/imagedecoder.h"

#include "core/media/medialog.h"

#include <QImageReader>

#include <algorithm>
#include <cmath>

namespace kivo::ImageDecoder {

namespace {

bool swapsAxes(QImageIOHandler::Transformations transformation)
{
    return transformation.testFlag(QImageIOHandler::TransformationRotate90);
}

} // namespace

QSize fitWithin(const QSize &size, const QSize &bound)
{
    if (size.isEmpty())
        return size;
    double scale = 1.0;
    if (bound.width() > 0)
        scale = std::min(scale, double(bound.width()) / size.width());
    if (bound.height() > 0)
        scale = std::min(scale, double(bound.height()) / size.height());
    return {std::max(1, int(std::lround(size.width() * scale))), std::max(1, int(std::lround(size.height() * scale)))};
}

QSize uprightSize(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize stored = reader.size();
    if (!stored.isValid())
        return {};
    return swapsAxes(reader.transformation()) ? stored.transposed() : stored;
}

QImage decode(const QString &path, const QSize &bound)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize stored = reader.size();
    if (stored.isValid()) {
        // The scaled size applies before the orientation turn, so fit the upright shape and turn it back.
        const bool swap = swapsAxes(reader.transformation());
        const QSize upright = swap ? stored.transposed() : stored;
        const QSize target = fitWithin(upright, bound);
        if (target != upright)
            reader.setScaledSize(swap ? target.transposed() : target);
    }
    QImage image = reader.read();
    if (image.isNull()) {
        qCDebug(lcMedia) << "cannot read" << path << reader.errorString();
        return {};
    }
    // Formats that cannot scale while reading (or report no size up front) are scaled here.
    const QSize target = fitWithin(image.size(), bound);
    if (target != image.size())
        image = image.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

} // namespace kivo::ImageDecoder
