// A saved game: one 36-byte record per file, named after the game, in the
// "saved" folder. Little-endian, no header, no padding.
//
//   offset  size  field
//        0     4  steps
//        4     2  levelIndex, 0 to 69
//        6    30  the level's record, as in the level file: its name, then
//                 the codes
#pragma once

#include "LevelFile.h"

#include <QByteArray>
#include <QString>

enum { SavedGameSize = 36, MaxGameNameLength = 32 };
// Where the fields start.
enum { SavedStepsAt = 0, SavedLevelIndexAt = 4, SavedLevelAt = 6 };

struct SavedGameRecord : LevelRecord
{
    int32_t steps = 0;
    int16_t levelIndex = 0;
};

// The record of the game on the board.
SavedGameRecord BuildSavedGame(const GameState &game, const QString &levelName);

QByteArray SerializeSavedGame(const SavedGameRecord &record);

// Reads the first 36 bytes and checks every field before the game may use
// them: a short record, a level index outside 0 to 69 and a layout that does
// not fit the board are refused. Returns an empty text, or the reason.
QString ParseSavedGame(const QByteArray &bytes, SavedGameRecord &record);

// Reads the file and parses it; empty text on success, else the reason.
QString ReadSavedGame(const QString &path, SavedGameRecord &record);

// Writes the 36 bytes over the start of the file, creating it if need be.
FileError WriteSavedGame(const QString &path, const SavedGameRecord &record);

// The name rules: a character is forbidden when its Windows-1252 code is
// below 32, or it is one of " \ * ? . : or the character of code 255. A
// character the code page cannot hold counts as "?".
bool IsForbiddenNameCharacter(QChar character);

// Why the player's name cannot be a saved game's: too long or holding a
// forbidden character. Empty when it can be; an empty name is the player's
// choice not to save, which the window asks about.
QString WhyGameNameIsRefused(const QString &name);

// The game's file in the saved-games folder of the program folder.
QString SavedGamePath(const QString &programFolder, const QString &name);
