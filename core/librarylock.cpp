#include "core/librarylock.h"

#include <QByteArray>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kivo {

namespace {

struct flock wholeFile(short type)
{
    struct flock region {};
    region.l_type = type;
    region.l_whence = SEEK_SET;
    region.l_start = 0;
    region.l_len = 0;
    return region;
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
    // A process-owned (not open-file) lock, so that the kernel can name its owner here.
    struct flock probe = wholeFile(F_WRLCK);
    qint64 pid = 0;
    if (::fcntl(descriptor, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK)
        pid = probe.l_pid;
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
    if (::fcntl(descriptor, F_SETLK, &region) != 0) {
        const int error = errno;
        struct flock probe = wholeFile(F_WRLCK);
        qint64 pid = 0;
        if (::fcntl(descriptor, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK)
            pid = probe.l_pid;
        ::close(descriptor);
        if (refusal) {
            if (error == EACCES || error == EAGAIN)
                *refusal = u"The library at %1 is already open in another Kivo process (pid %2)."_s.arg(root, QString::number(pid));
            else
                *refusal = u"Cannot lock the library at %1: %2"_s.arg(root, QString::fromLocal8Bit(std::strerror(error)));
        }
        return nullptr;
    }
    // The pid inside is for people looking at the folder; the kernel's record is what counts.
    const QByteArray pid = QByteArray::number(qint64(::getpid())) + '\n';
    if (::ftruncate(descriptor, 0) == 0)
        (void)::pwrite(descriptor, pid.constData(), size_t(pid.size()), 0);
    return std::unique_ptr<LibraryLock>(new LibraryLock(descriptor));
}

} // namespace kivo
