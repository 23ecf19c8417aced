#include "understanding/autotagger.h"

#include "core/database.h"
#include "core/records.h"
#include "understanding/colornaming.h"
#include "understanding/nounlexicon.h"
#include "understanding/textsplit.h"

#include <QSet>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kivo::AutoTagger {

namespace {

/** Stop the noun pass once this many tags are in hand. */
constexpr int nounPassLimit = 8;
/** Below this many tags the plain words are added. */
constexpr int plainWordThreshold = 2;

/** The ordered tags of one link and the words already taken. */
class TagList
{
public:
    // Accepts a word that is 3 to 24 characters long after trimming, new, no stop word, with a letter.
    void consider(const QString &word)
    {
        const QString candidate = trimmedOfPunctuation(word.toLower());
        const qsizetype length = TextSplit::characterCount(candidate);
        if (length < 3 || length >= 25 || m_seen.contains(candidate) || stopWords().contains(candidate))
            return;
        if (std::none_of(candidate.cbegin(), candidate.cend(), [](QChar c) { return c.isLetter(); }))
            return;
        m_seen.insert(candidate);
        m_tags.append(candidate);
    }

    [[nodiscard]] qsizetype size() const { return m_tags.size(); }
    [[nodiscard]] QStringList tags() const { return m_tags.mid(0, maximumLinkTags); }

private:
    static QString trimmedOfPunctuation(const QString &text)
    {
        const auto trims = [](QChar c) { return c.isSpace() || c.isPunct(); };
        qsizetype begin = 0;
        qsizetype end = text.size();
        while (begin < end && trims(text.at(begin)))
            ++begin;
        while (end > begin && trims(text.at(end - 1)))
            --end;
        return text.mid(begin, end - begin);
    }

    QStringList m_tags;
    QSet<QString> m_seen;
};

// The registered name of a host: the label before its suffix ("example" of www.example.com).
std::optional<QString> domainWord(const std::optional<QString> &sourceURL)
{
    if (!sourceURL)
        return std::nullopt;
    const QUrl url(*sourceURL, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    const QStringList labels = url.host().toLower().remove(u"www."_s).split(u'.', Qt::SkipEmptyParts);
    if (labels.size() < 2)
        return std::nullopt;
    return labels.at(labels.size() - 2);
}

// A possessive ending is a word of its own in running text ("Kivo's" is "Kivo" and "'s").
QString withoutPossessive(const QString &word)
{
    if (word.size() > 2 && (word.endsWith(u"'s"_s) || word.endsWith(u"\u2019s"_s)))
        return word.chopped(2);
    return word;
}

} // namespace

const QStringList &stopWords()
{
    static const QStringList words{u"the"_s, u"way"_s, u"ways"_s, u"thing"_s, u"things"_s, u"home"_s, u"page"_s,
        u"pages"_s, u"site"_s, u"sites"_s, u"website"_s, u"com"_s, u"www"_s, u"http"_s, u"https"_s, u"html"_s,
        u"index"_s, u"login"_s, u"sign"_s, u"search"_s, u"welcome"_s, u"your"_s, u"you"_s, u"our"_s, u"use"_s,
        u"using"_s, u"part"_s, u"today"_s, u"day"_s, u"week"_s, u"year"_s, u"time"_s, u"world"_s, u"people"_s,
        u"lot"_s};
    return words;
}

QStringList linkTags(const std::optional<QString> &title, const std::optional<QString> &note,
    const std::optional<QString> &sourceURL, const NounLexicon *lexicon)
{
    TagList list;
    if (const std::optional<QString> domain = domainWord(sourceURL))
        list.consider(*domain);

    QStringList present;
    if (title)
        present.append(*title);
    if (note)
        present.append(*note);
    const QString text = present.join(u". "_s);
    if (text.isEmpty())
        return list.tags();

    if (lexicon) {
        for (const QString &token : TextSplit::words(text)) {
            const QString word = withoutPossessive(token);
            if (lexicon->isNoun(word))
                list.consider(word);
            if (list.size() >= nounPassLimit)
                break;
        }
    }
    if (list.size() < plainWordThreshold) {
        for (const QString &run : TextSplit::letterDigitRuns(text)) {
            if (list.size() >= maximumLinkTags)
                break;
            list.consider(run);
        }
    }
    return list.tags();
}

QStringList linkTags(
    const std::optional<QString> &title, const std::optional<QString> &note, const std::optional<QString> &sourceURL)
{
    return linkTags(title, note, sourceURL, NounLexicon::shared().get());
}

QStringList withColourFallback(const QStringList &tags, const QString &kind, const QStringList &palette)
{
    if (!tags.isEmpty() || kind == u"link" || kind == u"text" || palette.isEmpty())
        return tags;
    if (const std::optional<QString> word = ColorNaming::colourName(palette.constFirst()))
        return {*word};
    return tags;
}

void applyTag(Database &db, const QString &itemId, const QString &name, double now)
{
    // Tag names are unique regardless of case, and an insert of a name that exists in another case
    // is ignored, so the id is always read back by name: "Beach" joins the tag "beach".
    const QString lookup = u"SELECT id FROM tag WHERE name = ?"_s;
    QVariant tagId = db.fetchScalar(lookup, {name});
    if (!tagId.isValid()) {
        db.insert(Tag{newIdentifier(), name});
        tagId = db.fetchScalar(lookup, {name});
    }
    const QVariant linked = db.fetchScalar(u"SELECT 1 FROM itemTag WHERE itemId = ? AND tagId = ?"_s, {itemId, tagId});
    if (linked.isValid())
        return;
    db.insert(ItemTag{itemId, tagId.toString(), u"ai"_s, u"accepted"_s, now});
}

} // namespace kivo::AutoTagger
