// What a hint, the fewest steps left and Undo and Redo cost a game in play.
// The first benchmark runs first and once: it pays for everything the
// process has not built yet, as the first hint of a run does.
//
//     build/bench/bench_hint [--benchmark_repetitions=10]
#include "files/LevelFile.h"
#include "game/History.h"
#include "game/Solver.h"
#include "game/WayOut.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace {

const LevelTable &Pack()
{
    static const LevelTable levels = [] {
        LevelTable read;
        if (const FileError error = ReadLevelFile(QStringLiteral(QUORVEL_LEVEL_FILE), read)) {
            std::fprintf(stderr, "bench_hint: %s\n", qPrintable(error.description));
            std::exit(EXIT_FAILURE);
        }
        return read;
    }();
    return levels;
}

// The start of the hardest level, where a player most wants a hint.
const Layout &Hardest()
{
    return Pack()[LevelCount - 1].codes;
}

void FirstHintOfARun(benchmark::State &state)
{
    const Layout &codes = Hardest();
    for (auto _ : state)
        benchmark::DoNotOptimize(NextStepOut(codes));
}
BENCHMARK(FirstHintOfARun)->Iterations(1)->Repetitions(1)->Unit(benchmark::kMicrosecond);

// Every further hint: the look-ups of the position and of each step from it.
void Hint(benchmark::State &state)
{
    const Layout &codes = Hardest();
    for (auto _ : state)
        benchmark::DoNotOptimize(NextStepOut(codes));
}
BENCHMARK(Hint)->Unit(benchmark::kMicrosecond);

// The step line's question after every step.
void FewestLeftAfterAStep(benchmark::State &state)
{
    const Layout next = ApplyMove(Hardest(), LegalMoves(Hardest()).front());
    for (auto _ : state)
        benchmark::DoNotOptimize(FewestStepsLeft(next));
}
BENCHMARK(FewestLeftAfterAStep)->Unit(benchmark::kMicrosecond);

// An undo and a redo, after a game of `range` steps: the same whatever the length.
void UndoRedo(benchmark::State &state)
{
    GameState game;
    game.SetUp(Hardest());
    History history;
    const Move there = LegalMoves(Hardest()).front();
    for (int64_t i = 0; i < state.range(0); ++i)
        history.Make(game, i % 2 == 0 ? there : Reversed(there));
    for (auto _ : state) {
        benchmark::DoNotOptimize(history.Undo(game));
        benchmark::DoNotOptimize(history.Redo(game));
    }
}
BENCHMARK(UndoRedo)->Arg(10)->Arg(100000);

} // namespace

BENCHMARK_MAIN();
