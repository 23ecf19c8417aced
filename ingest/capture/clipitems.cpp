#include "ingest/capture/clipitems.h"

#include "ingest/capture/cardtitle.h"

using namespace Qt::StringLiterals;

namespace kivo::ClipItems {

QImage decodeDataImage(const QString &address)
{
    const qsizetype comma = address.indexOf(u',');
    if (comma < 0 || !address.first(comma).startsWith(u"data:image"))
        return {};
    const QByteArray::FromBase64Result bytes
        = QByteArray::fromBase64Encoding(address.sliced(comma + 1).toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes)
        return {};
    QImage image;
    image.loadFromData(*bytes);
    return image;
}

QString domainOf(const QString &address)
{
    QString host = QUrl(address).host().toLower();
    if (host.startsWith(u"www."))
        host.remove(0, 4);
    return host;
}

QString pageAddress(const ClipItem &item)
{
    return item.sourceURL.isEmpty() ? item.url : item.sourceURL;
}

std::optional<LinkContext> linkContext(const ClipItem &item)
{
    if (item.type != u"page")
        return std::nullopt;
    LinkContext context;
    context.sourceURL = pageAddress(item);
    context.domain = domainOf(context.sourceURL);
    context.title = CardTitle::make(item.title, context.domain);
    return context;
}

QString draftKind(const QString &type)
{
    if (type == u"page" || type == u"link")
        return u"link"_s;
    if (type == u"video")
        return u"video"_s;
    if (type == u"selection" || type == u"text")
        return u"text"_s;
    return u"image"_s;
}

LibraryItem draftItem(const ClipItem &clip)
{
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = draftKind(clip.type);
    item.createdAt = item.addedAt = item.modifiedAt = nowSeconds();
    const QString page = pageAddress(clip);
    if (!page.isEmpty())
        item.sourceURL = page;
    item.title = CardTitle::make(clip.title, QUrl(page).host());
    return item;
}

std::optional<QUrl> parsedAddress(const QString &text)
{
    if (text.isEmpty())
        return std::nullopt;
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        return std::nullopt;
    return url;
}

bool isWebAddress(const QString &text)
{
    const std::optional<QUrl> url = parsedAddress(text);
    return url && (url->scheme() == u"http" || url->scheme() == u"https") && !url->host().isEmpty();
}

} // namespace kivo::ClipItems
