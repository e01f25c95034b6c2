#!/bin/sh
# Usage: gegl_in_gimp.sh KVX GEGL_PATH PROCEDURE. GIMP's console runs three effects on a picture by our procedure, then one
# on a selection, and is told of a wrong name. Exits 77 where GIMP is missing.
set -eu
kvx=$1
tests=$(cd "$(dirname "$0")" && pwd)
export GEGL_PATH="$2"
procedure=$3
unset KVX_PLUGIN KVX_RESOURCES
command -v gimp-console >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work" GIMP2_DIRECTORY="$work/gimp"
mkdir -p "$GIMP2_DIRECTORY/plug-ins/kvx"
ln -s "$procedure" "$GIMP2_DIRECTORY/plug-ins/kvx/kvx.py"
cd "$work"
fail() { echo "$*"; cat said; exit 1; }
save() { echo "(file-png-save RUN-NONINTERACTIVE image layer \"$work/$1\" \"$1\" 0 9 0 0 0 0 0)"; }
run() { echo "(plug-in-kvx RUN-NONINTERACTIVE image layer \"$1\")"; }

"$kvx" render --overwrite -q Invert --size 161x91 demo in.png
"$kvx" render --overwrite -q in.png wanted.png -e Warm -e Emboss:opacity=40 -e MirrorLR
timeout 300 gimp-console -i -d -f -b "
  (let* ((image (car (gimp-file-load RUN-NONINTERACTIVE \"$work/in.png\" \"in.png\")))
         (layer (car (gimp-image-get-active-drawable image))))
    $(run 'kvx:warm kvx:emboss opacity=40 kvx:mirrorlr')
    $(save three.png)
    (gimp-image-select-rectangle image CHANNEL-OP-REPLACE 30 20 101 50)
    $(run kvx:invert)
    $(save changed.png)
    $(run kvx:invert)
    $(save selection.png)
    $(run kvx:wram))" -b '(gimp-quit 0)' >said 2>&1
for picture in three selection; do
  [ -f $picture.png ] || fail "GIMP wrote no $picture.png"
  "$kvx" render --overwrite -q Invert --opacity 0 $picture.png got.png
  "$tests/same_pixels.py" got.png wanted.png || fail "$picture.png differs from kvx"
done
cmp -s changed.png selection.png && fail 'the selection stays as it was'
grep -q "No such op 'kvx:wram'" said || fail 'a wrong name is not told'
