// The main window: the board's sixteen images, the status line, the menus,
// and the game variables every command reads and changes. Its handlers read
// like the steps of the game; the rules themselves live in game/.
#pragma once

#include "ProgramFolders.h"
#include "Progress.h"
#include "files/LevelFile.h"
#include "game/GameState.h"
#include "game/History.h"
#include "game/Move.h"
#include "game/Moves.h"
#include "platform/Platform.h"
#include "skin/PictureClip.h"
#include "skin/SkinLayout.h"

#include <QMainWindow>

#include <array>
#include <memory>
#include <optional>

class BlockImage;
class ImageControl;
class QAction;
class QLabel;
class QPropertyAnimation;

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
    History history; // the steps of the game on the board, for Undo and Redo

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
    QAction *mnuUndo = nullptr;
    QAction *mnuRedo = nullptr;
    QAction *mnuRestart = nullptr;
    QAction *mnuHint = nullptr;
    QAction *mnuFewestSteps = nullptr;
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
    // The big block and the small ones take their second pictures from the
    // skin, until the next skin is applied.
    void ShowSecondPictures();

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
    bool SavedGameExists(const QString &name) const;
    void mnuSetSkin_Click();
    void mnuExit_Click();
    void mnuHTP_Click();
    void mnuAbout_Click();
    void Form_QueryUnload(bool &Cancel);

    // The Game menu.
    void mnuUndo_Click();
    void mnuRedo_Click();
    void mnuRestart_Click();
    void mnuHint_Click();
    void mnuFewestSteps_Click(bool checked);
    // Shows or hides the fewest steps left on the step line, as the player's
    // remembered choice says at start-up; tells no one.
    void SetShowFewestStepsLeft(bool shown);
    bool ShowsFewestStepsLeft() const { return showFewest_; }

    // Keyboard play: the selected block (-1 for none), changed by Tab,
    // Shift+Tab, Escape and a press on a block.
    int16_t Selected() const { return selected_; }

    Platform &platform() const { return platform_; }
    const ProgramFolders &Folders() const { return folders_; }
    // Read anew at every use, as the screen may change its scale.
    ScreenMetrics Screen() const { return platform_.Screen(); }

signals:
    // The player switched the fewest steps left on or off.
    void FewestStepsLeftChanged(bool shown);
    // A game was won, by whatever step, with this count.
    void GameWon(int16_t levelIndex, int32_t steps);

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void BuildMenus();
    void BuildImages();
    void SetMousePointer(Pointer pointer);
    void PlaceImageOnCell(int16_t piece, Cell topLeft);
    // The image a skin area's picture goes to.
    ImageControl *SkinImage(const SkinArea &area) const;
    // Shows the message of a fatal failure's caller, then closes the window
    // and ends the program whatever the close prompt answers.
    void EndProgram();
    // Puts a checked layout on the board and shows it with the status line.
    void SetUpBoard(const Layout &codes);
    void FinishGame();
    // Offers to save a changed game first; false when the player cancels
    // what was to come.
    bool OfferToSave(const QString &title);
    // The file chooser's answer: a saved game's full path or a skin's bare
    // name, as the flag asks, empty for Cancel.
    QString ChooseFile(uint8_t flag, const QString &title, const QString &action,
        const QStringList &folders, const QString &pattern);
    // After the rules made a step: the image follows (gliding for a hint),
    // the game counts as changed, the status line and the Game menu catch
    // up, and the big block on the exit wins.
    void ShowStep(const Move &move, bool glide = false, bool takenBack = false);
    void Glide(const Move &move);
    // Lands a gliding block on its cell at once; every command and key does
    // this first, so no block is ever left between cells.
    // Lands a gliding block first; false while no game is on or a block is held.
    bool ReadyForStep();
    void FinishGlide();
    void WinIfSolved(const Move &move);
    void UpdateGameMenu();
    void Select(int16_t piece);
    QString FewestStepsLeftText();
    QString LevelPath() const;
    QString SkinPath(const QString &skinName) const;
    QString SettingsPath() const;

    Platform &platform_;
    ProgramFolders folders_;
    bool ending_ = false;
    bool ended_ = false;
    Progress progress_ {platform_, folders_.player};
    bool playing_ = false; // a game is on the board and not yet won
    bool statusShown_ = false; // the status line has shown a game
    bool showFewest_ = false;
    int16_t selected_ = -1;
    QPropertyAnimation *glide_ = nullptr;
    std::optional<Move> gliding_;
};
