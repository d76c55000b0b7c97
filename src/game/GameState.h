// The board of 5 rows by 4 columns and the ten blocks on it: everything a saved
// game restores. Knows nothing of windows, pictures or files.
#pragma once

#include <array>
#include <cstdint>
#include <string>

enum { BoardRows = 5, BoardCols = 4, PieceCount = 10 };

// A layout is ten position codes (row * 10 + col of the block's top-left
// cell), entry i for block i.
using Layout = std::array<int16_t, PieceCount>;

struct PieceInfo
{
    int16_t col = 0; // top-left cell
    int16_t row = 0;
    int16_t width = 0; // in cells
    int16_t height = 0;
};

// Block numbers decide the shape: 0 the big square, 1 the horizontal bar,
// 2 to 5 the vertical bars, 6 to 9 the small squares.
enum class Shape { Big, Horizontal, Vertical, Small };
Shape ShapeOf(int16_t piece);
int16_t ShapeWidth(Shape shape);
int16_t ShapeHeight(Shape shape);

// True when the code keeps the whole of the block on the board.
bool IsValidCode(int16_t piece, int16_t code);

// Checks a layout before anything on the board changes: every code in its
// block's valid set, no two blocks on one cell (so exactly two cells stay
// free). Returns an empty text when the layout is sound, else the reason.
std::string CheckLayout(const Layout &codes);

class GameState
{
public:
    GameState();

    std::array<std::array<int16_t, BoardCols>, BoardRows> board {}; // block number, -1 if empty
    std::array<PieceInfo, PieceCount> pieces {};
    int16_t levelIndex = 0; // 0 to 69
    int32_t steps = 0;

    // The sizes follow from the block numbers and never change afterwards.
    void FillPieceSizes();

    void ClearBoard();
    void DecodePositions(const Layout &codes);
    Layout EncodePositions() const;

    void MarkBigPiece(const int16_t &p);
    void MarkVerticalPiece(const int16_t &p);
    void MarkHorizontalPiece(const int16_t &p);
    void MarkSmallPiece(const int16_t &p);
    // Marks all ten blocks in the one fixed order; does not empty the board
    // first, so with overlapping blocks the later one keeps the cell.
    void MarkAllPieces();

    // Puts a layout on an empty board: ClearBoard, DecodePositions, marking.
    void SetUp(const Layout &codes);

    // col 0 to 3, row 0 to 4.
    bool IsCellFreeFor(int16_t piece, int16_t col, int16_t row) const;
    // Every top-left position from one end to the other, both included, must
    // leave the block's footprint on cells free for it; the order of the ends
    // does not matter. Callers keep the footprint on the board.
    bool CanSlideHorizontally(int16_t piece, int16_t fromCol, int16_t toCol, int16_t row) const;
    bool CanSlideVertically(int16_t piece, int16_t fromRow, int16_t toRow, int16_t col) const;

    void RemovePieceFromBoard(int16_t piece, int16_t col, int16_t row);
    void PlacePieceOnBoard(int16_t piece, int16_t col, int16_t row);

    // The big block covers rows 3 and 4 of columns 1 and 2: the exit.
    bool IsSolved() const;

private:
    bool FootprintFree(int16_t piece, int16_t col, int16_t row) const;
    void FillFootprint(int16_t piece, int16_t col, int16_t row, int16_t value);
};
