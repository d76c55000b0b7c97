// Taking hold of a block, following the pointer and dropping it, the arrow
// keys, and the Game menu's steps. The decisions come from game/; these
// handlers carry them out on the images, the status line and the menu.
#include "FormGeometry.h"
#include "ImageControl.h"
#include "frmMain.h"

#include "game/WayOut.h"

#include <QKeyEvent>
#include <QPropertyAnimation>

namespace {

// Long enough to see which block went where, short enough not to wait for.
constexpr int GlideMs = 200;

} // namespace

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
    // A press on a gliding block would grab it between cells: it is ignored.
    if (Button != 1 || gliding_)
        return;
    Select(Index);
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
    if (step.moveImage)
        PlaceImageOnCell(drag.dragPiece, step.topLeft);
    FollowPointer(drag, step);
    SetMousePointer(step.pointer);
}

void frmMain::imgPieces_MouseUp([[maybe_unused]] int16_t Index, int16_t Button,
    [[maybe_unused]] int16_t Shift, float X, float Y)
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
    EndDrag(drag);
    SetMousePointer(Pointer::Default);
    if (drop.kind == Drop::Straight) {
        history.Make(game, drop.move);
        ShowStep(drop.move);
    } else {
        // The big block may stand on the exit from the start: a press and
        // release on it ends the game too.
        if (drag.dragPiece == 0 && game.IsSolved())
            FinishGame();
    }
}

void frmMain::ShowStep(const Move &move, bool glide, bool takenBack)
{
    if (glide)
        Glide(move);
    else
        PlaceImageOnCell(move.piece, move.to);
    gameChanged = true;
    ShowStatus();
    UpdateGameMenu();
    // Taking back a step is no step towards the exit: a big block it puts
    // back on the exit stands there as at a level that starts solved.
    if (!glide && !takenBack)
        WinIfSolved(move);
}

void frmMain::WinIfSolved(const Move &move)
{
    if (move.piece == 0 && game.IsSolved())
        FinishGame();
}

void frmMain::Glide(const Move &move)
{
    if (!glide_) {
        glide_ = new QPropertyAnimation(this);
        glide_->setPropertyName("pos");
        glide_->setDuration(GlideMs);
        glide_->setEasingCurve(QEasingCurve::OutCubic);
        connect(glide_, &QPropertyAnimation::finished, this, &frmMain::FinishGlide);
    }
    gliding_ = move;
    BlockImage *image = imgPieces[move.piece];
    glide_->setTargetObject(image);
    glide_->setStartValue(image->pos());
    glide_->setEndValue(
        QPoint(BoardOriginPx + CellPx * move.to.col, BoardOriginPx + CellPx * move.to.row));
    glide_->start();
}

void frmMain::FinishGlide()
{
    if (!gliding_)
        return;
    const Move move = *gliding_;
    gliding_.reset();
    glide_->stop();
    PlaceImageOnCell(move.piece, move.to);
    WinIfSolved(move);
}

void frmMain::Select(int16_t piece)
{
    if (selected_ >= 0)
        imgPieces[selected_]->SetSelected(false);
    selected_ = piece;
    if (selected_ >= 0)
        imgPieces[selected_]->SetSelected(true);
}

bool frmMain::focusNextPrevChild(bool next)
{
    if (!playing_)
        return QMainWindow::focusNextPrevChild(next);
    Select(NextInReadingOrder(game, selected_, next));
    return true;
}

void frmMain::keyPressEvent(QKeyEvent *event)
{
    // Only the bare keys: Alt and Ctrl combinations belong to the menus.
    if (!playing_ || (event->modifiers() & ~Qt::KeypadModifier) != 0) {
        QMainWindow::keyPressEvent(event);
        return;
    }
    int16_t dCol = 0, dRow = 0;
    switch (event->key()) {
    case Qt::Key_Escape:
        Select(-1);
        return;
    case Qt::Key_Left:
        dCol = -1;
        break;
    case Qt::Key_Right:
        dCol = 1;
        break;
    case Qt::Key_Up:
        dRow = -1;
        break;
    case Qt::Key_Down:
        dRow = 1;
        break;
    default:
        QMainWindow::keyPressEvent(event);
        return;
    }
    if (selected_ < 0 || !ReadyForStep())
        return;
    if (const std::optional<Move> step = KeyStep(game, selected_, dCol, dRow)) {
        history.Make(game, *step);
        ShowStep(*step);
    }
}

bool frmMain::ReadyForStep()
{
    FinishGlide();
    return playing_ && !drag.dragging;
}

void frmMain::mnuUndo_Click()
{
    if (!ReadyForStep())
        return;
    if (const std::optional<Move> step = history.Undo(game))
        ShowStep(*step, false, true);
}

void frmMain::mnuRedo_Click()
{
    if (!ReadyForStep())
        return;
    if (const std::optional<Move> step = history.Redo(game))
        ShowStep(*step);
}

void frmMain::mnuRestart_Click()
{
    if (!ReadyForStep() || history.Restart(game) == 0)
        return;
    for (int16_t i = 0; i < PieceCount; ++i)
        PlaceImageOnCell(i, {game.pieces[i].col, game.pieces[i].row});
    gameChanged = true;
    ShowStatus();
    UpdateGameMenu();
}

void frmMain::mnuHint_Click()
{
    if (!ReadyForStep())
        return;
    const Layout codes = game.EncodePositions();
    const int left = FewestStepsLeft(codes);
    if (left == 0) {
        // Only a game that began with the big block on the exit gets here:
        // the way out needs no step, so the hint ends the game.
        FinishGame();
        return;
    }
    const std::optional<Move> step = NextStepOut(codes);
    if (!step) {
        platform_.MsgBox(this, QStringLiteral("There is no way out from this position."),
            Buttons::Ok, Icon::Information, QStringLiteral("Quorvel - Hint"));
        return;
    }
    history.Make(game, *step);
    ShowStep(*step, true);
}

QString frmMain::FewestStepsLeftText()
{
    const int left = FewestStepsLeft(game.EncodePositions());
    if (left == NoWayOut)
        return QStringLiteral(" - no way out");
    return QStringLiteral(" - fewest left: ") + QString::number(left);
}

void frmMain::UpdateGameMenu()
{
    mnuUndo->setEnabled(playing_ && history.CanUndo());
    mnuRedo->setEnabled(playing_ && history.CanRedo());
    mnuRestart->setEnabled(playing_ && history.CanUndo());
    mnuHint->setEnabled(playing_);
}

void frmMain::mnuFewestSteps_Click(bool checked)
{
    SetShowFewestStepsLeft(checked);
    progress_.SetShowFewestStepsLeft(this, checked);
    emit FewestStepsLeftChanged(checked);
}

void frmMain::SetShowFewestStepsLeft(bool shown)
{
    showFewest_ = shown;
    mnuFewestSteps->setChecked(shown);
    if (statusShown_)
        ShowStatus();
}

void frmMain::FinishGame()
{
    FinishGlide();
    Select(-1);
    history.Clear();
    playing_ = false;
    UpdateGameMenu();
    HideBoard();
    ShowCongratulation();
    emit GameWon(game.levelIndex, game.steps);
    platform_.MsgBox(this,
        QStringLiteral("Congratulations!! You finished the game in ") + QString::number(game.steps)
            + QStringLiteral(" steps."),
        Buttons::Ok, Icon::Exclamation, QStringLiteral("Quorvel - Congratulations"));
    progress_.GameWon(this, game.levelIndex, game.steps);
}
