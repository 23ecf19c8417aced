#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace kivo {

/** Renders the first page of a PDF as a picture, the face a document shows on its card. */
namespace PdfPageRenderer {

/** Whether this build can render PDFs at all (poppler present at build time). */
[[nodiscard]] bool available();

/** The first page fitted in `bound` (as ImageDecoder::fitWithin); null for a locked, broken or absent file. */
[[nodiscard]] QImage firstPage(const QString &path, const QSize &bound);

} // namespace PdfPageRenderer
} // namespace kivo
