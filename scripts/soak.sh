#!/bin/sh
# Usage: scripts/soak.sh [FRAMES [FRAMES_PER_SAMPLE]]. Renders FRAMES frames (20000 unless given) of all effects in the
# release build and prints the memory in use at every sample; fails if it grows.
set -eu
cd "$(dirname "$0")/.."
./scripts/install_packages.sh
cmake --preset release -DKVX_BUILD_TESTS=ON >/dev/null
cmake --build --preset release --target soak
exec ./build/release/tests/soak "$@"
