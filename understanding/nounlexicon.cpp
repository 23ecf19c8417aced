#include "understanding/nounlexicon.h"

#include <QFile>
#include <QLoggingCategory>
#include <QSet>
#include <QThreadPool>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

Q_LOGGING_CATEGORY(lcLexicon, "kivo.understanding.lexicon")

/** A noun only counts when it has at least a quarter as many senses as its other readings. */
constexpr int dominanceFactor = 4;

/** Inflection endings and what replaces them, as WordNet's own lookup tries them. */
const QList<std::pair<QString, QString>> nounEndings{{u"s"_s, QString()}, {u"ses"_s, u"s"_s}, {u"xes"_s, u"x"_s},
    {u"zes"_s, u"z"_s}, {u"ches"_s, u"ch"_s}, {u"shes"_s, u"sh"_s}, {u"men"_s, u"man"_s}, {u"ies"_s, u"y"_s}};
const QList<std::pair<QString, QString>> verbEndings{{u"s"_s, QString()}, {u"ies"_s, u"y"_s}, {u"es"_s, u"e"_s},
    {u"es"_s, QString()}, {u"ed"_s, u"e"_s}, {u"ed"_s, QString()}, {u"ing"_s, u"e"_s}, {u"ing"_s, QString()}};

// Function words that WordNet also lists as rare nouns ("are" the unit, "who" the organisation).
const QSet<QString> functionWords{u"are"_s, u"can"_s, u"will"_s, u"may"_s, u"might"_s, u"must"_s, u"shall"_s, u"who"_s,
    u"one"_s, u"ones"_s, u"have"_s, u"has"_s, u"more"_s, u"most"_s, u"over"_s, u"out"_s, u"here"_s, u"there"_s,
    u"why"_s, u"how"_s, u"what"_s, u"when"_s, u"where"_s, u"which"_s, u"this"_s, u"that"_s, u"these"_s, u"those"_s,
    u"all"_s, u"any"_s, u"some"_s, u"each"_s, u"few"_s, u"many"_s, u"much"_s, u"such"_s, u"than"_s, u"then"_s, u"now"_s,
    u"also"_s, u"very"_s, u"just"_s, u"even"_s, u"still"_s, u"yet"_s, u"too"_s, u"not"_s, u"and"_s, u"but"_s, u"for"_s,
    u"from"_s, u"with"_s, u"into"_s, u"about"_s, u"after"_s, u"before"_s, u"off"_s, u"down"_s, u"less"_s, u"own"_s,
    u"same"_s, u"other"_s, u"another"_s, u"else"_s, u"well"_s, u"like"_s, u"being"_s, u"does"_s, u"did"_s, u"let"_s,
    u"say"_s, u"was"_s, u"were"_s, u"been"_s, u"its"_s, u"his"_s, u"her"_s, u"him"_s, u"they"_s, u"them"_s, u"she"_s,
    u"our"_s, u"your"_s, u"their"_s, u"upon"_s, u"ever"_s, u"never"_s, u"always"_s};

// "lemma pos synset_cnt ..." per line; the licence at the top starts with blanks.
bool readIndex(const QString &path, QHash<QString, int> &senses)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    qsizetype start = 0;
    while (start < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', start);
        if (end < 0)
            end = bytes.size();
        const QByteArrayView line(bytes.constData() + start, end - start);
        start = end + 1;
        if (line.isEmpty() || line.front() == ' ')
            continue;
        const qsizetype lemmaEnd = line.indexOf(' ');
        if (lemmaEnd <= 0 || line.first(lemmaEnd).contains('_'))
            continue; // a phrase ("sea_shore") never matches one word
        const qsizetype posEnd = line.indexOf(' ', lemmaEnd + 1);
        const qsizetype countEnd = posEnd < 0 ? -1 : line.indexOf(' ', posEnd + 1);
        if (countEnd < 0)
            continue;
        const int count = line.sliced(posEnd + 1, countEnd - posEnd - 1).toByteArray().toInt();
        int &stored = senses[QString::fromUtf8(line.first(lemmaEnd))];
        stored = std::max(stored, count);
    }
    return true;
}

// "inflected base" per line.
void readExceptions(const QString &path, QHash<QString, QString> &exceptions)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() >= 2 && !fields.at(0).isEmpty())
            exceptions.insert(QString::fromUtf8(fields.at(0)), QString::fromUtf8(fields.at(1)));
    }
}

// The largest sense count among the word itself and the bases its inflection may come from.
int sensesOfForms(const QString &word, const QHash<QString, int> &index, const QHash<QString, QString> &exceptions,
    const QList<std::pair<QString, QString>> &endings)
{
    int best = index.value(word);
    const auto exception = exceptions.constFind(word);
    if (exception != exceptions.constEnd())
        best = std::max(best, index.value(*exception));
    for (const auto &[ending, replacement] : endings) {
        if (word.size() > ending.size() && word.endsWith(ending))
            best = std::max(best, index.value(word.chopped(ending.size()) + replacement));
    }
    return best;
}

} // namespace

std::shared_ptr<const NounLexicon> NounLexicon::load(const QString &folder)
{
    std::shared_ptr<NounLexicon> lexicon(new NounLexicon);
    if (!readIndex(folder + u"/index.noun"_s, lexicon->m_nouns) || lexicon->m_nouns.isEmpty())
        return nullptr;
    // The other lists only sharpen the choice; without them every listed noun counts.
    readIndex(folder + u"/index.verb"_s, lexicon->m_verbs);
    readIndex(folder + u"/index.adj"_s, lexicon->m_modifiers);
    readIndex(folder + u"/index.adv"_s, lexicon->m_modifiers);
    readExceptions(folder + u"/noun.exc"_s, lexicon->m_nounExceptions);
    readExceptions(folder + u"/verb.exc"_s, lexicon->m_verbExceptions);
    return lexicon;
}

std::shared_ptr<const NounLexicon> NounLexicon::shared()
{
    static const std::shared_ptr<const NounLexicon> lexicon = [] {
        auto loaded = load(QString::fromLatin1(systemFolder));
        if (!loaded)
            qCInfo(lcLexicon) << "no WordNet noun index; link tags come from plain words";
        return loaded;
    }();
    return lexicon;
}

void NounLexicon::preload()
{
    QThreadPool::globalInstance()->start([] { (void)shared(); });
}

bool NounLexicon::isNoun(const QString &word) const
{
    const QString lowered = word.toLower();
    if (functionWords.contains(lowered))
        return false;
    const int nouns = nounSenses(lowered);
    return nouns > 0 && nouns * dominanceFactor >= otherSenses(lowered);
}

int NounLexicon::nounSenses(const QString &word) const
{
    return sensesOfForms(word, m_nouns, m_nounExceptions, nounEndings);
}

int NounLexicon::otherSenses(const QString &word) const
{
    return std::max(sensesOfForms(word, m_verbs, m_verbExceptions, verbEndings), m_modifiers.value(word));
}

} // namespace kivo
