#include "core/librarylocation.h"

#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QStandardPaths>
#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace kivo::LibraryLocation {

namespace {

const QString libraryFolderName = u"Kivo Library"_s;
const QString legacyFolderName = u"Orvo Library"_s;

// Both values are taken once per process, as the library must not move under a running program.
struct ProcessValues {
    QMutex mutex;
    bool argumentsTaken = false;
    std::optional<QString> override;
    std::optional<QString> pictures;
};

ProcessValues &processValues()
{
    static ProcessValues values;
    return values;
}

QString uniqueName(const QString &folder, const QString &base, const QString &extension)
{
    const QDir dir(folder);
    const auto isFree = [&](const QString &candidate) {
        const QString fileName = extension.isEmpty() ? candidate : candidate + u'.' + extension;
        return !dir.exists(fileName) && !dir.exists(candidate + u".kivo.json"_s);
    };
    if (isFree(base))
        return base;
    for (int suffix = 2;; ++suffix) {
        const QString candidate = base + u'-' + QString::number(suffix);
        if (isFree(candidate))
            return candidate;
    }
}

} // namespace

void setArguments(const QStringList &arguments)
{
    auto &values = processValues();
    QMutexLocker lock(&values.mutex);
    values.override = commandLineOverride(arguments);
    values.argumentsTaken = true;
}

std::optional<QString> commandLineOverride(const QStringList &arguments)
{
    const qsizetype at = arguments.indexOf(u"--library"_s);
    if (at < 0 || at + 1 >= arguments.size())
        return std::nullopt;
    const QString path = arguments.at(at + 1);
    if (path.isEmpty() || path.startsWith(u'-'))
        return std::nullopt;
    return expandTilde(path);
}

QString expandTilde(const QString &path)
{
    if (path == u"~")
        return QDir::homePath();
    if (path.startsWith(u"~/"))
        return QDir::homePath() + path.mid(1);
    return path;
}

QString picturesFolder()
{
    auto &values = processValues();
    QMutexLocker lock(&values.mutex);
    if (!values.pictures) {
        const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        values.pictures = pictures.isEmpty() ? QDir::homePath() + u"/Pictures"_s : pictures;
    }
    return *values.pictures;
}

QString root()
{
    {
        auto &values = processValues();
        QMutexLocker lock(&values.mutex);
        if (!values.argumentsTaken && QCoreApplication::instance()) {
            values.override = commandLineOverride(QCoreApplication::arguments());
            values.argumentsTaken = true;
        }
        if (values.override)
            return *values.override;
    }
    const QString stored = UserDefaults().stringValue(u"libraryPath"_s);
    if (!stored.isEmpty())
        return expandTilde(stored);
    return picturesFolder() + u'/' + libraryFolderName;
}

QString databasePath()
{
    return root() + u"/library.sqlite"_s;
}

bool isReorganised()
{
    return UserDefaults().boolValue(u"libraryReorganised"_s);
}

QString itemFolder(const QString &root, bool reorganised)
{
    return root + (reorganised ? u"/items"_s : u"/files"_s);
}

QString itemFolder()
{
    return itemFolder(root(), isReorganised());
}

QString resolve(const QString &filePath)
{
    return itemFolder() + u'/' + filePath;
}

QString monthFolderName(double addedAt)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(addedAt * 1000.0)).toString(u"yyyy-MM"_s);
}

QString slug(const std::optional<QString> &stem, const QString &fallbackId)
{
    // The walk goes by user-perceived characters, so that a letter written with a combining
    // accent stays one letter and the cut at 60 never splits it.
    QStringList kept;
    if (stem) {
        const QString text = stem->trimmed().toLower();
        QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
        qsizetype start = 0;
        while (characters.toNextBoundary() != -1) {
            const QString character = text.mid(start, characters.position() - start);
            start = characters.position();
            const char32_t first = character.size() > 1 && character.at(0).isHighSurrogate()
                ? QChar::surrogateToUcs4(character.at(0), character.at(1))
                : char32_t(character.at(0).unicode());
            if (QChar::isLetterOrNumber(first))
                kept.append(character);
            else if (!kept.isEmpty() && kept.last() != u"-")
                kept.append(u"-"_s);
        }
        while (!kept.isEmpty() && kept.last() == u"-")
            kept.removeLast();
        if (kept.size() >= 61) {
            kept.resize(60);
            while (!kept.isEmpty() && kept.last() == u"-")
                kept.removeLast();
        }
    }
    if (kept.isEmpty())
        return fallbackId.left(12);
    return kept.join(QString());
}

NewFileLocation newFileLocation(const QString &itemFolder, bool reorganised, const QString &id,
                                const std::optional<QString> &stem, const QString &extension, double addedAt)
{
    if (!reorganised) {
        const QString shard = id.left(2);
        const QString fileName = extension.isEmpty() ? id : id + u'.' + extension;
        if (!QDir().mkpath(itemFolder + u'/' + shard))
            throw LibraryError(u"Could not create the folder "_s + itemFolder + u'/' + shard);
        const QString relative = shard + u'/' + fileName;
        return {itemFolder + u'/' + relative, relative};
    }
    const QString month = monthFolderName(addedAt);
    const QString folder = itemFolder + u'/' + month;
    if (!QDir().mkpath(folder))
        throw LibraryError(u"Could not create the folder "_s + folder);
    const QString name = uniqueName(folder, slug(stem, id), extension);
    const QString fileName = extension.isEmpty() ? name : name + u'.' + extension;
    const QString relative = month + u'/' + fileName;
    return {itemFolder + u'/' + relative, relative};
}

NewFileLocation newFileLocation(const QString &id, const std::optional<QString> &stem, const QString &extension,
                                double addedAt)
{
    const bool reorganised = isReorganised();
    return newFileLocation(itemFolder(root(), reorganised), reorganised, id, stem, extension, addedAt);
}

void ensureLibrary()
{
    const QString pictures = picturesFolder();
    const QString legacy = pictures + u'/' + legacyFolderName;
    const QString target = pictures + u'/' + libraryFolderName;
    if (QFileInfo::exists(legacy) && !QFileInfo::exists(target)) {
        if (QDir().rename(legacy, target))
            systemLog(u"[Library] migrated Orvo Library -> Kivo Library"_s);
        else
            systemLog(u"[Library] legacy migration failed: could not move "_s + legacy + u" to "_s + target);
    }
    const QString libraryRoot = root();
    if (!QDir().mkpath(libraryRoot))
        throw LibraryError(u"Could not create the library folder at "_s + libraryRoot);
    const bool reorganised = isReorganised();
    const QString items = itemFolder(libraryRoot, reorganised);
    if (!QDir().mkpath(items))
        throw LibraryError(u"Could not create the folder "_s + items);
    if (reorganised) {
        QDir oldFiles(libraryRoot + u"/files"_s);
        if (oldFiles.exists() && oldFiles.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System))
            oldFiles.removeRecursively();
    }
}

void resetForTesting()
{
    auto &values = processValues();
    QMutexLocker lock(&values.mutex);
    values.argumentsTaken = false;
    values.override.reset();
    values.pictures.reset();
}

} // namespace kivo::LibraryLocation
