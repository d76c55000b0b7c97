// The board's own rules: codes, marking, the sweeps and the solved test.
#include "support/BoardText.h"
#include "support/ProgramFolder.h"

#include <QTest>

class tst_GameState : public QObject
{
    Q_OBJECT
private slots:
    void decodeAndMarkRebuildTheDrawnBoard_data();
    void decodeAndMarkRebuildTheDrawnBoard();
    void decodingSplitsCodesIntoRowAndColumn();
    void overlappingBlocksLeaveTheLaterMarkInPlace();
    void sizesNeverChange();
    void validCodesKeepTheBlockOnTheBoard_data();
    void validCodesKeepTheBlockOnTheBoard();
    void checkLayoutRefusesBrokenLayouts_data();
    void checkLayoutRefusesBrokenLayouts();
    void sweeps_data();
    void sweeps();
    void removeThenPlaceMovesABlockOverItsOldCells();
    void solvedOnlyWithTheBigBlockOnTheExit_data();
    void solvedOnlyWithTheBigBlockOnTheExit();
};

void tst_GameState::decodeAndMarkRebuildTheDrawnBoard_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::newRow("classic-start") << QByteArray("2003/2003/4115/4675/8..9");
    QTest::newRow("gaps-at-top") << QByteArray("..67/2003/2003/4115/4895");
    QTest::newRow("solved") << QByteArray("2345/2345/6117/8009/.00.");
}

void tst_GameState::decodeAndMarkRebuildTheDrawnBoard()
{
    QFETCH(QByteArray, picture);
    GameState game;
    game.board[0][0] = 7; // stale content must go
    game.SetUp(LayoutFromPicture(picture.constData()));
    QCOMPARE(BoardPicture(game), picture);
    QCOMPARE(game.EncodePositions(), LayoutFromPicture(picture.constData()));
    int empty = 0;
    for (const auto &line : game.board)
        empty += int(std::count(line.begin(), line.end(), int16_t(-1)));
    QCOMPARE(empty, 2);
}

void tst_GameState::decodingSplitsCodesIntoRowAndColumn()
{
    GameState game;
    Layout codes {};
    codes[0] = 31;
    codes[8] = 0;
    codes[9] = 43;
    game.DecodePositions(codes);
    QCOMPARE(
        (std::pair<int, int>(game.pieces[0].row, game.pieces[0].col)), (std::pair<int, int>(3, 1)));
    QCOMPARE(
        (std::pair<int, int>(game.pieces[8].row, game.pieces[8].col)), (std::pair<int, int>(0, 0)));
    QCOMPARE(
        (std::pair<int, int>(game.pieces[9].row, game.pieces[9].col)), (std::pair<int, int>(4, 3)));
}

void tst_GameState::overlappingBlocksLeaveTheLaterMarkInPlace()
{
    // Vertical bar 3 is marked after 5 and before the horizontal bar and the
    // small blocks, whatever their numbers.
    Layout codes = LayoutFromPicture("2003/2003/4115/4675/8..9");
    codes[3] = codes[5]; // 3 lands on 5
    codes[6] = 11; // small 6 lands on the big block's lower-left cell
    GameState game;
    game.SetUp(codes);
    QCOMPARE(game.board[2][3], int16_t(3));
    QCOMPARE(game.board[3][3], int16_t(3));
    QCOMPARE(game.board[0][3], int16_t(-1));
    QCOMPARE(game.board[1][1], int16_t(6));
}

void tst_GameState::sizesNeverChange()
{
    GameState game;
    game.SetUp(LayoutFromPicture("2003/2003/4115/4675/8..9"));
    game.RemovePieceFromBoard(0, 1, 0);
    game.PlacePieceOnBoard(0, 1, 1);
    game.ClearBoard();
    const int widths[] = {2, 2, 1, 1, 1, 1, 1, 1, 1, 1};
    const int heights[] = {2, 1, 2, 2, 2, 2, 1, 1, 1, 1};
    for (int i = 0; i < PieceCount; ++i) {
        QCOMPARE(int(game.pieces[i].width), widths[i]);
        QCOMPARE(int(game.pieces[i].height), heights[i]);
    }
}

void tst_GameState::validCodesKeepTheBlockOnTheBoard_data()
{
    QTest::addColumn<int>("piece");
    QTest::addColumn<QList<int>>("valid");
    const QList<int> big = {0, 1, 2, 10, 11, 12, 20, 21, 22, 30, 31, 32};
    QList<int> bar = big;
    bar << 40 << 41 << 42;
    QList<int> tall;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            tall << r * 10 + c;
    QList<int> small = tall;
    small << 40 << 41 << 42 << 43;
    QTest::newRow("big") << 0 << big;
    QTest::newRow("horizontal") << 1 << bar;
    QTest::newRow("vertical") << 4 << tall;
    QTest::newRow("small") << 9 << small;
}

void tst_GameState::validCodesKeepTheBlockOnTheBoard()
{
    QFETCH(int, piece);
    QFETCH(QList<int>, valid);
    for (int code = -12; code < 100; ++code)
        QVERIFY2(IsValidCode(int16_t(piece), int16_t(code)) == valid.contains(code),
            qPrintable(QString::number(code)));
}

void tst_GameState::checkLayoutRefusesBrokenLayouts_data()
{
    QTest::addColumn<Layout>("codes");
    QTest::addColumn<QString>("reason");
    const Layout good = LayoutFromPicture("2003/2003/4115/4675/8..9");
    QTest::newRow("sound") << good << QString();
    Layout off = good;
    off[0] = 33;
    QTest::newRow("big-block-off-the-right") << off << "block 0 has the position code 33";
    Layout negative = good;
    negative[7] = -1;
    QTest::newRow("negative-code") << negative << "block 7 has the position code -1";
    Layout tooLow = good;
    tooLow[2] = 40;
    QTest::newRow("vertical-off-the-bottom") << tooLow << "block 2 has the position code 40";
    Layout overlap = good;
    overlap[9] = 40;
    QTest::newRow("overlap") << overlap << "blocks 8 and 9 overlap at row 4, column 0";
}

void tst_GameState::checkLayoutRefusesBrokenLayouts()
{
    QFETCH(Layout, codes);
    QFETCH(QString, reason);
    const QString found = QString::fromStdString(CheckLayout(codes));
    if (reason.isEmpty())
        QCOMPARE(found, QString());
    else
        QVERIFY2(found.startsWith(reason) || found.contains(reason), qPrintable(found));
}

void tst_GameState::sweeps_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<int>("piece");
    QTest::addColumn<bool>("horizontal");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("line"); // the row of a horizontal sweep, the column of a vertical one
    QTest::addColumn<bool>("free");
    const QByteArray start = "2003/2003/4115/4675/8..9";
    QTest::newRow("small-two-right-free") << start << 8 << true << 0 << 2 << 4 << true;
    QTest::newRow("small-three-right-blocked") << start << 8 << true << 0 << 3 << 4 << false;
    QTest::newRow("small-one-right-free") << start << 8 << true << 0 << 1 << 4 << true;
    QTest::newRow("order-does-not-matter")
        << QByteArray("2003/2003/4115/4675/.8.9") << 8 << true << 1 << 0 << 4 << true;
    QTest::newRow("vertical-down-over-own-cell")
        << QByteArray("2003/2003/4115/4675/.8.9") << 4 << false << 2 << 3 << 0 << true;
    QTest::newRow("big-blocked-below") << start << 0 << false << 0 << 1 << 1 << false;
    QTest::newRow("staying-put-is-free") << start << 0 << false << 0 << 0 << 1 << true;
    QTest::newRow("small-up-one-free")
        << QByteArray("2003/2003/4.15/4675/8.19") << 6 << false << 3 << 2 << 1 << true;
    QTest::newRow("small-up-two-blocked")
        << QByteArray("2003/2003/4.15/4675/8.19") << 6 << false << 3 << 1 << 1 << false;
}

void tst_GameState::sweeps()
{
    QFETCH(QByteArray, picture);
    QFETCH(int, piece);
    QFETCH(bool, horizontal);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, line);
    QFETCH(bool, free);
    GameState game;
    game.ClearBoard();
    // Drawn boards here may be partial: mark what the picture shows directly.
    for (int r = 0; r < BoardRows; ++r)
        for (int c = 0; c < BoardCols; ++c) {
            const char ch = picture.at(r * 5 + c);
            game.board[r][c] = ch == '.' ? -1 : int16_t(ch - '0');
        }
    const bool found = horizontal
        ? game.CanSlideHorizontally(int16_t(piece), int16_t(from), int16_t(to), int16_t(line))
        : game.CanSlideVertically(int16_t(piece), int16_t(from), int16_t(to), int16_t(line));
    QCOMPARE(found, free);
}

void tst_GameState::removeThenPlaceMovesABlockOverItsOldCells()
{
    GameState game;
    game.SetUp(LayoutFromPicture("2003/2003/4115/4675/8..9"));
    game.RemovePieceFromBoard(5, 3, 2);
    QCOMPARE(BoardPicture(game), QByteArray("2003/2003/411./467./8..9"));
    game.PlacePieceOnBoard(1, 1, 2); // placing writes the record too
    QCOMPARE(game.pieces[1].col, int16_t(1));
    // A vertical bar one cell down: its old top cell empties.
    GameState tall;
    tall.SetUp(LayoutFromPicture("2003/2003/4115/4675/8..9"));
    tall.RemovePieceFromBoard(8, 0, 4);
    tall.PlacePieceOnBoard(8, 1, 4);
    tall.RemovePieceFromBoard(4, 0, 2);
    tall.PlacePieceOnBoard(4, 0, 3);
    QCOMPARE(BoardPicture(tall), QByteArray("2003/2003/.115/4675/48.9"));
    QCOMPARE(tall.pieces[4].row, int16_t(3));
}

void tst_GameState::solvedOnlyWithTheBigBlockOnTheExit_data()
{
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<bool>("solved");
    QTest::newRow("on-the-exit") << QByteArray("2345/2345/6117/8009/.00.") << true;
    QTest::newRow("one-row-short") << QByteArray("2345/2345/6007/8009/.11.") << false;
    QTest::newRow("bottom-left-corner") << QByteArray("2345/2345/6117/0089/00..") << false;
    QTest::newRow("start") << QByteArray("2003/2003/4115/4675/8..9") << false;
}

void tst_GameState::solvedOnlyWithTheBigBlockOnTheExit()
{
    QFETCH(QByteArray, picture);
    QFETCH(bool, solved);
    GameState game;
    game.SetUp(LayoutFromPicture(picture.constData()));
    QCOMPARE(game.IsSolved(), solved);
}

QTEST_APPLESS_MAIN(tst_GameState)
#include "tst_GameState.moc"
