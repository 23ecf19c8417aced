#pragma once

#include <QImage>
#include <QString>

#include <optional>

namespace kivo {

/**
 * Reads the text in a picture with Tesseract's LSTM engine (English), line by line in reading
 * order, so that screenshots and photos of signs become searchable.
 *
 * Each thread keeps one engine, loaded on its first use and reused after, because loading the
 * language model costs far more than reading one image. Each engine reads on its own thread
 * only, without a team of OpenMP threads, unless the environment sets OpenMP's limits.
 */
class TextRecognizer
{
public:
    /** Lines read with at least this mean confidence (0 to 100) are kept; lower ones are noise. */
    static constexpr float minimumLineConfidence = 35.0F;

    /** The lines of text joined with "\n"; nothing when no line was read or recognition failed. */
    [[nodiscard]] static std::optional<QString> recognizeText(const QImage &image);

    /** Whether this thread's engine could be loaded (the English model is installed). */
    [[nodiscard]] static bool isAvailable();
};

} // namespace kivo
