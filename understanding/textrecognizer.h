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
 * language model costs far more than reading one image. The process should run with
 * OMP_THREAD_LIMIT=1, or the engine's threads fight over the cores.
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

    /**
     * Call first thing in main(): when OMP_THREAD_LIMIT is not set, sets it to 1 and replaces the
     * process with a fresh copy of the program (same arguments), because the engine's OpenMP
     * runtime reads the limit only once, as it loads. Returns only when nothing had to change or
     * the restart failed.
     */
    static void ensureSingleThreadedProcess(char **argv);
};

} // namespace kivo
