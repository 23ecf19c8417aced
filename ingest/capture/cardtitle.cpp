#include "ingest/capture/cardtitle.h"

#include <QHash>
#include <QMutex>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace kivo::CardTitle {

namespace {

struct Entity {
    QStringView name;
    char16_t character;
};

// The twenty that page titles actually carry; anything rarer stays as written.
constexpr Entity namedEntities[] = {
    {u"amp", u'&'},
    {u"lt", u'<'},
    {u"gt", u'>'},
    {u"quot", u'"'},
    {u"apos", u'\''},
    {u"nbsp", u'\u00a0'},
    {u"ndash", u'\u2013'},
    {u"mdash", u'\u2014'},
    {u"lsquo", u'\u2018'},
    {u"rsquo", u'\u2019'},
    {u"ldquo", u'\u201c'},
    {u"rdquo", u'\u201d'},
    {u"hellip", u'\u2026'},
    {u"middot", u'\u00b7'},
    {u"bull", u'\u2022'},
    {u"copy", u'\u00a9'},
    {u"reg", u'\u00ae'},
    {u"trade", u'\u2122'},
    {u"laquo", u'\u00ab'},
    {u"raquo", u'\u00bb'},
};

/** The character an entity body (between "&" and ";") stands for, or nothing. */
std::optional<QString> entityText(QStringView body)
{
    if (body.startsWith(u'#')) {
        bool ok = false;
        const bool hex = body.size() > 1 && (body.at(1) == u'x' || body.at(1) == u'X');
        const uint code = hex ? body.mid(2).toUInt(&ok, 16) : body.mid(1).toUInt(&ok, 10);
        if (!ok || code == 0 || code > 0x10ffff)
            return std::nullopt;
        const char32_t character = code;
        return QString::fromUcs4(&character, 1);
    }
    for (const Entity &entity : namedEntities) {
        if (body == entity.name)
            return QString(QChar(entity.character));
    }
    return std::nullopt;
}

QString clean(const QString &raw)
{
    static const QRegularExpression counter(u"^\\(\\d+\\)\\s*"_s);
    static const QRegularExpression address(u"https?://\\S+"_s);
    static const QRegularExpression emptyQuotes(u"[\"\u201c\u201d'\u2018\u2019]\\s*[\"\u201c\u201d'\u2018\u2019]"_s);
    static const QRegularExpression runsOfBlanks(u"\\s{2,}"_s);
    static const QRegularExpression trailing(u"[\\s:;,\\-|\u2013\u2014\u00b7\u2022\"\u201c\u201d'\u2018\u2019]+$"_s);

    QString text = raw.trimmed();
    if (text.isEmpty())
        return {};
    if (text.contains(u'&'))
        text = decodeEntities(text);
    text.remove(counter);
    text.remove(address);
    text.remove(emptyQuotes);
    text.replace(runsOfBlanks, u" "_s);
    text.remove(trailing);
    return text.trimmed();
}

} // namespace

QString decodeEntities(const QString &text)
{
    QString result;
    result.reserve(text.size());
    qsizetype i = 0;
    while (i < text.size()) {
        const QChar c = text.at(i);
        if (c == u'&') {
            // Entities are short; a far-off ";" belongs to the prose, not to this "&".
            const qsizetype end = text.indexOf(u';', i + 1);
            if (end > i + 1 && end - i <= 10) {
                if (const std::optional<QString> decoded = entityText(QStringView(text).sliced(i + 1, end - i - 1))) {
                    result += *decoded;
                    i = end + 1;
                    continue;
                }
            }
        }
        result += c;
        ++i;
    }
    return result;
}

QString make(const QString &raw, const QString &fallback)
{
    static QMutex mutex;
    static QHash<QString, QString> cache;
    const QString key = raw + QChar(0x1f) + fallback;
    {
        QMutexLocker lock(&mutex);
        const auto found = cache.constFind(key);
        if (found != cache.constEnd())
            return *found;
    }
    QString title = clean(raw);
    if (title.isEmpty())
        title = fallback.isEmpty() ? u"Untitled Link"_s : fallback;
    QMutexLocker lock(&mutex);
    // ### The cache is bounded crudely: a session clips far fewer distinct titles than this.
    if (cache.size() > 4096)
        cache.clear();
    cache.insert(key, title);
    return title;
}

} // namespace kivo::CardTitle
