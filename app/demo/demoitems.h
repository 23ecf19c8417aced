#pragma once

#include "app/demo/picturepainter.h"
#include "core/records.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace kivo::demo {

/** The kinds of demo item; more than `ItemKind`, as files and sounds are made differently. */
enum class DemoKind : std::uint8_t { picture, video, sound, pdf, archive, link, note };

/** Everything one item needs before it is placed: its rows, and its file's bytes or a finished file. */
struct ProducedItem {
    LibraryItem item;
    QList<ItemTag> tags;
    QList<ItemCollection> memberships;
    QByteArray bytes;     // the file's content, or empty when `readyFile` holds it
    QString readyFile;    // a file already written (videos, sounds) in the work folder
    QString extension;    // empty for items without a file
    QString failure;      // why the item could not be made; the run stops on it
};

/** The shared, read-only context in which items are made on any thread. */
struct DemoContext {
    std::uint64_t seed = 1;
    std::uint64_t stream = 0; // differs per run on the same library, so ids never collide
    double now = 0;
    QString workFolder;
    bool light = false;
    QList<DemoKind> kinds;            // one per item, in order
    QList<double> addedAt;            // one per item, oldest first, as a library that grew stores its rows
    QList<Picture> pool;              // pictures reused by the picture items
    bool poolPerItem = false;         // every picture item has its own pool entry
    QList<qint64> pictureOrdinal;     // for each item, its number among the pictures
    QStringList userTagIds;
    QStringList aiTagIds;
    QStringList collectionIds;
    QString inboxId;
};

/** Makes the item at an index: deterministic for a seed, whichever thread runs it. */
namespace DemoItems {

[[nodiscard]] ProducedItem make(const DemoContext &context, qint64 index);

/** The SHA-256 of the bytes, in lower-case hexadecimal, as the importer writes `fileHash`. */
[[nodiscard]] QString contentHash(const QByteArray &bytes);

} // namespace DemoItems
} // namespace kivo::demo
