#pragma once

#include "core/records.h"

#include <QImage>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <optional>

namespace kivo {

class DatabaseQueue;
class ImageClassifier;
class ImageEmbedder;

/** The parts of item reading that come from elsewhere, each optional. */
struct EnrichmentHooks {
    /** Names what a picture shows; none, or one without the AI pack, names nothing. */
    std::shared_ptr<const ImageClassifier> classifier;
    /** Makes the item's image vector once it is read; none until the AI pack exists. */
    std::shared_ptr<ImageEmbedder> embedder;
    /**
     * Tags from the cloud for a picture, when the user turned them on and gave a key: a list
     * (even an empty one) replaces the classifier's tags; nothing leaves them standing.
     */
    std::function<std::optional<QStringList>(const QImage &picture)> cloudTags;
    /**
     * A picture of a file that is not an image (a video's representative frame, a document's
     * first page) with a longest side of about `maxSide`; null when the file has none.
     */
    std::function<QImage(const QString &path, int maxSide)> framePicture;
};

/**
 * Reads one item so that search finds it: the text in its picture, its palette, tags (the
 * classifier's, else the word for its main colour), a title from its content when the old one says
 * nothing, all written in one transaction; for a link, word tags from its own text. Safe to run
 * for several items at once; it keeps no state between items.
 */
class ItemEnricher
{
public:
    /** How one item ended. */
    enum class Outcome {
        read, ///< a picture or frame was read and written
        linkTagged, ///< a link got its word tags
        unreadable, ///< no decoder read the file: tagged with its kind and never tried again
        passed, ///< nothing to do: no library, no such live item, or no file
        failed, ///< an error was logged; the item stays pending
    };

    /** `vision` runs text recognition and classification beside the palette; its threads keep their engines. */
    ItemEnricher(std::shared_ptr<DatabaseQueue> db, QString libraryRoot, EnrichmentHooks hooks, QThreadPool &vision);

    /** Reads and writes one item; logs its own failures ("[Enrichment] failed for ..."). */
    Outcome enrich(const QString &itemId);

    /**
     * The bitmap every analysis of an item shares, decoded once: a picture upright with a longest
     * side of at most 1024 pixels, any other kind through `framePicture`.
     */
    [[nodiscard]] static QImage analysisPicture(
        const LibraryItem &item, const QString &path, const EnrichmentHooks &hooks);

    /** The full path of a stored file in the library at `libraryRoot`, in its current layout. */
    [[nodiscard]] static QString resolve(const QString &libraryRoot, const QString &filePath);

private:
    Outcome tagLink(const LibraryItem &item);
    Outcome markUnreadable(const LibraryItem &item);
    Outcome readPicture(const LibraryItem &item, const QImage &picture);

    std::shared_ptr<DatabaseQueue> m_db;
    QString m_libraryRoot;
    EnrichmentHooks m_hooks;
    QThreadPool &m_vision;
};

} // namespace kivo
