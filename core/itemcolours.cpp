#include "core/itemcolours.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace kivo::ItemColours {

namespace {

double vividness(const QColor &colour)
{
    const double r = colour.redF();
    const double g = colour.greenF();
    const double b = colour.blueF();
    const double v = std::max({r, g, b});
    const double smallest = std::min({r, g, b});
    const double s = v > 0 ? (v - smallest) / v : 0;
    return (1 - std::abs(v - 0.6)) * s;
}

} // namespace

QList<QColor> decode(const QString &colorsJson)
{
    QList<QColor> palette;
    const QJsonDocument document = QJsonDocument::fromJson(colorsJson.toUtf8());
    for (const QJsonValue &value : document.array()) {
        const QColor colour = QColor::fromString(value.toString());
        if (colour.isValid())
            palette.append(colour);
    }
    return palette;
}

std::optional<QColor> accent(const QList<QColor> &palette)
{
    if (palette.isEmpty())
        return std::nullopt;
    std::optional<QColor> best;
    double bestScore = 0.05;
    for (const QColor &colour : palette) {
        const double score = vividness(colour);
        if (score > bestScore) {
            best = colour;
            bestScore = score;
        }
    }
    return best ? best : palette.first();
}

QColor tint(const QList<QColor> &colours)
{
    double r = 0;
    double g = 0;
    double b = 0;
    double total = 0;
    for (const QColor &colour : colours) {
        const double weight = 0.1 + vividness(colour);
        r += colour.redF() * weight;
        g += colour.greenF() * weight;
        b += colour.blueF() * weight;
        total += weight;
    }
    if (total <= 0)
        return {};
    return QColor::fromRgbF(float(r / total), float(g / total), float(b / total));
}

} // namespace kivo::ItemColours
