// Layouts drawn as text, and solutions played back through the game's own
// board rules rather than the solver's, so a fault in the solver's moves
// cannot hide behind the same fault in the check.
#pragma once

#include "game/GameState.h"
#include "game/Solver.h"

#include <QString>

// Five rows of four characters joined by '/': each cell the number of the
// block covering it, '.' when free. The first cell of a number in reading
// order is its block's top-left cell.
inline Layout LayoutOf(const char *picture)
{
    Layout codes;
    codes.fill(-1);
    int16_t row = 0, col = 0;
    for (const char *at = picture; *at; ++at) {
        if (*at == '/') {
            ++row;
            col = 0;
            continue;
        }
        if (*at != '.' && codes[*at - '0'] < 0)
            codes[*at - '0'] = static_cast<int16_t>(row * 10 + col);
        ++col;
    }
    return codes;
}

// Empty when every move is one straight slide the game allows, of the block
// standing where the move says, and the board ends solved; else what failed.
inline QString Replay(const Layout &start, const std::vector<SolverMove> &moves)
{
    GameState game;
    game.SetUp(start);
    for (size_t i = 0; i < moves.size(); ++i) {
        const SolverMove &move = moves[i];
        const QString step = QStringLiteral("step %1 (block %2, %3 to %4): ")
                                 .arg(i + 1)
                                 .arg(move.piece)
                                 .arg(move.from)
                                 .arg(move.to);
        if (move.piece < 0 || move.piece >= PieceCount)
            return step + QStringLiteral("no such block");
        const PieceInfo &info = game.pieces[move.piece];
        if (info.row * 10 + info.col != move.from)
            return step + QStringLiteral("the block is at %1").arg(info.row * 10 + info.col);
        if (!IsValidCode(move.piece, move.to))
            return step + QStringLiteral("off the board");
        const auto fromRow = static_cast<int16_t>(move.from / 10);
        const auto fromCol = static_cast<int16_t>(move.from % 10);
        const auto toRow = static_cast<int16_t>(move.to / 10);
        const auto toCol = static_cast<int16_t>(move.to % 10);
        bool free = false;
        if (fromRow == toRow && fromCol != toCol)
            free = game.CanSlideHorizontally(move.piece, fromCol, toCol, fromRow);
        else if (fromCol == toCol && fromRow != toRow)
            free = game.CanSlideVertically(move.piece, fromRow, toRow, fromCol);
        else
            return step + QStringLiteral("not a slide along one row or one column");
        if (!free)
            return step + QStringLiteral("the way is blocked");
        game.RemovePieceFromBoard(move.piece, fromCol, fromRow);
        game.PlacePieceOnBoard(move.piece, toCol, toRow);
    }
    return game.IsSolved() ? QString() : QStringLiteral("the last step leaves the board unsolved");
}
