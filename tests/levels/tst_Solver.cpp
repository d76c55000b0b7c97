// The solver against answers worked out by hand, against the game's own move
// rules, and the explored space against the properties any correct
// breadth-first search must leave behind.
#include "SolverCheck.h"

#include <QTest>

#include <algorithm>
#include <memory>
#include <set>

Q_DECLARE_METATYPE(Layout)

namespace {

// Block numbers scrambled within each shape: 5 and 2 swapped, 9 and 6
// swapped. Answers must still name the blocks the caller numbered.
Layout Scrambled(Layout codes)
{
    std::swap(codes[2], codes[5]);
    std::swap(codes[6], codes[9]);
    return codes;
}

std::set<std::pair<int, int>> MovesByGameRules(const Layout &codes)
{
    GameState game;
    game.SetUp(codes);
    std::set<std::pair<int, int>> moves;
    for (int16_t piece = 0; piece < PieceCount; ++piece) {
        const auto row = static_cast<int16_t>(codes[piece] / 10);
        const auto col = static_cast<int16_t>(codes[piece] % 10);
        for (int16_t c = 0; c < BoardCols; ++c)
            if (c != col && IsValidCode(piece, int16_t(row * 10 + c))
                && game.CanSlideHorizontally(piece, col, c, row))
                moves.insert({piece, row * 10 + c});
        for (int16_t r = 0; r < BoardRows; ++r)
            if (r != row && IsValidCode(piece, int16_t(r * 10 + col))
                && game.CanSlideVertically(piece, row, r, col))
                moves.insert({piece, r * 10 + col});
    }
    return moves;
}

} // namespace

class tst_Solver : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void knownAnswers_data();
    void knownAnswers();
    void brokenLayoutsHaveNoAnswer_data();
    void brokenLayoutsHaveNoAnswer();
    void legalMovesAreExactlyTheGameRules();
    void bothSolversGiveShortestPlayableSolutions_data();
    void bothSolversGiveShortestPlayableSolutions();
    void spaceHoldsEveryPositionOnce();
    void distancesAreThoseOfABreadthFirstSearch();
    void hardestPositionNeeds101Steps();
    void keysIgnoreSameShapeSwapsAndKnowMirrors();
    void badKeysAreNoPosition_data();
    void badKeysAreNoPosition();

private:
    std::unique_ptr<StateSpace> space;
};

void tst_Solver::initTestCase()
{
    space = std::make_unique<StateSpace>();
}

void tst_Solver::knownAnswers_data()
{
    QTest::addColumn<Layout>("layout");
    QTest::addColumn<int>("steps"); // -1: no solution

    QTest::newRow("solved already") << LayoutOf("2345/2345/6117/8009/.00.") << 0;
    // The big block drops one cell onto the exit.
    QTest::newRow("one slide") << LayoutOf("2115/2675/3004/3004/8..9") << 1;
    // Block 5 must clear both cells left of the big block: up two cells at
    // once, then the big block slides left. Cell by cell it would be three.
    const Layout longSlide = LayoutOf("1167/2.83/2.93/4500/4500");
    QTest::newRow("slide of two cells is one step") << longSlide << 2;
    QTest::newRow("slide of two cells, renumbered") << Scrambled(longSlide) << 2;
    // Block 9 can only leave the big block's way by going up and then left:
    // two steps, then the big block. Turning in one drag would make it two.
    QTest::newRow("way around a corner is two steps") << LayoutOf("2311/2345/6745/..00/8900") << 3;
    // The tall block 4 can move right and back; nothing else ever moves.
    QTest::newRow("blocked") << LayoutOf("2311/234./654./7500/8900") << -1;
}

void tst_Solver::knownAnswers()
{
    QFETCH(Layout, layout);
    QFETCH(int, steps);
    QVERIFY(CheckLayout(layout).empty());

    const std::optional<Solution> searched = Solve(layout);
    const std::optional<Solution> walked = space->Solve(layout);
    const std::optional<int> count = space->StepsToSolve(layout);
    if (steps < 0) {
        QVERIFY(!searched);
        QVERIFY(!walked);
        QVERIFY(!count);
        return;
    }
    QVERIFY(searched && walked && count);
    QCOMPARE(searched->Steps(), steps);
    QCOMPARE(walked->Steps(), steps);
    QCOMPARE(*count, steps);
    QCOMPARE(Replay(layout, searched->moves), QString());
    QCOMPARE(Replay(layout, walked->moves), QString());
}

void tst_Solver::brokenLayoutsHaveNoAnswer_data()
{
    QTest::addColumn<Layout>("layout");
    const Layout sound = LayoutOf("2345/2345/6117/8009/.00.");
    Layout overlap = sound;
    overlap[9] = overlap[8];
    Layout offBoard = sound;
    offBoard[0] = 33; // two columns wide from the last column
    Layout negative = sound;
    negative[6] = -1;
    QTest::newRow("two blocks on one cell") << overlap;
    QTest::newRow("big block off the board") << offBoard;
    QTest::newRow("negative code") << negative;
}

void tst_Solver::brokenLayoutsHaveNoAnswer()
{
    QFETCH(Layout, layout);
    QVERIFY(!Solve(layout));
    QVERIFY(!space->Solve(layout));
    QVERIFY(!space->StepsToSolve(layout));
    QVERIFY(LegalMoves(layout).empty());
    QCOMPARE(KeyOf(layout), PositionKey(0));
}

void tst_Solver::legalMovesAreExactlyTheGameRules()
{
    // A spread of positions, plus one with the blocks renumbered.
    std::vector<Layout> layouts = {Scrambled(LayoutOf("1167/2.83/2.93/4500/4500"))};
    for (int index = 0; index < space->StateCount(); index += 331)
        layouts.push_back(*LayoutOfKey(space->KeyAt(index)));
    for (const Layout &layout : layouts) {
        std::set<std::pair<int, int>> generated;
        for (const SolverMove &move : LegalMoves(layout)) {
            QCOMPARE(move.from, layout[move.piece]);
            QVERIFY2(generated.insert({move.piece, move.to}).second, "a move listed twice");
        }
        QCOMPARE(generated, MovesByGameRules(layout));
    }
}

void tst_Solver::bothSolversGiveShortestPlayableSolutions_data()
{
    QTest::addColumn<bool>("searching");
    QTest::newRow("search from the layout") << true;
    QTest::newRow("walk down the distances") << false;
}

void tst_Solver::bothSolversGiveShortestPlayableSolutions()
{
    QFETCH(bool, searching);
    // One position for every distance there is, the hardest included.
    std::vector<int> sample(space->MaxDistance() + 1, -1);
    for (int index = 0; index < space->StateCount(); ++index) {
        const int distance = space->DistanceAt(index);
        if (distance >= 0 && sample[distance] < 0)
            sample[distance] = index;
    }
    for (int distance = 0; distance <= space->MaxDistance(); ++distance) {
        QVERIFY(sample[distance] >= 0);
        const Layout layout = *LayoutOfKey(space->KeyAt(sample[distance]));
        const std::optional<Solution> solution = searching ? Solve(layout) : space->Solve(layout);
        QVERIFY(solution);
        QCOMPARE(solution->Steps(), distance);
        const QString replayed = Replay(layout, solution->moves);
        QVERIFY2(
            replayed.isEmpty(), qPrintable(QStringLiteral("%1 steps: ").arg(distance) + replayed));
    }
}

void tst_Solver::spaceHoldsEveryPositionOnce()
{
    // 65880 is also what a plain cell-by-cell count of all placements gives.
    QCOMPARE(space->StateCount(), 65880);
    std::set<PositionKey> keys;
    for (int index = 0; index < space->StateCount(); ++index) {
        const PositionKey key = space->KeyAt(index);
        const std::optional<Layout> layout = LayoutOfKey(key);
        QVERIFY(layout);
        QVERIFY(CheckLayout(*layout).empty());
        QCOMPARE(KeyOf(*layout), key);
        QCOMPARE(space->IndexOf(key), index);
        keys.insert(key);
    }
    QCOMPARE(int(keys.size()), space->StateCount());
}

void tst_Solver::distancesAreThoseOfABreadthFirstSearch()
{
    for (int index = 0; index < space->StateCount(); ++index) {
        const int distance = space->DistanceAt(index);
        QCOMPARE(distance == 0, IsSolvedKey(space->KeyAt(index)));
        bool oneCloser = false;
        for (const int32_t next : space->NeighboursAt(index)) {
            const auto back = space->NeighboursAt(next);
            QVERIFY2(std::find(back.begin(), back.end(), index) != back.end(),
                "a step cannot be undone");
            QCOMPARE(space->ComponentAt(next), space->ComponentAt(index));
            const int there = space->DistanceAt(next);
            if (distance == StateSpace::Unsolvable) {
                QCOMPARE(there, int(StateSpace::Unsolvable));
                continue;
            }
            QVERIFY(there != StateSpace::Unsolvable);
            QVERIFY(std::abs(there - distance) <= 1);
            oneCloser = oneCloser || there == distance - 1;
        }
        QVERIFY(distance <= 0 || oneCloser);
    }
}

void tst_Solver::hardestPositionNeeds101Steps()
{
    QCOMPARE(space->MaxDistance(), 101);
    int hardest = 0;
    for (int index = 0; index < space->StateCount(); ++index)
        hardest += space->DistanceAt(index) == 101;
    // The position and its mirror image.
    QCOMPARE(hardest, 2);
}

void tst_Solver::keysIgnoreSameShapeSwapsAndKnowMirrors()
{
    const Layout layout = LayoutOf("1167/2.83/2.93/4500/4500");
    QCOMPARE(KeyOf(Scrambled(layout)), KeyOf(layout));
    const Layout mirrored = LayoutOf("7611/38.2/39.2/0054/0054");
    QCOMPARE(MirrorKey(KeyOf(layout)), KeyOf(mirrored));
    QCOMPARE(MirrorKey(KeyOf(mirrored)), KeyOf(layout));
    QCOMPARE(MirrorFreeKey(KeyOf(layout)), MirrorFreeKey(KeyOf(mirrored)));
    QVERIFY(KeyOf(layout) != KeyOf(mirrored));
    // The exit is in the middle, so mirror images are equally hard.
    for (int index = 0; index < space->StateCount(); index += 97)
        QCOMPARE(space->DistanceAt(space->IndexOf(MirrorKey(space->KeyAt(index)))),
            space->DistanceAt(index));
}

void tst_Solver::badKeysAreNoPosition_data()
{
    QTest::addColumn<PositionKey>("key");
    const PositionKey sound = KeyOf(LayoutOf("2345/2345/6117/8009/.00."));
    QTest::newRow("empty board") << PositionKey(0);
    QTest::newRow("code past the shapes") << (sound | PositionKey(7) << 3 * 16);
    QTest::newRow("a small block too few") << (sound & ~(PositionKey(7) << 3 * 8));
    // The wide block's mark moved from cell 9 to the free cell 19, where the
    // block would stick out of the board.
    QTest::newRow("block off the board")
        << (sound - (PositionKey(2) << 3 * 9) + (PositionKey(2) << 3 * 19));
    // A small block's mark moved from cell 8 onto cell 4, under a tall block.
    QTest::newRow("blocks overlap")
        << (sound - (PositionKey(4) << 3 * 8) + (PositionKey(4) << 3 * 4));
}

void tst_Solver::badKeysAreNoPosition()
{
    QFETCH(PositionKey, key);
    QVERIFY(!LayoutOfKey(key));
    QCOMPARE(space->IndexOf(key), int(StateSpace::NoPosition));
}

QTEST_APPLESS_MAIN(tst_Solver)
#include "tst_Solver.moc"
