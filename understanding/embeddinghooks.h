#pragma once

#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace kivo {

class DatabaseQueue;

/** One item near a query vector: the dot product of two unit vectors, so their cosine. */
struct Hit {
    QString itemId;
    float score = 0;
};

/**
 * What enrichment asks of the on-device image embeddings once an item is read: whether the AI
 * pack is ready, and to make and store one item's vector. Until the pack exists there is no
 * embedder and items simply go without a vector; the embeddings' own backfill catches them later.
 */
class ImageEmbedder
{
public:
    virtual ~ImageEmbedder() = default;
    /** Whether the model pack is ready; safe from any thread. */
    [[nodiscard]] virtual bool isReady() const = 0;
    /** Makes and stores the vector of one item's file; blocks, called on the enrichment thread. */
    virtual void embed(const QString &itemId, const QString &filePath, const std::shared_ptr<DatabaseQueue> &db) = 0;
};

/**
 * What the library search asks of the embeddings for its meaning list: the typed text as a
 * vector, and the pictures nearest to it.
 */
class MeaningIndex
{
public:
    virtual ~MeaningIndex() = default;
    /** Whether the model pack is ready; safe from any thread. */
    [[nodiscard]] virtual bool isReady() const = 0;
    /** The text's unit-length vector; nothing when the text tower gives none. Blocks: off the main thread. */
    [[nodiscard]] virtual std::optional<QList<float>> embedding(const QString &text) = 0;
    /** The `k` stored vectors nearest to `vector`, best first. Blocks: off the main thread. */
    [[nodiscard]] virtual QList<Hit> topK(const QList<float> &vector, int k, DatabaseQueue &db) = 0;
};

} // namespace kivo
