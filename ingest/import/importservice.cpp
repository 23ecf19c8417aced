#include "ingest/import/importservice.h"

#include "core/database.h"
#include "core/librarylocation.h"
#include "ingest/import/importrules.h"
#include "ingest/import/mediameasure.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeDatabase>

#include <openssl/evp.h>

using namespace Qt::StringLiterals;

namespace kivo {

ImportContext ImportContext::forLibrary(std::shared_ptr<DatabaseQueue> queue, const QString &libraryRoot)
{
    const bool reorganised = LibraryLocation::isReorganised();
    return {std::move(queue), LibraryLocation::itemFolder(libraryRoot, reorganised), reorganised};
}

namespace ImportService {

namespace {

QByteArray readWholeFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ImportError(file.errorString());
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw ImportError(file.errorString());
    return bytes;
}

/** Writes a new stored file; a partial file is removed before the failure goes up. */
void writeNewFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw ImportError(u"could not write "_s + path + u": "_s + file.errorString());
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const QString reason = file.errorString();
        file.close();
        file.remove();
        throw ImportError(u"could not write "_s + path + u": "_s + reason);
    }
}

/** The extension of a picture's own type ("png" for bytes that aren't a readable picture). */
QString pictureExtension(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    if (QImageReader::imageFormat(&buffer).isEmpty())
        return u"png"_s;
    static const QMimeDatabase mimeDatabase;
    const QMimeType type = mimeDatabase.mimeTypeForData(bytes);
    const QString suffix = type.name().startsWith(u"image/") ? type.preferredSuffix() : QString();
    return suffix.isEmpty() ? u"png"_s : suffix.toLower();
}

/**
 * The part shared by files and picture bytes: the duplicate check, then a new file and row. The
 * hash lookup and the insert are separate queue blocks, as two imports of the same bytes at the
 * same moment are rare and the schema allows both rows.
 */
ImportedItem storeBytes(const ImportContext &context, const QByteArray &bytes, ItemKind kind,
    const std::optional<QString> &title, const QString &extension, const std::optional<QString> &target,
    const std::optional<QString> &measurePath = {})
{
    const QString hash = contentHash(bytes);
    const auto existing = context.queue->write([&](Database &db) {
        auto found = liveItemWithHash(db, hash);
        if (found && target)
            addMembership(db, found->id, *target, nowSeconds());
        return found;
    });
    if (existing)
        return {*existing, true};

    LibraryItem item = newItem(kind, nowSeconds());
    item.title = title;
    item.fileHash = hash;
    item.fileSize = bytes.size();
    const NewFileLocation location = LibraryLocation::newFileLocation(
        context.itemFolder, context.reorganised, item.id, title, extension, item.addedAt);
    writeNewFile(location.absolutePath, bytes);
    item.filePath = location.relativePath;

    MediaMeasurement measured;
    if (kind == ItemKind::image)
        measured = MediaMeasure::image(bytes);
    else if (kind == ItemKind::video)
        measured = MediaMeasure::video(measurePath.value_or(location.absolutePath));
    item.width = measured.width;
    item.height = measured.height;
    item.duration = measured.duration;

    context.queue->write([&](Database &db) { insertItem(db, item, target); });
    return {item, false};
}

} // namespace

QString contentHash(const QByteArray &bytes)
{
    // OpenSSL's SHA-256 uses the processor's SHA instructions: about twenty times Qt's own on a
    // large file (docs/benchmarks.md), and a whole file is hashed on every import.
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(bytes.constData(), size_t(bytes.size()), digest, &length, EVP_sha256(), nullptr) != 1)
        return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    return QString::fromLatin1(QByteArray(reinterpret_cast<const char *>(digest), int(length)).toHex());
}

LibraryItem newItem(ItemKind kind, double now)
{
    LibraryItem item;
    item.id = newIdentifier();
    item.kind = rawString(kind);
    item.createdAt = now;
    item.addedAt = now;
    item.modifiedAt = now;
    return item;
}

std::optional<LibraryItem> liveItemWithHash(Database &db, const QString &hash)
{
    return db.fetchOne<LibraryItem>(u"SELECT * FROM item WHERE fileHash = ? AND deletedAt IS NULL LIMIT 1"_s, {hash});
}

void addMembership(Database &db, const QString &itemId, const QString &collectionId, double now)
{
    db.execute(u"INSERT OR IGNORE INTO itemCollection (itemId, collectionId, addedAt) VALUES (?, ?, ?)"_s,
        {itemId, collectionId, now});
}

void insertItem(Database &db, const LibraryItem &item, const std::optional<QString> &target)
{
    db.insert(item);
    if (target)
        addMembership(db, item.id, *target, item.addedAt);
}

ImportedItem importFile(const ImportContext &context, const QString &path, const std::optional<QString> &target)
{
    const QFileInfo info(path);
    if (info.isDir())
        throw ImportError(u"is a folder"_s);
    const QByteArray bytes = readWholeFile(path);
    // A name that is all extension (".profile") is a name without one.
    const bool bareDotName = info.completeBaseName().isEmpty();
    const QString title = bareDotName ? info.fileName() : info.completeBaseName();
    const QString extension = bareDotName ? QString() : info.suffix().toLower();
    const ItemKind kind = bareDotName ? ItemKind::file : ImportRules::kindForFileName(info.fileName());
    return storeBytes(context, bytes, kind, title, extension, target);
}

ImportedItem importImageData(const ImportContext &context, const QByteArray &bytes, const std::optional<QString> &title,
    const std::optional<QString> &target)
{
    return storeBytes(context, bytes, ItemKind::image, title.value_or(u"Image"_s), pictureExtension(bytes), target);
}

LibraryItem insertLink(const ImportContext &context, const QUrl &address, const std::optional<QString> &title,
    const std::optional<QString> &target)
{
    LibraryItem item = newItem(ItemKind::link, nowSeconds());
    item.sourceURL = address.toString(QUrl::FullyEncoded);
    item.title = title ? *title : ImportRules::hostTitle(address);
    context.queue->write([&](Database &db) { insertItem(db, item, target); });
    return item;
}

LibraryItem insertText(const ImportContext &context, const QString &text, const std::optional<QString> &title,
    const std::optional<QString> &target)
{
    LibraryItem item = newItem(ItemKind::text, nowSeconds());
    item.note = text;
    item.title = title ? *title : ImportRules::textTitle(text);
    context.queue->write([&](Database &db) { insertItem(db, item, target); });
    return item;
}

} // namespace ImportService
} // namespace kivo
