#!/bin/sh
# Usage: scripts/tidy.sh [FILE...]. clang-tidy by the rules of .clang-tidy over every source file of the release build, or over
# these; a finding is an error. The build must be there.
set -eu
cd "$(dirname "$0")/.."
mkdir -p build/tidy
cmake --preset release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
# Flags that only GCC knows.
sed 's/-fno-gnu-unique//g; s/-Wno-restrict//g' build/release/compile_commands.json >build/tidy/compile_commands.json
if [ $# -eq 0 ]; then
  # What was configured, generated files apart.
  # shellcheck disable=SC2046
  set -- $(sed -n 's/^ *"file": "\(.*\)",*$/\1/p' build/tidy/compile_commands.json | sort -u |
    grep -E "^$PWD/(codecs|hostkit|hosts|plugins|resources)/")
fi
printf '%s\n' "$@" | xargs -n 4 -P "$(nproc)" clang-tidy -p build/tidy --quiet --warnings-as-errors='*' 2>build/tidy/said ||
  { cat build/tidy/said; exit 1; }
