// quorvel-wayout OUT: explores every position and writes each one's fewest
// steps to the exit, by position number, as the C++ table the game is built
// with. A build step, not part of the game.
#include "game/Solver.h"

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("usage: quorvel-wayout OUT.cpp\n", stderr);
        return 2;
    }
    const StateSpace space;
    // One signed byte a position keeps the table at 64 KiB.
    if (space.MaxDistance() > 127) {
        std::fputs("quorvel-wayout: a position needs more steps than a byte holds\n", stderr);
        return 1;
    }
    std::FILE *out = std::fopen(argv[1], "w");
    if (!out) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(out,
        "// Written by quorvel-wayout from the solver's exploration; do not edit.\n"
        "#include <cstdint>\n\n"
        "extern const int8_t FewestStepsByPosition[%d];\n"
        "const int8_t FewestStepsByPosition[%d] = {",
        space.StateCount(), space.StateCount());
    for (int index = 0; index < space.StateCount(); ++index)
        std::fprintf(out, "%s%d,", index % 24 == 0 ? "\n" : " ", space.DistanceAt(index));
    std::fputs("\n};\n", out);
    if (std::ferror(out) || std::fclose(out) != 0) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}
