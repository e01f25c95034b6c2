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
./build/release/bin/kvx contact-sheet --overwrite --each out/effects "$input" out/contact-sheet.png
./build/release/bin/kvx gallery --overwrite "$input" -o out/gallery
case $input in
  *.mp4 | *.mov | *.mkv | *.webm | *.avi | *.m4v)
    ./build/release/bin/kvx render --overwrite -e Warm -e FilmGrain -e Vignette2 "$input" out/clip.mp4
    echo "the clip as an old film:    out/clip.mp4" ;;
esac
if command -v gegl >/dev/null && [ -d build/release/lib/gegl-0.4 ]; then
  ./build/release/bin/kvx render Invert --opacity 0 --overwrite -q demo out/demo.png
  GEGL_PATH="$PWD/build/release/lib/gegl-0.4:$(pkg-config --variable=pluginsdir gegl-0.4)" \
    gegl out/demo.png -- kvx:warm kvx:snow frame=20 kvx:vignette1 gegl:png-save path=out/gegl.png bitdepth=8
  echo "a chain in GEGL:            out/gegl.png"
fi
# Where GStreamer's own tools are: the demo as a clip that went through a pipeline.
if command -v gst-launch-1.0 >/dev/null && [ -d build/release/lib/gstreamer-1.0 ]; then
  ./build/release/bin/kvx render Warm --opacity 0 --quiet --frames 100 --size 640x360 --raw 640x360 demo - |
    GST_PLUGIN_PATH=build/release/lib/gstreamer-1.0 gst-launch-1.0 -q fdsrc ! rawvideoparse width=640 height=360 \
      format=bgra ! kvx-warm ! kvx-snow percent=40 ! kvx-vignette1 ! videoconvert ! theoraenc ! oggmux ! \
      filesink location=out/gstreamer.ogg
  echo "a clip through GStreamer:   out/gstreamer.ogg"
fi
# Where melt is, or was unpacked by get_mlt.sh: a clip through three animated filters.
if [ -f build/release/lib/mlt-7/libmltkvx.so ] && melt=$(command -v melt || command -v build/mlt/melt); then
  case $melt in build/*) theirs=build/mlt/modules ;; *) theirs=$(dirname "$(find /usr/lib -name libmltcore.so | head -n 1)") ;; esac
  modules=$(mktemp -d)
  ln -s "$(readlink -f "$theirs")"/*.so "$PWD/build/release/lib/mlt-7/libmltkvx.so" "$modules/"
  ./build/release/bin/kvx render Warm --frames 100 --size 640x360 --overwrite -q demo "$modules/warm.mkv" >/dev/null
  MLT_REPOSITORY=$modules $melt -silent "$modules/warm.mkv" -attach kvx.brightness 'bringhtness=0=10;50=60;99=40' \
    -attach kvx.snow 'percent=0=0;99=80' -attach kvx.emboss 'opacity=60=0;99=80' -consumer avformat:out/melt.mp4 real_time=-1
  rm -rf "$modules"
  echo "a clip through melt:        out/melt.mp4"
fi
echo "all effects on one picture: out/contact-sheet.png"
echo "one picture per effect:     out/effects/"
echo "the same as a web page:     out/gallery/index.html"
