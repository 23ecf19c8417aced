#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace kivo {

/** A bookmarked post on X as the browser extension reports it while the user browses the bookmarks page. */
struct XBookmark {
    QString id;
    QString url;
    QString text;
    QString author;
    QStringList media; // https picture addresses only

    friend bool operator==(const XBookmark &, const XBookmark &) = default;
};

namespace XPosts {

/** The hosts on which an address can be a post: X's current domain and its former one. */
[[nodiscard]] const QStringList &postHosts();

/** The digits of the post's id when the address is a post on X ("/<user>/status/<digits>"), else nothing. */
[[nodiscard]] std::optional<QString> postId(const QUrl &url);

/**
 * The bookmarks of an `/xbookmarks` body: an object with `items`, each needing string `id` and a
 * post address in `url`. Anything unreadable counts as no bookmarks; invalid entries are dropped.
 */
[[nodiscard]] QList<XBookmark> parseBookmarks(const QByteArray &body);

} // namespace XPosts

} // namespace kivo
