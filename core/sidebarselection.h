#pragma once

#include "core/records.h"

#include <QMetaType>
#include <QString>

#include <optional>

namespace kivo {

/**
 * What the sidebar has selected: one of the fixed lists, a kind filter or a collection. Its key
 * ("all", "type-image", a collection's id...) files per-view preferences, view modes and boards.
 */
class SidebarSelection
{
public:
    enum class Kind { all, inbox, favourites, links, trash, hidden, type, collection };

    /** The All list. */
    SidebarSelection() = default;

    static SidebarSelection all() { return SidebarSelection(Kind::all); }
    static SidebarSelection inbox() { return SidebarSelection(Kind::inbox); }
    static SidebarSelection favourites() { return SidebarSelection(Kind::favourites); }
    static SidebarSelection links() { return SidebarSelection(Kind::links); }
    static SidebarSelection trash() { return SidebarSelection(Kind::trash); }
    static SidebarSelection hidden() { return SidebarSelection(Kind::hidden); }
    static SidebarSelection type(MediaTypeFilter filter);
    static SidebarSelection collection(const QString &id);

    /**
     * The selection a key names. The fixed words and "type-" with a known filter are read as
     * such; any other non-empty key is a collection's id. Empty, or "type-" with an unknown
     * filter, gives nothing.
     */
    [[nodiscard]] static std::optional<SidebarSelection> fromKey(const QString &key);

    [[nodiscard]] Kind kind() const { return m_kind; }
    /** The kind filter of a `type` selection. */
    [[nodiscard]] MediaTypeFilter filter() const { return m_filter; }
    /** The collection's id of a `collection` selection, empty otherwise. */
    [[nodiscard]] const QString &collectionId() const { return m_collectionId; }
    [[nodiscard]] bool isCollection() const { return m_kind == Kind::collection; }

    /** The selection key: "all", "inbox", "favourites", "links", "trash", "hidden", "type-<filter>" or the id. */
    [[nodiscard]] QString key() const;

    bool operator==(const SidebarSelection &other) const;

private:
    explicit SidebarSelection(Kind kind) : m_kind(kind) { }

    Kind m_kind = Kind::all;
    MediaTypeFilter m_filter = MediaTypeFilter::image;
    QString m_collectionId;
};

} // namespace kivo

Q_DECLARE_METATYPE(kivo::SidebarSelection)
