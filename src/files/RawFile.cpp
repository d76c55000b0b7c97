// POSIX calls rather than QFile: the messages name the platform's error number,
// which QFile does not report, and locking needs the descriptor.
#include "RawFile.h"

#include <QFile>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Closes the descriptor on every path.
class Descriptor
{
public:
    explicit Descriptor(int fd)
        : fd_(fd)
    {
    }
    ~Descriptor()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return fd_; }
    // Closing can report a failed write-back; the caller wants to know.
    int release()
    {
        const int result = ::close(fd_);
        fd_ = -1;
        return result;
    }

private:
    int fd_;
};

QByteArray NativePath(const QString &path)
{
    return QFile::encodeName(path);
}

FileError RequireRegular(int fd)
{
    struct stat info;
    if (::fstat(fd, &info) != 0)
        return ErrorFromErrno(errno);
    if (S_ISDIR(info.st_mode))
        return ErrorFromErrno(EISDIR);
    if (!S_ISREG(info.st_mode))
        return { EINVAL, QStringLiteral("Not a regular file") };
    return {};
}

} // namespace

FileError ErrorFromErrno(int number)
{
    return { number, QString::fromLocal8Bit(std::strerror(number)) };
}

FileError ReadFileStart(const QString &path, qint64 limit, QByteArray &bytes, Lock lock)
{
    bytes.clear();
    if (path.contains(QChar(0)))
        return ErrorFromErrno(ENOENT);
    // Non-blocking, so that a pipe or device dropped in a player's folder
    // cannot hang the game before it is refused as no regular file.
    Descriptor file(::open(NativePath(path).constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (file.get() < 0)
        return ErrorFromErrno(errno);
    if (FileError error = RequireRegular(file.get()))
        return error;
    if (lock == Lock::Exclusive && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return ErrorFromErrno(errno);
    bytes.resize(limit);
    qint64 done = 0;
    while (done < limit) {
        const ssize_t got = ::read(file.get(), bytes.data() + done, size_t(limit - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int number = errno;
            bytes.clear();
            return ErrorFromErrno(number);
        }
        if (got == 0)
            break;
        done += got;
    }
    bytes.truncate(done);
    return {};
}

FileError WriteFileStart(const QString &path, const QByteArray &bytes)
{
    if (path.contains(QChar(0)))
        return ErrorFromErrno(EINVAL);
    const QByteArray native = NativePath(path);
    struct stat before;
    const bool existed = ::lstat(native.constData(), &before) == 0;
    // A link is not followed, so a name in a folder cannot send the write
    // anywhere else.
    Descriptor file(::open(native.constData(),
                           O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW, 0666));
    if (file.get() < 0)
        return ErrorFromErrno(errno);
    if (FileError error = RequireRegular(file.get()))
        return error;
    int failure = 0;
    qint64 done = 0;
    while (done < bytes.size() && failure == 0) {
        const ssize_t put = ::write(file.get(), bytes.constData() + done, size_t(bytes.size() - done));
        if (put < 0 && errno != EINTR)
            failure = errno;
        else if (put > 0)
            done += put;
    }
    if (failure == 0 && ::fsync(file.get()) != 0 && errno != EINVAL)
        failure = errno;
    if (file.release() != 0 && failure == 0)
        failure = errno;
    if (failure != 0 && !existed)
        ::unlink(native.constData());
    return failure ? ErrorFromErrno(failure) : FileError {};
}

FileError ReplaceFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    // In a folder where no temporary file can be made, an existing writable
    // file is still written in place rather than refused.
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly)) {
        const int number = errno ? errno : EIO;
        return { number, file.errorString() };
    }
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        const int number = errno ? errno : EIO;
        const QString reason = file.errorString();
        file.cancelWriting();
        return { number, reason };
    }
    return {};
}
