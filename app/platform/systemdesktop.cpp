#include "app/platform/systemdesktop.h"

#include <QClipboard>
#include <QDesktopServices>
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

SystemDesktop::SystemDesktop(QDBusConnection bus, QObject *parent) : QObject(parent), m_reveal(bus)
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
    m_reveal.reveal(paths);
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
