#pragma once

#include <QImage>
#include <QString>

#include <optional>

namespace kivo {

/** What the pending list shows of a clipped page: its title, its host and its address. */
struct LinkContext {
    QString title;
    QString domain;
    QString sourceURL;

    friend bool operator==(const LinkContext &, const LinkContext &) = default;
};

/** One clip waiting in the pending list, bound to its item once the import has given one. */
struct ClipEntry {
    QString id; // made on arrival
    std::optional<QString> itemId;
    QImage preview; // null when the clip had none (yet)
    std::optional<LinkContext> link;
};

} // namespace kivo
