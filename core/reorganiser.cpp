#include "core/reorganiser.h"

#include "core/database.h"
#include "core/librarylocation.h"
#include "core/librarypresence.h"
#include "core/librarysnapshot.h"
#include "core/sidecars.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace kivo::Reorganiser {

namespace {

const QString reorganisedKey = u"libraryReorganised"_s;

QString backupFolder(const QString &root)
{
    return root + u"/.pre-reorganise"_s;
}

void removePath(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink())
        QDir(path).removeRecursively();
    else if (info.exists() || info.isSymLink())
        QFile::remove(path);
}

void copyTree(const QString &source, const QString &target, const std::function<void()> &copiedOne = {})
{
    const QFileInfo info(source);
    if (info.isDir()) {
        if (!QDir().mkpath(target))
            throw LibraryError(u"Could not create "_s + target);
        const QDir dir(source);
        for (const QString &entry : dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System))
            copyTree(source + u'/' + entry, target + u'/' + entry, copiedOne);
        return;
    }
    if (!QFile::copy(source, target))
        throw LibraryError(u"Could not copy "_s + source + u" to "_s + target);
    if (copiedOne)
        copiedOne();
}

QString extensionOf(const QString &path)
{
    const QString name = path.section(u'/', -1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot <= 0 ? QString() : name.mid(dot + 1);
}

void reorganise(const QString &root, const Checkpoint &checkpoint)
{
    const auto reach = [&](const QString &stage) {
        if (checkpoint)
            checkpoint(stage);
    };
    const QString backup = backupFolder(root);
    const QString database = root + u"/library.sqlite"_s;
    const QString files = root + u"/files"_s;
    const QString items = root + u"/items"_s;

    if (!QDir().mkpath(backup))
        throw LibraryError(u"Could not create "_s + backup);
    if (QFileInfo::exists(database))
        copyTree(database, backup + u"/library.sqlite"_s);
    if (QFileInfo::exists(files)) {
        // The copy takes its name only when complete: the rollback puts whatever the backup
        // holds under that name over the live folder, and half a copy must never get there.
        const QString partial = backup + u"/files.partial"_s;
        int copied = 0;
        copyTree(files, partial, [&] {
            if (++copied == 1)
                reach(u"copying"_s);
        });
        if (!QDir().rename(partial, backup + u"/files"_s))
            throw LibraryError(u"Could not complete the copy of "_s + files);
    }
    reach(u"copied"_s);

    QList<std::pair<QString, QString>> newPaths; // item id, new relative path
    {
        // A handle of its own, closed before the move of paths is committed through a second one.
        const auto queue = DatabaseQueue::open(database);
        const LibrarySnapshot snapshot = queue->read([](Database &db) { return LibrarySnapshot::read(db); });

        if (!QDir().mkpath(items))
            throw LibraryError(u"Could not create "_s + items);
        QHash<QString, QSet<QString>> usedNames;
        int moved = 0;
        for (const LibraryItem &item : snapshot.items) {
            const QString folder = item.deletedAt ? u"_Trash"_s : LibraryLocation::monthFolderName(item.addedAt);
            const QString folderPath = items + u'/' + folder;
            if (!QDir().mkpath(folderPath))
                throw LibraryError(u"Could not create "_s + folderPath);
            const QString stem = Sidecars::claimStem(usedNames[folder], LibraryLocation::slug(item.title, item.id));

            LibraryItem written = item;
            if (item.filePath && QFileInfo::exists(files + u'/' + *item.filePath)) {
                const QString extension = extensionOf(*item.filePath);
                const QString fileName = extension.isEmpty() ? stem : stem + u'.' + extension;
                const QString target = folderPath + u'/' + fileName;
                removePath(target);
                if (!QFile::rename(files + u'/' + *item.filePath, target))
                    throw LibraryError(u"Could not move "_s + files + u'/' + *item.filePath + u" to "_s + target);
                written.filePath = folder + u'/' + fileName;
                newPaths.append({item.id, *written.filePath});
                if (++moved == 1)
                    reach(u"moving"_s);
            }
            Sidecars::writeFile(folderPath + u'/' + stem + u".kivo.json"_s, Sidecars::itemSidecar(written, snapshot));
        }
        reach(u"moved"_s);

        queue->write([&](Database &db) {
            for (const auto &[id, path] : std::as_const(newPaths))
                db.execute(u"UPDATE item SET filePath = ? WHERE id = ?"_s, {path, id});
        });
        reach(u"committed"_s);
        Sidecars::writeFile(root + u"/library.kivo.json"_s, Sidecars::manifest(snapshot));
    }
    if (QFileInfo::exists(files) && !QDir(files).removeRecursively())
        throw LibraryError(u"Could not remove "_s + files);
    UserDefaults defaults;
    defaults.setValue(reorganisedKey, true);
    defaults.sync();
    QDir(backup).removeRecursively();
    systemLog(u"[Library] reorganised into the browsable layout"_s);
}

} // namespace

void rollback(const QString &root)
{
    const QString backup = backupFolder(root);
    removePath(root + u"/items"_s);
    removePath(root + u"/library.kivo.json"_s);
    for (const QString &entry : {u"library.sqlite"_s, u"files"_s}) {
        const QString saved = backup + u'/' + entry;
        if (!QFileInfo::exists(saved))
            continue;
        const QString live = root + u'/' + entry;
        removePath(live);
        QDir().rename(saved, live);
    }
    QDir(backup).removeRecursively();
    UserDefaults defaults;
    defaults.setValue(reorganisedKey, false);
    defaults.sync();
}

bool run(const QString &root, const Checkpoint &checkpoint)
{
    const QString backup = backupFolder(root);
    if (QFileInfo::exists(backup)) {
        if (UserDefaults().boolValue(reorganisedKey))
            QDir(backup).removeRecursively();
        else
            rollback(root);
    }
    if (UserDefaults().boolValue(reorganisedKey))
        return true;
    // The run opens (and so would create) the database, then removes "files": never on a library
    // whose database has gone missing.
    if (LibraryPresence::isMissing(root))
        return false;
    try {
        reorganise(root, checkpoint);
        return true;
    } catch (const std::exception &error) {
        rollback(root);
        systemLog(u"[Library] reorganise failed, rolled back (library unchanged): "_s + errorText(error));
        return false;
    }
}

} // namespace kivo::Reorganiser
