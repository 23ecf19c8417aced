#include "surfaces/details/detailscontroller.h"

#include "core/librarylocation.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace kivo {

DetailsController::DetailsController(QObject *parent) : QObject(parent)
{
}

void DetailsController::setStore(Store *store)
{
    if (m_store == store)
        return;
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    if (m_store) {
        // Renames and notes reload the rows, filing changes the counts; tags only say so.
        connect(m_store, &Store::itemsChanged, this, &DetailsController::refresh);
        connect(m_store, &Store::collectionsChanged, this, &DetailsController::refresh);
        connect(m_store, &Store::countsChanged, this, &DetailsController::refresh);
        connect(m_store, &Store::tagsChanged, this, [this](const QStringList &ids) {
            if (ids.contains(m_itemId))
                refresh();
        });
    }
    Q_EMIT storeChanged();
    refresh();
}

void DetailsController::setItemId(const QString &id)
{
    if (m_itemId == id)
        return;
    m_itemId = id;
    Q_EMIT itemIdChanged();
    refresh();
}

void DetailsController::refresh()
{
    m_item = m_store && !m_itemId.isEmpty() ? m_store->itemById(m_itemId) : std::nullopt;
    m_tags.clear();
    m_suggestedTags.clear();
    m_collections.clear();
    if (m_item) {
        for (const QVariant &tag : m_store->itemTags(m_itemId)) {
            if (tag.toMap().value(u"status"_s).toString() == u"suggested")
                m_suggestedTags.append(tag);
            else
                m_tags.append(tag);
        }
        const QStringList memberOf = m_store->itemCollectionIds(m_itemId);
        if (const auto &inbox = m_store->inboxCollection(); inbox && memberOf.contains(inbox->id))
            m_collections.append(QVariantMap{{u"id"_s, inbox->id}, {u"name"_s, inbox->name}, {u"path"_s, inbox->name}});
        for (const QVariant &choice : m_store->collectionChoices()) {
            const QVariantMap map = choice.toMap();
            if (memberOf.contains(map.value(u"id"_s).toString())) {
                m_collections.append(QVariantMap{{u"id"_s, map.value(u"id"_s)}, {u"name"_s, map.value(u"name"_s)},
                    {u"path"_s, map.value(u"path"_s)}});
            }
        }
    }
    Q_EMIT changed();
}

QString DetailsController::title() const
{
    return m_item ? m_item->title.value_or(QString()) : QString();
}

QString DetailsController::fallbackTitle() const
{
    if (!m_item)
        return {};
    if (m_item->filePath)
        return QFileInfo(*m_item->filePath).fileName();
    if (m_item->sourceURL)
        return QUrl(*m_item->sourceURL).host().remove(QRegularExpression(u"^www\\."_s));
    return kindText();
}

QString DetailsController::note() const
{
    return m_item ? m_item->note.value_or(QString()) : QString();
}

QString DetailsController::kind() const
{
    return m_item ? m_item->kind : QString();
}

QString DetailsController::kindText() const
{
    static const QHash<QString, QString> names{{u"image"_s, u"Image"_s}, {u"video"_s, u"Video"_s},
        {u"link"_s, u"Link"_s}, {u"text"_s, u"Note"_s}, {u"file"_s, u"File"_s}};
    return m_item ? names.value(m_item->kind, u"File"_s) : QString();
}

QString DetailsController::sourceUrl() const
{
    return m_item ? m_item->sourceURL.value_or(QString()) : QString();
}

QString DetailsController::sourceText() const
{
    const QUrl url(sourceUrl());
    if (!url.isValid() || url.host().isEmpty())
        return sourceUrl();
    QString host = url.host();
    if (host.startsWith(u"www."))
        host = host.mid(4);
    const QString path = url.path() == u"/" ? QString() : url.path();
    return host + path;
}

QString DetailsController::filePath() const
{
    return m_item && m_item->filePath ? LibraryLocation::resolve(*m_item->filePath) : QString();
}

QString DetailsController::sizeText() const
{
    if (!m_item || !m_item->fileSize || *m_item->fileSize < 0)
        return {};
    return QLocale().formattedDataSize(*m_item->fileSize, 1, QLocale::DataSizeSIFormat);
}

QString DetailsController::dimensionsText() const
{
    if (!m_item || !m_item->width || !m_item->height || *m_item->width <= 0 || *m_item->height <= 0)
        return {};
    return u"%1 × %2"_s.arg(qRound64(*m_item->width)).arg(qRound64(*m_item->height));
}

QString DetailsController::durationText() const
{
    if (!m_item || !m_item->duration || *m_item->duration <= 0)
        return {};
    const qint64 total = qRound64(*m_item->duration);
    const qint64 hours = total / 3600;
    const qint64 minutes = (total % 3600) / 60;
    const QString seconds = u"%1"_s.arg(total % 60, 2, 10, QChar(u'0'));
    if (hours > 0)
        return u"%1:%2:%3"_s.arg(hours).arg(minutes, 2, 10, QChar(u'0')).arg(seconds);
    return u"%1:%2"_s.arg(minutes).arg(seconds);
}

QString DetailsController::dateText(double seconds)
{
    if (seconds <= 0)
        return {};
    const QDateTime when = QDateTime::fromMSecsSinceEpoch(qRound64(seconds * 1000));
    return QLocale().toString(when, u"d MMM yyyy, h:mm AP"_s);
}

QString DetailsController::addedText() const
{
    return m_item ? dateText(m_item->addedAt) : QString();
}

QString DetailsController::createdText() const
{
    return m_item ? dateText(m_item->createdAt) : QString();
}

QString DetailsController::modifiedText() const
{
    return m_item ? dateText(m_item->modifiedAt) : QString();
}

bool DetailsController::commitTitle(const QString &text)
{
    if (!m_item || text.trimmed() == title().trimmed())
        return false;
    if (!m_store->renameItem(m_itemId, text)) {
        // The field shows the stored title again.
        Q_EMIT changed();
        return false;
    }
    return true;
}

bool DetailsController::commitNote(const QString &text)
{
    if (!m_item || text == note())
        return false;
    return m_store->setNote(m_itemId, text);
}

bool DetailsController::addTag(const QString &name)
{
    return m_item && !Store::normaliseTagName(name).isEmpty() && m_store->addTag({m_itemId}, name);
}

bool DetailsController::removeTag(const QString &tagId)
{
    return m_item && m_store->removeTag(m_itemId, tagId);
}

bool DetailsController::acceptTag(const QString &tagId)
{
    return m_item && m_store->acceptTag(m_itemId, tagId);
}

QStringList DetailsController::tagCompletions(const QString &prefix, int limit) const
{
    if (!m_item)
        return {};
    const QString wanted = Store::normaliseTagName(prefix);
    QStringList present;
    for (const QVariantList *list : {&m_tags, &m_suggestedTags}) {
        for (const QVariant &tag : *list)
            present.append(tag.toMap().value(u"name"_s).toString());
    }
    QStringList names;
    for (const QVariant &tag : m_store->allTags()) {
        const QString name = tag.toMap().value(u"name"_s).toString();
        if (name.startsWith(wanted) && !present.contains(name))
            names.append(name);
        if (names.size() >= limit)
            break;
    }
    return names;
}

QVariantList DetailsController::collectionChoices() const
{
    if (!m_item)
        return {};
    QStringList memberOf;
    for (const QVariant &collection : m_collections)
        memberOf.append(collection.toMap().value(u"id"_s).toString());
    QVariantList choices;
    for (const QVariant &choice : m_store->collectionChoices()) {
        QVariantMap map = choice.toMap();
        const QString id = map.value(u"id"_s).toString();
        if (memberOf.contains(id))
            continue;
        if (map.value(u"icon"_s).toString().isEmpty())
            map.insert(u"icon"_s, m_store->semanticIcon(id).isEmpty() ? u"folder"_s : m_store->semanticIcon(id));
        choices.append(map);
    }
    return choices;
}

bool DetailsController::addToCollection(const QString &collectionId)
{
    return m_item && m_store->fileItem(m_itemId, collectionId);
}

bool DetailsController::removeFromCollection(const QString &collectionId)
{
    return m_item && m_store->removeItemFromCollection(m_itemId, collectionId);
}

} // namespace kivo
