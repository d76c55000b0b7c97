// The rules on boards drawn here: codes and marking, the solved test, the
// pointer arithmetic, and what a drag and a drop decide (through the sweeps).
#include "app/FormGeometry.h"
#include "game/History.h"
#include "game/Moves.h"
#include "support/BoardText.h"
#include "support/ProgramFolder.h"

#include <QTest>

Q_DECLARE_METATYPE(Cell)

namespace {

// Marks the cells exactly as drawn and gives each block the top-left cell of
// its number, so partial or unusual boards can be drawn too.
GameState Drawn(const QByteArray &picture)
{
    GameState game;
    for (int r = BoardRows - 1; r >= 0; --r)
        for (int c = BoardCols - 1; c >= 0; --c) {
            const char ch = picture.at(r * 5 + c);
            game.board[r][c] = ch == '.' ? -1 : int16_t(ch - '0');
            if (ch != '.')
                game.pieces[ch - '0'] = {int16_t(c), int16_t(r), game.pieces[ch - '0'].width,
                    game.pieces[ch - '0'].height};
        }
    return game;
}

// A press on the centre of the given board cell, as the window reports it.
Drag PressOn(const GameState &game, int16_t piece, Cell cell)
{
    const PieceInfo &info = game.pieces[piece];
    const float x = float(cell.col - info.col) * 60 + 30, y = float(cell.row - info.row) * 60 + 30;
    return StartDrag(piece, MouseCell(LayoutEdge(info.col, 1), LayoutEdge(info.row, 1), x, y, 1, 1),
        GrabOffset(x, y, 1, 1));
}

const QByteArray Start = "2003/2003/4115/4675/8..9";
const QByteArray Open = "2003/2003/4115/46.5/8.79";

} // namespace

class tst_Rules : public QObject
{
    Q_OBJECT
private slots:
    void layoutsRebuildTheDrawnBoard_data();
    void layoutsRebuildTheDrawnBoard();
    void overlappingBlocksKeepTheLaterMark();
    void checkLayoutRefusesBrokenLayouts_data();
    void checkLayoutRefusesBrokenLayouts();
    void pointerArithmetic();
    void clamping_data();
    void clamping();
    void dragFollowsFreeStraightPaths_data();
    void dragFollowsFreeStraightPaths();
    void drop_data();
    void drop();
    void stepsByKeyAndHistory_data();
    void stepsByKeyAndHistory();
    void tabGoesInReadingOrder_data();
    void tabGoesInReadingOrder();
};

void tst_Rules::layoutsRebuildTheDrawnBoard_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<bool>("solved"); // only with the big block on the exit
    QTest::newRow("start") << Start << false;
    QTest::newRow("gaps-at-top") << QByteArray("..67/2003/2003/4115/4895") << false;
    QTest::newRow("solved") << QByteArray("2345/2345/6117/8009/.00.") << true;
    QTest::newRow("one-row-short") << QByteArray("2345/2345/6007/8009/.11.") << false;
    QTest::newRow("bottom-left") << QByteArray("2345/2345/6117/0089/00..") << false;
}

void tst_Rules::layoutsRebuildTheDrawnBoard()
{
    QFETCH(QByteArray, picture);
    QFETCH(bool, solved);
    GameState game;
    game.board[0][0] = 7; // stale content must go
    game.SetUp(LayoutFromPicture(picture.constData()));
    QCOMPARE(BoardPicture(game), picture);
    QCOMPARE(game.EncodePositions(), LayoutFromPicture(picture.constData()));
    const int widths[] = {2, 2, 1, 1, 1, 1, 1, 1, 1, 1};
    for (int i = 0; i < PieceCount; ++i)
        QCOMPARE(int(game.pieces[i].width), widths[i]);
    QCOMPARE(game.IsSolved(), solved);
}

void tst_Rules::overlappingBlocksKeepTheLaterMark()
{
    // Marking order: big, vertical 4 2 5 3, horizontal, small 6 7 8 9.
    Layout codes = LayoutFromPicture(Start.constData());
    codes[3] = codes[5];
    codes[6] = 11;
    GameState game;
    game.SetUp(codes);
    QCOMPARE(game.board[2][3], int16_t(3));
    QCOMPARE(game.board[0][3], int16_t(-1));
    QCOMPARE(game.board[1][1], int16_t(6));
}

void tst_Rules::checkLayoutRefusesBrokenLayouts_data()
{
    QTest::addColumn<int>("piece");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("reason");
    QTest::newRow("sound") << 0 << 1 << QString();
    QTest::newRow("big-off-the-right") << 0 << 33 << "block 0 has the position code 33";
    QTest::newRow("vertical-off-the-bottom") << 2 << 40 << "block 2 has the position code 40";
    QTest::newRow("bar-off-the-right") << 1 << 43 << "block 1 has the position code 43";
    QTest::newRow("negative") << 7 << -1 << "block 7 has the position code -1";
    QTest::newRow("overlap") << 9 << 40 << "blocks 8 and 9 overlap at row 4, column 0";
}

void tst_Rules::checkLayoutRefusesBrokenLayouts()
{
    QFETCH(int, piece);
    QFETCH(int, code);
    QFETCH(QString, reason);
    Layout codes = LayoutFromPicture(Start.constData());
    codes[piece] = int16_t(code);
    const QString found = QString::fromStdString(CheckLayout(codes));
    QVERIFY2(reason.isEmpty() ? found.isEmpty() : found.startsWith(reason), qPrintable(found));
}

void tst_Rules::pointerArithmetic()
{
    for (const auto &[value, rounded] : std::initializer_list<std::pair<double, int>> {
             {0.5, 0}, {1.5, 2}, {2.5, 2}, {-1.5, -2}, {7.5, 8}})
        QCOMPARE(RoundHalfEven(value), rounded);
    // The 30-pixel margin belongs to the first cell; truncation toward zero.
    for (const auto &[pixel, cell] : std::initializer_list<std::pair<int, int>> {
             {-29, 0}, {-30, -1}, {89, 0}, {90, 1}, {269, 3}, {270, 4}})
        QCOMPARE(int(CellOfPixel(pixel)), cell);
    QCOMPARE(GrabOffset(900, 0, 15, 15), (Cell {1, 0}));
    QCOMPARE(GrabOffset(899, 119 * 15, 15, 15), (Cell {0, 1}));
    QCOMPARE(LayoutEdge(1, 15), 1350.0f);
    QCOMPARE(LayoutEdge(4, 15), 4050.0f);
    QCOMPARE(LayoutEdge(0, 12), 360.0f);
    QCOMPARE(DragEdge(2, 15), 2250.0f);
    QCOMPARE(CentredOrigin(0, 15360, 6210), 4575);
    QCOMPARE(CentredOrigin(0, 6075, 1500), 2287);
    QCOMPARE(CentredOrigin(0, 100, 105), -2);
    QCOMPARE(CentredOrigin(0, 10.5, 0), 5);
    // However many units make a pixel, a pixel's place decides the cell.
    for (const float u : {1.0f, 12.0f, 15.0f}) {
        const float left = LayoutEdge(3, u), top = LayoutEdge(2, u);
        QCOMPARE(MouseCell(left, top, 59 * u, 1 * u, u, u), (Cell {3, 2}));
        QCOMPARE(MouseCell(left, top, 60 * u, 1 * u, u, u), (Cell {4, 2}));
        QCOMPARE(MouseCell(left, top, -1 * u, -1 * u, u, u), (Cell {2, 1}));
    }
}

void tst_Rules::clamping_data()
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
}

void tst_Rules::clamping()
{
    QFETCH(int, piece);
    QFETCH(Cell, grab);
    QFETCH(Cell, mouse);
    QFETCH(Cell, clamped);
    const Drag drag = StartDrag(int16_t(piece), {0, 0}, grab);
    QCOMPARE(ClampMouseCell(mouse, drag, GameState().pieces[piece]), clamped);
}

void tst_Rules::dragFollowsFreeStraightPaths_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<int>("piece");
    QTest::addColumn<Cell>("pressed");
    QTest::addColumn<Cell>("mouse");
    QTest::addColumn<bool>("moves");
    QTest::addColumn<Cell>("topLeft");
    const QByteArray tall = "2003/2003/4115/46.5/.879";
    QTest::newRow("one-right") << Open << 8 << Cell {0, 4} << Cell {1, 4} << true << Cell {1, 4};
    QTest::newRow("two-right-blocked")
        << Open << 8 << Cell {0, 4} << Cell {2, 4} << false << Cell {};
    QTest::newRow("diagonal") << Open << 6 << Cell {1, 3} << Cell {2, 4} << false << Cell {};
    QTest::newRow("lower-half-keeps-offset")
        << tall << 4 << Cell {0, 3} << Cell {0, 4} << true << Cell {0, 3};
    QTest::newRow("pinned-at-edge-is-start")
        << Open << 8 << Cell {0, 4} << Cell {-2, 4} << true << Cell {0, 4};
    QTest::newRow("no-jump-over-a-block") << QByteArray("2003/2003/4115/4..5/6879") << 6
                                          << Cell {0, 4} << Cell {3, 4} << false << Cell {};
}

void tst_Rules::dragFollowsFreeStraightPaths()
{
    QFETCH(QByteArray, picture);
    QFETCH(int, piece);
    QFETCH(Cell, pressed);
    QFETCH(Cell, mouse);
    QFETCH(bool, moves);
    QFETCH(Cell, topLeft);
    const GameState game = Drawn(picture);
    const DragStep step = DecideDragMove(game, PressOn(game, piece, pressed), mouse);
    QCOMPARE(step.moveImage, moves);
    QCOMPARE(step.pointer, moves ? Pointer::Move : Pointer::NoDrop);
    if (moves)
        QCOMPARE(step.topLeft, topLeft);
    // Within the last accepted cell nothing at all happens.
    Drag held = PressOn(game, piece, pressed);
    held.lastCol = mouse.col;
    held.lastRow = mouse.row;
    QVERIFY(DecideDragMove(game, held, mouse).nothing);
}

void tst_Rules::drop_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<int>("piece");
    QTest::addColumn<Cell>("pressed");
    QTest::addColumn<Cell>("last");
    QTest::addColumn<Cell>("release");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<int>("steps");
    QTest::newRow("straight") << Open << 8 << Cell {0, 4} << Cell {1, 4} << Cell {1, 4}
                              << int(Drop::Straight) << QByteArray("2003/2003/4115/46.5/.879") << 1;
    QTest::newRow("blocked-settles-on-last")
        << Open << 8 << Cell {0, 4} << Cell {1, 4} << Cell {3, 4} << int(Drop::Straight)
        << QByteArray("2003/2003/4115/46.5/.879") << 1;
    QTest::newRow("blocked-back-on-start") << Open << 8 << Cell {0, 4} << Cell {0, 4} << Cell {3, 4}
                                           << int(Drop::Straight) << Open << 0;
    QTest::newRow("fallback-on-the-other-axis")
        << QByteArray("2003/2003/4115/46.5/.879") << 6 << Cell {1, 3} << Cell {2, 3} << Cell {1, 4}
        << int(Drop::Straight) << QByteArray("2003/2003/4115/4.65/.879") << 1;
    QTest::newRow("diagonal") << Open << 6 << Cell {1, 3} << Cell {2, 3} << Cell {2, 4}
                              << int(Drop::Diagonal) << Open << 0;
    QTest::newRow("three-down-one-step")
        << QByteArray("2003/2003/411./467./895.") << 3 << Cell {3, 0} << Cell {3, 3} << Cell {3, 3}
        << int(Drop::Straight) << QByteArray("200./200./411./4673/8953") << 1;
}

void tst_Rules::drop()
{
    QFETCH(QByteArray, picture);
    QFETCH(int, piece);
    QFETCH(Cell, pressed);
    QFETCH(Cell, last);
    QFETCH(Cell, release);
    QFETCH(int, kind);
    QFETCH(QByteArray, after);
    QFETCH(int, steps);
    GameState game = Drawn(picture);
    Drag drag = PressOn(game, int16_t(piece), pressed);
    drag.lastCol = last.col;
    drag.lastRow = last.row;
    const Drop drop = DecideDrop(game, drag, release);
    QCOMPARE(int(drop.kind), kind);
    if (drop.kind == Drop::Diagonal)
        QCOMPARE(drop.topLeft,
            (Cell {int16_t(pressed.col - drag.grabCol), int16_t(pressed.row - drag.grabRow)}));
    if (drop.kind == Drop::Straight)
        MakeStep(game, drop.move);
    QCOMPARE(BoardPicture(game), after);
    QCOMPARE(game.steps, steps);
}

void tst_Rules::stepsByKeyAndHistory_data()
{
    // A script of arrow keys ("8>" block 8 right, "3v" block 3 down), slides
    // ("3=3,2" block 3 to top-left column 3, row 2), "u" Undo, "r" Redo and
    // "s" Restart, played on a board.
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<int>("steps");
    QTest::addColumn<bool>("canUndo");
    QTest::addColumn<bool>("canRedo");
    const QByteArray tall = "2003/2003/411./456./7589";
    const QByteArray slid = "200./200./4113/4563/7589";
    QTest::newRow("key-one-cell") << Open << QByteArray("8>")
                                  << QByteArray("2003/2003/4115/46.5/.879") << 1 << true << false;
    QTest::newRow("key-into-a-block")
        << Open << QByteArray("8> 8>") << QByteArray("2003/2003/4115/46.5/.879") << 1 << true
        << false;
    QTest::newRow("key-off-the-board") << Open << QByteArray("8<") << Open << 0 << false << false;
    QTest::newRow("key-needs-the-whole-footprint")
        << Open << QByteArray("1v") << Open << 0 << false << false;
    QTest::newRow("undo-takes-the-whole-slide-back")
        << tall << QByteArray("3=3,2 u") << tall << 0 << false << true;
    QTest::newRow("redo-makes-it-again")
        << tall << QByteArray("3=3,2 u r") << slid << 1 << true << false;
    QTest::newRow("new-step-forgets-the-redo")
        << tall << QByteArray("3=3,2 u 3v r") << QByteArray("200./2003/4113/456./7589") << 1 << true
        << false;
    QTest::newRow("restart-then-redo-one-by-one")
        << tall << QByteArray("3v 3v s r") << QByteArray("200./2003/4113/456./7589") << 1 << true
        << true;
    QTest::newRow("nothing-to-undo-or-redo")
        << tall << QByteArray("u r s") << tall << 0 << false << false;
}

void tst_Rules::stepsByKeyAndHistory()
{
    QFETCH(QByteArray, picture);
    QFETCH(QByteArray, script);
    QFETCH(QByteArray, after);
    QFETCH(int, steps);
    QFETCH(bool, canUndo);
    QFETCH(bool, canRedo);
    GameState game;
    game.SetUp(LayoutFromPicture(picture.constData()));
    History history;
    for (const QByteArray &token : script.split(' ')) {
        if (token == "u") {
            history.Undo(game);
            continue;
        }
        if (token == "r") {
            history.Redo(game);
            continue;
        }
        if (token == "s") {
            history.Restart(game);
            continue;
        }
        const auto piece = int16_t(token[0] - '0');
        const Cell at {game.pieces[piece].col, game.pieces[piece].row};
        if (token[1] == '=') {
            history.Make(game, {piece, at, {int16_t(token[2] - '0'), int16_t(token[4] - '0')}});
        } else {
            const int16_t dCol = token[1] == '>' ? 1 : token[1] == '<' ? -1 : 0;
            const int16_t dRow = token[1] == 'v' ? 1 : token[1] == '^' ? -1 : 0;
            if (const std::optional<Move> step = KeyStep(game, piece, dCol, dRow)) {
                QCOMPARE(step->from, at);
                history.Make(game, *step);
            }
        }
    }
    QCOMPARE(BoardPicture(game), after);
    QCOMPARE(game.steps, steps);
    QCOMPARE(history.CanUndo(), canUndo);
    QCOMPARE(history.CanRedo(), canRedo);
}

void tst_Rules::tabGoesInReadingOrder_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<QByteArray>("order"); // eleven presses from no block: it wraps
    QTest::newRow("tab") << Start << true << QByteArray("20341567892");
    QTest::newRow("shift-tab") << Start << false << QByteArray("98765143029");
    QTest::newRow("gaps-at-top") << QByteArray("..67/2003/2003/4115/4895") << true
                                 << QByteArray("67203415896");
}

void tst_Rules::tabGoesInReadingOrder()
{
    QFETCH(QByteArray, picture);
    QFETCH(bool, forward);
    QFETCH(QByteArray, order);
    GameState game;
    game.SetUp(LayoutFromPicture(picture.constData()));
    QByteArray seen;
    for (int16_t selected = -1; seen.size() < order.size();) {
        selected = NextInReadingOrder(game, selected, forward);
        seen += char('0' + selected);
    }
    QCOMPARE(seen, order);
}

QTEST_APPLESS_MAIN(tst_Rules)
#include "tst_Rules.moc"
