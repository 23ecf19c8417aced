#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace kivo {

/** The size of a picture or video as it is shown, and a video's length; what could not be read stays empty. */
struct MediaMeasurement {
    std::optional<double> width;
    std::optional<double> height;
    std::optional<double> duration;
};

/**
 * Reads the measurements an item keeps from a file's header, without decoding the whole file:
 * a picture's size turned by its EXIF orientation, a video's size turned by its display matrix,
 * and its duration. A failure leaves the values empty and never stops an import.
 */
namespace MediaMeasure {

/** Width and height of picture bytes; a quarter-turn orientation (EXIF 5 to 8) swaps them. */
[[nodiscard]] MediaMeasurement image(const QByteArray &bytes);

/**
 * Size (from its first video stream, turned as the display matrix says, as absolute values) and
 * duration of a video or audio file; a file without a video stream has no size.
 */
[[nodiscard]] MediaMeasurement video(const QString &path);

} // namespace MediaMeasure
} // namespace kivo
