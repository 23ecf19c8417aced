#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>

namespace kivo {

/** A failure to make or reach the library folder. */
class LibraryError : public std::runtime_error
{
public:
    explicit LibraryError(const QString &message)
        : std::runtime_error(message.toStdString())
    {
    }
};

/** Where a new stored file goes: its full path, and the path kept in `item.filePath`. */
struct NewFileLocation {
    QString absolutePath;
    QString relativePath;
};

/**
 * Where the library folder is and how paths inside it are made. Every piece of code that needs
 * a library file goes through these functions; nobody builds a library path by hand.
 */
namespace LibraryLocation {

/** Takes the process's arguments once; `--library PATH` overrides every other choice. */
void setArguments(const QStringList &arguments);
/** The path after `--library`, when it is there, not empty and not another switch; tilde expanded. */
[[nodiscard]] std::optional<QString> commandLineOverride(const QStringList &arguments);

[[nodiscard]] QString expandTilde(const QString &path);
/** The user's Pictures folder, or "Pictures" in the home folder. */
[[nodiscard]] QString picturesFolder();
/** The library root: the override, else `libraryPath`, else "Kivo Library" in Pictures. */
[[nodiscard]] QString root();
[[nodiscard]] QString databasePath();
/** Whether the library has the browsable ("items") layout rather than the older ("files") one. */
[[nodiscard]] bool isReorganised();
/** Root plus "items" in the browsable layout, plus "files" in the older one. */
[[nodiscard]] QString itemFolder();
[[nodiscard]] QString itemFolder(const QString &root, bool reorganised);
/** The one way from a row's `filePath` to a file. */
[[nodiscard]] QString resolve(const QString &filePath);

/** The month folder of a time: "yyyy-MM" in local time. */
[[nodiscard]] QString monthFolderName(double addedAt);
/** A file name made from a title: lower-case letters and digits joined by single hyphens, at most 60. */
[[nodiscard]] QString slug(const std::optional<QString> &stem, const QString &fallbackId);
/** Makes the folders and picks a free name for a new stored file, in the current layout. */
[[nodiscard]] NewFileLocation newFileLocation(const QString &id, const std::optional<QString> &stem,
                                              const QString &extension, double addedAt);
[[nodiscard]] NewFileLocation newFileLocation(const QString &itemFolder, bool reorganised, const QString &id,
                                              const std::optional<QString> &stem, const QString &extension,
                                              double addedAt);

/** Moves a legacy library into place and creates the root and the item folder. Throws LibraryError. */
void ensureLibrary();

/** Forgets what was computed once per process; tests only. */
void resetForTesting();

} // namespace LibraryLocation
} // namespace kivo
