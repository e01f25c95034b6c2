#!/bin/sh
# Usage: impostor.sh APART_HOST PLUGIN RESOURCES CXX. A host whose global scope holds false copies of everything that the
# plug-in takes from OpenCV and the small libraries, and of everything that it has of a header-only one: each ends the
# process when it is called. The frames must be the same as without them.
set -eu
host=$1 plugin=$2 resources=$3 cxx=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
guid=$(sed -n 's/.*"GUID": *"\([^"]*\)".*/\1/p' "$resources/kvx_effect/material/PureCFilter.conf" | head -n 1)
mkdir "$work/filter"
echo marker > "$work/filter/a.conf"
printf '{"GUID": "%s"}' "$guid" > "$work/filter/real.json"
echo '<Filter><GPUFilter><ConfigFile>real.json</ConfigFile></GPUFilter></Filter>' > "$work/filter/filter.xml"

{
  nm -D --undefined-only "$plugin" | awk '{sub(/@.*/, "", $2); print $2}' | grep -E '^(_ZNK?2cv|_ZNK?8tinyxml2|png_|tj[CDFI])'
  nm --defined-only "$plugin" | awk '$2 ~ /^[tTwW]$/ {print $3}' | grep 8nlohmann | grep -v '\.'
} | sort -u > "$work/names"
[ "$(wc -l < "$work/names")" -gt 60 ] || { echo "only $(wc -l < "$work/names") names"; exit 1; }
{
  echo 'extern "C" {'
  echo '#include <unistd.h>'
  awk '{printf "__attribute__((visibility(\"default\"))) void f%d() __asm__(\"%s\");\nvoid f%d() { write(2, \"impostor: %s\\n\", %d); _exit(99); }\n", NR, $1, NR, $1, length($1) + 11}' "$work/names"
  echo '}'
} > "$work/impostor.cpp"
"$cxx" -shared -fPIC -w -o "$work/impostor.so" "$work/impostor.cpp"
"$host" "$plugin" "$resources" "$work/filter" > "$work/alone"
LD_PRELOAD="$work/impostor.so" "$host" "$plugin" "$resources" "$work/filter" > "$work/among"
cmp "$work/alone" "$work/among"
echo "$(wc -l < "$work/names") false functions, the same frames"
