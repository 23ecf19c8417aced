#include "core/media/pdfpagerenderer.h"

#include "core/media/imagedecoder.h"

#ifdef KIVO_HAVE_POPPLER
#include <poppler-qt6.h>

#include <QMutex>
#endif

#include <cmath>

namespace kivo::PdfPageRenderer {

#ifdef KIVO_HAVE_POPPLER

bool available()
{
    return true;
}

QImage firstPage(const QString &path, const QSize &bound)
{
    // ### Poppler's font and colour caches are process-wide; one page at a time keeps them safe
    // at the cost of rendering PDFs in series, which is rare enough not to matter.
    static QMutex serial;
    QMutexLocker lock(&serial);
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(path);
    if (!document || document->isLocked() || document->numPages() < 1)
        return {};
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    const std::unique_ptr<Poppler::Page> page = document->page(0);
    if (!page)
        return {};
    const QSizeF points = page->pageSizeF();
    if (points.isEmpty())
        return {};
    // Render at the resolution that makes the page fill the fitted size: 72 points per inch.
    const QSize pointSize(int(std::ceil(points.width())), int(std::ceil(points.height())));
    // Vector pages may be drawn larger than their point size, up to 8 times, when the bound asks for it.
    const bool unbounded = bound.width() <= 0 && bound.height() <= 0;
    const QSize fitted = ImageDecoder::fitWithin(unbounded ? pointSize * 2 : pointSize * 8, bound);
    const double dpi = 72.0 * fitted.width() / points.width();
    QImage image = page->renderToImage(dpi, dpi);
    if (image.isNull())
        return {};
    if (image.size() != fitted)
        image = image.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

#else

bool available()
{
    return false;
}

QImage firstPage(const QString &, const QSize &)
{
    return {};
}

#endif

} // namespace kivo::PdfPageRenderer
