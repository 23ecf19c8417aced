#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

namespace kivo {

/**
 * What the Store needs of the desktop to hand items to other programs: the clipboard, the file
 * manager, the browser and the Downloads folder. The application gives the Store its platform
 * implementation; tests give it one that records what was asked.
 */
class Desktop
{
public:
    virtual ~Desktop() = default;

    /** Clears the clipboard and puts plain text on it. */
    virtual void copyText(const QString &text) = 0;
    /** Clears the clipboard and puts the picture stored in this file on it, as an image. */
    virtual void copyImageFile(const QString &path) = 0;
    /** Clears the clipboard and puts these files on it, as a list of file URLs. */
    virtual void copyFiles(const QStringList &paths) = 0;
    /** Shows these files selected in the file manager (or at least opens their folder). */
    virtual void revealFiles(const QStringList &paths) = 0;
    /** Opens an address with the program the desktop picks for it. */
    virtual void openUrl(const QUrl &url) = 0;
    /** The user's Downloads folder, where "save to Downloads" puts copies. */
    [[nodiscard]] virtual QString downloadsFolder() const = 0;
};

} // namespace kivo
