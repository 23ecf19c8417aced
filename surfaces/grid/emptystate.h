#pragma once

#include <QString>

namespace kivo {

class SidebarSelection;

/** What a selection with no rows says instead of cards: a heading and one sentence. */
struct EmptyState {
    QString title;
    QString message;

    /**
     * The words for a selection. An empty library invites the first drop wherever one looks
     * from All; a search with no rows says so; each list and board has its own sentence.
     */
    [[nodiscard]] static EmptyState forSelection(
        const SidebarSelection &selection, const QString &searchText, bool libraryEmpty);
};

} // namespace kivo
