#pragma once

#include <QHash>
#include <QString>

#include <memory>

namespace kivo {

/**
 * Tells whether a word of running text is a noun, from the WordNet word lists installed with the
 * system, so that link tags are the things a page is about rather than its verbs and fillers.
 *
 * A word counts as a noun when WordNet lists it, or the singular it is an inflection of, as a noun,
 * it is not a function word, and its noun senses are not far outnumbered by its senses as a verb,
 * adjective or adverb ("make", "free" and "get" are listed as nouns too, but rarely are).
 */
class NounLexicon
{
public:
    /** Where Debian's wordnet-base puts the lists. */
    static constexpr const char *systemFolder = "/usr/share/wordnet";

    /** Reads the lists in `folder`; null when its noun index cannot be read. */
    [[nodiscard]] static std::shared_ptr<const NounLexicon> load(const QString &folder);

    /**
     * The process's lexicon from the system folder, or null when it is not installed. Loaded on the
     * first call, which waits for it (tens of milliseconds): call it off the main thread.
     */
    [[nodiscard]] static std::shared_ptr<const NounLexicon> shared();

    /** Starts loading the shared lexicon on a pool thread, so the first tagged link need not wait. */
    static void preload();

    /** Whether `word` (any case) reads as a noun. */
    [[nodiscard]] bool isNoun(const QString &word) const;

    /** How many nouns the index lists. */
    [[nodiscard]] qsizetype nounCount() const { return m_nouns.size(); }

private:
    NounLexicon() = default;

    [[nodiscard]] int nounSenses(const QString &word) const;
    [[nodiscard]] int otherSenses(const QString &word) const;

    QHash<QString, int> m_nouns; // lemma -> number of senses
    QHash<QString, int> m_verbs;
    QHash<QString, int> m_modifiers; // adjectives and adverbs: the larger count
    QHash<QString, QString> m_nounExceptions; // irregular plural -> singular
    QHash<QString, QString> m_verbExceptions;
};

} // namespace kivo
