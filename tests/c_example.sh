#!/bin/sh
# Usage: c_example.sh SOURCE_DIR BUILD_DIR PLUGIN RESOURCES. The example of docs/c.md is docs/example.c word for word; a C compiler
# takes it with what is installed and pkg-config says, and it does what it promises. The library shows its twelve functions
# and nothing else.
set -eu
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# shellcheck disable=SC2016
sed -n '/^```c$/,/^```$/p' "$source/docs/c.md" | sed '1d;$d' | diff - "$source/docs/example.c"

for component in libkvx0 libkvx-dev; do
  cmake --install "$build" --component $component --prefix "$work/usr" >/dev/null
done
PKG_CONFIG_PATH=$(dirname "$(find "$work/usr" -name kvx.pc)")
LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH")
export PKG_CONFIG_PATH LD_LIBRARY_PATH KVX_PLUGIN="$3" KVX_RESOURCES="$4"
nm -D --defined-only "$LD_LIBRARY_PATH/libkvx.so.0" | awk '$2 == "T" {print $3}' | sed 's/@.*//' | LC_ALL=C sort >"$work/shown"
sed -n 's/^KVX_API .*\(kvx_[a-z_]*\)(.*/\1/p' "$source/hosts/c/include/kvx/kvx.h" | LC_ALL=C sort | diff - "$work/shown"

# shellcheck disable=SC2046
cc -std=c99 -Wall -Wextra -Werror -pedantic "$source/docs/example.c" -o "$work/example" $(pkg-config --cflags --libs kvx)
printf 'P6\n2 1\n255\n\001\002\003\377\200\100' >"$work/in.ppm"
"$work/example" "$work/in.ppm" "$work/out.ppm" Invert
# 80 percent of the inverted picture over the picture, cut: 254 * 0.8 + 1 * 0.2 is 203.4.
[ "$(tail -c 6 "$work/out.ppm" | od -An -tu1 | xargs)" = '203 202 202 51 127 165' ]
# With the clock that the page shows, a random effect repeats itself, in another second too.
(
  cd "$work"
  sed -n '/^cat >clock.c/,/^cc /p' "$source/docs/c.md" >clock.sh
  sh -eu clock.sh
  { printf 'P6\n64 48\n255\n' && head -c 9216 /dev/zero; } >black.ppm
  for turn in 1 2; do
    LD_PRELOAD=$work/clock.so ./example black.ppm clock$turn.ppm Fire
    ./example black.ppm calendar$turn.ppm Fire
    sleep 1.1
  done
  cmp clock1.ppm clock2.ppm
  ! cmp -s calendar1.ppm calendar2.ppm
)
if "$work/example" "$work/in.ppm" "$work/no.ppm" Inverd 2>"$work/said"; then exit 1; fi
grep -q 'kvx_create: no effect "Inverd"; did you mean Invert' "$work/said"
