// Whole-block reads and writes at the start of a file, with the platform's
// own error number and description when they fail. The file is always closed
// again before these return.
#pragma once

#include <QByteArray>
#include <QString>

struct FileError
{
    int number = 0; // errno, or 0 when all went well
    QString description;
    explicit operator bool() const { return number != 0; }
};

FileError ErrorFromErrno(int number);

enum class Lock { None, Exclusive };

// Reads up to `limit` bytes from the start. With Lock::Exclusive the file is
// locked against every other reader and writer while it is open, and a file
// that someone else holds locked fails like an unreadable one.
FileError ReadFileStart(
    const QString &path, qint64 limit, QByteArray &bytes, Lock lock = Lock::None);

// Writes `bytes` at the start, creating the file when missing and leaving any
// longer tail of an older file in place. A file this call created is removed
// again when the write fails, so a failure leaves no empty file behind.
FileError WriteFileStart(const QString &path, const QByteArray &bytes);

// Replaces the whole file atomically: a failure leaves the old content intact.
FileError ReplaceFile(const QString &path, const QByteArray &bytes);
