// How long the solver takes over the shipped pack and over the whole space.
//
//     build/bench/bench_solver [--benchmark_repetitions=10]
#include "files/LevelFile.h"
#include "game/Solver.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace {

const LevelTable &Pack()
{
    static const LevelTable levels = [] {
        LevelTable read;
        if (const FileError error = ReadLevelFile(QStringLiteral(QUORVEL_LEVEL_FILE), read)) {
            std::fprintf(stderr, "bench_solver: %s\n", qPrintable(error.description));
            std::exit(EXIT_FAILURE);
        }
        return read;
    }();
    return levels;
}

// The fewest steps of every level of the pack, the way the level tool's
// `check` gets its counts: explore once, then look each level up. The
// exploration is inside the timing.
void CountAllLevels(benchmark::State &state)
{
    const LevelTable &levels = Pack();
    for (auto _ : state) {
        const StateSpace space;
        int steps = 0;
        for (const LevelRecord &level : levels)
            steps += *space.StepsToSolve(level.codes);
        benchmark::DoNotOptimize(steps);
    }
    state.counters["levels"] = LevelCount;
}
BENCHMARK(CountAllLevels)->Unit(benchmark::kMillisecond);

// The same with a separate breadth-first search from every level, as
// `quorvel-levels solve` does for one level.
void SolveAllLevelsOneByOne(benchmark::State &state)
{
    const LevelTable &levels = Pack();
    for (auto _ : state) {
        int steps = 0;
        for (const LevelRecord &level : levels)
            steps += Solve(level.codes)->Steps();
        benchmark::DoNotOptimize(steps);
    }
}
BENCHMARK(SolveAllLevelsOneByOne)->Unit(benchmark::kMillisecond);

void ExploreWholeSpace(benchmark::State &state)
{
    int most = 0;
    for (auto _ : state) {
        const StateSpace space;
        most = space.MaxDistance();
        benchmark::DoNotOptimize(most);
    }
    state.counters["positions"] = StateSpace().StateCount();
    state.counters["max_steps"] = most;
}
BENCHMARK(ExploreWholeSpace)->Unit(benchmark::kMillisecond);

// The hardest level alone, the longest single search the tool makes.
void SolveHardestLevel(benchmark::State &state)
{
    const Layout &codes = Pack()[LevelCount - 1].codes;
    for (auto _ : state)
        benchmark::DoNotOptimize(Solve(codes));
}
BENCHMARK(SolveHardestLevel)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
