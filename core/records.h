#pragma once

#include <QJsonObject>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace kivo {

class Row;
class Statement;

/** The five kinds of thing an item can be; the raw string is stored in `item.kind`. */
enum class ItemKind { image, video, link, text, file };

/** Sidebar kind filters; the raw string builds the "type-" selection key. */
enum class MediaTypeFilter { image, videos, links, documents, tweets, instagram, audio };

/** How a selection is shown. */
enum class ViewMode { cards, list, timeline, canvas };

/** Order of the grid. */
enum class ItemSort { newest, oldest };

/** Order of the sidebar's collection tree. */
enum class CollectionSort { manual, name, recentlyUsed, recentlyCreated };

[[nodiscard]] QString rawString(ItemKind kind);
[[nodiscard]] QString rawString(MediaTypeFilter filter);
[[nodiscard]] QString rawString(ViewMode mode);
[[nodiscard]] QString rawString(ItemSort sort);
[[nodiscard]] QString rawString(CollectionSort sort);

[[nodiscard]] std::optional<ItemKind> itemKindFromRaw(const QString &raw);
[[nodiscard]] std::optional<MediaTypeFilter> mediaTypeFilterFromRaw(const QString &raw);
[[nodiscard]] std::optional<ViewMode> viewModeFromRaw(const QString &raw);
[[nodiscard]] std::optional<ItemSort> itemSortFromRaw(const QString &raw);
[[nodiscard]] std::optional<CollectionSort> collectionSortFromRaw(const QString &raw);

[[nodiscard]] const QList<ItemKind> &allItemKinds();
[[nodiscard]] const QList<MediaTypeFilter> &allMediaTypeFilters();

/** A fresh random identifier: a UUID's canonical text, lower-cased. */
[[nodiscard]] QString newIdentifier();

/** Seconds since 1970 from the wall clock, with fractions. */
[[nodiscard]] double nowSeconds();

/** One saved thing: a row of `item`. */
struct LibraryItem {
    QString id;
    QString kind;
    std::optional<QString> title;
    std::optional<QString> note;
    std::optional<QString> sourceURL;
    std::optional<QString> viaURL;
    std::optional<QString> remoteURL;
    std::optional<QString> filePath;
    std::optional<QString> fileHash;
    std::optional<qint64> fileSize;
    std::optional<double> width;
    std::optional<double> height;
    std::optional<double> duration;
    double createdAt = 0;
    double addedAt = 0;
    double modifiedAt = 0;
    std::optional<double> deletedAt;
    std::optional<double> hiddenAt;
    bool favourite = false;
    std::optional<QString> ocrText;
    std::optional<QString> aiCaption;
    std::optional<QString> colors;
    std::optional<double> enrichedAt;
    qint64 openCount = 0;
    std::optional<double> lastOpenedAt;

    [[nodiscard]] std::optional<ItemKind> itemKind() const { return itemKindFromRaw(kind); }

    static constexpr const char *tableName = "item";
    static const QStringList &primaryKey();
    static LibraryItem fromRow(const Row &row);
    /** Whether `fromRow(row)` would give this very item, found without making one. */
    [[nodiscard]] bool isReadFrom(const Row &row) const;
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const LibraryItem &) const = default;
};

/** A board or folder of items: a row of `collection`. */
struct LibraryCollection {
    QString id;
    std::optional<QString> parentId;
    QString name;
    std::optional<QString> icon;
    qint64 sortIndex = 0;
    bool isInbox = false;
    double createdAt = 0;
    double modifiedAt = 0;
    std::optional<double> deletedAt;
    std::optional<double> importedAt;
    std::optional<double> pinnedAt;

    static constexpr const char *tableName = "collection";
    static const QStringList &primaryKey();
    static LibraryCollection fromRow(const Row &row);
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const LibraryCollection &) const = default;
};

/** A tag name, unique without regard to case. */
struct Tag {
    QString id;
    QString name;

    static constexpr const char *tableName = "tag";
    static const QStringList &primaryKey();
    static Tag fromRow(const Row &row);
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const Tag &) const = default;
};

/** A tag on an item, with who put it there and whether it is accepted. */
struct ItemTag {
    QString itemId;
    QString tagId;
    QString source;
    QString status;
    double addedAt = 0;

    static constexpr const char *tableName = "itemTag";
    static const QStringList &primaryKey();
    static ItemTag fromRow(const Row &row);
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const ItemTag &) const = default;
};

/** Membership of an item in a collection. */
struct ItemCollection {
    QString itemId;
    QString collectionId;
    double addedAt = 0;

    static constexpr const char *tableName = "itemCollection";
    static const QStringList &primaryKey();
    static ItemCollection fromRow(const Row &row);
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const ItemCollection &) const = default;
};

/** An item's place on one board. */
struct CanvasPosition {
    QString itemId;
    QString collectionKey;
    double x = 0;
    double y = 0;
    double scale = 1.0;
    qint64 z = 0;

    static constexpr const char *tableName = "canvasPosition";
    static const QStringList &primaryKey();
    static CanvasPosition fromRow(const Row &row);
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const CanvasPosition &) const = default;
};

/** A free shape, note or stroke on a board. */
struct BoardObject {
    QString id;
    QString collectionKey;
    QString kind;
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    double rotation = 0;
    QString zIndex;
    std::optional<QString> fill;
    std::optional<QString> stroke;
    double strokeWidth = 2;
    double opacity = 1;
    std::optional<QString> text;
    std::optional<QString> props;
    std::optional<QByteArray> points;
    double minX = 0;
    double minY = 0;
    double maxX = 0;
    double maxY = 0;
    double createdAt = 0;
    double updatedAt = 0;
    std::optional<double> deletedAt;

    static constexpr const char *tableName = "boardObject";
    static const QStringList &primaryKey();
    static BoardObject fromRow(const Row &row);
    [[nodiscard]] QVariantMap columns() const;
    [[nodiscard]] QJsonObject toJson() const;
    bool operator==(const BoardObject &) const = default;
};

/** One row of an item's tag list, read from `itemTag` joined with `tag`. */
struct TagInfo {
    QString tagId;
    QString name;
    QString source;
    QString status;

    static TagInfo fromRow(const Row &row);
    bool operator==(const TagInfo &) const = default;
};

} // namespace kivo

Q_DECLARE_METATYPE(kivo::LibraryItem)
Q_DECLARE_METATYPE(kivo::LibraryCollection)
