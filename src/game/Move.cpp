#include "Move.h"

#include <limits>

Move Reversed(const Move &move)
{
    return {move.piece, move.to, move.from};
}

int16_t CodeOf(Cell cell)
{
    return static_cast<int16_t>(cell.row * 10 + cell.col);
}

Cell CellOf(int16_t code)
{
    return {static_cast<int16_t>(code % 10), static_cast<int16_t>(code / 10)};
}

void MakeStep(GameState &game, const Move &move, Count count)
{
    // Removing comes before placing: a block two cells long that moves one
    // cell along its length overlaps its old place.
    game.RemovePieceFromBoard(move.piece, move.from.col, move.from.row);
    game.PlacePieceOnBoard(move.piece, move.to.col, move.to.row);
    if (move.from == move.to)
        return;
    // The count stops at its largest value rather than turn negative, which
    // a saved game could not be loaded with; taking back never goes below 0.
    if (count == Count::Forward && game.steps < std::numeric_limits<int32_t>::max())
        ++game.steps;
    else if (count == Count::Back && game.steps > 0)
        --game.steps;
}
