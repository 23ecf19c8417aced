#pragma once

#include "core/records.h"
#include "core/store.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace kivo {

/**
 * What the details panel shows of one item, read from the Store and kept current across its
 * reloads, and the edits it makes: the title and the note (saved when the field is left), tags
 * (added in their normal form, removed, a suggestion accepted), and the collections the item is in.
 */
class DetailsController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kivo::Store *store READ store WRITE setStore NOTIFY storeChanged)
    /** The item shown; empty for none. */
    Q_PROPERTY(QString itemId READ itemId WRITE setItemId NOTIFY itemIdChanged)
    /** Whether the item could be read (it exists, trashed or not). */
    Q_PROPERTY(bool available READ available NOTIFY changed)
    /** The stored title, empty when it has none. */
    Q_PROPERTY(QString title READ title NOTIFY changed)
    /** What stands in for a missing title: the file's name, else the link's host. */
    Q_PROPERTY(QString fallbackTitle READ fallbackTitle NOTIFY changed)
    Q_PROPERTY(QString note READ note NOTIFY changed)
    /** "image", "video", "link", "text" or "file". */
    Q_PROPERTY(QString kind READ kind NOTIFY changed)
    /** The kind for people: "Image", "Video", "Link", "Note", "File". */
    Q_PROPERTY(QString kindText READ kindText NOTIFY changed)
    Q_PROPERTY(QString sourceUrl READ sourceUrl NOTIFY changed)
    /** The source address shortened for reading: host and path, without the scheme or "www.". */
    Q_PROPERTY(QString sourceText READ sourceText NOTIFY changed)
    /** The stored file's full path, empty without one. */
    Q_PROPERTY(QString filePath READ filePath NOTIFY changed)
    /** "2.4 MB"; empty when unknown. */
    Q_PROPERTY(QString sizeText READ sizeText NOTIFY changed)
    /** "1920 × 1080"; empty when unknown. */
    Q_PROPERTY(QString dimensionsText READ dimensionsText NOTIFY changed)
    /** A video's length, "1:05" or "1:02:03"; empty when unknown. */
    Q_PROPERTY(QString durationText READ durationText NOTIFY changed)
    Q_PROPERTY(QString addedText READ addedText NOTIFY changed)
    Q_PROPERTY(QString createdText READ createdText NOTIFY changed)
    Q_PROPERTY(QString modifiedText READ modifiedText NOTIFY changed)
    /** Tags on the item that are the user's or accepted: maps of tagId, name, source, status. */
    Q_PROPERTY(QVariantList tags READ tags NOTIFY changed)
    /** Tags suggested for the item and not yet accepted. */
    Q_PROPERTY(QVariantList suggestedTags READ suggestedTags NOTIFY changed)
    /** The collections holding the item: maps of id, name and path, in sidebar order. */
    Q_PROPERTY(QVariantList collections READ collections NOTIFY changed)

public:
    explicit DetailsController(QObject *parent = nullptr);

    [[nodiscard]] Store *store() const { return m_store; }
    void setStore(Store *store);
    [[nodiscard]] QString itemId() const { return m_itemId; }
    void setItemId(const QString &id);

    [[nodiscard]] bool available() const { return m_item.has_value(); }
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString fallbackTitle() const;
    [[nodiscard]] QString note() const;
    [[nodiscard]] QString kind() const;
    [[nodiscard]] QString kindText() const;
    [[nodiscard]] QString sourceUrl() const;
    [[nodiscard]] QString sourceText() const;
    [[nodiscard]] QString filePath() const;
    [[nodiscard]] QString sizeText() const;
    [[nodiscard]] QString dimensionsText() const;
    [[nodiscard]] QString durationText() const;
    [[nodiscard]] QString addedText() const;
    [[nodiscard]] QString createdText() const;
    [[nodiscard]] QString modifiedText() const;
    [[nodiscard]] QVariantList tags() const { return m_tags; }
    [[nodiscard]] QVariantList suggestedTags() const { return m_suggestedTags; }
    [[nodiscard]] QVariantList collections() const { return m_collections; }

    /** Saves the title when it changed; a blank one is refused and the old one shows again. */
    Q_INVOKABLE bool commitTitle(const QString &text);
    /** Saves the note when it changed; blank clears it. */
    Q_INVOKABLE bool commitNote(const QString &text);
    Q_INVOKABLE bool addTag(const QString &name);
    Q_INVOKABLE bool removeTag(const QString &tagId);
    Q_INVOKABLE bool acceptTag(const QString &tagId);
    /** Tag names in the library that start with `prefix` (any case) and the item lacks, most used first. */
    Q_INVOKABLE QStringList tagCompletions(const QString &prefix, int limit = 6) const;
    /** Collections the item is not in yet: maps of id, name, depth and icon, in sidebar order. */
    Q_INVOKABLE QVariantList collectionChoices() const;
    Q_INVOKABLE bool addToCollection(const QString &collectionId);
    Q_INVOKABLE bool removeFromCollection(const QString &collectionId);

    /** Reads the item again; the Store's reloads call it. */
    Q_INVOKABLE void refresh();

Q_SIGNALS:
    void storeChanged();
    void itemIdChanged();
    void changed();

private:
    [[nodiscard]] static QString dateText(double seconds);

    QPointer<Store> m_store;
    QString m_itemId;
    std::optional<LibraryItem> m_item;
    QVariantList m_tags;
    QVariantList m_suggestedTags;
    QVariantList m_collections;
};

} // namespace kivo
