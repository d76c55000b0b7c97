#!/usr/bin/env bash
# Installs what is missing, builds Quorvel and runs every test.
#   scripts/test.sh          the normal build, in build/
#   scripts/test.sh --asan   the same tests under AddressSanitizer and
#                            UndefinedBehaviorSanitizer, in build-asan/
# QUORVEL_WERROR=ON in the environment makes any compiler warning an error.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

if [ "${1:-}" = "--asan" ]; then
    dir=build-asan
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQUORVEL_SANITIZE=ON \
        -DQUORVEL_BENCHMARKS=OFF -DQUORVEL_WERROR="${QUORVEL_WERROR:-OFF}"
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
else
    dir=build
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DQUORVEL_WERROR="${QUORVEL_WERROR:-OFF}"
fi
cmake --build "$dir"
ctest --test-dir "$dir" --output-on-failure -j2
