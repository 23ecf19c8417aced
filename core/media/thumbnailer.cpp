#include "core/media/thumbnailer.h"

#include "core/media/imagedecoder.h"
#include "core/media/pdfpagerenderer.h"
#include "core/media/videoframedecoder.h"

#include <QMimeDatabase>

using namespace Qt::StringLiterals;

namespace kivo::Thumbnailer {

Source sourceFor(const QString &path)
{
    const QMimeDatabase mimes;
    const QMimeType type = mimes.mimeTypeForFile(path);
    if (type.name().startsWith(u"image/"))
        return Source::image;
    if (type.name().startsWith(u"video/"))
        return Source::video;
    if (type.inherits(u"application/pdf"_s))
        return Source::pdf;
    return Source::none;
}

QImage make(const QString &path, const QSize &bound)
{
    switch (sourceFor(path)) {
    case Source::image:
        return ImageDecoder::decode(path, bound);
    case Source::video:
        return VideoFrameDecoder::frame(path, bound, 0.5);
    case Source::pdf:
        return PdfPageRenderer::firstPage(path, bound);
    case Source::none:
        break;
    }
    return {};
}

} // namespace kivo::Thumbnailer
