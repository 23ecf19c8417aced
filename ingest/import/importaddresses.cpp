// The addresses a remote import tries: the full-size picture on X's image host, and a thumbnail's
// address without its resizing hints before the thumbnail itself.

#include "ingest/import/importservice.h"

#include <QRegularExpression>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace kivo::ImportService {

namespace {

const QString xImageDomain = u"twimg.com"_s;

/** The address without the query items that ask a server for a smaller picture; the query goes when nothing is left. */
QUrl withoutResizeHints(const QUrl &address)
{
    static const QStringList hints{
        u"w"_s, u"h"_s, u"width"_s, u"height"_s, u"resize"_s, u"quality"_s, u"q"_s, u"fit"_s};
    if (!address.hasQuery())
        return address;
    const QUrlQuery query(address);
    const auto items = query.queryItems(QUrl::FullyEncoded);
    QList<std::pair<QString, QString>> kept;
    for (const auto &item : items) {
        if (!hints.contains(item.first.toLower()))
            kept.append(item);
    }
    if (kept.size() == items.size())
        return address;
    QUrl stripped = address;
    if (kept.isEmpty()) {
        stripped.setQuery(QString()); // a null query leaves no "?" behind
        return stripped;
    }
    QUrlQuery rebuilt;
    rebuilt.setQueryItems(kept);
    stripped.setQuery(rebuilt.query(QUrl::FullyEncoded), QUrl::StrictMode);
    return stripped;
}

/** The address with a size suffix ("-800x600") taken out of its file name, or the address itself. */
QUrl withoutSizeSuffix(const QUrl &address)
{
    static const QRegularExpression sizeSuffix(u"-\\d{2,5}x\\d{2,5}(\\.[a-zA-Z]{3,5})$"_s);
    const QString path = address.path(QUrl::FullyEncoded);
    const QRegularExpressionMatch match = sizeSuffix.match(path);
    if (!match.hasMatch())
        return address;
    QUrl stripped = address;
    stripped.setPath(path.left(match.capturedStart()) + match.captured(1), QUrl::StrictMode);
    return stripped;
}

} // namespace

QUrl fullSizeVariant(const QUrl &address)
{
    const QString host = address.host().toLower();
    if (host.isEmpty() || !host.endsWith(xImageDomain))
        return address;
    QUrlQuery query(address);
    query.removeAllQueryItems(u"name"_s);
    query.addQueryItem(u"name"_s, u"orig"_s);
    QUrl variant = address;
    variant.setQuery(query.query(QUrl::FullyEncoded), QUrl::StrictMode);
    return variant.isValid() ? variant : address;
}

QList<QUrl> candidateList(const QUrl &address)
{
    QList<QUrl> candidates;
    const QUrl fullSize = fullSizeVariant(address);
    if (fullSize != address)
        candidates.append(fullSize);
    const QUrl unsuffixed = withoutSizeSuffix(address);
    if (unsuffixed != address)
        candidates.append(unsuffixed);
    const QUrl unhinted = withoutResizeHints(address);
    if (unhinted != address)
        candidates.append(unhinted);
    candidates.append(address);

    QList<QUrl> distinct;
    QStringList seen;
    for (const QUrl &candidate : std::as_const(candidates)) {
        const QString text = candidate.toString(QUrl::FullyEncoded);
        if (!seen.contains(text)) {
            seen.append(text);
            distinct.append(candidate);
        }
    }
    return distinct;
}

} // namespace kivo::ImportService
