// The steps of the game on the board, for Undo, Redo and Restart. A new or
// loaded game starts with none; a saved game holds none.
#pragma once

#include "Move.h"

#include <optional>
#include <vector>

class History
{
public:
    void Clear();

    // Makes a new step and remembers it; whatever could have been redone is
    // forgotten. A step that leaves the block where it was is made (the
    // board is rewritten) but not remembered.
    void Make(GameState &game, const Move &move);

    bool CanUndo() const { return done_ > 0; }
    bool CanRedo() const { return done_ < moves_.size(); }

    // Takes the last step back, the whole slide at once, and counts one step
    // less. Returns the move as carried out (from the step's end to its
    // start), or nothing when no step was made.
    std::optional<Move> Undo(GameState &game);
    // Makes the last step taken back again. Nothing when none was.
    std::optional<Move> Redo(GameState &game);
    // Takes back every step, back to where the game began; each can then be
    // redone in turn. Returns how many were taken back.
    int Restart(GameState &game);

private:
    std::vector<Move> moves_;
    size_t done_ = 0; // moves_[0, done_) are on the board
};
