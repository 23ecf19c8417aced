#include "understanding/imageclassifier.h"

using namespace Qt::StringLiterals;

namespace kivo {

QStringList ImageClassifier::labelTags(const QList<ClassifierObservation> &observations)
{
    QStringList tags;
    for (const ClassifierObservation &observation : observations) {
        if (tags.size() >= maximumLabels)
            break;
        if (observation.confidence > minimumConfidence && observation.meetsRecallAtPrecision)
            tags.append(QString(observation.identifier).replace(u'_', u' '));
    }
    return tags;
}

} // namespace kivo
