#pragma once

#include "app/demo/demorandom.h"

#include <QSize>
#include <QString>
#include <QStringList>

namespace kivo::demo {

/** What was written: the picture size (videos) and the length in seconds. */
struct EncodedMedia {
    QSize size;
    double duration = 0;
};

/**
 * Real, short videos and sounds for the demo library, encoded with FFmpeg's libraries: animated
 * shapes over a gradient as H.264 in MP4 or QuickTime (MPEG-4 Part 2 where x264 is missing), and
 * little melodies as WAV, AIFF, FLAC, MP3, Ogg Vorbis, AAC or M4A.
 */
namespace MediaEncoder {

/** The video containers written: "mp4" and "mov". */
[[nodiscard]] const QStringList &videoExtensions();
/** The sound formats this FFmpeg can write, from the audio extensions Kivo knows. */
[[nodiscard]] const QStringList &audioExtensions();

/** Encodes a clip of `seconds` at `size` into `path`. Throws std::runtime_error. */
EncodedMedia encodeVideo(const QString &path, const QString &extension, QSize size, double seconds, DemoRandom &random);
/** Encodes a melody of `seconds` into `path`, in the format of `extension`. Throws std::runtime_error. */
EncodedMedia encodeAudio(const QString &path, const QString &extension, double seconds, DemoRandom &random);

} // namespace MediaEncoder
} // namespace kivo::demo
