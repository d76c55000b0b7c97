#!/usr/bin/env bash
# Installs what building, running and testing Quorvel needs on Debian 12.
# Packages already present are left alone; apt runs only when one is missing.
set -euo pipefail

packages=(
    # building
    g++ cmake ninja-build pkgconf
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev
    libwmf-dev libemf2svg-dev
    # the WMF library's link line names these, and its -dev package does not
    # pull them in
    libexpat1-dev libjpeg-dev libpng-dev
    # the WMF library draws its text with these and refuses to play a file
    # without them; it only recommends them, and we install no recommends
    fonts-urw-base35
    imagemagick  # stores the gallery's skins as GIF, JPEG and run-length DIB
    libbenchmark-dev
    # testing: a real X server to drive, pictures to compare, the formatter
    xvfb xdotool x11-utils fonts-dejavu-core desktop-file-utils
    openbox  # a window manager, so the real-X test sees the frame it adds
    # packaging: dependencies computed by dpkg-shlibdeps, the package and its metadata checked
    dpkg-dev appstream lintian
    clang clang-format
    clang-tidy  # the build's optional lint pass, -DQUORVEL_CLANG_TIDY=ON
    # hardening: libFuzzer for clang's fuzzers; valgrind's callgrind counts
    # instructions for docs/PERFORMANCE.md
    libclang-rt-14-dev valgrind
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo_cmd=()
    if [ "$(id -u)" -ne 0 ]; then
        sudo_cmd=(sudo)
    fi
    "${sudo_cmd[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
    "${sudo_cmd[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
