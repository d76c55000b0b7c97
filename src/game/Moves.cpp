// The drag and drop decisions, in cells.
#include "Moves.h"

#include <algorithm>

Drag StartDrag(int16_t piece, Cell mouse, Cell grab)
{
    Drag drag;
    drag.dragPiece = piece;
    drag.lastCol = mouse.col;
    drag.lastRow = mouse.row;
    drag.startCol = drag.lastCol;
    drag.startRow = drag.lastRow;
    drag.grabCol = grab.col;
    drag.grabRow = grab.row;
    drag.dragging = true;
    return drag;
}

Cell ClampMouseCell(Cell mouse, const Drag &drag, const PieceInfo &info)
{
    Cell m = mouse;
    if (m.col - drag.grabCol < 0)
        m.col = drag.grabCol;
    if (m.row - drag.grabRow < 0)
        m.row = drag.grabRow;
    if (m.col - drag.grabCol + info.width > BoardCols)
        m.col = static_cast<int16_t>(BoardCols - info.width + drag.grabCol);
    if (m.row - drag.grabRow + info.height > BoardRows)
        m.row = static_cast<int16_t>(BoardRows - info.height + drag.grabRow);
    return m;
}

namespace {

Cell TopLeftOf(Cell mouse, const Drag &drag)
{
    return {static_cast<int16_t>(mouse.col - drag.grabCol),
        static_cast<int16_t>(mouse.row - drag.grabRow)};
}

// The straight path from the block's place at the press to the clamped cell;
// always measured from the start, so one drag cannot turn a corner.
bool PathFree(const GameState &game, const Drag &drag, Cell mouse)
{
    const Cell target = TopLeftOf(mouse, drag);
    if (mouse.col == drag.startCol)
        return game.CanSlideVertically(drag.dragPiece,
            static_cast<int16_t>(drag.startRow - drag.grabRow), target.row, target.col);
    return game.CanSlideHorizontally(
        drag.dragPiece, static_cast<int16_t>(drag.startCol - drag.grabCol), target.col, target.row);
}

} // namespace

DragStep DecideDragMove(const GameState &game, const Drag &drag, Cell mouse)
{
    DragStep step;
    if (mouse.col == drag.lastCol && mouse.row == drag.lastRow)
        return step;
    step.nothing = false;
    step.mouse = ClampMouseCell(mouse, drag, game.pieces[drag.dragPiece]);
    step.topLeft = TopLeftOf(step.mouse, drag);
    const bool sameCol = step.mouse.col == drag.startCol;
    const bool sameRow = step.mouse.row == drag.startRow;
    // Back at the start, or along its row or column with the way free.
    if ((sameCol && sameRow) || (sameCol != sameRow && PathFree(game, drag, step.mouse)))
        step.moveImage = true;
    else
        step.pointer = Pointer::NoDrop;
    return step;
}

Drop DecideDrop(const GameState &game, const Drag &drag, Cell mouse)
{
    Drop drop;
    drop.mouse = ClampMouseCell(mouse, drag, game.pieces[drag.dragPiece]);
    const bool sameCol = drop.mouse.col == drag.startCol;
    const bool sameRow = drop.mouse.row == drag.startRow;
    if (sameCol && sameRow) {
        drop.kind = Drop::AtStart;
        return drop;
    }
    if (!sameCol && !sameRow) {
        drop.kind = Drop::Diagonal;
        drop.topLeft = TopLeftOf({drag.startCol, drag.startRow}, drag);
        return drop;
    }
    drop.kind = Drop::Straight;
    if (!PathFree(game, drag, drop.mouse))
        drop.mouse = {drag.lastCol, drag.lastRow};
    drop.topLeft = TopLeftOf(drop.mouse, drag);
    drop.move = {drag.dragPiece, TopLeftOf({drag.startCol, drag.startRow}, drag), drop.topLeft};
    return drop;
}

void FollowPointer(Drag &drag, const DragStep &step)
{
    if (!step.moveImage)
        return;
    drag.lastCol = step.mouse.col;
    drag.lastRow = step.mouse.row;
}

void EndDrag(Drag &drag)
{
    drag.dragging = false;
}

std::optional<Move> KeyStep(const GameState &game, int16_t piece, int16_t dCol, int16_t dRow)
{
    const PieceInfo &info = game.pieces[piece];
    const Cell to {static_cast<int16_t>(info.col + dCol), static_cast<int16_t>(info.row + dRow)};
    const Shape shape = ShapeOf(piece);
    if (to.col < 0 || to.row < 0 || to.col + ShapeWidth(shape) > BoardCols
        || to.row + ShapeHeight(shape) > BoardRows)
        return std::nullopt;
    const bool free = dRow == 0 ? game.CanSlideHorizontally(piece, info.col, to.col, to.row)
                                : game.CanSlideVertically(piece, info.row, to.row, to.col);
    if (!free)
        return std::nullopt;
    return Move {piece, {info.col, info.row}, to};
}

int16_t NextInReadingOrder(const GameState &game, int16_t selected, bool forward)
{
    std::array<int16_t, PieceCount> order {};
    for (int16_t i = 0; i < PieceCount; ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&game](int16_t a, int16_t b) {
        const PieceInfo &p = game.pieces[a], &q = game.pieces[b];
        return p.row != q.row ? p.row < q.row : p.col < q.col;
    });
    const auto at = std::find(order.begin(), order.end(), selected);
    if (at == order.end())
        return forward ? order.front() : order.back();
    const auto index = at - order.begin();
    return order[(index + (forward ? 1 : PieceCount - 1)) % PieceCount];
}
