#include "app/demo/filestamp.h"

#include <QtEndian>

#include <array>

namespace kivo::demo::FileStamp {

namespace {

const std::array<std::uint32_t, 256> &crcTable()
{
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> values{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320U ^ (c >> 1) : c >> 1;
            values[n] = c;
        }
        return values;
    }();
    return table;
}

QByteArray bigEndian32(std::uint32_t value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray littleEndian32(std::uint32_t value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray littleEndian24(std::uint32_t value)
{
    return littleEndian32(value).left(3);
}

// After the start of image and the JFIF header, where a comment is welcome.
QByteArray stampJpeg(const QByteArray &file, const QByteArray &marker)
{
    qsizetype at = 2;
    if (file.size() > 4 && uchar(file.at(2)) == 0xFF && uchar(file.at(3)) == 0xE0)
        at = 4 + qsizetype(qFromBigEndian<quint16>(file.constData() + 4));
    QByteArray segment("\xFF\xFE", 2);
    const quint16 length = quint16(marker.size() + 2);
    segment.append(char(length >> 8)).append(char(length & 0xFF)).append(marker);
    QByteArray result = file;
    result.insert(at, segment);
    return result;
}

// A text chunk just before the end chunk (the last twelve bytes).
QByteArray stampPng(const QByteArray &file, const QByteArray &marker)
{
    const QByteArray data = QByteArray("Comment", 7) + '\0' + marker;
    const QByteArray typeAndData = QByteArray("tEXt") + data;
    QByteArray chunk = bigEndian32(std::uint32_t(data.size())) + typeAndData
        + bigEndian32(crc32(typeAndData.constData(), typeAndData.size()));
    QByteArray result = file;
    result.insert(file.size() - 12, chunk);
    return result;
}

// A simple (single-image) WebP becomes the extended form, whose readers skip unknown chunks.
QByteArray stampWebp(const QByteArray &file, const QByteArray &marker, QSize size)
{
    QByteArray body = file.mid(12);
    if (!body.startsWith("VP8X")) {
        // A lossless bitstream says in its header whether it uses alpha (bit 28 after the signature);
        // the extended header must say the same, or readers decode a different pixel format.
        bool alpha = false;
        if (body.startsWith("VP8L") && body.size() >= 13)
            alpha = (qFromLittleEndian<quint32>(body.constData() + 9) >> 28) & 1;
        QByteArray header = QByteArray("VP8X") + littleEndian32(10);
        header.append(char(alpha ? 0x10 : 0x00)).append(3, '\0');
        header.append(littleEndian24(std::uint32_t(size.width() - 1))).append(littleEndian24(std::uint32_t(size.height() - 1)));
        body.prepend(header);
    }
    QByteArray chunk = QByteArray("KIVO") + littleEndian32(std::uint32_t(marker.size())) + marker;
    if (marker.size() % 2)
        chunk.append('\0');
    body.append(chunk);
    return QByteArray("RIFF") + littleEndian32(std::uint32_t(body.size() + 4)) + QByteArray("WEBP") + body;
}

} // namespace

std::uint32_t crc32(const char *data, qsizetype length, std::uint32_t crc)
{
    const auto &table = crcTable();
    crc = ~crc;
    for (qsizetype i = 0; i < length; ++i)
        crc = table[(crc ^ uchar(data[i])) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

QByteArray stamped(const QByteArray &file, const QByteArray &marker, QSize size)
{
    if (file.startsWith("\xFF\xD8"))
        return stampJpeg(file, marker);
    if (file.startsWith("\x89PNG\r\n\x1A\n") && file.size() > 20)
        return stampPng(file, marker);
    if (file.startsWith("RIFF") && file.mid(8, 4) == "WEBP")
        return stampWebp(file, marker, size);
    return file;
}

} // namespace kivo::demo::FileStamp
