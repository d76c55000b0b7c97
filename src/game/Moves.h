// The rules of taking hold of a block, following the pointer and dropping it,
// as pure functions of the board, the drag and the pointer's cell. The window
// only forwards its mouse events here and carries out what comes back.
#pragma once

#include "GameState.h"
#include "Move.h"

#include <cstdint>
#include <optional>

// Where the pointer's shape shows whether a position is allowed.
enum class Pointer : int16_t { Default = 0, NoDrop = 12, Move = 15, Custom = 99 };

// The drag state, recorded at the press and read until the release.
struct Drag
{
    bool dragging = false;
    int16_t dragPiece = 0; // kept after the drop
    int16_t grabCol = 0;
    int16_t grabRow = 0;
    int16_t startCol = 0; // mouse cell at the press
    int16_t startRow = 0;
    int16_t lastCol = 0; // mouse cell at the last accepted position
    int16_t lastRow = 0;
};

// The press: which block, which of its cells, and the mouse cell.
Drag StartDrag(int16_t piece, Cell mouse, Cell grab);

// Keeps the whole block on the board, with the grabbed cell under the
// returned cell: left, top, right, bottom, in that order.
Cell ClampMouseCell(Cell mouse, const Drag &drag, const PieceInfo &info);

// What one pointer movement during a drag does.
struct DragStep
{
    bool nothing = true; // still in the last accepted cell: no work at all
    bool moveImage = false; // put the image on `topLeft`, accept `mouse`
    Cell mouse; // the clamped mouse cell
    Cell topLeft; // the block's top-left cell for the image
    Pointer pointer = Pointer::Move;
};
DragStep DecideDragMove(const GameState &game, const Drag &drag, Cell mouse);
// Takes a movement's decision into the drag: an accepted cell becomes the last one.
void FollowPointer(Drag &drag, const DragStep &step);
// The release, whatever it decided: no block is held any more.
void EndDrag(Drag &drag);

// What the release does.
struct Drop
{
    enum Kind { Straight, AtStart, Diagonal } kind = AtStart;
    Cell mouse; // Straight: the final mouse cell, after any fallback
    Cell topLeft; // Straight: the new top-left cell; Diagonal: the start's
    // Straight: the step from the block's place at the press to `topLeft`,
    // which rewrites the board even when the fallback brought it back home.
    Move move;
};
Drop DecideDrop(const GameState &game, const Drag &drag, Cell mouse);

// An arrow key: the block one cell along (dCol, dRow), as a one-cell drop
// would move it. Nothing when that cell is off the board or taken.
std::optional<Move> KeyStep(const GameState &game, int16_t piece, int16_t dCol, int16_t dRow);

// The block after `selected` in reading order of the top-left cells (row by
// row from the top, left to right), wrapping; backwards with forward false.
// From no block (-1) the first, or going back, the last.
int16_t NextInReadingOrder(const GameState &game, int16_t selected, bool forward);
