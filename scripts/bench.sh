#!/bin/sh
# Usage: scripts/bench.sh [SIZE] [--vectors=NAME] [options of Google Benchmark]. Times every effect at SIZE, or at 1920x1080
# and 3840x2160, on one thread beside a memcpy of the frame and OpenCV's operations. Prints a table sorted by time and what it
# comes to; the figures also go to build/bench-SIZE.json, with --vectors (AVX2, SSE4 and the like: as on machines that have no
# more) to build/bench-SIZE-NAME.json.
#
# Or: scripts/bench.sh --against PLUGIN.so [SIZE] [ID...]. Loads another build of the plug-in beside this tree's and times
# both in turn, effect by effect, at SIZE or 1920x1080. Prints new/old for each and the geometric mean.
set -eu
against=
if [ "${1:-}" = --against ]; then
  [ $# -ge 2 ] || { echo 'usage: scripts/bench.sh --against PLUGIN.so [SIZE] [ID...]' >&2; exit 2; }
  against=$(realpath -e -- "$2") || exit 1
  shift 2
fi
cd "$(dirname "$0")/.."
./scripts/install_packages.sh
cmake --preset release -DKVX_BUILD_BENCHMARKS=ON >/dev/null
if [ -n "$against" ]; then
  cmake --build --preset release --target plugin_compare
  exec ./build/release/benchmarks/plugin_compare "$against" build/release/lib/kvx/kvxFilterPureCPlugin.so "$@"
fi
sizes='1920x1080 3840x2160'
case "${1:-}" in [0-9]*x[0-9]*) sizes=$1; shift ;; esac
vectors=
case "${1:-}" in --vectors=*) vectors=$1; shift ;; esac
cmake --build --preset release --target effect_bench
for size in $sizes; do
  ./build/release/benchmarks/effect_bench "$size" ${vectors:+"$vectors"} \
    --benchmark_out="build/bench-$size${vectors:+-${vectors#*=}}.json" --benchmark_out_format=json "$@"
done
