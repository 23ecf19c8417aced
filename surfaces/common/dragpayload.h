#pragma once

#include <QString>
#include <QStringList>

namespace kivo {

/**
 * The plain text that marks a drag inside Kivo: "KIVO-ITEM <id>", "KIVO-ITEMS <id>,<id>" or
 * "KIVO-COLLECTION <id>". Drop targets read it to tell Kivo's own cards and collections from
 * things dragged in from other programs.
 */
namespace DragPayload {

[[nodiscard]] QString forItems(const QStringList &ids);
[[nodiscard]] QString forCollection(const QString &id);

/** The item ids a text carries, in its order; empty when it is not an item drag. */
[[nodiscard]] QStringList itemIds(const QString &text);
/** The collection id a text carries; empty when it is not a collection drag. */
[[nodiscard]] QString collectionId(const QString &text);

} // namespace DragPayload
} // namespace kivo
