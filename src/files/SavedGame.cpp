#include "SavedGame.h"

#include "Bytes.h"
#include "CodePage.h"

#include <QList>

#include <algorithm>

SavedGameRecord BuildSavedGame(const GameState &game, const QString &levelName)
{
    SavedGameRecord record;
    record.levelIndex = game.levelIndex;
    record.levelName = levelName;
    record.steps = game.steps;
    record.codes = game.EncodePositions();
    return record;
}

QByteArray SerializeSavedGame(const SavedGameRecord &record)
{
    QByteArray bytes;
    bytes.reserve(SavedGameSize);
    AppendInt32(bytes, record.steps);
    AppendInt16(bytes, record.levelIndex);
    AppendLevelRecord(bytes, record);
    return bytes;
}

QString ParseSavedGame(const QByteArray &bytes, SavedGameRecord &record)
{
    if (bytes.size() < SavedGameSize)
        return QStringLiteral("The file holds %1 bytes; a saved game has %2.")
            .arg(bytes.size())
            .arg(int(SavedGameSize));
    SavedGameRecord read;
    read.steps = ReadInt32(bytes, SavedStepsAt);
    read.levelIndex = ReadInt16(bytes, SavedLevelIndexAt);
    static_cast<LevelRecord &>(read) = ReadLevelRecord(bytes, SavedLevelAt);
    if (read.levelIndex < 0 || read.levelIndex >= LevelCount)
        return QStringLiteral("It names level %1; the levels are numbered 1 to %2.")
            .arg(int(read.levelIndex) + 1)
            .arg(int(LevelCount));
    if (read.steps < 0)
        return QStringLiteral("Its step count %1 is negative.").arg(read.steps);
    const std::string layoutError = CheckLayout(read.codes);
    if (!layoutError.empty())
        return QStringLiteral("Its layout is damaged: %1.")
            .arg(QString::fromStdString(layoutError));
    record = read;
    return {};
}

QString ReadSavedGame(const QString &path, SavedGameRecord &record)
{
    QByteArray bytes;
    if (FileError error = ReadFileStart(path, SavedGameSize, bytes))
        return QStringLiteral("It cannot be read: %1.").arg(error.description);
    return ParseSavedGame(bytes, record);
}

FileError WriteSavedGame(const QString &path, const SavedGameRecord &record)
{
    return WriteFileStart(path, SerializeSavedGame(record));
}

bool IsForbiddenNameCharacter(QChar character)
{
    const int code = AnsiCode(character);
    return code < 32 || code == '"' || code == '\\' || code == '*' || code == '?' || code == '.'
        || code == ':' || code == 255;
}

QString WhyGameNameIsRefused(const QString &name)
{
    // Counted in characters as the player sees them: one beyond 16 bits is
    // one character, not two.
    if (name.toUcs4().size() > MaxGameNameLength)
        return QStringLiteral("Name too long.\r\nPlease limit the name to 32 characters.");
    if (std::any_of(name.begin(), name.end(), IsForbiddenNameCharacter))
        return QStringLiteral("Illegal characters found in the name.");
    return {};
}

QString SavedGamePath(const QString &programFolder, const QString &name)
{
    return programFolder + QStringLiteral("/saved/") + name + QStringLiteral(".sav");
}
