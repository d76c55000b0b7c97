#!/usr/bin/env bash
# Start-up time (exec to window mapped) and resident memory of Quorvel and of
# a bare Qt window with the same menu bar, in one run on one X server.
#   bench/startup/measure.sh [BUILD_DIR] [RUNS]
set -euo pipefail
build=$(realpath "${1:-build}")
runs=${2:-20}
folder=$(mktemp -d)
trap 'kill "$xvfb" 2>/dev/null && wait "$xvfb" 2>/dev/null; rm -rf "$folder"' EXIT

# A program folder of its own, so the build's folder is left as it was.
cp "$build/bin/quorvel" "$build/bin/QVL.ZHN" "$folder/"
mkdir "$folder/skins"
cp "$build/bin/skins/default.bmp" "$folder/skins/"

exec 3< <(Xvfb -displayfd 1 -screen 0 1024x768x24 -nolisten tcp -noreset 2>/dev/null)
xvfb=$!
read -r display <&3
export DISPLAY=":$display"
for ((wait = 0; wait < 200; wait++)); do # up to 10 s for the server to answer
    xdpyinfo > /dev/null 2>&1 && break
    sleep 0.05
done
unset QT_QPA_PLATFORM
export XDG_RUNTIME_DIR="$folder/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"

median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
summary() { # name, file of "map-ms kib idle-ms" lines
    printf "%-8s window mapped %6.1f ms, idle %6.1f ms (medians; idle min %s, max %s), resident %5.1f MiB\n" \
        "$1" "$(cut -d' ' -f1 "$2" | median)" "$(cut -d' ' -f3 "$2" | median)" \
        "$(cut -d' ' -f3 "$2" | sort -n | head -1)" "$(cut -d' ' -f3 "$2" | sort -n | tail -1)" \
        "$(echo "$(cut -d' ' -f2 "$2" | median) / 1024" | bc -l)"
}

# Alternate the two programs so a busy moment hurts both alike.
: > "$folder/game.txt"; : > "$folder/bare.txt"
"$build/bench/launch_timer" 2 Quorvel "$folder/quorvel" > /dev/null # warm the file cache
for ((i = 0; i < runs; i++)); do
    "$build/bench/launch_timer" 1 Quorvel "$folder/quorvel" >> "$folder/game.txt"
    "$build/bench/launch_timer" 1 Bare "$build/bench/bare_window" >> "$folder/bare.txt"
done
summary quorvel "$folder/game.txt"
summary bare "$folder/bare.txt"
