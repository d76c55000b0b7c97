// Start-up as the program runs it, and choosing a level as a player does,
// for tests that need a main window with a game on it.
#pragma once

#include "app/frmMain.h"

class ScriptedPlatform;

// InitAppFiles on the window's folders, then its load. False when start-up
// stopped.
bool StartUp(frmMain &form, ScriptedPlatform &platform);

// Opens New Game and picks the row of `levelIndex` in the real chooser.
void ChooseLevel(frmMain &form, int levelIndex);

// Mouse events on a block's image, at the centre of a board cell.
void Press(frmMain &form, int piece, Cell cell, Qt::MouseButton button = Qt::LeftButton);
void MoveTo(frmMain &form, int piece, Cell cell);
void Release(frmMain &form, int piece, Cell cell, Qt::MouseButton button = Qt::LeftButton);

// A whole drag with real mouse events on the block's image: press on the
// given board cell of the block, move through `path` (board cells), release
// on the last one. Positions are cell centres.
void DragBlock(frmMain &form, int piece, Cell from, std::initializer_list<Cell> path);

// Where the board cell's centre lies inside a block's image, in pixels.
QPoint CellCentreIn(const QWidget &image, Cell cell);
