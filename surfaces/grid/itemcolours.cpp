#include "surfaces/grid/itemcolours.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace kivo::ItemColours {

QList<QColor> decode(const QString &colorsJson)
{
    QList<QColor> colours;
    if (colorsJson.isEmpty())
        return colours;
    const QJsonArray array = QJsonDocument::fromJson(colorsJson.toUtf8()).array();
    for (const QJsonValue &value : array) {
        const QColor colour = QColor::fromString(value.toString());
        if (colour.isValid())
            colours.append(colour);
    }
    return colours;
}

std::optional<QColor> accent(const QList<QColor> &colours)
{
    if (colours.isEmpty())
        return std::nullopt;
    std::optional<QColor> best;
    double bestScore = 0.05;
    for (const QColor &colour : colours) {
        const double red = colour.redF(), green = colour.greenF(), blue = colour.blueF();
        const double value = std::max({red, green, blue});
        const double saturation = value == 0 ? 0 : (value - std::min({red, green, blue})) / value;
        const double score = (1 - std::abs(value - 0.6)) * saturation;
        if (score > bestScore) {
            best = colour;
            bestScore = score;
        }
    }
    return best ? best : std::optional(colours.first());
}

} // namespace kivo::ItemColours
