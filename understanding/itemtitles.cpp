#include "understanding/itemtitles.h"

#include "understanding/textsplit.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo::ItemTitles {

namespace {

const QStringList cameraPrefixes{u"screen shot "_s, u"screenshot "_s, u"photo "_s, u"image "_s, u"img "_s};
const QStringList fileExtensions{
    u"png"_s, u"jpg"_s, u"jpeg"_s, u"gif"_s, u"webp"_s, u"heic"_s, u"mp4"_s, u"mov"_s, u"pdf"_s};

bool hasPrefixBeforeNumber(const QString &lowered)
{
    for (const QString &prefix : cameraPrefixes) {
        if (lowered.startsWith(prefix) && lowered.size() > prefix.size() && lowered.at(prefix.size()).isNumber())
            return true;
    }
    return false;
}

std::optional<QString> titleFromText(const QString &text)
{
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    if (lines.isEmpty())
        return std::nullopt;
    const QString line = lines.constFirst().trimmed();
    const qsizetype wordCount = line.split(u' ', Qt::SkipEmptyParts).size();
    const bool hasLetter = std::any_of(line.cbegin(), line.cend(), [](QChar c) { return c.isLetter(); });
    if (wordCount >= 2 && wordCount <= 8 && TextSplit::characterCount(line) < 61 && hasLetter)
        return line;
    return std::nullopt;
}

} // namespace

bool titleLooksGeneric(const std::optional<QString> &title)
{
    if (!title)
        return true;
    const QString trimmed = title->trimmed();
    if (trimmed.isEmpty())
        return true;
    if (hasPrefixBeforeNumber(trimmed.toLower()))
        return true;
    if (trimmed.contains(u' ') || trimmed.contains(u'\t'))
        return false;
    if (std::any_of(trimmed.cbegin(), trimmed.cend(), [](QChar c) { return c.isDigit(); }))
        return true;
    const QStringList parts = trimmed.split(u'.', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return false;
    return trimmed.contains(u'.') && fileExtensions.contains(parts.constLast().toLower());
}

std::optional<QString> titleFromContent(const QStringList &tags, const std::optional<QString> &ocrText)
{
    if (ocrText && !ocrText->isEmpty()) {
        if (std::optional<QString> title = titleFromText(*ocrText))
            return title;
    }
    if (tags.isEmpty())
        return std::nullopt;
    QStringList parts{TextSplit::capitalised(tags.at(0))};
    if (tags.size() > 1)
        parts.append(TextSplit::capitalised(tags.at(1)));
    return parts.join(u", "_s);
}

} // namespace kivo::ItemTitles
