#include "ingest/import/importrules.h"

#include <QFileInfo>
#include <QHash>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace kivo::ImportRules {

namespace {

bool isWhitespaceOrNewline(QChar character)
{
    return character.isSpace();
}

/** The first `count` characters as a reader counts them: an accented letter or an emoji is one. */
QString leftCharacters(const QString &text, int count)
{
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    for (int taken = 0; taken < count; ++taken) {
        if (characters.toNextBoundary() < 0)
            return text;
    }
    return text.left(characters.position());
}

/** The first label of a host that names the site: "github" for gist.github.com. */
QString siteLabel(const QString &host)
{
    QString bare = host.toLower();
    bare.remove(u"www."_s);
    const QStringList labels = bare.split(u'.');
    if (labels.size() == 1)
        return labels.first();
    return labels.at(labels.size() - 2);
}

const QHash<QString, QString> &knownSites()
{
    static const QHash<QString, QString> sites{
        {u"linkedin"_s, u"LinkedIn"_s},
        {u"licdn"_s, u"LinkedIn"_s},
        {u"instagram"_s, u"Instagram"_s},
        {u"cdninstagram"_s, u"Instagram"_s},
        {u"pinterest"_s, u"Pinterest"_s},
        {u"pinimg"_s, u"Pinterest"_s},
        {u"dribbble"_s, u"Dribbble"_s},
        {u"behance"_s, u"Behance"_s},
        {u"vimeo"_s, u"Vimeo"_s},
        {u"tiktok"_s, u"TikTok"_s},
        {u"medium"_s, u"Medium"_s},
        {u"unsplash"_s, u"Unsplash"_s},
        {u"github"_s, u"GitHub"_s},
        {u"figma"_s, u"Figma"_s},
        {u"twitter"_s, u"X"_s},
        {u"x"_s, u"X"_s},
        {u"twimg"_s, u"X"_s},
        {u"facebook"_s, u"Facebook"_s},
        {u"fbcdn"_s, u"Facebook"_s},
        {u"youtube"_s, u"YouTube"_s},
        {u"ytimg"_s, u"YouTube"_s},
        {u"ggpht"_s, u"YouTube"_s},
        {u"reddit"_s, u"Reddit"_s},
        {u"redd"_s, u"Reddit"_s},
        {u"redditmedia"_s, u"Reddit"_s},
        {u"staticflickr"_s, u"Flickr"_s},
        {u"sndcdn"_s, u"SoundCloud"_s},
        {u"googleusercontent"_s, u"Google"_s},
    };
    return sites;
}

} // namespace

ItemKind kindForFileName(const QString &fileName)
{
    // Only the extension counts: whole-name patterns such as "Makefile" or "README" are not asked.
    const QString extension = QFileInfo(fileName).suffix();
    if (extension.isEmpty())
        return ItemKind::file;
    static const QMimeDatabase mimeDatabase;
    const QMimeType type = mimeDatabase.mimeTypeForFile(u"file."_s + extension, QMimeDatabase::MatchExtension);
    if (!type.isValid() || type.isDefault())
        return ItemKind::file;
    const auto conformsTo = [&](const QString &prefix) {
        if (type.name().startsWith(prefix))
            return true;
        const QStringList ancestors = type.allAncestors();
        return std::any_of(
            ancestors.begin(), ancestors.end(), [&](const QString &ancestor) { return ancestor.startsWith(prefix); });
    };
    if (conformsTo(u"image/"_s))
        return ItemKind::image;
    if (conformsTo(u"video/"_s) || conformsTo(u"audio/"_s))
        return ItemKind::video;
    if (type.inherits(u"text/plain"_s))
        return ItemKind::text;
    return ItemKind::file;
}

bool isJunkTitle(const std::optional<QString> &title)
{
    if (!title || title->trimmed().isEmpty())
        return true;
    const QString lower = title->toLower();
    for (const QString &prefix : {u"screen shot "_s, u"screenshot "_s, u"photo "_s, u"image "_s, u"img "_s}) {
        if (lower.startsWith(prefix) && lower.size() > prefix.size() && lower.at(prefix.size()).isDigit())
            return true;
    }
    // A title with a blank is somebody's words, whatever else it holds.
    if (std::any_of(title->begin(), title->end(), isWhitespaceOrNewline))
        return false;
    if (std::any_of(title->begin(), title->end(), [](QChar c) { return c.isDigit(); }))
        return true;
    const qsizetype dot = title->lastIndexOf(u'.');
    if (dot < 0)
        return false;
    static const QStringList fileExtensions{
        u"png"_s, u"jpg"_s, u"jpeg"_s, u"gif"_s, u"webp"_s, u"heic"_s, u"mp4"_s, u"mov"_s, u"pdf"_s};
    return fileExtensions.contains(title->mid(dot + 1).toLower());
}

QString hostTitle(const QUrl &address)
{
    QString host = address.host();
    if (host.isEmpty())
        return address.toString();
    host.remove(u"www."_s);
    return host;
}

QString siteName(const QString &host)
{
    if (host.isEmpty())
        return {};
    const QString label = siteLabel(host);
    if (label.isEmpty())
        return {};
    const auto known = knownSites().constFind(label);
    if (known != knownSites().cend())
        return *known;
    return label.at(0).toUpper() + label.mid(1);
}

std::optional<QString> linkTitle(const std::optional<QString> &rawTitle, const QUrl &pageAddress)
{
    if (!rawTitle || rawTitle->trimmed().isEmpty())
        return std::nullopt;
    static const QRegularExpression counter(u"^\\(\\d+\\+?\\)\\s*"_s);
    QString title = rawTitle->trimmed();
    title.remove(counter);

    const QString site = siteName(pageAddress.host());
    if (!site.isEmpty()) {
        for (const QString &separator :
            {u" | "_s, u" - "_s, u" \u2013 "_s, u" \u2014 "_s, u" \u2022 "_s, u" \u00b7 "_s, u" / "_s}) {
            const qsizetype at = title.lastIndexOf(separator);
            if (at < 0)
                continue;
            const QString tail = title.mid(at + separator.size()).trimmed();
            if (tail.contains(site, Qt::CaseInsensitive) || site.contains(tail, Qt::CaseInsensitive)) {
                title.truncate(at);
                break;
            }
        }
    }
    title = title.trimmed();
    if (title.isEmpty())
        return site.isEmpty() ? std::nullopt : std::optional<QString>(leftCharacters(site, 70));
    const QString result = site.isEmpty() ? title : site + u" - "_s + title;
    return leftCharacters(result, 70);
}

QString textTitle(const QString &text)
{
    return leftCharacters(text, 60);
}

CaptureDestination captureDestinationFromRaw(const QString &raw)
{
    if (raw == u"picker")
        return CaptureDestination::picker;
    if (raw == u"auto")
        return CaptureDestination::automatic;
    return CaptureDestination::inbox;
}

std::optional<QString> destination(const std::optional<QString> &explicitCollectionId, CaptureDestination setting,
    const std::optional<QString> &openCollectionId, const std::optional<QString> &inboxId)
{
    if (explicitCollectionId && !explicitCollectionId->isEmpty())
        return explicitCollectionId;
    if (setting == CaptureDestination::automatic && openCollectionId && !openCollectionId->isEmpty())
        return openCollectionId;
    return inboxId;
}

} // namespace kivo::ImportRules
