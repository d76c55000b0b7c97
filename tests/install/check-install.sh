#!/bin/sh
# Installs the build the way Linux installs games, into a fresh prefix and
# as a Debian package, checks what lands where, and starts the installed
# game as a player who may not write to it.
#   check-install.sh BUILD_DIR
set -eu
build=$(cd "$1" && pwd)
dir=$(mktemp -d)
server=
cleanup() {
    [ -z "$server" ] || kill "$server" 2> /dev/null || true
    chmod -R u+w "$dir" 2> /dev/null || true
    rm -rf "$dir"
}
trap cleanup EXIT
chmod 755 "$dir"
fail() { echo "check-install: $*" >&2; exit 1; }
id=org.example.quorvel

# What every install holds, below its prefix.
expected="games/quorvel
games/quorvel-levels
share/applications/$id.desktop
share/doc/quorvel/changelog.gz
share/doc/quorvel/copyright
share/games/quorvel/QVL.ZHN
share/games/quorvel/qvl.html
share/games/quorvel/skins/@2x/default.bmp
share/games/quorvel/skins/@2x/garden.gif
share/games/quorvel/skins/@2x/paper.dib
share/games/quorvel/skins/@2x/sea.jpg
share/games/quorvel/skins/default.bmp
share/games/quorvel/skins/garden.gif
share/games/quorvel/skins/night.emf
share/games/quorvel/skins/paper.dib
share/games/quorvel/skins/sea.jpg
share/icons/hicolor/128x128/apps/$id.png
share/icons/hicolor/16x16/apps/$id.png
share/icons/hicolor/256x256/apps/$id.png
share/icons/hicolor/32x32/apps/$id.png
share/icons/hicolor/48x48/apps/$id.png
share/icons/hicolor/64x64/apps/$id.png
share/icons/hicolor/scalable/apps/$id.svg
share/metainfo/$id.metainfo.xml"
contents() { (cd "$1" && find . -type f | sed 's|^\./||' | LC_ALL=C sort); }

# A prefix of the player's choice, with a space in it.
prefix="$dir/Quorvel Games"
cmake --install "$build" --prefix "$prefix" > /dev/null
[ "$(contents "$prefix")" = "$(echo "$expected" | LC_ALL=C sort)" ] \
    || fail "the install differs: $(contents "$prefix" | tr '\n' ' ')"
grep -qx "Exec=$prefix/games/quorvel" "$prefix/share/applications/$id.desktop" \
    || fail "the desktop entry does not start $prefix/games/quorvel"
desktop-file-validate "$prefix/share/applications/$id.desktop" || fail "the desktop entry is not valid"
appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml" > /dev/null \
    || fail "the AppStream metadata is not valid"
"$prefix/games/quorvel-levels" check "$prefix/share/games/quorvel/QVL.ZHN" | tail -n 1 | grep -q '^70 ' \
    || fail "the installed levels do not check"

# The Debian package holds the same tree under /usr, and needs what the
# game needs (dpkg-dev and lintian: scripts/setup.sh).
root="$dir/root"
cpack -G DEB -B "$dir/package" --config "$build/CPackConfig.cmake" > /dev/null
deb=$(ls "$dir"/package/quorvel_*_amd64.deb)
dpkg-deb -x "$deb" "$root"
[ "$(contents "$root/usr")" = "$(echo "$expected" | LC_ALL=C sort)" ] \
    || fail "the package differs: $(contents "$root/usr" | tr '\n' ' ')"
grep -qx "Exec=/usr/games/quorvel" "$root/usr/share/applications/$id.desktop" \
    || fail "the packaged desktop entry does not start /usr/games/quorvel"
depends=$(dpkg-deb -f "$deb" Depends)
for package in libqt6widgets6 libqt6svg6 libwmf-0.2-7 libemf2svg1 fonts-urw-base35 xdg-utils; do
    echo "$depends" | grep -q "$package" || fail "the package does not depend on $package"
done
! lintian "$deb" 2> /dev/null | grep '^E:' || fail "lintian finds errors"

# The installed game as a player starts it: the tree is not theirs to write
# to, their files go to the XDG data home. Root runs it as nobody, and as
# itself to show that even root writes nothing into the tree.
chmod -R a-w "$root"
player() {
    if [ "$(id -u)" -eq 0 ] && [ "${AS_ROOT:-}" != yes ]; then
        setpriv --reuid=65534 --regid=65534 --clear-groups "$@"
    else
        "$@"
    fi
}
home="$dir/home"
mkdir "$home"
[ "$(id -u)" -ne 0 ] || chown 65534:65534 "$home"
exec 3> "$dir/display"
# Without -noreset the server starts afresh, refusing connections meanwhile,
# each time the game it served ends, and the next start finds no display.
Xvfb -displayfd 3 -ac -noreset -nolisten tcp -screen 0 1280x1024x24 > /dev/null 2>&1 &
server=$!
exec 3>&-
for _ in $(seq 50); do [ -s "$dir/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$dir/display")
export DISPLAY
# Starts the installed game and waits for its window.
starts() {
    (cd / && player env -u XDG_DATA_HOME HOME="$home" "$@" "$root/usr/games/quorvel" \
        > "$dir/game.log" 2>&1 & echo $! > "$dir/game")
    found=no
    for _ in $(seq 300); do
        if xdotool search --onlyvisible --name '^Quorvel$' > /dev/null 2>&1; then found=yes; break; fi
        sleep 0.1
    done
    kill "$(cat "$dir/game")" 2> /dev/null || true
    while kill -0 "$(cat "$dir/game")" 2> /dev/null; do sleep 0.1; done
    # What the game said, for whoever reads a failure.
    [ $found = yes ] || { cat "$dir/game.log" >&2; false; }
}
before=$(cd "$root" && ls -lR --time-style=full-iso)
starts || fail "the installed game did not start for a player"
data="$home/.local/share/quorvel"
[ -d "$data/saved" ] && [ -d "$data/skins" ] || fail "no saved/ and skins/ in $data"
[ "$(od -An -c "$data/qvl.ini" | tr -d ' ')" = 'default.bmp\r\n' ] || fail "$data/qvl.ini does not name the default skin"
elsewhere="$home/elsewhere"
starts XDG_DATA_HOME="$elsewhere" || fail "the game did not start with an XDG data home of its own"
[ -f "$elsewhere/quorvel/qvl.ini" ] || fail "the XDG data home was not used"
if [ "$(id -u)" -eq 0 ]; then
    AS_ROOT=yes starts || fail "the installed game did not start for root"
fi
[ "$before" = "$(cd "$root" && ls -lR --time-style=full-iso)" ] || fail "something was written into the installed tree"
echo "check-install: ok"
