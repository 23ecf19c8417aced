#pragma once

#include <QByteArray>
#include <QSize>

#include <cstdint>

namespace kivo::demo {

/**
 * Gives each copy of a reused picture bytes of its own without touching a pixel: a comment segment
 * in a JPEG, a text chunk in a PNG, an unknown chunk in a WebP container. Every stored file of
 * the demo library thus has its own content hash, while the pool of painted pictures stays small.
 */
namespace FileStamp {

/** The bytes with `marker` placed where readers ignore it; unchanged if the format is unknown. */
[[nodiscard]] QByteArray stamped(const QByteArray &file, const QByteArray &marker, QSize size);

/** CRC-32 (as in PNG and zip) of the bytes, continuing from `crc`. */
[[nodiscard]] std::uint32_t crc32(const char *data, qsizetype length, std::uint32_t crc = 0);

} // namespace FileStamp
} // namespace kivo::demo
