#pragma once

#include "core/records.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

namespace kivo {

/** A collection picked on the card; `filed` once the item was really put there. No id: a name to create. */
struct ChosenCollection {
    QString id;
    QString name;
    bool filed = false;

    friend bool operator==(const ChosenCollection &, const ChosenCollection &) = default;
};

/** A collection the card can offer: the filing targets, recently used first. */
struct CardCollection {
    QString id;
    QString name;
};

/**
 * The capture card's state and its keyboard: the three fields (title, collection, tags), the
 * collection suggestions under the query with their "create" row, the tags typed so far and the
 * chosen collection. Every key reaches `handleKey` first, so the card needs no text inputs of its
 * own and no key can slip past to another window; the palette sets what Return, finishing and
 * cancelling do.
 */
class CaptureCardModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The capture palette makes the card's model")

    /** "title", "collection" or "tags". */
    Q_PROPERTY(QString focus READ focusName NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(bool titleUntouched READ titleUntouched NOTIFY changed)
    Q_PROPERTY(QString query READ query NOTIFY changed)
    Q_PROPERTY(QString tagDraft READ tagDraft NOTIFY changed)
    Q_PROPERTY(QStringList pendingTags READ pendingTags NOTIFY changed)
    Q_PROPERTY(int highlighted READ highlighted NOTIFY changed)
    /** Rows under the query: maps of `id`, `name` and `create` (true for the row that makes a collection). */
    Q_PROPERTY(QVariantList suggestions READ suggestions NOTIFY changed)
    Q_PROPERTY(bool hasChoice READ hasChoice NOTIFY changed)
    Q_PROPERTY(QString chosenName READ chosenName NOTIFY changed)
    /** True when the chosen collection does not exist yet and is made on finishing. */
    Q_PROPERTY(bool chosenIsNew READ chosenIsNew NOTIFY changed)
    /** True when the card opened on a stored item, or its import has since been bound. */
    Q_PROPERTY(bool bound READ bound NOTIFY changed)
    /** The item's kind ("image", "video", "link", "text") and page, for the preview's caption. */
    Q_PROPERTY(QString kind READ kind NOTIFY changed)
    Q_PROPERTY(QString sourceURL READ sourceURL NOTIFY changed)
    Q_PROPERTY(QString domain READ domain NOTIFY changed)
    Q_PROPERTY(bool hasPreview READ hasPreview NOTIFY changed)
    /** Changes with each new preview, so an image source can ask again. */
    Q_PROPERTY(int previewSerial READ previewSerial NOTIFY changed)

public:
    enum class Field { title, collection, tags };
    Q_ENUM(Field)

    explicit CaptureCardModel(QObject *parent = nullptr);

    /** Starts over on an item (a draft or a stored one). */
    void reset(const LibraryItem &item, const QImage &preview, bool bound);
    /** The stored item replaces the draft; an untouched title takes the stored one when it has one. */
    void bindItem(const LibraryItem &item);
    void setCollections(const QList<CardCollection> &collections);

    /**
     * The card's key handling: true when the key was used. Control, Alt or Super held means the
     * key is not the card's, except Control with Return, which finishes.
     */
    bool handleKey(int key, Qt::KeyboardModifiers modifiers, const QString &text);

    // What the view's clicks do.
    Q_INVOKABLE void setFocusField(const QString &field);
    /** Picks a suggestion row: a collection, or the row that makes one from the query. */
    Q_INVOKABLE void chooseSuggestion(int row);
    /** "Choose a Different Collection": keeps the earlier choice aside and opens the query again. */
    Q_INVOKABLE void chooseDifferentCollection();
    Q_INVOKABLE void removeTag(int index);
    Q_INVOKABLE void finish();
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void submitField();
    /** Adds the tag draft to the tags when it is not blank, and empties it. */
    void commitTagDraft();

    [[nodiscard]] Field focus() const { return m_focus; }
    [[nodiscard]] QString focusName() const;
    [[nodiscard]] QString title() const { return m_title; }
    [[nodiscard]] bool titleUntouched() const { return m_titleUntouched; }
    [[nodiscard]] QString query() const { return m_query; }
    [[nodiscard]] QString tagDraft() const { return m_tagDraft; }
    [[nodiscard]] QStringList pendingTags() const { return m_pendingTags; }
    [[nodiscard]] int highlighted() const { return m_highlighted; }
    [[nodiscard]] QVariantList suggestions() const;
    [[nodiscard]] int suggestionCount() const;
    [[nodiscard]] const std::optional<ChosenCollection> &chosen() const { return m_chosen; }
    void setChosen(const std::optional<ChosenCollection> &chosen);
    [[nodiscard]] const std::optional<ChosenCollection> &displacedChoice() const { return m_displacedChoice; }
    [[nodiscard]] bool hasChoice() const { return m_chosen.has_value(); }
    [[nodiscard]] QString chosenName() const { return m_chosen ? m_chosen->name : QString(); }
    [[nodiscard]] bool chosenIsNew() const { return m_chosen && m_chosen->id.isEmpty(); }
    [[nodiscard]] const LibraryItem &item() const { return m_item; }
    [[nodiscard]] bool bound() const { return m_bound; }
    [[nodiscard]] QString kind() const { return m_item.kind; }
    [[nodiscard]] QString sourceURL() const { return m_item.sourceURL.value_or(QString()); }
    [[nodiscard]] QString domain() const;
    [[nodiscard]] const QImage &preview() const { return m_preview; }
    [[nodiscard]] bool hasPreview() const { return !m_preview.isNull(); }
    [[nodiscard]] int previewSerial() const { return m_previewSerial; }

    std::function<void()> onSubmitField;
    std::function<void()> onFinish;
    std::function<void()> onCancel;

Q_SIGNALS:
    void changed();

private:
    struct Suggestion {
        QString id;
        QString name;
        bool create = false;
    };
    [[nodiscard]] QList<Suggestion> suggestionRows() const;
    void typeCharacter(const QString &text);
    void backspace();
    void moveFocus(int step);

    Field m_focus = Field::title;
    QString m_title;
    QString m_query;
    LibraryItem m_item;
    QImage m_preview;
    int m_previewSerial = 0;
    bool m_bound = false;
    QStringList m_pendingTags;
    std::optional<ChosenCollection> m_chosen;
    QString m_tagDraft;
    int m_highlighted = 0;
    bool m_titleUntouched = true;
    std::optional<ChosenCollection> m_displacedChoice;
    QList<CardCollection> m_collections;
};

} // namespace kivo
