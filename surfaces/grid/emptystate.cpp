#include "surfaces/grid/emptystate.h"

#include "core/sidebarselection.h"

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

QString kindWords(MediaTypeFilter filter)
{
    switch (filter) {
    case MediaTypeFilter::image:
        return u"images"_s;
    case MediaTypeFilter::videos:
        return u"videos"_s;
    case MediaTypeFilter::links:
        return u"links"_s;
    case MediaTypeFilter::documents:
        return u"documents"_s;
    case MediaTypeFilter::tweets:
        return u"posts from X"_s;
    case MediaTypeFilter::instagram:
        return u"Instagram posts"_s;
    case MediaTypeFilter::audio:
        return u"audio files"_s;
    }
    return u"items"_s;
}

} // namespace

EmptyState EmptyState::forSelection(const SidebarSelection &selection, const QString &searchText, bool libraryEmpty)
{
    if (!searchText.trimmed().isEmpty())
        return {u"No Results"_s, u"Nothing here matches \u201c%1\u201d."_s.arg(searchText.trimmed())};
    switch (selection.kind()) {
    case SidebarSelection::Kind::all:
        if (libraryEmpty)
            return {u"Drag anything here"_s, u"Images, links, videos and notes all land in your library."_s};
        return {u"Everything Is Hidden"_s, u"Hidden items stay out of All; find them under Hidden."_s};
    case SidebarSelection::Kind::inbox:
        return {u"Inbox Is Empty"_s, u"What you save without picking a board lands here."_s};
    case SidebarSelection::Kind::favourites:
        return {u"No Favourites Yet"_s, u"Mark something as a favourite and it gathers here."_s};
    case SidebarSelection::Kind::links:
        return {u"No Links Yet"_s, u"Drop a link here or clip a page from your browser."_s};
    case SidebarSelection::Kind::trash:
        return {u"Trash Is Empty"_s, u"Deleted items wait here, and you can put any of them back."_s};
    case SidebarSelection::Kind::hidden:
        return {u"Nothing Hidden"_s, u"Items you hide leave All and wait here, still in their boards."_s};
    case SidebarSelection::Kind::type: {
        const QString words = kindWords(selection.filter());
        return {u"No "_s + words.at(0).toUpper() + words.mid(1) + u" Yet"_s,
            u"When you save %1 they show up here."_s.arg(words)};
    }
    case SidebarSelection::Kind::collection:
        return {u"This Board Is Empty"_s, u"Drag things here, or file them from anywhere in your library."_s};
    }
    return {};
}

} // namespace kivo
