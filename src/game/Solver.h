// Shortest solutions and the map of every position the ten blocks can take.
//
// A step is what one drag does in the game: one block slid any number of
// cells along one row or one column over free cells, never turning and never
// passing another block. Blocks of one shape look alike to the player, so the
// search treats them as interchangeable: two layouts that differ only by which
// of the tall (or small) blocks stands where are one position. That keeps the
// whole space small enough to explore in a few milliseconds.
//
// Plain C++ like the rest of the rules: no Qt here.
#pragma once

#include "GameState.h"
#include "Move.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// Steps are told in the block numbers of the layout they were asked for.
struct Solution
{
    std::vector<Move> moves; // one entry per step, in playing order
    int Steps() const { return static_cast<int>(moves.size()); }
};

// A position with blocks of one shape interchangeable: three bits a cell,
// row-major, naming the shape whose top-left cell is there (1 big, 2 wide,
// 3 tall, 4 small; 0 for a cell that is free or covered by a block starting
// elsewhere). Two layouts have the same
// key exactly when they look the same on the board.
using PositionKey = uint64_t;

// 0, which is no position, for a layout that fails CheckLayout.
PositionKey KeyOf(const Layout &codes);
// The left-right mirror image. The exit sits in the middle of the bottom
// edge, so a position and its mirror need the same number of steps.
PositionKey MirrorKey(PositionKey key);
// The key of whichever of the position and its mirror image is smaller: one
// name for both.
PositionKey MirrorFreeKey(PositionKey key);
// A layout for the key, blocks of one shape numbered in reading order (top
// row first, left to right). Nothing for a key that is no position.
std::optional<Layout> LayoutOfKey(PositionKey key);

// The number StateSpace gives the layout's position, which is the same in
// every run and every build; StateSpace::NoPosition for a layout that fails
// CheckLayout.
int PositionNumber(const Layout &codes);

// Every single step the layout allows, in a fixed order. Empty for a layout
// that fails CheckLayout.
std::vector<Move> LegalMoves(const Layout &codes);
// The layout after the step; the step is trusted to be one of LegalMoves.
Layout ApplyMove(Layout codes, const Move &move);

// A shortest solution by a breadth-first search from the layout alone, which
// stops at the first solved position. Nothing when the layout fails
// CheckLayout or no sequence of steps solves it; no steps when it is solved
// already.
std::optional<Solution> Solve(const Layout &start);

// Every position of the ten blocks, whether or not it can be reached from any
// other, with the moves between them and how many steps each needs at best.
// Built once in the constructor; afterwards every question is a look-up.
class StateSpace
{
public:
    enum { Unsolvable = -1, NoPosition = -1 };

    StateSpace();

    // Positions are numbered from 0; the numbering is the same in every
    // run and every build.
    int StateCount() const { return static_cast<int>(distance_.size()); }
    PositionKey KeyAt(int index) const;

    // Steps to the nearest solved position, or Unsolvable.
    int DistanceAt(int index) const { return distance_[index]; }
    // The most steps any position needs, among those that can be solved.
    int MaxDistance() const { return maxDistance_; }
    // The positions one step away; a step can always be taken back, so the
    // relation is symmetric.
    std::span<const int32_t> NeighboursAt(int index) const;

    // Nothing for a layout that fails CheckLayout or cannot be solved.
    std::optional<int> StepsToSolve(const Layout &codes) const;

private:
    std::vector<int32_t> firstNeighbour_; // StateCount() + 1 offsets into neighbours_
    std::vector<int32_t> neighbours_;
    std::vector<int16_t> distance_;
    int maxDistance_ = 0;
};
