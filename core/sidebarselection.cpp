#include "core/sidebarselection.h"

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

const QString typePrefix = u"type-"_s;

} // namespace

SidebarSelection SidebarSelection::type(MediaTypeFilter filter)
{
    SidebarSelection selection(Kind::type);
    selection.m_filter = filter;
    return selection;
}

SidebarSelection SidebarSelection::collection(const QString &id)
{
    SidebarSelection selection(Kind::collection);
    selection.m_collectionId = id;
    return selection;
}

std::optional<SidebarSelection> SidebarSelection::fromKey(const QString &key)
{
    if (key.isEmpty())
        return std::nullopt;
    if (key == u"all")
        return all();
    if (key == u"inbox")
        return inbox();
    if (key == u"favourites")
        return favourites();
    if (key == u"links")
        return links();
    if (key == u"trash")
        return trash();
    if (key == u"hidden")
        return hidden();
    if (key.startsWith(typePrefix)) {
        if (const auto filter = mediaTypeFilterFromRaw(key.mid(typePrefix.size())))
            return type(*filter);
        return std::nullopt;
    }
    return collection(key);
}

QString SidebarSelection::key() const
{
    switch (m_kind) {
    case Kind::all:
        return u"all"_s;
    case Kind::inbox:
        return u"inbox"_s;
    case Kind::favourites:
        return u"favourites"_s;
    case Kind::links:
        return u"links"_s;
    case Kind::trash:
        return u"trash"_s;
    case Kind::hidden:
        return u"hidden"_s;
    case Kind::type:
        return typePrefix + rawString(m_filter);
    case Kind::collection:
        return m_collectionId;
    }
    return u"all"_s;
}

bool SidebarSelection::operator==(const SidebarSelection &other) const
{
    if (m_kind != other.m_kind)
        return false;
    if (m_kind == Kind::type)
        return m_filter == other.m_filter;
    if (m_kind == Kind::collection)
        return m_collectionId == other.m_collectionId;
    return true;
}

} // namespace kivo
