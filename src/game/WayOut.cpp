#include "WayOut.h"

#include "Solver.h"

#include <cstdint>

// By position number; written at build time by quorvel-wayout.
extern const int8_t FewestStepsByPosition[];

int FewestStepsLeft(const Layout &codes)
{
    const int number = PositionNumber(codes);
    return number < 0 ? NoWayOut : FewestStepsByPosition[number];
}

std::optional<Move> NextStepOut(const Layout &codes)
{
    const int left = FewestStepsLeft(codes);
    if (left <= 0)
        return std::nullopt;
    // Some step always leads one closer: the table's figure came from such a
    // neighbour.
    for (const Move &move : LegalMoves(codes))
        if (FewestStepsLeft(ApplyMove(codes, move)) == left - 1)
            return move;
    return std::nullopt;
}
