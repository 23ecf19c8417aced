#include "ingest/bridge/bridgemessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

std::optional<QJsonObject> objectOf(const QByteArray &body)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

/**
 * Reads an optional text field into `target`. A missing key or null leaves it empty; a value of
 * another type makes the whole body bad, as the extension never sends one.
 */
bool readText(const QJsonObject &object, const QString &key, QString &target)
{
    const QJsonValue value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return true;
    if (!value.isString())
        return false;
    target = value.toString();
    return true;
}

QByteArray compact(const QJsonObject &object)
{
    // Serialising a document built here cannot fail, so the "{}" fallback is never needed.
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

std::optional<ClipRequest> ClipRequest::fromBody(const QByteArray &body)
{
    const std::optional<QJsonObject> object = objectOf(body);
    if (!object)
        return std::nullopt;
    const QJsonValue items = object->value(u"items"_s);
    if (!items.isArray() || items.toArray().isEmpty())
        return std::nullopt;

    ClipRequest request;
    for (const QJsonValue &entry : items.toArray()) {
        if (!entry.isObject())
            return std::nullopt;
        const QJsonObject fields = entry.toObject();
        ClipItem item;
        const bool readable = readText(fields, u"type"_s, item.type) && readText(fields, u"url"_s, item.url)
            && readText(fields, u"sourceURL"_s, item.sourceURL) && readText(fields, u"title"_s, item.title)
            && readText(fields, u"text"_s, item.text) && readText(fields, u"preview"_s, item.preview)
            && readText(fields, u"displaySrc"_s, item.displaySrc)
            && readText(fields, u"posterFrame"_s, item.posterFrame);
        if (!readable)
            return std::nullopt;
        request.items.append(item);
    }
    QString target;
    if (!readText(*object, u"target"_s, target))
        return std::nullopt;
    request.toInbox = target == u"inbox"_s;
    const QJsonValue collection = object->value(u"collectionId"_s);
    if (collection.isString())
        request.collectionId = collection.toString();
    else if (!collection.isUndefined() && !collection.isNull())
        return std::nullopt;
    return request;
}

std::optional<CaptureRequest> CaptureRequest::fromBody(const QByteArray &body)
{
    const std::optional<QJsonObject> object = objectOf(body);
    if (!object || !object->value(u"type"_s).isString())
        return std::nullopt;
    CaptureRequest request;
    const bool readable = readText(*object, u"type"_s, request.type) && readText(*object, u"url"_s, request.url)
        && readText(*object, u"sourceURL"_s, request.sourceURL) && readText(*object, u"title"_s, request.title)
        && readText(*object, u"text"_s, request.text);
    if (!readable)
        return std::nullopt;
    return request;
}

bool clipModeEndsSession(const QByteArray &body)
{
    const std::optional<QJsonObject> object = objectOf(body);
    if (!object)
        return false;
    const QJsonValue active = object->value(u"active"_s);
    return active.isBool() && !active.toBool();
}

QByteArray ClipperConfig::toJson() const
{
    QJsonArray mods;
    if (shift)
        mods.append(u"shift"_s);
    if (alt)
        mods.append(u"alt"_s);
    if (ctrl)
        mods.append(u"ctrl"_s);
    if (meta)
        mods.append(u"meta"_s);
    return compact({{u"key"_s, key}, {u"mods"_s, mods}, {u"optionHold"_s, optionHold}});
}

QByteArray ShortcutSheet::toJson() const
{
    const QJsonObject dropRing{
        {u"requiresModifier"_s, dropRingRequiresModifier},
        {u"modifier"_s, dropRingModifier},
        {u"browsersOnly"_s, dropRingBrowsersOnly},
    };
    return compact({
        {u"clipper"_s, clipper},
        {u"clipperOptionHold"_s, clipperOptionHold},
        {u"screenshot"_s, screenshot},
        {u"launcher"_s, launcher},
        {u"savePage"_s, savePage},
        {u"shelf"_s, shelf},
        {u"dropRing"_s, dropRing},
    });
}

QByteArray collectionsJson(const QList<CollectionSummary> &collections)
{
    QJsonArray list;
    for (const CollectionSummary &collection : collections)
        list.append(
            QJsonObject{{u"id"_s, collection.id}, {u"name"_s, collection.name}, {u"count"_s, collection.count}});
    return compact({{u"collections"_s, list}});
}

QByteArray clipStateJson(bool active)
{
    return active ? QByteArrayLiteral("{\"active\":true}") : QByteArrayLiteral("{\"active\":false}");
}

} // namespace kivo
