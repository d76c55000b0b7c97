// The board's rules: position codes, marking, the sweeps a move must pass and
// the solved test. Block footprints follow from block numbers, never from the
// sizes stored in the records.
#include "GameState.h"

#include <algorithm>

Shape ShapeOf(int16_t piece)
{
    if (piece == 0)
        return Shape::Big;
    if (piece == 1)
        return Shape::Horizontal;
    if (piece >= 2 && piece <= 5)
        return Shape::Vertical;
    return Shape::Small;
}

int16_t ShapeWidth(Shape shape)
{
    return (shape == Shape::Big || shape == Shape::Horizontal) ? 2 : 1;
}

int16_t ShapeHeight(Shape shape)
{
    return (shape == Shape::Big || shape == Shape::Vertical) ? 2 : 1;
}

bool IsValidCode(int16_t piece, int16_t code)
{
    if (piece < 0 || piece >= PieceCount || code < 0)
        return false;
    const Shape shape = ShapeOf(piece);
    const int row = code / 10;
    const int col = code % 10;
    return col + ShapeWidth(shape) <= BoardCols && row + ShapeHeight(shape) <= BoardRows;
}

std::string CheckLayout(const Layout &codes)
{
    std::array<std::array<int, BoardCols>, BoardRows> owner;
    for (auto &line : owner)
        line.fill(-1);
    for (int16_t piece = 0; piece < PieceCount; ++piece) {
        const int16_t code = codes[piece];
        if (!IsValidCode(piece, code))
            return "block " + std::to_string(piece) + " has the position code "
                + std::to_string(code) + ", which puts it off the board";
        const Shape shape = ShapeOf(piece);
        for (int r = code / 10; r < code / 10 + ShapeHeight(shape); ++r) {
            for (int c = code % 10; c < code % 10 + ShapeWidth(shape); ++c) {
                if (owner[r][c] != -1)
                    return "blocks " + std::to_string(owner[r][c]) + " and " + std::to_string(piece)
                        + " overlap at row " + std::to_string(r) + ", column " + std::to_string(c);
                owner[r][c] = piece;
            }
        }
    }
    return {};
}

GameState::GameState()
{
    FillPieceSizes();
}

void GameState::FillPieceSizes()
{
    for (int16_t i = 0; i < PieceCount; ++i) {
        pieces[i].width = ShapeWidth(ShapeOf(i));
        pieces[i].height = ShapeHeight(ShapeOf(i));
    }
}

void GameState::ClearBoard()
{
    for (auto &line : board)
        line.fill(-1);
}

void GameState::DecodePositions(const Layout &codes)
{
    for (int16_t i = 0; i < PieceCount; ++i) {
        pieces[i].col = static_cast<int16_t>(codes[i] % 10);
        pieces[i].row = static_cast<int16_t>(codes[i] / 10);
    }
}

Layout GameState::EncodePositions() const
{
    Layout codes {};
    for (int16_t i = 0; i < PieceCount; ++i)
        codes[i] = static_cast<int16_t>(pieces[i].row * 10 + pieces[i].col);
    return codes;
}

void GameState::MarkBigPiece(const int16_t &p)
{
    const int16_t r = pieces[p].row, c = pieces[p].col;
    board[r][c] = p;
    board[r + 1][c] = p;
    board[r][c + 1] = p;
    board[r + 1][c + 1] = p;
}

void GameState::MarkVerticalPiece(const int16_t &p)
{
    const int16_t r = pieces[p].row, c = pieces[p].col;
    board[r][c] = p;
    board[r + 1][c] = p;
}

void GameState::MarkHorizontalPiece(const int16_t &p)
{
    const int16_t r = pieces[p].row, c = pieces[p].col;
    board[r][c] = p;
    board[r][c + 1] = p;
}

void GameState::MarkSmallPiece(const int16_t &p)
{
    board[pieces[p].row][pieces[p].col] = p;
}

void GameState::MarkAllPieces()
{
    MarkBigPiece(0);
    for (const int16_t p : {4, 2, 5, 3})
        MarkVerticalPiece(p);
    MarkHorizontalPiece(1);
    for (const int16_t p : {6, 7, 8, 9})
        MarkSmallPiece(p);
}

void GameState::SetUp(const Layout &codes)
{
    ClearBoard();
    DecodePositions(codes);
    MarkAllPieces();
}

bool GameState::IsCellFreeFor(int16_t piece, int16_t col, int16_t row) const
{
    const int16_t cell = board[row][col];
    return cell == -1 || cell == piece;
}

bool GameState::FootprintFree(int16_t piece, int16_t col, int16_t row) const
{
    const Shape shape = ShapeOf(piece);
    for (int16_t r = row; r < row + ShapeHeight(shape); ++r)
        for (int16_t c = col; c < col + ShapeWidth(shape); ++c)
            if (!IsCellFreeFor(piece, c, r))
                return false;
    return true;
}

bool GameState::CanSlideHorizontally(
    int16_t piece, int16_t fromCol, int16_t toCol, int16_t row) const
{
    for (int16_t c = std::min(fromCol, toCol); c <= std::max(fromCol, toCol); ++c)
        if (!FootprintFree(piece, c, row))
            return false;
    return true;
}

bool GameState::CanSlideVertically(int16_t piece, int16_t fromRow, int16_t toRow, int16_t col) const
{
    for (int16_t r = std::min(fromRow, toRow); r <= std::max(fromRow, toRow); ++r)
        if (!FootprintFree(piece, col, r))
            return false;
    return true;
}

void GameState::FillFootprint(int16_t piece, int16_t col, int16_t row, int16_t value)
{
    const Shape shape = ShapeOf(piece);
    for (int16_t r = row; r < row + ShapeHeight(shape); ++r)
        for (int16_t c = col; c < col + ShapeWidth(shape); ++c)
            board[r][c] = value;
}

void GameState::RemovePieceFromBoard(int16_t piece, int16_t col, int16_t row)
{
    FillFootprint(piece, col, row, -1);
}

void GameState::PlacePieceOnBoard(int16_t piece, int16_t col, int16_t row)
{
    FillFootprint(piece, col, row, piece);
    pieces[piece].col = col;
    pieces[piece].row = row;
}

bool GameState::IsSolved() const
{
    return board[3][1] == 0 && board[3][2] == 0 && board[4][1] == 0 && board[4][2] == 0;
}
