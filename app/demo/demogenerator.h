#pragma once

#include <QHash>
#include <QString>

#include <cstdint>
#include <functional>

namespace kivo {

class DatabaseQueue;

namespace demo {

/** How much to make, and how. */
struct DemoOptions {
    qint64 items = 0;
    std::uint64_t seed = 1;
    /** Smaller pictures (96-360 px) and a larger pool, for libraries of a million items. */
    bool light = false;
    /** Worker threads for painting and encoding; 0 means one per core. */
    int threads = 0;
    /** The end of the two years the items were added in, in seconds since 1970; 0 means now. */
    double now = 0;
};

/** What a run made. */
struct DemoReport {
    QHash<QString, qint64> itemsByKind; // "image", "video", "link", "text", "file"
    qint64 files = 0;
    qint64 bytes = 0;
    qint64 picturesPainted = 0;
    qint64 collectionsMade = 0;
    qint64 tagsUsed = 0;
    double seconds = 0;
};

/**
 * Fills a library with realistic content for screenshots, manual testing and performance work:
 * pictures of every shape and colour (a pool painted in parallel and reused with a unique stamp,
 * so every file has its own hash), short real videos and sounds, PDFs and archives, links on many
 * sites, notes, nested boards, tags, favourites, hidden and trashed items over two years. Rows go
 * through the database queue in large batches; files go where new files of that library go.
 */
class DemoGenerator
{
public:
    using Progress = std::function<void(const QString &line)>;

    /** `root` must be a library in the browsable layout, open through `queue` and locked by the caller. */
    DemoGenerator(DatabaseQueue &queue, const QString &root, const DemoOptions &options, Progress progress);

    /** Makes the items; throws on a failed write, keeping what was written before it. */
    DemoReport run();

private:
    DatabaseQueue &m_queue;
    QString m_root;
    DemoOptions m_options;
    Progress m_progress;
};

} // namespace demo
} // namespace kivo
