#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace kivo {

/**
 * Shows files selected in the desktop's file manager through the freedesktop.org FileManager1
 * interface, which Nautilus, Dolphin, Nemo, Caja and Thunar answer; where no file manager takes
 * the call, their folders are opened instead. The call is asynchronous, so a file manager that
 * is slow to start never holds up the window.
 */
class FileManagerReveal : public QObject
{
    Q_OBJECT

public:
    using FolderOpener = std::function<void(const QUrl &folder)>;

    /** Calls on `bus`; `openFolder` is the fallback, the desktop's default opener unless a caller gives its own. */
    explicit FileManagerReveal(const QDBusConnection &bus = QDBusConnection::sessionBus(), FolderOpener openFolder = {},
        QObject *parent = nullptr);

    /** Asks the file manager to show these files (absolute paths) selected. */
    void reveal(const QStringList &paths);

Q_SIGNALS:
    /** The request was answered: `shownByFileManager` false when the folders were opened instead. */
    void finished(bool shownByFileManager);

private:
    void openFolders(const QStringList &paths);

    QDBusConnection m_bus;
    FolderOpener m_openFolder;
};

} // namespace kivo
