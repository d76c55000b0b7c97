#include "PlayerFile.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

// Far beyond the 2 KB a full record takes; the rest of a huge file is never
// read.
constexpr qint64 PlayerReadLimit = 1024 * 1024;
// Another copy holds the lock only while it reads and writes a few hundred
// bytes; one that holds it longer has stopped, and waiting on would hang.
constexpr auto LockPatience = std::chrono::milliseconds(2000);

bool IsDigits(const QByteArray &text)
{
    if (text.isEmpty())
        return false;
    for (const char c : text)
        if (c < '0' || c > '9')
            return false;
    return true;
}

// A plain decimal count within the range, else -1.
qint64 Count(const QByteArray &text, qint64 largest)
{
    if (!IsDigits(text) || text.size() > 10)
        return -1;
    const qint64 value = text.toLongLong();
    return value <= largest ? value : -1;
}

bool SameName(const QByteArray &text, const char *name)
{
    return text.compare(name, Qt::CaseInsensitive) == 0;
}

// Closing the descriptor lets go of the lock.
class WriterLock
{
public:
    WriterLock() = default;
    ~WriterLock()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    WriterLock(const WriterLock &) = delete;
    WriterLock &operator=(const WriterLock &) = delete;

    // The lock lies on a file of its own beside the player's: the player's
    // file is replaced by a rename, and a lock on it would stay with the
    // old file. In a folder where no file can be made, the player's file is
    // rewritten in place, if at all, so a lock on it then holds.
    FileError Take(const QString &path)
    {
        const QByteArray lockPath = QFile::encodeName(path + QStringLiteral(".lock"));
        fd_ = ::open(lockPath.constData(),
            O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK, 0666);
        if (fd_ < 0 && (errno == EACCES || errno == EPERM || errno == EROFS)) {
            fd_ = ::open(QFile::encodeName(path).constData(),
                O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK);
            // Nothing there and nowhere to make it: no write can succeed,
            // and none needs guarding.
            if (fd_ < 0 && errno == ENOENT)
                return {};
        }
        if (fd_ < 0)
            return ErrorFromErrno(errno);
        const int number = LockWithPatience(fd_, LockPatience);
        if (number == EWOULDBLOCK)
            return {EWOULDBLOCK, QStringLiteral("Another copy of the game kept the file locked")};
        return number ? ErrorFromErrno(number) : FileError {};
    }

private:
    int fd_ = -1;
};

template<typename Change>
FileError Update(const QString &path, PlayerProgress &progress, Change change)
{
    progress = {};
    if (path.contains(QChar(0)))
        return ErrorFromErrno(EINVAL);
    // A link is neither followed nor replaced by a write: where the player
    // keeps the record is the player's business.
    struct stat entry;
    if (::lstat(QFile::encodeName(path).constData(), &entry) == 0 && S_ISLNK(entry.st_mode))
        return {ELOOP, QStringLiteral("It is a symbolic link, which the game does not write to")};
    WriterLock lock;
    if (FileError error = lock.Take(path))
        return error;
    // Read again under the lock: whatever another copy wrote meanwhile is
    // kept. A file that cannot be read is never replaced, so nothing it
    // held is lost.
    if (FileError error = ReadPlayerFile(path, progress))
        return error;
    PlayerProgress changed = progress;
    if (!change(changed))
        return {};
    if (FileError error = ReplaceFile(path, SerializePlayerFile(changed)))
        return error;
    progress = changed;
    return {};
}

} // namespace

QString PlayerFilePath(const QString &folder)
{
    return folder + QLatin1Char('/') + PlayerFileName;
}

PlayerProgress ParsePlayerFile(const QByteArray &content)
{
    enum class Section { None, Best, View };
    PlayerProgress progress;
    Section section = Section::None;
    for (const QByteArray &raw : content.split('\n')) {
        const QByteArray line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(';') || line.startsWith('#'))
            continue;
        if (line.startsWith('[')) {
            // A damaged heading starts a section of nobody's.
            const QByteArray name
                = line.endsWith(']') ? line.mid(1, line.size() - 2).trimmed() : "";
            section = SameName(name, "Best") ? Section::Best
                : SameName(name, "View")     ? Section::View
                                             : Section::None;
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        if (equals < 0)
            continue;
        const QByteArray key = line.left(equals).trimmed();
        const QByteArray value = line.mid(equals + 1).trimmed();
        if (section == Section::Best) {
            const qint64 level = key.startsWith('0') ? -1 : Count(key, LevelCount);
            const qint64 steps = Count(value, INT32_MAX);
            if (level < 1 || steps < 0)
                continue;
            int32_t &best = progress.best[size_t(level - 1)];
            if (best == PlayerProgress::NotWon || steps < best)
                best = int32_t(steps);
        } else if (section == Section::View && SameName(key, "FewestStepsLeft")) {
            if (SameName(value, "true"))
                progress.fewestStepsLeft = true;
            else if (SameName(value, "false"))
                progress.fewestStepsLeft = false;
        }
    }
    return progress;
}

QByteArray SerializePlayerFile(const PlayerProgress &progress)
{
    QByteArray text = "[Best]\r\n";
    for (int i = 0; i < LevelCount; ++i)
        if (progress.Won(i))
            text += QByteArray::number(i + 1) + '=' + QByteArray::number(progress.best[size_t(i)])
                + "\r\n";
    text += "\r\n[View]\r\nFewestStepsLeft=";
    text += progress.fewestStepsLeft ? "true\r\n" : "false\r\n";
    return text;
}

void MergeBest(PlayerProgress &into, const PlayerProgress &other)
{
    for (int i = 0; i < LevelCount; ++i) {
        const size_t at = size_t(i);
        if (other.Won(i) && (!into.Won(i) || other.best[at] < into.best[at]))
            into.best[at] = other.best[at];
    }
}

FileError ReadPlayerFile(const QString &path, PlayerProgress &progress)
{
    progress = {};
    QByteArray content;
    if (FileError error = ReadFileStart(path, PlayerReadLimit, content))
        return error.number == ENOENT ? FileError {} : error;
    // A line cut by the limit could read as a smaller count than it holds.
    if (content.size() == PlayerReadLimit)
        content.truncate(content.lastIndexOf('\n') + 1);
    progress = ParsePlayerFile(content);
    return {};
}

FileError RecordWin(const QString &path, int levelIndex, int32_t steps, PlayerProgress &progress)
{
    if (levelIndex < 0 || levelIndex >= LevelCount || steps < 0)
        return ErrorFromErrno(EINVAL);
    return Update(path, progress, [&](PlayerProgress &file) {
        PlayerProgress win;
        win.best[size_t(levelIndex)] = steps;
        const PlayerProgress before = file;
        MergeBest(file, win);
        return file != before;
    });
}

FileError RecordFewestStepsLeft(const QString &path, bool shown, PlayerProgress &progress)
{
    return Update(path, progress,
        [&](PlayerProgress &file) { return std::exchange(file.fewestStepsLeft, shown) != shown; });
}
