#include "core/store.h"

#include "core/desktop.h"
#include "core/librarylocation.h"
#include "core/systemlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>
#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

/** A name in `folder` that no file has yet: the name itself, else "name (2).ext", "name (3).ext"... */
QString freeName(const QDir &folder, const QString &fileName)
{
    if (!folder.exists(fileName))
        return fileName;
    const QFileInfo info(fileName);
    const QString stem = info.completeBaseName();
    const QString suffix = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
    for (int number = 2;; ++number) {
        const QString candidate = stem + u" ("_s + QString::number(number) + u')' + suffix;
        if (!folder.exists(candidate))
            return candidate;
    }
}

QString countedWords(qsizetype count, const QString &one, const QString &many)
{
    return count == 1 ? one : QString::number(count) + many;
}

} // namespace

void Store::copyItem(const QString &itemId)
{
    if (!m_desktop)
        return;
    const QList<LibraryItem> found = itemsInRowOrder({itemId});
    if (found.isEmpty())
        return;
    const LibraryItem &item = found.first();
    const auto kind = item.itemKind();
    if (kind == ItemKind::image && item.filePath) {
        m_desktop->copyImageFile(LibraryLocation::resolve(*item.filePath));
    } else if (kind == ItemKind::text) {
        m_desktop->copyText(item.note.value_or(QString()));
    } else if (kind == ItemKind::link) {
        m_desktop->copyText(item.sourceURL.value_or(QString()));
    } else if (item.filePath) {
        // A video or another file goes on the clipboard as the file, which file managers and editors take.
        m_desktop->copyFiles({LibraryLocation::resolve(*item.filePath)});
    } else {
        m_desktop->copyText(item.sourceURL.value_or(QString()));
    }
    showToast(u"Copied"_s, ToastAction::none);
}

void Store::copyLinks(const QStringList &itemIds)
{
    if (!m_desktop)
        return;
    QStringList links;
    for (const LibraryItem &item : itemsInRowOrder(itemIds)) {
        if (item.sourceURL && !item.sourceURL->isEmpty())
            links.append(*item.sourceURL);
    }
    if (links.isEmpty()) {
        showToast(u"No Links to Copy"_s, ToastAction::none);
        return;
    }
    m_desktop->copyText(links.join(u'\n'));
    showToast(countedWords(links.size(), u"Link Copied"_s, u" Links Copied"_s), ToastAction::none);
}

void Store::copyPaths(const QStringList &itemIds)
{
    if (!m_desktop)
        return;
    QStringList paths;
    for (const LibraryItem &item : itemsInRowOrder(itemIds)) {
        if (item.filePath && !item.filePath->isEmpty())
            paths.append(LibraryLocation::resolve(*item.filePath));
    }
    if (paths.isEmpty()) {
        showToast(u"No Files to Copy"_s, ToastAction::none);
        return;
    }
    m_desktop->copyText(paths.join(u'\n'));
    showToast(countedWords(paths.size(), u"Path Copied"_s, u" Paths Copied"_s), ToastAction::none);
}

void Store::revealItems(const QStringList &itemIds)
{
    if (!m_desktop)
        return;
    QStringList paths;
    for (const LibraryItem &item : itemsInRowOrder(itemIds)) {
        if (!item.filePath || item.filePath->isEmpty())
            continue;
        const QString path = LibraryLocation::resolve(*item.filePath);
        if (QFileInfo::exists(path))
            paths.append(path);
    }
    if (paths.isEmpty()) {
        showToast(u"No Files to Reveal"_s, ToastAction::none);
        return;
    }
    m_desktop->revealFiles(paths);
}

void Store::saveToDownloads(const QStringList &itemIds)
{
    if (itemIds.isEmpty()) {
        showToast(u"Nothing to save"_s, ToastAction::none);
        return;
    }
    QStringList sources;
    for (const LibraryItem &item : itemsInRowOrder(itemIds)) {
        if (item.filePath && !item.filePath->isEmpty())
            sources.append(LibraryLocation::resolve(*item.filePath));
    }
    const QString downloads
        = m_desktop ? m_desktop->downloadsFolder() : QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    QPointer<Store> self(this);
    // Files can be large: the copies run on the pool and the answer comes back as a toast.
    m_workers.start([self, sources, downloads] {
        int saved = 0;
        QDir folder(downloads);
        if (!sources.isEmpty() && folder.mkpath(u"."_s)) {
            for (const QString &source : sources) {
                const QString target = folder.filePath(freeName(folder, QFileInfo(source).fileName()));
                if (QFile::copy(source, target))
                    ++saved;
                else
                    systemLog(u"[Store] saveToDownloads failed: could not copy "_s + source + u" to "_s + target);
            }
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, saved] {
                if (!self)
                    return;
                self->showToast(saved == 0 ? u"Nothing to save (links have no file)"_s
                                           : u"Saved "_s + QString::number(saved) + u" to Downloads"_s,
                    ToastAction::none);
            },
            Qt::QueuedConnection);
    });
}

} // namespace kivo
