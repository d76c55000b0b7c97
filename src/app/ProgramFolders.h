// Where the game reads its own data and where it keeps the player's. A
// portable game keeps both in the folder that holds the program; an
// installed one reads the level file, the help page and the shipped skins
// from the installed data folder and keeps the player's entries (qvl.ini,
// qvl-player.ini, saved/ and a skins/ of their own) in their home.
#pragma once

#include <QString>
#include <QStringList>

struct ProgramFolders
{
    // One folder for everything: the portable game, and most tests.
    ProgramFolders(const QString &folder)
        : data(folder)
        , player(folder)
    { }
    ProgramFolders(const QString &dataFolder, const QString &playerFolder)
        : data(dataFolder)
        , player(playerFolder)
    { }

    QString data; // QVL.ZHN, qvl.html and the shipped skins/
    QString player; // qvl.ini, qvl-player.ini, saved/ and the player's skins/

    bool Installed() const { return data != player; }
    // The folders the skin chooser lists, the player's first.
    QStringList SkinFolders() const;
    // The picture a skin name stands for: the player's own where they have
    // one of that name, the shipped one otherwise.
    QString SkinPath(const QString &skinName) const;
};

// Decided once, at start-up, from the folder that holds the program. The
// game is installed when the data folder of an installed tree lies beside
// that folder (../share/games/quorvel, so any prefix will do) and the folder
// either cannot be written or holds no level file of its own (so that root
// starting /usr/games/quorvel writes nothing under /usr either). The
// player's folder is then "quorvel" in the XDG data home. Any other folder,
// one on a read-only disk too, is a portable game's, as it always was.
ProgramFolders FindProgramFolders(const QString &programFolder);
