// One step of the game as a value. A drop, an arrow key, a hint, Undo and
// Redo all end in a Move, and one function carries every Move out, so the
// board, the block's record and the step count have a single writer.
#pragma once

#include "GameState.h"

#include <cstdint>

struct Cell
{
    int16_t col = 0;
    int16_t row = 0;
    friend bool operator==(const Cell &, const Cell &) = default;
};

struct Move
{
    int16_t piece = 0;
    Cell from; // top-left cells; a step may slide several cells in a line
    Cell to;
    friend bool operator==(const Move &, const Move &) = default;
};

// The same step the other way.
Move Reversed(const Move &move);

// Position codes (row * 10 + col), the form layouts are stored in.
int16_t CodeOf(Cell cell);
Cell CellOf(int16_t code);

// Whether a step counts up, or is one taken back and counts down.
enum class Count { Forward, Back };

// Makes one step: clears the block's cells at `from`, marks them at `to`,
// and counts it when the block stands somewhere else. The move is trusted to
// be one the rules allow (a drop, a key, the solver or the history made it).
void MakeStep(GameState &game, const Move &move, Count count = Count::Forward);
