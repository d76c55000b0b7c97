// The rules on boards drawn here: codes and marking, the solved test, the
// reading order, the pointer arithmetic, and what a drag and a drop decide
// (through the sweeps).
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
const QByteArray Slid = "2003/2003/4115/46.5/.879"; // Open after block 8 went right

// A drop of a block pressed on its top-left cell, last accepted at one
// pointer cell and let go at another: what kind it is and the board after it.
struct DropRow
{
    QByteArray picture;
    int16_t piece;
    Cell last, release;
    Drop::Kind kind;
    QByteArray after;
    int steps;
};

// Arrow keys ("8>" block 8 right, "3v" block 3 down), slides ("3=3,2" block 3
// to top-left column 3, row 2), "u" Undo, "r" Redo and "s" Restart, played on
// a board.
struct Script
{
    QByteArray picture, keys, after;
    int steps;
    bool canUndo, canRedo;
};

} // namespace

Q_DECLARE_METATYPE(DropRow)
Q_DECLARE_METATYPE(Script)

class tst_Rules : public QObject
{
    Q_OBJECT
private slots:
    void layoutsRebuildTheDrawnBoard_data()
    {
        QTest::addColumn<QByteArray>("picture");
        QTest::addColumn<bool>("solved"); // only with the big block on the exit
        QTest::addColumn<QByteArray>("order"); // of the top-left cells, row by row
        QTest::newRow("start") << Start << false << QByteArray("2034156789");
        QTest::newRow("solved") << QByteArray("2345/2345/6117/8009/.00.") << true
                                << QByteArray("2345617809");
        QTest::newRow("one-row-short")
            << QByteArray("2345/2345/6007/8009/.11.") << false << QByteArray();
        QTest::newRow("bottom-left")
            << QByteArray("2345/2345/6117/0089/00..") << false << QByteArray();
    }

    void layoutsRebuildTheDrawnBoard()
    {
        QFETCH(QByteArray, picture);
        QFETCH(bool, solved);
        QFETCH(QByteArray, order);
        GameState game;
        game.board[0][0] = 7; // stale content must go
        game.SetUp(LayoutFromPicture(picture.constData()));
        QCOMPARE(BoardPicture(game), picture);
        QCOMPARE(game.EncodePositions(), LayoutFromPicture(picture.constData()));
        QCOMPARE(game.IsSolved(), solved);
        // Tab from no block, eleven times so it wraps; Shift+Tab the other way.
        int forward = -1, back = -1;
        for (int i = 0; !order.isEmpty() && i <= PieceCount; ++i) {
            forward = NextInReadingOrder(game, forward, true);
            back = NextInReadingOrder(game, back, false);
            QCOMPARE(forward, order[i % PieceCount] - '0');
            QCOMPARE(back, order[PieceCount - 1 - i % PieceCount] - '0');
        }
    }

    void checkLayoutRefusesBrokenLayouts_data()
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

    void checkLayoutRefusesBrokenLayouts()
    {
        QFETCH(int, piece);
        QFETCH(int, code);
        QFETCH(QString, reason);
        Layout codes = LayoutFromPicture(Start.constData());
        codes[piece] = int16_t(code);
        const QString found = QString::fromStdString(CheckLayout(codes));
        QVERIFY2(reason.isEmpty() ? found.isEmpty() : found.startsWith(reason), qPrintable(found));
    }

    void pointerArithmetic()
    {
        for (const auto &[value, rounded] : std::initializer_list<std::pair<double, int>> {
                 {0.5, 0}, {1.5, 2}, {2.5, 2}, {-1.5, -2}, {7.5, 8}})
            QCOMPARE(RoundHalfEven(value), rounded);
        // The 30-pixel margin belongs to the first cell; truncation toward zero.
        for (const auto &[pixel, cell] : std::initializer_list<std::pair<int, int>> {
                 {-29, 0}, {-30, -1}, {89, 0}, {90, 1}, {269, 3}, {270, 4}})
            QCOMPARE(int(CellOfPixel(pixel)), cell);
        QCOMPARE(CentredOrigin(0, 6075, 1500), 2287);
        QCOMPARE(CentredOrigin(0, 100, 105), -2);
        QCOMPARE(CentredOrigin(0, 10.5, 0), 5);
        // A pixel's place decides the cell, whichever side of the block it is.
        const float left = LayoutEdge(3, 1), top = LayoutEdge(2, 1);
        QCOMPARE(MouseCell(left, top, 59, 1, 1, 1), (Cell {3, 2}));
        QCOMPARE(MouseCell(left, top, 60, 1, 1, 1), (Cell {4, 2}));
        QCOMPARE(MouseCell(left, top, -1, -1, 1, 1), (Cell {2, 1}));
    }

    void dragFollowsFreeStraightPaths_data()
    {
        QTest::addColumn<QByteArray>("picture");
        QTest::addColumn<int>("piece");
        QTest::addColumn<Cell>("pressed");
        QTest::addColumn<Cell>("mouse");
        QTest::addColumn<bool>("moves");
        QTest::addColumn<Cell>("topLeft");
        QTest::newRow("one-right")
            << Open << 8 << Cell {0, 4} << Cell {1, 4} << true << Cell {1, 4};
        QTest::newRow("two-right-blocked")
            << Open << 8 << Cell {0, 4} << Cell {2, 4} << false << Cell {2, 4};
        QTest::newRow("diagonal") << Open << 6 << Cell {1, 3} << Cell {2, 4} << false
                                  << Cell {2, 4};
        QTest::newRow("lower-half-keeps-offset")
            << Slid << 4 << Cell {0, 3} << Cell {0, 4} << true << Cell {0, 3};
        QTest::newRow("pinned-at-edge-is-start")
            << Open << 8 << Cell {0, 4} << Cell {-2, 4} << true << Cell {0, 4};
        QTest::newRow("no-jump-over-a-block") << QByteArray("2003/2003/4115/4..5/6879") << 6
                                              << Cell {0, 4} << Cell {3, 4} << false << Cell {3, 4};
        // A pointer far outside keeps the whole block on the board, with the
        // grabbed cell under it: each edge, and width and height apart.
        QTest::newRow("big-far-up-left")
            << Start << 0 << Cell {2, 1} << Cell {-9, -9} << false << Cell {0, 0};
        QTest::newRow("big-far-down-right")
            << Start << 0 << Cell {2, 1} << Cell {9, 9} << false << Cell {2, 3};
        QTest::newRow("bar-far-down-right")
            << Start << 1 << Cell {1, 2} << Cell {9, 9} << false << Cell {2, 4};
    }

    void dragFollowsFreeStraightPaths()
    {
        QFETCH(QByteArray, picture);
        QFETCH(int, piece);
        QFETCH(Cell, pressed);
        QFETCH(Cell, mouse);
        QFETCH(bool, moves);
        QFETCH(Cell, topLeft);
        const GameState game = Drawn(picture);
        Drag drag = PressOn(game, piece, pressed);
        const DragStep step = DecideDragMove(game, drag, mouse);
        QCOMPARE(step.moveImage, moves);
        QCOMPARE(step.pointer, moves ? Pointer::Move : Pointer::NoDrop);
        QCOMPARE(step.topLeft, topLeft);
        // Within the last accepted cell nothing at all happens.
        FollowPointer(drag, step);
        QCOMPARE(DecideDragMove(game, drag, step.mouse).nothing, moves);
    }

    void drop_data()
    {
        QTest::addColumn<DropRow>("row");
        const QByteArray down3 = "2003/2003/411./467./895.";
        QTest::newRow("straight") << DropRow {Open, 8, {1, 4}, {1, 4}, Drop::Straight, Slid, 1};
        QTest::newRow("blocked-settles-on-last")
            << DropRow {Open, 8, {1, 4}, {3, 4}, Drop::Straight, Slid, 1};
        QTest::newRow("blocked-back-on-start")
            << DropRow {Open, 8, {0, 4}, {3, 4}, Drop::Straight, Open, 0};
        QTest::newRow("fallback-on-the-other-axis")
            << DropRow {Slid, 6, {2, 3}, {1, 4}, Drop::Straight, "2003/2003/4115/4.65/.879", 1};
        QTest::newRow("diagonal") << DropRow {Open, 6, {2, 3}, {2, 4}, Drop::Diagonal, Open, 0};
        QTest::newRow("three-down-one-step")
            << DropRow {down3, 3, {3, 3}, {3, 3}, Drop::Straight, "200./200./411./4673/8953", 1};
    }

    void drop()
    {
        QFETCH(DropRow, row);
        GameState game = Drawn(row.picture);
        const Cell start {game.pieces[row.piece].col, game.pieces[row.piece].row};
        Drag drag = PressOn(game, row.piece, start);
        drag.lastCol = row.last.col;
        drag.lastRow = row.last.row;
        const Drop drop = DecideDrop(game, drag, row.release);
        QCOMPARE(drop.kind, row.kind);
        if (drop.kind == Drop::Diagonal)
            QCOMPARE(drop.topLeft, start);
        if (drop.kind == Drop::Straight)
            MakeStep(game, drop.move);
        QCOMPARE(BoardPicture(game), row.after);
        QCOMPARE(game.steps, row.steps);
    }

    void stepsByKeyAndHistory_data()
    {
        QTest::addColumn<Script>("script");
        const QByteArray tall = "2003/2003/411./456./7589";
        const QByteArray slid = "200./200./4113/4563/7589", down = "200./2003/4113/456./7589";
        QTest::newRow("key-one-cell") << Script {Open, "8>", Slid, 1, true, false};
        QTest::newRow("key-off-the-board") << Script {Open, "8<", Open, 0, false, false};
        QTest::newRow("key-needs-the-whole-footprint")
            << Script {Open, "1v", Open, 0, false, false};
        QTest::newRow("undo-takes-the-whole-slide-back")
            << Script {tall, "3=3,2 u", tall, 0, false, true};
        QTest::newRow("redo-makes-it-again") << Script {tall, "3=3,2 u r", slid, 1, true, false};
        QTest::newRow("new-step-forgets-the-redo")
            << Script {tall, "3=3,2 u 3v r", down, 1, true, false};
        QTest::newRow("restart-then-redo-one-by-one")
            << Script {tall, "3v 3v s r", down, 1, true, true};
        QTest::newRow("nothing-to-undo-or-redo") << Script {tall, "u r s", tall, 0, false, false};
    }

    void stepsByKeyAndHistory()
    {
        QFETCH(Script, script);
        GameState game;
        game.SetUp(LayoutFromPicture(script.picture.constData()));
        History history;
        for (const QByteArray &token : script.keys.split(' ')) {
            const auto piece = int16_t(token[0] - '0');
            const auto along = [&token](char plus, char minus) {
                return int16_t(token[1] == plus ? 1 : token[1] == minus ? -1 : 0);
            };
            if (token == "u")
                history.Undo(game);
            else if (token == "r")
                history.Redo(game);
            else if (token == "s")
                history.Restart(game);
            else if (token[1] == '=')
                history.Make(game,
                    {piece, {game.pieces[piece].col, game.pieces[piece].row},
                        {int16_t(token[2] - '0'), int16_t(token[4] - '0')}});
            else if (const std::optional<Move> step
                = KeyStep(game, piece, along('>', '<'), along('v', '^')))
                history.Make(game, *step);
        }
        QCOMPARE(BoardPicture(game), script.after);
        QCOMPARE(game.steps, script.steps);
        QCOMPARE(history.CanUndo(), script.canUndo);
        QCOMPARE(history.CanRedo(), script.canRedo);
    }
};

QTEST_APPLESS_MAIN(tst_Rules)
#include "tst_Rules.moc"
