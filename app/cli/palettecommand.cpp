#include "app/cli/command.h"

#include "understanding/analysisimage.h"
#include "understanding/colornaming.h"
#include "understanding/colorpalette.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

namespace {

/** How many colours a stored palette holds. */
constexpr int paletteSize = 5;

/** `kivo palette FILE`: the palette Kivo stores for a picture, most common colour first. */
class PaletteCommand final : public Command
{
public:
    QString name() const override { return u"palette"_s; }
    QString synopsis() const override { return u"FILE"_s; }
    QString summary() const override { return u"Show the colour palette of a picture, most common first"_s; }

    int run(CommandContext &context) override
    {
        if (context.arguments.size() != 1)
            return context.usageError(u"palette takes one picture file"_s);
        const QString path = context.arguments.constFirst();
        if (!QFileInfo::exists(path) || QFileInfo(path).isDir())
            return context.fail(u"no file at %1"_s.arg(path));
        const QImage image = AnalysisImage::decode(path);
        if (image.isNull())
            return context.fail(u"cannot read a picture from %1"_s.arg(path));

        const QStringList palette = ColorPalette::extractPalette(image, paletteSize);
        if (context.json) {
            QJsonArray names;
            for (const QString &colour : palette)
                names.append(ColorNaming::colourName(colour).value_or(QString()));
            context.printJson(QJsonObject{{u"colors"_s, QJsonArray::fromStringList(palette)}, {u"names"_s, names}});
            return 0;
        }
        for (const QString &colour : palette)
            context.out << colour << u"  "_s << ColorNaming::colourName(colour).value_or(QString()) << Qt::endl;
        return 0;
    }
};

} // namespace

Command *makePaletteCommand()
{
    return new PaletteCommand;
}

} // namespace kivo::cli
