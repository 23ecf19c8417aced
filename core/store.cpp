#include "core/store.h"

#include "core/librarylocation.h"
#include "core/librarypresence.h"
#include "core/mediatypepredicate.h"
#include "core/systemlog.h"

#include <QTimer>

using namespace Qt::StringLiterals;

namespace kivo {

Store::Store(QObject *parent)
    : QObject(parent)
{
}

Store::~Store() = default;

void Store::initialise()
{
    try {
        m_libraryRoot = LibraryLocation::root();
        // Opening creates the file, so a library that vanished would be replaced by an empty one.
        if (LibraryPresence::isMissing(m_libraryRoot))
            throw LibraryError(u"there is no library.sqlite in "_s + m_libraryRoot);
        LibraryLocation::ensureLibrary();
        m_dbQueue = DatabaseQueue::open(LibraryLocation::databasePath());
        LibraryPresence::markOpened();
    } catch (const std::exception &error) {
        m_setupError = u"Could not open the library: "_s + errorText(error);
        systemLog(*m_setupError);
        Q_EMIT setupErrorChanged();
        return;
    }
    ensureInbox();
    retireBoardObjects();
    // The first load runs after the caller has finished starting, so the window appears first.
    QTimer::singleShot(0, this, [this] {
        reloadAll();
        m_didInitialLoad = true;
        Q_EMIT didInitialLoadChanged();
    });
}

void Store::ensureInbox()
{
    if (!m_dbQueue)
        return;
    try {
        m_inboxId = m_dbQueue->write([](Database &db) {
            const QVariant existing = db.fetchScalar(u"SELECT id FROM collection WHERE isInbox = 1 AND deletedAt IS NULL"_s);
            if (existing.isValid())
                return existing.toString();
            LibraryCollection inbox;
            inbox.id = newIdentifier();
            inbox.name = u"Inbox"_s;
            inbox.sortIndex = -1;
            inbox.isInbox = true;
            inbox.createdAt = inbox.modifiedAt = nowSeconds();
            db.insert(inbox);
            return inbox.id;
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] ensureInbox failed: "_s + errorText(error));
    }
}

void Store::retireBoardObjects()
{
    if (!m_dbQueue)
        return;
    try {
        m_dbQueue->write([](Database &db) {
            db.execute(u"UPDATE boardObject SET deletedAt = ?\nWHERE deletedAt IS NULL AND kind IN "
                       "('ink','rect','ellipse','arrow','line','sticky','text')"_s,
                       {nowSeconds()});
        });
    } catch (const std::exception &error) {
        systemLog(u"[Store] retireOrphanedBoardObjects failed: "_s + errorText(error));
    }
}

void Store::reloadAll()
{
    reloadCollections();
}

void Store::reloadCollections()
{
    if (!m_dbQueue)
        return;
    try {
        const auto counts = m_dbQueue->read([this](Database &db) {
            const auto count = [&](const QString &sql, const QVariantList &arguments = {}) {
                return int(db.fetchScalar(sql, arguments).toLongLong());
            };
            return std::array<int, 6>{
                count(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL AND hiddenAt IS NULL"_s),
                m_inboxId ? count(u"SELECT COUNT(*) FROM itemCollection ic JOIN item i ON i.id = ic.itemId "
                                  "AND i.deletedAt IS NULL WHERE ic.collectionId = ?"_s,
                                  {*m_inboxId})
                          : 0,
                count(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL AND favourite = 1"_s),
                count(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL AND kind = 'link'"_s),
                count(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NOT NULL"_s),
                count(u"SELECT COUNT(*) FROM item WHERE deletedAt IS NULL AND hiddenAt IS NOT NULL"_s),
            };
        });
        m_allCount = counts[0];
        m_inboxCount = counts[1];
        m_favouritesCount = counts[2];
        m_linksCount = counts[3];
        m_trashCount = counts[4];
        m_hiddenCount = counts[5];
        Q_EMIT countsChanged();
    } catch (const std::exception &error) {
        systemLog(u"[Store] reloadCollections failed: "_s + errorText(error));
    }
    reloadTypeCounts();
}

void Store::reloadTypeCounts()
{
    if (!m_dbQueue)
        return;
    const QList<MediaTypeFilter> &filters = allMediaTypeFilters();
    QStringList terms;
    for (qsizetype index = 0; index < filters.size(); ++index) {
        terms.append(u"SUM(CASE WHEN "_s + mediaTypePredicate(filters.at(index)) + u" THEN 1 ELSE 0 END) AS c"_s
                     + QString::number(index));
    }
    const QString sql = u"SELECT "_s + terms.join(u", "_s) + u" FROM item i WHERE i.deletedAt IS NULL"_s;
    try {
        const QVariantMap counts = m_dbQueue->read([&](Database &db) {
            QVariantMap byFilter;
            db.forEach(sql, {}, [&](const Row &row) {
                for (qsizetype index = 0; index < filters.size(); ++index)
                    byFilter.insert(rawString(filters.at(index)), int(row.integer(int(index))));
            });
            return byFilter;
        });
        if (counts == m_typeCounts)
            return;
        m_typeCounts = counts;
        Q_EMIT typeCountsChanged();
    } catch (const std::exception &error) {
        systemLog(u"[Store] reloadTypeCounts failed: "_s + errorText(error));
    }
}

} // namespace kivo
