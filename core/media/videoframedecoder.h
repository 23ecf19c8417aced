#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

namespace kivo {

/** What a video file says about itself: its picture as shown, its turn and its length. */
struct VideoInfo {
    /** Width and height as shown: after the pixel aspect and the display turn. */
    QSize displaySize;
    /** Clockwise turn of the display matrix, in degrees: 0, 90, 180 or 270. */
    int rotation = 0;
    /** Seconds; 0 when the container does not say. */
    double duration = 0;
};

/**
 * One representative frame of a video through FFmpeg: seek near the middle, decode up to it,
 * scale to a bounded RGB picture and turn it the way the file asks to be shown.
 */
namespace VideoFrameDecoder {

/** The video's shown size, turn and length; nullopt when the file has no decodable video stream. */
[[nodiscard]] std::optional<VideoInfo> probe(const QString &path);

/**
 * The frame at `position` (a fraction of the length, 0.5 for the middle), upright and fitted in
 * `bound` as ImageDecoder::fitWithin does; null when nothing can be decoded.
 */
[[nodiscard]] QImage frame(const QString &path, const QSize &bound, double position = 0.5);

/** The clockwise turn in whole quarter turns for a display-matrix angle (FFmpeg's anticlockwise degrees). */
[[nodiscard]] int clockwiseQuarterTurn(double anticlockwiseDegrees);

} // namespace VideoFrameDecoder
} // namespace kivo
