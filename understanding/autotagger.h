#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kivo {

class Database;
class NounLexicon;

/**
 * The tags Kivo adds by itself, so that a library answers to words before anyone has tagged it:
 * words from a link's own address, title and note, and the colour word of an untagged picture.
 * Every such tag is written as accepted, never waiting for review, and never over a tag the user set.
 */
namespace AutoTagger {

/** At most this many tags per link. */
inline constexpr int maximumLinkTags = 4;

/** Words too common on the web to say anything about a page. */
[[nodiscard]] const QStringList &stopWords();

/**
 * Up to four lower-case tags for a link: the registered name of its host first, then the nouns of
 * its title and note (from `lexicon`), and when those give fewer than two, the plain letter-and-digit
 * words of the text. With no lexicon the plain words serve for every link.
 */
[[nodiscard]] QStringList linkTags(const std::optional<QString> &title, const std::optional<QString> &note,
    const std::optional<QString> &sourceURL, const NounLexicon *lexicon);

/** As above with the system's lexicon; loads it on first use, so call it off the main thread. */
[[nodiscard]] QStringList linkTags(
    const std::optional<QString> &title, const std::optional<QString> &note, const std::optional<QString> &sourceURL);

/**
 * The tags of a picture that no classifier named: the word for its most common colour, when the
 * item is neither a link nor a text and has a palette; otherwise `tags` unchanged.
 */
[[nodiscard]] QStringList withColourFallback(const QStringList &tags, const QString &kind, const QStringList &palette);

/**
 * Puts the tag `name` (as given; the caller normalises it) on an item inside the caller's write:
 * makes the tag if no tag has that name (tag names compare without case, so an existing spelling
 * wins), and links it as an accepted automatic tag unless the item already carries it from any source.
 */
void applyTag(Database &db, const QString &itemId, const QString &name, double now);

} // namespace AutoTagger

} // namespace kivo
