#include "surfaces/common/dragpayload.h"

using namespace Qt::StringLiterals;

namespace kivo::DragPayload {

namespace {

const QString itemPrefix = u"KIVO-ITEM "_s;
const QString itemsPrefix = u"KIVO-ITEMS "_s;
const QString collectionPrefix = u"KIVO-COLLECTION "_s;

} // namespace

QString forItems(const QStringList &ids)
{
    if (ids.size() == 1)
        return itemPrefix + ids.constFirst();
    return itemsPrefix + ids.join(u',');
}

QString forCollection(const QString &id)
{
    return collectionPrefix + id;
}

QStringList itemIds(const QString &text)
{
    const QString trimmed = text.trimmed();
    QStringList ids;
    if (trimmed.startsWith(itemsPrefix))
        ids = trimmed.mid(itemsPrefix.size()).split(u',', Qt::SkipEmptyParts);
    else if (trimmed.startsWith(itemPrefix))
        ids = {trimmed.mid(itemPrefix.size())};
    for (QString &id : ids)
        id = id.trimmed();
    ids.removeAll(QString());
    ids.removeDuplicates();
    return ids;
}

QString collectionId(const QString &text)
{
    const QString trimmed = text.trimmed();
    return trimmed.startsWith(collectionPrefix) ? trimmed.mid(collectionPrefix.size()).trimmed() : QString();
}

} // namespace kivo::DragPayload
