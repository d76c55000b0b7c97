#include "Progress.h"

#include "dialogs/frmLevel.h"
#include "game/WayOut.h"
#include "platform/Platform.h"

#include <QDir>

std::array<int, LevelCount> FewestStepsOf(const LevelTable &levels)
{
    std::array<int, LevelCount> fewest;
    for (size_t i = 0; i < levels.size(); ++i)
        fewest[i] = FewestStepsLeft(levels[i].codes);
    return fewest;
}

Progress::Progress(Platform &platform, const QString &folder)
    : platform_(platform)
    , path_(PlayerFilePath(folder))
{ }

void Progress::GameWon(QWidget *owner, int levelIndex, int32_t steps)
{
    PlayerProgress progress;
    if (const FileError error = RecordWin(path_, levelIndex, steps, progress))
        Report(owner,
            QStringLiteral("Your win of level %1 in %2 steps could not be recorded.")
                .arg(levelIndex + 1)
                .arg(steps),
            error);
}

void Progress::ShowIn(frmLevel &chooser, const LevelTable &levels)
{
    // A file that cannot be read shows no level as solved; it is reported
    // when a win cannot be recorded in it.
    PlayerProgress progress;
    ReadPlayerFile(path_, progress);
    chooser.ShowProgress(FewestStepsOf(levels), progress);
}

bool Progress::FewestStepsLeftShown() const
{
    PlayerProgress progress;
    ReadPlayerFile(path_, progress);
    return progress.fewestStepsLeft;
}

void Progress::SetShowFewestStepsLeft(QWidget *owner, bool shown)
{
    PlayerProgress progress;
    if (const FileError error = RecordFewestStepsLeft(path_, shown, progress))
        Report(owner, QStringLiteral("Your choice of what the step line shows could not be kept."),
            error);
}

void Progress::Report(QWidget *owner, const QString &what, const FileError &error)
{
    // Once a run: a folder that refuses one write refuses the next, and
    // the player has been told.
    if (std::exchange(reported_, true))
        return;
    platform_.MsgBox(owner,
        what + QStringLiteral("\r\n") + QDir::toNativeSeparators(path_) + QStringLiteral("\r\n")
            + error.description
            + QStringLiteral("\r\nYou can go on playing; this is not shown "
                             "again until Quorvel starts anew."),
        Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - Progress"));
}
