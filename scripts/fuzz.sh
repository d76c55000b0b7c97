#!/usr/bin/env bash
# Builds the fuzzers (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs each in turn, starting
# from the seeds the build writes and whatever earlier runs kept.
#   scripts/fuzz.sh                          every fuzzer for 10 minutes
#   scripts/fuzz.sh --short                  every fuzzer for 20 seconds (CI)
#   scripts/fuzz.sh --seconds N [fuzz_X ...] the fuzzers named, N seconds each
# A crash, hang, leak or broken rule fails the run; its input is kept in
# build-fuzz/findings/ and the log's end is printed.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=600
case "${1:-}" in
--short) seconds=20; shift ;;
--seconds) seconds=$2; shift 2 ;;
esac
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    targets=(fuzz_levels fuzz_savedgame fuzz_settings fuzz_player fuzz_picture)
fi

bash scripts/setup.sh
dir=build-fuzz
cmake -S . -B "$dir" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DQUORVEL_FUZZ=ON -DQUORVEL_WERROR=ON -DBUILD_TESTING=OFF -DQUORVEL_BENCHMARKS=OFF >/dev/null
cmake --build "$dir" --target fuzz_all

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
mkdir -p "$dir/findings"
failed=0
for target in "${targets[@]}"; do
    name=${target#fuzz_}
    corpus=$dir/corpus/$name
    log=$dir/findings/$name.log
    mkdir -p "$corpus"
    limits=(-max_len=4096)
    # A skin picture may be far larger than the other files. The WMF
    # library reserves what a damaged header asks for without touching it,
    # which costs the game nothing; the resident limit still holds.
    [ "$name" = picture ] && limits=(-max_len=65536 -malloc_limit_mb=65536)
    echo "== $target, $seconds s"
    if "$dir/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        "${limits[@]}" -print_final_stats=1 -artifact_prefix="$dir/findings/$name-" \
        "$corpus" "$dir/fuzz/seeds/$name" >"$log" 2>&1; then
        grep -E '^#[0-9]+[[:space:]]+DONE|^stat::(number_of_executed_units|peak_rss_mb)' "$log" || true
    else
        failed=$((failed + 1))
        tail -n 60 "$log"
        echo "== $target FAILED; its input is in $dir/findings/"
    fi
done
echo "fuzzers: $((${#targets[@]} - failed)) clean, $failed with findings"
[ "$failed" -eq 0 ]
