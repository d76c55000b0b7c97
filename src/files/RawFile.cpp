// POSIX calls rather than QFile: the messages name the platform's error number,
// which QFile does not report, and locking needs the descriptor.
#include "RawFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

// Closes the descriptor on every path.
class Descriptor
{
public:
    explicit Descriptor(int fd)
        : fd_(fd)
    { }
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
        return {EINVAL, QStringLiteral("Not a regular file")};
    return {};
}

// Writes the whole block from the file's current offset; 0 or errno. A
// write that takes nothing and reports nothing would be asked again for
// ever: it is the device's failure.
int WriteAll(int fd, const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (put == 0)
            return EIO;
        if (put < 0 && errno != EINTR)
            return errno;
        if (put > 0)
            done += put;
    }
    return 0;
}

// A file of its own beside `native`, named "<stem>.<pid>-<n>", locked for
// as long as it is open: the name and the lock tell a later start whether
// its writer is gone. -1 and errno when none can be made.
int OpenTemporary(const QByteArray &stem, QByteArray &temporary)
{
    int fd = -1;
    for (int attempt = 0; fd < 0 && attempt < 100; ++attempt) {
        temporary = stem + '.' + QByteArray::number(::getpid()) + '-' + QByteArray::number(attempt);
        fd = ::open(
            temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (fd < 0 && errno != EEXIST)
            break;
    }
    if (fd >= 0)
        ::flock(fd, LOCK_EX | LOCK_NB);
    return fd;
}

// Writes, syncs and closes; 0 or errno. The descriptor is closed either way.
int WriteWhole(int fd, const QByteArray &bytes)
{
    Descriptor file(fd);
    int failure = WriteAll(fd, bytes);
    if (failure == 0 && ::fsync(fd) != 0 && errno != EINVAL)
        failure = errno;
    if (file.release() != 0 && failure == 0)
        failure = errno;
    return failure;
}

// A file only ever made by this program, written wholly and then given its
// name. link() never replaces what is there; a file system without links
// gets the same promise from a rename that refuses to replace.
FileError CreateWhole(const QByteArray &native, const QByteArray &bytes)
{
    const qsizetype slash = native.lastIndexOf('/');
    const QByteArray stem = native.left(slash + 1) + '.' + native.mid(slash + 1);
    QByteArray temporary;
    const int fd = OpenTemporary(stem, temporary);
    if (fd < 0)
        return ErrorFromErrno(errno);
    int failure = WriteWhole(fd, bytes);
    if (failure == 0 && ::link(temporary.constData(), native.constData()) != 0) {
        failure = errno;
        if (failure == EPERM || failure == EOPNOTSUPP || failure == ENOSYS) {
            failure = 0;
            if (::renameat2(
                    AT_FDCWD, temporary.constData(), AT_FDCWD, native.constData(), RENAME_NOREPLACE)
                != 0)
                failure = errno;
        }
    }
    ::unlink(temporary.constData());
    return failure ? ErrorFromErrno(failure) : FileError {};
}

// Removes `<folder>/<name>` when it is a temporary file whose writer has
// gone: no process of its number runs and nobody holds its lock.
void RemoveIfAbandoned(const QString &folder, const QString &name, qint64 pid)
{
    if (pid > 0 && pid <= std::numeric_limits<pid_t>::max()
        && (::kill(pid_t(pid), 0) == 0 || errno == EPERM))
        return;
    const QByteArray path = QFile::encodeName(folder + QLatin1Char('/') + name);
    Descriptor file(
        ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK));
    if (file.get() < 0 || RequireRegular(file.get()) || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return;
    ::unlink(path.constData());
}

// The process number of a temporary name: `<stem>.<pid>-<n>` whose stem
// passes `wanted`; 0 for any other name.
template<typename Wanted>
qint64 WriterOf(const QString &name, Wanted wanted)
{
    const qsizetype dash = name.lastIndexOf(QLatin1Char('-'));
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'), dash);
    if (dash < 0 || dot <= 0 || !wanted(name.left(dot)))
        return 0;
    const auto digits = [](QStringView text) {
        return !text.isEmpty()
            && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
    };
    const QStringView view(name);
    if (!digits(view.sliced(dash + 1)) || !digits(view.sliced(dot + 1, dash - dot - 1)))
        return 0;
    return view.sliced(dot + 1, dash - dot - 1).toLongLong();
}

template<typename Wanted>
void RemoveMatching(const QString &folder, Wanted wanted)
{
    const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names)
        if (const qint64 pid = WriterOf(name, wanted))
            RemoveIfAbandoned(folder, name, pid);
}

FileError RewriteInPlace(const QByteArray &native, const QByteArray &bytes)
{
    Descriptor file(::open(native.constData(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW));
    if (file.get() < 0)
        return ErrorFromErrno(errno);
    int failure = WriteAll(file.get(), bytes);
    if (failure == 0 && ::ftruncate(file.get(), bytes.size()) != 0)
        failure = errno;
    if (file.release() != 0 && failure == 0)
        failure = errno;
    return failure ? ErrorFromErrno(failure) : FileError {};
}

} // namespace

FileError ErrorFromErrno(int number)
{
    return {number, QString::fromLocal8Bit(std::strerror(number))};
}

int LockWithPatience(int fd, std::chrono::milliseconds patience)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point giveUp = Clock::now() + patience;
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK || Clock::now() >= giveUp)
            return errno;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return 0;
}

FileError ReadFileStart(const QString &path, qint64 limit, QByteArray &bytes, Lock lock)
{
    bytes.clear();
    if (path.contains(QChar(0)))
        return ErrorFromErrno(ENOENT);
    // Non-blocking, so that a pipe or device dropped in a player's folder
    // cannot hang the game before it is refused as no regular file.
    Descriptor file(
        ::open(NativePath(path).constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (file.get() < 0)
        return ErrorFromErrno(errno);
    if (FileError error = RequireRegular(file.get()))
        return error;
    if (lock == Lock::Exclusive) {
        // Another copy starting at the same moment holds it only briefly.
        if (const int number
            = LockWithPatience(file.get(), std::chrono::milliseconds(LockPatienceMs)))
            return ErrorFromErrno(number);
    }
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
    if (::lstat(native.constData(), &before) != 0)
        return errno == ENOENT ? CreateWhole(native, bytes) : ErrorFromErrno(errno);
    // A link is not followed, so a name in a folder cannot send the write
    // anywhere else.
    Descriptor file(
        ::open(native.constData(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW));
    if (file.get() < 0)
        return ErrorFromErrno(errno);
    if (FileError error = RequireRegular(file.get()))
        return error;
    int failure = WriteAll(file.get(), bytes);
    if (failure == 0 && ::fsync(file.get()) != 0 && errno != EINVAL)
        failure = errno;
    if (file.release() != 0 && failure == 0)
        failure = errno;
    return failure ? ErrorFromErrno(failure) : FileError {};
}

FileError ReplaceFile(const QString &path, const QByteArray &bytes)
{
    if (path.contains(QChar(0)))
        return ErrorFromErrno(EINVAL);
    const QByteArray native = NativePath(path);
    struct stat old;
    const bool existed = ::stat(native.constData(), &old) == 0 && S_ISREG(old.st_mode);
    // The new content goes to a file of its own beside the old one and
    // takes its place only once it is wholly written: a full disk or a
    // failing write leaves the old file as it was. The player's file need
    // not be readable or writable itself, only its folder.
    QByteArray temporary;
    const int fd = OpenTemporary(native, temporary);
    if (fd < 0) {
        // In a folder where no file can be made, an existing writable file
        // is still written in place rather than refused.
        const int number = errno;
        return existed && (number == EACCES || number == EPERM) ? RewriteInPlace(native, bytes)
                                                                : ErrorFromErrno(number);
    }
    // The player's own choice of who may read the file stays, as long as
    // the player still may.
    if (existed)
        ::fchmod(fd, (old.st_mode & 07777) | S_IRUSR | S_IWUSR);
    int failure = WriteWhole(fd, bytes);
    if (failure == 0 && ::rename(temporary.constData(), native.constData()) != 0)
        failure = errno;
    if (failure != 0)
        ::unlink(temporary.constData());
    return failure ? ErrorFromErrno(failure) : FileError {};
}

void RemoveReplaceLeftovers(const QString &path)
{
    const QFileInfo info(path);
    RemoveMatching(info.path(), [&info](const QString &stem) { return stem == info.fileName(); });
}

void RemoveNewFileLeftovers(const QString &folder)
{
    // CreateWhole's names: the file's own name after a dot.
    RemoveMatching(folder,
        [](const QString &stem) { return stem.size() > 1 && stem.startsWith(QLatin1Char('.')); });
}
