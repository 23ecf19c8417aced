#include "ingest/import/mediameasure.h"

#include <QBuffer>
#include <QFile>
#include <QImageIOHandler>
#include <QImageReader>

#include <cmath>
#include <memory>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

namespace kivo::MediaMeasure {

namespace {

struct FormatCloser {
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};

/** The clockwise turn a stream asks to be shown with, in degrees; 0 without a display matrix. */
double clockwiseRotation(const AVStream *stream)
{
    const uint8_t *matrix = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!matrix)
        return 0;
    const double anticlockwise = av_display_rotation_get(reinterpret_cast<const int32_t *>(matrix));
    return std::isnan(anticlockwise) ? 0 : -anticlockwise;
}

} // namespace

MediaMeasurement image(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(false);
    QSize size = reader.size();
    if (size.isEmpty()) {
        // Some formats only tell their size by decoding.
        const QImage decoded = reader.read();
        if (decoded.isNull())
            return {};
        size = decoded.size();
    }
    // EXIF orientations 5 to 8 are exactly the ones that turn a quarter.
    if (reader.transformation() & QImageIOHandler::TransformationRotate90)
        size.transpose();
    return {double(size.width()), double(size.height()), std::nullopt};
}

MediaMeasurement video(const QString &path)
{
    AVFormatContext *raw = nullptr;
    if (avformat_open_input(&raw, QFile::encodeName(path).constData(), nullptr, nullptr) < 0)
        return {};
    std::unique_ptr<AVFormatContext, FormatCloser> format(raw);
    if (avformat_find_stream_info(raw, nullptr) < 0)
        return {};

    MediaMeasurement measured;
    const int index = av_find_best_stream(raw, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index >= 0) {
        const AVStream *stream = raw->streams[index];
        const double w = stream->codecpar->width;
        const double h = stream->codecpar->height;
        if (w > 0 && h > 0) {
            // The display matrix applied to the stored size, as absolute values: a quarter turn swaps.
            const double radians = clockwiseRotation(stream) * M_PI / 180.0;
            const double c = std::cos(radians);
            const double s = std::sin(radians);
            measured.width = std::round(std::abs(w * c - h * s));
            measured.height = std::round(std::abs(w * s + h * c));
        }
    }
    if (raw->duration > 0 && raw->duration != AV_NOPTS_VALUE)
        measured.duration = double(raw->duration) / AV_TIME_BASE;
    return measured;
}

} // namespace kivo::MediaMeasure
