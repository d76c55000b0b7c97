// Pointer arithmetic and the drag and drop decisions, on boards drawn here.
#include "game/Moves.h"
#include "support/BoardText.h"
#include "support/ProgramFolder.h"

#include <QTest>

Q_DECLARE_METATYPE(Cell)

namespace {

GameState Board(const char *picture)
{
    GameState game;
    game.SetUp(LayoutFromPicture(picture));
    return game;
}

// A press on the given cell of a block resting where the board says,
// expressed as the window would report it at one unit per pixel.
Drag PressOn(const GameState &game, int16_t piece, Cell grabbed)
{
    const PieceInfo &info = game.pieces[piece];
    const float left = LayoutEdge(info.col, 1), top = LayoutEdge(info.row, 1);
    const float x = float(grabbed.col - info.col) * 60 + 25;
    const float y = float(grabbed.row - info.row) * 60 + 25;
    return StartDrag(piece, MouseCell(left, top, x, y, 1, 1), GrabOffset(x, y, 1, 1));
}

} // namespace

class tst_Moves : public QObject
{
    Q_OBJECT
private slots:
    void roundingGoesToTheEvenNeighbour();
    void pixelsBecomeCellsWithTheMarginInTheFirstCell_data();
    void pixelsBecomeCellsWithTheMarginInTheFirstCell();
    void unitsPerPixelDoNotMoveTheCell_data();
    void unitsPerPixelDoNotMoveTheCell();
    void grabOffsetNamesTheHeldCell_data();
    void grabOffsetNamesTheHeldCell();
    void edgesFollowTheScreensUnits();
    void centringRoundsThenTruncates();
    void clampingKeepsTheBlockOnTheBoard_data();
    void clampingKeepsTheBlockOnTheBoard();
    void dragFollowsOnlyFreeStraightPaths_data();
    void dragFollowsOnlyFreeStraightPaths();
    void dragInTheLastAcceptedCellDoesNothing();
    void dropSettlesByTheSameRules_data();
    void dropSettlesByTheSameRules();
};

void tst_Moves::roundingGoesToTheEvenNeighbour()
{
    QCOMPARE(RoundHalfEven(0.5), 0);
    QCOMPARE(RoundHalfEven(1.5), 2);
    QCOMPARE(RoundHalfEven(2.5), 2);
    QCOMPARE(RoundHalfEven(-0.5), 0);
    QCOMPARE(RoundHalfEven(-1.5), -2);
    QCOMPARE(RoundHalfEven(2.4999), 2);
    QCOMPARE(RoundHalfEven(7.5), 8);
}

void tst_Moves::pixelsBecomeCellsWithTheMarginInTheFirstCell_data()
{
    QTest::addColumn<int>("pixel");
    QTest::addColumn<int>("cell");
    QTest::newRow("far-left-margin") << -29 << 0;
    QTest::newRow("origin") << 30 << 0;
    QTest::newRow("last-of-first") << 89 << 0;
    QTest::newRow("first-of-second") << 90 << 1;
    QTest::newRow("last-column") << 269 << 3;
    QTest::newRow("right-of-board") << 270 << 4;
    QTest::newRow("bottom-row") << 329 << 4;
    QTest::newRow("left-of-margin") << -30 << -1;
    QTest::newRow("far-left") << -91 << -2;
}

void tst_Moves::pixelsBecomeCellsWithTheMarginInTheFirstCell()
{
    QFETCH(int, pixel);
    QFETCH(int, cell);
    QCOMPARE(int(CellOfPixel(pixel)), cell);
}

void tst_Moves::unitsPerPixelDoNotMoveTheCell_data()
{
    QTest::addColumn<float>("unitsPerPixel");
    QTest::newRow("1") << 1.0f;
    QTest::newRow("12") << 12.0f;
    QTest::newRow("15") << 15.0f;
}

void tst_Moves::unitsPerPixelDoNotMoveTheCell()
{
    QFETCH(float, unitsPerPixel);
    // A block resting on row 2, column 3, grabbed 59 pixels right and 1 down:
    // still its own cell; one pixel more and the pointer is off the board.
    const float left = LayoutEdge(3, unitsPerPixel), top = LayoutEdge(2, unitsPerPixel);
    QCOMPARE(
        MouseCell(left, top, 59 * unitsPerPixel, 1 * unitsPerPixel, unitsPerPixel, unitsPerPixel),
        (Cell {3, 2}));
    QCOMPARE(
        MouseCell(left, top, 60 * unitsPerPixel, 1 * unitsPerPixel, unitsPerPixel, unitsPerPixel),
        (Cell {4, 2}));
    QCOMPARE(
        MouseCell(left, top, -1 * unitsPerPixel, -1 * unitsPerPixel, unitsPerPixel, unitsPerPixel),
        (Cell {2, 1}));
}

void tst_Moves::grabOffsetNamesTheHeldCell_data()
{
    QTest::addColumn<float>("x");
    QTest::addColumn<float>("y");
    QTest::addColumn<float>("unitsPerPixel");
    QTest::addColumn<Cell>("grab");
    QTest::newRow("top-left") << 0.0f << 0.0f << 1.0f << Cell {0, 0};
    QTest::newRow("right-half") << 61.0f << 10.0f << 1.0f << Cell {1, 0};
    QTest::newRow("lower-half") << 10.0f << 119.0f << 1.0f << Cell {0, 1};
    QTest::newRow("right-half-at-15") << 900.0f << 0.0f << 15.0f << Cell {1, 0};
    QTest::newRow("just-short-at-15") << 899.0f << 0.0f << 15.0f << Cell {0, 0};
}

void tst_Moves::grabOffsetNamesTheHeldCell()
{
    QFETCH(float, x);
    QFETCH(float, y);
    QFETCH(float, unitsPerPixel);
    QFETCH(Cell, grab);
    QCOMPARE(GrabOffset(x, y, unitsPerPixel, unitsPerPixel), grab);
}

void tst_Moves::edgesFollowTheScreensUnits()
{
    QCOMPARE(LayoutEdge(1, 15), 1350.0f); // the big block on the exit
    QCOMPARE(LayoutEdge(3, 15), 3150.0f);
    QCOMPARE(LayoutEdge(4, 15), 4050.0f);
    QCOMPARE(LayoutEdge(0, 12), 360.0f);
    QCOMPARE(DragEdge(3, 15), 3150.0f);
    QCOMPARE(DragEdge(2, 15), 2250.0f);
    QCOMPARE(UnitsOf(310, 12), 3720.0f);
}

void tst_Moves::centringRoundsThenTruncates()
{
    QCOMPARE(CentredOrigin(0, 15360, 6210), 4575);
    QCOMPARE(CentredOrigin(0, 6120, 3000), 1560); // the banner, across
    QCOMPARE(CentredOrigin(0, 6075, 1500), 2287); // and down
    QCOMPARE(CentredOrigin(0, 100, 105), -2); // wider than the screen
    QCOMPARE(CentredOrigin(1000, 6210, 4245), 1000 + 982);
    QCOMPARE(CentredOrigin(0, 10.5, 0), 5); // 10.5 rounds to 10
}

void tst_Moves::clampingKeepsTheBlockOnTheBoard_data()
{
    QTest::addColumn<int>("piece");
    QTest::addColumn<Cell>("grab");
    QTest::addColumn<Cell>("mouse");
    QTest::addColumn<Cell>("clamped");
    QTest::newRow("small-far-left") << 8 << Cell {0, 0} << Cell {-3, 4} << Cell {0, 4};
    QTest::newRow("big-right-half-to-first-column")
        << 0 << Cell {1, 0} << Cell {0, 0} << Cell {1, 0};
    QTest::newRow("big-past-the-bottom") << 0 << Cell {0, 1} << Cell {2, 9} << Cell {2, 4};
    QTest::newRow("bar-past-the-right") << 1 << Cell {1, 0} << Cell {7, 2} << Cell {3, 2};
    QTest::newRow("vertical-above-the-top") << 4 << Cell {0, 1} << Cell {0, -1} << Cell {0, 1};
    QTest::newRow("on-the-board") << 9 << Cell {0, 0} << Cell {2, 3} << Cell {2, 3};
}

void tst_Moves::clampingKeepsTheBlockOnTheBoard()
{
    QFETCH(int, piece);
    QFETCH(Cell, grab);
    QFETCH(Cell, mouse);
    QFETCH(Cell, clamped);
    GameState game;
    Drag drag = StartDrag(int16_t(piece), {0, 0}, grab);
    QCOMPARE(ClampMouseCell(mouse, drag, game.pieces[piece]), clamped);
}

void tst_Moves::dragFollowsOnlyFreeStraightPaths_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<int>("piece");
    QTest::addColumn<Cell>("grabbed"); // board cell pressed
    QTest::addColumn<Cell>("mouse");
    QTest::addColumn<bool>("moves");
    QTest::addColumn<Cell>("topLeft");
    const QByteArray open = "2003/2003/4115/46.5/8.79";
    QTest::newRow("small-one-right")
        << open << 8 << Cell {0, 4} << Cell {1, 4} << true << Cell {1, 4};
    QTest::newRow("small-two-right-blocked")
        << open << 8 << Cell {0, 4} << Cell {2, 4} << false << Cell {};
    QTest::newRow("small-up-blocked")
        << open << 8 << Cell {0, 4} << Cell {0, 3} << false << Cell {};
    QTest::newRow("diagonal") << open << 6 << Cell {1, 3} << Cell {2, 4} << false << Cell {};
    QTest::newRow("small-down-into-gap")
        << open << 6 << Cell {1, 3} << Cell {1, 4} << true << Cell {1, 4};
    QTest::newRow("vertical-down-one-over-itself")
        << QByteArray("2003/2003/4115/46.5/.879") << 4 << Cell {0, 2} << Cell {0, 3} << true
        << Cell {0, 3};
    QTest::newRow("grabbed-lower-half-keeps-offset")
        << QByteArray("2003/2003/4115/46.5/.879") << 4 << Cell {0, 3} << Cell {0, 4} << true
        << Cell {0, 3};
    QTest::newRow("pinned-at-the-edge-is-the-start")
        << open << 8 << Cell {0, 4} << Cell {-2, 4} << true << Cell {0, 4};
    QTest::newRow("far-jump-past-a-block") << QByteArray("2003/2003/4115/4..5/6879") << 6
                                           << Cell {0, 4} << Cell {3, 4} << false << Cell {};
}

void tst_Moves::dragFollowsOnlyFreeStraightPaths()
{
    QFETCH(QByteArray, picture);
    QFETCH(int, piece);
    QFETCH(Cell, grabbed);
    QFETCH(Cell, mouse);
    QFETCH(bool, moves);
    QFETCH(Cell, topLeft);
    const GameState game = Board(picture.constData());
    const QByteArray before = BoardPicture(game);
    const Drag drag = PressOn(game, int16_t(piece), grabbed);
    const DragStep step = DecideDragMove(game, drag, mouse);
    QVERIFY(!step.nothing);
    QCOMPARE(step.moveImage, moves);
    QCOMPARE(step.pointer, moves ? Pointer::Move : Pointer::NoDrop);
    if (moves)
        QCOMPARE(step.topLeft, topLeft);
    QCOMPARE(BoardPicture(game), before);
}

void tst_Moves::dragInTheLastAcceptedCellDoesNothing()
{
    const GameState game = Board("2003/2003/4115/46.5/8.79");
    Drag drag = PressOn(game, 8, {0, 4});
    drag.lastCol = 1; // accepted one cell right earlier
    const DragStep step = DecideDragMove(game, drag, {1, 4});
    QVERIFY(step.nothing);
    QVERIFY(!step.moveImage);
    // Back on the start from elsewhere: the image returns, the pointer allows.
    const DragStep back = DecideDragMove(game, drag, {0, 4});
    QVERIFY(back.moveImage);
    QCOMPARE(back.topLeft, (Cell {0, 4}));
    QCOMPARE(back.pointer, Pointer::Move);
}

void tst_Moves::dropSettlesByTheSameRules_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<int>("piece");
    QTest::addColumn<Cell>("grabbed");
    QTest::addColumn<Cell>("last"); // last accepted mouse cell
    QTest::addColumn<Cell>("release");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<int>("steps");
    const QByteArray open = "2003/2003/4115/46.5/8.79";
    QTest::newRow("straight-free")
        << open << 8 << Cell {0, 4} << Cell {1, 4} << Cell {1, 4} << int(Drop::Straight)
        << QByteArray("2003/2003/4115/46.5/.879") << 1;
    QTest::newRow("blocked-falls-back-to-last")
        << open << 8 << Cell {0, 4} << Cell {1, 4} << Cell {3, 4} << int(Drop::Straight)
        << QByteArray("2003/2003/4115/46.5/.879") << 1;
    QTest::newRow("blocked-back-to-start-counts-nothing")
        << open << 8 << Cell {0, 4} << Cell {0, 4} << Cell {3, 4} << int(Drop::Straight) << open
        << 0;
    QTest::newRow("fallback-on-the-other-axis")
        << QByteArray("2003/2003/4115/46.5/.879") << 6 << Cell {1, 3} << Cell {2, 3} << Cell {1, 4}
        << int(Drop::Straight) << QByteArray("2003/2003/4115/4.65/.879") << 1;
    QTest::newRow("diagonal-goes-home") << open << 6 << Cell {1, 3} << Cell {2, 3} << Cell {2, 4}
                                        << int(Drop::Diagonal) << open << 0;
    QTest::newRow("at-start") << open << 6 << Cell {1, 3} << Cell {1, 3} << Cell {1, 3}
                              << int(Drop::AtStart) << open << 0;
    QTest::newRow("three-cells-down-is-one-step")
        << QByteArray("2003/2003/411./467./895.") << 3 << Cell {3, 0} << Cell {3, 3} << Cell {3, 3}
        << int(Drop::Straight) << QByteArray("200./200./411./4673/8953") << 1;
}

void tst_Moves::dropSettlesByTheSameRules()
{
    QFETCH(QByteArray, picture);
    QFETCH(int, piece);
    QFETCH(Cell, grabbed);
    QFETCH(Cell, last);
    QFETCH(Cell, release);
    QFETCH(int, kind);
    QFETCH(QByteArray, after);
    QFETCH(int, steps);
    GameState game;
    game.ClearBoard();
    for (int r = 0; r < BoardRows; ++r)
        for (int c = 0; c < BoardCols; ++c) {
            const char ch = picture.at(r * 5 + c);
            game.board[r][c] = ch == '.' ? -1 : int16_t(ch - '0');
        }
    // Records agree with the drawing: the top-left cell of each number.
    for (int r = BoardRows - 1; r >= 0; --r)
        for (int c = BoardCols - 1; c >= 0; --c)
            if (game.board[r][c] >= 0) {
                game.pieces[game.board[r][c]].row = int16_t(r);
                game.pieces[game.board[r][c]].col = int16_t(c);
            }
    Drag drag = PressOn(game, int16_t(piece), grabbed);
    drag.lastCol = last.col;
    drag.lastRow = last.row;
    const Drop drop = DecideDrop(game, drag, release);
    QCOMPARE(int(drop.kind), kind);
    if (drop.kind == Drop::Straight)
        CarryOutDrop(game, int16_t(piece), drag, drop);
    QCOMPARE(BoardPicture(game), after);
    QCOMPARE(game.steps, steps);
}

QTEST_APPLESS_MAIN(tst_Moves)
#include "tst_Moves.moc"
