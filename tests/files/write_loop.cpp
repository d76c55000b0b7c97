// Saves games under new names and replaces the skin setting, over and over,
// until it is killed: what the game's writers do, as fast as they can.
//
//     quorvel-write-loop PROGRAM_FOLDER
#include "files/SavedGame.h"
#include "files/Settings.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString folder = app.arguments().value(1);
    GameState game;
    game.levelIndex = 3;
    game.SetUp({1, 21, 0, 3, 20, 23, 31, 32, 40, 43});
    // The caller's kills are timed from here, not from a start that a
    // sanitizer or a busy machine may make slow.
    std::puts("writing");
    std::fflush(stdout);
    for (int i = 0;; ++i) {
        game.steps = i;
        WriteSavedGame(
            SavedGamePath(folder,
                QStringLiteral("Game %1 %2").arg(QCoreApplication::applicationPid()).arg(i)),
            BuildSavedGame(game, QStringLiteral("Level 4   ")));
        WriteSkinSetting(folder + QStringLiteral("/qvl.ini"), QStringLiteral("skin%1.bmp").arg(i));
    }
}
