#pragma once

#include "core/records.h"

#include <QByteArray>
#include <QFuture>
#include <QList>
#include <QString>
#include <QUrl>

#include <memory>
#include <optional>
#include <stdexcept>

class QNetworkAccessManager;

namespace kivo {

class Database;
class DatabaseQueue;

/** Where an import writes: the library's database queue and the folder its stored files go in. */
struct ImportContext {
    std::shared_ptr<DatabaseQueue> queue;
    /** The absolute item folder ("items" or, in the older layout, "files"). */
    QString itemFolder;
    /** Whether the library has the browsable layout; it decides how new file names are made. */
    bool reorganised = true;

    /** The context of the library at `libraryRoot`, in the layout the settings say it has. */
    [[nodiscard]] static ImportContext forLibrary(std::shared_ptr<DatabaseQueue> queue, const QString &libraryRoot);
};

/** An import's own failure (not the database's): a file that can't be read or written, an address that fails. */
class ImportError : public std::runtime_error
{
public:
    explicit ImportError(const QString &message) : std::runtime_error(message.toStdString()) { }
};

/** The item an import ended in, and whether it was already there (a live item with the same bytes). */
struct ImportedItem {
    LibraryItem item;
    bool existing = false;
};

/** What an address became: a stored picture or video (`media`), or a link (`page`). */
struct RemoteResult {
    enum class Kind { media, page };
    Kind kind = Kind::page;
    LibraryItem item;
    /** The media were already in the library; the existing item was filed into the target. */
    bool existing = false;
};

/** One address to import. */
struct RemoteRequest {
    QUrl address;
    /** The page the address was found on; it becomes the item's `sourceURL`. */
    std::optional<QUrl> pageAddress;
    /** The title for a stored picture; without one the address's file name is used. */
    std::optional<QString> title;
    std::optional<QString> target;
    /** Each download's time-out: thirty seconds, shorter in tests. */
    int timeoutMs = 30'000;
};

/**
 * The import pipeline's steps: reading bytes, hashing them, finding a live duplicate, placing the
 * file and writing the row with its membership in one transaction. It has no state of its own;
 * the file steps block and are run off the main thread by their callers, and every database
 * access goes through the context's queue. Failures are thrown (ImportError, DatabaseError,
 * LibraryError) for the entries to log.
 */
namespace ImportService {

/** Downloads of this many bytes are kept; one byte more and the address is saved as a link. */
inline constexpr qint64 largestDownload = 524'288'000;

/** SHA-256 of all the bytes, in lower-case hexadecimal. */
[[nodiscard]] QString contentHash(const QByteArray &bytes);

/** A new item of this kind: a fresh id and all three times set to `now`, everything optional empty. */
[[nodiscard]] LibraryItem newItem(ItemKind kind, double now);

/** The live (not trashed) item holding these bytes, if there is one. */
[[nodiscard]] std::optional<LibraryItem> liveItemWithHash(Database &db, const QString &hash);

/** Puts an item in a collection at `now`; an existing membership is left as it is. */
void addMembership(Database &db, const QString &itemId, const QString &collectionId, double now);

/** Inserts the row and, with a target, its membership (both in the caller's transaction). */
void insertItem(Database &db, const LibraryItem &item, const std::optional<QString> &target);

/**
 * Imports a file on disk: a live item with the same bytes is filed into the target and returned
 * as it is; otherwise the bytes are copied into the library, measured and inserted. Blocks.
 */
[[nodiscard]] ImportedItem importFile(
    const ImportContext &context, const QString &path, const std::optional<QString> &target);

/**
 * Imports picture bytes (a paste, a download): as `importFile`, with the kind "image", the title
 * given or "Image", and the extension of the picture's type ("png" when it is not a readable
 * picture, whose bytes are kept all the same). Blocks.
 */
[[nodiscard]] ImportedItem importImageData(const ImportContext &context, const QByteArray &bytes,
    const std::optional<QString> &title, const std::optional<QString> &target);

/** A new link item for the address, titled as given or by its host; never checks for an equal one. */
[[nodiscard]] LibraryItem insertLink(const ImportContext &context, const QUrl &address,
    const std::optional<QString> &title, const std::optional<QString> &target);

/** A new text item: the whole text as its note, the title given or the text's first 60 characters. */
[[nodiscard]] LibraryItem insertText(const ImportContext &context, const QString &text,
    const std::optional<QString> &title, const std::optional<QString> &target);

/** The address of the full-size picture on X's image host ("name=orig"); any other address unchanged. */
[[nodiscard]] QUrl fullSizeVariant(const QUrl &address);

/**
 * The addresses worth trying for a picture, best first: the full-size variant, the address
 * without a size suffix in its file name, the address without resizing query items, and the
 * address itself last, without repeats.
 */
[[nodiscard]] QList<QUrl> candidateList(const QUrl &address);

/**
 * Fetches an address and stores what the server answers: a picture or a video becomes `media`,
 * anything else, or anything over `largestDownload` bytes, a link (`page`). The future fails with
 * ImportError when no candidate answers 200. Call it on the thread of `network`; hashing and
 * copying run on a worker.
 */
[[nodiscard]] QFuture<RemoteResult> importRemote(
    QNetworkAccessManager *network, const ImportContext &context, const RemoteRequest &request);

} // namespace ImportService
} // namespace kivo

Q_DECLARE_METATYPE(kivo::ImportedItem)
Q_DECLARE_METATYPE(kivo::RemoteResult)
