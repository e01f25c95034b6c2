#!/bin/sh
# Usage: mlt_melt.sh KVX MODULE. Real melt with the module: what it lists, a clip with sound through animated filters,
# threads, frames equal to the command's, and complaints. Exits 77 where melt cannot be had.
set -eu
kvx=$1
module=$2
source=$(cd "$(dirname "$0")/.." && pwd)
"$source/scripts/get_mlt.sh" || exit $?
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir modules
ln -s "$source"/build/mlt/modules/*.so "$module" modules/
melt() { MLT_REPOSITORY=$work/modules timeout -k 5 30 "$source/build/mlt/melt" "$@" 2>>log; }
fail() { echo "$*"; cat log; exit 1; }

[ "$(melt -query filters | grep -c ' kvx\.')" = "$("$kvx" list --json | grep -c '"guid"')" ] || fail 'melt does not list all filters'
melt -query filter=kvx.gamma >gamma
for line in 'title: "kvx: Gamma"' '- colour and tone' 'minimum: 1' 'maximum: 100' 'default: 75'; do
  grep -qF -- "$line" gamma || fail "no '$line' in the description of kvx.gamma"
done

# A clip of 20 frames.
"$kvx" render Gamma -p Gamma=75 --frames 20 --size 160x90 -q demo clip.mkv >/dev/null
# Without this module melt itself, on a busy machine, wrote an empty file in 2 of 200 runs with four threads, hung in 3, and
# wrote an empty one in 1 of 150 with one thread: hence the tries.
make() { # the file, what melt takes
  out=$1
  shift
  for try in 1 2 3 4 5; do
    rm -f "$out"
    melt -silent "$@" && [ -s "$out" ] && return
    echo "melt gave nothing, try $try: $*" >>log
  done
  fail "melt $*"
}
render() { # the file, real_time, a filter and its settings
  raw=$1 threads=$2
  shift 2
  make "$raw" clip.mkv "$@" -consumer "avformat:$raw" f=rawvideo vcodec=rawvideo pix_fmt=bgra an=1 "real_time=$threads"
}
render plain.raw -1
[ "$(wc -c <plain.raw)" = $((160 * 90 * 4 * 20)) ] || fail 'not 20 frames'
for effect in Emboss Delay Nervous WaterRipple; do
  slug=$(echo "$effect" | tr '[:upper:]' '[:lower:]')
  "$kvx" render "$effect" --raw 160x90 -q - - <plain.raw >expected.raw
  render one.raw -1 -attach "kvx.$slug"
  render four.raw -4 -attach "kvx.$slug"
  cmp one.raw expected.raw || fail "$effect: melt and kvx differ"
  cmp one.raw four.raw || fail "$effect: four threads give other frames"
done
"$kvx" render Brightness -p Bringhtness=0:10,19:90 --raw 160x90 -q - - <plain.raw >expected.raw
render one.raw -1 -attach kvx.brightness 'bringhtness=0=10;19=90'
cmp one.raw expected.raw || fail 'keyframes of melt and kvx differ'
melt -silent clip.mkv -attach kvx.warm -consumer null terminate_on_pause=1 || fail 'null consumer'

make sound.mkv -track clip.mkv -track tone: out=19 -consumer avformat:sound.mkv real_time=-1
make out.mkv sound.mkv -attach kvx.warm 'opacity=0=0;19=100' -attach kvx.brightness 'bringhtness=0=20;19=90' \
  -attach kvx.emboss 'opacity=0=0;10=70' -consumer avformat:out.mkv real_time=-4
melt out.mkv -consumer xml >out.xml
! grep 'Failed to load' log || fail 'a filter is missing'
for stream in video audio; do grep -q "stream.type\">$stream" out.xml || fail "no $stream in the file"; done
grep -q 'property name="length">20<' out.xml || fail 'not 20 frames in the file'

: >log
KVX_PLUGIN=/missing render one.raw -1 -attach kvx.delay
cmp one.raw plain.raw || fail 'without the plug-in frames do not pass unchanged'
grep -q 'kvx.delay: the plug-in cannot be loaded' log || fail 'no complaint'
