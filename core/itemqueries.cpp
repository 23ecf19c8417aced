#include "core/itemqueries.h"

#include "core/mediatypepredicate.h"

#include <array>

using namespace Qt::StringLiterals;

namespace kivo::ItemQueries {

namespace {

QString direction(ItemSort sort)
{
    return sort == ItemSort::oldest ? u"ASC"_s : u"DESC"_s;
}

/** A selection's rows as parts: what is read from, which rows, and by what they are ordered. */
struct RowParts {
    QString from;
    QString where;
    QString order;
    QVariantList arguments;
};

std::optional<RowParts> rowParts(
    const SidebarSelection &selection, ItemSort sort, const std::optional<QString> &inboxId)
{
    const QString byAdded = u"i.addedAt "_s + direction(sort);
    const QString item = u"item i"_s;
    const auto inCollection = [&](const QString &id) {
        return RowParts{u"item i\nJOIN itemCollection ic ON ic.itemId = i.id"_s,
            u"ic.collectionId = ? AND i.deletedAt IS NULL"_s, u"ic.addedAt "_s + direction(sort), {id}};
    };
    switch (selection.kind()) {
    case SidebarSelection::Kind::all:
        return RowParts{item, u"i.deletedAt IS NULL AND i.hiddenAt IS NULL"_s, byAdded, {}};
    case SidebarSelection::Kind::inbox:
        if (!inboxId)
            return std::nullopt;
        return inCollection(*inboxId);
    case SidebarSelection::Kind::favourites:
        return RowParts{item, u"i.deletedAt IS NULL AND i.favourite = 1"_s, byAdded, {}};
    case SidebarSelection::Kind::links:
        return RowParts{item, u"i.deletedAt IS NULL AND i.kind = 'link'"_s, byAdded, {}};
    case SidebarSelection::Kind::trash:
        return RowParts{item, u"i.deletedAt IS NOT NULL"_s, u"i.deletedAt DESC"_s, {}};
    case SidebarSelection::Kind::hidden:
        return RowParts{item, u"i.deletedAt IS NULL AND i.hiddenAt IS NOT NULL"_s, u"i.hiddenAt DESC"_s, {}};
    case SidebarSelection::Kind::type:
        return RowParts{item, u"i.deletedAt IS NULL AND "_s + mediaTypePredicate(selection.filter()), byAdded, {}};
    case SidebarSelection::Kind::collection:
        return inCollection(selection.collectionId());
    }
    return std::nullopt;
}

std::optional<SqlQuery> countQuery(
    const QString &head, const SidebarSelection &selection, const std::optional<QString> &inboxId)
{
    auto clause = scopeClause(selection, inboxId);
    if (!clause)
        return std::nullopt;
    return SqlQuery{head + clause->sql, clause->arguments};
}

} // namespace

std::optional<SqlQuery> rowQuery(
    const SidebarSelection &selection, ItemSort sort, const std::optional<QString> &inboxId)
{
    const auto parts = rowParts(selection, sort, inboxId);
    if (!parts)
        return std::nullopt;
    return SqlQuery{
        u"SELECT i.* FROM "_s + parts->from + u"\nWHERE "_s + parts->where + u"\nORDER BY "_s + parts->order,
        parts->arguments};
}

std::optional<ChangedRowQuery> changedRowQuery(
    const SidebarSelection &selection, ItemSort sort, const std::optional<QString> &inboxId)
{
    const auto parts = rowParts(selection, sort, inboxId);
    if (!parts || parts->from != u"item i" || !parts->order.startsWith(u"i.addedAt "))
        return std::nullopt;
    return ChangedRowQuery{u"SELECT i.* FROM item i\nWHERE ("_s + parts->where + u") AND i.id IN ("_s,
        parts->arguments, sort != ItemSort::oldest};
}

std::optional<SqlQuery> rowIdQuery(const SidebarSelection &selection, const std::optional<QString> &inboxId)
{
    const auto parts = rowParts(selection, ItemSort::newest, inboxId);
    if (!parts)
        return std::nullopt;
    return SqlQuery{u"SELECT i.id FROM "_s + parts->from + u"\nWHERE "_s + parts->where, parts->arguments};
}

std::optional<SqlQuery> scopeClause(const SidebarSelection &selection, const std::optional<QString> &inboxId)
{
    const QString inCollection
        = u"AND EXISTS (SELECT 1 FROM itemCollection ic WHERE ic.itemId = i.id AND ic.collectionId = ?)"_s;
    switch (selection.kind()) {
    case SidebarSelection::Kind::collection:
        return SqlQuery{inCollection, {selection.collectionId()}};
    case SidebarSelection::Kind::type:
        return SqlQuery{u"AND "_s + mediaTypePredicate(selection.filter()), {}};
    case SidebarSelection::Kind::all:
        return SqlQuery{u"AND i.hiddenAt IS NULL"_s, {}};
    case SidebarSelection::Kind::inbox:
        if (!inboxId)
            return std::nullopt;
        return SqlQuery{inCollection, {*inboxId}};
    case SidebarSelection::Kind::favourites:
        return SqlQuery{u"AND i.favourite = 1"_s, {}};
    case SidebarSelection::Kind::links:
        return SqlQuery{u"AND i.kind = 'link'"_s, {}};
    case SidebarSelection::Kind::trash:
        return SqlQuery{};
    case SidebarSelection::Kind::hidden:
        return SqlQuery{u"AND i.hiddenAt IS NOT NULL"_s, {}};
    }
    return std::nullopt;
}

std::optional<SqlQuery> liveCountQuery(const SidebarSelection &selection, const std::optional<QString> &inboxId)
{
    return countQuery(u"SELECT COUNT(*) FROM item i WHERE i.deletedAt IS NULL "_s, selection, inboxId);
}

std::optional<SqlQuery> linkCountQuery(const SidebarSelection &selection, const std::optional<QString> &inboxId)
{
    return countQuery(
        u"SELECT COUNT(*) FROM item i WHERE i.deletedAt IS NULL AND i.kind = 'link' "_s, selection, inboxId);
}

QString placeholders(const QStringList &values, QVariantList &arguments)
{
    static constexpr std::array<qsizetype, 7> lengths{1, 4, 16, 32, 64, 128, maxListLength};
    qsizetype length = lengths.back();
    for (const qsizetype candidate : lengths) {
        if (candidate >= values.size()) {
            length = candidate;
            break;
        }
    }
    Q_ASSERT(values.size() <= length);
    for (const QString &value : values)
        arguments.append(value);
    for (qsizetype i = values.size(); i < length; ++i)
        arguments.append(QVariant());
    QString marks;
    marks.reserve(length * 3);
    for (qsizetype i = 0; i < length; ++i)
        marks += i == 0 ? u"?"_s : u", ?"_s;
    return marks;
}

} // namespace kivo::ItemQueries
