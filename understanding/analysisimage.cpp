#include "understanding/analysisimage.h"

#include <QImageReader>

#include <algorithm>
#include <cmath>

namespace kivo::AnalysisImage {

QImage decode(const QString &path, int maxSide)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    // The reader scales before it turns the picture upright, so the stored size is the one to bound.
    const QSize stored = reader.size();
    if (stored.isValid() && std::max(stored.width(), stored.height()) > maxSide) {
        const double factor = double(maxSide) / std::max(stored.width(), stored.height());
        reader.setScaledSize(QSize(std::max(1, int(std::lround(stored.width() * factor))),
            std::max(1, int(std::lround(stored.height() * factor)))));
    }
    QImage image = reader.read();
    if (image.isNull())
        return {};
    // A format that cannot report its size up front is bounded after the decode.
    if (std::max(image.width(), image.height()) > maxSide)
        image = image.scaled(maxSide, maxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

} // namespace kivo::AnalysisImage
