#include "core/sidecars.h"

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/librarysnapshot.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace kivo::Sidecars {

namespace {

template<typename T> void putOptional(QJsonObject &json, const QString &key, const std::optional<T> &value)
{
    if (value) {
        if constexpr (std::is_same_v<T, qint64>)
            json.insert(key, QJsonValue(*value));
        else
            json.insert(key, *value);
    }
}

QJsonArray decodeColors(const QString &text)
{
    QJsonArray colors;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray())
        return colors;
    for (const QJsonValue &value : document.array()) {
        if (value.isString())
            colors.append(value);
    }
    return colors;
}

QString lastComponent(const QString &path)
{
    return path.section(u'/', -1);
}

QString folderOf(const QString &relativePath)
{
    const qsizetype slash = relativePath.lastIndexOf(u'/');
    return slash < 0 ? QString() : relativePath.left(slash);
}

QString stemOf(const QString &fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot <= 0 ? fileName : fileName.left(dot);
}

} // namespace

QJsonObject itemSidecar(const LibraryItem &item, const LibrarySnapshot &snapshot)
{
    QJsonObject json{
        {u"id"_s, item.id},
        {u"kind"_s, item.kind},
        {u"createdAt"_s, item.createdAt},
        {u"addedAt"_s, item.addedAt},
        {u"modifiedAt"_s, item.modifiedAt},
        {u"favourite"_s, item.favourite},
    };
    putOptional(json, u"title"_s, item.title);
    putOptional(json, u"note"_s, item.note);
    putOptional(json, u"sourceURL"_s, item.sourceURL);
    if (item.filePath)
        json.insert(u"file"_s, lastComponent(*item.filePath));
    putOptional(json, u"fileHash"_s, item.fileHash);
    putOptional(json, u"fileSize"_s, item.fileSize);
    putOptional(json, u"width"_s, item.width);
    putOptional(json, u"height"_s, item.height);
    putOptional(json, u"duration"_s, item.duration);
    putOptional(json, u"deletedAt"_s, item.deletedAt);
    putOptional(json, u"ocrText"_s, item.ocrText);
    putOptional(json, u"aiCaption"_s, item.aiCaption);
    if (item.colors)
        json.insert(u"colors"_s, decodeColors(*item.colors));
    putOptional(json, u"enrichedAt"_s, item.enrichedAt);

    QJsonArray tags;
    for (const SidecarTag &tag : snapshot.tagsByItem.value(item.id))
        tags.append(QJsonObject{{u"name"_s, tag.name}, {u"source"_s, tag.source}, {u"status"_s, tag.status}});
    json.insert(u"tags"_s, tags);
    json.insert(u"collections"_s, QJsonArray::fromStringList(snapshot.collectionsByItem.value(item.id)));

    const auto canvas = snapshot.canvasByItem.constFind(item.id);
    if (canvas != snapshot.canvasByItem.constEnd() && !canvas->isEmpty()) {
        QJsonArray positions;
        for (const CanvasPosition &position : canvas.value()) {
            positions.append(QJsonObject{{u"collectionKey"_s, position.collectionKey},
                                         {u"x"_s, position.x},
                                         {u"y"_s, position.y},
                                         {u"scale"_s, position.scale},
                                         {u"z"_s, QJsonValue(position.z)}});
        }
        json.insert(u"canvas"_s, positions);
    }
    return json;
}

QJsonObject manifest(const LibrarySnapshot &snapshot)
{
    QJsonArray collections;
    for (const LibraryCollection &collection : snapshot.collections) {
        QJsonObject json{
            {u"id"_s, collection.id},
            {u"name"_s, collection.name},
            {u"sortIndex"_s, QJsonValue(collection.sortIndex)},
            {u"isInbox"_s, collection.isInbox},
            {u"createdAt"_s, collection.createdAt},
            {u"modifiedAt"_s, collection.modifiedAt},
        };
        putOptional(json, u"parentId"_s, collection.parentId);
        putOptional(json, u"icon"_s, collection.icon);
        putOptional(json, u"deletedAt"_s, collection.deletedAt);
        collections.append(json);
    }
    QJsonArray tags;
    for (const Tag &tag : snapshot.tags)
        tags.append(QJsonObject{{u"id"_s, tag.id}, {u"name"_s, tag.name}});
    return {{u"version"_s, 1}, {u"collections"_s, collections}, {u"tags"_s, tags}};
}

QByteArray serialise(const QJsonObject &object)
{
    // QJsonObject keeps its keys sorted, so the indented form is already in key order.
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

void writeFile(const QString &path, const QJsonObject &object)
{
    // Plain writes, without the disk sync per file of a save-and-rename: that made the refresh of a
    // large library at quit take minutes. These files are a copy of the database (the refresh has
    // just deleted the old ones), and the next refresh mends any that a crash or power cut cuts short.
    const QByteArray bytes = serialise(object);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() || !file.flush())
        throw LibraryError(u"Could not write "_s + path + u": "_s + file.errorString());
}

QString claimStem(QSet<QString> &used, const QString &base)
{
    QString candidate = base;
    for (int suffix = 2; used.contains(candidate.toLower()); ++suffix)
        candidate = base + u'-' + QString::number(suffix);
    used.insert(candidate.toLower());
    return candidate;
}

void refresh(DatabaseQueue &queue, const QString &root)
{
    refresh(queue, root, LibraryLocation::isReorganised());
}

void refresh(DatabaseQueue &queue, const QString &root, bool reorganised)
{
    if (!reorganised)
        return;
    const QString items = root + u"/items"_s;
    if (!QDir().mkpath(items))
        throw LibraryError(u"Could not create the folder "_s + items);
    const LibrarySnapshot snapshot = queue.read([](Database &db) { return LibrarySnapshot::read(db); });

    QDirIterator stale(items, {u"*.kivo.json"_s}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (stale.hasNext()) {
        const QString path = stale.next();
        if (!QFile::remove(path))
            throw LibraryError(u"Could not delete "_s + path);
    }

    QHash<QString, QSet<QString>> usedStems;
    for (const LibraryItem &item : snapshot.items) {
        if (!item.filePath)
            continue;
        const QString folder = folderOf(*item.filePath);
        const QString stem = stemOf(lastComponent(*item.filePath));
        usedStems[folder].insert(stem.toLower());
        const QString folderPath = folder.isEmpty() ? items : items + u'/' + folder;
        if (!QDir().mkpath(folderPath))
            throw LibraryError(u"Could not create the folder "_s + folderPath);
        writeFile(folderPath + u'/' + stem + u".kivo.json"_s, itemSidecar(item, snapshot));
    }
    for (const LibraryItem &item : snapshot.items) {
        if (item.filePath)
            continue;
        const QString folder = item.deletedAt ? u"_Trash"_s : LibraryLocation::monthFolderName(item.addedAt);
        const QString folderPath = items + u'/' + folder;
        if (!QDir().mkpath(folderPath))
            throw LibraryError(u"Could not create the folder "_s + folderPath);
        const QString stem = claimStem(usedStems[folder], LibraryLocation::slug(item.title, item.id));
        writeFile(folderPath + u'/' + stem + u".kivo.json"_s, itemSidecar(item, snapshot));
    }
    writeFile(root + u"/library.kivo.json"_s, manifest(snapshot));
}

} // namespace kivo::Sidecars
