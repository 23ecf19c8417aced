#include "core/media/videoframedecoder.h"

#include "core/media/imagedecoder.h"
#include "core/media/medialog.h"

#include <QFile>
#include <QTransform>

#include <cmath>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace kivo::VideoFrameDecoder {

namespace {

// Frames decoded past the seek point before giving up on reaching the target (broken timestamps).
constexpr int maximumFramesAfterSeek = 600;

struct FormatCloser {
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};
struct CodecFreer {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
struct FrameFreer {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct PacketFreer {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct ScalerFreer {
    void operator()(SwsContext *context) const { sws_freeContext(context); }
};

using FormatPointer = std::unique_ptr<AVFormatContext, FormatCloser>;
using CodecPointer = std::unique_ptr<AVCodecContext, CodecFreer>;
using FramePointer = std::unique_ptr<AVFrame, FrameFreer>;
using PacketPointer = std::unique_ptr<AVPacket, PacketFreer>;
using ScalerPointer = std::unique_ptr<SwsContext, ScalerFreer>;

/** An opened file with its best video stream and a decoder ready for it. */
struct OpenedVideo {
    FormatPointer format;
    CodecPointer codec;
    AVStream *stream = nullptr;
    int streamIndex = -1;
};

std::optional<OpenedVideo> openVideo(const QString &path)
{
    AVFormatContext *rawFormat = nullptr;
    if (avformat_open_input(&rawFormat, QFile::encodeName(path).constData(), nullptr, nullptr) < 0)
        return std::nullopt;
    OpenedVideo video;
    video.format.reset(rawFormat);
    if (avformat_find_stream_info(rawFormat, nullptr) < 0)
        return std::nullopt;
    const AVCodec *decoder = nullptr;
    video.streamIndex = av_find_best_stream(rawFormat, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (video.streamIndex < 0 || !decoder)
        return std::nullopt;
    video.stream = rawFormat->streams[video.streamIndex];
    video.codec.reset(avcodec_alloc_context3(decoder));
    if (!video.codec || avcodec_parameters_to_context(video.codec.get(), video.stream->codecpar) < 0)
        return std::nullopt;
    // Thumbnails run many at a time on a pool; one decoding thread each keeps the machine responsive.
    video.codec->thread_count = 1;
    if (avcodec_open2(video.codec.get(), decoder, nullptr) < 0)
        return std::nullopt;
    return video;
}

int streamRotation(const AVStream *stream)
{
    const uint8_t *matrix = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!matrix)
        return 0;
    const double angle = av_display_rotation_get(reinterpret_cast<const int32_t *>(matrix));
    return std::isnan(angle) ? 0 : clockwiseQuarterTurn(angle);
}

/** Stored picture size with non-square pixels widened or narrowed to square ones. */
QSize squarePixelSize(const AVStream *stream, const AVCodecContext *codec)
{
    QSize size(codec->width, codec->height);
    AVRational aspect = stream->sample_aspect_ratio.num > 0 ? stream->sample_aspect_ratio : codec->sample_aspect_ratio;
    if (aspect.num > 0 && aspect.den > 0 && aspect.num != aspect.den)
        size.setWidth(std::max(1, int(std::lround(size.width() * av_q2d(aspect)))));
    return size;
}

double durationSeconds(const AVFormatContext *format, const AVStream *stream)
{
    if (stream->duration > 0 && stream->duration != AV_NOPTS_VALUE)
        return double(stream->duration) * av_q2d(stream->time_base);
    if (format->duration > 0)
        return double(format->duration) / AV_TIME_BASE;
    return 0;
}

/** Decodes until a frame at or after `target` (stream time base); the last one seen otherwise. */
FramePointer decodeUpTo(OpenedVideo &video, int64_t target)
{
    FramePointer frame(av_frame_alloc());
    FramePointer kept;
    PacketPointer packet(av_packet_alloc());
    int decoded = 0;
    bool draining = false;
    while (decoded < maximumFramesAfterSeek) {
        if (!draining) {
            const int read = av_read_frame(video.format.get(), packet.get());
            if (read < 0) {
                draining = true;
                avcodec_send_packet(video.codec.get(), nullptr);
            } else {
                const bool ours = packet->stream_index == video.streamIndex;
                if (ours)
                    avcodec_send_packet(video.codec.get(), packet.get());
                av_packet_unref(packet.get());
                if (!ours)
                    continue;
            }
        }
        int received = 0;
        while ((received = avcodec_receive_frame(video.codec.get(), frame.get())) == 0) {
            ++decoded;
            const int64_t stamp = frame->best_effort_timestamp;
            kept.reset(av_frame_clone(frame.get()));
            av_frame_unref(frame.get());
            if (stamp == AV_NOPTS_VALUE || stamp >= target)
                return kept;
        }
        if (draining || received == AVERROR_EOF)
            break;
    }
    return kept;
}

QImage toImage(const AVFrame *frame, const QSize &target)
{
    ScalerPointer scaler(sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format), target.width(),
        target.height(), AV_PIX_FMT_RGB24, SWS_AREA, nullptr, nullptr, nullptr));
    if (!scaler)
        return {};
    QImage image(target, QImage::Format_RGB888);
    uint8_t *planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    int strides[4] = {int(image.bytesPerLine()), 0, 0, 0};
    sws_scale(scaler.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    return image;
}

} // namespace

int clockwiseQuarterTurn(double anticlockwiseDegrees)
{
    const int quarter = int(std::lround(-anticlockwiseDegrees / 90.0));
    return ((quarter % 4) + 4) % 4 * 90;
}

std::optional<VideoInfo> probe(const QString &path)
{
    auto video = openVideo(path);
    if (!video)
        return std::nullopt;
    VideoInfo info;
    info.rotation = streamRotation(video->stream);
    const QSize stored = squarePixelSize(video->stream, video->codec.get());
    info.displaySize = info.rotation % 180 ? stored.transposed() : stored;
    info.duration = durationSeconds(video->format.get(), video->stream);
    return info;
}

QImage frame(const QString &path, const QSize &bound, double position)
{
    auto video = openVideo(path);
    if (!video)
        return {};
    AVStream *stream = video->stream;
    const double seconds = durationSeconds(video->format.get(), stream) * std::clamp(position, 0.0, 1.0);
    const int64_t start = stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time;
    const int64_t target = start + int64_t(seconds / av_q2d(stream->time_base));
    if (seconds > 0) {
        // Backward lands on the key frame before the target; decoding then walks forward to it.
        if (av_seek_frame(video->format.get(), video->streamIndex, target, AVSEEK_FLAG_BACKWARD) < 0)
            qCDebug(lcMedia) << "seek failed, decoding from the start" << path;
        avcodec_flush_buffers(video->codec.get());
    }
    const FramePointer decoded = decodeUpTo(*video, target);
    if (!decoded || decoded->width <= 0 || decoded->height <= 0)
        return {};

    const int rotation = streamRotation(stream);
    const QSize stored = squarePixelSize(stream, video->codec.get());
    const QSize upright = rotation % 180 ? stored.transposed() : stored;
    const QSize fitted = ImageDecoder::fitWithin(upright, bound);
    QImage image = toImage(decoded.get(), rotation % 180 ? fitted.transposed() : fitted);
    if (image.isNull() || rotation == 0)
        return image;
    return image.transformed(QTransform().rotate(rotation));
}

} // namespace kivo::VideoFrameDecoder
