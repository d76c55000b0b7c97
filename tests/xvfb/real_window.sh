#!/bin/sh
# The real program in an X server of its own, under a window manager, driven
# by a real pointer and keyboard: it starts with its frame in the middle of
# the screen, a block follows the held pointer one cell, and Exit ends it
# with status 0. Everything else about the windows is seen offscreen,
# in-process.
#   real_window.sh BIN_DIR      (the build's bin folder)
set -eu
bin=$1
dir=$(mktemp -d)
server='' manager='' program=''
trap 'kill $program $manager $server 2>/dev/null; rm -rf "$dir"' EXIT
mkdir "$dir/skins"
cp "$bin/quorvel" "$bin/QVL.ZHN" "$dir/"
cp "$bin/skins/default.bmp" "$dir/skins/"

# Waits up to 20 s for a command to succeed.
wait_for() {
    for _ in $(seq 100); do
        "$@" >/dev/null 2>&1 && return 0
        sleep 0.2
    done
    echo "gave up waiting for: $*" >&2
    return 1
}
window() { xdotool search --onlyvisible --name "^$1\$" | head -n 1 | grep .; }
managed() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }
gone() { ! window "$1"; }
framed() { xprop -id "$(window Quorvel)" _NET_FRAME_EXTENTS | grep -q ' = '; }
# The outer frame, the client and the manager's frame extents together, in
# the middle of the 1024 x 768 screen.
centred() {
    eval "$(xwininfo -id "$main" | awk '/Absolute upper-left X/ { print "cx=" $4 }
        /Absolute upper-left Y/ { print "cy=" $4 } /Width:/ { print "cw=" $2 }
        /Height:/ { print "ch=" $2 }')"
    # left, right, top, bottom
    set -- $(xprop -id "$main" _NET_FRAME_EXTENTS | sed 's/.*= //; s/,//g')
    test $# -eq 4 &&
        test $((cx - $1)) -eq $(((1024 - cw - $1 - $2) / 2)) &&
        test $((cy - $3)) -eq $(((768 - ch - $3 - $4) / 2))
}
# The picture inside board cell ($1, $2) less the five pixels a selected
# block's frame takes, as raw bytes in $3.
cell() { import -window root -crop "48x48+$((x + 36 + 60 * $1))+$((y + 36 + 60 * $2))" "rgb:$3"; }
differ() { cell 0 0 "$dir/a" && cell 1 0 "$dir/b" && ! cmp -s "$dir/a" "$dir/b"; }
moved() { cell 0 0 "$dir/c" && cell 1 0 "$dir/d" && cmp -s "$dir/c" "$dir/b" && cmp -s "$dir/d" "$dir/a"; }
# Opens a File menu item by its access key; a key that came before the
# menu was open is tried again.
from_file_menu() {
    for _ in 1 2 3 4 5; do
        xdotool windowfocus "$main" key --delay 50 alt+f "$1"
        wait_for window "$2" && return 0
        xdotool key Escape Escape
    done
    return 1
}

Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp -noreset 3>"$dir/display" &
server=$!
wait_for test -s "$dir/display"
DISPLAY=:$(cat "$dir/display")
export DISPLAY
unset QT_QPA_PLATFORM WAYLAND_DISPLAY
openbox >/dev/null 2>&1 &
manager=$!
wait_for managed
# A manager that has only just started may leave the first window it is
# given unmapped or unframed: the game is started again until it is framed.
for attempt in 1 2 3; do
    "$dir/quorvel" &
    program=$!
    wait_for framed && break
    kill $program
    wait $program || true
    program=''
    test $attempt -lt 3
done
main=$(window Quorvel)
wait_for centred
from_file_menu n "Choose Level"
# Space selects the current row, which the list's focus made the first.
xdotool windowfocus "$(window "Choose Level")" key --delay 50 Home space alt+s
# The client area ends the window, 405 pixels high; centred left the
# window's place in cx, cy and its height in ch.
y=$((cy + ch - 405)) x=$cx
# The first level: block 6 stands alone on the top row's second cell, the
# first one is free.
# The chooser, framed and centred over the board, must be gone from the
# screen before the cells are taken.
wait_for gone "Choose Level"
wait_for differ
xdotool mousemove $((x + 120)) $((y + 60)) mousedown 1
xdotool mousemove $((x + 90)) $((y + 62)) mousemove $((x + 60)) $((y + 60)) mouseup 1
wait_for moved
# The step is unsaved: Exit asks first, and No leaves.
from_file_menu x "Quorvel - Exit"
xdotool windowfocus "$(window "Quorvel - Exit")" key alt+n
status=0
wait $program || status=$?
program=''
test $status -eq 0
