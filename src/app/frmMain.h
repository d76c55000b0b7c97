// The main window: the board's sixteen images, the status line, the menus,
// and the game variables every command reads and changes. Its handlers read
// like the steps of the game; the rules themselves live in game/.
#pragma once

#include "ProgramFolders.h"
#include "Progress.h"
#include "files/LevelFile.h"
#include "game/GameState.h"
#include "game/Moves.h"
#include "platform/Platform.h"
#include "skin/PictureClip.h"

#include <QMainWindow>

#include <array>

class BlockImage;
class ImageControl;
class QAction;
class QLabel;

class frmMain : public QMainWindow
{
    Q_OBJECT
public:
    frmMain(Platform &platform, const ProgramFolders &folders);
    ~frmMain() override;

    // The game variables.
    GameState game; // board, pieces, levelIndex, steps
    LevelTable levels;
    int16_t newLevel = 0; // the level chooser's answer, -1 for cancel
    QString absFilename; // the file chooser's answer; at start-up the skin setting
    bool gameChanged = false;
    Drag drag;

    // The controls.
    std::array<BlockImage *, PieceCount> imgPieces {};
    ImageControl *imgUpFrame = nullptr;
    ImageControl *imgLeftFrame = nullptr;
    ImageControl *imgRightFrame = nullptr;
    ImageControl *imgExit = nullptr;
    ImageControl *imgTitle = nullptr;
    ImageControl *imgCong = nullptr;
    QLabel *lblStatus = nullptr;
    QLabel *lblSteps = nullptr;
    PictureClip piclipSkin;
    QAction *mnuNewGame = nullptr;
    QAction *mnuLoadGame = nullptr;
    QAction *mnuSaveGame = nullptr;
    QAction *mnuSetSkin = nullptr;
    QAction *mnuExit = nullptr;
    QAction *mnuHTP = nullptr;
    QAction *mnuAbout = nullptr;

    // Start-up.
    void Form_Load();
    void ReadSettings();
    void LoadLevels();
    // True once a fatal report has closed the window: the program ends.
    bool Ended() const { return ended_; }

    // The board display and the status line.
    void PlacePieces();
    void PositionFrame();
    void ShowBoard();
    void HideBoard();
    void ShowCongratulation();
    void ShowStatus();

    // Skins.
    void ApplySkin(const QString &skinName);

    // Moving blocks.
    void imgPieces_MouseDown(int16_t Index, int16_t Button, int16_t Shift, float X, float Y);
    void imgPieces_MouseMove(int16_t Index, int16_t Button, int16_t Shift, float X, float Y);
    void imgPieces_MouseUp(int16_t Index, int16_t Button, int16_t Shift, float X, float Y);

    // The commands.
    void mnuNewGame_Click();
    void NewGame();
    void mnuLoadGame_Click();
    void mnuSaveGame_Click();
    void SaveGame();
    void IsValidGameName(const QString &name, bool &ok) const;
    void SavedGameExists(const QString &name, bool &exists) const;
    void mnuSetSkin_Click();
    void mnuExit_Click();
    void mnuHTP_Click();
    void mnuAbout_Click();
    void Form_QueryUnload(bool &Cancel);

    Platform &platform() const { return platform_; }
    const ProgramFolders &Folders() const { return folders_; }
    // Read anew at every use, as the screen may change its scale.
    ScreenMetrics Screen() const { return platform_.Screen(); }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void BuildMenus();
    void BuildImages();
    void SetMousePointer(Pointer pointer);
    void PlaceImageOnCell(int16_t piece, Cell topLeft);
    // Shows the message of a fatal failure's caller, then closes the window
    // and ends the program whatever the close prompt answers.
    void EndProgram();
    // Puts a checked layout on the board and shows it with the status line.
    void SetUpBoard(const Layout &codes);
    void FinishGame();
    QString LevelPath() const;
    QString SkinPath(const QString &skinName) const;
    QString SettingsPath() const;

    Platform &platform_;
    ProgramFolders folders_;
    bool ending_ = false;
    bool ended_ = false;
    Progress progress_ {platform_, folders_.player};
};
