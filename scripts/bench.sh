#!/bin/sh
# Usage: scripts/bench.sh [SIZE] [options of Google Benchmark]. Times every effect at SIZE (1920x1080 unless given) on one
# thread beside a memcpy of the frame, and prints a table sorted by time with the geometric mean. For JSON:
# --benchmark_out=FILE --benchmark_out_format=json.
set -eu
cd "$(dirname "$0")/.."
./scripts/install_packages.sh
cmake --preset release -DKVX_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release --target effect_bench
exec ./build/release/benchmarks/effect_bench "$@"
