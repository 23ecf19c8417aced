#include "search/wordquery.h"

using namespace Qt::StringLiterals;

namespace kivo {

std::optional<WordQuery> WordQuery::parse(const QString &text)
{
    QStringList parts;
    QString part;
    const auto finishPart = [&] {
        if (!part.isEmpty())
            parts.append(part);
        part.clear();
    };
    for (const QChar c : text) {
        if (c.isSpace())
            finishPart();
        else if (c != u'"')
            part.append(c);
    }
    finishPart();
    if (parts.isEmpty())
        return std::nullopt;
    return WordQuery(std::move(parts));
}

QString WordQuery::matchExpression() const
{
    QStringList strings;
    strings.reserve(m_parts.size());
    for (const QString &part : m_parts)
        strings.append(u'"' + part + u"\"*"_s);
    return strings.join(u' ');
}

QString WordQuery::tagPattern() const
{
    return u'%' + m_parts.constFirst() + u'%';
}

SqlQuery WordQuery::tagStatement() const
{
    return SqlQuery{u"SELECT 1 FROM tag WHERE name LIKE ? LIMIT 1"_s, {tagPattern()}};
}

SqlQuery WordQuery::statement(const SqlQuery &scopeClause, bool withTags, Columns columns) const
{
    // The outer query reads one table, so each row comes once without a DISTINCT. The tag links
    // have no index by tag, so matching them means reading every link: when no tag name holds
    // the word (the usual case) the branch is left out, which finds the same rows. When one
    // does, the few matching tags are found first and the links scanned once against them.
    const QString read = columns == Columns::wholeRows
        ? u"i.rowid, i.*"_s
        : u"i.rowid, i.id, i.addedAt, i.openCount, i.lastOpenedAt, i.title"_s;
    QString sql = u"SELECT "_s + read
        + u" FROM item i\n"
          "WHERE i.deletedAt IS NULL\n"
          "  AND (\n"
          "    i.rowid IN (SELECT rowid FROM itemFTS WHERE itemFTS MATCH ?)\n"_s;
    QVariantList arguments{matchExpression()};
    if (withTags) {
        sql += u"    OR i.id IN (SELECT it.itemId FROM itemTag it\n"
               "                WHERE it.tagId IN (SELECT t.id FROM tag t WHERE t.name LIKE ?))\n"_s;
        arguments.append(tagPattern());
    }
    sql += u"  )\n  "_s + scopeClause.sql;
    if (columns == Columns::hitsNewestFirst)
        sql += u"\nORDER BY i.addedAt DESC"_s;
    arguments.append(scopeClause.arguments);
    return SqlQuery{sql, arguments};
}

} // namespace kivo
