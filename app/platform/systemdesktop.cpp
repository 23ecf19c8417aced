#include "app/platform/systemdesktop.h"

#include <QClipboard>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QMimeData>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

QList<QUrl> fileUrls(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    return urls;
}

} // namespace

SystemDesktop::SystemDesktop(QDBusConnection bus, QObject *parent) : QObject(parent), m_bus(std::move(bus))
{
}

void SystemDesktop::copyText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void SystemDesktop::copyImageFile(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    auto *data = new QMimeData;
    if (!image.isNull())
        data->setImageData(image);
    // The file itself rides along, for programs that take files rather than pictures.
    data->setUrls({QUrl::fromLocalFile(path)});
    QGuiApplication::clipboard()->setMimeData(data);
}

void SystemDesktop::copyFiles(const QStringList &paths)
{
    auto *data = new QMimeData;
    data->setUrls(fileUrls(paths));
    QGuiApplication::clipboard()->setMimeData(data);
}

void SystemDesktop::revealFiles(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    QStringList uris;
    for (const QUrl &url : fileUrls(paths))
        uris.append(url.toString(QUrl::FullyEncoded));
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s,
        u"/org/freedesktop/FileManager1"_s, u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    call.setArguments({uris, QString()});
    if (!m_bus.isConnected()) {
        openFolders(paths);
        return;
    }
    // Asked without waiting; a desktop without the service gets the folders opened instead.
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, paths](QDBusPendingCallWatcher *finished) {
        if (QDBusPendingReply<> reply = *finished; reply.isError())
            openFolders(paths);
        finished->deleteLater();
    });
}

void SystemDesktop::openFolders(const QStringList &paths)
{
    QStringList folders;
    for (const QString &path : paths) {
        const QString folder = QFileInfo(path).absolutePath();
        if (!folders.contains(folder))
            folders.append(folder);
    }
    for (const QString &folder : folders)
        QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

void SystemDesktop::openUrl(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

QString SystemDesktop::downloadsFolder() const
{
    return QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
}

} // namespace kivo
