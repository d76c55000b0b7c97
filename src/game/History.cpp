#include "History.h"

void History::Clear()
{
    moves_.clear();
    done_ = 0;
}

void History::Make(GameState &game, const Move &move)
{
    MakeStep(game, move);
    if (move.from == move.to)
        return;
    moves_.resize(done_);
    moves_.push_back(move);
    ++done_;
}

std::optional<Move> History::Undo(GameState &game)
{
    if (!CanUndo())
        return std::nullopt;
    const Move back = Reversed(moves_[--done_]);
    MakeStep(game, back, Count::Back);
    return back;
}

std::optional<Move> History::Redo(GameState &game)
{
    if (!CanRedo())
        return std::nullopt;
    const Move again = moves_[done_++];
    MakeStep(game, again);
    return again;
}

int History::Restart(GameState &game)
{
    int count = 0;
    while (Undo(game))
        ++count;
    return count;
}
