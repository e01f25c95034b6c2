#!/bin/sh
# Usage: scripts/demo.sh [INPUT]. Builds, then renders every effect of the demo picture, or of INPUT, into out/.
set -eu
input=${1:-demo}
case $input in demo | /*) ;; *) input=$PWD/$input ;; esac
cd "$(dirname "$0")/.."
./scripts/install_packages.sh
cmake --preset release -DKVX_BUILD_TESTS=OFF -DKVX_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build --preset release
mkdir -p out
./build/release/bin/kvx contact-sheet --each out/effects "$input" out/contact-sheet.png
echo "all effects on one picture: out/contact-sheet.png"
echo "one picture per effect:     out/effects/"
