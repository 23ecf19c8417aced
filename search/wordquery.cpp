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

SqlQuery WordQuery::statement(const SqlQuery &scopeClause) const
{
    const QString sql
        = u"SELECT DISTINCT i.* FROM item i\n"
          "WHERE i.deletedAt IS NULL\n"
          "  AND (\n"
          "    i.rowid IN (SELECT rowid FROM itemFTS WHERE itemFTS MATCH ?)\n"
          "    OR i.id IN (SELECT it.itemId FROM itemTag it JOIN tag t ON t.id = it.tagId WHERE t.name LIKE ?)\n"
          "  )\n"
          "  "_s
        + scopeClause.sql + u"\nORDER BY i.addedAt DESC"_s;
    QVariantList arguments{matchExpression(), tagPattern()};
    arguments.append(scopeClause.arguments);
    return SqlQuery{sql, arguments};
}

} // namespace kivo
