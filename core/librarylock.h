#pragma once

#include <QString>

#include <memory>

namespace kivo {

/**
 * Keeps a library to one Kivo process. An advisory lock on ".kivo.lock" beside library.sqlite is
 * held for the life of the process; the kernel drops it when the process ends, crash or not.
 */
class LibraryLock
{
public:
    ~LibraryLock();
    LibraryLock(const LibraryLock &) = delete;
    LibraryLock &operator=(const LibraryLock &) = delete;

    /** Takes the lock of the library at `root`, or returns null and a one-line reason. */
    static std::unique_ptr<LibraryLock> acquire(const QString &root, QString *refusal);

    /** The process id holding the lock of the library at `root`, or 0 when it is free. */
    static qint64 holder(const QString &root);

    [[nodiscard]] static QString lockPath(const QString &root);

private:
    explicit LibraryLock(int descriptor);
    int m_descriptor;
};

} // namespace kivo
