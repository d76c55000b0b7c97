// Start-up: the program's folder is prepared before the main window loads.
#pragma once

#include "ProgramFolders.h"

class Platform;

// Creates "saved" and "skins" in the player's folder (and, for an installed
// game, that folder itself) when nothing of that name exists, and makes the
// settings file name a skin that is there. `ok` is false when the folder
// could not be prepared; the message has been shown then.
void InitAppFiles(const ProgramFolders &folders, Platform &platform, bool &ok);

// The whole program: prepares the folder, loads the main window and runs it.
int Main(int argc, char **argv);
