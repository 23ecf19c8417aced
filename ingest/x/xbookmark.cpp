#include "ingest/x/xbookmark.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::XPosts {

const QStringList &postHosts()
{
    static const QStringList hosts{
        u"x.com"_s,
        u"www.x.com"_s,
        u"twitter.com"_s,
        u"www.twitter.com"_s,
        u"mobile.twitter.com"_s,
    };
    return hosts;
}

std::optional<QString> postId(const QUrl &url)
{
    if (!url.isValid() || !postHosts().contains(url.host().toLower()))
        return std::nullopt;
    const QStringList components = url.path().split(u'/', Qt::SkipEmptyParts);
    const qsizetype status = components.indexOf(u"status"_s);
    if (status < 0 || status + 1 >= components.size())
        return std::nullopt;
    const QString &id = components.at(status + 1);
    if (id.isEmpty())
        return std::nullopt;
    for (const QChar c : id) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
    }
    return id;
}

QList<XBookmark> parseBookmarks(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    const QJsonValue items = document.object().value(u"items"_s);
    QList<XBookmark> bookmarks;
    if (!document.isObject() || !items.isArray())
        return bookmarks;
    for (const QJsonValue &entry : items.toArray()) {
        const QJsonObject object = entry.toObject();
        const QJsonValue id = object.value(u"id"_s);
        const QJsonValue url = object.value(u"url"_s);
        if (!entry.isObject() || !id.isString() || !url.isString() || !postId(QUrl(url.toString())))
            continue;
        XBookmark bookmark;
        bookmark.id = id.toString();
        bookmark.url = url.toString();
        bookmark.text = object.value(u"text"_s).toString();
        bookmark.author = object.value(u"author"_s).toString();
        for (const QJsonValue &media : object.value(u"media"_s).toArray()) {
            if (media.isString() && media.toString().startsWith(u"https://"_s))
                bookmark.media.append(media.toString());
        }
        bookmarks.append(bookmark);
    }
    return bookmarks;
}

} // namespace kivo::XPosts
