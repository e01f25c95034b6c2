#!/bin/sh
# Usage: gegl_command.sh KVX GEGL_PATH. The operations as somebody meets them who types `gegl`: listed, with the bytes that
# kvx gives, and without plug-in or resources. Exits 77 where that command is missing.
set -eu
kvx=$1
tests=$(cd "$(dirname "$0")" && pwd)
export GEGL_PATH="$2"
unset KVX_PLUGIN KVX_RESOURCES
command -v gegl >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
effects=$("$kvx" list --json | grep -c '"guid"')
fail() { echo "$*"; exit 1; }

missing=KVX_NOTHING= # for GEGL alone: kvx reads the same variables
# $1 through the operations that follow, into got.png, written by kvx so that files can be compared.
through() {
  input=$1
  shift
  env "$missing" timeout 60 gegl "$input" -- "$@" gegl:png-save path=written.png bitdepth=8 2>said
  "$kvx" render --overwrite -q Invert --opacity 0 written.png got.png
}
expect_input() { "$tests/same_pixels.py" got.png opaque.png || fail "$1: the input is changed"; }
expect_operations() {
  env "$missing" timeout 60 gegl --list-all 2>complaints | grep -c '^kvx:' >count || true
  [ "$(cat count)" = "$effects" ] || fail "$1: $(cat count) operations, not $effects"
}

expect_operations 'as built'
[ ! -s complaints ] || fail "start-up complains: $(cat complaints)"

"$kvx" render --overwrite -q Invert --size 131x97 demo opaque.png
"$kvx" render --overwrite -q Invert --pad 140x131 opaque.png clear.png # transparent at the rims
while IFS='|' read -r operation words; do
  for picture in opaque clear; do
    # shellcheck disable=SC2086
    through $picture.png $operation
    # shellcheck disable=SC2086
    "$kvx" render --overwrite -q $picture.png wanted.png $words
    "$tests/same_pixels.py" got.png wanted.png || fail "$operation on the $picture picture differs from kvx"
  done
done <<'END'
kvx:warm kvx:canvas-349|-e Warm -e 349
kvx:brightness bringhtness=12.5 opacity=60|-e Brightness:Bringhtness=12.5;opacity=60
kvx:bgfwave bg-color=#0a64ff source-width=0.5|-e BGFWave:BG_Color=681215;Source_Width=0.5
kvx:flip x=false|-e Flip:X=0
END

for gone in KVX_PLUGIN KVX_RESOURCES; do
  missing=$gone=$work/none
  expect_operations "no $gone"
  through opaque.png kvx:warm kvx:invert
  expect_input "no $gone"
  [ "$(grep -c 'kvx operations show their input' said)" = 1 ] || fail "no $gone: not one warning but: $(cat said)"
done

mkdir -p broken/kvx_effect/material
echo '{"effects": [{' >broken/kvx_effect/material/effects.json
missing=KVX_RESOURCES=$work/broken
expect_operations 'a damaged description'
grep -q 'effects.json' complaints || fail "a damaged description is not named: $(cat complaints)"
