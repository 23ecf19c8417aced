#include "understanding/textrecognizer.h"

#include <QLoggingCategory>
#include <QPainter>

#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

Q_LOGGING_CATEGORY(lcText, "kivo.understanding.text")

/** This thread's engine: loaded once, or marked as unavailable so the load is not tried again. */
struct Engine {
    std::unique_ptr<tesseract::TessBaseAPI> api;
    bool failed = false;
};

/**
 * The engine asks OpenMP for a team of threads for every line it reads, and with one thread per
 * core it reads an image several times slower than alone, as the threads wait on each other
 * (images are read on several workers at once already). Allowing no active parallel level runs
 * each such region on the calling thread. The setting belongs to the thread that makes it, so each
 * engine's thread makes it before its first read. A choice the user made in the environment is
 * left alone.
 */
void readOnThisThreadOnly()
{
    if (std::getenv("OMP_THREAD_LIMIT") || std::getenv("OMP_NUM_THREADS") || std::getenv("OMP_MAX_ACTIVE_LEVELS"))
        return;
    omp_set_max_active_levels(0);
}

tesseract::TessBaseAPI *threadEngine()
{
    thread_local Engine engine;
    if (engine.api || engine.failed)
        return engine.api.get();
    readOnThisThreadOnly();
    auto api = std::make_unique<tesseract::TessBaseAPI>();
    // The engine's progress and warnings would otherwise go to standard error on every image.
    api->SetVariable("debug_file", "/dev/null");
    if (api->Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) != 0) {
        qCWarning(lcText) << "the English text model could not be loaded; pictures are read without text";
        engine.failed = true;
        return nullptr;
    }
    api->SetPageSegMode(tesseract::PSM_AUTO);
    engine.api = std::move(api);
    return engine.api.get();
}

// Opaque RGB, transparent parts over white, as a page would be.
QImage opaqueRgb(const QImage &image)
{
    if (!image.hasAlphaChannel())
        return image.convertToFormat(QImage::Format_RGB888);
    QImage page(image.size(), QImage::Format_RGB888);
    page.setDotsPerMeterX(image.dotsPerMeterX());
    page.setDotsPerMeterY(image.dotsPerMeterY());
    page.fill(Qt::white);
    QPainter painter(&page);
    painter.drawImage(0, 0, image);
    painter.end();
    return page;
}

bool hasLetterOrDigit(const QString &line)
{
    return std::any_of(line.cbegin(), line.cend(), [](QChar c) { return c.isLetterOrNumber(); });
}

} // namespace

std::optional<QString> TextRecognizer::recognizeText(const QImage &image)
{
    if (image.isNull())
        return std::nullopt;
    tesseract::TessBaseAPI *api = threadEngine();
    if (!api)
        return std::nullopt;

    const QImage page = opaqueRgb(image);
    api->SetImage(page.constBits(), page.width(), page.height(), 3, int(page.bytesPerLine()));
    const int dotsPerInch = int(std::lround(page.dotsPerMeterX() * 0.0254));
    api->SetSourceResolution(std::max(70, dotsPerInch));

    QStringList lines;
    if (api->Recognize(nullptr) == 0) {
        std::unique_ptr<tesseract::ResultIterator> it(api->GetIterator());
        if (it && !it->Empty(tesseract::RIL_TEXTLINE)) {
            do {
                const std::unique_ptr<char[]> text(it->GetUTF8Text(tesseract::RIL_TEXTLINE));
                if (!text)
                    continue;
                const QString line = QString::fromUtf8(text.get()).trimmed();
                // ### The recogniser reports every blob it saw, textures included; a line without a
                // letter or digit, or one it barely believes, is dropped as such noise.
                if (line.isEmpty() || !hasLetterOrDigit(line))
                    continue;
                if (it->Confidence(tesseract::RIL_TEXTLINE) < minimumLineConfidence)
                    continue;
                lines.append(line);
            } while (it->Next(tesseract::RIL_TEXTLINE));
        }
    }
    api->Clear();
    if (lines.isEmpty())
        return std::nullopt;
    return lines.join(u'\n');
}

bool TextRecognizer::isAvailable()
{
    return threadEngine() != nullptr;
}

} // namespace kivo
