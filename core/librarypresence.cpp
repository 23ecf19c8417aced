#include "core/librarypresence.h"

#include "core/librarylocation.h"
#include "core/systemlog.h"
#include "core/userdefaults.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace kivo::LibraryPresence {

QString verdictName(Verdict verdict)
{
    switch (verdict) {
    case Verdict::ready:
        return u"ready"_s;
    case Verdict::firstRun:
        return u"firstRun"_s;
    case Verdict::missing:
        return u"missing"_s;
    }
    return {};
}

Verdict check()
{
    UserDefaults defaults;
    const QString root = LibraryLocation::root();
    const bool everOpened = defaults.boolValue(u"libraryEverOpened"_s);
    Verdict verdict = Verdict::firstRun;
    if (QFileInfo::exists(root + u"/library.sqlite"_s))
        verdict = Verdict::ready;
    else if (everOpened)
        verdict = Verdict::missing;
    systemLog(u"[LibraryPresence] %1 at %2 (everOpened=%3)"_s.arg(verdictName(verdict), root, everOpened ? u"1"_s : u"0"_s));
    if (verdict == Verdict::ready)
        defaults.setValue(u"libraryEverOpened"_s, true);
    else if (verdict == Verdict::firstRun)
        defaults.setValue(u"pendingOnboarding"_s, true);
    return verdict;
}

QString missingTitle()
{
    return u"Kivo can’t find your library"_s;
}

QString missingText(const QString &root)
{
    return u"It should be here:\n\n"_s + root
        + u"\n\nIf you moved or renamed the folder, choose where it is now. If it lives on a drive that isn’t plugged in, "
          "plug it in and choose it, or quit and open Kivo again later.\n\nNothing has been deleted, and Kivo won’t start "
          "a new library unless you ask it to."_s;
}

QStringList missingChoices()
{
    return {u"Choose Library…"_s, u"Quit"_s, u"Start a New Library"_s};
}

QString chooserTitle()
{
    return u"Choose Your Kivo Library"_s;
}

QString chooserMessage()
{
    return u"Select the Kivo Library folder - the one containing library.sqlite."_s;
}

QString chooserPrompt()
{
    return u"Choose"_s;
}

Relocation relocate(const QString &folder)
{
    const QString cleaned = QDir::cleanPath(LibraryLocation::expandTilde(folder));
    if (!QFileInfo::exists(cleaned + u"/library.sqlite"_s)) {
        return {false, u"That folder isn’t a Kivo library"_s,
                QFileInfo(cleaned).fileName()
                    + u" has no library.sqlite in it. Look for the folder called “Kivo Library”, or the one you renamed it to."_s};
    }
    UserDefaults defaults;
    defaults.setValue(u"libraryPath"_s, cleaned);
    defaults.setValue(u"libraryEverOpened"_s, true);
    systemLog(u"[Library] relocated to %1"_s.arg(cleaned));
    return {true, {}, {}};
}

void startNewLibrary()
{
    UserDefaults().setValue(u"libraryEverOpened"_s, false);
}

bool isMissing(const QString &root)
{
    return !QFileInfo::exists(root + u"/library.sqlite"_s) && UserDefaults().boolValue(u"libraryEverOpened"_s);
}

void markOpened()
{
    UserDefaults().setValue(u"libraryEverOpened"_s, true);
}

} // namespace kivo::LibraryPresence
