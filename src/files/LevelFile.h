// The level data file: 70 records of 30 bytes, level index 0 first, 2100
// bytes in all, no header, no count, no padding. Little-endian.
//
//   offset  size  field
//        0    10  levelName: Windows-1252, no terminator, padding kept
//       10     2  codes[0], the big block
//       12     2  codes[1], the horizontal block
//       14     8  codes[2..5], the vertical blocks
//       22     8  codes[6..9], the small blocks
#pragma once

#include "RawFile.h"
#include "game/GameState.h"

#include <QByteArray>
#include <QString>

#include <array>

enum {
    LevelCount = 70,
    LevelNameLength = 10,
    LevelRecordSize = 30,
    LevelFileSize = LevelCount * LevelRecordSize
};

// One level as the level file and a saved game both hold it.
struct LevelRecord
{
    QString levelName; // always 10 characters, padding included
    Layout codes {};
};
LevelRecord ReadLevelRecord(const QByteArray &bytes, qsizetype at);
void AppendLevelRecord(QByteArray &bytes, const LevelRecord &level);

using LevelTable = std::array<LevelRecord, LevelCount>;

// The table the game starts from before reading: every name ten characters
// of code 0, every code 0.
LevelTable ClearedLevels();

// Reads the table from the first 2100 bytes; shorter data is refused.
bool ParseLevels(const QByteArray &bytes, LevelTable &levels);
QByteArray SerializeLevels(const LevelTable &levels);

// Opens the file locked against others, reads it in one go and closes it. A
// file shorter than 2100 bytes is a read error of its own.
FileError ReadLevelFile(const QString &path, LevelTable &levels);

// The number and text reported for a level file that ends too early.
enum { ShortFileError = 62 };
