#include "app/platform/filemanagerreveal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLoggingCategory>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcReveal, "kivo.app.reveal", QtWarningMsg)

namespace kivo {

FileManagerReveal::FileManagerReveal(const QDBusConnection &bus, FolderOpener openFolder, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_openFolder(openFolder ? std::move(openFolder)
                              : FolderOpener([](const QUrl &folder) { QDesktopServices::openUrl(folder); }))
{
}

void FileManagerReveal::reveal(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    QStringList uris;
    for (const QString &path : paths)
        uris.append(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s,
        u"/org/freedesktop/FileManager1"_s, u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    call << uris << QString();
    if (!m_bus.isConnected()) {
        openFolders(paths);
        return;
    }
    // A file manager started by D-Bus activation may take a few seconds to answer the first time.
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, 10000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, paths] {
        watcher->deleteLater();
        const QDBusPendingReply<> reply = *watcher;
        if (!reply.isError()) {
            Q_EMIT finished(true);
            return;
        }
        qCInfo(lcReveal) << "no file manager took ShowItems:" << reply.error().message();
        openFolders(paths);
    });
}

void FileManagerReveal::openFolders(const QStringList &paths)
{
    QStringList folders;
    for (const QString &path : paths) {
        const QString folder = QFileInfo(path).absolutePath();
        if (!folders.contains(folder))
            folders.append(folder);
    }
    for (const QString &folder : std::as_const(folders))
        m_openFolder(QUrl::fromLocalFile(folder));
    Q_EMIT finished(false);
}

} // namespace kivo
