#!/bin/sh
# Usage: scripts/demo.sh [INPUT]. Builds, then renders every effect of the demo picture, or of INPUT (a picture or a
# video), into out/: a contact sheet, a picture per effect, a web page, and of a video a clip through some effects.
set -eu
input=${1:-demo}
case $input in demo | /*) ;; *) input=$PWD/$input ;; esac
cd "$(dirname "$0")/.."
./scripts/install_packages.sh
cmake --preset release -DKVX_BUILD_TESTS=OFF -DKVX_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build --preset release
mkdir -p out
./build/release/bin/kvx contact-sheet --each out/effects "$input" out/contact-sheet.png
./build/release/bin/kvx gallery "$input" -o out/gallery
case $input in
  *.mp4 | *.mov | *.mkv | *.webm | *.avi | *.m4v)
    ./build/release/bin/kvx render --overwrite -e Warm -e FilmGrain -e Vignette2 "$input" out/clip.mp4
    echo "the clip as an old film:    out/clip.mp4" ;;
esac
if command -v gegl >/dev/null; then
  ./build/release/bin/kvx render Invert --opacity 0 demo out/demo.png
  GEGL_PATH="$PWD/build/release/lib/gegl-0.4:$(pkg-config --variable=pluginsdir gegl-0.4)" \
    gegl out/demo.png -- kvx:warm kvx:snow frame=20 kvx:vignette1 gegl:png-save path=out/gegl.png bitdepth=8
  echo "a chain in GEGL:            out/gegl.png"
fi
echo "all effects on one picture: out/contact-sheet.png"
echo "one picture per effect:     out/effects/"
echo "the same as a web page:     out/gallery/index.html"
