// What the game keeps of the player's wins: the record in qvl-player.ini,
// the fewest steps of every level for the level chooser, and the one report
// per run of a win that could not be recorded.
#pragma once

#include "files/LevelFile.h"
#include "files/PlayerFile.h"

#include <QString>

#include <array>
#include <optional>

class Platform;
class QWidget;
class frmLevel;

// The fewest steps each level can be won in, by level index, from the table
// the solver wrote when the game was built; -1 for a level that cannot be won.
std::array<int, LevelCount> FewestStepsOf(const LevelTable &levels);

class Progress
{
public:
    // `folder` holds qvl.ini; the record lies beside it.
    Progress(Platform &platform, const QString &folder);

    const QString &Path() const { return path_; }

    // A won game: a new level or a loaded one, with the game's whole count.
    void GameWon(QWidget *owner, int levelIndex, int32_t steps);
    // Marks the chooser's rows. The levels are solved at the first call of
    // a run, not at start-up; afterwards it is a look-up.
    void ShowIn(frmLevel &chooser, const LevelTable &levels);

    // The view setting, as the file holds it (off when it cannot be read).
    bool FewestStepsLeftShown() const;
    void SetShowFewestStepsLeft(QWidget *owner, bool shown);

private:
    void Report(QWidget *owner, const QString &what, const FileError &error);

    Platform &platform_;
    QString path_;
    bool reported_ = false;
};
