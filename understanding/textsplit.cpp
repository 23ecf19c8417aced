#include "understanding/textsplit.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace kivo::TextSplit {

qsizetype characterCount(const QString &text)
{
    if (text.isEmpty())
        return 0;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

QStringList letterDigitRuns(const QString &text)
{
    QStringList runs;
    QString current;
    for (const char32_t c : text.toUcs4()) {
        if (QChar::isLetterOrNumber(c) || QChar::isMark(c)) {
            current.append(QString::fromUcs4(&c, 1));
        } else if (!current.isEmpty()) {
            runs.append(current);
            current.clear();
        }
    }
    if (!current.isEmpty())
        runs.append(current);
    return runs;
}

QStringList words(const QString &text)
{
    QStringList result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        const qsizetype end = finder.position();
        const QString piece = text.mid(start, end - start);
        start = end;
        // Only pieces with a letter or digit are words; blanks and punctuation are left out.
        if (std::any_of(piece.cbegin(), piece.cend(), [](QChar c) { return c.isLetterOrNumber(); }))
            result.append(piece);
    }
    return result;
}

QString capitalised(const QString &text)
{
    QString result;
    result.reserve(text.size());
    bool wordStart = true;
    for (const QChar c : text) {
        if (c.isSpace()) {
            wordStart = true;
            result.append(c);
        } else {
            result.append(wordStart ? c.toUpper() : c.toLower());
            wordStart = false;
        }
    }
    return result;
}

} // namespace kivo::TextSplit
