#!/bin/sh
# Usage: scripts/bench.sh [SIZE] [options of Google Benchmark]. Times every effect at SIZE, or at 1920x1080 and 3840x2160,
# on one thread beside a memcpy of the frame and OpenCV's operations. Prints a table sorted by time and what it comes to;
# the figures also go to build/bench-SIZE.json.
set -eu
cd "$(dirname "$0")/.."
sizes='1920x1080 3840x2160'
case "${1:-}" in [0-9]*x[0-9]*) sizes=$1; shift ;; esac
./scripts/install_packages.sh
cmake --preset release -DKVX_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release --target effect_bench
for size in $sizes; do
  ./build/release/benchmarks/effect_bench "$size" --benchmark_out="build/bench-$size.json" --benchmark_out_format=json "$@"
done
