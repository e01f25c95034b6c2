#!/bin/sh
# Usage: closed_rooms.sh COMPILER HEADER FOLDER... With these folders to search, as some room of the source tree is compiled,
# the header of another room must not be found.
set -eu
compiler=$1 header=$2
shift 2
folders=''
for folder; do folders="$folders -I$folder"; done
unit=$(mktemp -d)
trap 'rm -rf "$unit"' EXIT
echo "#include <cstdint>" >"$unit/unit.cpp"
# shellcheck disable=SC2086
"$compiler" -std=c++20 -fsyntax-only $folders "$unit/unit.cpp"
echo "#include \"$header\"" >>"$unit/unit.cpp"
# shellcheck disable=SC2086
if "$compiler" -std=c++20 -fsyntax-only $folders "$unit/unit.cpp" 2>"$unit/said"; then
  echo "$header is found from a room that must not see it"
  exit 1
fi
grep -q "$header: No such file or directory" "$unit/said" || { cat "$unit/said"; exit 1; }
