#include "app/demo/demoitems.h"

#include "app/demo/demovocabulary.h"
#include "app/demo/documentmaker.h"
#include "app/demo/filestamp.h"
#include "app/demo/mediaencoder.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace kivo::demo::DemoItems {

namespace {

constexpr double day = 86400;

enum Stream : std::uint64_t { itemStream = 11, contentStream = 12 };

QString kindName(DemoKind kind)
{
    switch (kind) {
    case DemoKind::picture:
        return u"image"_s;
    case DemoKind::video:
    case DemoKind::sound:
        return u"video"_s; // sounds are audiovisual items, told apart by their extension
    case DemoKind::pdf:
    case DemoKind::archive:
        return u"file"_s;
    case DemoKind::link:
        return u"link"_s;
    case DemoKind::note:
        return u"text"_s;
    }
    return u"file"_s;
}

QString colorsJson(const QStringList &colours)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(colours)).toJson(QJsonDocument::Compact));
}

void addTag(ProducedItem &produced, const QString &tagId, const QString &source, double addedAt)
{
    const bool present = std::any_of(produced.tags.cbegin(), produced.tags.cend(), [&](const ItemTag &tag) { return tag.tagId == tagId; });
    if (!present)
        produced.tags.append({produced.item.id, tagId, source, u"accepted"_s, addedAt});
}

void addMembership(ProducedItem &produced, const QString &collectionId, double addedAt)
{
    const bool present = std::any_of(produced.memberships.cbegin(), produced.memberships.cend(),
                                     [&](const ItemCollection &membership) { return membership.collectionId == collectionId; });
    if (!present)
        produced.memberships.append({produced.item.id, collectionId, addedAt});
}

/** Dates, flags, tags and boards: the parts every kind shares. */
void decorate(ProducedItem &produced, const DemoContext &context, DemoRandom &random, DemoKind kind, qint64 index)
{
    LibraryItem &item = produced.item;
    item.addedAt = context.addedAt.at(index);
    item.createdAt = item.addedAt - (random.chance(0.6) ? random.real(0, 400 * day) : 0);
    item.modifiedAt = std::min(context.now, item.addedAt + (random.chance(0.3) ? random.real(0, 60 * day) : 0));
    item.favourite = random.chance(0.06);
    if (random.chance(0.02))
        item.hiddenAt = std::min(context.now, item.addedAt + random.real(0, 30 * day));
    if (random.chance(0.03))
        item.deletedAt = std::min(context.now, item.addedAt + random.real(0, 90 * day));
    if (random.chance(0.07)) {
        item.openCount = random.between(1, 40);
        item.lastOpenedAt = std::min(context.now, item.addedAt + random.real(0, 200 * day));
    }

    for (int i = random.chance(0.4) ? random.between(1, 3) : 0; i > 0; --i)
        addTag(produced, random.pick(context.userTagIds), u"user"_s, item.addedAt + random.real(0, day));
    const bool visual = kind == DemoKind::picture || kind == DemoKind::video;
    for (int i = random.chance(visual ? 0.7 : 0.2) ? random.between(1, 4) : 0; i > 0; --i)
        addTag(produced, random.pick(context.aiTagIds), u"ai"_s, item.addedAt + random.real(0, 600));

    const int boards = random.chance(0.55) ? (random.chance(0.18) ? 2 : 1) : 0;
    for (int i = 0; i < boards && !context.collectionIds.isEmpty(); ++i)
        addMembership(produced, random.pick(context.collectionIds), item.addedAt + random.real(0, 7 * day));
    if (!context.inboxId.isEmpty() && random.chance(0.08))
        addMembership(produced, context.inboxId, item.addedAt);

    // Most of the library has been through enrichment already; the rest is left for the pipeline.
    if (random.chance(0.92))
        item.enrichedAt = std::min(context.now, item.addedAt + random.real(5, 600));
}

void makePicture(ProducedItem &produced, const DemoContext &context, DemoRandom &random, qint64 index)
{
    const qint64 ordinal = context.pictureOrdinal.at(index);
    if (context.pool.isEmpty())
        throw std::runtime_error("no pictures were painted");
    qsizetype chosen = qsizetype(ordinal);
    if (!context.poolPerItem) {
        const std::uint64_t draw = DemoRandom::forPart(context.seed, contentStream, std::uint64_t(ordinal)).next();
        chosen = qsizetype(draw % std::uint64_t(context.pool.size()));
    }
    const Picture *picture = &context.pool.at(chosen);
    LibraryItem &item = produced.item;
    const bool screenshot = picture->style == PictureStyle::screenshot;
    item.title = screenshot ? DemoVocabulary::screenshotTitle(random, item.addedAt) : DemoVocabulary::pictureTitle(random);
    if (!screenshot) {
        const QString source = DemoVocabulary::pictureSource(random);
        if (!source.isEmpty())
            item.sourceURL = source;
    }
    if (random.chance(0.08))
        item.note = DemoVocabulary::sentence(random);
    item.width = picture->size.width();
    item.height = picture->size.height();
    if (item.enrichedAt) {
        item.colors = colorsJson(picture->colors);
        if (!picture->text.isEmpty())
            item.ocrText = picture->text;
    }
    produced.extension = picture->extension;
    produced.bytes = FileStamp::stamped(picture->bytes, "kivo-demo " + item.id.toLatin1(), picture->size);
}

void makeMedia(ProducedItem &produced, const DemoContext &context, DemoRandom &random, DemoKind kind)
{
    LibraryItem &item = produced.item;
    const QString path = context.workFolder + u'/' + item.id;
    EncodedMedia media;
    if (kind == DemoKind::video) {
        produced.extension = random.chance(0.75) ? u"mp4"_s : u"mov"_s;
        const int height = context.light ? 144 : random.pick(QList<int>{180, 240, 360});
        const QSize size = random.chance(0.25) ? QSize(height, height * 16 / 9) : QSize(height * 16 / 9, height);
        media = MediaEncoder::encodeVideo(path + u'.' + produced.extension, produced.extension, size, random.real(2.0, 5.0), random);
        item.title = DemoVocabulary::videoTitle(random);
        item.width = media.size.width();
        item.height = media.size.height();
        if (random.chance(0.3))
            item.sourceURL = u"https://vimeo.com/%1"_s.arg(random.between(100000000, 999999999));
    } else {
        produced.extension = random.pick(MediaEncoder::audioExtensions());
        media = MediaEncoder::encodeAudio(path + u'.' + produced.extension, produced.extension, random.real(2.0, 6.0), random);
        item.title = DemoVocabulary::soundTitle(random);
    }
    item.duration = media.duration;
    produced.readyFile = path + u'.' + produced.extension;
}

void makeContent(ProducedItem &produced, const DemoContext &context, DemoRandom &random, DemoKind kind, qint64 index)
{
    LibraryItem &item = produced.item;
    switch (kind) {
    case DemoKind::picture:
        makePicture(produced, context, random, index);
        break;
    case DemoKind::video:
    case DemoKind::sound:
        makeMedia(produced, context, random, kind);
        break;
    case DemoKind::pdf:
        item.title = DemoVocabulary::documentTitle(random);
        produced.extension = u"pdf"_s;
        produced.bytes = DocumentMaker::pdf(*item.title, random);
        break;
    case DemoKind::archive:
        item.title = DemoVocabulary::documentTitle(random);
        produced.extension = u"zip"_s;
        produced.bytes = DocumentMaker::zipOfNotes(*item.title, random);
        break;
    case DemoKind::link: {
        const DemoLink link = DemoVocabulary::link(random);
        item.sourceURL = link.url;
        item.title = link.title;
        if (random.chance(0.15))
            item.note = DemoVocabulary::sentence(random);
        break;
    }
    case DemoKind::note:
        item.title = DemoVocabulary::noteTitle(random);
        item.note = DemoVocabulary::noteBody(random);
        break;
    }
}

} // namespace

QString contentHash(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

ProducedItem make(const DemoContext &context, qint64 index)
{
    DemoRandom random = DemoRandom::forPart(context.seed ^ context.stream, itemStream, std::uint64_t(index));
    const DemoKind kind = context.kinds.at(index);
    ProducedItem produced;
    LibraryItem &item = produced.item;
    item.id = random.uuid();
    item.kind = kindName(kind);
    decorate(produced, context, random, kind, index);
    try {
        makeContent(produced, context, random, kind, index);
    } catch (const std::exception &error) {
        produced.failure = u"%1 item %2: %3"_s.arg(item.kind, item.id, QString::fromUtf8(error.what()));
        return produced;
    }

    if (!produced.readyFile.isEmpty()) {
        QFile file(produced.readyFile);
        if (!file.open(QIODevice::ReadOnly)) {
            produced.failure = u"cannot read back "_s + produced.readyFile;
            return produced;
        }
        const QByteArray bytes = file.readAll();
        item.fileHash = contentHash(bytes);
        item.fileSize = bytes.size();
    } else if (!produced.extension.isEmpty()) {
        item.fileHash = contentHash(produced.bytes);
        item.fileSize = produced.bytes.size();
    }
    return produced;
}

} // namespace kivo::demo::DemoItems
