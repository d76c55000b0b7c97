// How the levels are chosen.
//
// Candidates: every position that can be solved and is not solved yet, taken
// once for it and its mirror image, and only when it is a local peak of
// difficulty: no single step leads to a position that needs more steps. A
// start one step away from a harder position would just be that harder
// puzzle with its first move played for the player.
//
// Step counts: level i (from 0) aims at
//     firstSteps + (most steps any position needs - firstSteps) * i / (count - 1).
// Going from the hardest level down, each level takes the largest step count
// that is at most its aim and at most the count of the level after it, among
// the counts that still have a candidate. So the last level is one of the
// hardest positions there are, the counts never decrease, and where no
// candidate needs exactly the aimed count a neighbouring count stands in.
//
// Among the candidates with that count the one with the best score wins:
//   + 4 when the big block starts in the top row, + 2 in the second: it has
//     the whole board to cross, which is what the puzzle is about;
//   - 1 for each possible first step beyond two: few trivial openings;
//   - 1 for each first step beyond one that already leads closer to the exit:
//     the way in should not be obvious;
//   - 3 for each level already chosen that looks nearly the same, at most
//     five cells different, mirror image included: variety.
// Ties go to the smaller position number, so every run chooses the same.
#include "Chooser.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int Cells = BoardRows * BoardCols;
using Look = std::array<int8_t, Cells>; // the shape covering each cell, -1 when free

Look LookOf(const Layout &codes)
{
    Look look;
    look.fill(-1);
    for (int16_t piece = 0; piece < PieceCount; ++piece) {
        const Shape shape = ShapeOf(piece);
        const int row = codes[piece] / 10, col = codes[piece] % 10;
        for (int r = row; r < row + ShapeHeight(shape); ++r)
            for (int c = col; c < col + ShapeWidth(shape); ++c)
                look[r * BoardCols + c] = static_cast<int8_t>(shape);
    }
    return look;
}

Look Mirrored(const Look &look)
{
    Look mirrored;
    for (int cell = 0; cell < Cells; ++cell)
        mirrored[cell / BoardCols * BoardCols + BoardCols - 1 - cell % BoardCols] = look[cell];
    return mirrored;
}

int CellsApart(const Look &a, const Look &b)
{
    int apart = 0;
    for (int cell = 0; cell < Cells; ++cell)
        apart += a[cell] != b[cell];
    return apart;
}

struct Candidate
{
    int index = 0;
    Layout layout {};
    Look look {};
    int score = 0;
    bool taken = false;
};

constexpr int NearlySameCells = 5;

} // namespace

std::vector<ChosenLevel> ChooseLevels(const StateSpace &space, int count, int firstSteps)
{
    const int most = space.MaxDistance();
    if (count < 2 || firstSteps < 1 || firstSteps > most)
        return {};

    std::vector<std::vector<Candidate>> byDistance(most + 1);
    for (int index = 0; index < space.StateCount(); ++index) {
        const int distance = space.DistanceAt(index);
        const PositionKey key = space.KeyAt(index);
        if (distance <= 0 || MirrorKey(key) < key)
            continue;
        int openings = 0, closer = 0;
        bool peak = true;
        for (const int32_t next : space.NeighboursAt(index)) {
            ++openings;
            closer += space.DistanceAt(next) == distance - 1;
            peak = peak && space.DistanceAt(next) <= distance;
        }
        if (!peak)
            continue;
        Candidate candidate;
        candidate.index = index;
        candidate.layout = *LayoutOfKey(key);
        candidate.look = LookOf(candidate.layout);
        const int bigRow = candidate.layout[0] / 10;
        candidate.score = (bigRow == 0          ? 4
                                  : bigRow == 1 ? 2
                                                : 0)
            - std::max(0, openings - 2) - std::max(0, closer - 1);
        byDistance[distance].push_back(candidate);
    }

    std::vector<ChosenLevel> chosen;
    std::vector<Look> chosenLooks;
    int ceiling = most;
    for (int level = count - 1; level >= 0; --level) {
        const double aim = firstSteps + double(most - firstSteps) * level / (count - 1);
        int distance = std::min(ceiling, static_cast<int>(std::lround(aim)));
        auto hasCandidate = [&](int d) {
            return std::any_of(byDistance[d].begin(), byDistance[d].end(),
                [](const Candidate &c) { return !c.taken; });
        };
        while (distance > 0 && !hasCandidate(distance))
            --distance;
        if (distance <= 0)
            return {};

        Candidate *best = nullptr;
        int bestScore = 0;
        for (Candidate &candidate : byDistance[distance]) {
            if (candidate.taken)
                continue;
            int score = candidate.score;
            const Look mirrored = Mirrored(candidate.look);
            for (const Look &look : chosenLooks)
                if (std::min(CellsApart(look, candidate.look), CellsApart(look, mirrored))
                    <= NearlySameCells)
                    score -= 3;
            if (!best || score > bestScore) {
                best = &candidate;
                bestScore = score;
            }
        }
        best->taken = true;
        chosen.push_back({best->layout, distance});
        chosenLooks.push_back(best->look);
        ceiling = distance;
    }
    std::reverse(chosen.begin(), chosen.end());
    return chosen;
}
