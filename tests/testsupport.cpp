#include "tests/testsupport.h"

#include "core/librarylocation.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace kivo::test {

Sandbox::Sandbox()
    : m_savedHome(qgetenv("HOME"))
{
    QDir().mkpath(homePath());
    qputenv("HOME", homePath().toLocal8Bit());
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path() + u"/config"_s);
    LibraryLocation::resetForTesting();
    setLibraryRoot(libraryRoot());
}

Sandbox::~Sandbox()
{
    LibraryLocation::resetForTesting();
    qputenv("HOME", m_savedHome);
}

void Sandbox::setLibraryRoot(const QString &root)
{
    UserDefaults defaults;
    defaults.setValue(u"libraryPath"_s, root);
    defaults.sync();
}

LogCapture::LogCapture()
{
    setSystemLogObserver([this](const QString &line) {
        QMutexLocker lock(&m_mutex);
        m_lines.append(line);
    });
}

LogCapture::~LogCapture()
{
    setSystemLogObserver(nullptr);
}

QStringList LogCapture::lines() const
{
    QMutexLocker lock(&m_mutex);
    return m_lines;
}

bool LogCapture::contains(const QString &fragment) const
{
    const QStringList all = lines();
    return std::any_of(all.begin(), all.end(), [&](const QString &line) { return line.contains(fragment); });
}

QStringList LogCapture::linesStartingWith(const QString &prefix) const
{
    QStringList found;
    for (const QString &line : lines()) {
        if (line.startsWith(prefix))
            found.append(line);
    }
    return found;
}

const QStringList &libraryIdentifiers()
{
    static const QStringList identifiers{
        u"v1"_s,
        u"v2-enrichment"_s,
        u"v3-embeddings"_s,
        u"v4-canvas"_s,
        u"v5-sweep-orphans"_s,
        u"v5-collection-origin"_s,
        u"v6-sweep-orphans"_s,
        u"v6-via-and-remote"_s,
        u"v7-sweep-orphans"_s,
        u"v7-pinned"_s,
        u"v8-board-objects"_s,
        u"v9-sweep-orphans"_s,
        u"v9-hidden-from-all"_s,
        u"v10-sweep-orphans"_s,
        u"v10-launcher-frequency"_s,
    };
    return identifiers;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

QMap<QString, QByteArray> treeDigest(const QString &folder)
{
    QMap<QString, QByteArray> digest;
    const QDir base(folder);
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString relative = base.relativeFilePath(path);
        if (it.fileInfo().isDir())
            digest.insert(relative + u'/', {});
        else
            digest.insert(relative, QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha256).toHex());
    }
    return digest;
}

bool copyTree(const QString &source, const QString &target)
{
    if (QFileInfo(source).isDir()) {
        if (!QDir().mkpath(target))
            return false;
        const QDir dir(source);
        for (const QString &entry : dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System)) {
            if (!copyTree(source + u'/' + entry, target + u'/' + entry))
                return false;
        }
        return true;
    }
    return QFile::copy(source, target);
}

} // namespace kivo::test
