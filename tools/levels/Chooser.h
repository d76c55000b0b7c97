// Picks the starting layouts of the level pack from the explored state space.
#pragma once

#include "game/Solver.h"

#include <vector>

struct ChosenLevel
{
    Layout layout {}; // blocks of one shape numbered in reading order
    int steps = 0;
};

// `count` levels, easiest first, their step counts spread evenly from about
// `firstSteps` up to the most any position needs. Empty when the space holds
// too few good starting positions for that many levels.
std::vector<ChosenLevel> ChooseLevels(const StateSpace &space, int count, int firstSteps);
