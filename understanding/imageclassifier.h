#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

namespace kivo {

/** One label that a classifier sees in a picture, with how sure it is. */
struct ClassifierObservation {
    QString identifier; // e.g. "sea_shore"
    double confidence = 0;
    /** Whether the label reaches a recall of 0.01 at a precision of 0.5 at this confidence. */
    bool meetsRecallAtPrecision = false;
};

/**
 * Says what a picture shows as a few label words, the first source of a picture's automatic tags.
 *
 * The labels come from `observe`; `classify` keeps the believable ones. The classifier that runs
 * on the downloadable AI pack implements `observe`; without the pack there is nothing to observe
 * and the picture simply gets no label tags.
 */
class ImageClassifier
{
public:
    /** Labels with a confidence above this are kept. */
    static constexpr double minimumConfidence = 0.2;
    /** At most this many labels become tags. */
    static constexpr int maximumLabels = 6;

    virtual ~ImageClassifier() = default;

    /** Every label the classifier sees, in its own order; empty when it cannot run. */
    [[nodiscard]] virtual QList<ClassifierObservation> observe(const QImage &image) const = 0;

    /** The tags for a picture: the labels of `observe` that pass `labelTags`. */
    [[nodiscard]] QStringList classify(const QImage &image) const { return labelTags(observe(image)); }

    /**
     * In the given order, the labels above the confidence floor that meet the recall test, the
     * first six of them, with "_" written as a blank.
     */
    [[nodiscard]] static QStringList labelTags(const QList<ClassifierObservation> &observations);
};

/** The classifier while the AI pack is not installed: it sees nothing. */
class AbsentImageClassifier final : public ImageClassifier
{
public:
    [[nodiscard]] QList<ClassifierObservation> observe(const QImage &) const override { return {}; }
};

} // namespace kivo
