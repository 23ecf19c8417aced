#pragma once

#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace kivo::test {

/**
 * A private world for one test: its own settings file, home folder and library folder, all in a
 * temporary directory removed at the end, so that nothing reaches the real Pictures folder.
 */
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();

    [[nodiscard]] QString path() const { return m_dir.path(); }
    /** The home folder seen by the code under test ("Pictures" lives in it). */
    [[nodiscard]] QString homePath() const { return m_dir.path() + QStringLiteral("/home"); }
    /** The library root used by this sandbox (not created until something creates it). */
    [[nodiscard]] QString libraryRoot() const { return m_dir.path() + QStringLiteral("/Kivo Library"); }
    /** Points the library at another folder of the sandbox. */
    void setLibraryRoot(const QString &root);

private:
    QTemporaryDir m_dir;
    QByteArray m_savedHome;
};

/** Collects the system log lines written while it lives. */
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    [[nodiscard]] QStringList lines() const;
    /** The lines that start with `prefix`. */
    [[nodiscard]] QStringList linesStartingWith(const QString &prefix) const;
    /** Whether any line holds `fragment`. */
    [[nodiscard]] bool contains(const QString &fragment) const;

private:
    mutable QMutex m_mutex;
    QStringList m_lines;
};

/** The fifteen schema step identifiers of a current library, in the order they are applied. */
const QStringList &libraryIdentifiers();

/** Reads a whole file; empty when missing. */
QByteArray readFile(const QString &path);
/** Writes bytes to a file, making its folders. */
void writeFile(const QString &path, const QByteArray &bytes);
/** Every file and folder under `folder` by relative path (folders end in "/"), with a hash of each file's bytes. */
QMap<QString, QByteArray> treeDigest(const QString &folder);
/** Copies a folder with everything in it, hidden entries included. */
bool copyTree(const QString &source, const QString &target);

} // namespace kivo::test
