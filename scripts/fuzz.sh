#!/bin/sh
# Usage: scripts/fuzz.sh [SECONDS] [TARGET...] runs the fuzzers (catalogue, effects, filter, images, recipe,
# command, frames), each for SECONDS, 600 if none are given. What they find out goes to build/fuzz/corpus, inputs that fail
# to build/fuzz/finds.
#        scripts/fuzz.sh --merge [TARGET...] makes the kept corpus in fuzz/corpus anew from itself and build/fuzz/corpus:
# the fewest inputs that reach every edge of the code.
set -eu
cd "$(dirname "$0")/.."
mode=run
seconds=600
case "${1:-}" in
  --merge) mode=merge; shift ;;
  [0-9]*) seconds=$1; shift ;;
esac
[ $# -gt 0 ] || set -- catalogue effects filter images recipe command frames

./scripts/install_packages.sh clang libclang-rt-14-dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

work=build/fuzz
mkdir -p $work/finds
# Catalogue and filter files are written for every input: in memory where that can be.
[ -w /dev/shm ] && TMPDIR=$(mktemp -d -p /dev/shm) || TMPDIR=$(mktemp -d)
trap 'rm -rf "$TMPDIR"' EXIT
trap 'exit 1' INT TERM
export TMPDIR UBSAN_OPTIONS=print_stacktrace=1

# Prints, say: "filter: 13225 runs in 5 second(s), cov: 4104 ft: 8573 corp: 403/110Kb". Coverage counts edges, "ft"
# features: edges with how often they were taken. The limit of time for one input is so high because a busy machine
# stalls; inputs above 10 seconds are written down all the same.
run() {
  log=$work/$1.log
  mkdir -p "$work/corpus/$1"
  if "$work/fuzz/fuzz_$1" -max_total_time="$seconds" -max_len="$2" -timeout=100 -report_slow_units=10 \
    -rss_limit_mb=2560 -malloc_limit_mb="$3" -dict="fuzz/$1.dict" -artifact_prefix="$work/finds/$1-" \
    "$work/corpus/$1" "fuzz/corpus/$1" >"$log" 2>&1; then
    echo "$1: $(sed -n 's/^Done //p' "$log"), $(sed -n 's/.*DONE *\(cov: .*\) lim: .*/\1/p' "$log"), no finds"
  else
    tail -n 60 "$log"
    echo "$1: FAILED. Log: $log; input: $(sed -n 's/.*Test unit written to //p' "$log")"
    return 1
  fi
}

# By edges alone, greedily: by features, or by the plain merge, many times as many inputs would stay.
merge() {
  rm -rf "$work/merged"
  mkdir -p "$work/merged" "$work/corpus/$1"
  "$work/fuzz/fuzz_$1" -set_cover_merge=1 -use_counters=0 -max_len="$2" -timeout=100 "$work/merged" "fuzz/corpus/$1" \
    "$work/corpus/$1" >"$work/$1.merge.log" 2>&1
  rm -rf "fuzz/corpus/$1"
  mv "$work/merged" "fuzz/corpus/$1"
  echo "$1: $(find "fuzz/corpus/$1" -type f | wc -l) inputs kept"
}

failed=0
for target in "$@"; do
  most=512
  case "$target" in
    catalogue | filter | images) longest=8192 ;;
    frames) longest=8192 most=1100 ;;  # a video may claim 16384 by 16384, and libav takes the memory at once
    recipe) longest=2048 ;;
    effects | command) longest=400 ;;
    *) echo "no fuzzer '$target'" >&2; exit 2 ;;
  esac
  if [ $mode = merge ]; then
    merge "$target" $longest
  else
    run "$target" $longest $most || failed=1
  fi
done
exit $failed
