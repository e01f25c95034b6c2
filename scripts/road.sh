#!/bin/sh
# Usage: scripts/road.sh [CLIP [RUNS]]. Times `kvx render` on a video beside `ffmpeg` with the same work, and other ways
# that a run takes, in turn; prints the quickest of RUNS (5) as seconds of the clock and of the processors. Without a CLIP
# it makes 200 frames of 1920x1080. OTHER=/path/to/kvx adds another build of the command to the first two tables.
set -eu
runs=${2:-5}
clip=${1:-}
[ -z "$clip" ] || clip=$(realpath -e -- "$clip")
case $runs in '' | *[!0-9]* | 0) echo "usage: scripts/road.sh [CLIP [RUNS]]: \"$runs\" is no number of runs" >&2; exit 2 ;; esac
for tool in ffmpeg python3; do
  command -v "$tool" >/dev/null || { echo "scripts/road.sh needs $tool" >&2; exit 1; }
done
root=$(cd "$(dirname "$0")/.." && pwd)
kvx=$root/build/release/bin/kvx
[ -x "$kvx" ] || { echo "$kvx is not built: cmake --preset release && cmake --build --preset release --target kvx" >&2; exit 1; }
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 130' INT TERM HUP
if [ -z "$clip" ]; then
  clip=$scratch/clip.mp4
  ffmpeg -nostdin -loglevel error -f lavfi -i testsrc2=s=1920x1080:r=25 -frames:v 200 -pix_fmt yuv420p -preset veryfast \
    -crf 18 "$clip"
fi

# Each argument is NAME=COMMAND. All of them in turn, RUNS times.
in_turn() {
  python3 - "$runs" "$@" <<'PYTHON'
import os, subprocess, sys, time

runs, rows = int(sys.argv[1]), [row.split("=", 1) for row in sys.argv[2:]]
best = {name: [float("inf")] * 2 for name, _ in rows}
for _ in range(runs):
    for name, command in rows:
        before, start = os.times(), time.monotonic()
        if status := subprocess.run(["sh", "-c", command], stdout=subprocess.DEVNULL).returncode:
            sys.exit(f"scripts/road.sh: {name} ended with {status}: {command}")
        wall, after = time.monotonic() - start, os.times()
        cpu = after.children_user - before.children_user + after.children_system - before.children_system
        best[name] = [min(best[name][0], wall), min(best[name][1], cpu)]
for name, (wall, cpu) in best.items():
    print(f"  {name:<34}{wall:8.3f} s{cpu:8.3f} s of processors")
PYTHON
}

other=${OTHER:-}
echo "Invert, to Y4M nowhere:"
in_turn "kvx='$kvx' render Invert '$clip' - -q" ${other:+"the other kvx='$other' render Invert '$clip' - -q"} \
  "ffmpeg=ffmpeg -nostdin -loglevel error -i '$clip' -vf format=bgra,negate,format=yuv420p -f yuv4mpegpipe -y /dev/null"

chain='-e Warm -e Explosion -e Snow -e Aibao -e Emboss --frames 60 -q'
echo "Five effects, one of them in order:"
in_turn "kvx='$kvx' render '$clip' - $chain" "kvx, one thread='$kvx' render '$clip' - $chain -j 1" \
  ${other:+"the other kvx='$other' render '$clip' - $chain"}

echo "Start and stop:"
"$kvx" render Invert demo "$scratch/in_%03d.png" --frames 100 --size 320x180 -q
cd "$scratch"
in_turn "list='$kvx' list" "one picture of 320x180='$kvx' render Invert in_000.png one.png -q --overwrite" \
  "100 of them in one run='$kvx' render Invert in_%03d.png out_%03d.png -q --overwrite" \
  "100 of them in 100 runs=for i in in_*.png; do '$kvx' render Invert \$i out_\$i -q --overwrite; done"
