#!/usr/bin/env bash
# Installs what is missing, builds Quorvel and starts it from its program folder.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build
exec build/bin/quorvel
