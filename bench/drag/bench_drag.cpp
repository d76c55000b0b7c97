// The work of one pointer move during a drag and of one drop: first the
// rules alone, then the main window's handlers with their image moves (no
// painting happens inside a handler; Qt paints later, once per frame).
#include "app/FormGeometry.h"
#include "app/ImageControl.h"
#include "app/frmMain.h"
#include "app/modMain.h"
#include "platform/QtPlatform.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

GameState OpenBoard()
{
    GameState game;
    // Block 8 in the bottom row with two free cells to its right.
    game.SetUp({0, 20, 30, 3, 32, 23, 21, 22, 40, 43});
    return game;
}

void RulesPointerMove(benchmark::State &state)
{
    const GameState game = OpenBoard();
    Drag drag = StartDrag(8, {0, 4}, {0, 0});
    int16_t col = 1;
    for (auto _ : state) {
        const DragStep step
            = DecideDragMove(game, drag, MouseCell(30, 270, float(col * 60 + 10), 10, 1, 1));
        benchmark::DoNotOptimize(step);
        FollowPointer(drag, step);
        col = int16_t(3 - col); // 1, 2, 1, 2: every move enters another cell
    }
}
BENCHMARK(RulesPointerMove);

void RulesDrop(benchmark::State &state)
{
    const GameState start = OpenBoard();
    const Drag drag = StartDrag(8, {0, 4}, {0, 0});
    for (auto _ : state) {
        GameState game = start;
        const Drop drop = DecideDrop(game, drag, {2, 4});
        MakeStep(game, drop.move);
        benchmark::DoNotOptimize(game.board);
    }
}
BENCHMARK(RulesDrop);

// A main window with a game on it, from a program folder of its own.
struct Window
{
    Window()
    {
        QDir(dir.path()).mkpath(QStringLiteral("skins"));
        QFile::copy(
            QStringLiteral(QUORVEL_BIN_DIR "/QVL.ZHN"), dir.filePath(QStringLiteral("QVL.ZHN")));
        QFile::copy(QStringLiteral(QUORVEL_BIN_DIR "/skins/default.bmp"),
            dir.filePath(QStringLiteral("skins/default.bmp")));
        bool ok = false;
        InitAppFiles(dir.path(), platform, ok);
        form = std::make_unique<frmMain>(platform, dir.path());
        form->Form_Load();
        form->game.steps = 0;
        // A sound layout, as the table of the fewest steps knows only those; block 8
        // has two free cells to its right, as on the rules' board.
        form->levels[0].codes = {1, 21, 0, 3, 20, 23, 31, 32, 40, 43};
        form->game.SetUp(form->levels[0].codes);
        form->PlacePieces();
        form->ShowBoard();
    }
    QTemporaryDir dir;
    QtPlatform platform;
    std::unique_ptr<frmMain> form;
};

void HandlerPointerMove(benchmark::State &state)
{
    Window window;
    frmMain &form = *window.form;
    form.imgPieces_MouseDown(8, 1, 0, 10, 10);
    int16_t col = 1;
    for (auto _ : state) {
        // X is relative to the image, which moves with the block.
        const float x = float(30 + col * 60 + 10) - form.imgPieces[8]->x();
        form.imgPieces_MouseMove(8, 1, 0, x, 10);
        col = int16_t(3 - col);
    }
    form.imgPieces_MouseUp(8, 1, 0, 10, 10);
}
BENCHMARK(HandlerPointerMove);

void HandlerPointerMoveInSameCell(benchmark::State &state)
{
    Window window;
    frmMain &form = *window.form;
    form.imgPieces_MouseDown(8, 1, 0, 10, 10);
    float x = 10;
    for (auto _ : state) {
        form.imgPieces_MouseMove(8, 1, 0, x, 10);
        x = x == 10 ? 20 : 10;
    }
    form.imgPieces_MouseUp(8, 1, 0, 10, 10);
}
BENCHMARK(HandlerPointerMoveInSameCell);

// One block dropped two cells on, from the level's layout every time.
void TimeDrops(benchmark::State &state, frmMain &form)
{
    for (auto _ : state) {
        state.PauseTiming();
        form.game.SetUp(form.levels[0].codes);
        form.PlacePieces();
        form.imgPieces_MouseDown(8, 1, 0, 10, 10);
        state.ResumeTiming();
        form.imgPieces_MouseUp(8, 1, 0, 130, 10);
    }
}

void HandlerDrop(benchmark::State &state)
{
    Window window;
    TimeDrops(state, *window.form);
}
BENCHMARK(HandlerDrop);

// The same drop with the fewest steps left on the step line: the difference
// to HandlerDrop is the update after a step.
void HandlerDropWithFewestLeft(benchmark::State &state)
{
    Window window;
    frmMain &form = *window.form;
    form.SetShowFewestStepsLeft(true);
    form.ShowStatus(); // the table is first read here, on the first display
    TimeDrops(state, form);
}
BENCHMARK(HandlerDropWithFewestLeft);

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
