#include "core/librarylock.h"

#include <QByteArray>
#include <QThread>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

// Open-file-description locks belong to one opening of the file, not to the process: closing
// another descriptor of the same file (a probe) cannot drop them, and a second acquire in the
// same process is refused like any other. The kernel does not name their owner, so the holder
// writes its pid into the file.
struct flock wholeFile(short type)
{
    struct flock region {};
    region.l_type = type;
    region.l_whence = SEEK_SET;
    region.l_start = 0;
    region.l_len = 0;
    region.l_pid = 0;
    return region;
}

bool isLockedByOther(int descriptor)
{
    struct flock probe = wholeFile(F_WRLCK);
    return ::fcntl(descriptor, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
}

// The pid the holder wrote. It writes it just after taking the lock, so wait a moment for it.
qint64 writtenPid(int descriptor)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        char buffer[32] = {};
        const ssize_t length = ::pread(descriptor, buffer, sizeof buffer - 1, 0);
        const qint64 pid = length > 0 ? QByteArray(buffer, int(length)).trimmed().toLongLong() : 0;
        if (pid > 0)
            return pid;
        QThread::msleep(10);
    }
    return 0;
}

} // namespace

QString LibraryLock::lockPath(const QString &root)
{
    return root + u"/.kivo.lock"_s;
}

LibraryLock::LibraryLock(int descriptor)
    : m_descriptor(descriptor)
{
}

LibraryLock::~LibraryLock()
{
    // Closing the descriptor releases the lock; the file stays, empty of meaning.
    ::close(m_descriptor);
}

qint64 LibraryLock::holder(const QString &root)
{
    const int descriptor = ::open(lockPath(root).toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return 0;
    const qint64 pid = isLockedByOther(descriptor) ? writtenPid(descriptor) : 0;
    ::close(descriptor);
    return pid;
}

std::unique_ptr<LibraryLock> LibraryLock::acquire(const QString &root, QString *refusal)
{
    const QString path = lockPath(root);
    const int descriptor = ::open(path.toLocal8Bit().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        if (refusal)
            *refusal = u"Cannot open the library at %1: %2"_s.arg(root, QString::fromLocal8Bit(std::strerror(errno)));
        return nullptr;
    }
    struct flock region = wholeFile(F_WRLCK);
    if (::fcntl(descriptor, F_OFD_SETLK, &region) != 0) {
        const int error = errno;
        const qint64 pid = (error == EACCES || error == EAGAIN) ? writtenPid(descriptor) : 0;
        ::close(descriptor);
        if (refusal) {
            if (error == EACCES || error == EAGAIN)
                *refusal = u"The library at %1 is already open in another Kivo process (pid %2)."_s.arg(root, QString::number(pid));
            else
                *refusal = u"Cannot lock the library at %1: %2"_s.arg(root, QString::fromLocal8Bit(std::strerror(error)));
        }
        return nullptr;
    }
    const QByteArray pid = QByteArray::number(qint64(::getpid())) + '\n';
    if (::ftruncate(descriptor, 0) == 0)
        (void)::pwrite(descriptor, pid.constData(), size_t(pid.size()), 0);
    return std::unique_ptr<LibraryLock>(new LibraryLock(descriptor));
}

} // namespace kivo
