// The menu commands: new game, saving and loading, skins, leaving, help and
// about. Each asks its questions through the platform and changes the game
// only once every answer and every file has been checked.
#include "ImageControl.h"
#include "dialogs/frmAbout.h"
#include "dialogs/frmFile.h"
#include "dialogs/frmLevel.h"
#include "files/SavedGame.h"
#include "files/Settings.h"
#include "frmMain.h"

#include <QDir>
#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>

void frmMain::mnuNewGame_Click()
{
    NewGame();
}

void frmMain::NewGame()
{
    if (!OfferToSave(QStringLiteral("Quorvel - New Game")))
        return;
    {
        frmLevel chooser(*this);
        for (int i = 0; i < LevelCount; ++i)
            chooser.lisLevel->addItem(QStringLiteral("Level ") + QString::number(i + 1)
                + QStringLiteral(" - ") + levels[i].levelName);
        progress_.ShowIn(chooser, levels);
        chooser.exec();
        newLevel = chooser.newLevel;
    }
    if (newLevel <= -1)
        return;
    const std::string damage = CheckLayout(levels[newLevel].codes);
    if (!damage.empty()) {
        platform_.MsgBox(this,
            QStringLiteral("Level %1 cannot be played: its layout is damaged.\r\n")
                    .arg(newLevel + 1)
                + QString::fromStdString(damage) + QLatin1Char('.'),
            Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - New Game"));
        return;
    }
    imgCong->hide();
    gameChanged = false;
    game.levelIndex = newLevel;
    game.steps = 0;
    mnuSaveGame->setEnabled(true);
    SetUpBoard(levels[game.levelIndex].codes);
}

void frmMain::mnuSaveGame_Click()
{
    SaveGame();
}

bool frmMain::SavedGameExists(const QString &name) const
{
    // A name with a folder separator names no file of the saved-games folder.
    return !name.contains(QLatin1Char('/'))
        && QFileInfo(SavedGamePath(folders_.player, name)).isFile();
}

void frmMain::SaveGame()
{
    enum class State { Asking, Write, GiveUp };
    const QString title = QStringLiteral("Quorvel - Saving");
    QString name;
    State state = State::Asking;
    while (state == State::Asking) {
        name = platform_.InputBox(this, QStringLiteral("What is the name of the game?"),
            QStringLiteral("Quorvel - Saving Game"), name);
        if (name.isEmpty()) {
            if (platform_.MsgBox(this,
                    QStringLiteral("Are you sure you want to proceed without saving?"),
                    Buttons::YesNo, Icon::Question, title)
                == Answer::Yes)
                state = State::GiveUp;
        } else if (const QString refusal = WhyGameNameIsRefused(name); !refusal.isEmpty()) {
            platform_.MsgBox(this, refusal, Buttons::Ok, Icon::Exclamation, title);
        } else if (!SavedGameExists(name)
            || platform_.MsgBox(this, QStringLiteral("File already exists. Overwrite it?"),
                   Buttons::YesNo, Icon::Question, title)
                == Answer::Yes) {
            state = State::Write;
        }
    }
    if (state == State::GiveUp)
        return;
    const SavedGameRecord record = BuildSavedGame(game, levels[game.levelIndex].levelName);
    const QString path = SavedGamePath(folders_.player, name);
    // The platform cannot hold a folder separator in a file name: such a name
    // fails like any other refused write, and nothing lands outside the folder.
    const bool written = !name.contains(QLatin1Char('/')) && !WriteSavedGame(path, record);
    if (written) {
        gameChanged = false;
        return;
    }
    platform_.MsgBox(this,
        QStringLiteral("An error occurred while attempting saving game data\r\n")
            + QDir::toNativeSeparators(path) + QStringLiteral("\r\nGame not saved."),
        Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - Saving Error"));
}

void frmMain::mnuLoadGame_Click()
{
    if (!OfferToSave(QStringLiteral("Quorvel - Load game")))
        return;
    gameChanged = false;
    absFilename = ChooseFile(frmFile::ChooseSavedGame, QStringLiteral("Load Game"),
        QStringLiteral("Load Game"), {folders_.player + QStringLiteral("/saved/")},
        QStringLiteral("*.sav"));
    if (absFilename.isEmpty())
        return;
    // The record is read, closed and checked before anything in the game
    // changes, so a damaged file leaves the game on the board as it was.
    SavedGameRecord record;
    const QString damage = ReadSavedGame(absFilename, record);
    if (!damage.isEmpty()) {
        platform_.MsgBox(this,
            QStringLiteral("The saved game cannot be loaded:\r\n")
                + QDir::toNativeSeparators(absFilename) + QStringLiteral("\r\n") + damage,
            Buttons::Ok, Icon::Critical, QStringLiteral("Quorvel - Load game"));
        return;
    }
    imgCong->hide();
    game.steps = record.steps;
    game.levelIndex = record.levelIndex;
    levels[game.levelIndex].levelName = record.levelName;
    mnuSaveGame->setEnabled(true);
    SetUpBoard(record.codes);
}

void frmMain::mnuSetSkin_Click()
{
    absFilename
        = ChooseFile(frmFile::ChooseSkin, QStringLiteral("Load Skin"), QStringLiteral("Set Skin"),
            folders_.SkinFolders(), QStringLiteral("*.bmp;*.dib;*.gif;*.jpg;*.jpeg;*.wmf;*.emf"));
    if (absFilename.isEmpty())
        return;
    // A name the settings file cannot give back would be lost at the next
    // start, so the skin is refused before anything changes.
    if (const QString why = WhySettingCannotBeKept(absFilename); !why.isEmpty()) {
        platform_.MsgBox(this,
            QStringLiteral("The skin %1 cannot be set: its name would be lost when the game "
                           "starts again.\r\n")
                    .arg(absFilename)
                + why + QStringLiteral("\r\nPlease rename the file and choose it again."),
            Buttons::Ok, Icon::Exclamation, QStringLiteral("Quorvel - Set Skin"));
        return;
    }
    ApplySkin(absFilename);
}

void frmMain::mnuExit_Click()
{
    close();
}

void frmMain::Form_QueryUnload(bool &Cancel)
{
    Cancel = !OfferToSave(QStringLiteral("Quorvel - Exit"));
}

bool frmMain::OfferToSave(const QString &title)
{
    if (!gameChanged)
        return true;
    const Answer answer
        = platform_.MsgBox(this, QStringLiteral("Would you like to save the current game?"),
            Buttons::YesNoCancel, Icon::Question, title);
    if (answer == Answer::Yes)
        mnuSaveGame_Click();
    return answer != Answer::Cancel;
}

QString frmMain::ChooseFile(uint8_t flag, const QString &title, const QString &action,
    const QStringList &folders, const QString &pattern)
{
    frmFile chooser(*this);
    chooser.bytFlag = flag;
    chooser.setWindowTitle(title);
    chooser.cmdSet->setText(action);
    chooser.SetFolders(folders);
    chooser.SetPattern(pattern);
    chooser.exec();
    return chooser.absFilename;
}

void frmMain::mnuHTP_Click()
{
    const QString path = folders_.data + QStringLiteral("/qvl.html");
    if (platform_.OpenDocument(path))
        return;
    platform_.MsgBox(this,
        QStringLiteral("Unable to open ") + QDir::toNativeSeparators(path)
            + QStringLiteral(" automatically.\r\nPlease open the file manually."),
        Buttons::Ok, Icon::Information, QStringLiteral("Quorvel - Help"));
}

void frmMain::mnuAbout_Click()
{
    frmAbout box(*this);
    box.exec();
}
