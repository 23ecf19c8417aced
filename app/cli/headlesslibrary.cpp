#include "app/cli/headlesslibrary.h"

#include "core/librarylocation.h"
#include "core/librarypresence.h"
#include "core/systemlog.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace kivo::cli {

std::unique_ptr<HeadlessLibrary> HeadlessLibrary::open(QString *failure)
{
    const QString root = LibraryLocation::root();
    const QFileInfo folder(root);
    if (!folder.exists()) {
        *failure = u"cannot open the library at %1: the folder does not exist"_s.arg(root);
        return nullptr;
    }
    if (!folder.isDir()) {
        *failure = u"cannot open the library at %1: it is not a folder"_s.arg(root);
        return nullptr;
    }
    if (!QFileInfo::exists(root + u"/library.sqlite"_s)) {
        *failure = u"cannot open the library at %1: there is no library.sqlite in it"_s.arg(root);
        return nullptr;
    }
    std::unique_ptr<HeadlessLibrary> library(new HeadlessLibrary);
    library->m_root = root;
    QString refusal;
    library->m_lock = LibraryLock::acquire(root, &refusal);
    if (!library->m_lock) {
        *failure = refusal;
        return nullptr;
    }
    try {
        library->m_queue = DatabaseQueue::open(root + u"/library.sqlite"_s);
    } catch (const std::exception &error) {
        *failure = u"cannot open the library at %1: %2"_s.arg(root, errorText(error));
        return nullptr;
    }
    LibraryPresence::markOpened();
    return library;
}

} // namespace kivo::cli
