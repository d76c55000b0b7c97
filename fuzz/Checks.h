// What every layout the game accepts must leave on the board, checked the
// slow way: each block on exactly its own cells, two cells free.
#pragma once

#include "game/GameState.h"

#include <cstdlib>

inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

inline void RequireSoundBoard(const GameState &game, const Layout &codes)
{
    int free = 0;
    std::array<int, PieceCount> cells {};
    for (int r = 0; r < BoardRows; ++r)
        for (int c = 0; c < BoardCols; ++c) {
            const int piece = game.board[r][c];
            if (piece == -1) {
                ++free;
                continue;
            }
            Require(piece >= 0 && piece < PieceCount);
            const PieceInfo &info = game.pieces[piece];
            Require(r >= info.row && r < info.row + info.height && c >= info.col
                && c < info.col + info.width);
            ++cells[piece];
        }
    Require(free == 2);
    for (int16_t piece = 0; piece < PieceCount; ++piece)
        Require(cells[piece] == game.pieces[piece].width * game.pieces[piece].height);
    Require(game.EncodePositions() == codes);
}
