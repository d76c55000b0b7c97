// The way out of every position, worked out when the game is built: the
// solver explores all 65,880 positions and the build keeps each one's fewest
// steps to the exit in a table inside the program. A hint or the fewest steps
// left is then a look-up, from the first question of a run on, and nothing is
// explored while the player waits.
#pragma once

#include "GameState.h"
#include "Move.h"

#include <optional>

constexpr int NoWayOut = -1;

// Fewest steps from the layout to the exit: 0 when the big block stands on
// it; NoWayOut where no sequence of steps reaches it or the layout fails
// CheckLayout.
int FewestStepsLeft(const Layout &codes);

// A step onto a shortest way out, in the layout's block numbers. Nothing where
// no way out exists or the big block stands on the exit already.
std::optional<Move> NextStepOut(const Layout &codes);
