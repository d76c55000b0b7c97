// The solver against answers worked out by hand, its solutions played back
// through the game's own board rules rather than its own, so a fault in its
// moves cannot hide behind the same fault in the check.
#include "game/Solver.h"
#include "game/WayOut.h"
#include "support/ProgramFolder.h"

#include <QTest>

Q_DECLARE_METATYPE(Layout)

namespace {

// -1 when every step is one straight slide the game allows, of the block
// standing where the step says, and the board ends solved; else the number
// (from 0) of the first step that is not, or the step count if the last one
// leaves the board unsolved.
int Replay(const Layout &start, const std::vector<Move> &moves)
{
    GameState game;
    game.SetUp(start);
    for (size_t i = 0; i < moves.size(); ++i) {
        const auto [piece, from, to] = moves[i];
        const auto [col, row] = from;
        const auto [toCol, toRow] = to;
        if (piece < 0 || piece >= PieceCount || game.pieces[piece].row != row
            || game.pieces[piece].col != col || !IsValidCode(piece, CodeOf(to))
            || !(row == toRow ? col != toCol && game.CanSlideHorizontally(piece, col, toCol, row)
                              : col == toCol && game.CanSlideVertically(piece, row, toRow, col)))
            return int(i);
        game.RemovePieceFromBoard(piece, col, row);
        game.PlacePieceOnBoard(piece, toCol, toRow);
    }
    return game.IsSolved() ? -1 : int(moves.size());
}

} // namespace

class tst_Solver : public QObject
{
    Q_OBJECT
private slots:
    void knownAnswers_data()
    {
        QTest::addColumn<Layout>("layout");
        QTest::addColumn<int>("steps"); // -1: no solution
        QTest::newRow("solved already") << LayoutFromPicture("2345/2345/6117/8009/.00.") << 0;
        // The big block drops one cell onto the exit.
        QTest::newRow("one slide") << LayoutFromPicture("2115/2675/3004/3004/8..9") << 1;
        // Block 5 clears both cells left of the big block by going up two cells
        // at once, then the big block slides left. Cell by cell it would be three.
        QTest::newRow("slide of two cells") << LayoutFromPicture("1167/2.83/2.93/4500/4500") << 2;
        // Block 6 can only leave the big block's way by going up and then left:
        // turning in one drag would make it two steps in all. The small blocks are
        // not numbered in reading order, and the answer must name them as given.
        QTest::newRow("way around a corner") << LayoutFromPicture("2311/2345/9745/..00/8600") << 3;
        // The tall block 4 can move right and back; nothing else ever moves.
        QTest::newRow("blocked") << LayoutFromPicture("2311/234./654./7500/8900") << -1;
    }

    void knownAnswers()
    {
        QFETCH(Layout, layout);
        QFETCH(int, steps);
        const std::optional<Solution> searched = Solve(layout);
        QCOMPARE(space.StepsToSolve(layout).value_or(-1), steps);
        QCOMPARE(searched ? searched->Steps() : -1, steps);
        // The hint names the block as the layout numbers it.
        QCOMPARE(FewestStepsLeft(layout), steps);
        const std::optional<Move> hint = NextStepOut(layout);
        QCOMPARE(hint.has_value(), steps > 0);
        if (hint)
            QCOMPARE(Replay(layout, {*hint}) != 0 ? FewestStepsLeft(ApplyMove(layout, *hint)) : -2,
                steps - 1);
        if (steps < 0)
            return;
        QCOMPARE(Replay(layout, searched->moves), -1);
    }

    void keysIgnoreSameShapeSwapsAndMirrors()
    {
        const PositionKey key = KeyOf(LayoutFromPicture("1167/2.83/2.93/4500/4500"));
        QCOMPARE(KeyOf(LayoutFromPicture("1176/2.93/2.83/5400/5400")), key);
        const PositionKey mirrored = KeyOf(LayoutFromPicture("7611/38.2/39.2/0054/0054"));
        QVERIFY(mirrored != key);
        QCOMPARE(MirrorKey(key), mirrored);
        QCOMPARE(MirrorFreeKey(mirrored), MirrorFreeKey(key));
    }

    // Checked against the board rules alone, position by position: a solved
    // position needs no step, any other one more than the best position a step
    // away, and none has a way out when no neighbour has one. Only the true
    // fewest steps satisfy all three, so no second solver is needed to check.
    // The map of all positions must agree on every one, and the search on the
    // first position of each distance, its steps played back.
    void theWayOutIsShortestFromEveryPosition()
    {
        QCOMPARE(space.StateCount(), 65880); // what a plain count of all placements gives
        QCOMPARE(space.MaxDistance(), 101);
        std::vector<bool> searched(102);
        for (int index = 0; index < space.StateCount(); ++index) {
            const Layout layout = *LayoutOfKey(space.KeyAt(index));
            int best = NoWayOut; // among the positions one step away
            for (const Move &move : LegalMoves(layout))
                if (const int next = FewestStepsLeft(ApplyMove(layout, move));
                    next != NoWayOut && (best == NoWayOut || next < best))
                    best = next;
            GameState game;
            game.SetUp(layout);
            const int left = FewestStepsLeft(layout);
            QCOMPARE(left, game.IsSolved() ? 0 : best == NoWayOut ? NoWayOut : best + 1);
            const std::optional<Move> hint = NextStepOut(layout);
            QCOMPARE(hint.has_value(), left > 0);
            if (hint)
                QCOMPARE(
                    Replay(layout, {*hint}) != 0 ? FewestStepsLeft(ApplyMove(layout, *hint)) : -2,
                    left - 1);
            QCOMPARE(space.DistanceAt(index), left);
            if (left != NoWayOut && !searched[left]) {
                searched[left] = true;
                const std::optional<Solution> solution = Solve(layout);
                QCOMPARE(solution ? solution->Steps() : NoWayOut, left);
                QCOMPARE(Replay(layout, solution->moves), -1);
            }
        }
    }

private:
    const StateSpace space;
};

QTEST_APPLESS_MAIN(tst_Solver)
#include "tst_Solver.moc"
