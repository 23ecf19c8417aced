#include "core/records.h"

#include "core/database.h"

#include <QDateTime>
#include <QJsonArray>
#include <QUuid>

#include <array>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

template<typename Enum, size_t N>
std::optional<Enum> fromRaw(const QString &raw, const std::array<QString, N> &names)
{
    for (size_t i = 0; i < N; ++i) {
        if (names[i] == raw)
            return Enum(i);
    }
    return std::nullopt;
}

const std::array<QString, 5> itemKindNames{u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s};
const std::array<QString, 7> mediaTypeFilterNames{u"image"_s,     u"videos"_s,    u"links"_s, u"documents"_s,
                                                  u"tweets"_s,    u"instagram"_s, u"audio"_s};
const std::array<QString, 4> viewModeNames{u"cards"_s, u"list"_s, u"timeline"_s, u"canvas"_s};
const std::array<QString, 2> itemSortNames{u"newest"_s, u"oldest"_s};
const std::array<QString, 4> collectionSortNames{u"manual"_s, u"name"_s, u"recentlyUsed"_s, u"recentlyCreated"_s};

template<typename T> QVariant column(const std::optional<T> &value)
{
    return value ? QVariant::fromValue(*value) : QVariant();
}

template<typename T> void putOptional(QJsonObject &json, const QString &key, const std::optional<T> &value)
{
    if (value) {
        if constexpr (std::is_same_v<T, qint64>)
            json.insert(key, double(*value));
        else
            json.insert(key, *value);
    }
}

} // namespace

QString rawString(ItemKind kind) { return itemKindNames[size_t(kind)]; }
QString rawString(MediaTypeFilter filter) { return mediaTypeFilterNames[size_t(filter)]; }
QString rawString(ViewMode mode) { return viewModeNames[size_t(mode)]; }
QString rawString(ItemSort sort) { return itemSortNames[size_t(sort)]; }
QString rawString(CollectionSort sort) { return collectionSortNames[size_t(sort)]; }

std::optional<ItemKind> itemKindFromRaw(const QString &raw) { return fromRaw<ItemKind>(raw, itemKindNames); }
std::optional<MediaTypeFilter> mediaTypeFilterFromRaw(const QString &raw) { return fromRaw<MediaTypeFilter>(raw, mediaTypeFilterNames); }
std::optional<ViewMode> viewModeFromRaw(const QString &raw) { return fromRaw<ViewMode>(raw, viewModeNames); }
std::optional<ItemSort> itemSortFromRaw(const QString &raw) { return fromRaw<ItemSort>(raw, itemSortNames); }
std::optional<CollectionSort> collectionSortFromRaw(const QString &raw) { return fromRaw<CollectionSort>(raw, collectionSortNames); }

const QList<ItemKind> &allItemKinds()
{
    static const QList<ItemKind> kinds{ItemKind::image, ItemKind::video, ItemKind::link, ItemKind::text, ItemKind::file};
    return kinds;
}

const QList<MediaTypeFilter> &allMediaTypeFilters()
{
    static const QList<MediaTypeFilter> filters{MediaTypeFilter::image,  MediaTypeFilter::videos,    MediaTypeFilter::links,
                                                MediaTypeFilter::documents, MediaTypeFilter::tweets, MediaTypeFilter::instagram,
                                                MediaTypeFilter::audio};
    return filters;
}

QString newIdentifier()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toLower();
}

double nowSeconds()
{
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

// ---------------------------------------------------------------------------------------------

const QStringList &LibraryItem::primaryKey()
{
    static const QStringList key{u"id"_s};
    return key;
}

namespace {

/** A row's kind: the known ones share one string each rather than taking an allocation a row. */
QString sharedKind(const Row &row)
{
    static const std::array<std::pair<QByteArrayView, QString>, 5> known{{{"image", u"image"_s},
        {"video", u"video"_s}, {"link", u"link"_s}, {"text", u"text"_s}, {"file", u"file"_s}}};
    const QByteArrayView kind = row.utf8("kind");
    for (const auto &[bytes, shared] : known) {
        if (kind == bytes)
            return shared;
    }
    return row.text("kind");
}

} // namespace

LibraryItem LibraryItem::fromRow(const Row &row)
{
    LibraryItem item;
    item.id = row.text("id");
    item.kind = sharedKind(row);
    item.title = row.optionalText("title");
    item.note = row.optionalText("note");
    item.sourceURL = row.optionalText("sourceURL");
    item.viaURL = row.optionalText("viaURL");
    item.remoteURL = row.optionalText("remoteURL");
    item.filePath = row.optionalText("filePath");
    item.fileHash = row.optionalText("fileHash");
    item.fileSize = row.optionalInteger("fileSize");
    item.width = row.optionalReal("width");
    item.height = row.optionalReal("height");
    item.duration = row.optionalReal("duration");
    item.createdAt = row.real("createdAt");
    item.addedAt = row.real("addedAt");
    item.modifiedAt = row.real("modifiedAt");
    item.deletedAt = row.optionalReal("deletedAt");
    item.hiddenAt = row.optionalReal("hiddenAt");
    item.favourite = row.boolean("favourite");
    item.ocrText = row.optionalText("ocrText");
    item.aiCaption = row.optionalText("aiCaption");
    item.colors = row.optionalText("colors");
    item.enrichedAt = row.optionalReal("enrichedAt");
    item.openCount = row.integer("openCount");
    item.lastOpenedAt = row.optionalReal("lastOpenedAt");
    return item;
}

bool LibraryItem::isReadFrom(const Row &row) const
{
    // The id first: in a list that changed, most rows differ there.
    return row.holds("id", std::optional(id)) && row.holds("kind", std::optional(kind))
        && row.holds("title", title) && row.holds("note", note) && row.holds("sourceURL", sourceURL)
        && row.holds("viaURL", viaURL) && row.holds("remoteURL", remoteURL) && row.holds("filePath", filePath)
        && row.holds("fileHash", fileHash) && row.holds("fileSize", fileSize) && row.holds("width", width)
        && row.holds("height", height) && row.holds("duration", duration)
        && row.holds("createdAt", std::optional(createdAt)) && row.holds("addedAt", std::optional(addedAt))
        && row.holds("modifiedAt", std::optional(modifiedAt)) && row.holds("deletedAt", deletedAt)
        && row.holds("hiddenAt", hiddenAt) && favourite == row.boolean("favourite") && row.holds("ocrText", ocrText)
        && row.holds("aiCaption", aiCaption) && row.holds("colors", colors) && row.holds("enrichedAt", enrichedAt)
        && row.holds("openCount", std::optional(openCount)) && row.holds("lastOpenedAt", lastOpenedAt);
}

QVariantMap LibraryItem::columns() const
{
    return {
        {u"id"_s, id},
        {u"kind"_s, kind},
        {u"title"_s, column(title)},
        {u"note"_s, column(note)},
        {u"sourceURL"_s, column(sourceURL)},
        {u"viaURL"_s, column(viaURL)},
        {u"remoteURL"_s, column(remoteURL)},
        {u"filePath"_s, column(filePath)},
        {u"fileHash"_s, column(fileHash)},
        {u"fileSize"_s, column(fileSize)},
        {u"width"_s, column(width)},
        {u"height"_s, column(height)},
        {u"duration"_s, column(duration)},
        {u"createdAt"_s, createdAt},
        {u"addedAt"_s, addedAt},
        {u"modifiedAt"_s, modifiedAt},
        {u"deletedAt"_s, column(deletedAt)},
        {u"hiddenAt"_s, column(hiddenAt)},
        {u"favourite"_s, favourite},
        {u"ocrText"_s, column(ocrText)},
        {u"aiCaption"_s, column(aiCaption)},
        {u"colors"_s, column(colors)},
        {u"enrichedAt"_s, column(enrichedAt)},
        {u"openCount"_s, openCount},
        {u"lastOpenedAt"_s, column(lastOpenedAt)},
    };
}

QJsonObject LibraryItem::toJson() const
{
    QJsonObject json{{u"id"_s, id}, {u"kind"_s, kind},           {u"createdAt"_s, createdAt}, {u"addedAt"_s, addedAt},
                     {u"modifiedAt"_s, modifiedAt}, {u"favourite"_s, favourite}, {u"openCount"_s, double(openCount)}};
    putOptional(json, u"title"_s, title);
    putOptional(json, u"note"_s, note);
    putOptional(json, u"sourceURL"_s, sourceURL);
    putOptional(json, u"viaURL"_s, viaURL);
    putOptional(json, u"remoteURL"_s, remoteURL);
    putOptional(json, u"filePath"_s, filePath);
    putOptional(json, u"fileHash"_s, fileHash);
    putOptional(json, u"fileSize"_s, fileSize);
    putOptional(json, u"width"_s, width);
    putOptional(json, u"height"_s, height);
    putOptional(json, u"duration"_s, duration);
    putOptional(json, u"deletedAt"_s, deletedAt);
    putOptional(json, u"hiddenAt"_s, hiddenAt);
    putOptional(json, u"ocrText"_s, ocrText);
    putOptional(json, u"aiCaption"_s, aiCaption);
    putOptional(json, u"colors"_s, colors);
    putOptional(json, u"enrichedAt"_s, enrichedAt);
    putOptional(json, u"lastOpenedAt"_s, lastOpenedAt);
    return json;
}

// ---------------------------------------------------------------------------------------------

const QStringList &LibraryCollection::primaryKey()
{
    static const QStringList key{u"id"_s};
    return key;
}

LibraryCollection LibraryCollection::fromRow(const Row &row)
{
    LibraryCollection collection;
    collection.id = row.text("id");
    collection.parentId = row.optionalText("parentId");
    collection.name = row.text("name");
    collection.icon = row.optionalText("icon");
    collection.sortIndex = row.integer("sortIndex");
    collection.isInbox = row.boolean("isInbox");
    collection.createdAt = row.real("createdAt");
    collection.modifiedAt = row.real("modifiedAt");
    collection.deletedAt = row.optionalReal("deletedAt");
    collection.importedAt = row.optionalReal("importedAt");
    collection.pinnedAt = row.optionalReal("pinnedAt");
    return collection;
}

QVariantMap LibraryCollection::columns() const
{
    return {
        {u"id"_s, id},
        {u"parentId"_s, column(parentId)},
        {u"name"_s, name},
        {u"icon"_s, column(icon)},
        {u"sortIndex"_s, sortIndex},
        {u"isInbox"_s, isInbox},
        {u"createdAt"_s, createdAt},
        {u"modifiedAt"_s, modifiedAt},
        {u"deletedAt"_s, column(deletedAt)},
        {u"importedAt"_s, column(importedAt)},
        {u"pinnedAt"_s, column(pinnedAt)},
    };
}

QJsonObject LibraryCollection::toJson() const
{
    QJsonObject json{{u"id"_s, id},           {u"name"_s, name},           {u"sortIndex"_s, double(sortIndex)},
                     {u"isInbox"_s, isInbox}, {u"createdAt"_s, createdAt}, {u"modifiedAt"_s, modifiedAt}};
    putOptional(json, u"parentId"_s, parentId);
    putOptional(json, u"icon"_s, icon);
    putOptional(json, u"deletedAt"_s, deletedAt);
    putOptional(json, u"importedAt"_s, importedAt);
    putOptional(json, u"pinnedAt"_s, pinnedAt);
    return json;
}

// ---------------------------------------------------------------------------------------------

const QStringList &Tag::primaryKey()
{
    static const QStringList key{u"id"_s};
    return key;
}

Tag Tag::fromRow(const Row &row)
{
    return {row.text("id"), row.text("name")};
}

QVariantMap Tag::columns() const
{
    return {{u"id"_s, id}, {u"name"_s, name}};
}

QJsonObject Tag::toJson() const
{
    return {{u"id"_s, id}, {u"name"_s, name}};
}

const QStringList &ItemTag::primaryKey()
{
    static const QStringList key{u"itemId"_s, u"tagId"_s};
    return key;
}

ItemTag ItemTag::fromRow(const Row &row)
{
    return {row.text("itemId"), row.text("tagId"), row.text("source"), row.text("status"), row.real("addedAt")};
}

QVariantMap ItemTag::columns() const
{
    return {{u"itemId"_s, itemId}, {u"tagId"_s, tagId}, {u"source"_s, source}, {u"status"_s, status}, {u"addedAt"_s, addedAt}};
}

QJsonObject ItemTag::toJson() const
{
    return {{u"itemId"_s, itemId}, {u"tagId"_s, tagId}, {u"source"_s, source}, {u"status"_s, status}, {u"addedAt"_s, addedAt}};
}

const QStringList &ItemCollection::primaryKey()
{
    static const QStringList key{u"itemId"_s, u"collectionId"_s};
    return key;
}

ItemCollection ItemCollection::fromRow(const Row &row)
{
    return {row.text("itemId"), row.text("collectionId"), row.real("addedAt")};
}

QVariantMap ItemCollection::columns() const
{
    return {{u"itemId"_s, itemId}, {u"collectionId"_s, collectionId}, {u"addedAt"_s, addedAt}};
}

QJsonObject ItemCollection::toJson() const
{
    return {{u"itemId"_s, itemId}, {u"collectionId"_s, collectionId}, {u"addedAt"_s, addedAt}};
}

const QStringList &CanvasPosition::primaryKey()
{
    static const QStringList key{u"itemId"_s, u"collectionKey"_s};
    return key;
}

CanvasPosition CanvasPosition::fromRow(const Row &row)
{
    return {row.text("itemId"), row.text("collectionKey"), row.real("x"), row.real("y"), row.real("scale"), row.integer("z")};
}

QVariantMap CanvasPosition::columns() const
{
    return {{u"itemId"_s, itemId}, {u"collectionKey"_s, collectionKey}, {u"x"_s, x}, {u"y"_s, y}, {u"scale"_s, scale}, {u"z"_s, z}};
}

QJsonObject CanvasPosition::toJson() const
{
    return {{u"itemId"_s, itemId}, {u"collectionKey"_s, collectionKey}, {u"x"_s, x},
            {u"y"_s, y},           {u"scale"_s, scale},                 {u"z"_s, double(z)}};
}

const QStringList &BoardObject::primaryKey()
{
    static const QStringList key{u"id"_s};
    return key;
}

BoardObject BoardObject::fromRow(const Row &row)
{
    BoardObject object;
    object.id = row.text("id");
    object.collectionKey = row.text("collectionKey");
    object.kind = row.text("kind");
    object.x = row.real("x");
    object.y = row.real("y");
    object.width = row.real("width");
    object.height = row.real("height");
    object.rotation = row.real("rotation");
    object.zIndex = row.text("zIndex");
    object.fill = row.optionalText("fill");
    object.stroke = row.optionalText("stroke");
    object.strokeWidth = row.real("strokeWidth");
    object.opacity = row.real("opacity");
    object.text = row.optionalText("text");
    object.props = row.optionalText("props");
    object.points = row.optionalBlob("points");
    object.minX = row.real("minX");
    object.minY = row.real("minY");
    object.maxX = row.real("maxX");
    object.maxY = row.real("maxY");
    object.createdAt = row.real("createdAt");
    object.updatedAt = row.real("updatedAt");
    object.deletedAt = row.optionalReal("deletedAt");
    return object;
}

QVariantMap BoardObject::columns() const
{
    return {
        {u"id"_s, id},         {u"collectionKey"_s, collectionKey}, {u"kind"_s, kind},
        {u"x"_s, x},           {u"y"_s, y},                         {u"width"_s, width},
        {u"height"_s, height}, {u"rotation"_s, rotation},           {u"zIndex"_s, zIndex},
        {u"fill"_s, column(fill)}, {u"stroke"_s, column(stroke)},   {u"strokeWidth"_s, strokeWidth},
        {u"opacity"_s, opacity}, {u"text"_s, column(text)},         {u"props"_s, column(props)},
        {u"points"_s, column(points)}, {u"minX"_s, minX},           {u"minY"_s, minY},
        {u"maxX"_s, maxX},     {u"maxY"_s, maxY},                   {u"createdAt"_s, createdAt},
        {u"updatedAt"_s, updatedAt}, {u"deletedAt"_s, column(deletedAt)},
    };
}

QJsonObject BoardObject::toJson() const
{
    QJsonObject json;
    const QVariantMap values = columns();
    for (auto it = values.constBegin(); it != values.constEnd(); ++it) {
        if (!it.value().isValid())
            continue;
        if (it.key() == u"points")
            json.insert(it.key(), QString::fromLatin1(it.value().toByteArray().toBase64()));
        else
            json.insert(it.key(), QJsonValue::fromVariant(it.value()));
    }
    return json;
}

TagInfo TagInfo::fromRow(const Row &row)
{
    return {row.text("tagId"), row.text("name"), row.text("source"), row.text("status")};
}

} // namespace kivo
