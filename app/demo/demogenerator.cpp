#include "app/demo/demogenerator.h"

#include "app/demo/demoitems.h"
#include "app/demo/demovocabulary.h"
#include "core/database.h"
#include "core/librarylocation.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFuture>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;

namespace kivo::demo {

namespace {

constexpr qint64 chunkSize = 2000;     // items made in parallel at a time
constexpr qint64 rowsPerWrite = 5000;  // items per database write, with their tags and boards

enum Stream : std::uint64_t { planStream = 1, poolStream = 2, structureStream = 3 };

/**
 * When each item entered the library. More of it is recent, as it is for people who keep using
 * it; and items are stored in the order they came, as in a library that grew over time.
 */
QList<double> planAddedTimes(qint64 count, double now, DemoRandom &random)
{
    constexpr double twoYears = 730 * 86400.0;
    QList<double> times(count);
    for (double &time : times)
        time = now - twoYears * std::pow(random.real(), 1.4) - random.real(0, 3600);
    std::sort(times.begin(), times.end());
    return times;
}

/** How many of each kind: a few real videos and sounds, documents, links and notes, pictures for the rest. */
QList<DemoKind> planKinds(qint64 count, DemoRandom &random)
{
    const auto scaled = [count](qint64 per, qint64 least, qint64 most) {
        return count < least * 10 ? std::min(count / 10, least) : std::clamp(count / per, least, most);
    };
    const qint64 videos = scaled(150, 1, 40);
    const qint64 sounds = scaled(250, 1, 30);
    const qint64 pdfs = scaled(120, 1, 2000);
    const qint64 archives = scaled(300, 1, 800);
    const qint64 links = count * 14 / 100;
    const qint64 notes = count * 7 / 100;
    QList<DemoKind> kinds;
    kinds.reserve(count);
    const auto add = [&](DemoKind kind, qint64 n) { kinds.insert(kinds.size(), std::max<qint64>(0, n), kind); };
    add(DemoKind::video, videos);
    add(DemoKind::sound, sounds);
    add(DemoKind::pdf, pdfs);
    add(DemoKind::archive, archives);
    add(DemoKind::link, links);
    add(DemoKind::note, notes);
    add(DemoKind::picture, count - kinds.size());
    kinds.resize(count);
    for (qint64 i = kinds.size() - 1; i > 0; --i) // Fisher-Yates with the seeded generator
        std::swap(kinds[i], kinds[qsizetype(random.next() % std::uint64_t(i + 1))]);
    return kinds;
}

struct Structure {
    QStringList collectionIds;
    QString inboxId;
    QStringList userTagIds;
    QStringList aiTagIds;
    qint64 collectionsMade = 0;
};

/** The boards (three levels, reused by name when the library has them) and the tags, in one write. */
Structure makeStructure(DatabaseQueue &queue, DemoRandom &random, double now)
{
    return queue.write([&](Database &db) {
        Structure structure;
        const QVariant inbox = db.fetchScalar(u"SELECT id FROM collection WHERE isInbox = 1 AND deletedAt IS NULL"_s);
        if (inbox.isValid()) {
            structure.inboxId = inbox.toString();
        } else {
            LibraryCollection box;
            box.id = random.uuid();
            box.name = u"Inbox"_s;
            box.sortIndex = -1;
            box.isInbox = true;
            box.createdAt = box.modifiedAt = now;
            db.insert(box);
            structure.inboxId = box.id;
        }
        const std::function<void(const QList<CollectionName> &, const std::optional<QString> &)> add =
            [&](const QList<CollectionName> &names, const std::optional<QString> &parent) {
                for (qsizetype i = 0; i < names.size(); ++i) {
                    const CollectionName &name = names.at(i);
                    const QVariant existing = db.fetchScalar(
                        u"SELECT id FROM collection WHERE name = ? AND parentId IS ? AND deletedAt IS NULL AND isInbox = 0"_s,
                        {name.name, parent ? QVariant(*parent) : QVariant()});
                    QString id = existing.toString();
                    if (!existing.isValid()) {
                        LibraryCollection collection;
                        collection.id = id = random.uuid();
                        collection.parentId = parent;
                        collection.name = name.name;
                        if (!name.icon.isEmpty())
                            collection.icon = name.icon;
                        collection.sortIndex = i;
                        collection.createdAt = now - random.real(400, 760) * 86400;
                        collection.modifiedAt = now - random.real(0, 300) * 86400;
                        if (!parent && i < 2)
                            collection.pinnedAt = now - (i + 1) * 86400.0;
                        db.insert(collection);
                        ++structure.collectionsMade;
                    }
                    structure.collectionIds.append(id);
                    add(name.children, id);
                }
            };
        add(DemoVocabulary::collections(), std::nullopt);

        const auto tagIds = [&](const QStringList &names) {
            QStringList ids;
            for (const QString &name : names) {
                db.execute(u"INSERT INTO tag (id, name) VALUES (?, ?)"_s, {random.uuid(), name}); // ignored when present
                ids.append(db.fetchScalar(u"SELECT id FROM tag WHERE name = ?"_s, {name}).toString());
            }
            return ids;
        };
        structure.userTagIds = tagIds(DemoVocabulary::userTags());
        structure.aiTagIds = tagIds(DemoVocabulary::aiTags());
        return structure;
    });
}

/**
 * The stems already taken in each month folder, in lower case. New file locations only avoid the
 * same name with the same extension, and two files that differ only in extension would share one
 * sidecar; a demo library keeps its stems apart.
 */
using StemsByFolder = QHash<QString, QSet<QString>>;

/** The folder of a relative path and its file's stem in lower case. */
std::pair<QString, QString> folderAndStem(const QString &relativePath)
{
    const QString name = relativePath.section(u'/', -1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return {relativePath.section(u'/', 0, -2), (dot > 0 ? name.left(dot) : name).toLower()};
}

NewFileLocation placeFile(const QString &itemFolder, const LibraryItem &item, const QString &extension, StemsByFolder &stems)
{
    std::optional<QString> title = item.title;
    for (int suffix = 2;; ++suffix) {
        const NewFileLocation location = LibraryLocation::newFileLocation(itemFolder, true, item.id, title, extension, item.addedAt);
        const auto [folder, stem] = folderAndStem(location.relativePath);
        QSet<QString> &taken = stems[folder];
        if (!taken.contains(stem)) {
            taken.insert(stem);
            return location;
        }
        title = item.title.value_or(item.id.left(12)) + u' ' + QString::number(suffix);
    }
}

QString formatBytes(qint64 bytes)
{
    if (bytes >= qint64(1) << 30)
        return u"%1 GB"_s.arg(double(bytes) / double(qint64(1) << 30), 0, 'f', 2);
    return u"%1 MB"_s.arg(double(bytes) / double(1 << 20), 0, 'f', 1);
}

/** Waits for a parallel job, reporting its progress every couple of seconds. */
template<typename Future>
void waitReporting(Future &future, const DemoGenerator::Progress &progress, const QString &what)
{
    QElapsedTimer since;
    since.start();
    while (!future.isFinished()) {
        QThread::msleep(50);
        if (since.elapsed() >= 2000) {
            since.restart();
            progress(u"demo: %1 %2/%3"_s.arg(what).arg(future.progressValue()).arg(future.progressMaximum()));
        }
    }
}

} // namespace

DemoGenerator::DemoGenerator(DatabaseQueue &queue, const QString &root, const DemoOptions &options, Progress progress)
    : m_queue(queue)
    , m_root(root)
    , m_options(options)
    , m_progress(std::move(progress))
{
}

DemoReport DemoGenerator::run()
{
    QElapsedTimer clock;
    clock.start();
    DemoReport report;
    // Declared before the pool, whose destructor waits for the workers that read it.
    DemoContext context;
    QThreadPool pool;
    pool.setMaxThreadCount(m_options.threads > 0 ? m_options.threads : QThread::idealThreadCount());

    context.seed = m_options.seed;
    // A second run on the same library must not draw the same ids: the stream follows its size.
    context.stream = std::uint64_t(m_queue.read([](Database &db) { return db.fetchScalar(u"SELECT COUNT(*) FROM item"_s).toLongLong(); }));
    context.now = m_options.now > 0 ? m_options.now : QDateTime::currentMSecsSinceEpoch() / 1000.0;
    context.light = m_options.light;
    context.workFolder = m_root + u"/.demo-work"_s;
    QDir(context.workFolder).removeRecursively();
    if (!QDir().mkpath(context.workFolder))
        throw std::runtime_error("cannot create the work folder " + context.workFolder.toStdString());

    DemoRandom planRandom = DemoRandom::forPart(context.seed ^ context.stream, planStream, 0);
    context.kinds = planKinds(m_options.items, planRandom);
    context.addedAt = planAddedTimes(m_options.items, context.now, planRandom);
    const Structure structure = makeStructure(m_queue, planRandom, context.now);
    context.collectionIds = structure.collectionIds;
    context.inboxId = structure.inboxId;
    context.userTagIds = structure.userTagIds;
    context.aiTagIds = structure.aiTagIds;
    report.collectionsMade = structure.collectionsMade;
    report.tagsUsed = structure.userTagIds.size() + structure.aiTagIds.size();

    // The picture pool: every picture its own when there are few, else a pool reused with stamps.
    qint64 pictures = 0;
    context.pictureOrdinal.resize(context.kinds.size());
    for (qsizetype i = 0; i < context.kinds.size(); ++i)
        context.pictureOrdinal[i] = context.kinds.at(i) == DemoKind::picture ? pictures++ : -1;
    const qint64 ownEach = 2000;
    const qint64 poolSize = pictures <= ownEach ? pictures
                                                : std::min<qint64>(std::max<qint64>(ownEach, pictures / 25), m_options.light ? 16000 : 6000);
    context.poolPerItem = pictures <= ownEach;
    m_progress(u"demo: painting %1 distinct pictures for %2 picture items on %3 threads"_s.arg(poolSize).arg(pictures).arg(pool.maxThreadCount()));
    QList<qint64> poolIndexes(poolSize);
    std::iota(poolIndexes.begin(), poolIndexes.end(), 0);
    const std::uint64_t seed = context.seed ^ context.stream;
    const bool light = m_options.light;
    QFuture<Picture> painting = QtConcurrent::mapped(&pool, poolIndexes, [seed, light](qint64 index) {
        DemoRandom random = DemoRandom::forPart(seed, poolStream, std::uint64_t(index));
        return PicturePainter::make(random, light);
    });
    waitReporting(painting, m_progress, u"pictures painted"_s);
    context.pool = painting.results();
    report.picturesPainted = context.pool.size();

    const QString itemFolder = LibraryLocation::itemFolder(m_root, true);
    StemsByFolder stems;
    const QVariantList storedPaths = m_queue.read([](Database &db) { return db.fetchScalars(u"SELECT filePath FROM item WHERE filePath IS NOT NULL"_s); });
    for (const QVariant &path : storedPaths) {
        const auto [folder, stem] = folderAndStem(path.toString());
        stems[folder].insert(stem);
    }
    QList<ProducedItem> pending;
    const auto flush = [&] {
        if (pending.isEmpty())
            return;
        m_queue.write([&](Database &db) {
            for (const ProducedItem &produced : std::as_const(pending)) {
                db.insert(produced.item);
                for (const ItemTag &tag : produced.tags)
                    db.insert(tag);
                for (const ItemCollection &membership : produced.memberships)
                    db.insert(membership);
            }
        });
        pending.clear();
    };
    const auto produceChunk = [&](qint64 start) {
        QList<qint64> indexes(std::min(chunkSize, m_options.items - start));
        std::iota(indexes.begin(), indexes.end(), start);
        const DemoContext *shared = &context;
        return QtConcurrent::mapped(&pool, indexes, [shared](qint64 index) { return DemoItems::make(*shared, index); });
    };

    QFuture<ProducedItem> next;
    if (m_options.items > 0)
        next = produceChunk(0);
    for (qint64 start = 0; start < m_options.items; start += chunkSize) {
        next.waitForFinished();
        QList<ProducedItem> chunk = next.results();
        // The next chunk is made while this one is written.
        if (start + chunkSize < m_options.items)
            next = produceChunk(start + chunkSize);
        for (ProducedItem &produced : chunk) {
            if (!produced.failure.isEmpty())
                throw std::runtime_error(produced.failure.toStdString());
            if (!produced.extension.isEmpty()) {
                const NewFileLocation location = placeFile(itemFolder, produced.item, produced.extension, stems);
                if (!produced.readyFile.isEmpty()) {
                    if (!QFile::rename(produced.readyFile, location.absolutePath))
                        throw std::runtime_error("cannot move a file to " + location.absolutePath.toStdString());
                } else {
                    QFile file(location.absolutePath);
                    if (!file.open(QIODevice::WriteOnly) || file.write(produced.bytes) != produced.bytes.size())
                        throw std::runtime_error("cannot write " + location.absolutePath.toStdString());
                }
                produced.item.filePath = location.relativePath;
                ++report.files;
                report.bytes += produced.item.fileSize.value_or(0);
                produced.bytes.clear();
            }
            ++report.itemsByKind[produced.item.kind];
            pending.append(std::move(produced));
            if (pending.size() >= rowsPerWrite)
                flush();
        }
        const qint64 done = std::min(m_options.items, start + chunkSize);
        m_progress(u"demo: %1/%2 items, %3 files (%4), %5 s"_s.arg(done).arg(m_options.items).arg(report.files)
                       .arg(formatBytes(report.bytes)).arg(clock.elapsed() / 1000.0, 0, 'f', 1));
    }
    flush();
    QDir(context.workFolder).removeRecursively();
    report.seconds = clock.elapsed() / 1000.0;
    return report;
}

} // namespace kivo::demo
