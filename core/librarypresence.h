#pragma once

#include <QString>

namespace kivo {

/**
 * The first decision of every start: is the library there, is this the first run, or has a
 * library that was opened before gone missing? A missing library is never replaced silently.
 */
namespace LibraryPresence {

enum class Verdict { ready, firstRun, missing };

[[nodiscard]] QString verdictName(Verdict verdict);

/** Decides, logs the decision and records what it implies in the user defaults. */
Verdict check();

/** The words of the missing-library alert. */
[[nodiscard]] QString missingTitle();
[[nodiscard]] QString missingText(const QString &root);
/** Its buttons, in the order shown. */
[[nodiscard]] QStringList missingChoices();

/** The words of the folder chooser that relocates a library. */
[[nodiscard]] QString chooserTitle();
[[nodiscard]] QString chooserMessage();
[[nodiscard]] QString chooserPrompt();

/** The answer to a folder chosen in the relocation dialog. */
struct Relocation {
    bool accepted = false;
    QString refusalTitle;
    QString refusalText;
};

/** Checks a chosen folder; when it holds a library, stores it as the library's place. */
Relocation relocate(const QString &folder);

/** "Start a New Library": forget that a library was ever opened, so the normal start makes one. */
void startNewLibrary();

/**
 * Whether the library at `root` has gone missing: no library.sqlite although a library was opened
 * before. Nothing may create a database there then, until the user starts a new library.
 */
[[nodiscard]] bool isMissing(const QString &root);

/** Records that the library was found or opened. */
void markOpened();

} // namespace LibraryPresence
} // namespace kivo
