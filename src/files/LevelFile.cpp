#include "LevelFile.h"

#include "Bytes.h"
#include "CodePage.h"

LevelTable ClearedLevels()
{
    LevelTable levels;
    for (LevelRecord &level : levels) {
        level.levelName = QString(LevelNameLength, QChar(0));
        level.codes.fill(0);
    }
    return levels;
}

LevelRecord ReadLevelRecord(const QByteArray &bytes, qsizetype at)
{
    LevelRecord level;
    level.levelName = FromAnsi(bytes.mid(at, LevelNameLength));
    for (int p = 0; p < PieceCount; ++p)
        level.codes[p] = ReadInt16(bytes, at + LevelNameLength + 2 * p);
    return level;
}

void AppendLevelRecord(QByteArray &bytes, const LevelRecord &level)
{
    bytes.append(FixedText(level.levelName, LevelNameLength));
    for (const int16_t code : level.codes)
        AppendInt16(bytes, code);
}

bool ParseLevels(const QByteArray &bytes, LevelTable &levels)
{
    if (bytes.size() < LevelFileSize)
        return false;
    for (int i = 0; i < LevelCount; ++i)
        levels[i] = ReadLevelRecord(bytes, qsizetype(i) * LevelRecordSize);
    return true;
}

QByteArray SerializeLevels(const LevelTable &levels)
{
    QByteArray bytes;
    bytes.reserve(LevelFileSize);
    for (const LevelRecord &level : levels)
        AppendLevelRecord(bytes, level);
    return bytes;
}

FileError ReadLevelFile(const QString &path, LevelTable &levels)
{
    levels = ClearedLevels();
    QByteArray bytes;
    if (FileError error = ReadFileStart(path, LevelFileSize, bytes, Lock::Exclusive))
        return error;
    if (!ParseLevels(bytes, levels))
        return {ShortFileError,
            QStringLiteral("Input past end of file: %1 bytes where %2 were expected")
                .arg(bytes.size())
                .arg(int(LevelFileSize))};
    return {};
}
