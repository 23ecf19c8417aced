#include "understanding/enrichment/itemenricher.h"

#include "core/backgroundpriority.h"
#include "core/database.h"
#include "core/librarylocation.h"
#include "core/systemlog.h"
#include "understanding/analysisimage.h"
#include "understanding/autotagger.h"
#include "understanding/colorpalette.h"
#include "understanding/embeddinghooks.h"
#include "understanding/imageclassifier.h"
#include "understanding/itemtitles.h"
#include "understanding/textrecognizer.h"

#include <QFuture>
#include <QtConcurrent>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** How many colours a stored palette holds. */
constexpr int paletteSize = 5;

const QString markSql = u"UPDATE item SET enrichedAt = ?, modifiedAt = ? WHERE id = ?"_s;

void logFailure(const QString &itemId, const std::exception &error)
{
    systemLog(u"[Enrichment] failed for "_s + itemId + u": "_s + errorText(error));
}

} // namespace

ItemEnricher::ItemEnricher(
    std::shared_ptr<DatabaseQueue> db, QString libraryRoot, EnrichmentHooks hooks, QThreadPool &vision)
    : m_db(std::move(db)), m_libraryRoot(std::move(libraryRoot)), m_hooks(std::move(hooks)), m_vision(vision)
{
}

QString ItemEnricher::resolve(const QString &libraryRoot, const QString &filePath)
{
    return LibraryLocation::itemFolder(libraryRoot, LibraryLocation::isReorganised()) + u'/' + filePath;
}

QImage ItemEnricher::analysisPicture(const LibraryItem &item, const QString &path, const EnrichmentHooks &hooks)
{
    if (item.kind == u"image")
        return AnalysisImage::decode(path, AnalysisImage::maxPixelSize);
    return hooks.framePicture ? hooks.framePicture(path, AnalysisImage::maxPixelSize) : QImage();
}

ItemEnricher::Outcome ItemEnricher::enrich(const QString &itemId)
{
    if (!m_db)
        return Outcome::passed;
    std::optional<LibraryItem> item;
    try {
        // A trashed item reads as missing: it is not worth reading any more.
        item = m_db->read([&](Database &db) {
            return db.fetchOne<LibraryItem>(u"SELECT * FROM item WHERE id = ? AND deletedAt IS NULL"_s, {itemId});
        });
    } catch (const std::exception &error) {
        logFailure(itemId, error);
        return Outcome::failed;
    }
    if (!item)
        return Outcome::passed;
    if (item->kind == u"link")
        return tagLink(*item);
    if (!item->filePath)
        return Outcome::passed;
    // Without a frame source, videos and documents stay pending rather than being marked
    // unreadable, so they are read once there is one.
    if (item->kind != u"image" && !m_hooks.framePicture)
        return Outcome::passed;
    const QImage picture = analysisPicture(*item, resolve(m_libraryRoot, *item->filePath), m_hooks);
    if (picture.isNull())
        return markUnreadable(*item);
    return readPicture(*item, picture);
}

ItemEnricher::Outcome ItemEnricher::tagLink(const LibraryItem &item)
{
    const QStringList tags = AutoTagger::linkTags(item.title, item.note, item.sourceURL);
    try {
        m_db->write([&](Database &db) {
            const double now = nowSeconds();
            for (const QString &tag : tags)
                AutoTagger::applyTag(db, item.id, tag, now);
            db.execute(markSql, {now, now, item.id});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Enrichment] link tag failed for "_s + item.id + u": "_s + errorText(error));
        return Outcome::failed;
    }
    return Outcome::linkTagged;
}

ItemEnricher::Outcome ItemEnricher::markUnreadable(const LibraryItem &item)
{
    try {
        m_db->write([&](Database &db) { AutoTagger::applyTag(db, item.id, item.kind, nowSeconds()); });
    } catch (const std::exception &) {
        // The tag is a courtesy; the mark below is what keeps a broken file from being tried again.
    }
    try {
        m_db->write([&](Database &db) {
            const double now = nowSeconds();
            db.execute(markSql, {now, now, item.id});
        });
    } catch (const std::exception &error) {
        logFailure(item.id, error);
        return Outcome::failed;
    }
    return Outcome::unreadable;
}

ItemEnricher::Outcome ItemEnricher::readPicture(const LibraryItem &item, const QImage &picture)
{
    const std::shared_ptr<const ImageClassifier> classifier = m_hooks.classifier;
    QFuture<QStringList> labels = QtConcurrent::run(&m_vision, [classifier, picture] {
        lowerCurrentThreadPriority();
        return classifier ? classifier->classify(picture) : QStringList();
    });
    QFuture<std::optional<QString>> text = QtConcurrent::run(&m_vision, [picture] {
        lowerCurrentThreadPriority();
        return TextRecognizer::recognizeText(picture);
    });
    const QStringList palette = ColorPalette::extractPalette(picture, paletteSize);
    QStringList tags = labels.result();
    const std::optional<QString> ocrText = text.result();

    if (m_hooks.cloudTags) {
        if (std::optional<QStringList> cloud = m_hooks.cloudTags(picture))
            tags = *cloud;
    }
    tags = AutoTagger::withColourFallback(tags, item.kind, palette);
    const std::optional<QString> title
        = ItemTitles::titleLooksGeneric(item.title) ? ItemTitles::titleFromContent(tags, ocrText) : std::nullopt;

    try {
        m_db->write([&](Database &db) {
            const double now = nowSeconds();
            if (title)
                db.execute(u"UPDATE item SET title = ? WHERE id = ?"_s, {*title, item.id});
            for (const QString &tag : tags)
                AutoTagger::applyTag(db, item.id, tag, now);
            const std::optional<QString> colors = ColorPalette::encodePalette(palette);
            db.execute(u"UPDATE item SET ocrText = ?, colors = ?, enrichedAt = ?, modifiedAt = ? WHERE id = ?"_s,
                {ocrText ? QVariant(*ocrText) : QVariant(), colors ? QVariant(*colors) : QVariant(), now, now,
                    item.id});
        });
    } catch (const std::exception &error) {
        logFailure(item.id, error);
        return Outcome::failed;
    }
    if (m_hooks.embedder && m_hooks.embedder->isReady())
        m_hooks.embedder->embed(item.id, *item.filePath, m_db);
    return Outcome::read;
}

} // namespace kivo
