// Taking hold of a block, following the pointer and dropping it. The
// decisions come from game/Moves; these handlers carry them out on the
// images, the board and the status line.
#include "ImageControl.h"
#include "frmMain.h"

void frmMain::SetMousePointer(Pointer pointer)
{
    switch (pointer) {
    case Pointer::Move:
        setCursor(Qt::SizeAllCursor);
        break;
    case Pointer::NoDrop:
        setCursor(Qt::ForbiddenCursor);
        break;
    default:
        unsetCursor();
        break;
    }
}

void frmMain::PlaceImageOnCell(int16_t piece, Cell topLeft)
{
    const ScreenMetrics s = Screen();
    imgPieces[piece]->SetLeft(DragEdge(topLeft.col, s.unitsPerPixelX), s.unitsPerPixelX);
    imgPieces[piece]->SetTop(DragEdge(topLeft.row, s.unitsPerPixelY), s.unitsPerPixelY);
}

void frmMain::imgPieces_MouseDown(
    int16_t Index, int16_t Button, [[maybe_unused]] int16_t Shift, float X, float Y)
{
    if (Button != 1)
        return;
    const ScreenMetrics s = Screen();
    const BlockImage *image = imgPieces[Index];
    const Cell mouse
        = MouseCell(image->Left(), image->Top(), X, Y, s.unitsPerPixelX, s.unitsPerPixelY);
    drag = StartDrag(Index, mouse, GrabOffset(X, Y, s.unitsPerPixelX, s.unitsPerPixelY));
    SetMousePointer(Pointer::Move);
}

void frmMain::imgPieces_MouseMove([[maybe_unused]] int16_t Index, [[maybe_unused]] int16_t Button,
    [[maybe_unused]] int16_t Shift, float X, float Y)
{
    if (!drag.dragging)
        return;
    const ScreenMetrics s = Screen();
    const BlockImage *image = imgPieces[drag.dragPiece];
    const Cell mouse
        = MouseCell(image->Left(), image->Top(), X, Y, s.unitsPerPixelX, s.unitsPerPixelY);
    const DragStep step = DecideDragMove(game, drag, mouse);
    if (step.nothing)
        return;
    if (step.moveImage) {
        PlaceImageOnCell(drag.dragPiece, step.topLeft);
        drag.lastCol = step.mouse.col;
        drag.lastRow = step.mouse.row;
    }
    SetMousePointer(step.pointer);
}

void frmMain::imgPieces_MouseUp(
    int16_t Index, int16_t Button, [[maybe_unused]] int16_t Shift, float X, float Y)
{
    // A release with no drag held (the toolkit may deliver one on its own)
    // has nothing to settle.
    if (Button != 1 || !drag.dragging)
        return;
    const ScreenMetrics s = Screen();
    const BlockImage *image = imgPieces[drag.dragPiece];
    const Cell mouse
        = MouseCell(image->Left(), image->Top(), X, Y, s.unitsPerPixelX, s.unitsPerPixelY);
    const Drop drop = DecideDrop(game, drag, mouse);
    if (drop.kind == Drop::Diagonal)
        PlaceImageOnCell(drag.dragPiece, drop.topLeft);
    if (drop.kind == Drop::Straight) {
        PlaceImageOnCell(Index, drop.topLeft);
        CarryOutDrop(game, Index, drag, drop);
        gameChanged = true;
        ShowStatus();
    }
    drag.dragging = false;
    SetMousePointer(Pointer::Default);
    if (drag.dragPiece == 0 && game.IsSolved())
        FinishGame();
}

void frmMain::FinishGame()
{
    HideBoard();
    ShowCongratulation();
    platform_.MsgBox(this,
        QStringLiteral("Congratulations!! You finished the game in ") + QString::number(game.steps)
            + QStringLiteral(" steps."),
        Buttons::Ok, Icon::Exclamation, QStringLiteral("Quorvel - Congratulations"));
    progress_.GameWon(this, game.levelIndex, game.steps);
}
