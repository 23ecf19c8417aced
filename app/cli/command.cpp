#include "app/cli/command.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace kivo::cli {

int CommandContext::fail(const QString &line) const
{
    err << u"kivo: "_s << line << Qt::endl;
    return 1;
}

int CommandContext::usageError(const QString &line) const
{
    err << u"kivo: "_s << line << Qt::endl;
    return 2;
}

void CommandContext::printJson(const QJsonValue &value) const
{
    QJsonDocument document;
    if (value.isArray())
        document.setArray(value.toArray());
    else
        document.setObject(value.toObject());
    out << QString::fromUtf8(document.toJson(QJsonDocument::Compact)) << Qt::endl;
}

int CommandContext::printItems(const QList<LibraryItem> &items) const
{
    if (json) {
        QJsonArray rows;
        for (const LibraryItem &item : items)
            rows.append(item.toJson());
        printJson(rows);
        return 0;
    }
    for (const LibraryItem &item : items)
        out << item.id << u'\t' << item.kind << u'\t' << itemLabel(item) << u'\n';
    out.flush();
    return 0;
}

QString itemLabel(const LibraryItem &item)
{
    for (const auto &candidate : {item.title, item.sourceURL, item.filePath}) {
        if (candidate && !candidate->trimmed().isEmpty())
            return candidate->simplified();
    }
    return item.id;
}

} // namespace kivo::cli
