#!/bin/sh
# Usage: exported_symbols.sh PLUGIN. Fails unless the plug-in shows exactly its eleven functions.
expected='CreateKVXEffect
FindEffectByID
GetEffectPixFormat
GetEffectPluginsInfo
GetEffectsCounts
RegisterKVXEffect
RegisterKVXEffectFromConfPath
ReleaseKVXEffect
SetMergeImagePath
ShutdownKVX
StartupKVX'
shown=$(nm -D --defined-only "$1" | awk '{print $3}' | LC_ALL=C sort)
[ "$shown" = "$expected" ] || { echo "exported symbols are:"; echo "$shown"; exit 1; }
