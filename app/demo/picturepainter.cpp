#include "app/demo/picturepainter.h"

#include <QBuffer>
#include <QImageWriter>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kivo::demo::PicturePainter {

namespace {

// Width over height; tall, square, wide and panoramic, weighted to look like a real library.
const QList<double> aspects{9.0 / 16, 2.0 / 3, 4.0 / 5, 1.0, 4.0 / 3, 3.0 / 2, 16.0 / 9, 3.0, 4.0};
const QList<double> aspectWeights{10, 16, 10, 16, 12, 14, 12, 5, 3};

const QList<QStringList> curatedPalettes{
    {u"#264653"_s, u"#2A9D8F"_s, u"#E9C46A"_s, u"#F4A261"_s, u"#E76F51"_s},
    {u"#0B132B"_s, u"#1C2541"_s, u"#3A506B"_s, u"#5BC0BE"_s, u"#F5F5F5"_s},
    {u"#FFBE0B"_s, u"#FB5607"_s, u"#FF006E"_s, u"#8338EC"_s, u"#3A86FF"_s},
    {u"#F1FAEE"_s, u"#A8DADC"_s, u"#457B9D"_s, u"#1D3557"_s, u"#E63946"_s},
    {u"#2B2D42"_s, u"#8D99AE"_s, u"#EDF2F4"_s, u"#EF233C"_s, u"#D90429"_s},
    {u"#FEFAE0"_s, u"#DDA15E"_s, u"#BC6C25"_s, u"#606C38"_s, u"#283618"_s},
    {u"#FFCDB2"_s, u"#FFB4A2"_s, u"#E5989B"_s, u"#B5838D"_s, u"#6D6875"_s},
    {u"#000000"_s, u"#14213D"_s, u"#FCA311"_s, u"#E5E5E5"_s, u"#FFFFFF"_s},
    {u"#03045E"_s, u"#0077B6"_s, u"#00B4D8"_s, u"#90E0EF"_s, u"#CAF0F8"_s},
    {u"#F72585"_s, u"#7209B7"_s, u"#3A0CA3"_s, u"#4361EE"_s, u"#4CC9F0"_s},
    {u"#CCD5AE"_s, u"#E9EDC9"_s, u"#FEFAE0"_s, u"#FAEDCD"_s, u"#D4A373"_s},
    {u"#006D77"_s, u"#83C5BE"_s, u"#EDF6F9"_s, u"#FFDDD2"_s, u"#E29578"_s},
};

QSize pictureSize(DemoRandom &random, PictureStyle style, bool light)
{
    double aspect = aspects.at(random.weighted(aspectWeights));
    if (style == PictureStyle::screenshot)
        aspect = random.pick(QList<double>{16.0 / 10, 16.0 / 9, 4.0 / 3, 3.0 / 2});
    else if (style == PictureStyle::poster)
        aspect = random.pick(QList<double>{2.0 / 3, 3.0 / 4, 1.0 / std::sqrt(2.0)});
    const int longest = light ? random.between(96, 360) : random.between(300, 1600);
    if (aspect >= 1)
        return {longest, std::max(32, int(std::lround(longest / aspect)))};
    return {std::max(32, int(std::lround(longest * aspect))), longest};
}

/** Smooth value noise in [0, 1] over a grid that wraps; several octaves for a natural look. */
class ValueNoise
{
public:
    explicit ValueNoise(DemoRandom &random)
    {
        for (float &value : m_lattice)
            value = float(random.real());
    }

    double at(double x, double y, int octaves) const
    {
        double sum = 0, amplitude = 0.5, norm = 0;
        for (int o = 0; o < octaves; ++o) {
            sum += amplitude * smooth(x, y);
            norm += amplitude;
            x *= 2.03;
            y *= 2.03;
            amplitude *= 0.5;
        }
        return sum / norm;
    }

private:
    double lattice(int x, int y) const { return m_lattice[size_t((x & 63) + (y & 63) * 64)]; }
    double smooth(double x, double y) const
    {
        const int x0 = int(std::floor(x)), y0 = int(std::floor(y));
        const double fx = x - x0, fy = y - y0;
        const double sx = fx * fx * (3 - 2 * fx), sy = fy * fy * (3 - 2 * fy);
        const double top = lattice(x0, y0) + sx * (lattice(x0 + 1, y0) - lattice(x0, y0));
        const double bottom = lattice(x0, y0 + 1) + sx * (lattice(x0 + 1, y0 + 1) - lattice(x0, y0 + 1));
        return top + sy * (bottom - top);
    }
    float m_lattice[64 * 64];
};

void addGrain(QImage &image, DemoRandom &random, int strength)
{
    QImage tile(128, 128, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < tile.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(tile.scanLine(y));
        for (int x = 0; x < tile.width(); ++x) {
            const int alpha = random.between(0, strength);
            const int grey = random.chance(0.5) ? 255 : 0;
            line[x] = qPremultiply(qRgba(grey, grey, grey, alpha));
        }
    }
    QPainter painter(&image);
    painter.fillRect(image.rect(), QBrush(tile));
}

void vignette(QPainter &painter, QSize size, double strength)
{
    QRadialGradient shade(QPointF(size.width() / 2.0, size.height() / 2.0), std::hypot(size.width(), size.height()) / 1.6);
    shade.setColorAt(0.5, QColor(0, 0, 0, 0));
    shade.setColorAt(1.0, QColor(0, 0, 0, int(255 * strength)));
    painter.fillRect(QRect(QPoint(), size), shade);
}

void paintLandscape(QImage &image, DemoRandom &random, const QList<QColor> &colours)
{
    const QSize size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dusk = random.chance(0.4);
    QLinearGradient sky(0, 0, 0, size.height());
    const QColor high = dusk ? QColor::fromHsv(random.between(220, 280), 140, 90) : QColor::fromHsv(random.between(195, 215), 120, 235);
    const QColor low = dusk ? QColor::fromHsv(random.between(10, 40), 170, 250) : QColor::fromHsv(random.between(190, 210), 40, 250);
    sky.setColorAt(0, high);
    sky.setColorAt(0.75, low);
    painter.fillRect(image.rect(), sky);

    const QPointF sun(size.width() * random.real(0.15, 0.85), size.height() * random.real(0.15, 0.45));
    const double radius = std::min(size.width(), size.height()) * random.real(0.05, 0.12);
    QRadialGradient glow(sun, radius * 4);
    glow.setColorAt(0, QColor(255, 245, 220, 200));
    glow.setColorAt(1, QColor(255, 245, 220, 0));
    painter.fillRect(image.rect(), glow);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 250, 235));
    painter.drawEllipse(sun, radius, radius);

    const ValueNoise noise(random);
    const int layers = random.between(3, 5);
    for (int layer = 0; layer < layers; ++layer) {
        const double depth = double(layer + 1) / layers; // 1 is nearest
        const double base = size.height() * (0.45 + 0.45 * depth);
        const double roughness = size.height() * (0.25 - 0.12 * depth);
        QPainterPath ridge(QPointF(0, size.height()));
        const int steps = 96;
        for (int i = 0; i <= steps; ++i) {
            const double x = size.width() * double(i) / steps;
            const double n = noise.at(double(i) / steps * 3.0 + layer * 7.1, layer * 3.3, 5);
            ridge.lineTo(x, base - roughness * (n * 1.6 - 0.3));
        }
        ridge.lineTo(size.width(), size.height());
        ridge.closeSubpath();
        QColor colour = colours.at(layer % colours.size());
        colour = QColor::fromHsv(colour.hsvHue(), std::min(255, colour.hsvSaturation()), int(40 + 170 * (1 - depth)));
        QColor haze = low;
        const double mix = 0.6 * (1 - depth);
        painter.setBrush(QColor::fromRgbF(colour.redF() * (1 - mix) + haze.redF() * mix, colour.greenF() * (1 - mix) + haze.greenF() * mix,
                                          colour.blueF() * (1 - mix) + haze.blueF() * mix));
        painter.drawPath(ridge);
    }
    vignette(painter, size, 0.35);
    painter.end();
    addGrain(image, random, 18);
}

void paintBokeh(QImage &image, DemoRandom &random, const QList<QColor> &colours)
{
    const QSize size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(image.rect(), colours.constFirst().darker(300));
    const int lights = random.between(25, 70);
    for (int i = 0; i < lights; ++i) {
        const QPointF centre(random.real() * size.width(), random.real() * size.height());
        const double radius = std::max(size.width(), size.height()) * random.real(0.02, 0.12);
        QColor colour = colours.at(random.between(0, int(colours.size()) - 1)).lighter(130);
        QRadialGradient disc(centre, radius);
        colour.setAlpha(random.between(40, 140));
        disc.setColorAt(0, colour);
        disc.setColorAt(0.85, colour);
        colour.setAlpha(0);
        disc.setColorAt(1, colour);
        painter.setPen(Qt::NoPen);
        painter.setBrush(disc);
        painter.drawEllipse(centre, radius, radius);
    }
    vignette(painter, size, 0.5);
    painter.end();
    addGrain(image, random, 22);
}

void paintClouds(QImage &image, DemoRandom &random, const QList<QColor> &colours)
{
    // Noise painted small and scaled up smoothly: the look of marble, smoke or clouds, cheaply.
    const QSize small(std::max(16, image.width() / 12), std::max(16, image.height() / 12));
    QImage field(small, QImage::Format_RGB32);
    const ValueNoise noise(random);
    const double scale = random.real(2.0, 6.0) / std::max(small.width(), small.height());
    for (int y = 0; y < small.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(field.scanLine(y));
        for (int x = 0; x < small.width(); ++x) {
            const double n = std::clamp(noise.at(x * scale, y * scale, 5) * 1.4 - 0.2, 0.0, 0.999);
            const double position = n * double(colours.size() - 1);
            const int index = int(position);
            const double t = position - index;
            const QColor a = colours.at(index), b = colours.at(std::min(index + 1, int(colours.size()) - 1));
            line[x] = qRgb(int(a.red() + (b.red() - a.red()) * t), int(a.green() + (b.green() - a.green()) * t),
                           int(a.blue() + (b.blue() - a.blue()) * t));
        }
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(image.rect(), field);
    painter.end();
    addGrain(image, random, 14);
}

void paintGradient(QImage &image, DemoRandom &random, const QList<QColor> &colours)
{
    const QSize size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QGradient *gradient = nullptr;
    QLinearGradient linear(0, 0, size.width() * random.real(), size.height());
    QRadialGradient radial(QPointF(size.width() * random.real(), size.height() * random.real()), std::max(size.width(), size.height()));
    QConicalGradient conical(QPointF(size.width() / 2.0, size.height() / 2.0), random.real(0, 360));
    switch (random.between(0, 2)) {
    case 0:
        gradient = &linear;
        break;
    case 1:
        gradient = &radial;
        break;
    default:
        gradient = &conical;
        break;
    }
    const int stops = random.between(2, 4);
    for (int i = 0; i < stops; ++i)
        gradient->setColorAt(double(i) / (stops - 1), colours.at((i * 2 + 1) % colours.size()));
    if (gradient == &conical)
        gradient->setColorAt(1, colours.at(1 % colours.size()));
    painter.fillRect(image.rect(), *gradient);
    // Soft blobs of colour on top, the mesh-gradient look.
    for (int i = random.between(0, 4); i > 0; --i) {
        const QPointF centre(random.real() * size.width(), random.real() * size.height());
        const double radius = std::max(size.width(), size.height()) * random.real(0.2, 0.6);
        QColor colour = random.pick(colours);
        QRadialGradient blob(centre, radius);
        colour.setAlpha(150);
        blob.setColorAt(0, colour);
        colour.setAlpha(0);
        blob.setColorAt(1, colour);
        painter.fillRect(image.rect(), blob);
    }
}

void paintShapes(QImage &image, DemoRandom &random, const QList<QColor> &colours)
{
    const QSize size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(image.rect(), colours.constLast());
    const double unit = std::min(size.width(), size.height());
    const int count = random.between(4, 22);
    for (int i = 0; i < count; ++i) {
        const QColor colour = colours.at(random.between(0, int(colours.size()) - 2));
        const QPointF at(random.real() * size.width(), random.real() * size.height());
        const double extent = unit * random.real(0.08, 0.5);
        if (random.chance(0.25)) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(colour, unit * random.real(0.01, 0.04), Qt::SolidLine, Qt::RoundCap));
        } else {
            painter.setPen(Qt::NoPen);
            painter.setBrush(colour);
        }
        switch (random.between(0, 4)) {
        case 0:
            painter.drawEllipse(at, extent / 2, extent / 2);
            break;
        case 1:
            painter.drawRect(QRectF(at, QSizeF(extent, extent * random.real(0.3, 1.5))));
            break;
        case 2: {
            QPolygonF triangle;
            triangle << at << at + QPointF(extent, 0) << at + QPointF(extent / 2, -extent * 0.87);
            painter.drawPolygon(triangle);
            break;
        }
        case 3:
            painter.drawPie(QRectF(at, QSizeF(extent, extent)), random.between(0, 3) * 90 * 16, 180 * 16);
            break;
        default:
            painter.drawRoundedRect(QRectF(at, QSizeF(extent * 1.4, extent / 2)), extent / 4, extent / 4);
            break;
        }
    }
}

void paintFlat(QImage &image, DemoRandom &random, const QList<QColor> &colours)
{
    const QColor colour = QColor::fromHsv(random.between(0, 359), random.between(170, 255), random.between(170, 255));
    image.fill(colour);
    if (random.chance(0.5)) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(random.chance(0.5) ? colour.darker(130) : QColor(Qt::white));
        const double extent = std::min(image.width(), image.height()) * random.real(0.1, 0.35);
        painter.drawEllipse(QPointF(image.width() * random.real(0.2, 0.8), image.height() * random.real(0.2, 0.8)), extent, extent);
    }
    Q_UNUSED(colours)
}

QByteArray encode(const QImage &image, const QString &extension, DemoRandom &random)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, extension == u"jpg" ? "jpeg" : extension.toLatin1());
    if (extension == u"jpg")
        writer.setQuality(random.between(78, 92));
    else if (extension == u"png")
        writer.setQuality(60); // zlib level 3: most of the size for a third of the time
    else if (extension == u"webp")
        writer.setQuality(random.between(70, 88));
    writer.write(image);
    return bytes;
}

QString extensionFor(PictureStyle style, DemoRandom &random)
{
    switch (style) {
    case PictureStyle::screenshot:
    case PictureStyle::flat:
        return random.chance(0.85) ? u"png"_s : u"webp"_s;
    case PictureStyle::photo:
        return random.chance(0.8) ? u"jpg"_s : u"webp"_s;
    default: {
        const int choice = random.weighted({55, 25, 20});
        return choice == 0 ? u"jpg"_s : choice == 1 ? u"png"_s : u"webp"_s;
    }
    }
}

} // namespace

QList<QColor> palette(DemoRandom &random)
{
    if (random.chance(0.6)) {
        QList<QColor> colours;
        for (const QString &hex : random.pick(curatedPalettes))
            colours.append(QColor(hex));
        return colours;
    }
    // A harmony around one hue: analogous neighbours and a complement.
    const int hue = random.between(0, 359);
    QList<QColor> colours;
    for (const int offset : {0, 25, -25, 180, 155})
        colours.append(QColor::fromHsv((hue + offset + 360) % 360, random.between(90, 230), random.between(90, 250)));
    return colours;
}

QImage paint(PictureStyle style, QSize size, DemoRandom &random, QString *text)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    const QList<QColor> colours = palette(random);
    switch (style) {
    case PictureStyle::photo: {
        const int kind = random.weighted({5, 2, 3});
        if (kind == 0)
            paintLandscape(image, random, colours);
        else if (kind == 1)
            paintBokeh(image, random, colours);
        else
            paintClouds(image, random, colours);
        break;
    }
    case PictureStyle::gradient:
        paintGradient(image, random, colours);
        break;
    case PictureStyle::shapes:
        paintShapes(image, random, colours);
        break;
    case PictureStyle::flat:
        paintFlat(image, random, colours);
        break;
    case PictureStyle::sign:
        TextPictures::paintSign(image, random, colours, text);
        break;
    case PictureStyle::screenshot:
        TextPictures::paintScreenshot(image, random, text);
        break;
    case PictureStyle::poster:
        TextPictures::paintPoster(image, random, colours, text);
        break;
    }
    return image;
}

QStringList dominantColours(const QImage &image)
{
    const QImage small = image.scaled(48, 48, Qt::IgnoreAspectRatio, Qt::FastTransformation).convertToFormat(QImage::Format_RGB32);
    struct Bucket {
        int count = 0;
        qint64 red = 0, green = 0, blue = 0;
    };
    QList<Bucket> buckets(512);
    for (int y = 0; y < small.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(small.constScanLine(y));
        for (int x = 0; x < small.width(); ++x) {
            const QRgb pixel = line[x];
            Bucket &bucket = buckets[(qRed(pixel) >> 5) << 6 | (qGreen(pixel) >> 5) << 3 | (qBlue(pixel) >> 5)];
            ++bucket.count;
            bucket.red += qRed(pixel);
            bucket.green += qGreen(pixel);
            bucket.blue += qBlue(pixel);
        }
    }
    std::stable_sort(buckets.begin(), buckets.end(), [](const Bucket &a, const Bucket &b) { return a.count > b.count; });
    QStringList colours;
    const int least = small.width() * small.height() / 50; // below 2 % a colour is noise
    for (const Bucket &bucket : std::as_const(buckets)) {
        if (colours.size() == 5 || bucket.count < std::max(1, least))
            break;
        const QColor average(int(bucket.red / bucket.count), int(bucket.green / bucket.count), int(bucket.blue / bucket.count));
        colours.append(average.name(QColor::HexRgb).toUpper());
    }
    return colours;
}

Picture make(DemoRandom &random, bool light)
{
    static const QList<double> styleWeights{28, 14, 16, 8, 10, 12, 12};
    Picture picture;
    picture.style = PictureStyle(random.weighted(styleWeights));
    picture.size = pictureSize(random, picture.style, light);
    const QImage image = paint(picture.style, picture.size, random, &picture.text);
    picture.extension = extensionFor(picture.style, random);
    picture.bytes = encode(image, picture.extension, random);
    picture.colors = dominantColours(image);
    return picture;
}

} // namespace kivo::demo::PicturePainter
