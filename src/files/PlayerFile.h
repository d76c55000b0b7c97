// The player's own record, qvl-player.ini beside qvl.ini: the fewest steps
// each level has been won in, and how the step line is shown. An INI file in
// plain ASCII, lines ended by CR LF:
//
//   [Best]
//   1=12          level number (1 to 70) = steps of the player's best win
//   14=60
//   [View]
//   FewestStepsLeft=true
//
// Whatever else a file holds is skipped line by line, so a damaged file
// still gives every record that can be read, and the next write keeps them.
#pragma once

#include "LevelFile.h"
#include "RawFile.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>

inline const QString PlayerFileName = QStringLiteral("qvl-player.ini");

// The file in the folder that holds qvl.ini.
QString PlayerFilePath(const QString &folder);

struct PlayerProgress
{
    static constexpr int32_t NotWon = -1;
    std::array<int32_t, LevelCount> best = Unwon(); // by level index
    bool fewestStepsLeft = false;

    bool Won(int levelIndex) const { return best[size_t(levelIndex)] != NotWon; }
    friend bool operator==(const PlayerProgress &, const PlayerProgress &) = default;

private:
    static std::array<int32_t, LevelCount> Unwon()
    {
        std::array<int32_t, LevelCount> none;
        none.fill(NotWon);
        return none;
    }
};

// Section and key names go without regard to case; spaces around names,
// values and "=" do not count; ";" and "#" start a comment line. A best is
// a decimal count from 0 to 2147483647; where a level has more than one,
// the lowest holds. A view value is "true" or "false"; the last one holds.
PlayerProgress ParsePlayerFile(const QByteArray &content);
QByteArray SerializePlayerFile(const PlayerProgress &progress);

// Keeps the lower best of each level; the view of `into` stays.
void MergeBest(PlayerProgress &into, const PlayerProgress &other);

// What the file holds; a missing file is no progress and no error. Only the
// start of a huge file is read.
FileError ReadPlayerFile(const QString &path, PlayerProgress &progress);

// A win of the level in `steps`. Under a lock shared with every other copy
// of the game, the file is read again and replaced whole only when the win
// beats the best it holds (or is the level's first), so no copy undoes
// another's record. A file that cannot be read, or is no plain file, is
// left exactly as it is and the win is not recorded. `progress` receives
// what the file holds afterwards.
FileError RecordWin(const QString &path, int levelIndex, int32_t steps, PlayerProgress &progress);

// The same for the view setting: written only when it changes.
FileError RecordFewestStepsLeft(const QString &path, bool shown, PlayerProgress &progress);
