// Whole-block reads and writes at the start of a file, with the platform's
// own error number and description when they fail. The file is always closed
// again before these return.
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

struct FileError
{
    int number = 0; // errno, or 0 when all went well
    QString description;
    explicit operator bool() const { return number != 0; }
};

FileError ErrorFromErrno(int number);

// Takes an exclusive lock on the open file, waiting up to `patience` for a
// copy of the game that holds it for a moment: 0, or the errno of the
// failure (EWOULDBLOCK when the other kept it longer).
int LockWithPatience(int fd, std::chrono::milliseconds patience);

enum class Lock { None, Exclusive };

// Reads up to `limit` bytes from the start. With Lock::Exclusive the file is
// locked against every other reader and writer while it is open. A lock
// someone else holds is waited for up to `LockPatienceMs`; held longer, the
// file fails like an unreadable one.
constexpr int LockPatienceMs = 1000;
FileError ReadFileStart(
    const QString &path, qint64 limit, QByteArray &bytes, Lock lock = Lock::None);

// Writes `bytes` at the start of an existing file, leaving any longer tail
// of an older one in place. A missing file is written whole beside its name
// and linked into place: it appears with all its bytes or not at all, even
// when the process is killed meanwhile, and it never replaces a file that
// appeared under the name in between.
FileError WriteFileStart(const QString &path, const QByteArray &bytes);

// Replaces the whole file atomically: a failure leaves the old content intact.
FileError ReplaceFile(const QString &path, const QByteArray &bytes);

// What the two writers above leave behind when their process is killed
// half-way: the temporary files of ReplaceFile(`path`), and those of new
// files written in `folder`. Only files no running process is writing go.
void RemoveReplaceLeftovers(const QString &path);
void RemoveNewFileLeftovers(const QString &folder);
