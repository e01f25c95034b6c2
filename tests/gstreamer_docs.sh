#!/bin/bash
# Usage: gstreamer_docs.sh DOCUMENT MODULE_DIRECTORY KVX. Runs what the document shows, in a folder of its own, and looks at
# what came of it. 77, "skipped", without GStreamer's tools.
set -euo pipefail
document=$1
export GST_PLUGIN_PATH=$2
kvx=$3
command -v gst-launch-1.0 >/dev/null && gst-inspect-1.0 theoraenc >/dev/null 2>&1 || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export GST_REGISTRY=$work/registry GST_REGISTRY_FORK=no XDG_DATA_HOME=$work

block() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/p" "$document" | grep -v '^```'; }
block sh >lines.sh
block c >fade.c
bash -eu lines.sh >listing
[ "$(grep -c '^  kvx-' listing)" = "$("$kvx" list --json | grep -c '"guid"')" ]
"$kvx" render Invert --quiet --raw 64x36 - - <in.raw | cmp - out.raw

# shellcheck disable=SC2046
cc fade.c $(pkg-config --cflags --libs gstreamer-controller-1.0) -o fade
./fade

# Every clip plays to its end, with all pictures; the chained one has kept its sound.
frames() {
  gst-launch-1.0 -v filesrc location="$1" ! oggdemux ! "$2" ! fakesink silent=false sync=false |
    grep -c 'last-message = chain'
}
for clip in clip.ogg old.ogg wave.ogg fade.ogg bright.ogg; do [ "$(frames "$clip" theoradec)" = 50 ]; done
[ "$(frames old.ogg vorbisdec)" -ge 80 ]
