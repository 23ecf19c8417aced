#pragma once

#include "app/platform/filemanagerreveal.h"
#include "core/desktop.h"

#include <QDBusConnection>
#include <QObject>

namespace kivo {

/**
 * The Linux desktop behind the Store's "copy", "reveal" and "save" commands: the Qt clipboard, the
 * file manager asked over D-Bus (org.freedesktop.FileManager1.ShowItems, else the folder is
 * opened), the default browser, and the user's Downloads folder.
 */
class SystemDesktop final : public QObject, public Desktop
{
    Q_OBJECT

public:
    explicit SystemDesktop(QDBusConnection bus = QDBusConnection::sessionBus(), QObject *parent = nullptr);

    void copyText(const QString &text) override;
    void copyImageFile(const QString &path) override;
    void copyFiles(const QStringList &paths) override;
    void revealFiles(const QStringList &paths) override;
    void openUrl(const QUrl &url) override;
    [[nodiscard]] QString downloadsFolder() const override;

private:
    FileManagerReveal m_reveal;
};

} // namespace kivo
