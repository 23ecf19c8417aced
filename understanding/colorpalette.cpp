#include "understanding/colorpalette.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace kivo::ColorPalette {

namespace {

/** Count and channel sums of one 12-bit bin. */
struct Bin {
    int count = 0;
    int red = 0;
    int green = 0;
    int blue = 0;
};

constexpr int binCount = 4096;

// Premultiplied RGBA bytes in the order red, green, blue, alpha, 256 bytes a row.
QImage sampledPixels(const QImage &image)
{
    QImage source = image;
    // The smooth scaler averages areas only for these layouts; others are converted first anyway.
    if (source.format() != QImage::Format_ARGB32_Premultiplied && source.format() != QImage::Format_RGB32)
        source = source.convertToFormat(
            source.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    QImage scaled = source.scaled(sampleSide, sampleSide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return scaled.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
}

QString hexColour(int red, int green, int blue)
{
    return QString::asprintf("#%02X%02X%02X", red, green, blue);
}

} // namespace

QStringList extractPalette(const QImage &image, int maxColours)
{
    if (image.isNull() || maxColours <= 0)
        return {};
    const QImage pixels = sampledPixels(image);
    if (pixels.isNull() || pixels.width() != sampleSide || pixels.height() != sampleSide)
        return {};

    std::array<Bin, binCount> bins{};
    for (int y = 0; y < sampleSide; ++y) {
        const uchar *p = pixels.constScanLine(y);
        for (int x = 0; x < sampleSide; ++x, p += 4) {
            if (p[3] < minimumAlpha)
                continue;
            const int key = ((p[0] >> 4) << 8) | (p[1] & 0xF0) | (p[2] >> 4);
            Bin &bin = bins[key];
            ++bin.count;
            bin.red += p[0];
            bin.green += p[1];
            bin.blue += p[2];
        }
    }

    std::vector<int> order;
    order.reserve(binCount);
    for (int key = 0; key < binCount; ++key) {
        if (bins[key].count > 0)
            order.push_back(key);
    }
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return bins[a].count > bins[b].count; });

    QStringList palette;
    for (auto it = order.begin(); it != order.end() && palette.size() < maxColours; ++it) {
        const Bin &bin = bins[*it];
        palette.append(hexColour(bin.red / bin.count, bin.green / bin.count, bin.blue / bin.count));
    }
    return palette;
}

std::optional<QString> encodePalette(const QStringList &palette)
{
    if (palette.isEmpty())
        return std::nullopt;
    return QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(palette)).toJson(QJsonDocument::Compact));
}

QStringList decodePalette(const QString &colorsText)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(colorsText.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return {};
    QStringList palette;
    for (const QJsonValue &value : document.array()) {
        // One entry that is not a string spoils the whole array, as a typed decode would.
        if (!value.isString())
            return {};
        palette.append(value.toString());
    }
    return palette;
}

QStringList decodePalette(const std::optional<QString> &colorsText)
{
    return colorsText ? decodePalette(*colorsText) : QStringList{};
}

} // namespace kivo::ColorPalette
