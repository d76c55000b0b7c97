#!/bin/sh
# Installs the build into a fresh folder and checks that it is a complete
# program folder whose desktop entry starts the game from there.
#   check-install.sh BUILD_DIR
set -eu
build=$1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cmake --install "$build" --prefix "$dir/Quorvel Games" > /dev/null
folder="$dir/Quorvel Games"
fail() { echo "check-install: $*" >&2; exit 1; }
for file in quorvel quorvel-levels QVL.ZHN qvl.html skins/default.bmp quorvel.desktop \
            icons/hicolor/16x16/apps/quorvel.png icons/hicolor/256x256/apps/quorvel.png; do
    [ -f "$folder/$file" ] || fail "$file is missing"
done
[ -x "$folder/quorvel" ] || fail "the program is not executable"
grep -qx "Exec=\"$folder/quorvel\"" "$folder/quorvel.desktop" || fail "the desktop entry does not start $folder/quorvel"
grep -qx "Icon=$folder/icons/hicolor/256x256/apps/quorvel.png" "$folder/quorvel.desktop" || fail "the desktop entry has no icon"
if command -v desktop-file-validate > /dev/null; then
    desktop-file-validate "$folder/quorvel.desktop" || fail "the desktop entry is not valid"
fi
# The installed level tool reads the installed levels.
"$folder/quorvel-levels" check "$folder/QVL.ZHN" | tail -n 1 | grep -q '^70 ' || fail "the installed levels do not check"
echo "check-install: ok"
