// The one-time upgrades that bring an older library up to what item reading produces now. Each
// is guarded by a flag in the user defaults, per machine; an upgrade that finds no library open
// leaves its flag unset and runs again at the next launch.

#include "understanding/enrichment/enrichmentservice.h"

#include "core/backgroundpriority.h"
#include "core/database.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"
#include "understanding/colorpalette.h"

#include <QTimer>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** Older libraries' automatic tags were proposals; they are accepted this long after the start. */
constexpr std::chrono::milliseconds acceptTagsDelay{2000};
constexpr int paletteSize = 5;

const QString untaggedPicturesQuery
    = u"SELECT i.id FROM item i\n"
      "WHERE i.deletedAt IS NULL AND i.filePath IS NOT NULL AND i.kind IN ('image', 'video')\n"
      "  AND NOT EXISTS (SELECT 1 FROM itemTag it WHERE it.itemId = i.id)\n"
      "ORDER BY i.addedAt DESC"_s;
const QString untaggedLinksQuery = u"SELECT i.id FROM item i\n"
                                   "WHERE i.deletedAt IS NULL AND i.kind = 'link'\n"
                                   "  AND NOT EXISTS (SELECT 1 FROM itemTag it WHERE it.itemId = i.id)\n"
                                   "ORDER BY i.addedAt DESC"_s;

bool flagSet(QLatin1StringView flag)
{
    return UserDefaults().boolValue(QString(flag));
}

void setFlag(QLatin1StringView flag)
{
    UserDefaults defaults;
    defaults.setValue(QString(flag), true);
    defaults.sync();
}

} // namespace

void EnrichmentService::runBackfills()
{
    if (!flagSet(coloursReextractedFlag)) {
        m_upgrades.start([this] {
            lowerCurrentThreadPriority();
            reextractColours();
        });
    }
    if (!flagSet(autoTaggedAllFlag)) {
        m_upgrades.start([this] {
            lowerCurrentThreadPriority();
            queueUntagged(autoTaggedAllFlag, untaggedPicturesQuery);
        });
    }
    if (!flagSet(autoTaggedLinksFlag)) {
        m_upgrades.start([this] {
            lowerCurrentThreadPriority();
            queueUntagged(autoTaggedLinksFlag, untaggedLinksQuery);
        });
    }
    if (!flagSet(acceptedAITagFlag)) {
        setFlag(acceptedAITagFlag);
        QTimer::singleShot(acceptTagsDelay, this, [this] { acceptSuggestedTags(); });
    }
}

void EnrichmentService::reextractColours()
{
    const Library current = library();
    if (!current.db)
        return;
    QList<LibraryItem> items;
    try {
        items = current.db->read([](Database &db) {
            return db.fetchAll<LibraryItem>(u"SELECT * FROM item WHERE deletedAt IS NULL AND colors IS NOT NULL"_s);
        });
    } catch (const std::exception &) {
        // A failed fetch counts as an empty library: there is nothing to upgrade.
    }
    for (const LibraryItem &item : std::as_const(items)) {
        if (m_stopping)
            return; // unfinished: the flag stays unset and the next launch goes on
        if (!item.filePath)
            continue;
        const QImage picture
            = ItemEnricher::analysisPicture(item, ItemEnricher::resolve(current.root, *item.filePath), current.hooks);
        if (picture.isNull())
            continue;
        const std::optional<QString> colors
            = ColorPalette::encodePalette(ColorPalette::extractPalette(picture, paletteSize));
        if (!colors)
            continue;
        try {
            current.db->write([&](Database &db) {
                db.execute(u"UPDATE item SET colors = ? WHERE id = ?"_s, {*colors, item.id});
            });
        } catch (const std::exception &) {
            // One row that cannot be written keeps its old palette.
        }
    }
    setFlag(coloursReextractedFlag);
    Q_EMIT backfillFinished(QString(coloursReextractedFlag));
}

void EnrichmentService::queueUntagged(QLatin1StringView flag, const QString &sql)
{
    const std::shared_ptr<DatabaseQueue> db = library().db;
    if (!db)
        return;
    QVariantList ids;
    try {
        ids = db->read([&](Database &database) { return database.fetchScalars(sql); });
    } catch (const std::exception &) {
        // A failed query counts as nothing untagged; the flag is set all the same.
    }
    for (const QVariant &id : std::as_const(ids))
        enqueue(id.toString());
    setFlag(flag);
    Q_EMIT backfillFinished(QString(flag));
}

void EnrichmentService::acceptSuggestedTags()
{
    const std::shared_ptr<DatabaseQueue> db = library().db;
    if (!db)
        return;
    try {
        db->write([](Database &database) {
            database.execute(u"UPDATE itemTag SET status = 'accepted' WHERE source = 'ai' AND status = 'suggested'"_s);
        });
    } catch (const std::exception &) {
        // Dropped: the flag stays set, and the tags stay proposals.
    }
    Q_EMIT backfillFinished(QString(acceptedAITagFlag));
}

} // namespace kivo
