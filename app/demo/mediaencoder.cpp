#include "app/demo/mediaencoder.h"

#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

using namespace Qt::StringLiterals;

namespace kivo::demo::MediaEncoder {

namespace {

constexpr int sampleRate = 44100;

[[noreturn]] void fail(const char *what, int code = 0)
{
    char reason[AV_ERROR_MAX_STRING_SIZE] = {};
    if (code < 0)
        av_strerror(code, reason, sizeof reason);
    throw std::runtime_error(std::string(what) + (code < 0 ? std::string(": ") + reason : std::string()));
}

void quietLibraries()
{
    static const bool done = [] {
        av_log_set_level(AV_LOG_ERROR);
        return true;
    }();
    Q_UNUSED(done)
}

/** One output file with one stream: opens, takes frames, and finishes or cleans up. */
class Muxer
{
public:
    Muxer(const QString &path, const char *muxerName, const AVCodec *codec)
    {
        quietLibraries();
        const QByteArray file = path.toLocal8Bit();
        int rc = avformat_alloc_output_context2(&m_format, nullptr, muxerName, file.constData());
        if (rc < 0 || !m_format)
            fail("no muxer", rc);
        m_stream = avformat_new_stream(m_format, nullptr);
        m_codec = avcodec_alloc_context3(codec);
        m_packet = av_packet_alloc();
        if (!m_stream || !m_codec || !m_packet)
            fail("out of memory");
        if (m_format->oformat->flags & AVFMT_GLOBALHEADER)
            m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        m_path = file;
    }

    ~Muxer()
    {
        if (m_format && m_format->pb)
            avio_closep(&m_format->pb);
        avformat_free_context(m_format);
        avcodec_free_context(&m_codec);
        av_packet_free(&m_packet);
    }

    AVCodecContext *codec() const { return m_codec; }

    void open(AVDictionary **options)
    {
        int rc = avcodec_open2(m_codec, m_codec->codec, options);
        if (rc < 0)
            fail("cannot open the encoder", rc);
        rc = avcodec_parameters_from_context(m_stream->codecpar, m_codec);
        if (rc < 0)
            fail("cannot copy the codec parameters", rc);
        m_stream->time_base = m_codec->time_base;
        rc = avio_open(&m_format->pb, m_path.constData(), AVIO_FLAG_WRITE);
        if (rc < 0)
            fail("cannot open the output file", rc);
        rc = avformat_write_header(m_format, nullptr);
        if (rc < 0)
            fail("cannot write the header", rc);
    }

    /** Encodes a frame; null flushes the encoder. */
    void write(AVFrame *frame)
    {
        int rc = avcodec_send_frame(m_codec, frame);
        if (rc < 0)
            fail("cannot encode", rc);
        while ((rc = avcodec_receive_packet(m_codec, m_packet)) >= 0) {
            av_packet_rescale_ts(m_packet, m_codec->time_base, m_stream->time_base);
            m_packet->stream_index = m_stream->index;
            rc = av_interleaved_write_frame(m_format, m_packet);
            if (rc < 0)
                fail("cannot write a packet", rc);
        }
        if (rc != AVERROR(EAGAIN) && rc != AVERROR_EOF)
            fail("cannot encode", rc);
    }

    void finish()
    {
        write(nullptr);
        const int rc = av_write_trailer(m_format);
        if (rc < 0)
            fail("cannot write the trailer", rc);
    }

private:
    QByteArray m_path;
    AVFormatContext *m_format = nullptr;
    AVStream *m_stream = nullptr;
    AVCodecContext *m_codec = nullptr;
    AVPacket *m_packet = nullptr;
};

struct FrameDeleter {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using FramePointer = std::unique_ptr<AVFrame, FrameDeleter>;

void paintVideoFrame(QImage &image, int index, int frames, const QList<QColor> &colours, const QList<QPointF> &paths)
{
    const double t = double(index) / frames;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, image.width() * (0.5 + 0.5 * std::cos(t * 6.28)), image.height());
    ground.setColorAt(0, colours.at(0));
    ground.setColorAt(1, colours.at(1));
    painter.fillRect(image.rect(), ground);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < paths.size(); ++i) {
        const QPointF speed = paths.at(i);
        const double x = std::fmod(std::abs(speed.x()) * (t + i * 0.37), 1.0) * image.width();
        const double y = (0.5 + 0.35 * std::sin(6.28 * (t * speed.y() + i * 0.2))) * image.height();
        const double radius = image.height() * (0.06 + 0.03 * i);
        painter.setBrush(colours.at(2 + i % (colours.size() - 2)));
        if (i % 2)
            painter.drawEllipse(QPointF(x, y), radius, radius);
        else
            painter.drawRect(QRectF(x - radius, y - radius, 2 * radius, 2 * radius));
    }
}

/** Writes float samples into a frame in whatever sample format the encoder takes. */
void fillSamples(AVFrame *frame, const float *samples)
{
    const int count = frame->nb_samples;
    switch (AVSampleFormat(frame->format)) {
    case AV_SAMPLE_FMT_FLT:
    case AV_SAMPLE_FMT_FLTP:
        std::copy(samples, samples + count, reinterpret_cast<float *>(frame->data[0]));
        break;
    case AV_SAMPLE_FMT_S16:
    case AV_SAMPLE_FMT_S16P:
        for (int i = 0; i < count; ++i)
            reinterpret_cast<int16_t *>(frame->data[0])[i] = int16_t(std::lround(std::clamp(samples[i], -1.0f, 1.0f) * 32767));
        break;
    case AV_SAMPLE_FMT_S32:
    case AV_SAMPLE_FMT_S32P:
        for (int i = 0; i < count; ++i)
            reinterpret_cast<int32_t *>(frame->data[0])[i] = int32_t(std::llround(double(std::clamp(samples[i], -1.0f, 1.0f)) * 2147483647.0));
        break;
    default:
        fail("unsupported sample format");
    }
}

AVSampleFormat pickSampleFormat(const AVCodec *codec)
{
    if (!codec->sample_fmts)
        return AV_SAMPLE_FMT_S16;
    for (const AVSampleFormat wanted : {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S16P, AV_SAMPLE_FMT_S32,
                                        AV_SAMPLE_FMT_S32P}) {
        for (const AVSampleFormat *offered = codec->sample_fmts; *offered != AV_SAMPLE_FMT_NONE; ++offered) {
            if (*offered == wanted)
                return wanted;
        }
    }
    fail("the encoder takes no known sample format");
}

/** A melody of plucked notes on a pentatonic scale, with a soft echo. */
std::vector<float> melody(double seconds, DemoRandom &random)
{
    const int total = int(seconds * sampleRate);
    std::vector<float> samples(size_t(total), 0.0f);
    static const QList<int> scale{0, 2, 4, 7, 9, 12, 14, 16};
    const double root = 196.0 * std::pow(2.0, random.between(0, 7) / 12.0);
    const double beat = random.real(0.18, 0.4);
    for (double start = 0; start < seconds - 0.1; start += beat * random.between(1, 2)) {
        const double frequency = root * std::pow(2.0, random.pick(scale) / 12.0);
        const int from = int(start * sampleRate);
        const int length = std::min(total - from, int(sampleRate * beat * 3));
        for (int i = 0; i < length; ++i) {
            const double t = double(i) / sampleRate;
            const double envelope = std::exp(-t * 5.0) * std::min(1.0, t * 200.0);
            const double tone = std::sin(6.2832 * frequency * t) + 0.3 * std::sin(6.2832 * 2 * frequency * t);
            samples[size_t(from + i)] += float(0.22 * envelope * tone);
        }
    }
    const int echo = int(beat * 1.5 * sampleRate);
    for (int i = total - 1; i >= echo; --i)
        samples[size_t(i)] += 0.3f * samples[size_t(i - echo)];
    return samples;
}

struct AudioFormat {
    QString extension;
    const char *muxer;
    const char *encoder;
};

const QList<AudioFormat> &audioFormats()
{
    static const QList<AudioFormat> formats{
        {u"wav"_s, "wav", "pcm_s16le"}, {u"aiff"_s, "aiff", "pcm_s16be"}, {u"flac"_s, "flac", "flac"},
        {u"mp3"_s, "mp3", "libmp3lame"}, {u"ogg"_s, "ogg", "libvorbis"}, {u"m4a"_s, "ipod", "aac"},
        {u"aac"_s, "adts", "aac"},
    };
    return formats;
}

} // namespace

const QStringList &videoExtensions()
{
    static const QStringList extensions{u"mp4"_s, u"mov"_s};
    return extensions;
}

const QStringList &audioExtensions()
{
    static const QStringList extensions = [] {
        QStringList available;
        for (const AudioFormat &format : audioFormats()) {
            if (avcodec_find_encoder_by_name(format.encoder) && av_guess_format(format.muxer, nullptr, nullptr))
                available.append(format.extension);
        }
        return available;
    }();
    return extensions;
}

EncodedMedia encodeVideo(const QString &path, const QString &extension, QSize size, double seconds, DemoRandom &random)
{
    const AVCodec *codec = avcodec_find_encoder_by_name("libx264");
    if (!codec)
        codec = avcodec_find_encoder(AV_CODEC_ID_MPEG4);
    if (!codec)
        fail("no video encoder");
    // Even sizes for 4:2:0 chroma.
    size = QSize(size.width() & ~1, size.height() & ~1);
    const int fps = 24;
    Muxer muxer(path, extension == u"mov" ? "mov" : "mp4", codec);
    AVCodecContext *context = muxer.codec();
    context->width = size.width();
    context->height = size.height();
    context->time_base = AVRational{1, fps};
    context->framerate = AVRational{fps, 1};
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->gop_size = fps * 2;
    context->thread_count = 1; // the demo encodes several clips side by side
    AVDictionary *options = nullptr;
    if (QByteArray(codec->name) == "libx264") {
        av_dict_set(&options, "preset", "veryfast", 0);
        av_dict_set(&options, "crf", "26", 0);
    } else {
        context->bit_rate = 800000;
    }
    muxer.open(&options);
    av_dict_free(&options);

    FramePointer frame(av_frame_alloc());
    frame->format = context->pix_fmt;
    frame->width = size.width();
    frame->height = size.height();
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        fail("cannot allocate a frame");
    SwsContext *converter = sws_getContext(size.width(), size.height(), AV_PIX_FMT_BGRA, size.width(), size.height(),
                                           AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!converter)
        fail("no pixel converter");
    QList<QColor> colours;
    for (int i = 0; i < 5; ++i)
        colours.append(QColor::fromHsv(random.between(0, 359), random.between(80, 230), random.between(90, 250)));
    QList<QPointF> paths;
    for (int i = random.between(2, 5); i > 0; --i)
        paths.append(QPointF(random.real(0.5, 2.0), random.real(0.5, 2.0)));

    const int frames = std::max(1, int(seconds * fps));
    QImage image(size, QImage::Format_RGB32); // BGRA in memory on little-endian machines
    try {
        for (int index = 0; index < frames; ++index) {
            paintVideoFrame(image, index, frames, colours, paths);
            if (av_frame_make_writable(frame.get()) < 0)
                fail("frame not writable");
            const uint8_t *source[] = {image.constBits()};
            const int stride[] = {int(image.bytesPerLine())};
            sws_scale(converter, source, stride, 0, size.height(), frame->data, frame->linesize);
            frame->pts = index;
            muxer.write(frame.get());
        }
        muxer.finish();
    } catch (...) {
        sws_freeContext(converter);
        throw;
    }
    sws_freeContext(converter);
    return {size, double(frames) / fps};
}

EncodedMedia encodeAudio(const QString &path, const QString &extension, double seconds, DemoRandom &random)
{
    const AudioFormat *format = nullptr;
    for (const AudioFormat &candidate : audioFormats()) {
        if (candidate.extension == extension)
            format = &candidate;
    }
    const AVCodec *codec = format ? avcodec_find_encoder_by_name(format->encoder) : nullptr;
    if (!codec)
        fail("no encoder for this sound format");
    Muxer muxer(path, format->muxer, codec);
    AVCodecContext *context = muxer.codec();
    context->sample_rate = sampleRate;
    context->sample_fmt = pickSampleFormat(codec);
    const AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    av_channel_layout_copy(&context->ch_layout, &mono);
    context->time_base = AVRational{1, sampleRate};
    context->bit_rate = 128000;
    context->thread_count = 1;
    muxer.open(nullptr);

    const std::vector<float> samples = melody(seconds, random);
    const int frameSize = context->frame_size > 0 ? context->frame_size : 1024;
    FramePointer frame(av_frame_alloc());
    for (size_t at = 0; at < samples.size(); at += size_t(frameSize)) {
        const int count = int(std::min(samples.size() - at, size_t(frameSize)));
        // A short last frame only where the encoder allows one; otherwise it is padded with silence.
        const bool variable = context->codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE || context->frame_size == 0;
        frame->nb_samples = variable ? count : frameSize;
        frame->format = context->sample_fmt;
        av_channel_layout_copy(&frame->ch_layout, &context->ch_layout);
        frame->sample_rate = sampleRate;
        if (av_frame_get_buffer(frame.get(), 0) < 0)
            fail("cannot allocate samples");
        std::vector<float> block(size_t(frame->nb_samples), 0.0f);
        std::copy(samples.begin() + qsizetype(at), samples.begin() + qsizetype(at) + count, block.begin());
        fillSamples(frame.get(), block.data());
        frame->pts = qint64(at);
        muxer.write(frame.get());
        av_frame_unref(frame.get());
    }
    muxer.finish();
    return {QSize(), double(samples.size()) / sampleRate};
}

} // namespace kivo::demo::MediaEncoder
