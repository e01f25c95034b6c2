#!/bin/sh
# Usage: scripts/get_mlt.sh. Unpacks MLT into build/mlt from Debian's packages and installs nothing: headers, library, the
# modules core, avformat and xml, the command melt, and those libraries that they need and that are not installed here.
# build/mlt/melt then runs it. Does nothing if that is there. Ends with 77 if the packages cannot be had.
set -eu
cd "$(dirname "$0")/.."
[ ! -x build/mlt/melt ] || exit 0
for command in apt-get dpkg-deb; do
  command -v $command >/dev/null || { echo "MLT: no $command here" >&2; exit 77; }
done
if ! apt-cache show melt >/dev/null 2>&1; then
  sudo=''
  [ "$(id -u)" = 0 ] || sudo=sudo
  $sudo apt-get update -q || { echo "MLT: no lists of packages" >&2; exit 77; }
fi
work=build/mlt.part
rm -rf "$work" build/mlt
mkdir -p "$work/packages" "$work/modules"
plan=$(apt-get install -s --no-install-recommends libavdevice59 libavfilter8 libsdl2-2.0-0 libxml2) ||
  { echo "MLT: the packages do not fit this system" >&2; exit 77; }
missing=$(echo "$plan" | sed -n 's/^Inst \([^ ]*\).*/\1/p')
# shellcheck disable=SC2086
if ! (cd "$work/packages" && apt-get download -q libmlt-dev libmlt7 melt libmlt-data $missing >log 2>&1); then
  tail -n 3 "$work/packages/log" >&2
  echo "MLT: the packages cannot be downloaded" >&2
  exit 77
fi
for package in "$work"/packages/*.deb; do dpkg-deb -x "$package" "$work"; done
rm -rf "$work/packages"

arch=$(dpkg-architecture -q DEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)
for module in core avformat xml; do ln -s "../usr/lib/$arch/mlt-7/libmlt$module.so" "$work/modules/"; done
cat >"$work/melt" <<'EOF'
#!/bin/sh
# melt as unpacked here. MLT_REPOSITORY may name another folder of modules.
root=$(dirname "$(readlink -f "$0")")
for folder in $(find "$root/usr/lib" "$root/lib" -name '*.so*' -printf '%h\n' 2>/dev/null | sort -u); do
  LD_LIBRARY_PATH="$folder${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"
done
export LD_LIBRARY_PATH
export MLT_REPOSITORY="${MLT_REPOSITORY:-$root/modules}" MLT_DATA="$root/usr/share/mlt-7"
export MLT_PROFILES_PATH="$root/usr/share/mlt-7/profiles"
# Without a sound card and a screen.
export SDL_AUDIODRIVER=dummy SDL_VIDEODRIVER=dummy
exec "$root/usr/bin/melt-7" "$@"
EOF
chmod +x "$work/melt"
mv "$work" build/mlt
