// The level chooser: 70 rows, one per level, and two buttons. Its answer,
// once it has closed, is newLevel: the chosen row, or -1 for Cancel.
// Beside its text each row shows, right-aligned, the fewest steps the level
// can be won in and, once the player has won it, a check mark and the
// player's best; the row's text itself stays "Level N - name".
#pragma once

#include "DialogPlacement.h"
#include "files/PlayerFile.h"

#include <array>
#include <cstdint>

class QListWidget;
class QPushButton;

class frmLevel : public FixedDialog
{
    Q_OBJECT
public:
    explicit frmLevel(frmMain &main);

    QListWidget *lisLevel = nullptr;
    QPushButton *cmdSetLevel = nullptr;
    QPushButton *cmdCancel = nullptr;
    int16_t newLevel = -1;

    void cmdSetLevel_Click();
    void cmdCancel_Click();

    // The close control and Escape answer Cancel.
    void reject() override;

    // Item data beside each row's text; an int, or nothing to show.
    enum { FewestStepsRole = Qt::UserRole + 1, BestRole };
    // `fewest` by level index, -1 where a level cannot be won.
    void ShowProgress(const std::array<int, LevelCount> &fewest, const PlayerProgress &progress);
    // Whether the row's text shows whole beside its marks.
    bool RowFits(int row) const;
};
