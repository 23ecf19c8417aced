#include "surfaces/gate/librarygate.h"

#include "core/librarylocation.h"
#include "core/librarypresence.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace kivo {

LibraryGate::LibraryGate(const QString &root, QObject *parent)
    : QObject(parent)
    , m_root(root)
{
}

QString LibraryGate::missingTitle() const
{
    return LibraryPresence::missingTitle();
}

QString LibraryGate::missingText() const
{
    return LibraryPresence::missingText(m_root);
}

QStringList LibraryGate::choices() const
{
    return LibraryPresence::missingChoices();
}

QString LibraryGate::chooserTitle() const
{
    return LibraryPresence::chooserTitle();
}

QString LibraryGate::chooserMessage() const
{
    return LibraryPresence::chooserMessage();
}

QString LibraryGate::chooserPrompt() const
{
    return LibraryPresence::chooserPrompt();
}

QString LibraryGate::startFolder() const
{
    return QFileInfo(QDir::cleanPath(m_root)).absolutePath();
}

void LibraryGate::answerAlert(int index)
{
    // The order of `choices`: "Choose Library…", "Quit", "Start a New Library".
    switch (index) {
    case 0:
        chooseLibrary();
        break;
    case 1:
        quit();
        break;
    case 2:
        startNewLibrary();
        break;
    default:
        break;
    }
}

void LibraryGate::chooseLibrary()
{
    if (m_stage == Stage::Missing)
        setStage(Stage::Choosing);
}

void LibraryGate::choose(const QString &folder)
{
    if (m_stage != Stage::Choosing)
        return;
    QString path = folder.trimmed();
    if (path.startsWith(u"file:"))
        path = QUrl(path).toLocalFile();
    if (path.isEmpty())
        return;
    // A typed relative path means the same folder everywhere later, so it is stored absolute.
    path = QFileInfo(LibraryLocation::expandTilde(path)).absoluteFilePath();
    const LibraryPresence::Relocation answer = LibraryPresence::relocate(path);
    if (answer.accepted) {
        finish(Outcome::Relocated);
        return;
    }
    m_refusalTitle = answer.refusalTitle;
    m_refusalText = answer.refusalText;
    setStage(Stage::Refused);
}

void LibraryGate::cancelChoice()
{
    if (m_stage == Stage::Choosing)
        setStage(Stage::Missing);
}

void LibraryGate::dismissRefusal()
{
    if (m_stage == Stage::Refused)
        setStage(Stage::Missing);
}

void LibraryGate::quit()
{
    finish(Outcome::Quit);
}

void LibraryGate::startNewLibrary()
{
    if (m_stage != Stage::Missing)
        return;
    LibraryPresence::startNewLibrary();
    finish(Outcome::StartNew);
}

QString LibraryGate::pathFromUrl(const QUrl &url) const
{
    return url.isLocalFile() ? QDir::toNativeSeparators(url.toLocalFile()) : url.toString();
}

void LibraryGate::setStage(Stage stage)
{
    if (m_stage == stage)
        return;
    m_stage = stage;
    Q_EMIT stageChanged();
}

void LibraryGate::finish(Outcome outcome)
{
    if (m_stage == Stage::Done)
        return;
    m_outcome = outcome;
    setStage(Stage::Done);
    Q_EMIT finished(outcome);
}

} // namespace kivo
