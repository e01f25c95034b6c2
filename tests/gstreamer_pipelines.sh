#!/bin/bash
# Usage: gstreamer_pipelines.sh MODULE_DIRECTORY RESOURCES. The module in processes of its own: what is missing, what has changed,
# what leaks. 77, "skipped", without GStreamer's tools.
set -euo pipefail
export GST_PLUGIN_PATH=$1
resources=$2
command -v gst-launch-1.0 >/dev/null && gst-inspect-1.0 videotestsrc >/dev/null 2>&1 || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export GST_REGISTRY=$work/registry
run() { gst-launch-1.0 videotestsrc num-buffers=5 ! "kvx-$1" ! kvx-delay ! kvx-snow opacity=0 ! fakesink; }
effects=$(grep -c '"guid"' "$resources/kvx_effect/material/effects.json")
listed() { gst-inspect-1.0 kvx | grep -c '^  kvx-'; }

# Elements without plug-in or resources are there and say what is wrong, in one error each.
fails() {
  [ "$(listed)" = "$effects" ]
  if run invert >/dev/null 2>"$work/errors"; then exit 1; fi
  [ "$(grep -c 'ERROR: from element.*kvx-' "$work/errors")" -ge 1 ]
  grep -q "$1" "$work/errors"
}
KVX_PLUGIN=$work/none.so fails "$work/none.so"
KVX_RESOURCES=$work/none fails "no resource directory: $work/none"

# The list of elements follows the description.
mkdir -p "$work/resources/kvx_effect"
cp -r "$resources/kvx_effect/material" "$work/resources/kvx_effect/"
export KVX_RESOURCES=$work/resources
[ "$(listed)" = "$effects" ]
description=$work/resources/kvx_effect/material/effects.json
sed -i '/"name":"Invert"/d' "$description"
[ "$(listed)" = "$((effects - 1))" ]
if gst-inspect-1.0 kvx-invert >/dev/null 2>&1; then exit 1; fi
echo '{"effects": [' >"$description"
fails effects.json
unset KVX_RESOURCES
[ "$(listed)" = "$effects" ]

# Nothing is left of a pipeline that has ended.
GST_TRACERS=leaks GST_DEBUG=GST_TRACER:7 GST_DEBUG_NO_COLOR=1 run emboss >/dev/null 2>"$work/trace"
grep -q 'new format string: object-alive' "$work/trace"
if grep 'object-alive, type-name=(string)[^%]' "$work/trace"; then exit 1; fi
