#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace kivo::test {

/**
 * A private world for one test: its own settings file and its own library folder, both in a
 * temporary directory removed at the end.
 */
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();

    [[nodiscard]] QString path() const { return m_dir.path(); }
    /** The library root used by this sandbox (not created until something creates it). */
    [[nodiscard]] QString libraryRoot() const { return m_dir.path() + QStringLiteral("/Kivo Library"); }
    /** Points the library at another folder of the sandbox. */
    void setLibraryRoot(const QString &root);

private:
    QTemporaryDir m_dir;
};

/** Reads a whole file; empty when missing. */
QByteArray readFile(const QString &path);
/** Writes bytes to a file, making its folders. */
void writeFile(const QString &path, const QByteArray &bytes);

} // namespace kivo::test
